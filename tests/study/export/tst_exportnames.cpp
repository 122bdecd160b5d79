// The names of variables.

#include "study/export/names.h"
#include "tests/support/testcase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

class TestExportNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void what_belongs_to_a_question_begins_with_its_number()
    {
        QCOMPARE(study::answerName(12), u"q12"_s);
        QCOMPARE(study::labelName(12, 3), u"q12_3"_s);
        QCOMPARE(study::textName(12), u"q12t"_s);
        QCOMPARE(study::reasoningName(12), u"q12r"_s);
        QCOMPARE(study::statusName(12), u"q12s"_s);
    }

    void a_tag_becomes_a_name_that_every_format_takes_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"rural"_s << u"tag_rural"_s;
        QTest::newRow("case") << u"Rural"_s << u"tag_rural"_s;
        QTest::newRow("accents") << u"Zürich, Genève"_s << u"tag_zurich_geneve"_s;
        QTest::newRow("signs") << u" <b>18-30</b>!"_s << u"tag_b_18_30_b"_s;
        QTest::newRow("digits") << u"2001"_s << u"tag_2001"_s;
        QTest::newRow("digits elsewhere") << u"٣"_s << u"tag"_s;
        QTest::newRow("another script") << u"農村"_s << u"tag"_s;
        QTest::newRow("four bytes") << u"😀 a"_s << u"tag_a"_s;
        QTest::newRow("nothing") << QString() << u"tag"_s;
        QTest::newRow("long") << QString(100, u'a') << "tag_"_L1 + QString(28, u'a');
        QTest::newRow("long, cut at a sign") << QString(27, u'a') + u" a"_s << "tag_"_L1 + QString(27, u'a');
    }
    void a_tag_becomes_a_name_that_every_format_takes()
    {
        QFETCH(const QString, tag);
        QTEST(study::tagName(tag), "name");
    }

    void no_name_is_given_twice()
    {
        study::Names names;
        QCOMPARE(names.unique(u"tag"_s), u"tag"_s);
        QCOMPARE(names.unique(u"TAG"_s), u"TAG_2"_s);
        QCOMPARE(names.unique(u"tag_2"_s), u"tag_2_2"_s);
        QCOMPARE(names.unique(u"tag"_s), u"tag_3"_s);
        const QString longest(32, u'a');
        QCOMPARE(names.unique(longest), longest);
        QCOMPARE(names.unique(longest), QString(30, u'a') + u"_2"_s);
    }
};

ORRINET_TEST(TestExportNames)
#include "tst_exportnames.moc"
