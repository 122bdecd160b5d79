#include "demo/secondlook.h"

#include "app/mainwindow.h"
#include "demo/answercheck.h"
#include "demo/examples.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

QString DemoFile::project(const QDir &folder)
{
    return folder.filePath(u"demo.ormt"_s);
}

QString DemoFile::pack(const QDir &folder)
{
    return folder.filePath(u"panel.ornk"_s);
}

QString DemoFile::conversation(const QDir &folder)
{
    return folder.filePath(u"conversation.txt"_s);
}

static bool callWithPath(MainWindow *window, const char *slot, const QString &path)
{
    bool done = false;
    return QMetaObject::invokeMethod(window, slot, Qt::DirectConnection, qReturnArg(done), path) && done;
}

QStringList saveFiles(MainWindow *window, const QDir &folder)
{
    // The program never saves over a project, and adds to a pack that is there.
    QFile::remove(DemoFile::project(folder));
    QFile::remove(DemoFile::pack(folder));
    QStringList failures;
    if (!callWithPath(window, "saveProjectToFile", DemoFile::project(folder)))
        failures << DemoFile::project(folder) % u": the project cannot be saved"_s;
    if (!callWithPath(window, "exportPackToFile", DemoFile::pack(folder)))
        failures << DemoFile::pack(folder) % u": the panel cannot be exported"_s;
    return failures;
}

/// The text that "Show" lays out for the first persona and the last question.
static QString conversation(MainWindow *window)
{
    auto *group = window->findChild<QPlainTextEdit *>(u"postambleEdit"_s)->parentWidget()->findChild<QGroupBox *>();
    const auto choosers = group->findChildren<QComboBox *>();
    for (QComboBox *chooser : choosers) {
        const bool holdsPersonas = chooser->itemData(0).typeId() == QMetaType::QString;
        chooser->setCurrentIndex(holdsPersonas ? 0 : chooser->count() - 1);
    }
    group->findChild<QPushButton *>()->click();
    return group->findChild<QPlainTextEdit *>()->toPlainText();
}

static bool writeText(const QString &path, const QString &text)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8() + '\n';
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

static int count(const QSqlDatabase &project, const QString &table)
{
    QSqlQuery query(project);
    return query.exec("SELECT COUNT(*) FROM "_L1 % table) && query.next() ? query.value(0).toInt() : -1;
}

QStringList takeSecondLook(MainWindow *window, const QDir &folder, const Examples &examples, QTextStream &out)
{
    if (!callWithPath(window, "openProjectFromFile", DemoFile::project(folder)))
        return {DemoFile::project(folder) % u": the project cannot be opened"_s};
    const QSqlDatabase project = QSqlDatabase::database(u"project"_s, false);
    QStringList flaws = AnswerCheck(project, examples.panel.size() * examples.questionnaire.size()).flaws();
    out << "opened again in a second process: demo.ormt, "_L1 << count(project, u"responses"_s) << " answers\n"_L1;

    const QString text = conversation(window);
    if (text.count("\nA: "_L1) != examples.questionnaire.size())
        flaws << u"the conversation does not have an answer to each question"_s;
    if (!writeText(DemoFile::conversation(folder), text))
        flaws << DemoFile::conversation(folder) % u": the conversation cannot be written"_s;

    QMetaObject::invokeMethod(window, "newProject", Qt::DirectConnection);
    QMetaObject::invokeMethod(window, "importPack", Qt::DirectConnection, DemoFile::pack(folder));
    out << "imported into a new project: panel.ornk, "_L1 << count(project, u"personas"_s) << " personas with "_L1
        << count(project, u"tags"_s) << " tags\n"_L1;
    if (count(project, u"personas"_s) != examples.panel.size() || count(project, u"tags"_s) == 0)
        flaws << DemoFile::pack(folder) % u": the pack does not hold the panel"_s;
    out.flush();
    return flaws;
}
