// A fuzzer: libFuzzer's main() makes inputs, and the target that this program is built for takes them.

#include "fuzz/promises.h"
#include "fuzz/targets.h"
#include "standin/privatehome.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

extern "C" {
// Take the place of the system's: files are made and dropped by the hundred, and nobody pulls the plug.
int fsync(int /*file*/)
{
    return 0;
}
int fdatasync(int /*file*/)
{
    return 0;
}
int LLVMFuzzerInitialize(int *argc, char ***argv);
int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size);
}

int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    if (QDir(u"/dev/shm"_s).exists())
        qputenv("TMPDIR", "/dev/shm");
    // Kept to the end of the process, of which libFuzzer has its own idea.
    static const QTemporaryDir home;
    leaveUsersHome(home.path());
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);
    // Never destroyed, since the process ends without coming back to a main() that could do it in time.
    static const auto *application = new QApplication(*argc, *argv);
    return application == nullptr ? 1 : 0;
}

int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    static const FuzzTarget &target = fuzzTarget(QLatin1StringView(ORRINET_FUZZ_TARGET));
    target.run(QByteArrayView(data, static_cast<qsizetype>(size)));
    const QStringList broken = takeBrokenPromises();
    for (const QString &text : broken)
        std::fprintf(stderr, "BROKEN: %s\n", qUtf8Printable(text));
    if (!broken.isEmpty())
        std::abort();
    return 0;
}
