// The statistics of examples/flawed.ormt, against those that SciPy computes of the same file by ./dev proof.

#include "study/cells.h"
#include "study/statistics/agreement.h"
#include "study/statistics/association.h"
#include "study/statistics/distribution.h"
#include "study/statistics/divergence.h"
#include "study/statistics/likeness.h"
#include "study/statistics/mixedrows.h"
#include "study/statistics/numbers.h"
#include "study/statistics/words.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using study::AlikeTexts;
using study::Bin;
using study::Cell;
using study::Cells;
using study::CodedTexts;
using study::CrossTable;
using study::FrequentWord;
using study::Kind;
using study::MixedRows;
using study::Persona;
using study::Project;
using study::Question;
using study::Status;
using study::Weighted;

class TestStatisticsProof : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString tree = QStringLiteral(ORRINET_SOURCE_FOLDER);
        auto read = study::readProject(tree + "/examples/flawed.ormt"_L1);
        QVERIFY(std::holds_alternative<Project>(read));
        project = std::move(std::get<Project>(read));
        cells.emplace(project);
        expected = QJsonDocument::fromJson(readBytes(tree + "/tests/study/expected/statistics.json"_L1)).object();
        QVERIFY(!expected.isEmpty());
    }

    void distributions()
    {
        for (int question = 0; question < project.questions.size(); ++question) {
            if (project.questions.at(question).kind == Kind::Numeric)
                continue;
            const QJsonObject theirs = entryOf(question);
            const Numbers counts = countsTo(question);
            QCOMPARE(counts, listOf(theirs["counts"_L1]));
            QVERIFY(agrees(study::entropy(counts), theirs["entropy"_L1]));
            QVERIFY(agrees(study::normalisedEntropy(counts), theirs["normalisedEntropy"_L1]));
            const auto most = study::mostFrequent(counts);
            QVERIFY(most && agrees(most->share, theirs["share"_L1]));
            QCOMPARE(most->kind, theirs["mostFrequent"_L1].toInt());
            QCOMPARE(most->ties, theirs["ties"_L1].toInt());
        }
    }

    void numbers()
    {
        for (const int question : {3, 10}) {
            const QJsonObject theirs = entryOf(question);
            const Numbers ours = numbersTo(question);
            QCOMPARE(ours.size(), theirs["answered"_L1].toInt());
            QVERIFY(agrees(study::mean(ours), theirs["mean"_L1]));
            QVERIFY(agrees(study::standardDeviation(ours), theirs["standardDeviation"_L1]));
            const QJsonArray quantiles = theirs["quantiles"_L1].toArray();
            const Numbers parts{0, 0.1, 0.25, 0.5, 0.75, 0.9, 1};
            QCOMPARE(parts.size(), quantiles.size());
            for (qsizetype part = 0; part < parts.size(); ++part)
                QVERIFY(agrees(study::quantile(ours, parts.at(part)), quantiles.at(part)));
            const QJsonArray theirBins = theirs["bins"_L1].toArray();
            const QList<Bin> bins = study::histogram(ours);
            QCOMPARE(bins.size(), theirBins.size());
            for (qsizetype place = 0; place < bins.size(); ++place) {
                QVERIFY(agrees(bins.at(place).from, theirBins.at(place)[0]));
                QVERIFY(agrees(bins.at(place).to, theirBins.at(place)[1]));
                QCOMPARE(bins.at(place).count, theirBins.at(place)[2].toInt());
            }
        }
    }

    void what_tags_explain()
    {
        int compared = 0;
        for (int question = 0; question < project.questions.size(); ++question) {
            const QJsonObject labels = entryOf(question)["cramersV"_L1].toObject();
            const QJsonObject numeric = entryOf(question)["etaSquared"_L1].toObject();
            for (const QString &tag : std::as_const(project.tags)) {
                if (labels.contains(tag)) {
                    const CrossTable table = byTag(question, tag);
                    QVERIFY(agrees(study::cramersV(table), labels[tag][0]));
                    QVERIFY(agrees(study::cramersVCorrected(table), labels[tag][1]));
                    ++compared;
                } else if (numeric.contains(tag)) {
                    QVERIFY(agrees(study::etaSquared(groupsByTag(question, tag)), numeric[tag]));
                    ++compared;
                }
            }
        }
        QVERIFY(compared > 30);
    }

    void distances_between_personas()
    {
        const MixedRows rows = allRows();
        const QJsonObject theirs = expected["panel"_L1].toObject();
        for (const QJsonArray pairs = theirs["pairs"_L1].toArray(); const QJsonValue &pair : pairs)
            QVERIFY(agrees(
                rows.distance(project.personaIndex(pair[0].toString()), project.personaIndex(pair[1].toString())),
                pair[2]));
        const auto nearest = rows.nearestNeighbours();
        Numbers known;
        for (int persona = 0; persona < rows.size(); ++persona) {
            const auto &neighbour = nearest.at(persona);
            if (neighbour)
                known << neighbour->distance;
            QVERIFY(agrees(neighbour ? std::optional(neighbour->distance) : std::nullopt,
                           theirs["nearest"_L1][project.personas.at(persona).entry.uuid]));
        }
        QVERIFY(agrees(study::mean(known), theirs["meanNearest"_L1]));
        QCOMPARE(uuidGroups(rows.identicalRows()), theirs["identical"_L1].toArray());
    }

    void distances_from_people()
    {
        const QJsonObject all = expected["against"_L1].toObject();
        QVERIFY(all.size() >= 5);
        for (const QStringList numbers = all.keys(); const QString &number : numbers) {
            const QJsonObject theirs = all[number].toObject();
            const Question &question = project.questions.at(number.toInt() - 1);
            const Numbers people = listOf(theirs["people"_L1]);
            const Numbers ours = countsTo(question.number - 1);
            if (question.kind == Kind::Numeric)
                continue;
            QVERIFY(agrees(study::jensenShannonDistance(ours, people), theirs["jensenShannon"_L1]));
            if (question.kind != Kind::Likert)
                continue;
            QVERIFY(agrees(study::wassersteinOrdered(ours, people), theirs["wasserstein"_L1]));
            QVERIFY(agrees(study::deviationRatio(study::weightedPlaces(ours), study::weightedPlaces(people)),
                           theirs["deviationRatio"_L1]));
        }
    }

    void distances_of_numbers_from_people()
    {
        const QJsonObject theirs = expected["against"_L1]["11"_L1].toObject();
        const QList<Weighted> people{{120, 0.2}, {150, 0.35}, {200, 0.25}, {250, 0.15}, {400, 0.05}};
        const QList<Weighted> ours = study::weighted(numbersTo(10));
        QVERIFY(
            agrees(study::wassersteinNumbers(ours, people, theirs["low"_L1].toDouble(), theirs["high"_L1].toDouble()),
                   theirs["wasserstein"_L1]));
        QVERIFY(agrees(study::deviationRatio(ours, people), theirs["deviationRatio"_L1]));
    }

    void agreement_of_two()
    {
        const QJsonObject theirs = expected["agreement"_L1].toObject();
        const auto found =
            study::agreement(codesTo(theirs["one"_L1].toInt() - 1), codesTo(theirs["other"_L1].toInt() - 1));
        QVERIFY(found);
        QCOMPARE(found->pairs, theirs["pairs"_L1].toInt());
        QVERIFY(agrees(found->share, theirs["share"_L1]));
        QVERIFY(agrees(found->kappa, theirs["kappa"_L1]));
    }

    void personas_that_are_alike()
    {
        const QJsonObject theirs = expected["alike"_L1].toObject();
        for (const QJsonArray pairs = theirs["pairs"_L1].toArray(); const QJsonValue &pair : pairs)
            QVERIFY(agrees(study::likeness(narrative(pair[0].toString()), narrative(pair[1].toString())), pair[2]));
        QStringList texts;
        for (const Persona &persona : std::as_const(project.personas))
            texts << persona.entry.attributes;
        QList<QList<int>> groups;
        for (const QList<AlikeTexts> found = study::alikeTexts(texts); const AlikeTexts &group : found)
            groups << group.places;
        QCOMPARE(uuidGroups(groups), theirs["groups"_L1].toArray());
    }

    void words_and_lengths()
    {
        const QJsonObject theirs = expected["text"_L1].toObject();
        QStringList texts;
        Numbers lengths;
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            const Cell &cell = cells->at(persona, theirs["question"_L1].toInt() - 1);
            const QString text = cell.status == Status::Answered ? cell.answer->shown() : QString();
            if (text.isEmpty() || !std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 128; }))
                continue;
            texts << text;
            lengths << study::characterCount(text);
        }
        QCOMPARE(lengths, listOf(theirs["lengths"_L1]));
        const QJsonObject words = theirs["words"_L1].toObject();
        int compared = 0;
        for (const QList<FrequentWord> found = study::frequentWords(texts, 30); const FrequentWord &word : found) {
            if (!words.contains(word.word))
                continue;
            QCOMPARE(word.texts, words[word.word][0].toInt());
            QCOMPARE(word.times, words[word.word][1].toInt());
            ++compared;
        }
        QVERIFY(compared >= 20);
    }

