#pragma once

class Report;

// Each registers its benchmarks with the library and describes their table to the report.

void addGridBenchmarks(Report &report);
void addCycleBenchmarks(Report &report);
void addRunBenchmarks(Report &report);
void addStartBenchmarks(Report &report);
