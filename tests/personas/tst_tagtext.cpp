#include "personas/tagtext.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestTagText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_is_cut_at_commas_and_white_space_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("names");

        QTest::newRow("null text") << QString() << QStringList();
        QTest::newRow("empty text") << u""_s << QStringList();
        QTest::newRow("one name") << u"urban"_s << QStringList{u"urban"_s};
        QTest::newRow("comma") << u"a,b"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("blank") << u"a b"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("comma and blank") << u"a, b"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("tab") << u"a\tb"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("line feed") << u"a\nb"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("carriage return and line feed") << u"a\r\nb"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("vertical tab") << u"a\vb"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("form feed") << u"a\fb"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("a run of all of them") << u"a ,\t,\r\n\v\f, b"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("nothing but separators") << u" ,\t,\n "_s << QStringList();
        QTest::newRow("separators at both ends") << u", a b ,"_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("repeated names stay") << u"x, y  z,,x"_s << QStringList{u"x"_s, u"y"_s, u"z"_s, u"x"_s};
        QTest::newRow("case stays") << u"Urban urban"_s << QStringList{u"Urban"_s, u"urban"_s};
        QTest::newRow("other punctuation stays") << u"a;b c/d e-f"_s << QStringList{u"a;b"_s, u"c/d"_s, u"e-f"_s};
    }
    void text_is_cut_at_commas_and_white_space()
    {
        QFETCH(const QString, text);
        QTEST(splitTags(text), "names");
    }

    // White space is that of ASCII: the expression is built without Unicode properties.
    void characters_outside_ascii_do_not_separate_data()
    {
        QTest::addColumn<QString>("text");

        QTest::newRow("no-break space") << u"New\u00A0York"_s;
        QTest::newRow("next line") << u"a\u0085b"_s;
        QTest::newRow("em space") << u"a\u2003b"_s;
        QTest::newRow("line separator") << u"a\u2028b"_s;
        QTest::newRow("ideographic space") << u"a\u3000b"_s;
        QTest::newRow("full-width comma") << u"a\uFF0Cb"_s;
        QTest::newRow("letters") << u"\u00E9t\u00E9"_s;
        QTest::newRow("outside the basic plane") << u"\U0001F41D\U0001F36F"_s;
    }
    void characters_outside_ascii_do_not_separate()
    {
        QFETCH(const QString, text);
        QCOMPARE(splitTags(text), QStringList{text});
    }

    void names_are_joined_by_comma_and_blank_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("text");

        QTest::newRow("none") << QStringList() << u""_s;
        QTest::newRow("one") << QStringList{u"a"_s} << u"a"_s;
        QTest::newRow("order stays") << QStringList{u"b"_s, u"a"_s, u"c"_s} << u"b, a, c"_s;
        QTest::newRow("name with a blank") << QStringList{u"New York"_s, u"urban"_s} << u"New York, urban"_s;
    }
    void names_are_joined_by_comma_and_blank()
    {
        QFETCH(const QStringList, names);
        QTEST(joinTags(names), "text");
    }

    void a_name_with_a_blank_does_not_survive_joining_and_cutting()
    {
        QCOMPARE(splitTags(joinTags({u"New York"_s, u"urban"_s})), QStringList({u"New"_s, u"York"_s, u"urban"_s}));
    }
};

ORRINET_TEST(TestTagText)
#include "tst_tagtext.moc"
