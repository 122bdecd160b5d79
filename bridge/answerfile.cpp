#include "bridge/answerfile.h"

#include "project/projectformat.h"
#include "project/temporaryconnection.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

QString quoted(QString text)
{
    return u'\'' + text.replace(u'\'', "''"_L1) + u'\'';
}

/// Until the file is on the disk a power cut could take it.
bool synchronise(const QString &path)
{
#ifdef Q_OS_UNIX
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool done = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return done;
#else
    Q_UNUSED(path)
    return true;
#endif
}

} // namespace

AnswerFile::AnswerFile() = default;

AnswerFile::~AnswerFile()
{
    const QString name = database.connectionName();
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString AnswerFile::copy(const QString &from, const QString &to)
{
    if (!QFileInfo(from).isFile())
        return u"%1 is not there"_s.arg(from);
    if (QFileInfo::exists(to) || QFileInfo(to).isSymLink())
        return u"%1 is there already and is not overwritten"_s.arg(to);
    const QString half = to + ".part"_L1;
    if (QFileInfo::exists(half) || QFileInfo(half).isSymLink())
        return u"%1 is there, left by a copy that was cut short; remove it first"_s.arg(half);
    {
        const TemporaryConnection source(u"answers-source"_s, QFileInfo(from).absoluteFilePath(),
                                         u"QSQLITE_OPEN_READONLY"_s);
        if (!source.isOpen())
            return u"%1 can't be read: %2"_s.arg(from, source.errorText());
        if (const QString flaw = projectFlaw(source.database()); !flaw.isEmpty())
            return u"%1 is no project: %2"_s.arg(from, flaw);
        QSqlQuery query(source.database());
        query.prepare(u"VACUUM INTO ?"_s);
        query.addBindValue(QFileInfo(half).absoluteFilePath());
        if (!query.exec()) {
            QFile::remove(half);
            return u"%1 can't be written: %2"_s.arg(to, query.lastError().text());
        }
    }
    if (!synchronise(half) || !QFile::rename(half, to) || !synchronise(QFileInfo(to).absolutePath())) {
        QFile::remove(half);
        return u"%1 can't be written"_s.arg(to);
    }
    return {};
}

QString AnswerFile::open(const QString &file)
{
    path = QFileInfo(file).absoluteFilePath();
    if (!QFileInfo(path).isFile())
        return u"%1 is not there"_s.arg(file);
    database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"answers"_s);
    database.setDatabaseName(path);
    if (!database.open())
        return u"%1 can't be read: %2"_s.arg(file, database.lastError().text());
    if (const QString flaw = projectFlaw(database); !flaw.isEmpty())
        return u"%1 is no project: %2"_s.arg(file, flaw);
    // Says now what would otherwise be said after the first answer.
    if (!QFileInfo(path).isWritable())
        return u"%1 can't be written: it is read-only"_s.arg(file);
    if (!tryWriting())
        return u"%1 can't be written: %2"_s.arg(file, error);
    return {};
}

/// Writes a number that the file holds already and takes that back. SQLite makes its journal at the first change only,
/// and needs the folder for it.
bool AnswerFile::tryWriting()
{
    QSqlQuery query(database);
    const bool done = query.exec(u"BEGIN IMMEDIATE"_s) && query.exec(u"PRAGMA user_version"_s) && query.next() &&
                      query.exec("PRAGMA user_version = "_L1 + query.value(0).toString());
    error = query.lastError().databaseText();
    query.exec(u"ROLLBACK"_s);
    return done;
}

QList<qint64> AnswerFile::personas() const
{
    QSqlQuery query(u"SELECT rowid FROM personas ORDER BY name"_s, database);
    QList<qint64> ids;
    while (query.next())
        ids << query.value(0).toLongLong();
    return ids;
}

qint64 AnswerFile::openPairs() const
{
    QSqlQuery query(u"SELECT (SELECT COUNT(*) FROM personas) * (SELECT COUNT(*) FROM questions) - "
                    "(SELECT COUNT(*) FROM (SELECT DISTINCT r.persona_uuid, r.question_id FROM responses r "
                    "JOIN personas p ON p.uuid = r.persona_uuid JOIN questions q ON q.question_id = r.question_id))"_s,
                    database);
    return query.next() ? query.value(0).toLongLong() : 0;
}

bool AnswerFile::fill(const QSqlDatabase &target, qint64 persona) const
{
    QSqlQuery query(target);
    const QString id = QString::number(persona);
    const bool done = query.exec("ATTACH DATABASE "_L1 + quoted(path) + " AS disk"_L1) &&
                      query.exec(u"INSERT INTO boilerplate SELECT * FROM disk.boilerplate"_s) &&
                      query.exec(u"INSERT INTO questions SELECT * FROM disk.questions"_s) &&
                      query.exec("INSERT INTO personas SELECT * FROM disk.personas WHERE rowid="_L1 + id) &&
                      query.exec(u"INSERT INTO responses SELECT * FROM disk.responses "
                                 "WHERE persona_uuid=(SELECT uuid FROM personas) ORDER BY rowid"_s);
    query.exec(u"DETACH DATABASE disk"_s);
    return done;
}

bool AnswerFile::store(const QList<StoredAnswer> &answers)
{
    QSqlQuery query(database);
    if (!query.exec(u"BEGIN IMMEDIATE"_s)) {
        error = query.lastError().databaseText();
        return false;
    }
    bool done = true;
    query.prepare(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, json_answer, "
                  "created_at) VALUES (?,?,?,?,?,?)"_s);
    for (const StoredAnswer &answer : answers) {
        for (const QVariant &value :
             {answer.persona, answer.question, answer.text, answer.number, answer.json, answer.createdAt})
            query.addBindValue(value);
        done = done && query.exec();
    }
    const QSqlError failure = query.lastError();
    query.finish();
    if (done && query.exec(u"COMMIT"_s))
        return true;
    error = done ? query.lastError().databaseText() : failure.databaseText();
    query.exec(u"ROLLBACK"_s);
    return false;
}

} // namespace bridge
