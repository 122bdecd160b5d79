#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QFile;

// Data goes to the standard output or to files, messages to the error output.

namespace study {

/// A message of a line.
void say(const QString &message);

/// Data to the standard output.
void print(const QString &text);

/// Why a file may not be written, empty where it may: files that are there are overwritten by force alone.
QString objectionTo(const QString &path, bool force);

/// Writes a file in one go: it gets its name when it is whole. Returns why it couldn't, empty where it could.
QString writeFile(const QString &path, const QByteArray &bytes, bool force);

/// The same for a file that a library writes by itself, to the path that it is given.
QString writeFileBy(const QString &path, bool force, const std::function<QString(const QString &)> &write);

/// How far a work of several seconds is, in a line that is kept up to date; on a terminal alone.
class Progress
{
public:
    explicit Progress(const QString &what);
    ~Progress();
    Q_DISABLE_COPY_MOVE(Progress)

    void show(qsizetype done, qsizetype all);

private:
    QString work;
    bool isTerminal;
    int shownPercent = -1;
};

} // namespace study
