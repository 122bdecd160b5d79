// The file dialogs of opening and saving, and what becomes of a name that is entered.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

/// Enters a path in a file dialog.
Answer choosing(const QString &path)
{
    return [path](QWidget *dialog) { enterPath(dialog, path); };
}

/// Answers the file dialog's own question whether a file is to be replaced.
Answer confirming(QMessageBox::StandardButton button)
{
    return [button](QWidget *box) { answerBox(box, button); };
}

} // namespace

class TestProjectDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void file_dialog_says_what_it_is_for_data();
    void file_dialog_says_what_it_is_for();
    void file_dialog_starts_where_the_last_one_was();
    void cancelled_dialog_does_nothing_data();
    void cancelled_dialog_does_nothing();
    void chosen_name_is_saved_as_it_stands();
    void chosen_file_is_opened();
    void chosen_file_that_does_not_open_leaves_no_sign();
    void saving_over_a_file_fails_even_when_confirmed();
    void replacement_that_is_not_confirmed_saves_nothing();
    void save_asks_for_a_name_once();
    void nothing_is_asked_in_test_mode_data();
    void nothing_is_asked_in_test_mode();
};

void TestProjectDialogs::file_dialog_says_what_it_is_for_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("saves");
    QTest::newRow("Open Project") << u"Open Project"_s << u"Open Project"_s << false;
    QTest::newRow("Save As") << u"Save As"_s << u"Save Project"_s << true;
    QTest::newRow("Save for the first time") << u"Save"_s << u"Save Project"_s << true;
}

void TestProjectDialogs::file_dialog_says_what_it_is_for()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, caption);
    QFETCH(const bool, saves);
    Stage stage;
    const Modal modal([&](QWidget *window) {
        const auto *dialog = qobject_cast<QFileDialog *>(window);
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), caption);
        QCOMPARE(dialog->acceptMode(), saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        QCOMPARE(dialog->fileMode(), saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
        QCOMPARE(dialog->nameFilters(), (QStringList{u"Persona Project (*.ormt)"_s, u"All Files (*)"_s}));
        QCOMPARE(dialog->selectedNameFilter(), u"Persona Project (*.ormt)"_s);
        QVERIFY(dialog->defaultSuffix().isEmpty());
        QVERIFY(dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->text().isEmpty());
        QCOMPARE(dialog->parentWidget(), stage.window());
    });
    stage.action(entry)->trigger();
    QVERIFY(modal.wasAnswered());
}

void TestProjectDialogs::file_dialog_starts_where_the_last_one_was()
{
    Stage stage;
    QVERIFY(QDir(stage.path(QString())).mkdir(u"files"_s));
    const Answer saveThere = [&stage](QWidget *dialog) {
        qobject_cast<QFileDialog *>(dialog)->setDirectory(stage.path(u"files"_s));
        enterPath(dialog, u"saved.ormt"_s);
    };
    QCOMPARE(answerInTurn(stage, u"Save As"_s, {saveThere}), 1);
    QCOMPARE(filesIn(stage, u"files"_s), QStringList{u"saved.ormt"_s});
    for (const auto entry : {"Open Project"_L1, "Save As"_L1}) {
        QString folder;
        const Answer look = [&folder](QWidget *dialog) {
            folder = qobject_cast<QFileDialog *>(dialog)->directory().dirName();
        };
        QCOMPARE(answerInTurn(stage, entry, {look}), 1);
        QCOMPARE(folder, u"files"_s);
    }
}

void TestProjectDialogs::cancelled_dialog_does_nothing_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<Answer>("answer");
    for (const auto entry : {"Open Project"_L1, "Save As"_L1, "Save"_L1}) {
        QTest::addRow("%s, Cancel", entry.data())
            << QString(entry) << Answer([](QWidget *dialog) { QVERIFY(pressButton(dialog, u"Cancel"_s)); });
        QTest::addRow("%s, Escape", entry.data())
            << QString(entry) << Answer([](QWidget *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        QTest::addRow("%s, closed", entry.data()) << QString(entry) << Answer([](QWidget *dialog) { dialog->close(); });
    }
}

void TestProjectDialogs::cancelled_dialog_does_nothing()
{
    QFETCH(const QString, entry);
    QFETCH(const Answer, answer);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QStringList files = filesIn(stage);
    QCOMPARE(answerInTurn(stage, entry, {answer}), 1);
    QCOMPARE(filesIn(stage), files);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
}

void TestProjectDialogs::chosen_name_is_saved_as_it_stands()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString path = stage.path(u"no extension"_s);
    QCOMPARE(answerInTurn(stage, u"Save As"_s, {choosing(path)}), 1);
    QCOMPARE(filesIn(stage), QStringList{u"no extension"_s});
    QCOMPARE(SideDatabase(path).column(u"SELECT name FROM personas"_s), QStringList{u"Number One"_s});
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
}

void TestProjectDialogs::chosen_file_is_opened()
{
    Stage stage;
    const QString path = writeProject(stage.path(u"other.project"_s), oneOfEach());
    QCOMPARE(answerInTurn(stage, u"Open Project"_s, {choosing(path)}), 1);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(savesTo(stage, path));
}

void TestProjectDialogs::chosen_file_that_does_not_open_leaves_no_sign()
{
    Stage stage;
    const QString path = writeText(stage);
    const MessageLog log;
    QCOMPARE(answerInTurn(stage, u"Open Project"_s, {choosing(path)}), 1);
    QCOMPARE(log.warnings(), QStringList{readingError(stage, path)});
}

void TestProjectDialogs::saving_over_a_file_fails_even_when_confirmed()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const QByteArray before = readBytes(path);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const MessageLog log;
    QCOMPARE(answerInTurn(stage, u"Save As"_s, {choosing(path), confirming(QMessageBox::Yes)}), 2);
    QCOMPARE(log.warnings(), QStringList{savingError(stage, path)});
    QCOMPARE(readBytes(path), before);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectDialogs::replacement_that_is_not_confirmed_saves_nothing()
{
    Stage stage;
    const QString path = writeBytes(stage.path(u"there.ormt"_s), "taken"_ba);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QCOMPARE(answerInTurn(stage, u"Save As"_s, {choosing(path), confirming(QMessageBox::No)}), 2);
    QCOMPARE(readBytes(path), "taken"_ba);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectDialogs::save_asks_for_a_name_once()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QCOMPARE(answerInTurn(stage, u"Save"_s, {choosing(path)}), 1);
    QVERIFY(QFile::remove(path));
    QCOMPARE(answerInTurn(stage, u"Save"_s, {}), 0);
    QVERIFY(QFile::exists(path));
    // Now there is a file, which "Save" does not write over, and it does not ask for another name.
    stage.window()->markDirty();
    const MessageLog log;
    QCOMPARE(answerInTurn(stage, u"Save"_s, {}), 0);
    QCOMPARE(log.warnings(), QStringList{savingError(stage, path)});
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectDialogs::nothing_is_asked_in_test_mode_data()
{
    QTest::addColumn<QString>("entry");
    for (const auto entry : {"Open Project"_L1, "Save"_L1, "Save As"_L1})
        QTest::newRow(entry.data()) << QString(entry);
}

void TestProjectDialogs::nothing_is_asked_in_test_mode()
{
    QFETCH(const QString, entry);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    // Any value counts, even an empty one.
    for (const auto &value : {"1"_ba, "0"_ba, ""_ba}) {
        qputenv("ORRINET_TEST_MODE", value);
        QCOMPARE(answerInTurn(stage, entry, {}), 0);
    }
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
}

ORRINET_TEST(TestProjectDialogs)
#include "tst_projectdialogs.moc"
