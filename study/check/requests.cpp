#include "study/check/requests.h"

#include "survey/requestassembly.h"

#include <QJsonDocument>

namespace study {

Volume &Volume::operator+=(const Volume &other)
{
    requests += other.requests;
    systemMessages += other.systemMessages;
    historyMessages += other.historyMessages;
    systemCharacters += other.systemCharacters;
    historyCharacters += other.historyCharacters;
    questionCharacters += other.questionCharacters;
    formatCharacters += other.formatCharacters;
    replyCharacters += other.replyCharacters;
    return *this;
}

template<typename Json>
static double compactCharacters(const Json &json)
{
    return json.isEmpty() ? 0 : double(QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)).size());
}

double formatCharacters(const AnswerFormat &format)
{
    return compactCharacters(format.tools) + compactCharacters(format.toolChoice) +
           compactCharacters(format.responseFormat);
}

PairMap::PairMap(const Project &project)
    : questions(project.questions.size())
    , answered(project.personas.size() * questions)
    , openOfPersona(project.personas.size(), int(questions))
    , openOfQuestion(questions, int(project.personas.size()))
{
    for (const Answer &answer : project.answers) {
        const int persona = project.personaIndex(answer.personaUuid);
        const int question = project.questionIndex(answer.questionId);
        if (persona < 0 || question < 0 || isAnswered(persona, question))
            continue;
        answered.setBit((persona * questions) + question);
        --openOfPersona[persona];
        --openOfQuestion[question];
    }
}

/// What every request that asks a question holds of it.
static QList<Volume> volumesOfQuestions(const Project &project, const QList<AnswerSize> &sizes)
{
    QList<Volume> volumes;
    for (const Question &question : project.questions) {
        volumes.append({.requests = 1,
                        .questionCharacters = double(question.entry.prompt.size()),
                        .formatCharacters = formatCharacters(answerFormat(question.entry)),
                        .replyCharacters = sizes.at(volumes.size()).replied});
    }
    return volumes;
}

/// What is replayed to each persona of the answers that it has given.
static QList<Volume> storedHistories(const Project &project)
{
    QList<Volume> histories(project.personas.size());
    for (const Answer &answer : project.answers) {
        const int persona = project.personaIndex(answer.personaUuid);
        const int place = project.questionIndex(answer.questionId);
        if (persona < 0 || place < 0 || !project.questions.at(place).isReplayed)
            continue;
        Volume &history = histories[persona];
        history.historyMessages += 2;
        history.historyCharacters +=
            Range::exactly(double(project.questions.at(place).entry.prompt.size() + answer.parsed.textAnswer.size()));
    }
    return histories;
}

void forEachRequest(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes,
                    const TakeRequest &take)
{
    const QList<Volume> ofQuestion = volumesOfQuestions(project, sizes);
    const QList<Volume> histories = storedHistories(project);
    for (int persona = 0; persona < project.personas.size(); ++persona) {
        if (!pairs.hasOpen(persona))
            continue;
        const PersonaEntry &entry = project.personas.at(persona).entry;
        Volume shared = histories.at(persona);
        shared.systemCharacters =
            double(systemText(project.boilerplate.preamble, entry, project.boilerplate.postamble).size());
        shared.systemMessages = shared.systemCharacters > 0 ? 1 : 0;
        for (int question = 0; question < project.questions.size(); ++question) {
            if (pairs.isAnswered(persona, question))
                continue;
            Volume request = shared;
            request += ofQuestion.at(question);
            take(persona, question, request);
            // Without a uuid no answer is ever found again.
            if (!project.questions.at(question).isReplayed || entry.uuid.isNull())
                continue;
            shared.historyMessages += 2;
            shared.historyCharacters +=
                Range::exactly(ofQuestion.at(question).questionCharacters) + sizes.at(question).replayed;
        }
    }
}

RunCount countRun(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes)
{
    RunCount count;
    count.byPersona.resize(project.personas.size());
    count.byQuestion.resize(project.questions.size());
    for (int persona = 0; persona < project.personas.size(); ++persona) {
        for (int question = 0; question < project.questions.size(); ++question) {
            const bool isAnswered = pairs.isAnswered(persona, question);
            for (PairCount *each : {&count.all, &count.byPersona[persona], &count.byQuestion[question]})
                ++(isAnswered ? each->answered : each->open);
        }
    }
    forEachRequest(project, pairs, sizes, [&](int persona, int question, const Volume &request) {
        for (PairCount *each : {&count.all, &count.byPersona[persona], &count.byQuestion[question]})
            each->volume += request;
    });
    for (qsizetype question = 0; question < count.byQuestion.size(); ++question) {
        if (!project.questions.at(question).entry.judge)
            continue;
        const PairCount &each = count.byQuestion.at(question);
        count.adjudicated.answered += each.answered;
        count.adjudicated.open += each.open;
        count.adjudicated.volume += each.volume;
    }
    return count;
}

} // namespace study
