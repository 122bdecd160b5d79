#include "study/output.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace study {

void say(const QString &message)
{
    std::fprintf(stderr, "orrinet-study: %s\n", qUtf8Printable(message));
}

void print(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

QString objectionTo(const QString &path, bool force)
{
    const QFileInfo file(path);
    if (file.isDir())
        return u"%1 is a folder"_s.arg(path);
    if (!force && (file.exists() || file.isSymLink()))
        return u"%1 is there already; --force overwrites it"_s.arg(path);
    return {};
}

QString writeFile(const QString &path, const QByteArray &bytes, bool force)
{
    if (const QString objection = objectionTo(path, force); !objection.isEmpty())
        return objection;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return u"%1 can't be written: %2"_s.arg(path, file.errorString());
    return {};
}

QString writeFileBy(const QString &path, bool force, const std::function<QString(const QString &)> &write)
{
    if (const QString objection = objectionTo(path, force); !objection.isEmpty())
        return objection;
    // Beside it, so that it only has to get its name.
    const QFileInfo file(path);
    const QTemporaryDir folder(file.absolutePath() + "/.orrinet-XXXXXX"_L1);
    if (!folder.isValid())
        return u"%1 can't be written: %2"_s.arg(path, folder.errorString());
    const QString half = folder.filePath(file.fileName());
    if (const QString failure = write(half); !failure.isEmpty())
        return u"%1 can't be written: %2"_s.arg(path, failure);
    if ((force && QFile::exists(path) && !QFile::remove(path)) || !QFile::rename(half, path))
        return u"%1 can't be written"_s.arg(path);
    return {};
}

static bool errorOutputIsTerminal()
{
#ifdef Q_OS_UNIX
    return ::isatty(STDERR_FILENO) == 1;
#else
    return false;
#endif
}

Progress::Progress(const QString &what)
    : work(what)
    , isTerminal(errorOutputIsTerminal())
{
}

Progress::~Progress()
{
    if (shownPercent >= 0)
        std::fputs("\r\033[K", stderr);
}

void Progress::show(qsizetype done, qsizetype all)
{
    const int percent = all > 0 ? int(done * 100 / all) : 100;
    if (!isTerminal || percent == shownPercent)
        return;
    shownPercent = percent;
    std::fprintf(stderr, "\r\033[K%s %d %%", qUtf8Printable(work), percent);
}

} // namespace study
