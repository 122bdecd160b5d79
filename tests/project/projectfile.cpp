#include "tests/project/projectfile.h"

#include "tests/support/entries.h"
#include "tests/support/modal.h"

#include <QDir>
#include <QFile>

#include <vector>

using namespace Qt::StringLiterals;

Act calling(const char *slot)
{
    return [slot](Stage &stage) { stage.call(slot); };
}

Act calling(const char *slot, const QString &name)
{
    return [slot, name](Stage &stage) { stage.call(slot, stage.path(name)); };
}

Act pressing(const QString &button, const QString &tab)
{
    return [button, tab](Stage &stage) { stage.button(button, tab)->click(); };
}

Act pressingFor(int question, const QString &button)
{
    return [question, button](Stage &stage) {
        questionView(stage)->selectRow(question);
        stage.button(button, u"Questions"_s)->click();
    };
}

Act warningOnce(const Act &act)
{
    return [act](Stage &stage) {
        const MessageLog log;
        act(stage);
        QCOMPARE(log.warnings().size(), 1);
    };
}

int answerInTurn(Stage &stage, const QString &entry, const QList<Answer> &answers)
{
    std::vector<std::unique_ptr<Modal>> waiting;
    const Answer next = [&](QWidget *window) {
        const auto turn = qsizetype(waiting.size()) - 1;
        waiting.push_back(std::make_unique<Modal>(next));
        if (turn < answers.size())
            answers.at(turn)(window);
    };
    waiting.push_back(std::make_unique<Modal>(next));
    stage.action(entry)->trigger();
    QCoreApplication::processEvents();
    return int(waiting.size()) - 1;
}

QStringList projectTables()
{
    return {u"metadata"_s,  u"boilerplate"_s, u"personas"_s,    u"questions"_s, u"question_attachments"_s,
            u"responses"_s, u"tags"_s,        u"persona_tags"_s};
}

QStringList oneOfEach()
{
    return {
        u"INSERT INTO metadata VALUES ('key', 'value')"_s,
        u"INSERT INTO boilerplate VALUES ('Pre.', 'Post.')"_s,
        u"INSERT INTO personas (uuid, name) VALUES ('one', 'Number One')"_s,
        u"INSERT INTO questions (order_num, prompt) VALUES (1, 'Why?')"_s,
        u"INSERT INTO question_attachments (question_id, filename) VALUES (1, 'plan.png')"_s,
        u"INSERT INTO responses (persona_uuid, question_id, text_answer) VALUES ('one', 1, 'Hm.')"_s,
        u"INSERT INTO tags VALUES (5, 'odd')"_s,
        u"INSERT INTO persona_tags VALUES ('one', 5)"_s,
    };
}

QStringList tableOfEachRow(Sql &database)
{
    QStringList names;
    for (const auto tables = projectTables(); const QString &table : tables)
        names += QStringList(database.count(table), table);
    return names;
}

QString writeOther(Stage &stage)
{
    return writeProject(stage.path(u"other.ormt"_s), oneOfEach());
}

void openMine(Stage &stage)
{
    QVERIFY(stage.result("openProjectFromFile", writeProject(stage.path(u"mine.ormt"_s), oneOfEach())));
    stage.window()->markDirty();
    Stage::setTestMode(true);
}

QString writeText(Stage &stage)
{
    return writeBytes(stage.path(u"text.ormt"_s),
                      "A text, long enough to be taken for a page of a database. "_ba.repeated(9));
}

void showQuestions(Stage &stage, int number)
{
    QVERIFY(enterQuestions(stage, number));
    stage.call("loadQuestions");
    QCOMPARE(questionModel(stage)->rowCount(), number);
}

bool questionListIsWhole(Stage &stage)
{
    const QSqlTableModel *model = questionModel(stage);
    if (model == nullptr || model->isDirty())
        return false;
    Rows shown;
    for (int row = 0; row < model->rowCount(); ++row)
        shown.append({model->index(row, 1).data(), model->index(row, 2).data()});
    return shown == stage.rows(u"SELECT order_num, prompt FROM questions ORDER BY order_num"_s);
}

QString savingError(Stage &stage, const QString &path)
{
    return "vacuum into failed "_L1 + stage.refusal(u"VACUUM INTO ?"_s, {path});
}

QString readingError(Stage &stage, const QString &path)
{
    return stage.refusal(u"ATTACH DATABASE '%1' AS disk"_s.arg(path));
}

/// Triggers "Save", which asks for no path in test mode.
static void saveUnasked(Stage &stage)
{
    Stage::setTestMode(true);
    stage.action(u"Save"_s)->trigger();
    Stage::setTestMode(false);
}

bool savesTo(Stage &stage, const QString &path)
{
    QFile::remove(path);
    saveUnasked(stage);
    return QFile::exists(path);
}

bool belongsToNoFile(Stage &stage)
{
    const QStringList before = filesIn(stage);
    stage.window()->markDirty();
    saveUnasked(stage);
    return stage.asksBeforeClosing() && filesIn(stage) == before;
}

bool onlyProjectIsConnected()
{
    return QSqlDatabase::connectionNames() == QStringList{u"project"_s};
}

QStringList filesIn(Stage &stage, const QString &folder)
{
    return QDir(stage.path(folder)).entryList(QDir::Files | QDir::Hidden);
}

void keepJournal(Stage &stage)
{
    QVERIFY(stage.exec(u"CREATE TABLE journal (id INTEGER PRIMARY KEY, act TEXT)"_s));
    for (const auto tables = projectTables(); const QString &table : tables) {
        for (const auto &act : {u"insert"_s, u"delete"_s})
            QVERIFY(stage.exec(u"CREATE TRIGGER %1_%2 AFTER %1 ON %2 BEGIN "
                               "INSERT INTO journal (act) VALUES ('%1 %2'); END"_s.arg(act, table)));
    }
}

QStringList journal(Stage &stage)
{
    return stage.column(u"SELECT act FROM journal ORDER BY id"_s);
}
