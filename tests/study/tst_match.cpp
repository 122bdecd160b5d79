// How free text is matched to labels.

#include "study/match.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::Matches;
using study::matchOne;
using study::matchSeveral;

static QStringList drinks()
{
    return {u"Tea"_s, u"Coffee"_s, u"Milk, warm"_s, u"Milk, cold"_s, u"tea with lemon"_s};
}

class TestMatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void one_label_is_exact_or_the_same_but_for_case_and_white_space_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("label");
        QTest::newRow("exact") << u"Coffee"_s << 1;
        QTest::newRow("case") << u"cOFFEE"_s << 1;
        QTest::newRow("around") << u"  Tea\n"_s << 0;
        QTest::newRow("within") << u"tea  with\tLemon"_s << 4;
        QTest::newRow("a part") << u"Tea with"_s << -1;
        QTest::newRow("a sentence") << u"I'd say Tea"_s << -1;
        QTest::newRow("with a full stop") << u"Tea."_s << -1;
        QTest::newRow("nothing") << QString() << -1;
    }
    void one_label_is_exact_or_the_same_but_for_case_and_white_space()
    {
        QFETCH(const QString, text);
        QTEST(matchOne(text, drinks()), "label");
    }

    void labels_that_differ_in_case_alone_are_told_apart_by_it()
    {
        const QStringList labels{u"us"_s, u"US"_s};
        QCOMPARE(matchOne(u"US"_s, labels), 1);
        QCOMPARE(matchOne(u"us"_s, labels), 0);
        QCOMPARE(matchOne(u"Us"_s, labels), -1);
    }

    void several_labels_are_listed_in_one_of_these_forms_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("labels");
        QTest::addColumn<QStringList>("unmatched");
        const QStringList none;
        QTest::newRow("one") << u"tea"_s << QList<int>{0} << none;
        QTest::newRow("one that holds a comma") << u"milk, warm"_s << QList<int>{2} << none;
        QTest::newRow("commas") << u"Coffee, Tea"_s << QList<int>{1, 0} << none;
        QTest::newRow("commas, also in a label") << u"Tea, Milk, cold, Coffee"_s << QList<int>{0, 3, 1} << none;
        QTest::newRow("semicolons") << u"Milk, warm; Tea;"_s << QList<int>{2, 0} << none;
        QTest::newRow("lines") << u"Milk, warm\n\n tea \r\nCoffee\n"_s << QList<int>{2, 0, 1} << none;
        QTest::newRow("an array") << uR"(["Coffee", " TEA "])"_s << QList<int>{1, 0} << none;
        QTest::newRow("an array with a stranger")
            << uR"(["Coffee","Cola",7])"_s << QList<int>{1} << QStringList{u"Cola"_s, u"7"_s};
        QTest::newRow("a stranger") << u"Tea, Cola"_s << QList<int>{0} << QStringList{u"Cola"_s};
        QTest::newRow("one twice") << u"Tea, Coffee, tea"_s << QList<int>{0, 1} << QStringList{u"tea"_s};
        QTest::newRow("a numbered list") << u"1. Tea\n2. Coffee"_s << QList<int>{}
                                         << QStringList{u"1. Tea\n2. Coffee"_s};
        QTest::newRow("a conjunction") << u"Tea and Coffee"_s << QList<int>{} << QStringList{u"Tea and Coffee"_s};
        QTest::newRow("nothing") << QString() << QList<int>{} << QStringList{QString()};
        QTest::newRow("an empty array") << u"[]"_s << QList<int>{} << none;
    }
    void several_labels_are_listed_in_one_of_these_forms()
    {
        QFETCH(const QString, text);
        const Matches matches = matchSeveral(text, drinks());
        QTEST(matches.labels, "labels");
        QTEST(matches.unmatched, "unmatched");
    }

    void without_labels_nothing_matches()
    {
        QCOMPARE(matchOne(u"Tea"_s, {}), -1);
        QCOMPARE(matchSeveral(u"Tea, Coffee"_s, {}).labels, QList<int>());
    }
};

ORRINET_TEST(TestMatch)
#include "tst_match.moc"
