#pragma once

#include "tests/support/shown.h"

// What the views show and what they have to show, in a form in which the two can be compared.

/// The tables of a project, but for SQLite's own.
const QStringList &projectTables();

/// Rows of values as texts, NULL being told from an empty text.
QStringList texts(const Rows &rows);

/// True if the questions are numbered 1, 2, 3 ...
bool isDense(Sql &database);

/// True while a cell of a table is being edited.
bool hasCellEditor(const QAbstractItemView *table);

/// The persona list and what its query gives.
QStringList shownPersonaRows(Stage &stage);
QStringList personaRows(Sql &source, const QString &filter);

/// The question list and what its query gives.
QStringList shownQuestionRows(Stage &stage);
QStringList questionRows(Stage &stage);

/// A chooser with the data of its entries.
QStringList entries(const QComboBox *chooser);
QStringList wantedPersonas(Stage &stage);
QStringList wantedQuestions(Stage &stage);

/// What the conversation box has to show for its choosers and edits as they are.
QString conversationText(Stage &stage);
