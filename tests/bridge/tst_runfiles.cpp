// What a run without a window says of files that it can't read or write, before it asks anything.

#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QTest>

#ifdef Q_OS_LINUX
#include <linux/capability.h>
#include <sys/prctl.h>
#endif

using namespace Qt::StringLiterals;

namespace {

using Prepare = void (*)(BridgeStage &);

constexpr QFile::Permissions readOnly = QFile::ReadOwner;
constexpr QFile::Permissions closedFolder = QFile::ReadOwner | QFile::ExeOwner;

/// From here on the program minds the permissions of files, which the superuser's would not.
void heedPermissions(BridgeStage &stage)
{
#ifdef Q_OS_LINUX
    stage.setChildModifier([] {
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
    });
#else
    Q_UNUSED(stage)
#endif
}

QString input(const BridgeStage &stage)
{
    return stage.path(u"in.ormt"_s);
}

void alter(BridgeStage &stage, const QString &statement)
{
    SideDatabase(input(stage)).exec(statement);
}

/// What keeps a file from being taken as a project, whatever is to be done with it.
void addUnfitInputs()
{
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<QString>("said");
    const auto row = [](const char *name, Prepare prepare, const QString &said) {
        QTest::newRow(name) << prepare << said;
    };
    row("missing", [](BridgeStage &stage) { QFile::remove(input(stage)); }, u"in.ormt is not there"_s);
    row(
        "a folder", [](BridgeStage &stage) { QFile::remove(input(stage)), QDir().mkdir(input(stage)); },
        u"in.ormt is not there"_s);
    row(
        "a text", [](BridgeStage &stage) { writeBytes(input(stage), QByteArray("A text. ").repeated(600)); },
        u"in.ormt is no project: file is not a database"_s);
    row(
        "empty", [](BridgeStage &stage) { writeBytes(input(stage), {}); },
        u"in.ormt is no project: it has no table \"personas\""_s);
    row(
        "cut short", [](BridgeStage &stage) { writeBytes(input(stage), readBytes(input(stage)).first(3000)); },
        u"in.ormt is no project: "_s);
    row(
        "a table missing", [](BridgeStage &stage) { alter(stage, u"DROP TABLE responses"_s); },
        u"in.ormt is no project: it has no table \"responses\""_s);
    row(
        "another column", [](BridgeStage &stage) { alter(stage, u"ALTER TABLE responses ADD COLUMN more"_s); },
        u"in.ormt is no project: its table \"responses\" has other columns"_s);
    row(
        "a trigger",
        [](BridgeStage &stage) {
            alter(stage, u"CREATE TRIGGER act AFTER INSERT ON responses BEGIN DELETE FROM responses; END"_s);
        },
        u"in.ormt is no project: it holds a trigger, \"act\", which the program never makes"_s);
    row(
        "a view", [](BridgeStage &stage) { alter(stage, u"CREATE VIEW seen AS SELECT 1"_s); },
        u"in.ormt is no project: it holds a view, \"seen\", which the program never makes"_s);
    row("not to be read", [](BridgeStage &stage) { QFile::setPermissions(input(stage), {}); }, u"in.ormt "_s);
}

/// One sentence, and nothing was asked.
void verifyRefused(const BridgeStage &stage, const BridgeStage::Ended &ended, const QString &said)
{
    QCOMPARE(ended.errors.size(), 1);
    QVERIFY2(ended.errors.first().startsWith("orrinet-bridge: "_L1 + said), qPrintable(ended.errors.first()));
    QCOMPARE(ended.status, 3);
    QCOMPARE(stage.endpoint.requests().size(), 0);
}

} // namespace

class TestRunFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_unfit_project_is_not_run_data() { addUnfitInputs(); }
    void an_unfit_project_is_not_run()
    {
        QFETCH(const Prepare, prepare);
        QFETCH(const QString, said);
        BridgeStage stage;
        heedPermissions(stage);
        writeSurvey(input(stage), 1, 1);
        prepare(stage);
        const QByteArray before = readBytes(input(stage));
        verifyRefused(stage, stage.runProject(u"in.ormt"_s, u"out.ormt"_s), said);
        verifyRefused(stage, stage.goOn(u"in.ormt"_s), said);
        QCOMPARE(readBytes(input(stage)), before);
        QVERIFY(QDir(stage.path(u"."_s)).entryList({u"out*"_s}).isEmpty());
        QVERIFY(QDir(stage.path(u"."_s)).entryList({u"in.ormt?*"_s}).isEmpty());
    }

    void a_copy_never_takes_the_place_of_anything_data()
    {
        QTest::addColumn<Prepare>("prepare");
        QTest::addColumn<QString>("said");
        const auto row = [](const char *name, Prepare prepare, const QString &said) {
            QTest::newRow(name) << prepare << said;
        };
        const QString isThere = u"out.ormt is there already and is not overwritten"_s;
        const QString half = u"out.ormt.part is there, left by a copy that was cut short; remove it first"_s;
        row("a file", [](BridgeStage &stage) { writeBytes(stage.path(u"out.ormt"_s), "mine"); }, isThere);
        row("an empty file", [](BridgeStage &stage) { writeBytes(stage.path(u"out.ormt"_s), {}); }, isThere);
        row("a folder", [](BridgeStage &stage) { QDir().mkdir(stage.path(u"out.ormt"_s)); }, isThere);
        row(
            "the project itself", [](BridgeStage &stage) { QFile::link(u"in.ormt"_s, stage.path(u"out.ormt"_s)); },
            isThere);
        row(
            "a link to nothing", [](BridgeStage &stage) { QFile::link(u"nowhere"_s, stage.path(u"out.ormt"_s)); },
            isThere);
        row("half a copy", [](BridgeStage &stage) { writeBytes(stage.path(u"out.ormt.part"_s), "half"); }, half);
        row(
            "a link to nothing for half a copy",
            [](BridgeStage &stage) { QFile::link(u"nowhere"_s, stage.path(u"out.ormt.part"_s)); }, half);
        row(
            "a closed folder", [](BridgeStage &stage) { QFile::setPermissions(stage.path(u"."_s), closedFolder); },
            u"out.ormt can't be written: "_s);
    }
    void a_copy_never_takes_the_place_of_anything()
    {
        QFETCH(const Prepare, prepare);
        QFETCH(const QString, said);
        BridgeStage stage;
        heedPermissions(stage);
        const QByteArray project = readBytes(writeSurvey(input(stage), 1, 1));
        prepare(stage);
        const QDir folder(stage.path(u"."_s));
        const QByteArray before = readBytes(stage.path(u"out.ormt"_s));
        const QStringList files = folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        verifyRefused(stage, stage.runProject(u"in.ormt"_s, u"out.ormt"_s), said);
        QCOMPARE(folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot), files);
        QCOMPARE(readBytes(stage.path(u"out.ormt"_s)), before);
        QCOMPARE(readBytes(input(stage)), project);
        QFile::setPermissions(stage.path(u"."_s), closedFolder | QFile::WriteOwner);
    }

    void a_folder_that_is_not_there_is_named()
    {
        BridgeStage stage;
        writeSurvey(input(stage), 1, 1);
        verifyRefused(stage, stage.runProject(u"in.ormt"_s, u"no/out.ormt"_s), u"no/out.ormt can't be written"_s);
    }

    void a_project_that_cannot_be_written_is_not_run_in_place_data()
    {
        QTest::addColumn<Prepare>("prepare");
        QTest::newRow("the file") << Prepare([](BridgeStage &stage) { QFile::setPermissions(input(stage), readOnly); });
        QTest::newRow("its folder") << Prepare(
            [](BridgeStage &stage) { QFile::setPermissions(stage.path(u"."_s), closedFolder); });
    }
    void a_project_that_cannot_be_written_is_not_run_in_place()
    {
        QFETCH(const Prepare, prepare);
        BridgeStage stage;
        heedPermissions(stage);
        writeSurvey(input(stage), 1, 1);
        prepare(stage);
        const QByteArray before = readBytes(input(stage));
        verifyRefused(stage, stage.goOn(u"in.ormt"_s), u"in.ormt can't be written: "_s);
        QCOMPARE(readBytes(input(stage)), before);
        QFile::setPermissions(stage.path(u"."_s), closedFolder | QFile::WriteOwner);
    }

    void a_project_that_another_writes_is_not_run_in_place()
    {
        BridgeStage stage;
        SideDatabase other(writeSurvey(input(stage), 1, 1));
        QVERIFY(other.exec(u"BEGIN IMMEDIATE"_s));
        verifyRefused(stage, stage.goOn(u"in.ormt"_s), u"in.ormt can't be written: database is locked"_s);
        QVERIFY(other.exec(u"ROLLBACK"_s));
    }

    void a_record_that_cannot_be_made_is_named()
    {
        BridgeStage stage;
        writeSurvey(input(stage), 1, 1);
        verifyRefused(stage, stage.runProject(u"in.ormt"_s, u"out.ormt"_s, {u"--record"_s, u"no/record"_s}),
                      u"no/record can't be written: "_s);
        QFile::remove(stage.path(u"out.ormt"_s));
        verifyRefused(stage, stage.runProject(u"in.ormt"_s, u"out.ormt"_s, {u"--replay"_s, u"no/record"_s}),
                      u"no/record can't be read: "_s);
    }
};

ORRINET_TEST(TestRunFiles)
#include "tst_runfiles.moc"
