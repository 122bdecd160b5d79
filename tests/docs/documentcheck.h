#pragma once

#include "tests/docs/markdown.h"

#include <QMap>
#include <QSet>

/// Holds documents against the tree and against what the programs say of themselves. Each check gives a sentence for
/// each fault.
class DocumentCheck
{
public:
    DocumentCheck();

    /// The tree's own top-level folders: not those that are hidden, nor those that CMake builds in.
    static QStringList folders();
    /// The documents of the tree, as paths within it.
    static QStringList documents();

    static QStringList brokenLinks(const Markdown &document);
    static QStringList unreadablePictures(const Markdown &document);
    /// What is written as code and begins with a folder of the tree, or ends as its sources do. Parts in capitals or
    /// angle brackets and stars stand for any name. Not looked for is what is built, which lies in no folder of the
    /// tree, and a file without a folder that a block of code names: a reader makes it.
    QStringList missingPaths(const Markdown &document) const;
    /// What stands after ./dev.
    static QStringList unknownCommands(const Markdown &document);
    /// Options after the name of a program, or alone. Of a program that is not built nothing is known.
    QStringList unknownOptions(const Markdown &document);

private:
    bool isInTree(const QString &path) const;
    bool isKnown(const QString &option, const QString &program, const QString &command);
    bool hasOption(const QString &option, const QString &program, const QString &command);
    QString helpOf(const QString &program, const QString &command);

    QSet<QString> paths;
    QSet<QString> fileNames;
    QMap<QString, QString> helps;
};
