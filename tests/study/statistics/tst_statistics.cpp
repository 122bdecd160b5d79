// What is computed of answers: by hand where that can be done, and what holds of any.

#include "study/statistics/agreement.h"
#include "study/statistics/association.h"
#include "study/statistics/distribution.h"
#include "study/statistics/divergence.h"
#include "study/statistics/numbers.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using study::agreement;
using study::Bin;
using study::codesOf;
using study::countsOf;
using study::cramersV;
using study::cramersVCorrected;
using study::crossTable;
using study::CrossTable;
using study::deviationRatio;
using study::entropy;
using study::etaSquared;
using study::histogram;
using study::jensenShannonDistance;
using study::mean;
using study::median;
using study::mostFrequent;
using study::normalisedEntropy;
using study::quantile;
using study::standardDeviation;
using study::wassersteinNumbers;
using study::wassersteinOrdered;
using study::weighted;
using study::Weighted;
using study::weightedPlaces;

class TestStatistics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codes_are_counted_and_texts_get_one()
    {
        QCOMPARE(countsOf({0, 2, 2, -1, 3, 7}, 3), (Numbers{1, 0, 2}));
        QCOMPARE(countsOf({0}, 0), Numbers());
        const study::CodedTexts coded = codesOf({u"b"_s, QString(), u"a"_s, u"b"_s, u""_s});
        QCOMPARE(coded.codes, (QList<int>{0, -1, 1, 0, 2}));
        QCOMPARE(coded.kinds, (QStringList{u"b"_s, u"a"_s, u""_s}));
    }

    void a_distribution_has_shares_and_an_entropy_data()
    {
        QTest::addColumn<Numbers>("counts");
        QTest::addColumn<QString>("share");
        QTest::addColumn<QString>("entropy");
        QTest::addColumn<QString>("normalised");
        QTest::newRow("even") << Numbers{5, 5, 5, 5} << u"0.25"_s << u"2"_s << u"1"_s;
        QTest::newRow("all of one kind") << Numbers{0, 9} << u"1"_s << u"0"_s << u"0"_s;
        QTest::newRow("one, a half, a quarter") << Numbers{2, 1, 1, 0} << u"0.5"_s << u"1.5"_s << u"0.75"_s;
        QTest::newRow("shares") << Numbers{0.125, 0.125} << u"0.5"_s << u"1"_s << u"1"_s;
        QTest::newRow("a single kind") << Numbers{3} << u"1"_s << u"0"_s << u"nothing"_s;
        QTest::newRow("the largest numbers") << Numbers{largest, largest} << u"0.5"_s << u"1"_s << u"1"_s;
        for (const auto &[name, counts] : {std::pair("empty", Numbers{}), std::pair("of nobody", Numbers{0, 0}),
                                           std::pair("negative", Numbers{2, -1}), std::pair("none", Numbers{1, none}),
                                           std::pair("endless", Numbers{1, endless})})
            QTest::newRow(name) << counts << u"nothing"_s << u"nothing"_s << u"nothing"_s;
    }
    void a_distribution_has_shares_and_an_entropy()
    {
        QFETCH(const Numbers, counts);
        const auto most = mostFrequent(counts);
        QTEST(shown(most ? Value(most->share) : Value()), "share");
        QTEST(shown(entropy(counts)), "entropy");
        QTEST(shown(normalisedEntropy(counts)), "normalised");
    }

    void of_kinds_as_frequent_the_first_is_named()
    {
        const auto most = mostFrequent({1, 4, 0, 4});
        QVERIFY(most);
        QCOMPARE(most->kind, 1);
        QCOMPARE(most->ties, 2);
    }

    void numbers_have_a_middle_and_a_spread_data()
    {
        QTest::addColumn<Numbers>("numbers");
        QTest::addColumn<QString>("mean");
        QTest::addColumn<QString>("deviation");
        QTest::addColumn<QString>("median");
        QTest::newRow("odd") << Numbers{9, 1, 2} << u"4"_s << u"4.35889894354"_s << u"2"_s;
        QTest::newRow("even") << Numbers{4, 1, 3, 2} << u"2.5"_s << u"1.29099444874"_s << u"2.5"_s;
        QTest::newRow("one") << Numbers{-7} << u"-7"_s << u"nothing"_s << u"-7"_s;
        QTest::newRow("constant") << Numbers{0.1, 0.1, 0.1} << u"0.1"_s << u"0"_s << u"0.1"_s;
        QTest::newRow("none") << Numbers{} << u"nothing"_s << u"nothing"_s << u"nothing"_s;
        QTest::newRow("not finite") << Numbers{none, 2, endless, -endless} << u"2"_s << u"nothing"_s << u"2"_s;
        QTest::newRow("the largest") << Numbers{largest, largest} << shown(largest) << u"0"_s << shown(largest);
        QTest::newRow("beyond") << Numbers{largest, -largest} << u"0"_s << u"nothing"_s << u"0"_s;
    }
    void numbers_have_a_middle_and_a_spread()
    {
        QFETCH(const Numbers, numbers);
        QTEST(shown(mean(numbers)), "mean");
        QTEST(shown(standardDeviation(numbers)), "deviation");
        QTEST(shown(median(numbers)), "median");
    }

    void quantiles_lie_between_two_numbers_in_proportion()
    {
        const Numbers numbers{30, 10, 20, 40};
        QCOMPARE(shown(quantile(numbers, 0)), u"10"_s);
        QCOMPARE(shown(quantile(numbers, 0.25)), u"17.5"_s);
        QCOMPARE(shown(quantile(numbers, 0.9)), u"37"_s);
        QCOMPARE(shown(quantile(numbers, 1)), u"40"_s);
        QCOMPARE(shown(quantile(numbers, 1.01)), u"nothing"_s);
        QCOMPARE(shown(quantile(numbers, none)), u"nothing"_s);
    }

    void whole_numbers_get_a_bin_each()
    {
        const QList<Bin> bins = histogram({3, 1, 3, 3, none});
        QCOMPARE(bins.size(), 3);
        QCOMPARE(bins.at(0).from, 0.5);
        QCOMPARE(bins.at(2).to, 3.5);
        QCOMPARE(bins.at(0).count, 1);
        QCOMPARE(bins.at(1).count, 0);
        QCOMPARE(bins.at(2).count, 3);
    }

    void numbers_that_are_all_the_same_make_one_bin()
    {
        const QList<Bin> bins = histogram({2.5, 2.5});
        QCOMPARE(bins.size(), 1);
        QCOMPARE(bins.at(0).from, 2.5);
        QCOMPARE(bins.at(0).to, 2.5);
        QCOMPARE(bins.at(0).count, 2);
        QVERIFY(histogram({none}).isEmpty());
    }

    void numbers_at_the_ends_of_their_range_have_bins_too()
    {
        const double least = std::numeric_limits<double>::denorm_min();
        int count = 0;
        for (const QList<Bin> bins = histogram({0, least, least}); const Bin &bin : bins)
            count += bin.count;
        QCOMPARE(count, 3);
        // A width of 2 * largest / 2^(1/3).
        QCOMPARE(histogram({-largest, largest}).size(), 2);
    }

    void bins_hold_every_number_once_and_follow_each_other()
    {
        QRandomGenerator dice(testSeed());
        for (int round = 0; round < 300; ++round) {
            Numbers numbers;
            const double scale = std::pow(10.0, dice.bounded(600) - 300);
            for (int count = 2 + int(dice.bounded(60)); count > 0; --count)
                numbers << (dice.generateDouble() - 0.5) * scale;
            if (round % 3 == 0)
                numbers << largest << -largest;
            const int most = 1 + int(dice.bounded(50));
            const QList<Bin> bins = histogram(numbers, most);
            QVERIFY(!bins.isEmpty() && bins.size() <= most);
            int count = 0;
            for (qsizetype place = 0; place < bins.size(); ++place) {
                const Bin &bin = bins.at(place);
                const bool isLast = place == bins.size() - 1;
                QVERIFY(bin.from < bin.to && (isLast || bin.to == bins.at(place + 1).from));
                const auto holds = [&bin, isLast](double number) {
                    return number >= bin.from && (number < bin.to || (isLast && number == bin.to));
                };
                QCOMPARE(bin.count, int(std::count_if(numbers.begin(), numbers.end(), holds)));
                count += bin.count;
            }
            QCOMPARE(count, int(numbers.size()));
        }
    }

    void two_things_go_together_from_not_at_all_to_wholly_data()
    {
        QTest::addColumn<CrossTable>("table");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("corrected");
        QTest::newRow("wholly") << CrossTable{{5, 0}, {0, 5}} << u"1"_s << u"1"_s;
        QTest::newRow("not at all") << CrossTable{{6, 4}, {3, 2}} << u"0"_s << u"0"_s;
        // Chi square 20 * (7*6 - 3*4)^2 / (10*10*11*9) = 1.8181...
        QTest::newRow("a little") << CrossTable{{7, 3}, {4, 6}} << u"0.301511344578"_s << u"0.201007563052"_s;
        QTest::newRow("a kind that doesn't occur")
            << CrossTable{{7, 0, 3}, {4, 0, 6}, {0, 0, 0}} << u"0.301511344578"_s << u"0.201007563052"_s;
        QTest::newRow("more kinds than groups")
            << CrossTable{{4, 0, 0}, {0, 3, 2}} << u"1"_s << QString::number(std::sqrt(0.75 / 0.875), 'g', 12);
        QTest::newRow("two pairs") << CrossTable{{1, 0}, {0, 1}} << u"1"_s << u"nothing"_s;
        QTest::newRow("one kind") << CrossTable{{5, 5}} << u"nothing"_s << u"nothing"_s;
        QTest::newRow("empty") << CrossTable{} << u"nothing"_s << u"nothing"_s;
        QTest::newRow("negative") << CrossTable{{1, 2}, {3, -4}} << u"nothing"_s << u"nothing"_s;
        QTest::newRow("ragged") << CrossTable{{1, 2}, {3}} << u"nothing"_s << u"nothing"_s;
    }
    void two_things_go_together_from_not_at_all_to_wholly()
    {
        QFETCH(const CrossTable, table);
        QTEST(shown(cramersV(table)), "plain");
        QTEST(shown(cramersVCorrected(table)), "corrected");
    }

    void pairs_without_an_answer_are_in_no_cross_table()
    {
        QCOMPARE(crossTable({0, 1, 1, -1, 0, 2}, {1, 0, -1, 0, 1, 0}, 2, 2), (CrossTable{{0, 2}, {1, 0}}));
    }

    void numbers_differ_between_groups_from_not_at_all_to_wholly()
    {
        QCOMPARE(shown(etaSquared({{1, 1}, {5, 5, 5}})), u"1"_s);
        QCOMPARE(shown(etaSquared({{1, 3}, {2}, {}})), u"0"_s);
        // Means 2 and 5 around 3.5: between 2 * 2 * 2.25, in all 9 + 4.
        QCOMPARE(shown(etaSquared({{1, 3}, {4, 6}})), QString::number(9.0 / 13.0, 'g', 12));
        QCOMPARE(shown(etaSquared({{1, 2}, {none}})), u"nothing"_s);
        QCOMPARE(shown(etaSquared({{3, 3}, {3}})), u"nothing"_s);
        QCOMPARE(shown(etaSquared({})), u"nothing"_s);
    }

    void ordered_distributions_are_as_far_apart_as_their_categories_data()
    {
        QTest::addColumn<Numbers>("one");
        QTest::addColumn<Numbers>("other");
        QTest::addColumn<QString>("distance");
        QTest::newRow("the ends") << Numbers{3, 0, 0} << Numbers{0, 0, 8} << u"1"_s;
        QTest::newRow("neighbours") << Numbers{1, 0, 0} << Numbers{0, 1, 0} << u"0.5"_s;
        QTest::newRow("the same shares") << Numbers{1, 2, 1} << Numbers{10, 20, 10} << u"0"_s;
        QTest::newRow("half of it") << Numbers{1, 0, 0} << Numbers{1, 0, 1} << u"0.5"_s;
        QTest::newRow("one category") << Numbers{1} << Numbers{1} << u"nothing"_s;
        QTest::newRow("other categories") << Numbers{1, 1} << Numbers{1, 1, 1} << u"nothing"_s;
        QTest::newRow("nobody") << Numbers{1, 1} << Numbers{0, 0} << u"nothing"_s;
    }
    void ordered_distributions_are_as_far_apart_as_their_categories()
    {
        QFETCH(const Numbers, one);
        QFETCH(const Numbers, other);
        QTEST(shown(wassersteinOrdered(one, other)), "distance");
    }

    void numbers_are_as_far_apart_as_they_have_to_be_moved()
    {
        const QList<Weighted> one = weighted({0, 10});
        QCOMPARE(shown(wassersteinNumbers(one, weighted({2, 2, 10, 10}), 0, 10)), u"0.1"_s);
        QCOMPARE(shown(wassersteinNumbers(weighted({0}), weighted({10}), 0, 10)), u"1"_s);
        QCOMPARE(shown(wassersteinNumbers(weighted({-largest}), weighted({largest}), -largest, largest)), u"1"_s);
        QCOMPARE(shown(wassersteinNumbers(one, {{10, 0.5}, {0, 0.5}, {99, 0}}, 0, 10)), u"0"_s);
        QCOMPARE(shown(wassersteinNumbers(one, weighted({2, 11}), 0, 10)), u"nothing"_s);
        QCOMPARE(shown(wassersteinNumbers(one, weighted({none}), 0, 10)), u"nothing"_s);
        QCOMPARE(shown(wassersteinNumbers(one, {}, 0, 10)), u"nothing"_s);
        QCOMPARE(shown(wassersteinNumbers(weighted({4}), weighted({4}), 4, 4)), u"nothing"_s);
    }

    void distributions_share_from_all_to_nothing()
    {
        QCOMPARE(shown(jensenShannonDistance({1, 1}, {50, 50})), u"0"_s);
        QCOMPARE(shown(jensenShannonDistance({1, 0}, {0, 1})), u"1"_s);
        // 1/2 * (1 * log2(4/3)) + 1/2 * (1/2 * log2(2/3) + 1/2 * log2 2) = 0.31127812446
        QCOMPARE(shown(jensenShannonDistance({1, 0}, {1, 1})),
                 QString::number(std::sqrt(0.31127812445913283), 'g', 12));
        QCOMPARE(shown(jensenShannonDistance({1}, {1, 1})), u"nothing"_s);
        QCOMPARE(shown(jensenShannonDistance({1, 1}, {0, 0})), u"nothing"_s);
    }

    void one_varies_as_much_as_the_other_or_less()
    {
        QCOMPARE(shown(deviationRatio(weighted({4, 6}), weighted({0, 10}))), u"0.2"_s);
        QCOMPARE(shown(deviationRatio(weighted({4, 6}), {{0, 0.5}, {10, 0.5}})), u"0.2"_s);
        QCOMPARE(shown(deviationRatio(weighted({4}), weighted({0, 10}))), u"0"_s);
        QCOMPARE(shown(deviationRatio(weighted({4, 6}), weighted({5, 5}))), u"nothing"_s);
        // The mean of what is constant is rounded.
        QCOMPARE(shown(deviationRatio(weighted({4, 6}), {{0.1, 1}, {0.1, 2}, {0.1, 3}, {0.1, 7}})), u"nothing"_s);
        QCOMPARE(shown(deviationRatio({}, weighted({0, 10}))), u"nothing"_s);
        QCOMPARE(shown(deviationRatio(weightedPlaces({1, 0, 1}), weightedPlaces({1, 1, 1}))),
                 QString::number(std::sqrt(1.5), 'g', 12));
    }

    void two_agree_beyond_chance_or_not()
    {
        const auto found = agreement({0, 0, 1, 1, -1, 2}, {0, 1, 1, 1, 0, -1});
        QVERIFY(found);
        QCOMPARE(found->pairs, 4);
        QCOMPARE(found->share, 0.75);
        QCOMPARE(shown(found->kappa), u"0.5"_s);
        QCOMPARE(shown(agreement({0, 1}, {1, 0})->kappa), u"-1"_s);
        QCOMPARE(shown(agreement({0, 1, 2}, {0, 1, 2})->kappa), u"1"_s);
        QCOMPARE(shown(agreement({3, 3}, {3, 3})->kappa), u"nothing"_s);
        QVERIFY(!agreement({-1}, {0}));
        QVERIFY(!agreement({0}, {0, 1}));
    }

    void whatever_is_counted_stays_in_its_range()
    {
        QRandomGenerator dice(testSeed());
        for (int round = 0; round < 500; ++round) {
            const int kinds = 2 + int(dice.bounded(6));
            Numbers one;
            Numbers other;
            CrossTable table(2 + int(dice.bounded(3)), Numbers(kinds));
            for (int kind = 0; kind < kinds; ++kind) {
                one << dice.bounded(4);
                other << dice.bounded(1.0);
                for (Numbers &row : table)
                    row[kind] = dice.bounded(5);
            }
            one[0] += 1;
            const Numbers reversed(one.crbegin(), one.crend());
            QVERIFY(isIn(normalisedEntropy(one), 0, 1));
            QVERIFY(isClose(entropy(one), entropy(reversed)));
            QVERIFY(isIn(wassersteinOrdered(one, other), 0, 1));
            QVERIFY(isIn(jensenShannonDistance(one, other), 0, 1));
            QVERIFY(isClose(jensenShannonDistance(one, other), jensenShannonDistance(other, one)));
            QVERIFY(isClose(wassersteinOrdered(one, other),
                            wassersteinNumbers(weightedPlaces(one), weightedPlaces(other), 1, kinds)));
            if (const Value plain = cramersV(table)) {
                QVERIFY(isIn(plain, 0, 1));
                if (const Value corrected = cramersVCorrected(table))
                    QVERIFY(isIn(corrected, 0, 1));
            }
        }
    }

private:
    using Value = std::optional<double>;
    using Numbers = QList<double>;

    static constexpr double none = std::numeric_limits<double>::quiet_NaN();
    static constexpr double endless = std::numeric_limits<double>::infinity();
    static constexpr double largest = std::numeric_limits<double>::max();

    static QString shown(const Value &value) { return value ? QString::number(*value, 'g', 12) : u"nothing"_s; }

    static bool isIn(const Value &value, double low, double high) { return value && *value >= low && *value <= high; }

    /// Sums in another order are rounded in another way.
    static bool isClose(const Value &one, const Value &other) { return one && other && std::abs(*one - *other) < 1e-9; }
};

ORRINET_TEST(TestStatistics)
#include "tst_statistics.moc"
