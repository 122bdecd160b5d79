// Saving and opening while a dialog of the window waits for its answer, or while a survey runs.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"
#include "tests/support/surveystage.h"

#include <QDialog>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

namespace {

/// Opens "other.ormt", whatever changes there are.
bool openUnasked(Stage &stage)
{
    Stage::setTestMode(true);
    const bool opened = stage.result("openProjectFromFile", stage.path(u"other.ormt"_s));
    Stage::setTestMode(false);
    return opened;
}

/// Saves under a new name; true if the file holds this many questions and answers.
bool saves(Stage &stage, const QString &name, int questions, int answers)
{
    if (!stage.result("saveProjectToFile", stage.path(name)))
        return false;
    SideDatabase file(stage.path(name));
    return file.count(u"questions"_s) == questions && file.count(u"responses"_s) == answers;
}

/// Two personas and two questions, the first of which is being asked; the answers are held each in its turn.
bool startHeld(SurveyStage &stage)
{
    stage.fillTwoByTwo();
    stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).held(); });
    stage.startRun();
    return stage.arrived(1);
}

/// Lets the answer to the latest request come in; the next request follows it.
bool nextAnswer(SurveyStage &stage)
{
    const auto next = int(stage.endpoint.requests().size()) + 1;
    stage.endpoint.release();
    return stage.arrived(next);
}

bool finishRun(SurveyStage &stage)
{
    stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s); });
    stage.endpoint.release();
    return stage.runEnded();
}

} // namespace

class TestMeanwhile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saving_and_opening_behind_a_dialog_data();
    void saving_and_opening_behind_a_dialog();
    void a_dialog_of_a_row_that_is_gone_changes_none_data();
    void a_dialog_of_a_row_that_is_gone_changes_none();
    void saving_in_a_run_takes_the_answers_so_far_and_no_later_one();
    void opening_in_a_run_leaves_its_answers_in_the_new_project();
    void answers_that_come_behind_a_file_dialog_are_saved();
    void answers_that_come_behind_the_discard_prompt_are_kept_or_discarded_data();
    void answers_that_come_behind_the_discard_prompt_are_kept_or_discarded();
};

void TestMeanwhile::saving_and_opening_behind_a_dialog_data()
{
    QTest::addColumn<Act>("show");
    QTest::addColumn<bool>("opening");
    const auto add = [](const char *name, const Act &show) {
        QTest::addRow("saving behind %s", name) << show << false;
        QTest::addRow("opening behind %s", name) << show << true;
    };
    add("new persona", pressing(u"New"_s, u"Digital Twins"_s));
    add("persona", [](Stage &stage) { stage.call("editPersona", 0, 0); });
    add("new question", pressing(u"Add"_s, u"Questions"_s));
    add("question", [](Stage &stage) { stage.call("editQuestion", 280); });
    for (const auto entry : {"Preferences"_L1, "About"_L1, "Open Project"_L1, "Save As"_L1, "Import Pack"_L1})
        add(entry.data(), [entry](Stage &stage) { stage.action(entry)->trigger(); });
    add("append or replace", [](Stage &stage) {
        QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
        stage.call("importPack", stage.path(u"pack.ornk"_s));
    });
    add("discard", calling("openProjectFromFile", u"nowhere.ormt"_s));
    add("close", [](Stage &stage) { stage.window()->close(); });
}

