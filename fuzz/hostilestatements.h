#pragma once

#include <QStringList>

class Bytes;

/// The names of all tables that the program reads, the one of SQLite's own last.
const QStringList &hostileTables();

/// The statement before those that may damage the file, since SQLite then takes what is written into the schema.
inline const QString allowSchemaChanges = QStringLiteral("PRAGMA writable_schema=ON");

/// The statements of the next thing to be done to a file. A letter says what, most often a second one to which table:
///   T t         makes the table anew, without types and keys
///   C t n       with so many columns in place of its own
///   V t kind    a view in its place
///   G t kind    a generated column as its last one
///   W t         WITHOUT ROWID
///   N t kind    gives it another name
///   X t kind    a trigger on it
///   I t values  a row
///   D t         drops it
///   S t value   a count of SQLite's numbering
///   Q t kind    an index
///   K t kind    a virtual table in its place
///   M t kind    changes what the schema says of it
///   A t         a further column
///   R kind      a pragma that the file keeps
QStringList nextStatements(Bytes &bytes);
