#pragma once

#include "tests/support/stage.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QSqlTableModel>
#include <QTableView>

// Files that a project is saved to and opened from, made and read behind the program's back.

using Rows = QList<QVariantList>;

/// A database file under the test's own hands, by a connection beside those of the program.
class SideFile
{
public:
    explicit SideFile(const QString &path)
        : database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("side")))
    {
        database.setDatabaseName(path);
        database.open();
    }
    ~SideFile()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("side"));
    }
    Q_DISABLE_COPY_MOVE(SideFile)

    /// What the driver says of a path that can't be opened.
    QString errorText() const { return database.lastError().text(); }
    bool exec(const QString &statement)
    {
        QSqlQuery query(database);
        return query.exec(statement);
    }
    Rows rows(const QString &statement)
    {
        Rows all;
        QSqlQuery query(database);
        query.exec(statement);
        while (query.next()) {
            QVariantList row;
            for (int column = 0; column < query.record().count(); ++column)
                row.append(query.value(column));
            all.append(row);
        }
        return all;
    }
    /// The first value of the first row, invalid where there is none.
    QVariant value(const QString &statement)
    {
        const Rows all = rows(statement);
        return all.isEmpty() ? QVariant() : all.first().first();
    }

private:
    QSqlDatabase database;
};

/// The statements of the schema script.
inline QStringList schemaStatements()
{
    QFile script(QStringLiteral(":/project/sql/schema.sql"));
    QStringList statements;
    if (script.open(QIODevice::ReadOnly))
        statements = QString::fromUtf8(script.readAll()).split(u';', Qt::SkipEmptyParts);
    statements.removeIf([](const QString &piece) { return piece.trimmed().isEmpty(); });
    return statements;
}

/// Makes a database file of these statements; false if one fails.
inline bool makeFile(const QString &path, const QStringList &statements)
{
    SideFile file(path);
    bool done = file.exec(QStringLiteral("BEGIN"));
    for (const QString &statement : statements)
        done = file.exec(statement) && done;
    return file.exec(QStringLiteral("COMMIT")) && done;
}

/// Makes a project file with the tables of the program and these statements.
inline bool makeProjectFile(const QString &path, const QStringList &statements = {})
{
    return makeFile(path, schemaStatements() + statements);
}

/// Statements that put one row into each table of a project.
inline QStringList oneOfEach()
{
    return {
        QStringLiteral("INSERT INTO metadata VALUES ('key', 'value')"),
        QStringLiteral("INSERT INTO boilerplate VALUES ('Pre.', 'Post.')"),
        QStringLiteral("INSERT INTO personas (uuid, name) VALUES ('one', 'Number One')"),
        QStringLiteral("INSERT INTO questions (order_num, prompt) VALUES (1, 'Why?')"),
        QStringLiteral("INSERT INTO question_attachments (question_id, filename) VALUES (1, 'plan.png')"),
        QStringLiteral("INSERT INTO responses (persona_uuid, question_id, text_answer) VALUES ('one', 1, 'Hm.')"),
        QStringLiteral("INSERT INTO tags VALUES (5, 'odd')"),
        QStringLiteral("INSERT INTO persona_tags VALUES ('one', 5)"),
    };
}

inline bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// What a file holds, null where there is none.
inline QByteArray readBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What the driver says of a statement that fails on the project.
inline QString refusal(Stage &stage, const QString &statement, const QVariantList &values = {})
{
    QSqlQuery query(stage.project());
    query.prepare(statement);
    for (const QVariant &value : values)
        query.addBindValue(value);
    query.exec();
    return query.lastError().text();
}

inline QTableView *questionView(Stage &stage)
{
    return stage.find<QTableView>(QStringLiteral("questionView"));
}

/// The model of the question list, or null.
inline QSqlTableModel *questionModel(Stage &stage)
{
    return qobject_cast<QSqlTableModel *>(questionView(stage)->model());
}

inline int count(Stage &stage, const QString &table)
{
    const QString query = QStringLiteral("SELECT COUNT(*) FROM ") + table;
    return stage.value(query).toInt();
}

/// True when the question list shows all questions of the project, in their order.
inline bool questionListIsWhole(Stage &stage)
{
    const QSqlTableModel *model = questionModel(stage);
    if (model == nullptr || model->isDirty())
        return false;
    Rows shown;
    for (int row = 0; row < model->rowCount(); ++row)
        shown.append({model->index(row, 1).data(), model->index(row, 2).data()});
    return shown == stage.rows(QStringLiteral("SELECT order_num, prompt FROM questions ORDER BY order_num"));
}

/// The names in the persona list, sorted.
inline QStringList shownPersonas(Stage &stage)
{
    const auto *table = stage.find<QTableWidget>(QStringLiteral("personaTable"));
    QStringList names;
    for (int row = 0; row < table->rowCount(); ++row)
        names.append(table->item(row, 0)->text());
    names.sort();
    return names;
}

/// Enters questions behind the program's back, numbered from 1, and refreshes the question list.
inline bool enterQuestions(Stage &stage, int number)
{
    return stage.exec(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
                                     "INSERT INTO questions (order_num, prompt, answer_type, judge_question) "
                                     "SELECT i, 'Question ' || i, 'text', 0 FROM n"),
                      {number}) &&
           stage.call("loadQuestions");
}

/// True when "Save" writes to this path. The file is taken away first, since none is ever written over.
inline bool savesTo(Stage &stage, const QString &path)
{
    QFile::remove(path);
    Stage::setTestMode(true);
    stage.action(QStringLiteral("Save"))->trigger();
    Stage::setTestMode(false);
    return QFile::exists(path);
}

/// True when the project has no file: "Save" would ask for one, and so does nothing in test mode.
inline bool belongsToNoFile(Stage &stage)
{
    const QStringList before = QDir(stage.path(QString())).entryList(QDir::Files);
    stage.window()->markDirty();
    Stage::setTestMode(true);
    stage.action(QStringLiteral("Save"))->trigger();
    Stage::setTestMode(false);
    return stage.asksBeforeClosing() && QDir(stage.path(QString())).entryList(QDir::Files) == before;
}

/// True when no connection but that of the project is left over.
inline bool onlyProjectIsConnected()
{
    return QSqlDatabase::connectionNames() == QStringList{QStringLiteral("project")};
}
