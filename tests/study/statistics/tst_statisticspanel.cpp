// How far personas are apart by their answers and by their texts.

#include "study/statistics/likeness.h"
#include "study/statistics/mixedrows.h"
#include "study/statistics/words.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using study::AlikeTexts;
using study::alikeTexts;
using study::characterCount;
using study::comparedLength;
using study::FrequentWord;
using study::frequentWords;
using study::likeness;
using study::MixedRows;
using study::nearlyTheSame;
using study::wordsOf;

class TestStatisticsPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void each_type_has_its_distance()
    {
        MixedRows nominal(4);
        nominal.addNominal({3, 3, 0, -1});
        QCOMPARE(shown(nominal.distance(0, 1)), u"0"_s);
        QCOMPARE(shown(nominal.distance(0, 2)), u"1"_s);
        QCOMPARE(shown(nominal.distance(0, 3)), u"nothing"_s);

        MixedRows ordinal(4);
        ordinal.addOrdinal({0, 1, 4, 5}, 5);
        QCOMPARE(shown(ordinal.distance(0, 1)), u"0.25"_s);
        QCOMPARE(shown(ordinal.distance(2, 0)), u"1"_s);
        QCOMPARE(shown(ordinal.distance(0, 3)), u"nothing"_s);

        MixedRows numbers(4);
        numbers.addNumbers({-5.0, 0.0, 15.0, std::nullopt});
        QCOMPARE(shown(numbers.distance(0, 1)), u"0.25"_s);
        QCOMPARE(shown(numbers.distance(0, 2)), u"1"_s);
        QCOMPARE(shown(numbers.distance(0, 3)), u"nothing"_s);

        MixedRows sets(5);
        sets.addSets({Chosen({0, 1}), Chosen({1, 70}), Chosen(QList<int>()), Chosen(QList<int>()), Chosen()}, 71);
        QCOMPARE(shown(sets.distance(0, 1)), QString::number(2.0 / 3.0, 'g', 12));
        QCOMPARE(shown(sets.distance(0, 2)), u"1"_s);
        QCOMPARE(shown(sets.distance(2, 3)), u"0"_s);
        QCOMPARE(shown(sets.distance(2, 4)), u"nothing"_s);
        MixedRows manyKinds(2);
        manyKinds.addSets({Chosen({1}), Chosen({33})}, 64);
        QCOMPARE(shown(manyKinds.distance(0, 1)), u"1"_s);

        MixedRows ranks(5);
        ranks.addRanks({Chosen({0, 1, 2}), Chosen({2, 1, 0}), Chosen({0, 2, 1}), Chosen({2}), Chosen(QList<int>())}, 3);
        QCOMPARE(shown(ranks.distance(0, 1)), u"1"_s);
        QCOMPARE(shown(ranks.distance(0, 2)), u"0.5"_s);
        // The two that are left share the ranks 2 and 3: |1 - 2.5| + |2 - 2.5| + |3 - 1| over 4.
        QCOMPARE(shown(ranks.distance(0, 3)), u"1"_s);
        QCOMPARE(shown(ranks.distance(1, 3)), u"0.25"_s);
        QCOMPARE(shown(ranks.distance(0, 4)), u"nothing"_s);
    }

    void a_column_that_does_not_vary_sets_nobody_apart()
    {
        MixedRows rows(2);
        rows.addNumbers({7.0, 7.0});
        rows.addOrdinal({0, 0}, 1);
        rows.addRanks({Chosen({0}), Chosen({0})}, 1);
        rows.addSets({Chosen(QList<int>()), Chosen(QList<int>())}, 0);
        QCOMPARE(shown(rows.distance(0, 1)), u"0"_s);
    }

    void numbers_at_the_ends_of_their_range_have_a_distance()
    {
        const double largest = std::numeric_limits<double>::max();
        MixedRows rows(4);
        rows.addNumbers({-largest, largest, 0.0, std::numeric_limits<double>::infinity()});
        QCOMPARE(shown(rows.distance(0, 1)), u"1"_s);
        QCOMPARE(shown(rows.distance(0, 2)), u"0.5"_s);
        QCOMPARE(shown(rows.distance(0, 3)), u"nothing"_s);
    }

    void columns_without_an_answer_of_both_are_left_out()
    {
        MixedRows rows(3);
        rows.addNominal({0, 1, 1});
        rows.addNominal({0, 0, -1});
        rows.addNominal({-1, 0, -1});
        QCOMPARE(shown(rows.distance(0, 1)), u"0.5"_s);
        QCOMPARE(shown(rows.distance(0, 2)), u"1"_s);
        QCOMPARE(shown(rows.distance(1, 2)), u"0"_s);
    }

    void the_nearest_row_is_the_first_of_those_as_near()
    {
        MixedRows rows(5);
        rows.addOrdinal({0, 4, 1, 1, -1}, 5);
        const auto nearest = rows.nearestNeighbours();
        QCOMPARE(nearest.size(), 5);
        QCOMPARE(nearest.at(0)->row, 2);
        QCOMPARE(nearest.at(0)->distance, 0.25);
        QCOMPARE(nearest.at(0)->shared, 1);
        QCOMPARE(nearest.at(1)->row, 2);
        QCOMPARE(nearest.at(2)->row, 3);
        QCOMPARE(nearest.at(3)->row, 2);
        QVERIFY(!nearest.at(4));
        QVERIFY(!MixedRows(1).nearestNeighbours().at(0));
    }

    void the_nearest_row_is_that_of_a_search_through_all()
    {
        QRandomGenerator dice(testSeed());
        for (int round = 0; round < 20; ++round) {
            const MixedRows rows = randomRows(dice);
            const auto nearest = rows.nearestNeighbours();
            for (int row = 0; row < rows.size(); ++row) {
                std::optional<double> least;
                int place = -1;
                for (int other = 0; other < rows.size(); ++other) {
                    const auto distance = other == row ? std::nullopt : rows.distance(row, other);
                    QVERIFY(!distance || (*distance >= 0 && *distance <= 1));
                    QCOMPARE(distance, other == row ? std::nullopt : rows.distance(other, row));
                    if (distance && (!least || *distance < *least)) {
                        least = distance;
                        place = other;
                    }
                }
                QCOMPARE(nearest.at(row).has_value(), least.has_value());
                if (least) {
                    QCOMPARE(nearest.at(row)->distance, *least);
                    QCOMPARE(nearest.at(row)->row, place);
                }
            }
        }
    }

    void rows_with_the_same_answers_are_found_together()
    {
        MixedRows rows(7);
        rows.addNominal({0, 1, 0, 1, 1, -1, -1});
        rows.addNumbers({0.5, 0.0, 0.5, -0.0, std::nullopt, std::nullopt, std::nullopt});
        rows.addSets({Chosen({1, 0}), Chosen({1}), Chosen({0, 1}), Chosen({1}), Chosen({1}), Chosen(), Chosen()}, 2);
        rows.addRanks({Chosen({0, 1}), Chosen({1}), Chosen({0, 1}), Chosen({1, 0}), Chosen({1}), Chosen(), Chosen()},
                      2);
        QCOMPARE(rows.identicalRows(), (Groups{{0, 2}, {1, 3}}));

        MixedRows more(5);
        more.addNominal({4, 5, 5, 4, 5});
        QCOMPARE(more.identicalRows(), (Groups{{1, 2, 4}, {0, 3}}));
        QVERIFY(MixedRows(3).identicalRows().isEmpty());
    }

    void texts_are_as_alike_as_the_words_in_a_row_that_they_share()
    {
        QCOMPARE(shown(likeness(u"One two three, four!"_s, u"one  TWO three four"_s)), u"1"_s);
        // Of "a b c", "b c d" and "c d e" the first two.
        QCOMPARE(shown(likeness(u"a b c d e"_s, u"a b c d"_s)), QString::number(2.0 / 3.0, 'g', 12));
        QCOMPARE(shown(likeness(u"a b c"_s, u"c b a"_s)), u"0"_s);
        QCOMPARE(shown(likeness(u"tea"_s, u"Tea."_s)), u"1"_s);
        QCOMPARE(shown(likeness(u"tea"_s, u"tea tea"_s)), u"0"_s);
        QCOMPARE(shown(likeness(u"tea"_s, u"..."_s)), u"nothing"_s);
        QCOMPARE(shown(likeness({}, {})), u"nothing"_s);
    }

    void of_a_long_text_its_beginning_counts()
    {
        const QString beginning = text(2000).left(comparedLength);
        QCOMPARE(shown(likeness(beginning + u" and so on"_s, beginning + u" in another way"_s)), u"1"_s);
    }

    void texts_that_are_nearly_the_same_are_found_together()
    {
        // One of 60 words changes three of 58 shingles: 55 of 61 are the same.
        const QStringList texts{
            text(60),  u"quite another story"_s, text(60, 30, 1),           u"..."_s,
            QString(), text(60, 31, 2),          u"Quite another story!"_s, u"quite another story"_s};
        const QList<AlikeTexts> groups = alikeTexts(texts);
        QCOMPARE(alikePlaces(texts), (Groups{{0, 2, 5}, {1, 6, 7}}));
        QVERIFY(std::abs(groups.at(0).least - (55.0 / 61.0)) < 0.1);
        QVERIFY(groups.at(0).least >= nearlyTheSame);
        QVERIFY(!groups.at(0).same);
        QCOMPARE(groups.at(1).least, 1.0);
        QVERIFY(!groups.at(1).same);
        QVERIFY(alikeTexts({u"a b c"_s, u"a b c"_s}).at(0).same);
        QVERIFY(alikeTexts({}).isEmpty());
    }

    void a_group_is_as_alike_as_its_weakest_link()
    {
        // Of 34, 38 and 40 shingles in a row.
        const QList<AlikeTexts> groups = alikeTexts({text(42), text(36), text(40)}, 0.88);
        QCOMPARE(groups.size(), 1);
        QCOMPARE(groups.at(0).places, (QList<int>{0, 1, 2}));
        QCOMPARE(groups.at(0).least, 34.0 / 38.0);
    }

    void the_threshold_itself_is_alike()
    {
        // Four of five shingles.
        const QStringList texts{u"a b c d e f g"_s, u"a b c d e f"_s};
        QCOMPARE(shown(likeness(texts.at(0), texts.at(1))), u"0.8"_s);
        QCOMPARE(alikePlaces(texts, 0.8), (Groups{{0, 1}}));
        QCOMPARE(alikePlaces(texts, 0.81), Groups());
    }

    void alike_texts_are_those_of_a_search_through_all_pairs()
    {
        QRandomGenerator dice(testSeed());
        for (int round = 0; round < 30; ++round) {
            QStringList texts;
            for (int count = 0; count < 25; ++count) {
                QStringList words;
                for (int word = 0, length = int(dice.bounded(12)); word < length; ++word)
                    words << QString(QChar(u'a' + dice.bounded(word % 3 == 0 ? 3 : 1)));
                texts << words.join(u' ');
            }
            const double least = 0.3 + (0.7 * dice.generateDouble());
            QCOMPARE(sorted(alikePlaces(texts, least)), sorted(groupsByAllPairs(texts, least)));
        }
    }

    void a_large_panel_of_long_texts_is_searched_with_little_memory_and_time()
    {
        // Personas of one mould: each shares most shingles with every other.
        QStringList texts;
        for (int persona = 0; persona < 300; ++persona)
            texts << text(400, persona % 400, persona);
        QCOMPARE(alikePlaces(texts).size(), 1);
        QCOMPARE(alikePlaces(texts).at(0).size(), 300);
    }

    void words_are_cut_as_unicode_does()
    {
        QCOMPARE(wordsOf(u"Don't stop, I’m fine: 3.5 cups & tea-time!"_s),
                 (QStringList{u"don't"_s, u"stop"_s, u"i'm"_s, u"fine"_s, u"3.5"_s, u"cups"_s, u"tea"_s, u"time"_s}));
        QCOMPARE(wordsOf(u"ÜBER Straße קפה \U0001F375 \U0001D4EA"_s),
                 (QStringList{u"über"_s, u"straße"_s, u"קפה"_s, u"\U0001D4EA"_s}));
        QCOMPARE(wordsOf(u"... --- \n"_s), QStringList());
        QCOMPARE(wordsOf({}), QStringList());
        QCOMPARE(wordsOf(QString(QChar(0xD800)) + u" tea"_s).last(), u"tea"_s);
    }

    void the_words_of_most_texts_come_first()
    {
        const QList<FrequentWord> words = frequentWords(
            {u"The tea and the kettle, the kettle"_s, u"A kettle I have"_s, u"Zest, zest, zest and zest tea b 7"_s}, 3);
        QCOMPARE(words.size(), 3);
        QCOMPARE(words.at(0).word, u"kettle"_s);
        QCOMPARE(words.at(0).texts, 2);
        QCOMPARE(words.at(0).times, 3);
        QCOMPARE(words.at(1).word, u"tea"_s);
        QCOMPARE(words.at(1).times, 2);
        QCOMPARE(words.at(2).word, u"zest"_s);
        QVERIFY(frequentWords({u"the and of"_s}, 3).isEmpty());
        QVERIFY(frequentWords({u"tea"_s}, -1).isEmpty());
    }

    void a_character_is_one_whatever_its_bytes()
    {
        QCOMPARE(characterCount(u"tea"_s), 3);
        QCOMPARE(characterCount(u"é\U0001F375קָ"_s), 4);
        QCOMPARE(characterCount({}), 0);
    }

