// Saving and opening with long lists and during a run.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"
#include "tests/survey/surveystage.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

using Act = std::function<void(Stage &)>;

namespace {

/// Saves under a new name and reads the numbers of questions and answers from the file.
std::pair<int, int> saved(Stage &stage, const QString &name)
{
    if (!stage.result("saveProjectToFile", stage.path(name)))
        return {-1, -1};
    SideFile file(stage.path(name));
    return {file.value(u"SELECT COUNT(*) FROM questions"_s).toInt(),
            file.value(u"SELECT COUNT(*) FROM responses"_s).toInt()};
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

class TestSavingMeanwhile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_long_list_is_saved_and_whole_again_data();
    void a_long_list_is_saved_and_whole_again();
    void a_long_list_is_saved_after_each_kind_of_use_data();
    void a_long_list_is_saved_after_each_kind_of_use();
    void a_cell_that_is_being_edited_is_not_written();
    void saving_in_a_run_takes_the_answers_so_far();
    void an_answer_after_saving_is_an_unsaved_change();
    void opening_in_a_run_leaves_its_answers_in_the_new_project();
    void answers_that_come_behind_a_file_dialog_are_saved();
    void answers_that_come_behind_the_discard_prompt_are_kept_or_discarded_data();
    void answers_that_come_behind_the_discard_prompt_are_kept_or_discarded();
};

void TestSavingMeanwhile::a_long_list_is_saved_and_whole_again_data()
{
    QTest::addColumn<int>("questions");
    for (const int questions : {255, 256, 257, 300, 5000})
        QTest::addRow("%d", questions) << questions;
}

void TestSavingMeanwhile::a_long_list_is_saved_and_whole_again()
{
    QFETCH(const int, questions);
    Stage stage;
    QVERIFY(enterQuestions(stage, questions));
    QCOMPARE(saved(stage, u"first.ormt"_s).first, questions);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(saved(stage, u"second.ormt"_s).first, questions);
    QCOMPARE(questionModel(stage)->rowCount(), questions);
    QVERIFY(!questionModel(stage)->canFetchMore());
}

void TestSavingMeanwhile::a_long_list_is_saved_after_each_kind_of_use_data()
{
    QTest::addColumn<Act>("act");
    const auto press = [](const QString &button, int row) {
        return Act([button, row](Stage &stage) {
            questionView(stage)->selectRow(row);
            stage.button(button, u"Questions"_s)->click();
        });
    };
    QTest::newRow("an edited cell") << Act([](Stage &stage) {
        QVERIFY(questionModel(stage)->setData(questionModel(stage)->index(290, 2), u"Edited?"_s));
    });
    QTest::newRow("a question moved up") << press(u"Up"_s, 280);
    QTest::newRow("a question moved down") << press(u"Down"_s, 10);
    QTest::newRow("a deleted and a new one") << Act([press](Stage &stage) {
        press(u"Delete"_s, 270)(stage);
        stage.call("insertQuestion", u"New?"_s, u"text"_s, false);
    });
    QTest::newRow("a list read anew by its model") << Act([](Stage &stage) { stage.call("loadQuestions"); });
    QTest::newRow("a conversation") << Act([](Stage &stage) { stage.call("showConversation"); });
}

void TestSavingMeanwhile::a_long_list_is_saved_after_each_kind_of_use()
{
    QFETCH(const Act, act);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 300));
    act(stage);
    QCOMPARE(saved(stage, u"saved.ormt"_s).first, 300);
    QVERIFY(questionListIsWhole(stage));
    SideFile file(stage.path(u"saved.ormt"_s));
    const QString all = u"SELECT order_num, prompt FROM questions ORDER BY order_num"_s;
    QCOMPARE(file.rows(all), stage.rows(all));
}

void TestSavingMeanwhile::a_cell_that_is_being_edited_is_not_written()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    questionView(stage)->edit(questionModel(stage)->index(0, 2));
    auto *editor = questionView(stage)->findChild<QLineEdit *>();
    QVERIFY(editor != nullptr);
    editor->setText(u"Half a que"_s);
    QCOMPARE(saved(stage, u"saved.ormt"_s).first, 2);
    QCOMPARE(SideFile(stage.path(u"saved.ormt"_s)).value(u"SELECT prompt FROM questions"_s).toString(),
             u"Question 1"_s);
    QVERIFY(questionListIsWhole(stage));
    // A list that is taken away under the editor takes it along.
    questionView(stage)->edit(questionModel(stage)->index(0, 2));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"saved.ormt"_s)));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(questionListIsWhole(stage));
}

void TestSavingMeanwhile::saving_in_a_run_takes_the_answers_so_far()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    for (int answers = 0; answers < 4; ++answers) {
        QCOMPARE(stage.endpoint.inFlight(), 1);
        QCOMPARE(saved(stage, u"saved%1.ormt"_s.arg(answers)), std::pair(2, answers));
        QVERIFY(questionListIsWhole(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(answers < 3 ? nextAnswer(stage) : finishRun(stage));
    }
    QCOMPARE(saved(stage, u"end.ormt"_s), std::pair(2, 4));
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.answered(), stage.twoByTwo);
}

void TestSavingMeanwhile::an_answer_after_saving_is_an_unsaved_change()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(nextAnswer(stage));
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(finishRun(stage));
}

void TestSavingMeanwhile::opening_in_a_run_leaves_its_answers_in_the_new_project()
{
    SurveyStage stage;
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(startHeld(stage));
    QVERIFY(nextAnswer(stage));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QVERIFY(stage.action(u"Open Project"_s)->isEnabled());
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
    QCOMPARE(count(stage, u"responses"_s), 1);
    QVERIFY(nextAnswer(stage));
    // Of nobody in the project, but stored and a change.
    QCOMPARE(count(stage, u"responses"_s), 2);
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(finishRun(stage));
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(
        stage.value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid NOT IN (SELECT uuid FROM personas)"_s).toInt(),
        3);
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
             (QList<QStringList>{{u"Number One"_s, u"Hm."_s, QString()}}));
    QCOMPARE(saved(stage, u"mixed.ormt"_s), std::pair(1, 4));
}

void TestSavingMeanwhile::answers_that_come_behind_a_file_dialog_are_saved()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    const QString path = stage.path(u"saved.ormt"_s);
    const Modal modal([&](QWidget *dialog) {
        const bool ended = finishRun(stage);
        enterPath(dialog, path);
        QVERIFY(ended);
    });
    stage.action(u"Save As"_s)->trigger();
    QVERIFY(modal.wasAnswered());
    QCOMPARE(SideFile(path).value(u"SELECT COUNT(*) FROM responses"_s).toInt(), 4);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestSavingMeanwhile::answers_that_come_behind_the_discard_prompt_are_kept_or_discarded_data()
{
    QTest::addColumn<bool>("discarded");
    QTest::newRow("kept") << false;
    QTest::newRow("discarded") << true;
}

void TestSavingMeanwhile::answers_that_come_behind_the_discard_prompt_are_kept_or_discarded()
{
    QFETCH(const bool, discarded);
    SurveyStage stage;
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(startHeld(stage));
    const Modal modal([&](QWidget *box) {
        const bool ended = finishRun(stage);
        answerBox(box, discarded ? QMessageBox::Yes : QMessageBox::No);
        QVERIFY(ended);
    });
    QCOMPARE(stage.result("openProjectFromFile", path), discarded);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(count(stage, u"responses"_s), discarded ? 1 : 4);
    QCOMPARE(stage.asksBeforeClosing(), !discarded);
}

QTEST_MAIN(TestSavingMeanwhile)
#include "tst_savingmeanwhile.moc"
