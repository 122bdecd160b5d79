#pragma once

#include "tests/support/modal.h"
#include "tests/support/stage.h"

/// Imports a pack and answers the question about the project's personas by a button; false if nothing was asked.
inline bool importAnswered(Stage &stage, const QString &path, const QString &button)
{
    bool pressed = false;
    const Modal modal([&pressed, &button](QWidget *box) { pressed = pressButton(box, button); });
    stage.call("importPack", path);
    return pressed;
}

inline bool importReplacing(Stage &stage, const QString &path)
{
    return importAnswered(stage, path, QStringLiteral("Replace"));
}

inline bool importAppending(Stage &stage, const QString &path)
{
    return importAnswered(stage, path, QStringLiteral("Append"));
}

/// Imports a pack; true if nothing was asked.
inline bool importUnasked(Stage &stage, const QString &path)
{
    return asksNothing([&] { stage.call("importPack", path); });
}
