#include "study/command.h"
#include "study/output.h"
#include "study/report/html.h"
#include "study/report/pdf.h"
#include "study/report/recorded.h"
#include "study/report/report.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr const char *reportRules =
    R"(The report has: at a glance, how it was made, the panel, completeness, a page for
each question, sameness, words (refusals, hedges, reasoning that names another
label), what the answers are held against, and a codebook with all formulas. It
is one file without scripts that asks for nothing from the network.

A table to hold the answers against has a line of names and the columns
  question   its number, or its wording
  label      or "value", for a Numeric question
  share      or "count"
as in: question,label,count
       1,Tea,22
What matches no question or no label is listed and not scored. Another project
is compared question by question, and pair by pair where personas are the same.

--json prints one object: "path", "bytes", "project" ("file", "sha256"),
"personas", "questions", "answers" (all that are stored), "flags" (for each
"text" and "anchor", the place in the report).

Exit status: 0 done, 2 usage, 3 file can't be read or written.)";

struct Wanted
{
    std::string project;
    std::string out;
    std::string against;
    std::string record;
    bool force = false;
    bool json = false;
};

/// Which form a file's name asks for.
enum class Form { Html, Pdf };

std::optional<Form> formOf(const QString &path)
{
    if (path.endsWith(".html"_L1, Qt::CaseInsensitive) || path.endsWith(".htm"_L1, Qt::CaseInsensitive))
        return Form::Html;
    if (path.endsWith(".pdf"_L1, Qt::CaseInsensitive))
        return Form::Pdf;
    return std::nullopt;
}

Exit refused(const QString &reason)
{
    say(reason);
    return Exit::File;
}

/// What a machine wants to know of a report without reading it.
QByteArray told(const QString &path, const QByteArray &written, const Project &project, const QList<Flag> &flags)
{
    QJsonArray found;
    for (const Flag &flag : flags)
        found.append(QJsonObject{{u"text"_s, flag.text}, {u"anchor"_s, flag.anchor}});
    const QJsonObject file{{u"file"_s, project.path}, {u"sha256"_s, QString::fromLatin1(project.sha256)}};
    return QJsonDocument(QJsonObject{{u"path"_s, path},
                                     {u"bytes"_s, written.size()},
                                     {u"project"_s, file},
                                     {u"personas"_s, project.personas.size()},
                                     {u"questions"_s, project.questions.size()},
                                     {u"answers"_s, project.answers.size()},
                                     {u"flags"_s, found}})
        .toJson();
}

Report reportOn(const Survey &survey, const ReportOptions &options)
{
    Progress progress(u"reporting"_s);
    return makeReport(survey, options, [&progress](qsizetype made, qsizetype all) { progress.show(made, all); });
}

Exit report(const Wanted &wanted)
{
    const QString out = QString::fromStdString(wanted.out);
    if (const QString objection = objectionTo(out, wanted.force); !objection.isEmpty())
        return refused(objection);
    const auto read = readProject(QString::fromStdString(wanted.project));
    if (const QString *reason = std::get_if<QString>(&read))
        return refused(*reason);
    const Survey survey(std::get<Project>(read));
    ReportOptions options;
    if (!wanted.against.empty()) {
        auto against = readAgainst(QString::fromStdString(wanted.against), survey);
        if (const QString *reason = std::get_if<QString>(&against))
            return refused(*reason);
        options.against = std::get<Against>(std::move(against));
    }
    if (!wanted.record.empty()) {
        auto recorded = readRecorded(QString::fromStdString(wanted.record));
        if (const QString *reason = std::get_if<QString>(&recorded))
            return refused(*reason);
        options.recorded = std::get<Recorded>(std::move(recorded));
    }
    const auto [document, flags] = reportOn(survey, options);
    const QByteArray bytes = formOf(out) == Form::Pdf ? toPdf(document) : toHtml(document);
    if (const QString failure = writeFile(out, bytes, wanted.force); !failure.isEmpty())
        return refused(failure);
    if (wanted.json)
        print(QString::fromUtf8(told(out, bytes, survey.project, flags)));
    return Exit::Done;
}

} // namespace

void addReport(CLI::App &app, Command &chosen)
{
    auto wanted = std::make_shared<Wanted>();
    auto *command = app.add_subcommand(
        "report",
        "Writes a report on the answers into one file, HTML or PDF: how they were made, what is missing, a page "
        "for each question, and how much they are one. The same project gives the same bytes.");
    command->add_option("PROJECT", wanted->project, "Project file (.ormt)")->required()->type_name("");
    command->add_option("--out", wanted->out, "File to write, by its name HTML (.html) or PDF (.pdf)")
        ->type_name("FILE")
        ->required()
        ->check(
            [](const std::string &path) {
                return formOf(QString::fromStdString(path)) ? std::string() : "wants a name that ends in .html or .pdf";
            },
            "");
    command
        ->add_option("--against", wanted->against,
                     "What to hold the answers against: shares of people in a table (.csv), or another project")
        ->type_name("FILE");
    command
        ->add_option("--record", wanted->record,
                     "Record of orrinet-bridge, to tell which models answered, with which settings")
        ->type_name("FILE");
    command->add_flag("--force", wanted->force, "Overwrite the file");
    command->add_flag(
        "--json", wanted->json,
        "Print what was written, of what, and all flags (the report's first page has seven) as JSON on the "
        "standard output");
    command->footer(reportRules);
    command->callback([&chosen, wanted] {
        chosen.draws = true;
        chosen.run = [wanted] { return report(*wanted); };
    });
}

} // namespace study
