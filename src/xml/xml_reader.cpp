// The reader of CXmlNode. It is no general XML parser: it reads the subset
// that the writer produces and depends on the writer's spacing.
//
// - An element name runs from "<" to the first ">" or blank; "/" is no
//   delimiter, which is why the writer puts a blank before "/>".
// - Attributes are separated by blanks only; "=" is followed directly by the
//   opening quote, which is not looked at; names and values are trimmed of
//   blanks; a value cannot hold a double quote.
// - Body text is taken only when it follows the ">" directly (no line end).
// - The closing tag's name is not compared.
// - No entities, comments, CDATA sections or processing instructions.
//
// Every scan stops at the end of the text (or at a zero byte, which ends the
// XML part of a file). An element that is not complete when the text ends is
// reported as malformed (npos), never read past.
#include <cstdio>
#include <string_view>

#include "xml/xml_node.h"

namespace tz4 {

namespace {

constexpr std::size_t kNpos = std::string::npos;

// Longest piece that one read of the line reader takes in.
constexpr std::size_t kPieceLength = 2046;

std::string_view TextPart(const std::string& source) {
  std::string_view view(source);
  const std::size_t zero = view.find('\0');
  return zero == std::string_view::npos ? view : view.substr(0, zero);
}

std::string TrimBlanks(std::string_view text) {
  std::size_t first = 0;
  std::size_t last = text.size();
  while (first < last && text[first] == ' ') ++first;
  while (last > first && text[last - 1] == ' ') --last;
  return std::string(text.substr(first, last - first));
}

bool ReadWholeFile(const std::string& path, std::string& out) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  char buffer[65536];
  bool ok = true;
  for (;;) {
    const std::size_t got = std::fread(buffer, 1, sizeof buffer, file);
    out.append(buffer, got);
    if (got < sizeof buffer) {
      ok = !std::ferror(file);
      break;
    }
  }
  std::fclose(file);
  return ok;
}

// Splits the text into lines the way the line reader does and joins them
// again with "\n" behind each: pieces of at most kPieceLength characters up
// to and including a line feed; a piece that ends in CR or LF ends its line
// and loses all trailing CR and LF; any other piece is joined to the next.
// A last line with no line end is read as any other: hand-edited files
// often end that way.
std::string JoinLines(std::string_view raw) {
  std::string joined;
  joined.reserve(raw.size() + 1);
  std::string line;
  std::size_t pos = 0;
  while (pos < raw.size()) {
    std::size_t length = raw.size() - pos;
    if (length > kPieceLength) length = kPieceLength;
    const std::size_t feed = raw.substr(pos, length).find('\n');
    if (feed != std::string_view::npos) length = feed + 1;
    std::string_view piece = raw.substr(pos, length);
    pos += length;
    const char lastChar = piece.back();
    if (lastChar != '\n' && lastChar != '\r') {
      line.append(piece);
      continue;
    }
    while (!piece.empty() && (piece.back() == '\n' || piece.back() == '\r')) piece.remove_suffix(1);
    line.append(piece);
    joined += line;
    joined += '\n';
    line.clear();
  }
  if (!line.empty()) {
    joined += line;
    joined += '\n';
  }
  return joined;
}

}  // namespace

std::size_t CXmlNode::ParseElement(const std::string& source, std::size_t position) {
  return ParseElementAt(TextPart(source), position, 0);
}

std::size_t CXmlNode::ParseElementAt(std::string_view src, std::size_t position, int depth) {
  if (depth > kMaxDepth || position >= src.size()) return kNpos;
  storing = false;
  const std::size_t delimiter = src.find_first_of("> ", position + 1);
  if (delimiter == std::string_view::npos) return kNpos;
  name.assign(src.substr(position + 1, delimiter - position - 1));
  std::size_t end = delimiter;
  if (src[delimiter] == ' ') {
    end = ParseAttributes(src, delimiter);
    if (end == kNpos) return kNpos;
  }
  if (src[end] == '/') {
    // The element closes here; the character after "/" is taken to be ">".
    if (end + 1 >= src.size()) return kNpos;
    return end + 2;
  }
  return ParseContent(src, end + 1, depth);
}

std::size_t CXmlNode::ParseAttributes(std::string_view src, std::size_t position) {
  std::size_t pos = position;
  for (;;) {
    const std::size_t stop = src.find_first_of("=>/", pos);
    if (stop == std::string_view::npos) return kNpos;
    if (src[stop] != '=') return stop;
    std::string attrName = TrimBlanks(src.substr(pos, stop - pos));
    // Step over "=" and the opening quote without looking at the latter.
    if (stop + 1 >= src.size()) return kNpos;
    const std::size_t valueStart = stop + 2;
    const std::size_t close = src.find('"', valueStart);
    if (close == std::string_view::npos) return kNpos;
    AddAttribute(attrName, TrimBlanks(src.substr(valueStart, close - valueStart)));
    pos = close + 1;
  }
}

std::size_t CXmlNode::ParseContent(std::string_view src, std::size_t position, int depth) {
  std::size_t pos = position;
  if (pos < src.size() && src[pos] != '<' && src[pos] != '\r' && src[pos] != '\n') {
    const std::size_t next = src.find('<', pos);
    const std::size_t textEnd = next == std::string_view::npos ? src.size() : next;
    text.assign(src.substr(pos, textEnd - pos));
    pos = textEnd;
  }
  for (;;) {
    if (pos >= src.size()) return kNpos;  // the text ended inside this element
    if (src[pos] != '<') {
      ++pos;
      continue;
    }
    if (pos + 1 < src.size() && src[pos + 1] == '/') break;
    CXmlNode* child = AddChild("");
    pos = child->ParseElementAt(src, pos, depth + 1);
    if (pos == kNpos) return kNpos;
  }
  const std::size_t close = src.find('>', pos);
  if (close == std::string_view::npos) return kNpos;
  return close + 1;
}

int CXmlNode::LoadFromText(const std::string& source) {
  const std::string_view src = TextPart(source);
  std::size_t start = src.find("<" + name + ">");
  if (start == std::string_view::npos) start = src.find("<" + name + " ");
  if (start == std::string_view::npos) return -2;
  return ParseElementAt(src, start, 0) == kNpos ? -1 : 0;
}

int CXmlNode::LoadFromFile(const std::string& path) {
  storing = false;
  std::string raw;
  if (!ReadWholeFile(path, raw)) return -1;
  return LoadFromText(JoinLines(TextPart(raw)));
}

}  // namespace tz4
