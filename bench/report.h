#pragma once

#include <bench/measure.h>

namespace bench
{
/// The rows as a Markdown table, each against our own row of the same job.
std::string formatTable(const std::vector<Row> &rows);

/// Write bench-report.md and bench-report.json to the working directory.  False when that fails.
bool writeReport(const std::vector<Row> &rows);
}  // namespace bench
