#include "questions/answertypes.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestAnswerTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void six_types_are_stored_and_shown_in_one_order()
    {
        QCOMPARE(storedAnswerTypes(), QStringList({u"single_choice"_s, u"multi_choice"_s, u"text"_s, u"numeric"_s,
                                                   u"likert"_s, u"ranking"_s}));
        QCOMPARE(shownAnswerTypes(), QStringList({u"Option"_s, u"Multiple Choice"_s, u"Text"_s, u"Numeric"_s,
                                                  u"Likert Scale"_s, u"Rank Choices"_s}));
    }

    void a_stored_word_has_its_place_and_any_other_the_first_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("index");

        QTest::newRow("single choice") << u"single_choice"_s << 0;
        QTest::newRow("multiple choice") << u"multi_choice"_s << 1;
        QTest::newRow("text") << u"text"_s << 2;
        QTest::newRow("numeric") << u"numeric"_s << 3;
        QTest::newRow("likert") << u"likert"_s << 4;
        QTest::newRow("ranking") << u"ranking"_s << 5;
        QTest::newRow("wrong case") << u"Text"_s << 0;
        QTest::newRow("shown word") << u"Likert Scale"_s << 0;
        QTest::newRow("blank behind") << u"text "_s << 0;
        QTest::newRow("beginning of a word") << u"rank"_s << 0;
        QTest::newRow("unknown word") << u"essay"_s << 0;
        QTest::newRow("empty") << u""_s << 0;
        QTest::newRow("null") << QString() << 0;
    }
    void a_stored_word_has_its_place_and_any_other_the_first()
    {
        QFETCH(const QString, stored);
        QTEST(answerTypeIndex(stored), "index");
    }
};

ORRINET_TEST(TestAnswerTypes)
#include "tst_answertypes.moc"
