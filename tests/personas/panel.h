#pragma once

#include "tests/support/stage.h"

#include <QPlainTextEdit>
#include <QSignalBlocker>

/// What a query gives.
using Rows = QList<QVariantList>;

/// While it lives, a refresh of the view does not pass through the boilerplate slots, which mark the project as changed
/// at every refresh. What is marked then has been marked by the operation itself.
class QuietRefresh
{
public:
    explicit QuietRefresh(Stage &stage)
        : preamble(stage.find<QPlainTextEdit>(QStringLiteral("preambleEdit")))
        , postamble(stage.find<QPlainTextEdit>(QStringLiteral("postambleEdit")))
    {
    }

private:
    QSignalBlocker preamble;
    QSignalBlocker postamble;
};

/// The persona list.
inline QTableWidget *personaTable(Stage &stage)
{
    return stage.find<QTableWidget>(QStringLiteral("personaTable"));
}

/// Enters a persona behind the program's back, with an answer and with values in the columns that no dialog reaches.
inline bool enterPersona(Stage &stage, const QString &uuid, const QString &name)
{
    return stage.exec(QStringLiteral("INSERT INTO personas VALUES (?, ?, 'keeps bees', 'You keep bees.', 'by hand', "
                                     "'2001-02-03T04:05:06.789', '2001-02-03 04:05:06')"),
                      {uuid, name}) &&
           stage.exec(QStringLiteral("INSERT INTO responses (persona_uuid, question_id, text_answer) "
                                     "VALUES (?, 1, 'honey')"),
                      {uuid});
}

/// Enters a tag and links it to a persona behind the program's back.
inline bool enterTag(Stage &stage, const QString &uuid, const QString &tag)
{
    return stage.exec(QStringLiteral("INSERT OR IGNORE INTO tags (name) VALUES (?)"), {tag}) &&
           stage.exec(QStringLiteral("INSERT INTO persona_tags SELECT ?, id FROM tags WHERE name = ?"), {uuid, tag});
}

/// Refreshes the views from the database and leaves the flag of unsaved changes as it was.
inline void refreshQuietly(Stage &stage)
{
    const QuietRefresh quiet(stage);
    stage.call("loadProject");
}

/// Makes the row of a persona the current one; false where the list does not show it.
inline bool makeCurrent(Stage &stage, const QString &uuid)
{
    QTableWidget *table = personaTable(stage);
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, 1)->data(Qt::UserRole).toString() == uuid) {
            table->setCurrentCell(row, 0);
            return true;
        }
    }
    return false;
}

/// The uuid of the persona that was entered last.
inline QString newestUuid(Stage &stage)
{
    return stage.value(QStringLiteral("SELECT uuid FROM personas ORDER BY rowid DESC LIMIT 1")).toString();
}

/// The first column of a query's rows.
inline QStringList column(Stage &stage, const QString &query, const QVariantList &values = {})
{
    QStringList texts;
    const auto rows = stage.rows(query, values);
    for (const QVariantList &row : rows)
        texts.append(row.first().toString());
    return texts;
}

/// The names of a persona's tags in the order in which they were linked.
inline QStringList tagsOf(Stage &stage, const QString &uuid)
{
    return column(stage,
                  QStringLiteral("SELECT t.name FROM persona_tags pt JOIN tags t ON t.id = pt.tag_id "
                                 "WHERE pt.persona_uuid = ? ORDER BY pt.rowid"),
                  {uuid});
}

/// The names in the table tags in the order in which they came.
inline QStringList knownTags(Stage &stage)
{
    return column(stage, QStringLiteral("SELECT name FROM tags ORDER BY id"));
}

/// The number of rows of a table.
inline int count(Stage &stage, const QString &table)
{
    const QString query = QStringLiteral("SELECT COUNT(*) FROM ") + table;
    return stage.value(query).toInt();
}
