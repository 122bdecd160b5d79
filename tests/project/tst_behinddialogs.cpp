// Outside code saves or opens a project while a dialog of the window waits for its answer.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QDialog>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

using Act = std::function<void(Stage &)>;

class TestBehindDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saving_behind_a_dialog_data();
    void saving_behind_a_dialog();
    void opening_behind_a_dialog_data();
    void opening_behind_a_dialog();
    void a_dialog_of_a_row_that_is_gone_changes_none_data();
    void a_dialog_of_a_row_that_is_gone_changes_none();
};

void TestBehindDialogs::saving_behind_a_dialog_data()
{
    QTest::addColumn<Act>("show");
    QTest::newRow("new persona") << Act([](Stage &stage) { stage.call("newPersona"); });
    QTest::newRow("persona") << Act([](Stage &stage) { stage.call("editPersona", 0, 0); });
    QTest::newRow("new question") << Act([](Stage &stage) { stage.button(u"Add"_s, u"Questions"_s)->click(); });
    QTest::newRow("question") << Act([](Stage &stage) { stage.call("editQuestion", 280); });
    QTest::newRow("preferences") << Act([](Stage &stage) { stage.action(u"Preferences"_s)->trigger(); });
    QTest::newRow("about") << Act([](Stage &stage) { stage.action(u"About"_s)->trigger(); });
    QTest::newRow("open") << Act([](Stage &stage) { stage.action(u"Open Project"_s)->trigger(); });
    QTest::newRow("save as") << Act([](Stage &stage) { stage.action(u"Save As"_s)->trigger(); });
    QTest::newRow("import") << Act([](Stage &stage) { stage.action(u"Import Pack"_s)->trigger(); });
    QTest::newRow("append or replace") << Act([](Stage &stage) {
        QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
        stage.call("importPack", stage.path(u"pack.ornk"_s));
    });
    QTest::newRow("discard") << Act(
        [](Stage &stage) { stage.call("openProjectFromFile", stage.path(u"nowhere.ormt"_s)); });
    QTest::newRow("close") << Act([](Stage &stage) { stage.window()->close(); });
}

void TestBehindDialogs::saving_behind_a_dialog()
{
    QFETCH(const Act, show);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 300));
    int questions = 0;
    const Modal modal([&](QWidget *dialog) {
        if (stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)))
            questions = SideFile(stage.path(u"saved.ormt"_s)).value(u"SELECT COUNT(*) FROM questions"_s).toInt();
        dialog->close();
    });
    show(stage);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(questions, 300);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
}

void TestBehindDialogs::opening_behind_a_dialog_data()
{
    saving_behind_a_dialog_data();
}

void TestBehindDialogs::opening_behind_a_dialog()
{
    QFETCH(const Act, show);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 300));
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    bool opened = false;
    const Modal modal([&](QWidget *dialog) {
        Stage::setTestMode(true);
        opened = stage.result("openProjectFromFile", stage.path(u"other.ormt"_s));
        Stage::setTestMode(false);
        dialog->close();
    });
    show(stage);
    QVERIFY(modal.wasAnswered());
    QVERIFY(opened);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
}

void TestBehindDialogs::a_dialog_of_a_row_that_is_gone_changes_none_data()
{
    QTest::addColumn<Act>("show");
    QTest::newRow("persona") << Act([](Stage &stage) { stage.call("editPersona", 0, 0); });
    QTest::newRow("question") << Act([](Stage &stage) { stage.call("editQuestion", 2); });
}

void TestBehindDialogs::a_dialog_of_a_row_that_is_gone_changes_none()
{
    QFETCH(const Act, show);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 3));
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    const Modal modal([&](QWidget *dialog) {
        Stage::setTestMode(true);
        stage.call("openProjectFromFile", stage.path(u"other.ormt"_s));
        qobject_cast<QDialog *>(dialog)->accept();
    });
    show(stage);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(stage.rows(u"SELECT name FROM personas"_s), (Rows{{u"Number One"_s}}));
    QCOMPARE(stage.rows(u"SELECT prompt FROM questions"_s), (Rows{{u"Why?"_s}}));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
}

QTEST_MAIN(TestBehindDialogs)
#include "tst_behinddialogs.moc"
