#pragma once

#include "survey/answers.h"

#include <QByteArray>
#include <QHash>
#include <QSqlQuery>
#include <QString>

class QSqlDatabase;

/// The newest answer of each persona to each question, read in one pass: what
/// "SELECT ... FROM responses WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"
/// would give for each pair, at the cost of one statement. Holds nothing where the table can't be read.
class NewestAnswers
{
public:
    using ByQuestion = QHash<qint64, ParsedAnswer>;

    explicit NewestAnswers(const QSqlDatabase &database);

    /// The answers of a persona, by the ids of the questions.
    ByQuestion of(const QString &personaUuid);

private:
    void read(const QSqlDatabase &database);

    /// Turns a uuid into the bytes that SQLite looks it up by, which are not always those of its UTF-8 form.
    QSqlQuery toBytes;
    /// By the bytes of the uuid, so that no two different texts become equal on the way.
    QHash<QByteArray, ByQuestion> answers;
};
