// Tree operations, typed attribute helpers and the two-way archive helpers
// of CXmlNode, and the percent-encoding of attribute values.
#include "xml/xml_node.h"

#include <climits>
#include <utility>

#include "expr/numtext.h"

namespace tz4 {

namespace {

bool StaysUnencoded(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
  switch (c) {
    case '!': case '\'': case '(': case ')': case '*':
    case '-': case '.': case '_': case '~':
      return true;
    default:
      return false;
  }
}

int HexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsScanfSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The "%d" conversion into a result preset to 0: leading white space, an
// optional sign and decimal digits; no digits leave 0. Out-of-range numbers
// saturate.
int ScanInt(const std::string& text) {
  std::size_t i = 0;
  while (i < text.size() && IsScanfSpace(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  long long magnitude = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    if (magnitude <= static_cast<long long>(INT_MAX) + 1) magnitude = magnitude * 10 + (text[i] - '0');
  }
  long long result = negative ? -magnitude : magnitude;
  if (result > INT_MAX) return INT_MAX;
  if (result < INT_MIN) return INT_MIN;
  return static_cast<int>(result);
}

}  // namespace

std::string PercentEncode(const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (c == ' ') {
      out += '+';
    } else if (StaysUnencoded(c)) {
      out += ch;
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
  return out;
}

std::string PercentDecode(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c == '+') {
      c = ' ';
      ++i;
    } else if (c == '%') {
      // Up to two hex digits give a byte; a "%" with no digit behind it
      // stands for itself, so that a hand-written name is not cut short.
      int value = 0, digits = 0;
      for (std::size_t k = i + 1; k < i + 3 && k < text.size(); ++k) {
        const int digit = HexDigitValue(text[k]);
        if (digit < 0) break;
        value = value * 16 + digit;
        ++digits;
      }
      c = digits == 0 ? '%' : static_cast<char>(value);
      i += 1 + static_cast<std::size_t>(digits);
    } else {
      ++i;
    }
    if (c == '\0') break;  // the result is a NUL-terminated text
    out += c;
  }
  return out;
}

CXmlNode::CXmlNode() = default;

CXmlNode::CXmlNode(std::string elementName) : name(std::move(elementName)) {}

CXmlNode::~CXmlNode() {
  // Take the subtree apart without recursion, so that a deep tree cannot
  // exhaust the stack on destruction.
  std::vector<std::unique_ptr<CXmlNode>> pending = std::move(children);
  while (!pending.empty()) {
    std::unique_ptr<CXmlNode> node = std::move(pending.back());
    pending.pop_back();
    for (auto& child : node->children) pending.push_back(std::move(child));
    node->children.clear();
  }
}

void CXmlNode::Clear() {
  children.clear();
  children.shrink_to_fit();
  attributes.clear();
  attributes.shrink_to_fit();
  text.clear();
  storing = true;
}

CXmlNode* CXmlNode::AddChild(const std::string& childName) {
  auto child = std::make_unique<CXmlNode>(childName);
  child->storing = storing;
  children.push_back(std::move(child));
  return children.back().get();
}

CXmlNode* CXmlNode::FindChild(const std::string& childName, int start) {
  searchName = childName;
  searchIndex = start;
  if (start < 0) return nullptr;
  for (std::size_t i = static_cast<std::size_t>(start); i < children.size(); ++i) {
    CXmlNode* child = children[i].get();
    child->storing = storing;
    if (childName.empty() || child->name == childName) {
      searchIndex = static_cast<int>(i);
      return child;
    }
  }
  return nullptr;
}

void CXmlNode::DeleteChild(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= children.size()) return;
  std::unique_ptr<CXmlNode> doomed = std::move(children[static_cast<std::size_t>(index)]);
  children.erase(children.begin() + index);
  if (children.empty()) children.shrink_to_fit();
}

int CXmlNode::GetChildCount() const { return static_cast<int>(children.size()); }

CXmlNode* CXmlNode::GetChild(int index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= children.size()) return nullptr;
  return children[static_cast<std::size_t>(index)].get();
}

int CXmlNode::GetAttributeCount() const { return static_cast<int>(attributes.size() / 2); }

void CXmlNode::GetAttribute(int index, std::string& attrName, std::string& value) const {
  if (index < 0 || index >= GetAttributeCount()) {
    attrName.clear();
    value.clear();
    return;
  }
  attrName = attributes[2 * static_cast<std::size_t>(index)];
  value = attributes[2 * static_cast<std::size_t>(index) + 1];
}

int CXmlNode::FindAttribute(const std::string& attrName) const {
  for (std::size_t i = 0; i + 1 < attributes.size(); i += 2) {
    if (attributes[i] == attrName) return static_cast<int>(i / 2);
  }
  return -1;
}

