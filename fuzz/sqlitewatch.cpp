#include "fuzz/sqlitewatch.h"

#include "fuzz/trail.h"

#include <QHashFunctions>
#include <QLibrary>
#include <QSqlDriver>
#include <QVariant>

#include <algorithm>
#include <string_view>

using namespace Qt::StringLiterals;

// SQLite's own functions, as its interface has them.
using Connection = void *;
using EntryPoint = int (*)(Connection, char **, const void *);
using AutoExtension = int (*)(EntryPoint);
using ProgressHandler = void (*)(Connection, int, int (*)(void *), void *);
using SetAuthorizer = int (*)(Connection, int (*)(void *, int, const char *, const char *, const char *, const char *),
                              void *);
using HeapLimit = qint64 (*)(qint64);

namespace {

struct State
{
    SetAuthorizer setAuthorizer = nullptr;
    ProgressHandler setProgressHandler = nullptr;
    bool installed = false;
    qint64 left = 0;
    qint64 taken = 0;
    Connection project = nullptr;
    bool watching = false;
    QStringList offences;
};

} // namespace

static constexpr int stepsPerCall = 500;
static constexpr qint64 memoryBound = 256 * 1024 * 1024;

static State &state()
{
    static State only;
    return only;
}

static int progress(void * /*unused*/)
{
    state().taken += stepsPerCall;
    state().left -= stepsPerCall;
    return state().left < 0 ? 1 : 0;
}

/// By the numbers that SQLite gives its actions: from SQLITE_CREATE_INDEX to SQLITE_INSERT, SQLITE_UPDATE, and from
/// SQLITE_ALTER_TABLE to SQLITE_DROP_VTABLE. The others read, or change no database by themselves.
static bool writes(int action)
{
    static constexpr int update = 23;
    return (action >= 1 && action <= 18) || action == update || (action >= 26 && action <= 30);
}

/// A virtual table of SQLite's own kinds lies in tables of this form. Statements to write to them are prepared, and so
/// shown to the watch, as soon as it is read; that they are run would show in the file.
static bool isShadow(const char *table)
{
    static const QStringList ends{u"_node"_s,   u"_rowid"_s,   u"_parent"_s,  u"_data"_s,     u"_idx"_s,   u"_stat"_s,
                                  u"_config"_s, u"_content"_s, u"_docsize"_s, u"_segments"_s, u"_segdir"_s};
    const QString name = QString::fromUtf8(table);
    return std::ranges::any_of(ends, [&name](const QString &end) { return name.endsWith(end); });
}

static int authorize(void *connection, int action, const char *first, const char *second, const char *database,
                     const char *accessor)
{
    State &own = state();
    if (!own.watching)
        return 0;
    static constexpr int function = 31;
    leaveTrail(Trail::Authorized, size_t(action) + (action == function ? qHash(QByteArrayView(second)) : 0));
    if (!writes(action))
        return 0;
    const std::string_view where = database == nullptr ? "" : database;
    if (isShadow(first) && (connection != own.project || where == "disk"))
        return 0;
    if (connection != own.project || where != "main" || accessor != nullptr)
        own.offences.append(u"action %1 on %2 in %3 by %4"_s.arg(
            QString::number(action), QString::fromUtf8(first), QString::fromUtf8(database),
            accessor == nullptr ? u"a connection"_s : QString::fromUtf8(accessor)));
    return 0;
}

static int watchConnection(Connection connection, char ** /*error*/, const void * /*routines*/)
{
    state().setProgressHandler(connection, stepsPerCall, progress, nullptr);
    state().setAuthorizer(connection, authorize, connection);
    return 0;
}

static void install()
{
    State &own = state();
    if (own.installed)
        return;
    own.installed = true;
    QLibrary sqlite(u"sqlite3"_s, 0);
    const auto extend = reinterpret_cast<AutoExtension>(sqlite.resolve("sqlite3_auto_extension"));
    own.setProgressHandler = reinterpret_cast<ProgressHandler>(sqlite.resolve("sqlite3_progress_handler"));
    own.setAuthorizer = reinterpret_cast<SetAuthorizer>(sqlite.resolve("sqlite3_set_authorizer"));
    if (extend == nullptr || own.setProgressHandler == nullptr || own.setAuthorizer == nullptr)
        return;
    extend(watchConnection);
    if (const auto bound = reinterpret_cast<HeapLimit>(sqlite.resolve("sqlite3_hard_heap_limit64")); bound != nullptr)
        bound(memoryBound);
}

void SqliteWatch::allow(qint64 steps)
{
    install();
    state().left = steps;
    state().taken = 0;
}

bool SqliteWatch::ranOut()
{
    return state().left < 0;
}

qint64 SqliteWatch::stepsTaken()
{
    return state().taken;
}

void SqliteWatch::begin(const QSqlDatabase &project)
{
    install();
    const QVariant handle = project.driver()->handle();
    state().project = *static_cast<Connection const *>(handle.constData());
    state().offences.clear();
    state().watching = true;
}

QStringList SqliteWatch::end()
{
    state().watching = false;
    return state().offences;
}
