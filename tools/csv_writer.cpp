#include "tools/csv_writer.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace tz4::cli {

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

std::string CsvNumber(double value) {
  if (std::isnan(value)) return "";
  if (value == 0.0) return "0";  // also for -0
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.17g", value);
  return buffer;
}

void WriteCsv(std::ostream& out, const SeriesTable& table) {
  if (table.columns.size() != table.names.size()) {
    throw std::invalid_argument("CSV table: one name per column expected");
  }
  for (const auto& column : table.columns) {
    if (column.size() != table.time.size()) {
      throw std::invalid_argument("CSV table: every column needs one value per time");
    }
  }
  out << "time";
  for (const std::string& name : table.names) out << ',' << CsvField(name);
  out << '\n';
  std::string line;
  for (size_t row = 0; row < table.time.size(); ++row) {
    line = CsvNumber(table.time[row]);
    for (const auto& column : table.columns) {
      line += ',';
      line += CsvNumber(column[row]);
    }
    line += '\n';
    out << line;
  }
}

}  // namespace tz4::cli
