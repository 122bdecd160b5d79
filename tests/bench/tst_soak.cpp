// The short form of the long run with faults, at another seed each time.

#include "tests/support/program.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestSoak : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runs_with_faults_keep_every_answer()
    {
        // The program takes its seed from the same variable.
        qputenv("ORRINET_SEED", QByteArray::number(testSeed()));
        const ProgramRun soak(QStringLiteral(ORRINET_BENCH_PROGRAM), {u"--soak"_s, u"--smoke"_s});
        QVERIFY2(soak.status == 0, qPrintable(soak.errors.join(u'\n')));
        QVERIFY2(soak.output.contains("\n| after 120 answers |"_L1), qPrintable(soak.output));
        QVERIFY2(soak.output.endsWith("\nAll promises were kept.\n"_L1), qPrintable(soak.output));
        // Some failed, and the last run found nothing open.
        QVERIFY(soak.errors.size() > 3);
        QCOMPARE(soak.errors.constLast(), u"a run: 0 pairs asked, 0 still open"_s);
    }
};

ORRINET_TEST(TestSoak)
#include "tst_soak.moc"
