// The question that comes before a changed project is given up for another.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QDialog>

using namespace Qt::StringLiterals;

namespace {

Answer pressingOn(QMessageBox::StandardButton button)
{
    return [button](QWidget *box) { answerBox(box, button); };
}

Answer typing(Qt::Key key)
{
    return [key](QWidget *window) { QTest::keyClick(window, key); };
}

/// Ends a dialog as no button of it does.
Answer ending(int result)
{
    return [result](QWidget *dialog) { qobject_cast<QDialog *>(dialog)->done(result); };
}

} // namespace

class TestDiscardPrompt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opening_asks_before_changes_are_discarded();
    void answer_decides_whether_changes_are_discarded_data();
    void answer_decides_whether_changes_are_discarded();
    void opening_asks_nothing_data();
    void opening_asks_nothing();
    void the_question_comes_after_the_file_dialog();
    void the_question_comes_before_the_file_is_looked_at();
    void what_happens_behind_the_question_counts();
    void closing_takes_an_answer_without_a_button_for_a_yes();
};

void TestDiscardPrompt::opening_asks_before_changes_are_discarded()
{
    Stage stage;
    stage.window()->markDirty();
    const Modal modal([&stage](QWidget *window) {
        auto *box = qobject_cast<QMessageBox *>(window);
        QVERIFY(box != nullptr);
        QCOMPARE(box->windowTitle(), u"Open Project"_s);
        QCOMPARE(box->text(), u"Discard current changes and open another project?"_s);
        QCOMPARE(box->icon(), QMessageBox::Question);
        QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box->buttons().size(), 2);
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
        QCOMPARE(box->parentWidget(), stage.window());
    });
    QVERIFY(!stage.result("openProjectFromFile", writeOther(stage)));
    QVERIFY(modal.wasAnswered());
}

void TestDiscardPrompt::answer_decides_whether_changes_are_discarded_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<bool>("opened");
    QTest::newRow("Yes") << pressingOn(QMessageBox::Yes) << true;
    QTest::newRow("No") << pressingOn(QMessageBox::No) << false;
    QTest::newRow("Escape") << typing(Qt::Key_Escape) << false;
    QTest::newRow("Return") << typing(Qt::Key_Return) << false;
    QTest::newRow("closed") << Answer([](QWidget *box) { box->close(); }) << false;
    QTest::newRow("no button") << ending(-1) << false;
    QTest::newRow("accepted by no button") << ending(QDialog::Accepted) << false;
}

void TestDiscardPrompt::answer_decides_whether_changes_are_discarded()
{
    QFETCH(const Answer, answer);
    QFETCH(const bool, opened);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    stage.call("insertQuestion", u"Mine?"_s, u"text"_s, false);
    const QString path = writeOther(stage);
    const QSqlTableModel *model = questionModel(stage);
    const Modal modal(answer);
    QCOMPARE(stage.result("openProjectFromFile", path), opened);
    QVERIFY(modal.wasAnswered());

    const QStringList expected{opened ? u"Number One"_s : u"Number Nine"_s};
    QCOMPARE(shownPersonas(stage), expected);
    QCOMPARE(stage.column(u"SELECT name FROM personas"_s), expected);
    QCOMPARE(stage.column(u"SELECT prompt FROM questions"_s), QStringList{opened ? u"Why?"_s : u"Mine?"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(opened || questionModel(stage) == model);
    QCOMPARE(stage.asksBeforeClosing(), !opened);
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(opened ? savesTo(stage, path) : belongsToNoFile(stage));
}

void TestDiscardPrompt::opening_asks_nothing_data()
{
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("testMode");
    QTest::newRow("unchanged") << false << false;
    QTest::newRow("in test mode") << true << true;
}

void TestDiscardPrompt::opening_asks_nothing()
{
    QFETCH(const bool, changed);
    QFETCH(const bool, testMode);
    Stage stage;
    Stage::setTestMode(testMode);
    if (changed)
        stage.window()->markDirty();
    // Closing asks in test mode as well.
    QCOMPARE(stage.asksBeforeClosing(), changed);
    const QString path = writeOther(stage);
    QVERIFY(asksNothing([&] { QVERIFY(stage.result("openProjectFromFile", path)); }));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestDiscardPrompt::the_question_comes_after_the_file_dialog()
{
    Stage stage;
    stage.window()->markDirty();
    const QString path = writeOther(stage);
    const Answer choose = [path](QWidget *dialog) { enterPath(dialog, path); };
    QCOMPARE(answerInTurn(stage, u"Open Project"_s, {choose, pressingOn(QMessageBox::Yes)}), 2);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestDiscardPrompt::the_question_comes_before_the_file_is_looked_at()
{
    Stage stage;
    stage.window()->markDirty();
    // Nor does a path that can't be opened spare the question.
    for (const auto name : {"missing.ormt"_L1, "no/where.ormt"_L1}) {
        const Modal modal([](QWidget *box) {
            QVERIFY(onlyProjectIsConnected());
            answerBox(box, QMessageBox::No);
        });
        QVERIFY(!stage.result("openProjectFromFile", stage.path(name)));
        QVERIFY(modal.wasAnswered());
        QVERIFY(!QFile::exists(stage.path(name)));
    }
}

void TestDiscardPrompt::what_happens_behind_the_question_counts()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    const QString inner = writeOther(stage);
    const QString outer = writeProject(stage.path(u"outer.ormt"_s),
                                       {u"INSERT INTO personas (uuid, name) VALUES ('two', 'Number Two')"_s});
    const Modal modal([&](QWidget *box) {
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"meanwhile.ormt"_s)));
        QVERIFY(stage.result("openProjectFromFile", inner));
        QVERIFY(stage.call("newProject"));
        answerBox(box, QMessageBox::Yes);
    });
    QVERIFY(stage.result("openProjectFromFile", outer));
    QVERIFY(modal.wasAnswered());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number Two"_s});
    QCOMPARE(stage.count(u"questions"_s), 0);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(savesTo(stage, outer));
}

void TestDiscardPrompt::closing_takes_an_answer_without_a_button_for_a_yes()
{
    Stage stage;
    stage.window()->show();
    stage.window()->markDirty();
    const Modal modal(ending(QDialog::Accepted));
    QVERIFY(stage.window()->close());
    QVERIFY(modal.wasAnswered());
}

ORRINET_TEST(TestDiscardPrompt)
#include "tst_discardprompt.moc"
