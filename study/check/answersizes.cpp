#include "study/check/answersizes.h"

#include <QMap>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr Range proseCharacters{.low = 100, .middle = 400, .high = 1200};
constexpr Range reasoningCharacters{.low = 80, .middle = 200, .high = 500};
constexpr Range numberCharacters{.low = 1, .middle = 3, .high = 6};

/// The characters of all answers to a question.
struct AnswerSample
{
    QList<qsizetype> replayed;
    QList<qsizetype> replied;

    void add(const Answer &answer)
    {
        replayed << answer.parsed.textAnswer.size();
        replied << (answer.parsed.jsonAnswer.isEmpty() ? answer.shown().size() : answer.parsed.jsonAnswer.size());
    }
    void add(const AnswerSample &other)
    {
        replayed << other.replayed;
        replied << other.replied;
    }
    AnswerSize size(Basis basis) const
    {
        return {.replayed = sampleRange(replayed), .replied = sampleRange(replied), .basis = basis};
    }
};

Range choiceCharacters(const Question &question)
{
    QList<qsizetype> lengths;
    for (const QString &label : question.labels)
        lengths << label.size();
    const auto [shortest, longest] = std::minmax_element(lengths.begin(), lengths.end());
    const auto labels = double(lengths.size());
    const auto total = double(std::accumulate(lengths.begin(), lengths.end(), qsizetype(0)));
    static constexpr double separator = 2; // a comma and a blank
    const double all = total + (separator * (labels - 1));
    if (question.kind == Kind::Ranking)
        return Range::exactly(all);
    if (question.kind == Kind::MultiChoice)
        return {.low = double(*shortest), .middle = std::max(double(*shortest), all / 2), .high = all};
    return {.low = double(*shortest), .middle = total / labels, .high = double(*longest)};
}

bool asksForJson(const Question &question)
{
    return question.kind != Kind::Text && (question.kind != Kind::SingleChoice || question.hasList());
}

} // namespace

Range sampleRange(QList<qsizetype> sample)
{
    if (sample.isEmpty())
        return {};
    std::sort(sample.begin(), sample.end());
    const qsizetype last = sample.size() - 1;
    const double mean = std::accumulate(sample.begin(), sample.end(), 0.0) / double(sample.size());
    return {.low = std::min(double(sample.at(last / 4)), mean),
            .middle = mean,
            .high = std::max(double(sample.at(last - (last / 4))), mean)};
}

AnswerSize defaultSize(const Question &question)
{
    const bool isNumber = question.kind == Kind::Numeric;
    const Range value = isNumber ? numberCharacters : question.hasList() ? choiceCharacters(question) : proseCharacters;
    AnswerSize size{.replayed = isNumber ? Range() : value, .replied = value, .basis = Basis::Default};
    if (asksForJson(question)) {
        size.replied += Range::exactly(double(QLatin1StringView(R"({"answer":""})").size()));
        if (question.entry.reasoningRequired)
            size.replied +=
                reasoningCharacters + Range::exactly(double(QLatin1StringView(R"(,"reasoning":"")").size()));
    }
    return size;
}

QList<AnswerSize> answerSizes(const Project &project)
{
    QList<AnswerSample> ofQuestion(project.questions.size());
    for (const Answer &answer : project.answers) {
        if (const int question = project.questionIndex(answer.questionId); question >= 0)
            ofQuestion[question].add(answer);
    }
    QMap<std::pair<Kind, bool>, AnswerSample> ofType;
    for (qsizetype place = 0; place < ofQuestion.size(); ++place) {
        const Question &question = project.questions.at(place);
        ofType[{question.kind, question.entry.reasoningRequired}].add(ofQuestion.at(place));
    }
    QList<AnswerSize> sizes;
    for (qsizetype place = 0; place < ofQuestion.size(); ++place) {
        const Question &question = project.questions.at(place);
        const AnswerSample &alike = ofType[{question.kind, question.entry.reasoningRequired}];
        if (!ofQuestion.at(place).replied.isEmpty())
            sizes << ofQuestion.at(place).size(Basis::SameQuestion);
        else if (!alike.replied.isEmpty())
            sizes << alike.size(Basis::SameType);
        else
            sizes << defaultSize(question);
    }
    return sizes;
}

QString shownName(Basis basis)
{
    switch (basis) {
    case Basis::SameQuestion:
        return u"same question"_s;
    case Basis::SameType:
        return u"same type"_s;
    case Basis::Default:
        return u"default"_s;
    }
    Q_UNREACHABLE_RETURN({});
}

} // namespace study
