// The paths that packs are written to and read from, good and bad.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QDir>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

static QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

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
        const QStringList mine = {u"Mine"_s, u"Mine, too"_s};
        const QString folder = stage.path(u"in "_s + name);
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + u'/' + name;
        QVERIFY(stage.result("exportPackToFile", path));
        QCOMPARE(entriesOf(folder), QStringList{name});

        stage.call("newProject");
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownPersonas(stage), mine);

        stage.call("newProject");
        QCOMPARE(shownPersonas(stage), QStringList());
        stage.call("loadPack", path);
        QCOMPARE(shownPersonas(stage), mine);
        QCOMPARE(entriesOf(folder), QStringList{name});
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
        QCOMPARE(entriesOf(stage.path(u""_s)), QStringList{u"near.ornk"_s});
    }

    void a_path_that_can_not_be_opened_is_no_file_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("testMode");
        QTest::addRow("in a folder that is not there") << u"missing/twins.ornk"_s << false;
        QTest::addRow("the same in test mode") << u"missing/twins.ornk"_s << true;
        QTest::addRow("below a file") << u"file/twins.ornk"_s << false;
        QTest::addRow("a folder") << u"folder"_s << false;
        QTest::addRow("a name that is too long") << QString(300, u'x') << false;
    }

    void a_path_that_can_not_be_opened_is_no_file()
    {
        QFETCH(QString, name);
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        // What a refresh would bring into view.
        QVERIFY(enter(stage, TagEntered{1, u"unseen"_s}));
        writeBytes(stage.path(u"file"_s), "text");
        QVERIFY(QDir().mkpath(stage.path(u"folder"_s)));
        const QString path = stage.path(name);
        const QStringList files = entriesOf(stage.path(u""_s));

        // Twice, since the name of a connection that is still there would be warned of.
        for (int turn = 0; turn < 2; ++turn) {
            QVERIFY(!stage.result("exportPackToFile", path));
            const MessageLog log;
            QVERIFY(importUnasked(stage, path));
            stage.call("loadPack", path);
            const QString warning = u"failed to open pack "_s + openError(path);
            QCOMPARE(log.warnings(), QStringList({warning, warning}));
        }
        QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
        QCOMPARE(entriesOf(stage.path(u""_s)), files);
        QCOMPARE(readBytes(stage.path(u"file"_s)), QByteArray("text"));
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_file_that_is_no_pack_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("warning");
        const QTemporaryDir folder;
        const QByteArray valid = readBytes(writeCoastalPack(folder.filePath(u"pack"_s)));
        const QString junk = u"file is not a database Unable to execute statement"_s;
        const QString damaged = u"database disk image is malformed Unable to execute statement"_s;
        QTest::addRow("empty file") << QByteArray() << u"no such table: personas Unable to execute statement"_s;
        QTest::addRow("short text") << QByteArray("a few words\n") << junk;
        QTest::addRow("long text") << QByteArray("a few words\n").repeated(500) << junk;
        QTest::addRow("half of a pack") << valid.first(valid.size() / 2) << damaged;
        QTest::addRow("the head of a pack") << valid.first(100) << damaged;
        QTest::addRow("another signature") << QByteArray(valid).replace(0, 6, "sqlite") << junk;
    }

    void a_file_that_is_no_pack()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, warning);
        Stage stage;
        QVERIFY(enter(stage, TagEntered{1, u"rural"_s}));
        const QuietRefresh quiet(stage);
        const QString path = writeBytes(stage.path(u"other"_s), bytes);
        {
            const MessageLog log;
            stage.call("loadPack", path);
            QCOMPARE(log.warnings(), QStringList{warning});
        }
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(readBytes(path), bytes);

        // An import finds nothing in it, and says nothing.
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(stage.count(u"personas"_s), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(readBytes(path), bytes);

        // An export succeeds in any case, but only an empty file is as good as none.
        QVERIFY(stage.result("exportPackToFile", path));
        QCOMPARE(readBytes(path) == bytes, !bytes.isEmpty());
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void a_path_that_is_not_there_is_an_empty_pack()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, stage.path(u"missing.ornk"_s)));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
        const MessageLog log;
        stage.call("loadPack", stage.path(u"another.ornk"_s));
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
        const QStringList files = entriesOf(stage.path(u""_s));
        QVERIFY(stage.result("exportPackToFile", path));
        Stage::setTestMode(true);
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Mine, too"_s}));
        QCOMPARE(entriesOf(stage.path(u""_s)), files);
    }

    void a_name_already_in_use_shows_which_it_is_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QString>("name");
        QTest::addRow("export") << "exportPackToFile"_ba << u"packout"_s;
        QTest::addRow("import") << "importPack"_ba << u"packfile"_s;
        QTest::addRow("browsing") << "loadPack"_ba << u"pack"_s;
    }

    void a_name_already_in_use_shows_which_it_is()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QString, name);
        Stage stage;
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const MessageLog log;
        QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        stage.call(slot.constData(), path);
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().contains(u"duplicate connection name '%1'"_s.arg(name)));
        QVERIFY(!QSqlDatabase::contains(name));
    }
};

ORRINET_TEST(TestPackPaths)
#include "tst_packpaths.moc"
