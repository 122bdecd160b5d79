// How values and foreign texts are put into words.

#include "study/report/wording.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::clean;
using study::cut;
using study::line;
using study::percent;
using study::percentOf;
using study::quoted;
using study::shownNumber;

class TestReportWording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void what_can_not_stand_in_a_page_is_replaced_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cleaned");
        QTest::newRow("plain") << u"Tea,\n\tmilk"_s << u"Tea,\n\tmilk"_s;
        QTest::newRow("control") << u"a\u0001b\u001fc\u007f"_s << u"a\ufffdb\ufffdc\ufffd"_s;
        QTest::newRow("null") << QString(QChar(0)) << u"\ufffd"_s;
        QTest::newRow("carriage returns") << u"a\r\nb\rc"_s << u"a\nb\nc"_s;
        QTest::newRow("override") << u"abc\u202egpj.exe"_s << u"abc\ufffdgpj.exe"_s;
        QTest::newRow("isolates") << u"\u2066a\u2069"_s << u"\ufffda\ufffd"_s;
        QTest::newRow("four bytes") << u"\U0001F375"_s << u"\U0001F375"_s;
        QTest::newRow("half a pair") << QString(QChar(0xd83c)) + u"a"_s << u"\ufffda"_s;
        QTest::newRow("the other half") << u"a"_s + QString(QChar(0xdf75)) << u"a\ufffd"_s;
        QTest::newRow("no character") << QString(QChar(0xffff)) << u"\ufffd"_s;
    }
    void what_can_not_stand_in_a_page_is_replaced()
    {
        QFETCH(const QString, text);
        QTEST(clean(text), "cleaned");
    }

    void a_long_text_is_cut_and_says_how_long_it_is()
    {
        QCOMPARE(cut(u"abcdef"_s, 6), u"abcdef"_s);
        QCOMPARE(cut(u"abcdef"_s, 5), u"abcde\u2026 (6 characters)"_s);
        QCOMPARE(cut(u"ab\U0001F375cd"_s, 3), u"ab\u2026 (6 characters)"_s);
        QCOMPARE(line(u"a\n b  c"_s, 9), u"a b c"_s);
        QCOMPARE(line(QString(40, u'x'), 4), u"xxxx\u2026 (40 characters)"_s);
    }

    void a_foreign_text_keeps_its_direction_to_itself()
    {
        QCOMPARE(quoted(u"\u05d0\u05d1"_s), u"\u201c\u2068\u05d0\u05d1\u2069\u201d"_s);
        QCOMPARE(quoted(u"a\u2069b"_s), u"\u201c\u2068a\ufffdb\u2069\u201d"_s);
    }

    void a_share_is_never_rounded_to_all_or_nothing_data()
    {
        QTest::addColumn<double>("share");
        QTest::addColumn<QString>("words");
        QTest::newRow("nothing") << 0.0 << u"0 %"_s;
        QTest::newRow("nearly nothing") << 0.0004 << u"<0.1 %"_s;
        QTest::newRow("some") << 0.375 << u"37.5 %"_s;
        QTest::newRow("a third") << 1.0 / 3 << u"33.3 %"_s;
        QTest::newRow("nearly all") << 0.9996 << u">99.9 %"_s;
        QTest::newRow("all") << 1.0 << u"100 %"_s;
        QTest::newRow("none") << qQNaN() << u"-"_s;
    }
    void a_share_is_never_rounded_to_all_or_nothing()
    {
        QFETCH(const double, share);
        QTEST(percent(share), "words");
    }

    void a_number_is_short_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("words");
        QTest::newRow("whole") << 7.0 << u"7"_s;
        QTest::newRow("long") << 2.0 / 3 << u"0.667"_s;
        QTest::newRow("hundred") << 100.0 << u"100"_s;
        QTest::newRow("tiny") << 1e-7 << u"1e-07"_s;
        QTest::newRow("huge") << 1.5e300 << u"1.5e+300"_s;
        QTest::newRow("minus nothing") << -0.0 << u"0"_s;
        QTest::newRow("infinite") << qInf() << u"-"_s;
    }
    void a_number_is_short()
    {
        QFETCH(const double, number);
        QTEST(shownNumber(number), "words");
    }

    void of_nothing_there_is_no_share()
    {
        QCOMPARE(percentOf(0, 0), u"-"_s);
        QCOMPARE(percentOf(1, 4), u"25 %"_s);
    }
};

ORRINET_TEST(TestReportWording)
#include "tst_reportwording.moc"
