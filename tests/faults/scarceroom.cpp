#include "tests/faults/scarceroom.h"

#include "tests/support/sidedatabase.h"

#include <QDir>

using namespace Qt::StringLiterals;

static constexpr auto earlierName = "earlier"_L1;

void addScarcities()
{
    QTest::addColumn<Scarcity>("scarcity");
    QTest::newRow("files may not grow") << Scarcity::FileSize;
    if (inChild() || canMount())
        QTest::newRow("small disk") << Scarcity::Disk;
    else
        qInfo("a test may not mount here: the limit of files stands in for the small disk");
}

FileSizeLimit::FileSizeLimit(qint64 size)
    : actionBefore(std::signal(SIGXFSZ, SIG_IGN))
{
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{.rlim_cur = rlim_t(size), .rlim_max = before.rlim_max};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        QTest::qFail("no limit was set", __FILE__, __LINE__);
}

FileSizeLimit::~FileSizeLimit()
{
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, actionBefore);
}

ScarceRoom::ScarceRoom(Scarcity scarcity, int freePages, const QByteArray &earlierFile)
    : kind(scarcity)
    , room(freePages)
{
    if (kind == Scarcity::Disk)
        disk = std::make_unique<SmallDisk>(folder.path(), earlierName, earlierFile, freePages);
    else
        writeBytes(path(earlierName), earlierFile);
}

bool ScarceRoom::result(Stage &stage, const char *slot, const QString &name) const
{
    std::unique_ptr<FileSizeLimit> limit;
    if (kind == Scarcity::FileSize)
        limit = std::make_unique<FileSizeLimit>(qint64(room) * SmallDisk::pageSize);
    return stage.result(slot, path(name));
}

QStringList ScarceRoom::files() const
{
    QStringList names = QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    names.removeOne(earlierName);
    return names;
}

QByteArray ScarceRoom::earlierFile() const
{
    return readBytes(path(earlierName));
}
