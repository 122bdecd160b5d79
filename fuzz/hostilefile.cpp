#include "fuzz/hostilefile.h"

#include "fuzz/bytes.h"
#include "fuzz/hostilestatements.h"
#include "fuzz/sqlitewatch.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

// Enough for any combination that matters, and an input of any length is done with soon.
static constexpr int mostThings = 24;
static constexpr int mostPatches = 32;
static constexpr qint64 stepsToBuild = 20'000;

static QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static void writeFile(const QString &path, QByteArrayView content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content.data(), content.size()) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
}

static QStringList packScript()
{
    return {
        u"CREATE TABLE personas (uuid TEXT PRIMARY KEY, name TEXT, attributes TEXT, system_prompt TEXT, notes TEXT, "
        "created_at DATETIME, modified_at DATETIME)"_s,
        u"CREATE TABLE tags (id INTEGER PRIMARY KEY, name TEXT UNIQUE)"_s,
        u"CREATE TABLE persona_tags (persona_uuid TEXT, tag_id INTEGER, PRIMARY KEY(persona_uuid, tag_id))"_s};
}

static QStringList projectScript()
{
    return QString::fromUtf8(readFile(u":/project/sql/schema.sql"_s)).split(u';', Qt::SkipEmptyParts);
}

static QStringList personaRows()
{
    return {u"INSERT INTO personas VALUES ('one','Number One','likes tea',NULL,NULL,'2001-02-03','2001-02-03'),"
            "('three','Number Three','rows',NULL,NULL,'2001-02-03','2001-02-03')"_s,
            u"INSERT INTO tags VALUES (1,'urban'),(2,'made')"_s,
            u"INSERT INTO persona_tags VALUES ('one',1),('three',1),('three',2)"_s};
}

static QStringList questionRows()
{
    return {u"INSERT INTO boilerplate VALUES ('Act.','Be short.')"_s,
            u"INSERT INTO questions (order_num,prompt,answer_type,labels) VALUES (1,'Tea?','single_choice','[\"a\"]'),"
            "(2,'Why?','text','[]')"_s,
            u"INSERT INTO responses (persona_uuid,question_id,text_answer,json_answer,created_at) VALUES "
            "('one',1,'a','{\"answer\":\"a\",\"reasoning\":\"r\"}','2001-02-03 04:05:06'),"
            "('one',2,'because',NULL,'2001-02-03 04:05:07')"_s};
}

namespace {

/// A connection of its own to a file that is being made.
class Making
{
public:
    explicit Making(const QString &path)
    {
        handle.setDatabaseName(path);
        if (!handle.open())
            qFatal("cannot make %s", qUtf8Printable(path));
        exec({u"PRAGMA synchronous=OFF"_s});
    }
    ~Making()
    {
        handle = QSqlDatabase();
        QSqlDatabase::removeDatabase(u"making"_s);
    }
    Q_DISABLE_COPY_MOVE(Making)

    /// What fails is left out: not everything can be done to every file.
    void exec(const QStringList &statements)
    {
        for (const QString &statement : statements)
            QSqlQuery(handle).exec(statement);
    }
    QHash<QString, qint64> countRows()
    {
        QHash<QString, qint64> counts;
        for (const QString &name : hostileTables()) {
            QSqlQuery query(handle);
            if (query.exec(u"SELECT COUNT(*) FROM "_s + name) && query.next() && !SqliteWatch::ranOut())
                counts.insert(name, query.value(0).toLongLong());
        }
        return counts;
    }

private:
    QSqlDatabase handle = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"making"_s);
};

} // namespace

/// What a file begins as. Small pages make trees of several pages of few rows.
static QByteArray beginning(const QString &path, FileKind kind, bool wide, bool bare)
{
    static QHash<int, QByteArray> made;
    QByteArray &content = made[(kind == FileKind::Pack ? 1 : 0) + (wide ? 2 : 0) + (bare ? 4 : 0)];
    if (!content.isEmpty())
        return content;
    QFile::remove(path);
    {
        Making making(path);
        making.exec({wide ? u"PRAGMA encoding='UTF-16'"_s : u"PRAGMA encoding='UTF-8'"_s, u"PRAGMA page_size=512"_s});
        if (bare)
            making.exec({u"CREATE TABLE nothing (x)"_s, u"DROP TABLE nothing"_s});
        else
            making.exec(kind == FileKind::Pack ? packScript() + personaRows()
                                               : projectScript() + personaRows() + questionRows());
    }
    content = readFile(path);
    return content;
}

/// Overwrites some bytes, cuts the end off.
static bool damage(HostileFile &file, Bytes &bytes)
{
    bool damaged = false;
    for (int count = 0; count < mostPatches && !bytes.atEnd(); ++count) {
        const char what = bytes.letter("BLC");
        QByteArray &content = what == 'L' ? file.log : file.content;
        const qsizetype place = (bytes.byte() << 8) | bytes.byte();
        const char value = static_cast<char>(bytes.byte());
        damaged = true;
        if (what == 'C')
            content.truncate(std::max<qsizetype>(content.size() - place, 0));
        else if (!content.isEmpty())
            content[place % content.size()] = value;
    }
    return damaged;
}

static HostileFile build(const QString &path, FileKind kind, char begin, Bytes &bytes)
{
    const FileKind other = kind == FileKind::Pack ? FileKind::Project : FileKind::Pack;
    const QByteArray content =
        beginning(path, begin == 'O' ? other : kind, begin == 'U' || begin == 'V', begin == 'E' || begin == 'V');
    const bool logged = begin == 'W';
    for (const auto end : {""_L1, "-wal"_L1, "-shm"_L1, "-journal"_L1})
        QFile::remove(path + end);
    writeFile(path, content);
    HostileFile file;
    bool damaged = false;
    {
        SqliteWatch::allow(stepsToBuild);
        Making making(path);
        making.exec({logged ? u"PRAGMA journal_mode=WAL"_s : u"PRAGMA journal_mode=MEMORY"_s,
                     u"PRAGMA wal_autocheckpoint=0"_s, u"BEGIN"_s});
        // A zero ends it, and damage follows.
        for (int count = 0; count < mostThings && !bytes.atEnd() && bytes.rest().front() != '\0'; ++count) {
            const QStringList statements = nextStatements(bytes);
            damaged = damaged || statements.contains(allowSchemaChanges);
            making.exec(statements);
        }
        making.exec({u"COMMIT"_s});
        if (kind == FileKind::Project)
            file.rows = making.countRows();
        // Closing would put the log into the file.
        if (logged) {
            file.content = readFile(path);
            file.log = readFile(path + "-wal"_L1);
        }
    }
    if (!logged)
        file.content = readFile(path);
    bytes.byte();
    damaged = damage(file, bytes) || damaged;
    if (damaged)
        file.rows.clear();
    return file;
}

HostileFile writeHostileFile(const QString &path, const QString &workshop, FileKind kind, Bytes &bytes)
{
    const char begin = bytes.letter("FPUOEVW");
    HostileFile file;
    if (begin == 'F')
        file.content = bytes.rest().toByteArray();
    else
        file = build(workshop + "/making"_L1, kind, begin, bytes);
    for (const auto end : {"-wal"_L1, "-shm"_L1, "-journal"_L1})
        QFile::remove(path + end);
    writeFile(path, file.content);
    if (!file.log.isEmpty())
        writeFile(path + "-wal"_L1, file.log);
    return file;
}
