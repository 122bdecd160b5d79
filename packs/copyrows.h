#pragma once

#include <QStringView>

class QSqlDatabase;
class QSqlQuery;

/// The statements that read and write all columns of a persona; those of a pack are those of a project.
inline constexpr QStringView selectPersonaRows =
    u"SELECT uuid,name,attributes,system_prompt,notes,created_at,modified_at FROM personas";
inline constexpr QStringView insertPersonaRow =
    u"INSERT INTO personas (uuid,name,attributes,system_prompt,notes,created_at,modified_at) VALUES (?,?,?,?,?,?,?)";

/// Runs @p insert on @p target with the values of the current row of @p row, each unchanged.
/// A failure is logged nowhere; the query tells of it.
QSqlQuery insertRow(const QSqlDatabase &target, QStringView insert, const QSqlQuery &row);

/// Runs @p insert on @p target for each row that @p select gives on @p source. A row that fails is left out, and a
/// failing @p select gives no rows.
void copyRows(const QSqlDatabase &source, QStringView select, const QSqlDatabase &target, QStringView insert);
