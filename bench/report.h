#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Collects the counters of all benchmarks and prints them as Markdown tables. The first part of a benchmark's name is
/// the table, the rest the row.
class Report : public benchmark::BenchmarkReporter
{
public:
    enum class Unit { Milliseconds, Seconds, Nanoseconds, Microseconds, Kilobytes, Megabytes, Ratio, Count };
    struct Column
    {
        std::string title;
        std::string counter; ///< times in seconds, sizes in bytes
        Unit unit;
    };

    void addTable(const std::string &name, const std::string &title, const std::vector<Column> &columns);
    void addRow(const std::string &table, const std::string &name, const std::map<std::string, double> &counters);

    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void print() const;

private:
    struct Table
    {
        std::string name;
        std::string title;
        std::vector<Column> columns;
        std::vector<std::pair<std::string, std::map<std::string, double>>> rows;
    };
    static void print(const Table &table);

    std::vector<Table> tables;
};
