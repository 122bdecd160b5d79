#pragma once

#include "tests/app/dialoganswers.h"
#include "tests/app/eventchecks.h"
#include "tests/app/eventsteps.h"
#include "tests/app/runwatch.h"
#include "tests/support/messagelog.h"
#include "tests/support/surveystage.h"

/// Carries out steps on a window of its own, whose requests end at an endpoint of its own, and looks at everything
/// after each.
class EventDriver
{
public:
    EventDriver();
    Q_DISABLE_COPY_MOVE(EventDriver)

    /// Ends at the first complaint; empty where there is none.
    QString run(const QList<Step> &steps);
    /// How many of the steps were carried out.
    int stepsDone() const { return done; }

    /// What has happened, to see that the steps lead somewhere.
    struct Tally
    {
        int stepsInRuns = 0;
        int answers = 0;
        int failures = 0;
        int answersBehindDialogs = 0;
        int dialogs = 0;
        int windows = 0;
        int saved = 0;
        int opened = 0;
    };
    Tally tally() const;

private:
    using Answer = DialogAnswers::Answer;

    void perform(const Step &step);
    bool performOnPersonas(const Step &step);
    bool performOnQuestions(const Step &step);
    bool performOnFiles(const Step &step);
    bool performOnPacks(const Step &step);
    bool performOnRun(const Step &step);
    void performOnWindow(const Step &step);

    /// Does something that opens these dialogs in turn, and no other. An answer begins with what happens meanwhile.
    /// Gives how many came.
    int answering(const QList<Answer> &answers, const std::function<void()> &act);
    /// Something for which no dialog is opened.
    void quietly(const std::function<void()> &act) { answering({}, act); }
    Answer after(const Step &step, const Answer &answer);
    /// Lets events come until there are none.
    static void settle();
    void showWindow();
    void showTab(const QString &title);

    // eventpersonas.cpp
    void editPersona(const Step &step, bool isNew);
    void copyOrDeletePersona(const Step &step);
    void filterTag(const Step &step);

    // eventquestions.cpp
    void editQuestion(const Step &step, bool isNew);
    void fillQuestionForm(QWidget *dialog, const Step &step);
    void deleteOrMoveQuestion(const Step &step);
    void editCell(const Step &step);

    // eventfiles.cpp
    struct SavedFile
    {
        QString path;
        QStringList rows;
    };
    void newProject();
    void openFile(const Step &step);
    void openByMenu(const Step &step);
    QString pathToOpen(const Step &step);
    void opened(const QString &path);
    void saveFile(const Step &step);
    void saveByMenu(const Step &step, const QString &entry);
    void saved(const QString &path, bool fits);
    static bool canBeWritten(const QString &path);

    // eventpacks.cpp
    void importPack(const Step &step, bool byMenu);
    void exportPack(const Step &step, bool byMenu);
    void showPack(const Step &step);
    QString pathToImport(const Step &step);
    static QStringList packWarnings(const QString &path);
    Effect imported(const QString &path, bool asked, int choice);

    // eventruns.cpp
    void startRun(const Step &step);
    void awaitReply();
    void closeLog(const Step &step);
    standin::Reply nextReply(const standin::Request &request);

    // eventwindow.cpp
    void typeText(const Step &step, bool preamble);
    void showConversation(const Step &step);
    void preferences(const Step &step);
    void about(const Step &step);
    void closeWindow(const Step &step);
    void replaceWindow();
    void clickCell(const Step &step);
    void pressKey(const Step &step);
    void refresh(const Step &step);
    QTableView *tableOf(const Step &step);

    MessageLog messages;
    SurveyStage stage;
    EventChecks checks;
    RunWatch watch;
    Expected &expected;
    bool failedBefore; ///< in an earlier play of the same test
    int done = 0;
    Tally counts;

    Step replies; ///< how requests are answered
    int replied = 0;
    bool stalled = false;
    int connectionsClosed = 0;
    QObject context;

    int filesMade = 0;
    QList<SavedFile> savedFiles;
    QStringList packs;
};
