#include "study/check/findings.h"

#include "study/check/wording.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostAlone = 3; // findings of a kind that have a sentence each
constexpr qsizetype mostNamed = 5; // questions or personas that a sentence for several names

/// How several findings of a kind are told in one sentence. The order is the one of the report.
struct KindWording
{
    QLatin1StringView kind;
    QLatin1StringView several; ///< ends before the list of questions or personas
};

constexpr std::array wordings{
    KindWording{"no-prompt"_L1, "%1 questions have no prompt"_L1},
    KindWording{"no-persona-text"_L1, "%1 personas have no text"_L1},
    KindWording{"no-labels"_L1, "%1 Option questions have no labels that can be read"_L1},
    KindWording{"refused-format"_L1, "%1 questions ask for a format that the hosted service is reported to refuse "
                                     "(orrinet-bridge translates it; --bridge says that it is used)"_L1},
    KindWording{"unknown-type"_L1, "%1 questions have a type that is unknown, and are asked like texts"_L1},
    KindWording{"unreadable-labels"_L1, "%1 questions have labels that can't be read"_L1},
    KindWording{"empty-label"_L1, "%1 questions have an empty label"_L1},
    KindWording{"label-twice"_L1, "%1 questions have a label twice"_L1},
    KindWording{"unseen-choices"_L1,
                "%1 questions have choices that are not in their prompts, and the model is told no others"_L1},
    KindWording{"prompt-twice"_L1, "%1 questions have the prompt of an earlier one"_L1},
    KindWording{"persona-text-twice"_L1, "%1 personas have the text of an earlier one"_L1},
    KindWording{"persona-name-twice"_L1, "%1 names are those of several personas"_L1},
    KindWording{"reasoning-not-asked"_L1, "%1 questions have reasoning ticked, and their types don't ask for it"_L1},
    KindWording{"empty-replay"_L1, "%1 questions have answers that are replayed empty, as only texts are replayed"_L1},
    KindWording{"empty-replay-to-come"_L1, "%1 questions are Numeric, and their answers will be replayed empty"_L1},
    KindWording{"context"_L1, {}},
    KindWording{"stale-question"_L1, "%1 questions were changed after answers to them"_L1},
    KindWording{"stale-persona"_L1, "%1 personas were changed after answers of theirs"_L1},
    KindWording{"deleted-persona"_L1, {}},
    KindWording{"deleted-question"_L1, {}},
    KindWording{"unused-condition"_L1, "%1 questions have a condition, and are asked all the same"_L1},
    KindWording{"unused-attachment"_L1, "%1 questions have attachments, which are not sent"_L1},
    KindWording{"unused-search"_L1, "%1 questions want a web search, which is not made"_L1},
};

qsizetype placeOf(const QString &kind)
{
    const auto *place = std::find_if(wordings.begin(), wordings.end(),
                                     [&kind](const KindWording &wording) { return wording.kind == kind; });
    return place - wordings.begin();
}

QString subjectOf(const Finding &finding)
{
    return finding.persona != nullptr ? inQuotes(finding.persona->entry.name) : QString::number(finding.question);
}

QString sentenceForSeveral(const QList<Finding> &alike)
{
    QStringList subjects;
    for (const Finding &finding : alike.first(std::min(mostNamed, alike.size())))
        subjects << subjectOf(finding);
    QString sentence = QString(wordings.at(size_t(placeOf(alike.constFirst().kind))).several).arg(alike.size()) +
                       ": "_L1 + subjects.join(", "_L1);
    if (alike.size() > mostNamed)
        sentence += u" and %1 more"_s.arg(alike.size() - mostNamed);
    return sentence;
}

QList<Finding> contextFindings(const Outgrown &context)
{
    if (context.high == 0)
        return {};
    return {{.kind = u"context"_s,
             .text = u"up to %1 requests, %2 by the middle estimate, outgrow the context of %3 tokens, the first of "
                     "them at question %4"_s.arg(context.high)
                         .arg(context.middle)
                         .arg(context.tokens)
                         .arg(context.firstQuestion),
             .question = context.firstQuestion,
             .count = context.high}};
}

} // namespace

QList<Finding> findings(const Project &project, const PairMap &pairs, bool bridged, const Outgrown &context)
{
    QList<Finding> all = questionFindings(project, pairs, bridged) + personaFindings(project, pairs) +
                         answerFindings(project, pairs) + contextFindings(context);
    std::stable_sort(all.begin(), all.end(),
                     [](const Finding &a, const Finding &b) { return placeOf(a.kind) < placeOf(b.kind); });
    return all;
}

QStringList findingKinds()
{
    QStringList kinds;
    for (const KindWording &wording : wordings)
        kinds << wording.kind;
    return kinds;
}

QStringList sentences(const QList<Finding> &findings)
{
    QStringList told;
    for (qsizetype first = 0; first < findings.size();) {
        qsizetype end = first;
        while (end < findings.size() && findings.at(end).kind == findings.at(first).kind)
            ++end;
        const QList<Finding> alike = findings.sliced(first, end - first);
        const QString severity = alike.constFirst().blocks ? u"blocking: "_s : u"warning: "_s;
        // The hosted service refuses several types in the same way, which is one matter.
        const bool together = alike.size() > mostAlone || (alike.size() > 1 && alike.at(0).kind == "refused-format"_L1);
        if (together) {
            told << severity + sentenceForSeveral(alike);
        } else {
            for (const Finding &finding : alike)
                told << severity + finding.text;
        }
        first = end;
    }
    return told;
}

} // namespace study
