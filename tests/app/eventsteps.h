#pragma once

#include <QList>
#include <QString>

#include <functional>

/// What a user, or outside code through the slots, can do to the window. Run to PressKey are everything that happens
/// without a dialog of its own, or with one that is answered within the step.
enum class Act {
    NewPersona,
    EditPersona,
    CopyPersona,
    DeletePersona,
    InsertPersona,
    UpdatePersona,
    FilterTag,
    AddQuestion,
    EditQuestion,
    DeleteQuestion,
    MoveQuestion,
    InsertQuestion,
    UpdateQuestion,
    EditCell,
    TypePreamble,
    TypePostamble,
    NewProject,
    OpenFile,
    OpenByMenu,
    SaveFile,
    SaveByMenu,
    SaveAs,
    ImportPack,
    ImportByMenu,
    ExportPack,
    ExportByMenu,
    ShowPack,
    Run,
    AwaitReply,
    LetReplyGo,
    ChooseReplies,
    CloseLog,
    ShowConversation,
    Preferences,
    About,
    ToggleColumn,
    AskToClose,
    CloseWindow,
    ChangeTab,
    Resize,
    Grab,
    ClickCell,
    PressKey,
    Refresh,
    Settle,
    Nothing
};

/// One thing that happens. Its numbers mean the same whatever came before: "the n-th, modulo how many there are", so
/// that a list of steps from which some are left out is one too.
struct Step
{
    Act act = Act::Nothing;
    int which = 0;
    int how = 0;
    int meanwhile = 0; ///< what happens while a dialog of the step is open
};

/// The steps of a seed.
QList<Step> randomSteps(quint32 seed, int count);

/// What happens behind an open dialog of a step. Behind the dialogs of that, a reply comes at most.
Step nestedStep(const Step &step);

/// A step as it stands in a list of them in a test.
QString literal(const Step &step);
QString literal(const QList<Step> &steps);

/// Leaves out halves, quarters, eighths ... of a failing list as long as it still fails, with this many tries at most.
QList<Step> shrunk(QList<Step> failing, int tries, const std::function<bool(const QList<Step> &)> &fails);
