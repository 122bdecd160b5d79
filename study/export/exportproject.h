#pragma once

#include "study/command.h"
#include "study/export/format.h"

#include <QString>

namespace study {

/// What an export is asked for.
struct ExportOptions
{
    QString project;
    Format format = Format::Csv;
    QString out; ///< a folder, or, for XLSX and JSON, a file
    bool force = false;
    bool byteOrderMark = false;
    bool json = false; ///< tells what was written on the standard output
};

/// Writes the long table, the wide one and the codebook of a project. Where one of the files is there already, nothing
/// is written unless by force.
Exit exportProject(const ExportOptions &options);

} // namespace study
