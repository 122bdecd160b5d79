#pragma once

#include "survey/answers.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <utility>

class QSqlDatabase;

/// The newest answer of each persona to each question, read in one pass: what
/// "SELECT ... FROM responses WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"
/// would give for each pair, at the cost of one statement. Holds nothing where the table can't be read.
class NewestAnswers
{
public:
    explicit NewestAnswers(const QSqlDatabase &database);

    /// The answer of a pair, an empty one where there is none.
    ParsedAnswer find(const QString &personaUuid, int questionId) const;

private:
    /// Uuids by their bytes: two different texts must not become equal on the way, as damaged UTF-8 would.
    QHash<std::pair<QByteArray, qint64>, ParsedAnswer> answers;
};
