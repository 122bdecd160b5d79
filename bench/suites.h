#pragma once

class Report;

/// Every benchmark in all its sizes, or each of them once in a small one.
enum class Extent { Whole, Smoke };

// Each registers its benchmarks with the library and describes their table to the report.

void addBridgeBenchmarks(Report &report, Extent extent);
void addFileBenchmarks(Report &report, Extent extent);
void addGridBenchmarks(Report &report, Extent extent);
void addPanelBenchmarks(Report &report, Extent extent);
void addLogBenchmarks(Report &report, Extent extent);
void addCycleBenchmarks(Report &report, Extent extent);
void addRunBenchmarks(Report &report, Extent extent);
void addStartBenchmarks(Report &report, Extent extent);
void addStudyBenchmarks(Report &report, Extent extent);
