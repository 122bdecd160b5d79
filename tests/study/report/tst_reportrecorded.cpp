// What a record tells of how the answers came about.

#include "study/report/recorded.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::readRecorded;
using study::Recorded;

/// A line as the bridge writes it, as far as it matters here.
static QByteArray lineOf(const QByteArray &time, const QByteArray &model, const QByteArray &temperature,
                         int status = 200)
{
    return R"({"time":")" + time + R"(","duration":5,"attempts":1,"status":)" + QByteArray::number(status) +
           R"(,"request":"{\"model\":\"kettle\",\"messages\":[],\"temperature\":)" + temperature + R"(}","model":")" +
           model + "\"}\n";
}

class TestReportRecorded : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void models_settings_and_times_are_told()
    {
        const auto read = readRecorded(recordOf(lineOf("2030-01-02T03:04:05Z", "kettle-2", "0.5") +
                                                lineOf("2030-01-02T03:04:01Z", "kettle-1", "0.5") +
                                                lineOf("2030-01-02T05:04:05Z", "kettle-1", "1") +
                                                lineOf("2031-01-02T05:04:05Z", "", "1", 500) + "damaged\n"));
        QVERIFY(std::holds_alternative<Recorded>(read));
        QStringList said = std::get<Recorded>(read);
        for (QString &each : said)
            each.remove(QChar(0x2068)).remove(QChar(0x2069));
        QCOMPARE(said, (QStringList{u"By the record, which may hold other runs too: 4 requests, of which 1 failed and "
                                    "0 took more than one attempt."_s,
                                    u"Answered by: “kettle-1” (2), “kettle-2” (1)."_s,
                                    u"Setting “temperature”: “0.5” (2), “1” (2)."_s,
                                    u"Between 2030-01-02 03:04 and 2030-01-02 05:04 UTC."_s,
                                    u"In the record 1 damaged line was passed over."_s}));
    }

    void a_record_without_a_temperature_says_so()
    {
        const auto read = readRecorded(recordOf("{\"status\":200,\"request\":\"{}\"}\n"));
        QVERIFY(std::get<Recorded>(read).contains(u"No temperature was sent: the endpoint's own held."_s));
    }

    void what_is_no_record_is_told_in_one_sentence()
    {
        QVERIFY(std::get<QString>(readRecorded(folder.filePath(u"gone.jsonl"_s))).endsWith(u"is not there"_s));
        QVERIFY(std::get<QString>(readRecorded(recordOf("nothing\n"))).contains(u"is no record"_s));
    }

    void the_program_tells_it_in_the_report()
    {
        const QString project = writeDrinks(folder.filePath(u"drinks.ormt"_s));
        const QString record = recordOf(lineOf("2030-01-02T03:04:05Z", "kettle<b>", "0.5"));
        const QString out = folder.filePath(u"drinks.html"_s);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY),
                             {u"report"_s, project, u"--out"_s, out, u"--record"_s, record});
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.status, 0);
        QVERIFY(readBytes(out).contains("kettle&lt;b&gt;"));
        QVERIFY(!readBytes(out).contains("Not recorded"));
        const ProgramRun refused(QStringLiteral(ORRINET_STUDY), {u"report"_s, project, u"--out"_s, out, u"--force"_s,
                                                                 u"--record"_s, folder.filePath(u"gone.jsonl"_s)});
        QCOMPARE(refused.status, 3);
    }

private:
    QString recordOf(const QByteArray &lines) { return writeBytes(folder.filePath(u"record.jsonl"_s), lines); }

    QTemporaryDir folder;
};

ORRINET_TEST(TestReportRecorded)
#include "tst_reportrecorded.moc"
