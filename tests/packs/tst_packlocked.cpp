// Packs that another connection keeps locked. SQLite's driver tries for five seconds at each statement, which it counts
// by the naps that it takes.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QTableWidget>
#include <QTest>

#ifdef Q_OS_LINUX
#include <ctime>

/// Takes the place of the system's: in this program a nap takes no time.
extern "C" int nanosleep(const timespec * /*wanted*/, timespec * /*left*/)
{
    return 0;
}
#endif

using namespace Qt::StringLiterals;

class TestPackLocked : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_locked_pack_can_not_be_shown()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        {
            SideDatabase other(path);
            QVERIFY(other.exec(u"BEGIN EXCLUSIVE"_s));
            const MessageLog log;
            stage.call("loadPack", path);
            QCOMPARE(log.warnings(), QStringList{u"database is locked Unable to execute statement"_s});
            QCOMPARE(personaTable(stage)->rowCount(), 0);
            QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
        }
        stage.call("applyTagFilter");
        QCOMPARE(shownPersonas(stage), coastalNames());
    }

    void a_locked_pack_brings_nothing_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QStringList rows = everyRow(stage.database());
        const QuietRefresh quiet(stage);
        {
            SideDatabase other(path);
            QVERIFY(other.exec(u"BEGIN EXCLUSIVE"_s));
            QVERIFY(importAppending(stage, path));
        }
        QCOMPARE(everyRow(stage.database()), rows);
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void exporting_to_a_locked_pack_succeeds_and_adds_nothing()
    {
        Stage stage;
        QVERIFY(showProject(stage));
        const QString path = writeCoastalPack(stage.path(u"coast.ornk"_s));
        const QByteArray bytes = readBytes(path);
        {
            SideDatabase other(path);
            QVERIFY(other.exec(u"BEGIN EXCLUSIVE"_s));
            QVERIFY(stage.result("exportPackToFile", path));
        }
        QCOMPARE(readBytes(path), bytes);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(readBytes(path) != bytes);
    }
};

ORRINET_TEST(TestPackLocked)
#include "tst_packlocked.moc"
