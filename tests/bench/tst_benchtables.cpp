#include "tests/support/program.h"
#include "tests/support/testcase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

static ProgramRun bench(const QStringList &arguments)
{
    return {QStringLiteral(ORRINET_BENCH_PROGRAM), arguments};
}

/// The lines of the table under a title.
static QStringList tableUnder(const QString &title, const QString &output)
{
    QStringList lines;
    const QString behind = output.section("### "_L1 + title, 1).section("###"_L1, 0, 0);
    for (const auto all = behind.split(u'\n', Qt::SkipEmptyParts); const QString &line : all) {
        if (line.startsWith(u'|'))
            lines.append(line);
    }
    return lines;
}

/// A line of a table with the unit, or "ratio", in place of each figure. What is no figure, or none above zero where
/// nothing can take so little time, stays what it is.
static QString withoutFigures(QString line)
{
    static const QRegularExpression figure(
        u"\\| (?!0\\.00 (?:m|µ|n))[0-9]+(?:\\.[0-9]+)? (ms|s|µs|ns|KB|MB) (?=\\|)"_s);
    static const QRegularExpression ratio(u"\\| (?!0\\.00 )[0-9]+(?:\\.[0-9]+)? (?=\\|)"_s);
    return line.replace(figure, u"| \\1 "_s).replace(ratio, u"| ratio "_s);
}

class TestBenchTables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const ProgramRun smoke = bench({u"--smoke"_s});
        QVERIFY2(smoke.status == 0, qPrintable(smoke.errors.join(u'\n')));
        output = smoke.output;
        QCOMPARE(output.count("\n### "_L1), 11);
    }

    void table_comes_out_with_its_rows_and_all_their_figures_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addRow("From the start of the process to a shown window")
            << QStringList{u"|  | program | empty window | program : empty | text and database "
                           "| program : text and database |"_s,
                           u"|---|---:|---:|---:|---:|---:|"_s, u"| window | ms | ms | ratio | ms | ratio |"_s};
        QTest::addRow("One refresh of the persona list")
            << QStringList{u"|  | refresh | floor | refresh : floor | per persona |"_s, u"|---|---:|---:|---:|---:|"_s,
                           u"| 15, in front | ms | ms | ratio | µs |"_s, u"| 15, behind | ms | ms | ratio | µs |"_s};
        QTest::addRow("Files of 15 personas and 20 questions")
            << QStringList{u"|  | time |"_s,   u"|---|---:|"_s,      u"| save | ms |"_s,
                           u"| open | ms |"_s, u"| export | ms |"_s, u"| import | ms |"_s};
        const QString figures = u" | ms | ms | ratio | ms | ns | ms | ms | ratio | ms | ns |"_s;
        QTest::addRow("One rebuilding of the results grid")
            << QStringList{u"|  | call | floor | call : floor | literal | per cell "
                           "| with layout | floor | with layout : floor | literal | per cell |"_s,
                           u"|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|"_s,
                           u"| 15x9, in front"_s + figures, u"| 15x9, behind"_s + figures};
        QTest::addRow("One refresh after a new answer, the grid untouched")
            << QStringList{u"|  | call | with layout | the slowest |"_s, u"|---|---:|---:|---:|"_s,
                           u"| 15x9, in front | ms | ms | ms |"_s, u"| 15x9, behind | ms | ms | ms |"_s};
        QTest::addRow("The four log entries of one answer, in a window that shows the end")
            << QStringList{u"|  | append | plain view | append : plain view | events after it | plain view | text "
                           "| memory | plain view | memory : plain view |"_s,
                           u"|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|"_s,
                           u"| after 1 | ms | ms | ratio | ms | ms | KB | KB | KB | ratio |"_s};
        QTest::addRow("One answer over TLS, the endpoint's own time taken off")
            << QStringList{u"|  | whole cycle | without the grid | refreshes patched | without the grid, bridged "
                           "| bridged : alone |"_s,
                           u"|---|---:|---:|---:|---:|---:|"_s, u"| 15x9, answer 1 | ms | ms | ratio | ms | ratio |"_s};
        QTest::addRow("Runs without a window, the endpoint's delay apart")
            << QStringList{u"|  | run | answers per second | of N times one job |"_s, u"|---|---:|---:|---:|"_s,
                           u"| 1 job | s | ratio | ratio |"_s, u"| 4 jobs | s | ratio | ratio |"_s};
        QTest::addRow("One answer of a run without a window")
            << QStringList{u"|  | processor time | window's cycle | run : window | memory |"_s,
                           u"|---|---:|---:|---:|---:|"_s, u"| 15x9 | ms | ms | ratio | KB |"_s};
        // What a run has no figure for stays blank, here and below.
        const auto exported = [](const QString &format) {
            return u"| %1, 15x9 | ms | µs | MB | KB |  |  |"_s.arg(format);
        };
        QTest::addRow("Before and after a run")
            << QStringList{u"|  | time | per pair | memory | written | sqlite3 | time : sqlite3 |"_s,
                           u"|---|---:|---:|---:|---:|---:|---:|"_s,
                           u"| check, 15x9 | ms | µs | MB |  |  |  |"_s,
                           u"| csv, 15x9 | ms | µs | MB | KB | ms | ratio |"_s,
                           exported(u"xlsx"_s),
                           exported(u"sav"_s),
                           exported(u"dta"_s),
                           exported(u"json"_s),
                           exported(u"report"_s)};
        QTest::addRow("Runs without a network") << QStringList{
            u"|  | run | per pair | of it the refresh at the end | literal |"_s, u"|---|---:|---:|---:|---:|"_s,
            u"| test mode, 15x9 | s | µs |  | s |"_s, u"| without a key, 15x9 | s | µs |  |  |"_s,
            u"| finished survey, 15x9 | s | µs | s | s |"_s};
    }

    void table_comes_out_with_its_rows_and_all_their_figures()
    {
        QStringList lines = tableUnder(QString::fromLatin1(QTest::currentDataTag()), output);
        for (QString &line : lines)
            line = withoutFigures(line);
        QTEST(lines, "lines");
    }

    void flag_that_nobody_knows_is_refused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addRow("alone") << QStringList(u"--unknown"_s);
        QTest::addRow("beside one that is known") << QStringList{u"--smoke"_s, u"--unknown"_s};
    }

    void flag_that_nobody_knows_is_refused()
    {
        QFETCH(QStringList, arguments);
        const ProgramRun run = bench(arguments);
        QCOMPARE(run.status, 2);
        QCOMPARE(run.errors.size(), 1);
        QVERIFY2(run.errors.first().endsWith("unrecognized command-line flag: --unknown"_L1),
                 qPrintable(run.errors.first()));
        QCOMPARE(run.output, QString());
    }

private:
    QString output;
};

ORRINET_TEST(TestBenchTables)
#include "tst_benchtables.moc"