private:
    using Groups = QList<QList<int>>;
    using Chosen = std::optional<QList<int>>;

    static QString shown(const std::optional<double> &value)
    {
        return value ? QString::number(*value, 'g', 12) : u"nothing"_s;
    }

    /// The places of the groups of texts that are alike.
    static Groups alikePlaces(const QStringList &texts, double least = nearlyTheSame)
    {
        Groups places;
        for (const QList<AlikeTexts> groups = alikeTexts(texts, least); const AlikeTexts &group : groups)
            places << group.places;
        return places;
    }

    /// "word0 word1 ..." with one word in place of another.
    static QString text(int words, int changedWord = -1, int variant = 0)
    {
        QStringList list;
        for (int word = 0; word < words; ++word)
            list << (word == changedWord ? u"other%1"_s.arg(variant) : u"word%1"_s.arg(word));
        return list.join(u' ');
    }

    static MixedRows randomRows(QRandomGenerator &dice)
    {
        const int count = 1 + int(dice.bounded(25));
        MixedRows rows(count);
        QList<int> codes;
        QList<std::optional<double>> numbers;
        QList<Chosen> orders;
        for (int row = 0; row < count; ++row) {
            const bool isOpen = dice.bounded(3) == 0;
            codes << int(dice.bounded(5)) - 1;
            numbers << (isOpen ? std::nullopt : std::optional(double(dice.bounded(9)) - 4));
            QList<int> order{0, 1, 2, 3};
            std::shuffle(order.begin(), order.end(), dice);
            orders << (isOpen ? Chosen() : Chosen(order.first(dice.bounded(5))));
        }
        rows.addNominal(codes);
        rows.addOrdinal(codes, 4);
        rows.addNumbers(numbers);
        rows.addSets(orders, 4);
        rows.addRanks(orders, 4);
        return rows;
    }

    static Groups groupsByAllPairs(const QStringList &texts, double least)
    {
        QList<int> group(texts.size());
        for (int place = 0; place < texts.size(); ++place)
            group[place] = place;
        for (int one = 0; one < texts.size(); ++one) {
            for (int other = 0; other < one; ++other) {
                if (likeness(texts.at(one), texts.at(other)).value_or(-1) >= least)
                    std::replace(group.begin(), group.end(), int(group.at(one)), int(group.at(other)));
            }
        }
        QMap<int, QList<int>> members;
        for (int place = 0; place < texts.size(); ++place)
            members[group.at(place)] << place;
        Groups found = members.values();
        found.removeIf([](const QList<int> &places) { return places.size() < 2; });
        return found;
    }

    static Groups sorted(Groups groups)
    {
        std::sort(groups.begin(), groups.end());
        return groups;
    }
};

ORRINET_TEST(TestStatisticsPanel)
#include "tst_statisticspanel.moc"
