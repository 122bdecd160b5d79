#include "study/command.h"
#include "study/export/exportproject.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>

namespace study {

namespace {

const std::map<std::string, Format> formats{
    {"csv", Format::Csv}, {"xlsx", Format::Xlsx}, {"sav", Format::Sav}, {"dta", Format::Dta}, {"json", Format::Json}};

struct RawExport
{
    std::string project;
    std::string out;
    ExportOptions options;
};

void addExportOptions(CLI::App &command, RawExport &raw)
{
    command.add_option("PROJECT", raw.project, "Project file (.ormt)")->required()->type_name("");
    command
        .add_option("--to", raw.options.format,
                    "csv (long.csv, wide.csv, codebook.csv), xlsx (export.xlsx, three sheets), sav (long.sav and "
                    "wide.sav for SPSS, codebook.csv), dta (the same for Stata), json (export.json, one document)")
        ->required()
        ->transform(CLI::CheckedTransformer(formats).description(""))
        ->type_name("FORMAT");
    command.add_option("--out", raw.out, "Folder, made where it is missing; or the file, ending in .xlsx or .json")
        ->required()
        ->type_name("PATH");
    command.add_flag("--force", raw.options.force, "Overwrite files; otherwise nothing is written where one is there");
    command.add_flag("--bom", raw.options.byteOrderMark, "Begin CSV files with a byte order mark, as Excel wants it");
    command.add_flag("--json", raw.options.json,
                     "Print what was written, and what did not fit, as JSON on the standard output");
}

} // namespace

void addExport(CLI::App &app, Command &chosen)
{
    auto *command = app.add_subcommand(
        "export", "Writes the answers as tables: long (a row for each answer and each open pair), wide (a row for "
                  "each persona), and a codebook.");
    command->footer(
        "In the wide table q12 is the answer to question 12 as a code (from 1, in the order of the labels) or a "
        "number, q12_3 what it says of the third label (1 named, 0 not; or its rank), q12t its text, q12r the "
        "reasoning, q12s the status. A text is a label where it is the same, or else the same but for case and white "
        "space; several are named by a list of them, one a line or separated by semicolons or commas, or by a JSON "
        "array. Nothing is guessed: what does not match is \"out of list\", and what it says is in the long table. A "
        "value that is "
        "missing is an empty cell; SPSS files have user-missing values (-97 open, -98 out of list or not a number, "
        "-99 unreadable), Stata files .a, .b and .c. Of several answers to a pair the newest counts, as in the "
        "grid.\n"
        "In CSV files a text that begins with =, +, -, @, a tab or a CR has an apostrophe before it, so that no "
        "spreadsheet takes it for a formula. What a format can't hold is cut, which is told here and noted in the "
        "codebook.");
    const auto raw = std::make_shared<RawExport>();
    addExportOptions(*command, *raw);
    command->callback([&chosen, raw] {
        raw->options.project = QString::fromStdString(raw->project);
        raw->options.out = QString::fromStdString(raw->out);
        chosen.run = [raw] { return exportProject(raw->options); };
    });
}

} // namespace study
