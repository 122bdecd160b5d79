#pragma once

#include <QStringList>

/// A program of this project, run to its end without a display.
struct ProgramRun
{
    ProgramRun(const QString &path, const QStringList &arguments);

    int status = -1; ///< -1 where it did not end by itself
    QString output;
    QStringList errors; ///< the lines of its error output
};
