#pragma once

#include <QList>
#include <QStringList>

/// A page of docs/, as the tests hold it against the programs.
class Page
{
public:
    /// The test fails where there is none.
    explicit Page(const QString &name);

    /// The rows of a table without its head, each the texts of its cells: the first table under a heading (without its
    /// marks) whose first column is headed so. The test fails where there is none.
    QList<QStringList> table(const QString &heading, const QString &firstColumn) const;
    /// The names that stand in code form in the first cells of such a table, from top to bottom.
    QStringList names(const QString &heading, const QString &firstColumn) const;
    /// The code block whose first line is a comment that names this file. The test fails where there is none.
    QString block(const QString &file) const;

private:
    QStringList lines;
};

/// What stands in code form in a text.
QStringList codeIn(const QString &text);
