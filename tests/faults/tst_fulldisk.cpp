// The disk is full: a save and an export are tried with no room, with a page, with two, until all of it fits, so that
// each of their stages is met.

#include "tests/faults/scarceroom.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto savedName = "saved.ormt"_L1;
constexpr auto journalName = "saved.ormt-journal"_L1;
constexpr auto packName = "panel.ornk"_L1;

/// More than what SQLite holds back in memory while it writes a file: some of it is on the disk before the end.
constexpr int longText = 2'500'000;

/// Personas with tags and answers, some of whose texts go over several pages, and questions.
bool fillPanel(Stage &stage)
{
    for (int number = 1; number <= 6; ++number) {
        const QString uuid = u"uuid-%1"_s.arg(number);
        if (!enterBeekeeper(stage, uuid, u"Keeper %1"_s.arg(number), {u"bees"_s, u"keeper%1"_s.arg(number)}) ||
            !stage.exec(u"UPDATE personas SET attributes=? WHERE uuid=?"_s, {QString(2500 * number, u'b'), uuid}))
            return false;
    }
    return enterQuestions(stage, 3);
}

/// What a project file holds that was saved here a while ago.
QByteArray earlierProject(Stage &stage)
{
    const QString path = stage.path(u"earlier.ormt"_s);
    const bool saved = stage.result("saveProjectToFile", path);
    return saved ? readBytes(path) : QByteArray();
}

QStringList rowsOfFile(const QString &path)
{
    SideDatabase file(path);
    return everyRow(file.database());
}

/// True where a file holds no table, or is no database to SQLite.
bool holdsNothing(const QString &path)
{
    SideDatabase file(path);
    QSqlQuery query(file.database());
    return !query.exec(u"SELECT COUNT(*) FROM sqlite_master"_s) || !query.next() || query.value(0).toInt() == 0;
}

/// The same after a copy to a folder of its own, with the journal or, as when only the file is taken along, without.
bool copyHoldsNothing(const ScarceRoom &room, bool withJournal)
{
    const QTemporaryDir folder;
    if (withJournal && QFile::exists(room.path(journalName)))
        QFile::copy(room.path(journalName), folder.filePath(journalName));
    return QFile::copy(room.path(savedName), folder.filePath(savedName)) && holdsNothing(folder.filePath(savedName));
}

/// True where each row of a pack is one of these, whole; what it lacks is of no interest.
bool holdsNothingBut(const QString &path, const QStringList &rows)
{
    SideDatabase pack(path);
    if (pack.value(u"PRAGMA integrity_check"_s) != u"ok"_s)
        return false;
    const QStringList held = everyRow(pack.database());
    return std::ranges::all_of(held, [&rows](const QString &row) { return rows.contains(row); });
}

/// A project, and a file of it from before the last change.
struct Panel
{
    explicit Panel(int textLength = 0)
        : filled(fillPanel(stage) &&
                 enter(stage, PersonaEntered{.uuid = u"long"_s, .notes = QString(textLength, u'z')}))
        , rows(everyRow(stage.database()))
        , earlier(earlierProject(stage))
    {
        filled = filled && everyRow(stage.database()) == rows;
        stage.call("insertPersona", u"Not saved"_s, u"Calm."_s);
        rows = everyRow(stage.database());
    }

    Stage stage;
    bool filled;
    QStringList rows;
    QByteArray earlier;
};

} // namespace

class TestFullDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_save_is_whole_or_nothing_data() { addScarcities(); }
    void a_save_is_whole_or_nothing()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Scarcity, scarcity);
        Panel panel;
        QVERIFY(panel.filled);
        int pages = 0;
        for (bool saved = false; !saved; ++pages) {
            const ScarceRoom room(scarcity, pages, panel.earlier);
            saved = saveIn(room, panel);
            if (QTest::currentTestFailed())
                return;
            QCOMPARE(room.files(), QStringList{savedName});
            // What is left behind can be opened, as a project with nothing in it.
            if (!saved)
                QCOMPARE(QFile(room.path(savedName)).size(), 0);
        }
        QVERIFY2(pages > 20, qPrintable(QString::number(pages)));
    }

    void a_long_save_is_whole_or_nothing_data() { addScarcities(); }
    void a_long_save_is_whole_or_nothing()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Scarcity, scarcity);
        Panel panel(longText);
        QVERIFY(panel.filled);
        const int needed = int(panel.earlier.size() / SmallDisk::pageSize);
        bool leftHalf = false;
        bool saved = false;
        for (int pages = 0; !saved; pages += pages < 4 || pages > needed - 4 ? 1 : needed / 10) {
            const ScarceRoom room(scarcity, pages, panel.earlier);
            saved = saveIn(room, panel);
            if (QTest::currentTestFailed())
                return;
            leftHalf = leftHalf || (!saved && QFile(room.path(savedName)).size() > 0);
        }
        QVERIFY(leftHalf);
    }

    void what_a_full_disk_left_of_a_save_is_an_empty_project_data()
    {
        QTest::addColumn<int>("textLength");
        QTest::newRow("an empty file") << 0;
        QTest::newRow("half a file and its journal") << longText;
    }
    void what_a_full_disk_left_of_a_save_is_an_empty_project()
    {
        QFETCH(const int, textLength);
        Panel panel(textLength);
        QVERIFY(panel.filled);
        const ScarceRoom room(Scarcity::FileSize, 8, panel.earlier);
        QVERIFY(!saveIn(room, panel));
        const bool half = textLength > 0;
        QCOMPARE(room.files(), half ? QStringList({savedName, journalName}) : QStringList{savedName});
        Stage::setTestMode(true);
        QVERIFY(panel.stage.result("openProjectFromFile", room.path(savedName)));
        QCOMPARE(panel.stage.count(u"personas"_s), 0);
        QCOMPARE(panel.stage.count(u"responses"_s), 0);
        // The earlier file is as good as it was.
        QVERIFY(panel.stage.result("openProjectFromFile", room.path(u"earlier"_s)));
        QCOMPARE(panel.stage.count(u"personas"_s), 7);
        QCOMPARE(panel.stage.count(u"responses"_s), 6);
    }

    void what_a_full_disk_left_of_a_save_is_filled_by_the_next_one_data()
    {
        QTest::addColumn<int>("textLength");
        QTest::addColumn<QString>("takenAway");
        QTest::newRow("an empty file") << 0 << QString();
        QTest::newRow("half a file and its journal") << longText << QString();
        QTest::newRow("a journal without its file") << longText << QString(savedName);
    }
    void what_a_full_disk_left_of_a_save_is_filled_by_the_next_one()
    {
        QFETCH(const int, textLength);
        QFETCH(const QString, takenAway);
        Panel panel(textLength);
        QVERIFY(panel.filled);
        const ScarceRoom room(Scarcity::FileSize, 8, panel.earlier);
        QVERIFY(!saveIn(room, panel));
        QVERIFY(takenAway.isEmpty() || QFile::remove(room.path(takenAway)));
        QVERIFY(panel.stage.result("saveProjectToFile", room.path(savedName)));
        QCOMPARE(rowsOfFile(room.path(savedName)), panel.rows);
        QVERIFY(!panel.stage.asksBeforeClosing());
    }

    void half_a_file_without_its_journal_is_refused()
    {
        Panel panel(longText);
        QVERIFY(panel.filled);
        const ScarceRoom room(Scarcity::FileSize, 8, panel.earlier);
        QVERIFY(!saveIn(room, panel));
        QVERIFY(QFile::remove(room.path(journalName)));
        const QByteArray half = readBytes(room.path(savedName));
        const MessageLog log;
        QVERIFY(!panel.stage.result("saveProjectToFile", room.path(savedName)));
        QVERIFY(panel.stage.result("saveProjectToFile", room.path(u"other.ormt"_s)));
        Stage::setTestMode(true);
        QVERIFY(!panel.stage.result("openProjectFromFile", room.path(savedName)));
        QCOMPARE(log.warnings(), QStringList({u"vacuum into failed file is not a database Unable to fetch row"_s,
                                              u"file is not a database Unable to fetch row"_s}));
        QCOMPARE(readBytes(room.path(savedName)), half);
        QVERIFY(panel.stage.result("openProjectFromFile", room.path(u"other.ormt"_s)));
        QCOMPARE(everyRow(panel.stage.database()), panel.rows);
    }

    void an_export_holds_whole_rows_alone_data() { addScarcities(); }
    void an_export_holds_whole_rows_alone()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Scarcity, scarcity);
        Panel panel;
        QVERIFY(panel.filled);
        const QString whole = panel.stage.path(packName);
        QVERIFY(panel.stage.result("exportPackToFile", whole));
        const QStringList wanted = rowsOfFile(whole);
        QStringList held;
        int pages = 0;
        for (; held != wanted; ++pages) {
            const ScarceRoom room(scarcity, pages, panel.earlier);
            // The pack can be made, and that is all the result says.
            QVERIFY(room.result(panel.stage, "exportPackToFile", packName));
            QVERIFY(holdsNothingBut(room.path(packName), wanted));
            held = rowsOfFile(room.path(packName));
            QCOMPARE(room.files(), QStringList{packName});
            QCOMPARE(room.earlierFile(), panel.earlier);
        }
        QCOMPARE(everyRow(panel.stage.database()), panel.rows);
        QVERIFY2(pages > 15, qPrintable(QString::number(pages)));
    }

    void an_export_takes_nothing_from_the_pack_that_was_there_data() { addScarcities(); }
    void an_export_takes_nothing_from_the_pack_that_was_there()
    {
        if (goesOnInChild())
            return;
        QFETCH(const Scarcity, scarcity);
        Panel panel;
        QVERIFY(panel.filled);
        const QByteArray earlierPack = readBytes(writePack(
            panel.stage.path(u"earlier.ornk"_s),
            {u"INSERT INTO personas (uuid, name) VALUES ('before', 'Before')"_s,
             u"INSERT INTO tags VALUES (77, 'before')"_s, u"INSERT INTO persona_tags VALUES ('before', 77)"_s}));
        int persons = 0;
        for (int pages = 0; persons < 9; ++pages) {
            const ScarceRoom room(scarcity, pages, earlierPack);
            // The limit of files counts from their beginning, the room on a disk from where they end.
            QVERIFY(room.result(panel.stage, "exportPackToFile", u"earlier"_s));
            SideDatabase pack(room.path(u"earlier"_s));
            QCOMPARE(pack.value(u"PRAGMA integrity_check"_s), u"ok"_s);
            QCOMPARE(pack.rows(u"SELECT p.name, t.name FROM personas p JOIN persona_tags ON uuid = persona_uuid "
                               "JOIN tags t ON t.id = tag_id WHERE uuid = 'before'"_s),
                     (Rows{{u"Before"_s, u"before"_s}}));
            persons = pack.count(u"personas"_s);
        }
    }

    void a_pack_cut_short_by_a_full_disk_is_imported_as_far_as_it_goes()
    {
        Panel panel;
        QVERIFY(panel.filled);
        const ScarceRoom room(Scarcity::FileSize, 16, panel.earlier);
        QVERIFY(room.result(panel.stage, "exportPackToFile", packName));
        const QStringList names =
            SideDatabase(room.path(packName)).column(u"SELECT name FROM personas ORDER BY uuid"_s);
        QVERIFY(!names.isEmpty() && names.size() < 8);
        panel.stage.call("newProject");
        panel.stage.call("importPack", room.path(packName));
        QCOMPARE(panel.stage.column(u"SELECT name FROM personas ORDER BY uuid"_s), names);
    }

