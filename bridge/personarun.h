#pragma once

#include "bridge/answerfile.h"

#include <QObject>
#include <QSqlQuery>

#include <optional>

namespace bridge {

/// The program's own run over one persona, on a small database in memory. What a persona is told depends on its own
/// answers alone, so its requests are those of a run over the whole panel.
class PersonaRun : public QObject
{
    Q_OBJECT

public:
    explicit PersonaRun(QObject *parent);
    ~PersonaRun() override;

    /// False where the persona can't be read.
    bool fill(const AnswerFile &file, qint64 persona);
    /// Asks the first open question, if there is one; the end may come before this returns.
    void start();
    /// The answers that have come since the last call of kept().
    QList<StoredAnswer> newAnswers();
    /// They are safe.
    void kept() { lastKept = lastRead; }

Q_SIGNALS:
    void finished();

private:
    QString name;
    QSqlDatabase database;
    /// Prepared once: every persona under way is asked for its answers at each request.
    std::optional<QSqlQuery> answersBehind;
    qint64 lastRead = 0;
    qint64 lastKept = 0;
};

} // namespace bridge
