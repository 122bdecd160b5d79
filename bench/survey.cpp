#include "bench/survey.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableWidget>

using namespace Qt::StringLiterals;

static void run(QSqlQuery &query, const QVariantList &values)
{
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        qFatal("%ls", qUtf16Printable(query.lastError().text()));
}

static QSqlQuery prepared(const QSqlDatabase &database, const QString &statement)
{
    QSqlQuery query(database);
    if (!query.prepare(statement))
        qFatal("%ls", qUtf16Printable(query.lastError().text()));
    return query;
}

static QString uuidOf(int persona)
{
    return u"00000000-0000-4000-8000-%1"_s.arg(persona, 12, 10, QLatin1Char('0'));
}

static QString words(QRandomGenerator &random, int least, int most)
{
    static const QStringList all{u"rather"_s,  u"the"_s,    u"garden"_s, u"I"_s,     u"would"_s, u"not"_s,   u"price"_s,
                                 u"because"_s, u"always"_s, u"a"_s,      u"quiet"_s, u"of"_s,    u"walk"_s,  u"to"_s,
                                 u"morning"_s, u"and"_s,    u"seldom"_s, u"tea"_s,   u"it"_s,    u"prefer"_s};
    const int length = random.bounded(least, most + 1);
    QString text;
    while (text.size() < length)
        text += (text.isEmpty() ? QString() : u" "_s) + all.at(random.bounded(all.size()));
    return text.left(length);
}

static QString titleOf(Survey::Tab tab)
{
    switch (tab) {
    case Survey::Tab::Results:
        return u"Results"_s;
    case Survey::Tab::Personas:
        return u"Digital Twins"_s;
    case Survey::Tab::Empty:
        break;
    }
    return u"Marketplace"_s;
}

Survey::Survey(int personaCount, int questionCount, int answers, Tab tab, int narrative)
    : personas(personaCount)
    , questions(questionCount)
    , window(std::make_unique<MainWindow>(nullptr))
{
    addPersonas(narrative);
    addQuestions();
    addAnswers(0, answers);
    auto *tabs = window->findChild<QTabWidget *>();
    while (tabs->tabText(tabs->currentIndex()) != titleOf(tab))
        tabs->setCurrentIndex(tabs->currentIndex() + 1);
    window->show();
    call("loadProject");
    settle();
}

Survey::~Survey()
{
    window.reset();
    // Deferred deletions hold copies of the handle.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QSqlDatabase::removeDatabase(u"project"_s);
}

bool Survey::call(const char *slot)
{
    return QMetaObject::invokeMethod(window.get(), slot, Qt::DirectConnection);
}

void Survey::call(const char *slot, const QString &path)
{
    if (!QMetaObject::invokeMethod(window.get(), slot, Qt::DirectConnection, path))
        qFatal("no slot %s", slot);
}

QTableWidget *Survey::table()
{
    return window->findChild<QTableWidget *>(u"resultsTable"_s);
}

QAction *Survey::runEntry()
{
    const auto actions = window->findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->text() == "Run"_L1)
            return action;
    }
    qFatal("no entry of the menu is called Run");
}

QSqlDatabase Survey::database() const
{
    return QSqlDatabase::database(u"project"_s, false);
}

void Survey::addPersonas(int narrative)
{
    QSqlDatabase db = database();
    db.transaction();
    QSqlQuery query = prepared(db, u"INSERT INTO personas (uuid,name,attributes) VALUES (?,?,?)"_s);
    QRandomGenerator random(1);
    for (int index = 0; index < personas; ++index) {
        run(query, {uuidOf(index), u"Persona %1"_s.arg(index, 5, 10, QLatin1Char('0')),
                    words(random, narrative * 3 / 10, narrative)});
    }
    db.commit();
}

void Survey::addQuestions()
{
    QSqlQuery query = prepared(database(), u"INSERT INTO questions (question_id,order_num,prompt,answer_type,labels,"
                                           "reasoning_required,judge_question) VALUES (?,?,?,?,?,1,0)"_s);
    QRandomGenerator random(2);
    for (int index = 1; index <= questions; ++index)
        run(query, {index, index, words(random, 20, 60), u"single_choice"_s, u"[\"yes\",\"no\",\"rather not\"]"_s});
}

QString Survey::replyObject(int pair)
{
    QRandomGenerator random(quint32(pair) + 3);
    const QJsonObject object{{u"answer"_s, words(random, 5, 80)}, {u"reasoning"_s, words(random, 80, 120)}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void Survey::addAnswers(int from, int to)
{
    QSqlDatabase db = database();
    db.transaction();
    QSqlQuery query =
        prepared(db, u"INSERT INTO responses (persona_uuid,question_id,text_answer,json_answer,created_at)"
                     " VALUES (?,?,?,?,CURRENT_TIMESTAMP)"_s);
    for (int pair = from; pair < to; ++pair) {
        const QString object = replyObject(pair);
        const QString answer = QJsonDocument::fromJson(object.toUtf8())["answer"_L1].toString();
        run(query, {uuidOf(pair / questions), (pair % questions) + 1, answer, object});
    }
    db.commit();
}

void Survey::keepGridRebuilt()
{
    // A temporary view could stand before a table of the project.
    QSqlQuery query = prepared(database(), u"CREATE TEMP VIEW bystander AS SELECT 1"_s);
    run(query, {});
}

void Survey::changeOneAnswer()
{
    QSqlQuery query = prepared(database(), u"UPDATE responses SET text_answer=? WHERE id=1"_s);
    run(query, {u"Changed for the %1th time"_s.arg(++changes)});
}

void settle()
{
    QAbstractEventDispatcher *events = QAbstractEventDispatcher::instance();
    while (events->processEvents(QEventLoop::AllEvents)) {
    }
}