void TestMeanwhile::saving_and_opening_behind_a_dialog()
{
    QFETCH(const Act, show);
    QFETCH(const bool, opening);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    showQuestions(stage, 300);
    writeOther(stage);
    bool done = false;
    const Modal modal([&](QWidget *) { done = opening ? openUnasked(stage) : saves(stage, u"saved.ormt"_s, 300, 0); });
    show(stage);
    QVERIFY(modal.wasAnswered());
    QVERIFY(done);
    QCOMPARE(shownPersonas(stage), QStringList{opening ? u"Number One"_s : u"Number Nine"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMeanwhile::a_dialog_of_a_row_that_is_gone_changes_none_data()
{
    QTest::addColumn<Act>("show");
    QTest::newRow("persona") << Act([](Stage &stage) { stage.call("editPersona", 0, 0); });
    QTest::newRow("question") << Act([](Stage &stage) { stage.call("editQuestion", 2); });
}

void TestMeanwhile::a_dialog_of_a_row_that_is_gone_changes_none()
{
    QFETCH(const Act, show);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    showQuestions(stage, 3);
    writeOther(stage);
    const Modal modal([&](QWidget *dialog) {
        QVERIFY(openUnasked(stage));
        QVERIFY(!stage.asksBeforeClosing());
        qobject_cast<QDialog *>(dialog)->accept();
    });
    show(stage);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList{u"Number One"_s});
    QCOMPARE(stage.column(u"SELECT prompt FROM questions"_s), QStringList{u"Why?"_s});
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
    // The dialog was accepted, and that counts as a change.
    QVERIFY(stage.asksBeforeClosing());
}

void TestMeanwhile::saving_in_a_run_takes_the_answers_so_far_and_no_later_one()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    for (int answers = 0; answers < 4; ++answers) {
        QCOMPARE(stage.endpoint.inFlight(), 1);
        QVERIFY(saves(stage, u"saved%1.ormt"_s.arg(answers), 2, answers));
        QVERIFY(questionListIsWhole(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(answers < 3 ? nextAnswer(stage) : finishRun(stage));
        QVERIFY(stage.asksBeforeClosing());
    }
    QVERIFY(saves(stage, u"end.ormt"_s, 2, 4));
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.answered(), stage.twoByTwo);
}

void TestMeanwhile::opening_in_a_run_leaves_its_answers_in_the_new_project()
{
    SurveyStage stage;
    writeOther(stage);
    QVERIFY(startHeld(stage));
    QVERIFY(nextAnswer(stage));
    QVERIFY(stage.action(u"Open Project"_s)->isEnabled());
    QVERIFY(openUnasked(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
    QCOMPARE(stage.count(u"responses"_s), 1);
    QVERIFY(nextAnswer(stage));
    // Of nobody in the project, but stored and a change.
    QCOMPARE(stage.count(u"responses"_s), 2);
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(finishRun(stage));
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.count(u"responses WHERE persona_uuid NOT IN (SELECT uuid FROM personas)"_s), 3);
    QCOMPARE(cells(resultsTable(stage)), (QList<QStringList>{{u"Number One"_s, u"Hm."_s, QString()}}));
    QVERIFY(saves(stage, u"mixed.ormt"_s, 1, 4));
}

void TestMeanwhile::answers_that_come_behind_a_file_dialog_are_saved()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    const QString path = stage.path(u"saved.ormt"_s);
    const Modal modal([&](QWidget *dialog) {
        QVERIFY(finishRun(stage));
        enterPath(dialog, path);
    });
    stage.action(u"Save As"_s)->trigger();
    QVERIFY(modal.wasAnswered());
    QCOMPARE(SideDatabase(path).count(u"responses"_s), 4);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMeanwhile::answers_that_come_behind_the_discard_prompt_are_kept_or_discarded_data()
{
    QTest::addColumn<bool>("discarded");
    QTest::newRow("kept") << false;
    QTest::newRow("discarded") << true;
}

void TestMeanwhile::answers_that_come_behind_the_discard_prompt_are_kept_or_discarded()
{
    QFETCH(const bool, discarded);
    SurveyStage stage;
    const QString path = writeOther(stage);
    QVERIFY(startHeld(stage));
    const Modal modal([&](QWidget *box) {
        QVERIFY(finishRun(stage));
        QCOMPARE(stage.count(u"responses"_s), 4);
        answerBox(box, discarded ? QMessageBox::Yes : QMessageBox::No);
    });
    QCOMPARE(stage.result("openProjectFromFile", path), discarded);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(stage.count(u"responses"_s), discarded ? 1 : 4);
    QCOMPARE(stage.asksBeforeClosing(), !discarded);
}

ORRINET_TEST(TestMeanwhile)
#include "tst_meanwhile.moc"
