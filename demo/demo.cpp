#include "demo/demo.h"

#include "app/mainwindow.h"
#include "demo/answercheck.h"
#include "inspect/chatlogwindow.h"
#include "questions/labels.h"
#include "survey/answers.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSize>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

static QString oneLine(const QString &text, qsizetype limit)
{
    const QString line = text.simplified();
    return line.size() > limit ? line.first(limit - 1) % u'…' : line;
}

static QAction *runAction(const MainWindow *window)
{
    const auto menus = window->menuBar()->findChildren<QMenu *>();
    for (const QMenu *menu : menus) {
        const auto entries = menu->actions();
        for (QAction *entry : entries) {
            if (menu->title() == "&Survey"_L1 && entry->text() == "Run"_L1)
                return entry;
        }
    }
    qFatal("the window has no menu entry to run a survey");
}

Demo::Demo(MainWindow *mainWindow, Examples shown)
    : window(mainWindow)
    , examples(std::move(shown))
    , project(QSqlDatabase::database(u"project"_s, false))
    , out(stdout)
{
    for (const ExamplePersona &persona : std::as_const(examples.panel))
        nameWidth = std::max(nameWidth, persona.name.size());
}

qsizetype Demo::wantedAnswers() const
{
    return examples.panel.size() * examples.questionnaire.size();
}

void Demo::start()
{
    enterExamples();
    showResults();
    watchRun();
    out << u"%1 personas, %2 questions; "_s.arg(examples.panel.size()).arg(examples.questionnaire.size())
        << "the answers are made up by an endpoint on this machine\n\n"_L1;
    out.flush();
    window->findChild<QPushButton *>(u"runSurveyButton"_s)->click();
}

void Demo::enterExamples()
{
    const auto call = [this](const char *slot, const auto &...arguments) {
        if (!QMetaObject::invokeMethod(window, slot, Qt::DirectConnection, arguments...))
            qFatal("the window has no slot %s with these arguments", slot);
    };
    for (const ExamplePersona &persona : std::as_const(examples.panel))
        call("insertPersona", persona.name, persona.narrative, persona.tags.join(", "_L1));
    for (const ExampleQuestion &question : std::as_const(examples.questionnaire))
        call("insertQuestion", question.prompt, question.type, question.reasoning, encodeLabels(question.labels));
}

void Demo::showResults()
{
    auto *tabs = window->findChild<QTabWidget *>();
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index) == "Results"_L1)
            tabs->setCurrentIndex(index);
    }
}

void Demo::watchRun()
{
    // After each answer cells of the grid change. In the middle of that the run is not to be disturbed.
    const QAbstractItemModel *grid = window->findChild<QTableWidget *>(u"resultsTable"_s)->model();
    connect(grid, &QAbstractItemModel::dataChanged, this, [this] {
        if (!std::exchange(printing, true))
            QTimer::singleShot(0, this, &Demo::printNewAnswers);
    });
    const auto endIfEnabled = [this](bool enabled) {
        if (enabled)
            Q_EMIT surveyEnded();
    };
    connect(runAction(window), &QAction::enabledChanged, this, endIfEnabled, Qt::QueuedConnection);
}

void Demo::printNewAnswers()
{
    printing = false;
    static constexpr qsizetype answerWidth = 66;
    QSqlQuery query(project);
    query.prepare(u"SELECT r.id, p.name, q.order_num, r.text_answer, r.numeric_answer, r.json_answer "
                  "FROM responses r JOIN personas p ON p.uuid = r.persona_uuid "
                  "JOIN questions q ON q.question_id = r.question_id WHERE r.id > ? ORDER BY r.id"_s);
    query.addBindValue(lastAnswer);
    query.exec();
    while (query.next()) {
        lastAnswer = query.value(0).toLongLong();
        const ParsedAnswer answer{.textAnswer = query.value(3).toString(),
                                  .numericAnswer = query.value(4),
                                  .jsonAnswer = query.value(5).toString()};
        const QString progress = u"%1/%2"_s.arg(++answerCount).arg(wantedAnswers());
        const QString number = u"Q%1"_s.arg(query.value(2).toInt());
        out << progress.rightJustified(7) << "  "_L1 << query.value(1).toString().leftJustified(nameWidth) << "  "_L1
            << number.leftJustified(5) << oneLine(displayValue(answer), answerWidth) << '\n';
    }
    out.flush();
}

QStringList Demo::checkAnswers()
{
    const AnswerCheck check(project, wantedAnswers());
    out << '\n' << check.table().join('\n'_L1) << '\n';
    out.flush();
    return check.flaws();
}

static void savePicture(QWidget *widget, const QString &path, QStringList &failures)
{
    if (!widget->grab().save(path))
        failures << path % u": the picture cannot be written"_s;
}

static void saveText(const QString &text, const QString &path, QStringList &failures)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        failures << path % u": "_s % file.errorString();
}

QStringList Demo::writeFiles(const QDir &folder)
{
    QStringList failures;
    if (!folder.mkpath(u"."_s))
        return {folder.path() % u": the folder cannot be made"_s};
    savePicture(window, folder.filePath(u"results.png"_s), failures);
    if (auto *log = window->findChild<ChatLogWindow *>()) {
        const QSize usual = log->size();
        log->resize(900, 600);
        savePicture(log, folder.filePath(u"log.png"_s), failures);
        log->resize(usual);
        saveText(log->findChild<QPlainTextEdit *>()->toPlainText(), folder.filePath(u"log.txt"_s), failures);
    } else {
        failures << u"log.png and log.txt: the log window has been closed"_s;
    }
    if (failures.isEmpty())
        out << "\nresults.png, log.png and log.txt are in "_L1 << QDir::toNativeSeparators(folder.path()) << '\n';
    out.flush();
    return failures;
}
