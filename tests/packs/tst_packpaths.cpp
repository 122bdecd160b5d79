// The paths that packs are written to and read from, good and bad.

#include "tests/packs/importbox.h"
#include "tests/packs/packbrowser.h"
#include "tests/support/messagelog.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPackPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_path_may_hold_any_text_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addRow("blanks") << u"two  words and more .ornk"_s;
        QTest::addRow("single quotes") << u"it's 'theirs'.ornk"_s;
        QTest::addRow("double quotes") << u"the \"pack\".ornk"_s;
        QTest::addRow("umlauts") << u"Zwölf Größen.ornk"_s;
        QTest::addRow("Cyrillic") << u"Двойники.ornk"_s;
        QTest::addRow("right to left") << u"תאומים.ornk"_s;
        QTest::addRow("four bytes") << u"\U0001F41D bees \U0001F41D.ornk"_s;
        QTest::addRow("characters of a URL") << u"a?mode=ro&b#c%20d;.ornk"_s;
        QTest::addRow("another extension") << u"pack.txt"_s;
        QTest::addRow("no extension") << u"pack"_s;
        QTest::addRow("hidden") << u".pack"_s;
        QTest::addRow("long") << QString(200, u'x') + u".ornk"_s;
    }

    void a_path_may_hold_any_text()
    {
        QFETCH(QString, name);
        Stage stage;
        QVERIFY(showProject(stage));
        QVERIFY(QDir().mkpath(stage.path(u"in "_s + name)));
        const QString path = stage.path(u"in "_s + name + u'/' + name);
        QVERIFY(stage.result("exportPackToFile", path));
        QCOMPARE(QDir(stage.path(u"in "_s + name)).entryList(QDir::Files | QDir::Hidden), QStringList{name});

        stage.call("newProject");
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));

        stage.call("newProject");
        QVERIFY(stage.call("loadPack", path));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(QDir(stage.path(u"in "_s + name)).entryList(QDir::Files | QDir::Hidden), QStringList{name});
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void a_relative_path_starts_at_the_current_folder()
    {
        Stage stage;
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(stage.path(u""_s)));
        const bool written = stage.result("exportPackToFile", u"near.ornk"_s);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(written);
        QVERIFY(QFile::exists(stage.path(u"near.ornk"_s)));
    }

    void a_path_that_can_not_be_opened_is_no_file_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("testMode");
        for (const bool testMode : {false, true}) {
            const char *mode = testMode ? "in test mode" : "as a user";
            QTest::addRow("in a folder that is not there, %s", mode) << u"missing/twins.ornk"_s << testMode;
            QTest::addRow("below a file, %s", mode) << u"file/twins.ornk"_s << testMode;
            QTest::addRow("a folder, %s", mode) << u"folder"_s << testMode;
            QTest::addRow("a name that is too long, %s", mode) << QString(300, u'x') << testMode;
        }
    }

    void a_path_that_can_not_be_opened_is_no_file()
    {
        QFETCH(QString, name);
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        writeFile(stage.path(u"file"_s), "text");
        QVERIFY(QDir().mkpath(stage.path(u"folder"_s)));
        const QString path = stage.path(name);
        const QStringList files = everyFile(stage);

        // Twice, since the name of a connection that is still there would be warned of.
        for (int turn = 0; turn < 2; ++turn) {
            QVERIFY(!stage.result("exportPackToFile", path));
            const MessageLog log;
            QVERIFY(importUnasked(stage, path));
            QVERIFY(stage.call("loadPack", path));
            const QString warning = u"failed to open pack "_s + openError(path);
            QCOMPARE(log.warnings(), QStringList({warning, warning}));
        }
        QCOMPARE(everyFile(stage), files);
        QCOMPARE(bytesOf(stage.path(u"file"_s)), QByteArray("text"));
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
        QVERIFY(!stage.asksBeforeClosing());
    }

    void an_import_that_can_not_be_opened_does_not_refresh()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(showProject(stage));
        QVERIFY(stage.exec(u"DELETE FROM personas"_s));
        const MessageLog log;
        QVERIFY(importUnasked(stage, stage.path(u"missing/twins.ornk"_s)));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_file_that_is_no_pack_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("warning");
        const QByteArray valid = validPack();
        const QString junk = u"file is not a database Unable to execute statement"_s;
        QTest::addRow("empty file") << QByteArray() << u"no such table: personas Unable to execute statement"_s;
        QTest::addRow("short text") << QByteArray("a few words\n") << junk;
        QTest::addRow("long text") << QByteArray("a few words\n").repeated(500) << junk;
        const QString damaged = u"database disk image is malformed Unable to execute statement"_s;
        QTest::addRow("half of a pack") << valid.first(valid.size() / 2) << damaged;
        QTest::addRow("the head of a pack") << valid.first(100) << damaged;
        QTest::addRow("another signature") << QByteArray(valid).replace(0, 6, "sqlite") << junk;
    }

    void a_file_that_is_no_pack()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, warning);
        Stage stage;
        QVERIFY(enter(stage, {tag(1, u"rural"_s)}));
        const QuietRefresh quiet(stage);
        const QString path = writeFile(stage.path(u"other"_s), bytes);
        {
            const MessageLog log;
            QVERIFY(stage.call("loadPack", path));
            QCOMPARE(log.warnings(), QStringList{warning});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(entries(tagFilter(stage)), QStringList{u"All"_s});
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(bytesOf(path), bytes);

        // An import finds nothing in it, and says nothing.
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(count(stage, u"personas"_s), 0);
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(bytesOf(path), bytes);
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void exporting_over_it_succeeds_data() { a_file_that_is_no_pack_data(); }

    void exporting_over_it_succeeds()
    {
        QFETCH(QByteArray, bytes);
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeFile(stage.path(u"other"_s), bytes);
        QVERIFY(stage.result("exportPackToFile", path));
        // Only an empty file is as good as none.
        QCOMPARE(bytesOf(path) == bytes, !bytes.isEmpty());
    }

    void a_path_that_is_not_there_is_an_empty_pack()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, stage.path(u"missing.ornk"_s)));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
        const MessageLog log;
        QVERIFY(stage.call("loadPack", stage.path(u"another.ornk"_s)));
        QCOMPARE(log.warnings(), QStringList{u"no such table: personas Unable to execute statement"_s});
    }

    void paths_that_are_no_file_to_sqlite_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addRow("no path") << QString();
        QTest::addRow("memory") << u":memory:"_s;
    }

    void paths_that_are_no_file_to_sqlite()
    {
        QFETCH(QString, path);
        Stage stage;
        QVERIFY(showProject(stage));
        const QStringList files = everyFile(stage);
        QVERIFY(stage.result("exportPackToFile", path));
        Stage::setTestMode(true);
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(everyFile(stage), files);
    }

    void a_name_already_in_use_shows_which_it_is_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("name");
        QTest::addRow("export") << u"exportPackToFile"_s << u"packout"_s;
        QTest::addRow("import") << u"importPack"_s << u"packfile"_s;
        QTest::addRow("browsing") << u"loadPack"_s << u"pack"_s;
    }

    void a_name_already_in_use_shows_which_it_is()
    {
        QFETCH(QString, slot);
        QFETCH(QString, name);
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const MessageLog log;
        QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        QVERIFY(stage.call(qPrintable(slot), path));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().contains(u"duplicate connection name '%1'"_s.arg(name)));
        QVERIFY(!QSqlDatabase::contains(name));
    }

private:
    static QStringList everyFile(const Stage &stage)
    {
        return QDir(stage.path(u""_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    static QByteArray validPack()
    {
        const QTemporaryDir folder;
        return bytesOf(writeCoastalPack(folder.filePath(u"pack"_s)));
    }
};

QTEST_MAIN(TestPackPaths)
#include "tst_packpaths.moc"
