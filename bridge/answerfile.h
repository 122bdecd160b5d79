#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

namespace bridge {

/// An answer as the program stores it, without its number.
struct StoredAnswer
{
    QVariant persona;
    QVariant question;
    QVariant text;
    QVariant number;
    QVariant json;
    QVariant createdAt;
};

/// The project file that a run without a window writes its answers to. Each call that writes is one transaction, so the
/// file is a whole project at every moment.
class AnswerFile
{
public:
    AnswerFile();
    ~AnswerFile();
    Q_DISABLE_COPY_MOVE(AnswerFile)

    /// Makes a copy of a project, which is never one that is half written: it gets its name when it is whole and on the
    /// disk. Returns why it can't be made, empty where it was.
    static QString copy(const QString &from, const QString &to);

    /// Returns why the file can't be used, empty where it can.
    QString open(const QString &path);

    /// The personas in the order in which a run takes them, by their row ids.
    QList<qint64> personas() const;
    /// Pairs of the personas and questions here that have no answer.
    qint64 openPairs() const;
    /// Copies one persona with its answers, the questions and the boilerplate into a database that has the tables of a
    /// project, as opening the file would.
    bool fill(const QSqlDatabase &database, qint64 persona) const;
    /// All of them or none; false leaves the reason in errorText().
    bool store(const QList<StoredAnswer> &answers);
    QString errorText() const { return error; }

private:
    bool tryWriting();

    QString path;
    QSqlDatabase database;
    QString error;
};

} // namespace bridge
