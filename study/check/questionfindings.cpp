#include "study/check/findings.h"
#include "study/check/wording.h"
#include "study/match.h"
#include "study/told.h"

#include "questions/answertypes.h"
#include "survey/requestassembly.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

Finding ofQuestion(const Question &question, const QString &kind, const QString &predicate,
                   const QStringList &details = {})
{
    return {.kind = kind,
            .text = u"question %1 %2"_s.arg(question.number).arg(predicate),
            .question = question.number,
            .details = details};
}

Finding blocking(Finding finding)
{
    finding.blocks = true;
    return finding;
}

QList<Finding> blockingFindings(const Question &question, bool bridged)
{
    QList<Finding> found;
    if (question.entry.prompt.trimmed().isEmpty())
        found << blocking(ofQuestion(question, u"no-prompt"_s, u"has no prompt"_s));
    if (question.kind == Kind::SingleChoice && (!question.labelsParse || question.labels.isEmpty())) {
        const QString what = question.labelsParse ? u"has no labels"_s : u"has labels that can't be read"_s;
        found << blocking(ofQuestion(question, u"no-labels"_s, what + ", and as an Option needs them"_L1));
    }
    if (!bridged && !answerFormat(question.entry).responseFormat.isEmpty()) {
        found << blocking(ofQuestion(
            question, u"refused-format"_s,
            u"(%1) asks for a format that the hosted service is reported to refuse "
            "(orrinet-bridge translates it; --bridge says that it is used)"_s.arg(shownName(question.kind))));
    }
    return found;
}

QList<Finding> labelFindings(const Question &question)
{
    if (question.kind == Kind::Text || question.kind == Kind::Numeric)
        return {};
    QList<Finding> found;
    if (!question.labelsParse && question.kind != Kind::SingleChoice)
        found << ofQuestion(question, u"unreadable-labels"_s, u"has labels that can't be read"_s);
    QSet<QString> seen;
    QStringList twice;
    for (const QString &label : question.labels) {
        const QString folded = caselessText(label);
        if (seen.contains(folded) && !twice.contains(label) && !folded.isEmpty())
            twice << label;
        seen.insert(folded);
    }
    if (question.labelsParse && seen.contains(QString()))
        found << ofQuestion(question, u"empty-label"_s, u"has an empty label"_s);
    if (!twice.isEmpty())
        found << ofQuestion(question, u"label-twice"_s, "has a label twice: "_L1 + listed(twice), twice);
    return found;
}

QList<Finding> choiceFindings(const Question &question, const Boilerplate &boilerplate)
{
    const QStringList untold = untoldLabels(question, boilerplate);
    if (untold.isEmpty())
        return {};
    return {ofQuestion(question, u"unseen-choices"_s,
                       "has choices that are not in its prompt, and the model is told no others: "_L1 + listed(untold),
                       untold)};
}

bool demandsReasoning(const AnswerFormat &format)
{
    const QJsonValue call =
        format.tools.isEmpty() ? QJsonValue() : format.tools.first()["function"_L1]["parameters"_L1];
    return call["required"_L1].toArray().contains("reasoning"_L1) ||
           format.responseFormat["schema"_L1]["required"_L1].toArray().contains("reasoning"_L1);
}

/// A format that is sent lists reasoning among what it requires. So words matter only where there is no format; and
/// there what they bring is part of the answer, as nothing sets it apart.
QList<Finding> reasoningFindings(const Question &question, const Boilerplate &boilerplate)
{
    if (!question.entry.reasoningRequired || demandsReasoning(answerFormat(question.entry)))
        return {};
    const QString words = question.entry.prompt + u'\n' + boilerplate.preamble + u'\n' + boilerplate.postamble;
    const auto asks = [&words](QLatin1StringView word) { return words.contains(word, Qt::CaseInsensitive); };
    const bool asked = asks("reason"_L1) || asks("why"_L1) || asks("explain"_L1);
    return {ofQuestion(question, u"reasoning-not-asked"_s,
                       asked ? u"has reasoning ticked, and its type doesn't ask for it: what its words ask for will "
                               "stand in the answer"_s
                             : u"has reasoning ticked, and neither its type nor its words ask for it"_s)};
}

QList<Finding> idleFindings(const Question &question, bool searchIsChosen)
{
    QList<Finding> found;
    const QString when = question.askWhen.trimmed();
    if ((!when.isEmpty() && when != "always"_L1) || !question.dependsOnAnswer.isEmpty() ||
        question.dependsOnQuestion != 0)
        found << ofQuestion(question, u"unused-condition"_s, u"has a condition, and is asked all the same"_s);
    if (!question.attachments.isEmpty())
        found << ofQuestion(question, u"unused-attachment"_s,
                            "has attachments, which are not sent: "_L1 + listed(question.attachments),
                            question.attachments);
    if (searchIsChosen && question.searchEnabled)
        found << ofQuestion(question, u"unused-search"_s, u"wants a web search, which is not made"_s);
    return found;
}

QList<Finding> repeatedPrompts(const QList<Question> &questions)
{
    QList<Finding> found;
    QHash<QString, int> firstWith;
    for (const Question &question : questions) {
        const QString prompt = caselessText(question.entry.prompt);
        if (prompt.isEmpty())
            continue;
        if (const int first = firstWith.value(prompt, 0); first > 0)
            found << ofQuestion(question, u"prompt-twice"_s, u"has the prompt of question %1"_s.arg(first));
        else
            firstWith.insert(prompt, question.number);
    }
    return found;
}

} // namespace

QList<Finding> questionFindings(const Project &project, const PairMap &pairs, bool bridged)
{
    const QList<Question> &questions = project.questions;
    // Every new question has the search on. So it is somebody's choice only where questions differ in it.
    const bool searchIsChosen = std::any_of(questions.begin(), questions.end(),
                                            [](const Question &question) { return !question.searchEnabled; });
    QList<Finding> found;
    for (int place = 0; place < questions.size(); ++place) {
        const Question &question = questions.at(place);
        if (pairs.openOf(place) > 0)
            found << blockingFindings(question, bridged);
        if (!storedAnswerTypes().contains(question.entry.answerType))
            found << ofQuestion(question, u"unknown-type"_s,
                                u"has the type %1, which is unknown, and is asked like a text"_s.arg(
                                    inQuotes(question.entry.answerType)),
                                {question.entry.answerType});
        found << labelFindings(question) << choiceFindings(question, project.boilerplate)
              << reasoningFindings(question, project.boilerplate) << idleFindings(question, searchIsChosen);
    }
    return found << repeatedPrompts(questions);
}

} // namespace study
