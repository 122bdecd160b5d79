#include "bench/report.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSysInfo>
#include <QVariant>

#include <cstdio>
#include <thread>

using namespace Qt::StringLiterals;

void Report::addTable(const std::string &name, const std::string &title, const std::vector<Column> &columns)
{
    tables.push_back({name, title, columns, {}});
}

void Report::addRow(const std::string &table, const std::string &name, const std::map<std::string, double> &counters)
{
    for (Table &known : tables) {
        if (known.name == table)
            known.rows.emplace_back(name, counters);
    }
}

bool Report::ReportContext(const Context & /*context*/)
{
    return true;
}

void Report::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        // The library appends the number of iterations and the way of timing behind further slashes.
        const std::string &name = run.run_name.function_name;
        std::fprintf(stderr, "%s\n", name.c_str());
        const size_t slash = name.find('/');
        std::map<std::string, double> counters;
        for (const auto &[counter, value] : run.counters)
            counters[counter] = value.value;
        addRow(name.substr(0, slash), name.substr(slash + 1), counters);
    }
}

static QString processor()
{
    QFile file(u"/proc/cpuinfo"_s);
    if (file.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = file.readAll().split('\n');
        for (const QByteArray &line : lines) {
            if (line.startsWith("model name"))
                return QString::fromLatin1(line.mid(line.indexOf(':') + 1).trimmed());
        }
    }
    return QSysInfo::currentCpuArchitecture();
}

static QString sqliteVersion()
{
    QString version;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"version"_s);
        database.setDatabaseName(u":memory:"_s);
        database.open();
        QSqlQuery query(u"SELECT sqlite_version()"_s, database);
        if (query.next())
            version = query.value(0).toString();
    }
    QSqlDatabase::removeDatabase(u"version"_s);
    return version;
}

/// As many as make three digits.
static int decimals(double value)
{
    if (value < 10)
        return 2;
    return value < 100 ? 1 : 0;
}

static std::string shown(double value, Report::Unit unit)
{
    struct Form
    {
        double factor;
        const char *suffix;
    };
    static const std::map<Report::Unit, Form> forms{{Report::Unit::Milliseconds, {1e3, " ms"}},
                                                    {Report::Unit::Seconds, {1, " s"}},
                                                    {Report::Unit::Nanoseconds, {1e9, " ns"}},
                                                    {Report::Unit::Microseconds, {1e6, " µs"}},
                                                    {Report::Unit::Kilobytes, {1.0 / 1024, " KB"}},
                                                    {Report::Unit::Megabytes, {1.0 / 1024 / 1024, " MB"}},
                                                    {Report::Unit::Ratio, {1, ""}},
                                                    {Report::Unit::Count, {1, ""}}};
    const Form &form = forms.at(unit);
    const double scaled = value * form.factor;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f%s", unit == Report::Unit::Count ? 0 : decimals(scaled), scaled, form.suffix);
    return text;
}

void Report::print(const Table &table)
{
    std::printf("\n### %s\n\n|  |", table.title.c_str());
    for (const Column &column : table.columns)
        std::printf(" %s |", column.title.c_str());
    std::printf("\n|---|");
    for (size_t column = 0; column < table.columns.size(); ++column)
        std::printf("---:|");
    std::printf("\n");
    for (const auto &[name, counters] : table.rows) {
        std::printf("| %s |", name.c_str());
        for (const Column &column : table.columns) {
            const auto found = counters.find(column.counter);
            std::printf(" %s |", found == counters.end() ? "" : shown(found->second, column.unit).c_str());
        }
        std::printf("\n");
    }
}

void Report::print() const
{
    std::printf("%s, %u cores; %s; Qt %s, SQLite %s\n", qUtf8Printable(processor()),
                std::thread::hardware_concurrency(), qUtf8Printable(QSysInfo::prettyProductName()), qVersion(),
                qUtf8Printable(sqliteVersion()));
    for (const Table &table : tables) {
        if (!table.rows.empty())
            print(table);
    }
}
