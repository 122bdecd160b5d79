#pragma once

#include <QStringList>
#include <QTextStream>

class QDir;

/// What comes before and after a run, by orrinet-study: the survey of a saved project is checked, its answers exported
/// in each form, and reported on.
class ThirdAct
{
public:
    /// @p study is the program; the files go to @p folder, in place of what an earlier demo left there.
    ThirdAct(const QString &study, const QDir &folder, QTextStream &out);

    /// Returns what went wrong.
    QStringList play();

private:
    /// Whether it ended well; where it did not, that is a flaw.
    bool run(const QStringList &arguments);

    QString program;
    const QDir &files;
    QTextStream &output;
    QStringList flaws;
};
