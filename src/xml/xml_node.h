// CXmlNode: one element of the in-memory XML tree of a circuit file, and the
// two-way archive that every serialisable object works through.
//
// The `storing` flag gives the direction: true while the tree is being
// written to, false while it is being read from. Each archive routine is
// written once and calls the two-way helpers below (or looks at `storing`
// itself for numbers and booleans), so that the list of fields, their order
// and their defaults cannot drift apart between load and save. A field's
// current value is its default on load.
//
// The reader only handles the subset that the writer produces and relies on
// the writer's spacing; see xml_reader.cpp.
#pragma once
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tz4 {

// Percent-encoding of attribute values and body text: a blank becomes "+",
// letters, digits and "!'()*-._~" stay, every other byte becomes "%xx"
// (lower-case hex).
std::string PercentEncode(const std::string& text);
// The reverse: "+" gives a blank, "%" and up to two hex digits give a byte
// (the escape always occupies three characters), anything else stands for
// itself. Decoding stops at the first byte that comes out as zero.
std::string PercentDecode(const std::string& text);

class CXmlNode {
 public:
  CXmlNode();
  explicit CXmlNode(std::string elementName);
  ~CXmlNode();
  CXmlNode(const CXmlNode&) = delete;
  CXmlNode& operator=(const CXmlNode&) = delete;
  CXmlNode(CXmlNode&&) = default;
  CXmlNode& operator=(CXmlNode&&) = default;

  // ---- plain tree operations ----

  // Destroys children and attributes, empties `text`, sets `storing`;
  // `name` stays.
  void Clear();
  // Appends a child that takes this node's direction, and returns it.
  CXmlNode* AddChild(const std::string& childName);
  // Walks the children from `start`, copying this node's `storing` into each
  // child it looks at; an empty name matches every child. Remembers the
  // search in `searchName` / `searchIndex`. Null when nothing matches or
  // `start` is outside the list.
  CXmlNode* FindChild(const std::string& childName, int start = 0);
  // Destroys the child at `index` with its subtree; nothing outside the range.
  void DeleteChild(int index);
  int GetChildCount() const;
  // The child at `index`, null outside the range. Does not touch `storing`.
  CXmlNode* GetChild(int index) const;

  int GetAttributeCount() const;
  // Pair `index`; both come back empty outside the range.
  void GetAttribute(int index, std::string& attrName, std::string& value) const;
  bool HasAttribute(const std::string& attrName) const;
  // Always appends a pair, even when the name is already there.
  void AddAttribute(const std::string& attrName, const std::string& value);
  // Overwrites the first pair of that name, or appends one.
  void SetAttribute(const std::string& attrName, const std::string& value);
  // Value of the first pair of that name (an empty value stays empty), else
  // `def`.
  std::string GetAttribute(const std::string& attrName, const std::string& def = "") const;

  // ---- typed writers (all append a pair) ----
  void AddIntAttribute(const std::string& attrName, int value);
  void AddDoubleAttribute(const std::string& attrName, double value);  // 12 digits
  void AddEncodedAttribute(const std::string& attrName, const std::string& value);
  void SetEncodedText(const std::string& value);

  // ---- typed readers: a missing or empty value gives the default ----
  // "%d" conversion: text that is no number gives 0, not the default.
  int GetIntAttribute(const std::string& attrName, int def) const;
  double GetDoubleAttribute(const std::string& attrName, double def) const;
  // True exactly for the value "true".
  bool GetBoolAttribute(const std::string& attrName, bool def) const;
  // Decoded value of a present attribute (an empty one decodes to empty);
  // `def` unchanged when the attribute is absent.
  std::string GetEncodedAttribute(const std::string& attrName, const std::string& def) const;
  std::string GetEncodedText() const;

  // ---- two-way archive helpers ----
  // Each takes the value the object holds now; on load it receives the value
  // the object is to hold afterwards, on store it is written and left alone.

  // Raw attribute text (blanks at either end do not survive a reload).
  void ArchiveString(const std::string& attrName, std::string& value);
  // Percent-encoded attribute text.
  void ArchiveEncodedString(const std::string& attrName, std::string& value);
  // A child element `childName` whose attribute "v" holds the encoded value;
  // on load a missing child keeps the value.
  void ArchiveChildString(const std::string& childName, std::string& value);
  // A number that may be backed by a formula: attribute `name` + "_str" holds
  // the encoded formula text when there is one, attribute `name` the number.
  // On load a missing "_str" empties the text, a missing number keeps it.
  void ArchiveValue(const std::string& attrName, std::string& formulaText, double& value);
  // The same for any record with members `Text` and `Value` (CFormula).
  template <class Formula>
  void ArchiveValue(const std::string& attrName, Formula& formula) {
    ArchiveValue(attrName, formula.Text, formula.Value);
  }
  // Shorthands for the on-the-spot choice between writer and reader that
  // numbers and booleans need. A boolean is stored as "true" or "false".
  void ArchiveInt(const std::string& attrName, int& value);
  void ArchiveDouble(const std::string& attrName, double& value);
  void ArchiveBool(const std::string& attrName, bool& value);

  // ---- text and files ----

  // Parses the element whose "<" stands at `position` into this node (adding
  // to what it holds). Returns the position behind the element, or npos when
  // the text ends before the element does or the nesting is too deep.
  std::size_t ParseElement(const std::string& source, std::size_t position);
  // Finds "<" + name + ">" (else "<" + name + " ") in `source` and parses
  // that element into this node: 0, -2 when neither is there, -1 when the
  // element is not complete.
  int LoadFromText(const std::string& source);
  // 0 on success, -1 if the file cannot be read or its root element is not
  // complete, -2 if the root element is not found. Sets `storing` to false.
  int LoadFromFile(const std::string& path);

  // The whole element on one line with no indent.
  std::string WriteInline() const;
  // The element at `indent` blanks, children 2 blanks deeper, one line each.
  void WriteIndented(std::vector<std::string>& lines, int indent) const;
  // The declaration line and the indented tree, "\n" behind every line.
  std::string WriteDocument() const;
  // True on success.
  bool SaveToFile(const std::string& path) const;

  // Deepest nesting the parser accepts; deeper text counts as malformed.
  static constexpr int kMaxDepth = 1000;

  // ---- fields ----
  bool storing = true;
  std::string name;
  std::string text;                                 // body text of a leaf, raw
  std::vector<std::unique_ptr<CXmlNode>> children;  // document order
  std::vector<std::string> attributes;              // name, value, name, value, ...
  std::string searchName;
  int searchIndex = 0;

 private:
  // `src` is the text up to its first zero byte.
  std::size_t ParseElementAt(std::string_view src, std::size_t position, int depth);
  std::size_t ParseAttributes(std::string_view src, std::size_t position);
  std::size_t ParseContent(std::string_view src, std::size_t position, int depth);
  void AppendOpenTag(std::string& out) const;
  int FindAttribute(const std::string& attrName) const;  // pair index or -1
};

}  // namespace tz4
