#include "tests/app/eventsteps.h"

#include <QRandomGenerator>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

struct Kind
{
    Act act;
    const char *name;
    int weight; ///< how often it comes, beside the others
};

constexpr Kind kinds[] = {
    {Act::NewPersona, "NewPersona", 3},
    {Act::EditPersona, "EditPersona", 3},
    {Act::CopyPersona, "CopyPersona", 2},
    {Act::DeletePersona, "DeletePersona", 2},
    {Act::InsertPersona, "InsertPersona", 5},
    {Act::UpdatePersona, "UpdatePersona", 2},
    {Act::FilterTag, "FilterTag", 4},
    {Act::AddQuestion, "AddQuestion", 3},
    {Act::EditQuestion, "EditQuestion", 3},
    {Act::DeleteQuestion, "DeleteQuestion", 2},
    {Act::MoveQuestion, "MoveQuestion", 4},
    {Act::InsertQuestion, "InsertQuestion", 6},
    {Act::UpdateQuestion, "UpdateQuestion", 2},
    {Act::EditCell, "EditCell", 3},
    {Act::TypePreamble, "TypePreamble", 3},
    {Act::TypePostamble, "TypePostamble", 3},
    {Act::NewProject, "NewProject", 1},
    {Act::OpenFile, "OpenFile", 4},
    {Act::OpenByMenu, "OpenByMenu", 1},
    {Act::SaveFile, "SaveFile", 4},
    {Act::SaveByMenu, "SaveByMenu", 2},
    {Act::SaveAs, "SaveAs", 1},
    {Act::ImportPack, "ImportPack", 3},
    {Act::ImportByMenu, "ImportByMenu", 1},
    {Act::ExportPack, "ExportPack", 2},
    {Act::ExportByMenu, "ExportByMenu", 1},
    {Act::ShowPack, "ShowPack", 1},
    {Act::Run, "Run", 18},
    {Act::AwaitReply, "AwaitReply", 36},
    {Act::LetReplyGo, "LetReplyGo", 8},
    {Act::ChooseReplies, "ChooseReplies", 5},
    {Act::CloseLog, "CloseLog", 2},
    {Act::ShowConversation, "ShowConversation", 4},
    {Act::Preferences, "Preferences", 2},
    {Act::About, "About", 1},
    {Act::ToggleColumn, "ToggleColumn", 2},
    {Act::AskToClose, "AskToClose", 5},
    {Act::CloseWindow, "CloseWindow", 4},
    {Act::ChangeTab, "ChangeTab", 4},
    {Act::Resize, "Resize", 2},
    {Act::Grab, "Grab", 1},
    {Act::ClickCell, "ClickCell", 4},
    {Act::PressKey, "PressKey", 6},
    {Act::Refresh, "Refresh", 4},
    {Act::Settle, "Settle", 4},
    {Act::Nothing, "Nothing", 0},
};

/// Behind a dialog a user can do nothing, but outside code can, and replies come.
constexpr Act nestedActs[] = {
    Act::AwaitReply,    Act::AwaitReply,     Act::AwaitReply,
    Act::AwaitReply,    Act::AwaitReply,     Act::AwaitReply,
    Act::AwaitReply,    Act::AwaitReply,     Act::AwaitReply,
    Act::AwaitReply,    Act::LetReplyGo,     Act::LetReplyGo,
    Act::LetReplyGo,    Act::ChooseReplies,  Act::InsertPersona,
    Act::UpdatePersona, Act::DeletePersona,  Act::CopyPersona,
    Act::FilterTag,     Act::InsertQuestion, Act::DeleteQuestion,
    Act::MoveQuestion,  Act::UpdateQuestion, Act::SaveFile,
    Act::OpenFile,      Act::NewProject,     Act::ImportPack,
    Act::ExportPack,    Act::ShowPack,       Act::Run,
    Act::Run,           Act::CloseLog,       Act::ShowConversation,
    Act::AskToClose,    Act::Refresh,        Act::Settle,
    Act::Settle,        Act::Grab,           Act::Nothing,
    Act::Nothing,
};

constexpr int numbers = 840; ///< which all of 1 to 8 divide

} // namespace

QList<Step> randomSteps(quint32 seed, int count)
{
    QRandomGenerator random(seed);
    QList<Act> urn;
    for (const Kind &kind : kinds)
        urn.append(QList<Act>(kind.weight, kind.act));
    QList<Step> steps;
    for (int step = 0; step < count; ++step) {
        const Act act = urn.at(random.bounded(urn.size()));
        const int which = random.bounded(numbers);
        const int how = random.bounded(numbers);
        steps.append({.act = act, .which = which, .how = how, .meanwhile = random.bounded(numbers)});
    }
    return steps;
}

Step nestedStep(const Step &step)
{
    return {.act = nestedActs[step.meanwhile % int(std::size(nestedActs))],
            .which = (step.which + step.meanwhile) % numbers,
            .how = (step.how + step.meanwhile) % numbers};
}

QString literal(const Step &step)
{
    QString name;
    for (const Kind &kind : kinds) {
        if (kind.act == step.act)
            name = QString::fromLatin1(kind.name);
    }
    return u"{Act::%1, %2, %3, %4},"_s.arg(name).arg(step.which).arg(step.how).arg(step.meanwhile);
}

QString literal(const QList<Step> &steps)
{
    QStringList lines;
    for (const Step &step : steps)
        lines.append(literal(step));
    return lines.join(u'\n');
}

QList<Step> shrunk(QList<Step> failing, int tries, const std::function<bool(const QList<Step> &)> &fails)
{
    for (qsizetype part = failing.size() / 2; part > 0; part /= 2) {
        // From the end, since what comes last is seldom to be left out and what comes first often is.
        for (qsizetype first = failing.size() - part; first > -part && tries > 0; first -= part) {
            QList<Step> less = failing;
            const qsizetype from = qMax<qsizetype>(first, 0);
            less.remove(from, qMin(part + qMin<qsizetype>(first, 0), less.size() - from));
            --tries;
            if (fails(less))
                failing = less;
        }
    }
    return failing;
}
