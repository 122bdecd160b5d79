// What the answers are held against: shares of people in a table, or another project.

#include "study/report/against.h"
#include "study/report/csv.h"
#include "study/report/sections/sections.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Against;
using study::againstSection;
using study::readAgainst;
using study::readCsv;

class TestReportAgainst : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        drinks = std::make_unique<ReadSurvey>(writeDrinks(folder.filePath(u"drinks.ormt"_s)));
        QVERIFY(drinks->survey);
    }

    void a_table_is_read_with_its_quotes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<QStringList>>("rows");
        QTest::newRow("plain") << u"a,b\nc,d\n"_s << QList<QStringList>{{u"a"_s, u"b"_s}, {u"c"_s, u"d"_s}};
        QTest::newRow("quoted") << u"\"a,b\",\"say \"\"c\"\"\"\r\n\"two\nlines\","_s
                                << QList<QStringList>{{u"a,b"_s, u"say \"c\""_s}, {u"two\nlines"_s, QString()}};
        QTest::newRow("byte order, blank lines") << u"\ufeffa\n\n\nb"_s << QList<QStringList>{{u"a"_s}, {u"b"_s}};
        QTest::newRow("nothing") << QString() << QList<QStringList>{};
    }
    void a_table_is_read_with_its_quotes()
    {
        QFETCH(const QString, text);
        QTEST(readCsv(text), "rows");
    }

    void a_table_that_says_nothing_is_refused_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray() << u"has no header with question, label or value, and share or count"_s;
        QTest::newRow("no share") << QByteArray("question,label\n1,Tea\n") << u"has no header"_s;
        QTest::newRow("a word for a share")
            << QByteArray("question,label,share\n1,Tea,much\n") << u"has no share or count in row 2"_s;
        QTest::newRow("below nothing") << QByteArray("question,label,count\n1,Tea,-1\n")
                                       << u"has no share or count in row 2"_s;
        QTest::newRow("a short row") << QByteArray("question,label,share\n1\n") << u"has no share or count in row 2"_s;
    }
    void a_table_that_says_nothing_is_refused()
    {
        QFETCH(const QByteArray, table);
        QFETCH(const QString, reason);
        const auto read = readAgainst(writeBytes(folder.filePath(u"bad.csv"_s), table), *drinks->survey);
        QVERIFY(std::holds_alternative<QString>(read));
        QVERIFY2(std::get<QString>(read).contains(reason), qUtf8Printable(std::get<QString>(read)));
    }

    void people_are_matched_by_number_or_wording()
    {
        const Against against = peopleOf("count,question,label,note\n"
                                         "30,1,Tea,\n30, which  DRINK?,coffee,x\n1,99,Tea,\n5,1,Cola,\n"
                                         "2,How many cups?,3.5,\n1,4,many,\n");
        QCOMPARE(against.counterparts.size(), 2);
        QCOMPARE(against.counterparts.at(0).question, 0);
        QCOMPARE(against.counterparts.at(0).counts, (QList<double>{30, 30, 0}));
        QCOMPARE(against.counterparts.at(0).unmatched, (QList<std::pair<QString, double>>{{u"Cola"_s, 5}}));
        QCOMPARE(against.counterparts.at(1).numbers.size(), 1);
        QCOMPARE(against.counterparts.at(1).numbers.at(0).weight, 2.0);
        QCOMPARE(against.counterparts.at(1).unmatched, (QList<std::pair<QString, double>>{{u"many"_s, 1}}));
        QCOMPARE(against.strangers, QStringList{u"99"_s});
    }

    void distances_stand_beside_those_of_knowing_nothing()
    {
        const QStringList said =
            saidBy(againstSection(*drinks->survey,
                                  peopleOf("question,label,share\n1,Tea,0.75\n1,Coffee,0.25\n5,never,1\n1,Cola,0.5\n"))
                       .blocks);
        QVERIFY(said.contains(u"Heading: Against people"_s));
        // The same shares here and there.
        QVERIFY(said.contains(u"TextTable: the answers here | - | 0 | -"_s));
        // Eleven on the places 1 to 5, one more on the first, all against the first: 2 3 3 2 1 less.
        QVERIFY2(
            said.filter(QRegularExpression(uR"(^TextTable: the answers here \| 0\.455 \| 0\.\d+ \| -$)"_s)).size() == 1,
            qUtf8Printable(said.filter(u"TextTable: "_s).join(u'\n')));
        // Half of the way from the first place to the last.
        QCOMPARE(said.filter(u"TextTable: all labels alike | 0.5 | "_s).size(), 1);
        QVERIFY(!said.filter(u"Not scored"_s).filter(u"\u201cCola\u201d (0.5)"_s).isEmpty());
        QVERIFY(!said.filter(u"Figure: Labels / Shares in \u201csimulated\u201d"_s).isEmpty());
    }

    void another_project_agrees_pair_by_pair()
    {
        const QString path = writeDrinks(folder.filePath(u"again.ormt"_s));
        SideDatabase file(path);
        QVERIFY(file.exec(u"UPDATE responses SET text_answer = 'Coffee' WHERE question_id = 1 AND persona_uuid IN "
                          "('p00', 'p01', 'p02')"_s));
        const auto read = readAgainst(path, *drinks->survey);
        QVERIFY(std::holds_alternative<Against>(read));
        const Against &against = std::get<Against>(read);
        QVERIFY(!against.isPeople);
        QCOMPARE(against.counterparts.size(), 6);
        QCOMPARE(against.counterparts.at(0).agreement->pairs, 12);
        QCOMPARE(against.counterparts.at(0).agreement->share, 0.75);
        QCOMPARE(against.counterparts.at(0).counts, (QList<double>{6, 6, 0}));
        const QStringList said = saidBy(againstSection(*drinks->survey, against).blocks);
        QVERIFY(said.contains(u"Paragraph: Pair by pair: of 12 personas answered on both sides 75 % are the same; "
                              "Cohen's kappa 0.5."_s));
    }

    void the_program_holds_against_a_table()
    {
        const QString table = writeBytes(folder.filePath(u"humans.csv"_s), "question,label,share\n1,Tea,1\n");
        const QString out = folder.filePath(u"against.html"_s);
        ProgramRun run(QStringLiteral(ORRINET_STUDY),
                       {u"report"_s, drinks->project.path, u"--out"_s, out, u"--against"_s, table});
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.status, 0);
        QVERIFY(readBytes(out).contains("Against people"));
        QVERIFY(!readBytes(out).contains(folder.path().toUtf8()));
        const QString other = folder.filePath(u"other.html"_s);
        ProgramRun refused(QStringLiteral(ORRINET_STUDY), {u"report"_s, drinks->project.path, u"--out"_s, other,
                                                           u"--against"_s, folder.filePath(u"gone.csv"_s)});
        QCOMPARE(refused.status, 3);
        QVERIFY(!QFile::exists(other));
    }

private:
    Against peopleOf(const QByteArray &table)
    {
        const auto read = readAgainst(writeBytes(folder.filePath(u"people.csv"_s), table), *drinks->survey);
        if (const QString *reason = std::get_if<QString>(&read)) {
            QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
            return {};
        }
        return std::get<Against>(read);
    }

    QTemporaryDir folder;
    std::unique_ptr<ReadSurvey> drinks;
};

ORRINET_TEST(TestReportAgainst)
#include "tst_reportagainst.moc"
