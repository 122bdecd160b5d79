#pragma once

#include <QMap>
#include <QStringList>

/// A file of SPSS or Stata as the library's own reader gives it.
struct StatFile
{
    explicit StatFile(const QString &path);

    QString failure; ///< empty where it was read
    QStringList names;
    QStringList wordings;
    QStringList formats; ///< how a value is printed: "A40", "F8.0"
    /// By variable: what its codes and missing values stand for.
    QMap<QString, QMap<QString, QString>> valueLabels;
    /// Numbers as texts; a missing one as "." or, where it has a reason, ".a" or "-97 missing".
    QList<QStringList> rows;
    QString time; ///< of its making, in local time
};
