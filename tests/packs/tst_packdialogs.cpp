// "Import Pack" and "Export Pack" of the menu, through their file dialogs.

#include "tests/packs/importbox.h"
#include "tests/packs/packbrowser.h"
#include "tests/support/messagelog.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Answer = std::function<void(QWidget *)>;

/// Chooses a file as a user does who types its path.
static Answer choose(const QString &path)
{
    return [path](QWidget *window) {
        QVERIFY(qobject_cast<QFileDialog *>(window) != nullptr);
        enterPath(window, path);
    };
}

static Answer cancel()
{
    return [](QWidget *window) { qobject_cast<QFileDialog *>(window)->reject(); };
}

/// Triggers a menu entry and answers the dialog that it opens; false if none came.
static bool trigger(Stage &stage, const QString &entry, const Answer &answer)
{
    const Modal modal(answer);
    stage.action(entry)->trigger();
    return modal.wasAnswered();
}

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
        QFETCH(QString, caption);
        QFETCH(QFileDialog::AcceptMode, acceptMode);
        QFETCH(QFileDialog::FileMode, fileMode);
        Stage stage;
        const Answer look = [&](QWidget *window) {
            auto *dialog = qobject_cast<QFileDialog *>(window);
            QVERIFY(dialog != nullptr);
            QCOMPARE(dialog->parentWidget(), stage.window());
            QCOMPARE(dialog->windowTitle(), caption);
            QCOMPARE(dialog->acceptMode(), acceptMode);
            QCOMPARE(dialog->fileMode(), fileMode);
            QCOMPARE(dialog->nameFilters(), QStringList({u"Persona Pack (*.ornk)"_s, u"All Files (*)"_s}));
            QCOMPARE(dialog->selectedNameFilter(), u"Persona Pack (*.ornk)"_s);
            QCOMPARE(dialog->defaultSuffix(), QString());
            QCOMPARE(dialog->options(), QFileDialog::Options());
            QCOMPARE(dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->text(), QString());
            dialog->reject();
        };
        QVERIFY(trigger(stage, entry, look));
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void dialogs_open_where_the_last_one_was_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addRow("export") << u"Export Pack"_s;
        QTest::addRow("import") << u"Import Pack"_s;
    }

    // That is what a dialog does for which no folder is named.
    void dialogs_open_where_the_last_one_was()
    {
        QFETCH(QString, entry);
        Stage stage;
        const QString visited = QDir(stage.path(u""_s)).canonicalPath();
        QFileDialog().setDirectory(visited);
        QString folder;
        QVERIFY(trigger(stage, entry, [&folder](QWidget *window) {
            auto *dialog = qobject_cast<QFileDialog *>(window);
            folder = dialog->directory().canonicalPath();
            dialog->reject();
        }));
        QCOMPARE(folder, visited);
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
        QVERIFY(trigger(stage, u"Export Pack"_s, choose(stage.path(name))));
        QCOMPARE(QDir(stage.path(u""_s)).entryList(QDir::Files), QStringList{name});
        FileDatabase pack(stage.path(name));
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY name"_s), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_cancelled_export_writes_nothing()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(trigger(stage, u"Export Pack"_s, cancel()));
        QCOMPARE(QDir(stage.path(u""_s)).entryList(QDir::Files), QStringList{});
    }

    void a_file_that_was_to_be_replaced_is_added_to()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writePack(stage.path(u"old.ornk"_s), {persona(u"11111111-aaaa"_s, u"Theirs"_s)});
        QString question;
        QVERIFY(trigger(stage, u"Export Pack"_s, [&](QWidget *window) {
            const Modal overwrite([&question](QWidget *box) {
                question = qobject_cast<QMessageBox *>(box)->text();
                QVERIFY(pressButton(box, u"Yes"_s));
            });
            choose(path)(window);
            QVERIFY(overwrite.wasAnswered());
        }));
        QVERIFY(question.contains(u"old.ornk"_s));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY rowid"_s),
                 QStringList({u"Theirs"_s, u"Mine, too"_s}));
    }

    void an_export_that_fails_tells_the_user_nothing()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(trigger(stage, u"Export Pack"_s, [&stage](QWidget *window) {
            // The folder goes after it was chosen.
            const QString folder = stage.path(u"going"_s);
            QVERIFY(QDir().mkpath(folder));
            const auto gone = connect(qobject_cast<QFileDialog *>(window), &QFileDialog::fileSelected, window,
                                      [folder] { QVERIFY(QDir(folder).removeRecursively()); });
            choose(folder + u"/twins.ornk"_s)(window);
            disconnect(gone);
        }));
        const Modal box([](QWidget *window) { window->close(); });
        QCoreApplication::processEvents();
        QVERIFY(!box.wasAnswered());
        QVERIFY(!QDir(stage.path(u"going"_s)).exists());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void test_mode_exports_nothing_from_the_menu()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        Stage::setTestMode(true);
        QVERIFY(!trigger(stage, u"Export Pack"_s, cancel()));
        QCOMPARE(QDir(stage.path(u""_s)).entryList(QDir::Files), QStringList{});
    }

    void the_chosen_pack_is_announced_just_before_its_import()
    {
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"Zwölf's twins.ornk"_s));
        QList<int> personas;
        QStringList connections;
        const auto seen = connect(stage.window(), &MainWindow::importRequested, this, [&] {
            personas.append(count(stage, u"personas"_s));
            connections = QSqlDatabase::connectionNames();
        });
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        QVERIFY(trigger(stage, u"Import Pack"_s, choose(path)));
        disconnect(seen);
        QCOMPARE(announced.size(), 1);
        QCOMPARE(announced.constFirst(), QVariantList{path});
        QCOMPARE(personas, QList<int>{0});
        QCOMPARE(connections, QStringList{u"project"_s});
        QCOMPARE(shownNames(stage), coastalNames());
        QVERIFY(stage.asksBeforeClosing());
    }

    void an_import_that_is_called_for_is_not_announced()
    {
        Stage stage;
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        QVERIFY(importUnasked(stage, writeCoastalPack(stage.path(u"coast.ornk"_s))));
        QCOMPARE(announced.size(), 0);
        QCOMPARE(shownNames(stage), coastalNames());
    }

    void the_question_comes_after_the_announcement()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        std::unique_ptr<Modal> question;
        qsizetype before = 0;
        const auto seen = connect(stage.window(), &MainWindow::importRequested, this, [&] {
            question = std::make_unique<Modal>([&](QWidget *box) {
                before = announced.size();
                pressButton(box, u"Append"_s);
            });
        });
        QVERIFY(trigger(stage, u"Import Pack"_s, choose(path)));
        disconnect(seen);
        QVERIFY(question && question->wasAnswered());
        QCOMPARE(before, 1);
        QCOMPARE(shownNames(stage),
                 QStringList({u"Mine"_s, u"Mine, too"_s, u"Number Four"_s, u"Number Three"_s, u"Number Two"_s}));
    }

    void a_cancelled_choice_announces_and_imports_nothing()
    {
        Stage stage;
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        QVERIFY(trigger(stage, u"Import Pack"_s, cancel()));
        QCOMPARE(announced.size(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void test_mode_announces_no_path_and_imports_nothing()
    {
        Stage stage;
        Stage::setTestMode(true);
        const QSignalSpy announced(stage.window(), &MainWindow::importRequested);
        const QuietRefresh quiet(stage);
        QVERIFY(!trigger(stage, u"Import Pack"_s, cancel()));
        QCOMPARE(announced.size(), 1);
        QCOMPARE(announced.constFirst(), QVariantList{QString()});
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_file_that_is_no_pack_tells_the_user_nothing()
    {
        Stage stage;
        QVERIFY(trigger(stage, u"Import Pack"_s, choose(writeFile(stage.path(u"letter.txt"_s), "a few words"))));
        const Modal box([](QWidget *window) { window->close(); });
        QCoreApplication::processEvents();
        QVERIFY(!box.wasAnswered());
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPackDialogs)
#include "tst_packdialogs.moc"
