#include "study/export/exportproject.h"

#include "study/export/codebook.h"
#include "study/export/csv.h"
#include "study/export/dta.h"
#include "study/export/json.h"
#include "study/export/longtable.h"
#include "study/export/sav.h"
#include "study/export/widetable.h"
#include "study/export/workbook.h"
#include "study/output.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// What was written of a table.
struct Written
{
    QString path;
    QString table;
    qsizetype rows = 0;
    qsizetype columns = 0;
    QList<Loss> losses;
};

/// Writes a file in one go: it gets its name when it is whole. Returns why it couldn't, empty where it could.
QString writeThrough(const QString &path, const std::function<QString(QIODevice &)> &write)
{
    QSaveFile file(path);
    QString failure;
    if (!file.open(QIODevice::WriteOnly))
        failure = file.errorString();
    else if (failure = write(file); failure.isEmpty() && !file.commit())
        failure = file.errorString();
    return failure.isEmpty() ? QString() : u"%1 can't be written: %2"_s.arg(path, failure);
}

/// The same table, which shows how far it is.
Table watched(Table table, Progress &progress)
{
    table.row = [row = std::move(table.row), all = table.rows, &progress](qsizetype place) {
        progress.show(place + 1, all);
        return row(place);
    };
    return table;
}

/// How wide the texts are, before the first of them.
bool needsWidths(Format format)
{
    return format == Format::Sav || format == Format::Dta;
}

void summariseBefore(Described &described)
{
    described.summaries = summarise(described.table);
}

/// The others are written in the one pass in which the codebook learns what was in the columns.
void summariseMeanwhile(Described &described)
{
    described.summaries.resize(described.table.columns.size());
    described.table.row = [row = std::move(described.table.row), columns = described.table.columns,
                           &summaries = described.summaries](qsizetype place) {
        QList<Value> values = row(place);
        takeRow(summaries, columns, values);
        return values;
    };
}

class Export
{
public:
    Export(const ExportOptions &wanted, const Project &read);

    Exit run();

private:
    QString pathOf(const QString &table) const;
    QStringList paths() const;
    /// Why nothing can be written.
    QStringList objections() const;

    QString writeFiles();
    QString writeData(const Table &table, const QList<Summary> &summaries);
    QString writeTable(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses) const;
    QString writeSheets(const QString &path);
    QString writeDocument(QIODevice &out);
    void note(const Table &table, const Losses &losses);
    Table codebookSoFar() const;
    void tell() const;

    const ExportOptions &options;
    const Project &project;
    Cells cells;
    Progress progress{u"exporting"_s};
    QList<Described> tables;
    QList<Written> written;
};

Export::Export(const ExportOptions &wanted, const Project &read)
    : options(wanted)
    , project(read)
    , cells(read)
{
    for (const Table &table : {longTable(project, cells), wideTable(project, cells)})
        tables.append({.table = watched(table, progress), .summaries = {}, .losses = {}});
}

bool isOneFile(Format format)
{
    return format == Format::Xlsx || format == Format::Json;
}

QString suffixOf(Format format)
{
    switch (format) {
    case Format::Csv:
        return u".csv"_s;
    case Format::Xlsx:
        return u".xlsx"_s;
    case Format::Sav:
        return u".sav"_s;
    case Format::Dta:
        return u".dta"_s;
    case Format::Json:
        return u".json"_s;
    }
    Q_UNREACHABLE_RETURN({});
}

QString Export::pathOf(const QString &table) const
{
    const QString suffix = suffixOf(options.format);
    if (!isOneFile(options.format))
        return QDir(options.out).filePath(table + (table == "codebook"_L1 ? u".csv"_s : suffix));
    return options.out.endsWith(suffix, Qt::CaseInsensitive) ? options.out
                                                             : QDir(options.out).filePath("export"_L1 + suffix);
}

QStringList Export::paths() const
{
    QStringList all{pathOf(u"long"_s), pathOf(u"wide"_s), pathOf(u"codebook"_s)};
    all.removeDuplicates();
    return all;
}

QStringList Export::objections() const
{
    QStringList all;
    for (const Described &described : tables)
        all << objectionToSize(options.format, described.table);
    for (const auto files = paths(); const QString &path : files) {
        if (QFileInfo(path) == QFileInfo(project.path))
            all << u"%1 is the project itself"_s.arg(path);
        else
            all << objectionTo(path, options.force);
    }
    all.removeAll(QString());
    return all;
}