private:
    using Numbers = QList<double>;

    static Numbers listOf(const QJsonValue &array)
    {
        Numbers numbers;
        for (const QJsonArray elements = array.toArray(); const QJsonValue &element : elements)
            numbers << element.toDouble();
        return numbers;
    }

    /// Null is nothing.
    static bool agrees(const std::optional<double> &ours, const QJsonValue &theirs)
    {
        if (theirs.isNull() || !ours)
            return theirs.isNull() && !ours;
        const double other = theirs.toDouble();
        const bool is = theirs.isDouble() && std::abs(*ours - other) <= 1e-9 * std::max(1.0, std::abs(other));
        if (!is)
            qWarning("%.17g is not %.17g", *ours, other);
        return is;
    }

    QJsonObject entryOf(int question) const
    {
        return expected["questions"_L1][QString::number(question + 1)].toObject();
    }

    bool isAnswered(int persona, int question) const { return cells->at(persona, question).status == Status::Answered; }

    QString narrative(const QString &uuid) const
    {
        return project.personas.at(project.personaIndex(uuid)).entry.attributes;
    }

    /// The label, or the first of them.
    QList<int> codesTo(int question) const
    {
        QList<int> codes;
        for (int persona = 0; persona < project.personas.size(); ++persona)
            codes << (isAnswered(persona, question) ? cells->at(persona, question).matches.labels.value(0, -1) : -1);
        return codes;
    }

    CodedTexts textsTo(int question) const
    {
        QStringList texts;
        for (int persona = 0; persona < project.personas.size(); ++persona)
            texts << (isAnswered(persona, question) ? cells->at(persona, question).answer->shown() : QString());
        return study::codesOf(texts);
    }

    Numbers numbersTo(int question) const
    {
        Numbers numbers;
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            if (isAnswered(persona, question))
                numbers << cells->at(persona, question).number.value_or(0);
        }
        return numbers;
    }

    Numbers countsTo(int question) const
    {
        const Question &asked = project.questions.at(question);
        if (!asked.hasList()) {
            const CodedTexts coded = textsTo(question);
            return study::countsOf(coded.codes, int(coded.kinds.size()));
        }
        if (asked.kind != Kind::MultiChoice)
            return study::countsOf(codesTo(question), int(asked.labels.size()));
        QList<int> codes;
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            if (isAnswered(persona, question))
                codes << cells->at(persona, question).matches.labels;
        }
        return study::countsOf(codes, int(asked.labels.size()));
    }

    CrossTable byTag(int question, const QString &tag) const
    {
        QList<int> has;
        for (const Persona &persona : project.personas)
            has << int(persona.tags.contains(tag));
        return study::crossTable(has, codesTo(question), 2, int(project.questions.at(question).labels.size()));
    }

    QList<Numbers> groupsByTag(int question, const QString &tag) const
    {
        QList<Numbers> groups(2);
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            if (isAnswered(persona, question))
                groups[int(project.personas.at(persona).tags.contains(tag))] << *cells->at(persona, question).number;
        }
        return groups;
    }

    MixedRows allRows() const
    {
        MixedRows rows(int(project.personas.size()));
        for (int question = 0; question < project.questions.size(); ++question) {
            const Question &asked = project.questions.at(question);
            const int kinds = int(asked.labels.size());
            QList<std::optional<QList<int>>> several;
            QList<std::optional<double>> numbers;
            for (int persona = 0; persona < rows.size(); ++persona) {
                const Cell &cell = cells->at(persona, question);
                several << (isAnswered(persona, question) ? std::optional(cell.matches.labels) : std::nullopt);
                numbers << (isAnswered(persona, question) ? cell.number : std::nullopt);
            }
            if (asked.kind == Kind::Numeric)
                rows.addNumbers(numbers);
            else if (!asked.hasList())
                rows.addNominal(textsTo(question).codes);
            else if (asked.kind == Kind::MultiChoice)
                rows.addSets(several, kinds);
            else if (asked.kind == Kind::Ranking)
                rows.addRanks(several, kinds);
            else if (asked.kind == Kind::Likert)
                rows.addOrdinal(codesTo(question), kinds);
            else
                rows.addNominal(codesTo(question));
        }
        return rows;
    }

    QJsonArray uuidGroups(const QList<QList<int>> &groups) const
    {
        QList<QStringList> named;
        for (const QList<int> &group : groups) {
            QStringList uuids;
            for (const int place : group)
                uuids << project.personas.at(place).entry.uuid;
            uuids.sort();
            named << uuids;
        }
        std::sort(named.begin(), named.end());
        QJsonArray array;
        for (const QStringList &uuids : std::as_const(named))
            array.append(QJsonArray::fromStringList(uuids));
        return array;
    }

    Project project;
    std::optional<Cells> cells;
    QJsonObject expected;
};

ORRINET_TEST(TestStatisticsProof)
#include "tst_statisticsproof.moc"
