#pragma once

#include "study/cells.h"

#include <QList>
#include <QStringList>

#include <functional>
#include <variant>

// What is exported before it has a format: tables of typed columns, whose rows are made one at a time.

namespace study {

/// Nothing, a number, a text, or the reason why a question has no value.
using Value = std::variant<std::monostate, double, QString, Status>;

/// Nothing for an empty text.
inline Value textValue(const QString &text)
{
    return text.isEmpty() ? Value() : Value(text);
}

/// A variable.
struct Column
{
    enum class Type {
        Text,
        Number,
        Code, ///< a number that stands for a word
    };

    QString name = {};  ///< unique in its table but for case; letters, digits and _, 32 at most
    QString label = {}; ///< the wording
    Type type = Type::Text;
    QStringList codes = {}; ///< what the codes stand for
    int firstCode = 1;
    bool isOrdered = false;
    int question = -1; ///< its place in the questionnaire, -1 where it belongs to none
    /// Why a value may be missing, in the order of the codes that a format gives them.
    QList<Status> reasons = {};
};

struct Table
{
    QString name; ///< of its file or sheet
    QList<Column> columns;
    qsizetype rows = 0;
    std::function<QList<Value>(qsizetype)> row; ///< as many values as there are columns, the same at each call
};

/// A table of rows that are there already.
inline Table tableOf(const QString &name, const QList<Column> &columns, const QList<QList<Value>> &rows)
{
    return {
        .name = name, .columns = columns, .rows = rows.size(), .row = [rows](qsizetype row) { return rows.at(row); }};
}

} // namespace study
