#pragma once

#include "study/export/table.h"

/// A value as a text: a reason in angle brackets, nothing as an empty text.
QString shownValue(const study::Value &value);

/// The names of a table's columns.
QStringList columnNames(const study::Table &table);

/// The column of this name. The test fails where there is none.
study::Column columnOf(const study::Table &table, const QString &name);

/// The values of a column from top to bottom, as texts.
QStringList columnShown(const study::Table &table, const QString &name);

/// The rows of a table as texts.
QList<QStringList> rowsShown(const study::Table &table);
