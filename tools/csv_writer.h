// Comma-separated output of a series table: a header line ("time" and one
// name per column), then one line per sample time. Numbers are written at
// full precision ("%.17g") so that a reader gets the very doubles back; a
// zero is "0" whatever its sign, and a cell without data is left empty.
// Fields with a comma, a quote or a line break are quoted, quotes doubled.
#pragma once
#include <ostream>
#include <string>

#include "tools/series.h"

namespace tz4::cli {

std::string CsvField(const std::string& text);
std::string CsvNumber(double value);  // "%.17g"; NaN gives ""

void WriteCsv(std::ostream& out, const SeriesTable& table);

}  // namespace tz4::cli