bool CXmlNode::HasAttribute(const std::string& attrName) const { return FindAttribute(attrName) >= 0; }

void CXmlNode::AddAttribute(const std::string& attrName, const std::string& value) {
  attributes.reserve(attributes.size() + 2);  // keeps the list even if a copy fails
  attributes.push_back(attrName);
  attributes.push_back(value);
}

void CXmlNode::SetAttribute(const std::string& attrName, const std::string& value) {
  const int index = FindAttribute(attrName);
  if (index < 0) {
    AddAttribute(attrName, value);
  } else {
    attributes[2 * static_cast<std::size_t>(index) + 1] = value;
  }
}

std::string CXmlNode::GetAttribute(const std::string& attrName, const std::string& def) const {
  const int index = FindAttribute(attrName);
  if (index < 0) return def;
  return attributes[2 * static_cast<std::size_t>(index) + 1];
}

void CXmlNode::AddIntAttribute(const std::string& attrName, int value) {
  AddAttribute(attrName, std::to_string(value));
}

void CXmlNode::AddDoubleAttribute(const std::string& attrName, double value) {
  AddAttribute(attrName, FormatNumber(value, 12));
}

void CXmlNode::AddEncodedAttribute(const std::string& attrName, const std::string& value) {
  AddAttribute(attrName, PercentEncode(value));
}

void CXmlNode::SetEncodedText(const std::string& value) { text = PercentEncode(value); }

int CXmlNode::GetIntAttribute(const std::string& attrName, int def) const {
  const int index = FindAttribute(attrName);
  if (index < 0) return def;
  const std::string& value = attributes[2 * static_cast<std::size_t>(index) + 1];
  return value.empty() ? def : ScanInt(value);
}

double CXmlNode::GetDoubleAttribute(const std::string& attrName, double def) const {
  const int index = FindAttribute(attrName);
  if (index < 0) return def;
  const std::string& value = attributes[2 * static_cast<std::size_t>(index) + 1];
  return value.empty() ? def : PlainTextToDouble(value);
}

bool CXmlNode::GetBoolAttribute(const std::string& attrName, bool def) const {
  const int index = FindAttribute(attrName);
  if (index < 0) return def;
  const std::string& value = attributes[2 * static_cast<std::size_t>(index) + 1];
  return value.empty() ? def : value == "true";
}

std::string CXmlNode::GetEncodedAttribute(const std::string& attrName, const std::string& def) const {
  const int index = FindAttribute(attrName);
  if (index < 0) return def;
  return PercentDecode(attributes[2 * static_cast<std::size_t>(index) + 1]);
}

std::string CXmlNode::GetEncodedText() const { return PercentDecode(text); }

void CXmlNode::ArchiveString(const std::string& attrName, std::string& value) {
  if (storing) {
    AddAttribute(attrName, value);
  } else {
    value = GetAttribute(attrName, value);
  }
}

void CXmlNode::ArchiveEncodedString(const std::string& attrName, std::string& value) {
  if (storing) {
    AddEncodedAttribute(attrName, value);
  } else {
    value = GetEncodedAttribute(attrName, value);
  }
}

void CXmlNode::ArchiveChildString(const std::string& childName, std::string& value) {
  if (storing) {
    AddChild(childName)->AddEncodedAttribute("v", value);
  } else if (CXmlNode* child = FindChild(childName)) {
    value = child->GetEncodedAttribute("v", value);
  }
}

void CXmlNode::ArchiveValue(const std::string& attrName, std::string& formulaText, double& value) {
  const std::string textName = attrName + "_str";
  if (storing) {
    if (!formulaText.empty()) AddEncodedAttribute(textName, formulaText);
    AddDoubleAttribute(attrName, value);
  } else {
    formulaText = GetEncodedAttribute(textName, "");
    value = GetDoubleAttribute(attrName, value);
  }
}

void CXmlNode::ArchiveInt(const std::string& attrName, int& value) {
  if (storing) {
    AddIntAttribute(attrName, value);
  } else {
    value = GetIntAttribute(attrName, value);
  }
}

void CXmlNode::ArchiveDouble(const std::string& attrName, double& value) {
  if (storing) {
    AddDoubleAttribute(attrName, value);
  } else {
    value = GetDoubleAttribute(attrName, value);
  }
}

void CXmlNode::ArchiveBool(const std::string& attrName, bool& value) {
  if (storing) {
    AddAttribute(attrName, value ? "true" : "false");
  } else {
    value = GetBoolAttribute(attrName, value);
  }
}

}  // namespace tz4
