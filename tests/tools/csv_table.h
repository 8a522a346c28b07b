// Reads the CSV that "tz4 run" writes back into columns, for the tests.
#pragma once
#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace tz4_tool_test {

struct CsvColumns {
  std::vector<std::string> header;
  std::map<std::string, std::vector<double>> columns;  // by header name

  const std::vector<double>& operator[](const std::string& name) const { return columns.at(name); }
  size_t Rows() const { return columns.empty() ? 0 : columns.begin()->second.size(); }

  // The value of column `name` at the last row whose time is <= t.
  double At(const std::string& name, double t) const {
    const auto& time = columns.at("time");
    double v = std::numeric_limits<double>::quiet_NaN();
    for (size_t i = 0; i < time.size() && time[i] <= t; ++i) v = columns.at(name)[i];
    return v;
  }
};

// Plain fields only (the tests name no trace with a comma).
inline CsvColumns ParseCsv(const std::string& text) {
  CsvColumns table;
  std::istringstream in(text);
  std::string line;
  auto split = [](const std::string& l) {
    std::vector<std::string> fields;
    std::string field;
    std::istringstream s(l);
    while (std::getline(s, field, ',')) fields.push_back(field);
    if (!l.empty() && l.back() == ',') fields.push_back("");
    return fields;
  };
  if (!std::getline(in, line)) return table;
  table.header = split(line);
  for (const auto& name : table.header) table.columns[name];
  while (std::getline(in, line)) {
    const auto fields = split(line);
    for (size_t i = 0; i < table.header.size(); ++i) {
      table.columns[table.header[i]].push_back(i < fields.size() && !fields[i].empty()
                                                   ? std::stod(fields[i])
                                                   : std::numeric_limits<double>::quiet_NaN());
    }
  }
  return table;
}

}  // namespace tz4_tool_test
