// A disk that is full, for the target, for the copy and for the record.

#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QTest>

#include <csignal>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

/// No file of the program grows beyond this; who writes more is told so, as on a full disk.
void limitFiles(BridgeStage &stage, rlim_t most)
{
    stage.setChildModifier([most] {
        const rlimit limit{.rlim_cur = most, .rlim_max = most};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    });
}

/// Long answers fill a disk soon.
Reply longAnswer(const standin::Request & /*request*/)
{
    return Reply::content(QString(8000, u'x'));
}

} // namespace

class TestRunDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void a_full_disk_ends_the_asking_and_costs_what_was_in_flight_data();
    void a_full_disk_ends_the_asking_and_costs_what_was_in_flight();
    void a_disk_that_is_full_from_the_start_is_named_before_anything_is_asked();
    void a_record_that_cannot_be_written_ends_the_asking_and_keeps_the_answers();
    void cleanupTestCase();

private:
    QTemporaryDir folder;
    bool hasSmallDisk = false;
};

/// A file system of a few pages in a mount namespace of this process alone, where it may make one.
void TestRunDisk::initTestCase()
{
    hasSmallDisk = ::unshare(CLONE_NEWNS) == 0;
    // Fails in a root that is no mount of its own, where this was seen to already.
    if (hasSmallDisk)
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    hasSmallDisk =
        hasSmallDisk && ::mount("none", QFile::encodeName(folder.path()).constData(), "tmpfs", 0, "size=160k") == 0;
    qInfo("a small file system: %s", hasSmallDisk ? "yes" : "no, a limit of file sizes in its place");
}

void TestRunDisk::cleanupTestCase()
{
    if (hasSmallDisk)
        ::umount(QFile::encodeName(folder.path()).constData());
}

void TestRunDisk::a_full_disk_ends_the_asking_and_costs_what_was_in_flight_data()
{
    QTest::addColumn<bool>("isSmallDisk");
    QTest::addColumn<int>("jobs");
    QTest::newRow("a limit, four at a time") << false << 4;
    QTest::newRow("a small disk, one at a time") << hasSmallDisk << 1;
    QTest::newRow("a small disk, four at a time") << hasSmallDisk << 4;
}

void TestRunDisk::a_full_disk_ends_the_asking_and_costs_what_was_in_flight()
{
    QFETCH(const bool, isSmallDisk);
    QFETCH(const int, jobs);
    BridgeStage stage;
    if (!isSmallDisk)
        limitFiles(stage, 100 * 1024);
    stage.endpoint.answerWith(longAnswer);
    const QString project = writeSurvey(stage.path(u"in.ormt"_s), 8, 3);
    const QString target = isSmallDisk ? folder.filePath(u"out.ormt"_s) : stage.path(u"out.ormt"_s);
    const auto ended = stage.runProject(project, target, {u"--jobs"_s, QString::number(jobs)});
    QCOMPARE(ended.status, 3);
    const auto asked = stage.endpoint.requests().size();
    const QStringList stored = answeredPairs(target);
    QCOMPARE_GT(stored.size(), 2);
    QCOMPARE_LT(asked, 24);
    QCOMPARE(integrityOf(target), u"ok"_s);
    // Each answer is in the file or counted as lost, and no more than one of each persona is.
    const qsizetype lost = asked - stored.size();
    QCOMPARE_LE(lost, jobs);
    QVERIFY2(ended.errors.last().startsWith(u"orrinet-bridge: %1 answers could not be stored: "_s.arg(lost)),
             qPrintable(ended.errors.last()));
    QCOMPARE(ended.errors.filter(u"; nothing more is asked"_s).size(), 1);
    QVERIFY(ended.errors.filter(u"; nothing more is asked"_s)
                .first()
                .startsWith("orrinet-bridge: the file can't be written: "_L1));

    // With room again the run goes on.
    if (isSmallDisk)
        QCOMPARE(::mount("none", QFile::encodeName(folder.path()).constData(), "tmpfs", MS_REMOUNT, "size=4m"), 0);
    stage.setChildModifier({});
    QCOMPARE(stage.goOn(target, {u"--jobs"_s, u"4"_s}).status, 0);
    QCOMPARE(answeredPairs(target).size(), 24);
    QCOMPARE(stage.endpoint.requests().size(), 24 + lost);
    if (isSmallDisk) {
        QVERIFY(QFile::remove(target));
        QCOMPARE(::mount("none", QFile::encodeName(folder.path()).constData(), "tmpfs", MS_REMOUNT, "size=160k"), 0);
    }
}

void TestRunDisk::a_disk_that_is_full_from_the_start_is_named_before_anything_is_asked()
{
    BridgeStage stage;
    limitFiles(stage, 20 * 1024);
    const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 200, 2), u"out.ormt"_s);
    QCOMPARE(ended.status, 3);
    QCOMPARE(ended.errors.size(), 1);
    QVERIFY2(ended.errors.first().startsWith("orrinet-bridge: out.ormt can't be written: "_L1),
             qPrintable(ended.errors.first()));
    QCOMPARE(stage.endpoint.requests().size(), 0);
    QVERIFY(!QFile::exists(stage.path(u"out.ormt"_s)));
    QVERIFY(!QFile::exists(stage.path(u"out.ormt.part"_s)));
}

void TestRunDisk::a_record_that_cannot_be_written_ends_the_asking_and_keeps_the_answers()
{
    BridgeStage stage;
    stage.endpoint.answerWith(longAnswer);
    // The record is larger than the project long before its end.
    limitFiles(stage, 200 * 1024);
    const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 8, 10), u"out.ormt"_s,
                                        {u"--jobs"_s, u"4"_s, u"--record"_s, u"record"_s});
    QCOMPARE(ended.errors.filter(u"orrinet-bridge: the record can't be written: "_s).size(), 1);
    QCOMPARE(ended.status, 3);
    QStringList asked = askedPairs(stage);
    asked.sort();
    QCOMPARE_LT(asked.size(), 24);
    QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)), asked);

    // What it holds can be used.
    const QByteArray record = readBytes(stage.path(u"record"_s));
    QVERIFY(record.endsWith('\n'));
    const auto unrecorded = asked.size() - record.count('\n');
    QCOMPARE_GT(unrecorded, 0);
    QCOMPARE(ended.errors.filter(u"orrinet-bridge: %1 exchanges could not be recorded: "_s.arg(unrecorded)).size(), 1);
}

ORRINET_TEST(TestRunDisk)
#include "tst_rundisk.moc"
