// The question that comes before a changed project is given up for another.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QMessageBox>
#include <QScopeGuard>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

using Answer = std::function<void(QWidget *)>;

class TestDiscardPrompt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opening_asks_before_changes_are_discarded();
    void answer_decides_whether_changes_are_discarded_data();
    void answer_decides_whether_changes_are_discarded();
    void unchanged_project_is_discarded_unasked();
    void the_question_comes_after_the_file_dialog();
    void the_question_comes_before_the_file_is_looked_at();
    void what_happens_behind_the_question_counts();
    void an_answer_without_a_button_closes_the_window_but_opens_nothing();
    void opening_asks_nothing_in_test_mode();
};

void TestDiscardPrompt::opening_asks_before_changes_are_discarded()
{
    Stage stage;
    stage.window()->markDirty();
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s)));
    const Modal modal([&stage](QWidget *window) {
        auto *box = qobject_cast<QMessageBox *>(window);
        QVERIFY(box != nullptr);
        const auto done = qScopeGuard([box] { answerBox(box, QMessageBox::No); });
        QCOMPARE(box->windowTitle(), u"Open Project"_s);
        QCOMPARE(box->text(), u"Discard current changes and open another project?"_s);
        QCOMPARE(box->icon(), QMessageBox::Question);
        QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box->buttons().size(), 2);
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
        QCOMPARE(box->parentWidget(), stage.window());
    });
    QVERIFY(!stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QVERIFY(modal.wasAnswered());
}

void TestDiscardPrompt::answer_decides_whether_changes_are_discarded_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<bool>("opened");
    QTest::newRow("Yes") << Answer([](QWidget *box) { answerBox(box, QMessageBox::Yes); }) << true;
    QTest::newRow("No") << Answer([](QWidget *box) { answerBox(box, QMessageBox::No); }) << false;
    QTest::newRow("Escape") << Answer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); }) << false;
    QTest::newRow("Return") << Answer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); }) << false;
    QTest::newRow("closed") << Answer([](QWidget *box) { box->close(); }) << false;
    QTest::newRow("no button") << Answer([](QWidget *box) { qobject_cast<QDialog *>(box)->done(-1); }) << false;
}

void TestDiscardPrompt::answer_decides_whether_changes_are_discarded()
{
    QFETCH(const Answer, answer);
    QFETCH(const bool, opened);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    const QSqlTableModel *model = questionModel(stage);
    {
        const Modal modal(answer);
        QCOMPARE(stage.result("openProjectFromFile", path), opened);
        QVERIFY(modal.wasAnswered());
    }
    QCOMPARE(shownPersonas(stage), QStringList{opened ? u"Number One"_s : u"Number Nine"_s});
    QCOMPARE(stage.value(u"SELECT name FROM personas"_s).toString(), opened ? u"Number One"_s : u"Number Nine"_s);
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(stage.asksBeforeClosing(), !opened);
    QVERIFY(onlyProjectIsConnected());
    if (opened) {
        QVERIFY(savesTo(stage, path));
    } else {
        QCOMPARE(questionModel(stage), model);
        QVERIFY(belongsToNoFile(stage));
    }
}

void TestDiscardPrompt::unchanged_project_is_discarded_unasked()
{
    Stage stage;
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QVERIFY(!modal.wasAnswered());
}

void TestDiscardPrompt::the_question_comes_after_the_file_dialog()
{
    Stage stage;
    stage.window()->markDirty();
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    std::unique_ptr<Modal> question;
    const Modal modal([&](QWidget *dialog) {
        enterPath(dialog, stage.path(u"other.ormt"_s));
        question = std::make_unique<Modal>([](QWidget *box) { answerBox(box, QMessageBox::Yes); });
    });
    stage.action(u"Open Project"_s)->trigger();
    QVERIFY(question->wasAnswered());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestDiscardPrompt::the_question_comes_before_the_file_is_looked_at()
{
    Stage stage;
    stage.window()->markDirty();
    const QString path = stage.path(u"missing.ormt"_s);
    const Modal modal([&](QWidget *box) {
        QVERIFY(onlyProjectIsConnected());
        answerBox(box, QMessageBox::No);
    });
    QVERIFY(!stage.result("openProjectFromFile", path));
    QVERIFY(modal.wasAnswered());
    QVERIFY(!QFile::exists(path));
    // Nor does a path that can't be opened spare the question.
    const Modal again([](QWidget *box) { answerBox(box, QMessageBox::No); });
    QVERIFY(!stage.result("openProjectFromFile", stage.path(u"no/where.ormt"_s)));
    QVERIFY(again.wasAnswered());
}

void TestDiscardPrompt::what_happens_behind_the_question_counts()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    const QString inner = stage.path(u"inner.ormt"_s);
    const QString outer = stage.path(u"outer.ormt"_s);
    QVERIFY(makeProjectFile(inner, oneOfEach()));
    QVERIFY(makeProjectFile(outer, {u"INSERT INTO personas (uuid, name) VALUES ('two', 'Number Two')"_s}));
    const Modal modal([&](QWidget *box) {
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"meanwhile.ormt"_s)));
        QVERIFY(stage.result("openProjectFromFile", inner));
        QVERIFY(stage.call("newProject"));
        answerBox(box, QMessageBox::Yes);
    });
    QVERIFY(stage.result("openProjectFromFile", outer));
    QVERIFY(modal.wasAnswered());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number Two"_s});
    QCOMPARE(count(stage, u"questions"_s), 0);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(savesTo(stage, outer));
}

void TestDiscardPrompt::an_answer_without_a_button_closes_the_window_but_opens_nothing()
{
    Stage stage;
    stage.window()->show();
    stage.window()->markDirty();
    const Modal modal([](QWidget *box) { qobject_cast<QDialog *>(box)->accept(); });
    QVERIFY(!stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QVERIFY(modal.wasAnswered());
    const Modal again([](QWidget *box) { qobject_cast<QDialog *>(box)->accept(); });
    QVERIFY(stage.window()->close());
    QVERIFY(again.wasAnswered());
}

void TestDiscardPrompt::opening_asks_nothing_in_test_mode()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    Stage::setTestMode(true);
    {
        const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
        QCoreApplication::processEvents();
        QVERIFY(!modal.wasAnswered());
    }
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // Closing asks in test mode as well.
    stage.window()->markDirty();
    QVERIFY(stage.asksBeforeClosing());
}

QTEST_MAIN(TestDiscardPrompt)
#include "tst_discardprompt.moc"
