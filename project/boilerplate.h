#pragma once

#include <QString>

#include <optional>

class QSqlDatabase;

/// The texts put before and after the persona in what is sent to the model.
struct Boilerplate
{
    QString preamble;
    QString postamble;
};

/// The first row of the table boilerplate, nothing where there is none or it can't be read.
std::optional<Boilerplate> readBoilerplate(const QSqlDatabase &database);

/// Stores the default texts as a row; a failure goes unnoticed.
void insertDefaultBoilerplate(const QSqlDatabase &database);