private:
    /// True where the test needs a process that may mount, and has been played in one.
    static bool goesOnInChild(const std::source_location &where = std::source_location::current())
    {
        QFETCH(const Scarcity, scarcity);
        if (scarcity != Scarcity::Disk || inChild())
            return false;
        passesInChild({}, enterOwnMounts, where);
        return true;
    }

    /// Saves, and checks what holds of every save; true where it succeeded.
    static bool saveIn(const ScarceRoom &room, Panel &panel)
    {
        bool saved = false;
        checkSave(room, panel, saved);
        return saved;
    }
    static void checkSave(const ScarceRoom &room, Panel &panel, bool &saved)
    {
        QVERIFY(panel.stage.asksBeforeClosing());
        const MessageLog log;
        saved = room.result(panel.stage, "saveProjectToFile", savedName);
        QCOMPARE(room.earlierFile(), panel.earlier);
        if (saved) {
            QVERIFY(!panel.stage.asksBeforeClosing());
            QCOMPARE(log.warnings(), QStringList());
            // Nothing was lost in all the tries before either.
            QCOMPARE(rowsOfFile(room.path(savedName)), panel.rows);
            return;
        }
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().startsWith("vacuum into failed "_L1));
        QVERIFY(copyHoldsNothing(room, true));
        QVERIFY(copyHoldsNothing(room, false));
    }
};

ORRINET_TEST(TestFullDisk)
#include "tst_fulldisk.moc"
