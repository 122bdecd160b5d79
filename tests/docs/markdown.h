#pragma once

#include <QString>
#include <QStringList>

/// A document in Markdown, as far as it can be held against the tree: what it links to and what it writes as code.
struct Markdown
{
    /// @p path is where it lies, or would lie.
    Markdown(const QString &path, const QString &text);
    /// The file there. One that can't be read fails the test.
    static Markdown read(const QString &path);

    QString path;
    QStringList targets;  ///< of links and pictures
    QStringList pictures; ///< of them, those that are shown
    QStringList anchors;  ///< by which links name its headings
    QStringList spans;    ///< of code: texts between backticks
    QStringList lines;    ///< of blocks of code

    QStringList code() const { return spans + lines; }
};
