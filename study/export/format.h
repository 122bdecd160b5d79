#pragma once

#include "study/export/summary.h"

namespace study {

/// The forms that tables are written in.
enum class Format { Csv, Xlsx, Sav, Dta, Json };

/// How a format writes that a value is missing for the reason of this place: SPSS has a number of the variable's own,
/// Stata .a, .b and .c; in the others the cell is empty, as a text is everywhere.
Value missingMark(Format format, const Column &column, const Summary &summary, qsizetype reason);

/// Why a table is too large for a format, empty where it isn't.
QString objectionToSize(Format format, const Table &table);

/// The shortest text that is read as this number again.
QString numberText(double number);

} // namespace study
