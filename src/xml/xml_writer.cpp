// The writer of CXmlNode: one line per element, 2 more blanks of indent a
// level, values and body text written raw, and " />" for an empty element
// (the blank is needed by the reader).
#include <cstdio>

#include "xml/xml_node.h"

namespace tz4 {

void CXmlNode::AppendOpenTag(std::string& out) const {
  out += '<';
  out += name;
  for (std::size_t i = 0; i + 1 < attributes.size(); i += 2) {
    out += ' ';
    out += attributes[i];
    out += "=\"";
    out += attributes[i + 1];
    out += '"';
  }
}

void CXmlNode::WriteIndented(std::vector<std::string>& lines, int indent) const {
  const std::string margin(static_cast<std::size_t>(indent > 0 ? indent : 0), ' ');
  std::string line = margin;
  AppendOpenTag(line);
  if (!children.empty()) {
    line += '>';
    lines.push_back(std::move(line));
    for (const auto& child : children) child->WriteIndented(lines, indent + 2);
    lines.push_back(margin + "</" + name + ">");
  } else if (text.empty()) {
    line += " />";
    lines.push_back(std::move(line));
  } else {
    line += '>';
    line += text;
    line += "</";
    line += name;
    line += '>';
    lines.push_back(std::move(line));
  }
}

std::string CXmlNode::WriteInline() const {
  std::string out;
  AppendOpenTag(out);
  if (!children.empty()) {
    out += '>';
    for (const auto& child : children) out += child->WriteInline();
    out += "</" + name + ">";
  } else if (text.empty()) {
    out += " />";
  } else {
    out += '>' + text + "</" + name + ">";
  }
  return out;
}

std::string CXmlNode::WriteDocument() const {
  std::vector<std::string> lines;
  lines.push_back("<?xml version=\"1.0\"?>");
  WriteIndented(lines, 0);
  std::size_t total = 0;
  for (const auto& line : lines) total += line.size() + 1;
  std::string out;
  out.reserve(total);
  for (const auto& line : lines) {
    out += line;
    out += '\n';
  }
  return out;
}

bool CXmlNode::SaveToFile(const std::string& path) const {
  // Build the whole text first, so that a failure to build it leaves the
  // file as it was.
  const std::string content = WriteDocument();
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (!file) return false;
  const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  const bool closed = std::fclose(file) == 0;
  return written && closed;
}

}  // namespace tz4
