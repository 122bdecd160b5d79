// The file dialogs of opening and saving, and what becomes of a name that is entered.

#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"
#include "tests/support/modal.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QScopeGuard>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

using Answer = std::function<void(QWidget *)>;

namespace {

void reject(QWidget *dialog)
{
    qobject_cast<QDialog *>(dialog)->reject();
}

/// Triggers a menu entry that must show no window.
bool staysSilent(Stage &stage, const QString &entry)
{
    const Modal modal(reject);
    stage.action(entry)->trigger();
    QCoreApplication::processEvents();
    return !modal.wasAnswered();
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
    QTest::addColumn<int>("acceptMode");
    QTest::addColumn<int>("fileMode");
    const int save = QFileDialog::AcceptSave;
    QTest::newRow("Open Project") << u"Open Project"_s << u"Open Project"_s << int(QFileDialog::AcceptOpen)
                                  << int(QFileDialog::ExistingFile);
    QTest::newRow("Save As") << u"Save As"_s << u"Save Project"_s << save << int(QFileDialog::AnyFile);
    QTest::newRow("Save for the first time") << u"Save"_s << u"Save Project"_s << save << int(QFileDialog::AnyFile);
}

void TestProjectDialogs::file_dialog_says_what_it_is_for()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, caption);
    QFETCH(const int, acceptMode);
    QFETCH(const int, fileMode);
    Stage stage;
    const Modal modal([&](QWidget *window) {
        const auto done = qScopeGuard([window] { reject(window); });
        const auto *dialog = qobject_cast<QFileDialog *>(window);
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), caption);
        QCOMPARE(int(dialog->acceptMode()), acceptMode);
        QCOMPARE(int(dialog->fileMode()), fileMode);
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
    {
        const Modal modal([&](QWidget *dialog) {
            qobject_cast<QFileDialog *>(dialog)->setDirectory(stage.path(u"files"_s));
            enterPath(dialog, u"saved.ormt"_s);
        });
        stage.action(u"Save As"_s)->trigger();
    }
    QVERIFY(QFile::exists(stage.path(u"files/saved.ormt"_s)));
    for (const auto entry : {"Open Project"_L1, "Save As"_L1}) {
        QString folder;
        const Modal modal([&](QWidget *dialog) {
            folder = qobject_cast<QFileDialog *>(dialog)->directory().dirName();
            reject(dialog);
        });
        stage.action(entry)->trigger();
        QCOMPARE(folder, u"files"_s);
    }
}

void TestProjectDialogs::cancelled_dialog_does_nothing_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<Answer>("answer");
    for (const auto entry : {"Open Project"_L1, "Save As"_L1, "Save"_L1}) {
        QTest::addRow("%s, rejected", entry.data()) << QString(entry) << Answer(reject);
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
    const QStringList files = QDir(stage.path(QString())).entryList(QDir::Files);
    const Modal modal(answer);
    stage.action(entry)->trigger();
    QVERIFY(modal.wasAnswered());
    QCOMPARE(QDir(stage.path(QString())).entryList(QDir::Files), files);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
}

void TestProjectDialogs::chosen_name_is_saved_as_it_stands()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString path = stage.path(u"no extension"_s);
    const Modal modal([&](QWidget *dialog) { enterPath(dialog, path); });
    stage.action(u"Save As"_s)->trigger();
    QVERIFY(modal.wasAnswered());
    QVERIFY(QFile::exists(path));
    QVERIFY(!QFile::exists(path + ".ormt"_L1));
    QCOMPARE(SideFile(path).value(u"SELECT name FROM personas"_s).toString(), u"Number One"_s);
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
}

void TestProjectDialogs::chosen_file_is_opened()
{
    Stage stage;
    const QString path = stage.path(u"other.project"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    const Modal modal([&](QWidget *dialog) { enterPath(dialog, path); });
    stage.action(u"Open Project"_s)->trigger();
    QVERIFY(modal.wasAnswered());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(savesTo(stage, path));
}

void TestProjectDialogs::chosen_file_that_does_not_open_leaves_no_sign()
{
    Stage stage;
    const QString path = stage.path(u"text.ormt"_s);
    QVERIFY(writeBytes(path, "No database at all. "_ba.repeated(50)));
    const MessageLog log;
    {
        const Modal modal([&](QWidget *dialog) { enterPath(dialog, path); });
        stage.action(u"Open Project"_s)->trigger();
        QVERIFY(modal.wasAnswered());
    }
    const Modal modal(reject);
    QCoreApplication::processEvents();
    QVERIFY(!modal.wasAnswered());
    QCOMPARE(log.warnings(), QStringList{refusal(stage, u"ATTACH DATABASE '%1' AS disk"_s.arg(path))});
}

void TestProjectDialogs::saving_over_a_file_fails_even_when_confirmed()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const QByteArray before = readBytes(path);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const MessageLog log;
    {
        std::unique_ptr<Modal> confirmation;
        const Modal modal([&](QWidget *dialog) {
            confirmation = std::make_unique<Modal>([](QWidget *box) { answerBox(box, QMessageBox::Yes); });
            enterPath(dialog, path);
        });
        stage.action(u"Save As"_s)->trigger();
        QVERIFY(confirmation->wasAnswered());
    }
    const Modal modal(reject);
    QCoreApplication::processEvents();
    QVERIFY(!modal.wasAnswered());
    QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {path})});
    QCOMPARE(readBytes(path), before);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectDialogs::replacement_that_is_not_confirmed_saves_nothing()
{
    Stage stage;
    const QString path = stage.path(u"there.ormt"_s);
    QVERIFY(writeBytes(path, "taken"));
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    std::unique_ptr<Modal> confirmation;
    const Modal modal([&](QWidget *dialog) {
        confirmation = std::make_unique<Modal>([](QWidget *box) { answerBox(box, QMessageBox::No); });
        enterPath(dialog, path);
        reject(dialog);
    });
    stage.action(u"Save As"_s)->trigger();
    QVERIFY(confirmation->wasAnswered());
    QCOMPARE(readBytes(path), "taken"_ba);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectDialogs::save_asks_for_a_name_once()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    {
        const Modal modal([&](QWidget *dialog) { enterPath(dialog, path); });
        stage.action(u"Save"_s)->trigger();
        QVERIFY(modal.wasAnswered());
    }
    QVERIFY(QFile::remove(path));
    QVERIFY(staysSilent(stage, u"Save"_s));
    QVERIFY(QFile::exists(path));
    // Now there is a file, which "Save" does not write over, and it does not ask for another name.
    stage.window()->markDirty();
    const MessageLog log;
    QVERIFY(staysSilent(stage, u"Save"_s));
    QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {path})});
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
        QVERIFY(staysSilent(stage, entry));
    }
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
}

QTEST_MAIN(TestProjectDialogs)
#include "tst_projectdialogs.moc"
