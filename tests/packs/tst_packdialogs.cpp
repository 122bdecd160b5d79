// "Import Pack" and "Export Pack" of the menu, through their file dialogs.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Answer = std::function<void(QFileDialog *)>;

/// Chooses a file as a user does who types its path.
Answer choose(const QString &path)
{
    return [path](QFileDialog *dialog) { enterPath(dialog, path); };
}

/// Triggers a menu entry and answers the file dialog that it opens, which is given up where the answer leaves it open;
/// false if none came.
bool trigger(Stage &stage, const QString &entry, const Answer &answer = [](QFileDialog *) {})
{
    const Modal modal([&answer](QWidget *window) {
        auto *dialog = qobject_cast<QFileDialog *>(window);
        QVERIFY(dialog != nullptr);
        answer(dialog);
    });
    stage.action(entry)->trigger();
    return modal.wasAnswered();
}

/// The same; true if no other window came after the dialog.
bool triggerQuietly(Stage &stage, const QString &entry, const Answer &answer)
{
    std::unique_ptr<Modal> later;
    const bool came = trigger(stage, entry, [&](QFileDialog *dialog) {
        // It looks for a window when the dialog is closed.
        later = std::make_unique<Modal>([](QWidget *) {});
        answer(dialog);
    });
    return came && !later->wasAnswered();
}

QStringList filesOf(const Stage &stage)
{
    return QDir(stage.path(u""_s)).entryList(QDir::Files);
}

} // namespace

class TestPackDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialogs_ask_for_a_pack_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QFileDialog::AcceptMode>("acceptMode");
        QTest::addColumn<QFileDialog::FileMode>("fileMode");
        QTest::addRow("export") << u"Export Pack"_s << u"Export Persona Pack"_s << QFileDialog::AcceptSave
                                << QFileDialog::AnyFile;
        QTest::addRow("import") << u"Import Pack"_s << u"Open Persona Pack"_s << QFileDialog::AcceptOpen
                                << QFileDialog::ExistingFile;
    }

    void dialogs_ask_for_a_pack()
    {
        QFETCH(QString, entry);
        Stage stage;
        // Where the last dialog was is where one opens for which no folder is named.
        const QString visited = QDir(stage.path(u""_s)).canonicalPath();
        QFileDialog().setDirectory(visited);
        QVERIFY(trigger(stage, entry, [&](QFileDialog *dialog) {
            QCOMPARE(dialog->parentWidget(), stage.window());
            QTEST(dialog->windowTitle(), "caption");
            QTEST(dialog->acceptMode(), "acceptMode");
            QTEST(dialog->fileMode(), "fileMode");
            QCOMPARE(dialog->nameFilters(), QStringList({u"Persona Pack (*.ornk)"_s, u"All Files (*)"_s}));
            QCOMPARE(dialog->selectedNameFilter(), u"Persona Pack (*.ornk)"_s);
            QCOMPARE(dialog->defaultSuffix(), QString());
            QCOMPARE(dialog->options(), QFileDialog::Options());
            QCOMPARE(dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->text(), QString());
            QCOMPARE(dialog->directory().canonicalPath(), visited);
        }));
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void the_chosen_file_is_exported_to_as_it_is_named_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addRow("with the extension") << u"twins.ornk"_s;
        QTest::addRow("without an extension") << u"twins"_s;
        QTest::addRow("with another one") << u"it's Zwölf Двойники.txt"_s;
    }

    void the_chosen_file_is_exported_to_as_it_is_named()
    {
        QFETCH(QString, name);
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(triggerQuietly(stage, u"Export Pack"_s, choose(stage.path(name))));
        QCOMPARE(filesOf(stage), QStringList{name});
        QCOMPARE(namesIn(stage.path(name)), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_cancelled_dialog_does_nothing()
    {
        Stage stage;
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        for (const QString &entry : {u"Export Pack"_s, u"Import Pack"_s})
            QVERIFY(triggerQuietly(stage, entry, [](QFileDialog *dialog) { dialog->reject(); }));
        QCOMPARE(filesOf(stage), QStringList());
        QCOMPARE(announced.size(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void test_mode_opens_no_dialog_and_announces_no_path()
    {
        Stage stage;
        Stage::setTestMode(true);
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        const QuietRefresh quiet(stage);
        for (const QString &entry : {u"Export Pack"_s, u"Import Pack"_s})
            QVERIFY(!trigger(stage, entry));
        QCOMPARE(filesOf(stage), QStringList());
        QCOMPARE(announced, Rows({{QString()}}));
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_file_that_was_to_be_replaced_is_added_to()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = packOf(stage.path(u"old.ornk"_s), PersonaEntered{u"11111111-aaaa"_s, u"Theirs"_s});
        QString question;
        QVERIFY(trigger(stage, u"Export Pack"_s, [&](QFileDialog *dialog) {
            const Modal overwrite([&question](QWidget *box) {
                question = qobject_cast<QMessageBox *>(box)->text();
                QVERIFY(pressButton(box, u"Yes"_s));
            });
            enterPath(dialog, path);
            QVERIFY(overwrite.wasAnswered());
        }));
        QVERIFY(question.contains(u"old.ornk"_s));
        QCOMPARE(namesIn(path), QStringList({u"Mine, too"_s, u"Theirs"_s}));
    }

    void an_export_that_fails_tells_the_user_nothing()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString folder = stage.path(u"going"_s);
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(triggerQuietly(stage, u"Export Pack"_s, [&](QFileDialog *dialog) {
            // The folder goes after it was chosen.
            connect(dialog, &QFileDialog::fileSelected, dialog,
                    [folder] { QVERIFY(QDir(folder).removeRecursively()); });
            enterPath(dialog, folder + u"/twins.ornk"_s);
        }));
        QVERIFY(!QDir(folder).exists());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void the_chosen_pack_is_announced_just_before_its_import()
    {
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"Zwölf's twins.ornk"_s));
        QList<int> personas;
        QStringList connections;
        const QObject context;
        connect(stage.window(), &MainWindow::importRequested, &context, [&] {
            personas.append(stage.count(u"personas"_s));
            connections = QSqlDatabase::connectionNames();
        });
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        const QuietRefresh quiet(stage);
        QVERIFY(triggerQuietly(stage, u"Import Pack"_s, choose(path)));
        QCOMPARE(announced, Rows({{path}}));
        QCOMPARE(personas, QList<int>{0});
        QCOMPARE(connections, QStringList{u"project"_s});
        QCOMPARE(shownPersonas(stage), coastalNames());
        QVERIFY(stage.asksBeforeClosing());
    }

    void an_import_that_is_called_for_is_not_announced()
    {
        Stage stage;
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        QVERIFY(importUnasked(stage, writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(announced.size(), 0);
        QCOMPARE(shownPersonas(stage), coastalNames());
    }

    void the_question_comes_after_the_announcement()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        std::unique_ptr<Modal> question;
        qsizetype before = 0;
        QVERIFY(trigger(stage, u"Import Pack"_s, [&](QFileDialog *dialog) {
            question = std::make_unique<Modal>([&](QWidget *box) {
                before = announced.size();
                QVERIFY(pressButton(box, u"Append"_s));
            });
            enterPath(dialog, path);
        }));
        QVERIFY(question->wasAnswered());
        QCOMPARE(before, 1);
        QCOMPARE(shownPersonas(stage),
                 QStringList({u"Mine"_s, u"Mine, too"_s, u"Number Four"_s, u"Number Three"_s, u"Number Two"_s}));
    }

    void a_file_that_is_no_pack_tells_the_user_nothing()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        const QString letter = writeBytes(stage.path(u"letter.txt"_s), "a few words");
        QVERIFY(triggerQuietly(stage, u"Import Pack"_s, choose(letter)));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackDialogs)
#include "tst_packdialogs.moc"