Exit Export::run()
{
    QStringList problems = objections();
    const QString folder = QFileInfo(paths().at(0)).path();
    if (problems.isEmpty() && !QDir().mkpath(folder))
        problems << u"%1 can't be made"_s.arg(folder);
    if (problems.isEmpty())
        problems << writeFiles();
    problems.removeAll(QString());
    for (const QString &problem : std::as_const(problems))
        say(problem);
    if (!problems.isEmpty())
        return Exit::File;
    tell();
    return Exit::Done;
}

QString Export::writeFiles()
{
    for (Described &described : tables)
        needsWidths(options.format) ? summariseBefore(described) : summariseMeanwhile(described);
    if (options.format == Format::Xlsx)
        return writeFileBy(pathOf({}), options.force, [this](const QString &path) { return writeSheets(path); });
    if (options.format == Format::Json)
        return writeThrough(pathOf({}), [this](QIODevice &out) { return writeDocument(out); });
    for (qsizetype place = 0; place < tables.size(); ++place) {
        if (const QString failure = writeData(tables.at(place).table, tables.at(place).summaries); !failure.isEmpty())
            return failure;
        tables[place].losses = written.last().losses;
    }
    Losses losses;
    const Table book = codebookSoFar();
    const QString failure = writeThrough(pathOf(book.name), [&](QIODevice &out) {
        writeCsv(out, book, options.byteOrderMark, losses);
        return QString();
    });
    note(book, losses);
    return failure;
}

QString Export::writeData(const Table &table, const QList<Summary> &summaries)
{
    Losses losses;
    const QString failure =
        writeThrough(pathOf(table.name), [&](QIODevice &out) { return writeTable(out, table, summaries, losses); });
    note(table, losses);
    return failure;
}

QString Export::writeTable(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses) const
{
    if (options.format == Format::Sav)
        return writeSav(out, table, summaries, losses);
    if (options.format == Format::Dta)
        return writeDta(out, table, summaries, losses);
    writeCsv(out, table, options.byteOrderMark, losses);
    return {};
}

QString Export::writeSheets(const QString &path)
{
    Workbook book(path, QFileInfo(path).path());
    for (Described &described : tables) {
        Losses losses;
        book.add(described.table, losses);
        described.losses = losses.list();
        note(described.table, losses);
    }
    Losses losses;
    const Table last = codebookSoFar();
    book.add(last, losses);
    note(last, losses);
    return book.close();
}

QString Export::writeDocument(QIODevice &out)
{
    out.write("{\"project\":" + jsonText(QFileInfo(project.path).fileName()) + ",\n\"sha256\":\"" + project.sha256 +
              '"');
    const auto writeMember = [&](const Table &table, Losses &losses) {
        out.write(",\n" + jsonText(table.name) + ':');
        writeJson(out, table, losses);
        note(table, losses);
    };
    for (Described &described : tables) {
        Losses losses;
        writeMember(described.table, losses);
        described.losses = losses.list();
    }
    Losses losses;
    writeMember(codebookSoFar(), losses);
    out.write("}\n");
    return {};
}

void Export::note(const Table &table, const Losses &losses)
{
    written.append({.path = pathOf(table.name),
                    .table = table.name,
                    .rows = table.rows,
                    .columns = table.columns.size(),
                    .losses = losses.list()});
}

Table Export::codebookSoFar() const
{
    return codebook(project, tables, options.format);
}

QByteArray reportOn(const Written &table)
{
    QByteArrayList losses;
    for (const Loss &loss : table.losses) {
        losses << "{\"variable\":" + jsonText(loss.column) + ",\"what\":" + jsonText(loss.what) +
                      ",\"count\":" + QByteArray::number(loss.count) + '}';
    }
    return "{\"path\":" + jsonText(table.path) + ",\"table\":" + jsonText(table.table) +
           ",\"rows\":" + QByteArray::number(table.rows) + ",\"columns\":" + QByteArray::number(table.columns) +
           ",\"losses\":[" + losses.join(',') + "]}";
}

void Export::tell() const
{
    QByteArrayList reports;
    for (const Written &table : written) {
        const QString file = QFileInfo(table.path).fileName();
        const QString place = isOneFile(options.format) ? u"%1, %2"_s.arg(file, table.table) : file;
        for (const auto all = sentencesOf(place, table.losses); const QString &sentence : all)
            say(sentence);
        reports << reportOn(table);
    }
    if (options.json)
        print(QString::fromUtf8("{\"written\":[" + reports.join(",\n") + "]}\n"));
}

} // namespace

Exit exportProject(const ExportOptions &options)
{
    const auto project = readProject(options.project);
    if (const auto *reason = std::get_if<QString>(&project)) {
        say(*reason);
        return Exit::File;
    }
    return Export(options, std::get<Project>(project)).run();
}

} // namespace study
