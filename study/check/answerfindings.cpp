#include "study/check/findings.h"
#include "study/check/storedtime.h"
#include "study/check/wording.h"

using namespace Qt::StringLiterals;

namespace study {

namespace {

QString answersCounted(qint64 count)
{
    return count == 1 ? u"1 answer"_s : u"%1 answers"_s.arg(count);
}

/// "is" or "are" after that.
QString isOrAre(qint64 count)
{
    return count == 1 ? u"is"_s : u"are"_s;
}

Finding ofAnswers(const QString &kind, qint64 count, const QString &text)
{
    return {.kind = kind, .text = text, .count = count};
}

/// Answers that are no text, and the personas that still have something to be asked.
QList<Finding> emptyReplays(const Project &project, const PairMap &pairs)
{
    QList<qint64> counts(project.questions.size());
    for (const Answer &answer : project.answers) {
        const int persona = project.personaIndex(answer.personaUuid);
        const int question = project.questionIndex(answer.questionId);
        if (persona >= 0 && question >= 0 && pairs.hasOpen(persona) && project.questions.at(question).isReplayed &&
            answer.parsed.textAnswer.isEmpty())
            ++counts[question];
    }
    QList<Finding> found;
    for (qsizetype place = 0; place < counts.size(); ++place) {
        const qint64 count = counts.at(place);
        if (count == 0)
            continue;
        const int number = project.questions.at(place).number;
        found << ofAnswers(
            u"empty-replay"_s, count,
            u"%1 to question %2 %3 replayed empty, as only texts are replayed"_s.arg(answersCounted(count))
                .arg(number)
                .arg(isOrAre(count)));
        found.last().question = number;
    }
    return found;
}

/// Numeric questions that a persona is asked before others.
QList<Finding> emptyReplaysToCome(const Project &project, const PairMap &pairs)
{
    QList<Finding> found;
    for (int place = 0; place < project.questions.size(); ++place) {
        const Question &question = project.questions.at(place);
        if (question.kind != Kind::Numeric || !question.isReplayed || pairs.openOf(place) == 0)
            continue;
        const auto goesOn = [&](int persona) {
            for (int later = place + 1; later < project.questions.size(); ++later) {
                if (!pairs.isAnswered(persona, later))
                    return !pairs.isAnswered(persona, place);
            }
            return false;
        };
        qint64 count = 0;
        for (int persona = 0; persona < project.personas.size(); ++persona)
            count += goesOn(persona) ? 1 : 0;
        if (count == 0)
            continue;
        found << ofAnswers(u"empty-replay-to-come"_s, count,
                           u"question %1 is Numeric, and its answers will be replayed empty"_s.arg(question.number));
        found.last().question = question.number;
    }
    return found;
}

/// The times of the answers that the grid shows, by pair.
QList<QDateTime> newestTimes(const Project &project)
{
    const qsizetype questions = project.questions.size();
    QList<const Answer *> newest(project.personas.size() * questions, nullptr);
    for (const Answer &answer : project.answers) {
        const int persona = project.personaIndex(answer.personaUuid);
        const int question = project.questionIndex(answer.questionId);
        if (persona >= 0 && question >= 0)
            newest[(persona * questions) + question] = &answer;
    }
    QList<QDateTime> times;
    times.reserve(newest.size());
    for (const Answer *answer : newest)
        times << (answer != nullptr ? storedTime(answer->createdAt) : QDateTime());
    return times;
}

bool isOlder(const QDateTime &answered, const QDateTime &changed)
{
    return answered.isValid() && changed.isValid() && answered < changed;
}

/// Answers to what was not asked in these words, and of who was not the same. A change in the question list itself
/// leaves no time.
QList<Finding> staleAnswers(const Project &project)
{
    const QList<QDateTime> times = newestTimes(project);
    const qsizetype questions = project.questions.size();
    QList<Finding> found;
    for (qsizetype question = 0; question < questions; ++question) {
        const QDateTime changed = storedTime(project.questions.at(question).modifiedAt);
        qint64 count = 0;
        for (qsizetype pair = question; pair < times.size(); pair += questions)
            count += isOlder(times.at(pair), changed) ? 1 : 0;
        if (count == 0)
            continue;
        const int number = project.questions.at(question).number;
        found << ofAnswers(u"stale-question"_s, count,
                           u"%1 to question %2 %3 older than its last change"_s.arg(answersCounted(count))
                               .arg(number)
                               .arg(isOrAre(count)));
        found.last().question = number;
    }
    for (qsizetype place = 0; place < project.personas.size(); ++place) {
        const Persona &persona = project.personas.at(place);
        const QDateTime changed = storedTime(persona.modifiedAt);
        qint64 count = 0;
        for (qsizetype pair = place * questions; pair < (place + 1) * questions; ++pair)
            count += isOlder(times.at(pair), changed) ? 1 : 0;
        if (count == 0)
            continue;
        found << ofAnswers(u"stale-persona"_s, count,
                           u"%1 of persona %2 %3 older than its last change"_s.arg(
                               answersCounted(count), inQuotes(persona.entry.name), isOrAre(count)));
        found.last().persona = &persona;
    }
    return found;
}

QList<Finding> orphans(const Project &project)
{
    qint64 ofPersonas = 0;
    qint64 ofQuestions = 0;
    for (const Answer &answer : project.answers) {
        ofPersonas += project.personaIndex(answer.personaUuid) < 0 ? 1 : 0;
        ofQuestions += project.questionIndex(answer.questionId) < 0 ? 1 : 0;
    }
    QList<Finding> found;
    if (ofPersonas > 0)
        found << ofAnswers(
            u"deleted-persona"_s, ofPersonas,
            u"%1 %2 of personas that were deleted"_s.arg(answersCounted(ofPersonas), isOrAre(ofPersonas)));
    if (ofQuestions > 0)
        found << ofAnswers(
            u"deleted-question"_s, ofQuestions,
            u"%1 %2 to questions that were deleted"_s.arg(answersCounted(ofQuestions), isOrAre(ofQuestions)));
    return found;
}

} // namespace

QList<Finding> answerFindings(const Project &project, const PairMap &pairs)
{
    return emptyReplays(project, pairs) + emptyReplaysToCome(project, pairs) + staleAnswers(project) + orphans(project);
}

} // namespace study
