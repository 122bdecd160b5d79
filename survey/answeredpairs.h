#pragma once

#include "project/textbytes.h"

#include <QHash>
#include <QSet>
#include <QSqlDatabase>

#include <optional>

/// Tells which questions each persona has any answer to, as
/// "SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?" would for each pair, at the cost of one
/// statement for a persona and of one for all where many are asked for. Valid as long as nobody writes to the table.
class AnsweredPairs
{
public:
    using Questions = QSet<qint64>;

    explicit AnsweredPairs(const QSqlDatabase &database);

    /// The ids of the questions that a persona has answered, nothing where the table can't be read.
    std::optional<Questions> of(const QString &personaUuid);

private:
    /// By the bytes of the uuid.
    using ByPersona = QHash<QByteArray, Questions>;

    std::optional<Questions> readOne(const QString &personaUuid) const;
    std::optional<ByPersona> readAll() const;

    QSqlDatabase db;
    TextBytes toBytes;
    int personasRead = 0;
    std::optional<ByPersona> all;
};
