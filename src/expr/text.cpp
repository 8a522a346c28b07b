// Text helpers: cutting names, words, statements and assignments apart.
#include "expr/text.h"

#include <cctype>
#include <cerrno>
#include <cstring>

#include "expr/lists.h"
#include "expr/opcodes.h"
#include "base/raise.h"

namespace tz4 {

namespace {

bool IsNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

}  // namespace

bool SameText(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); i++)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

std::string SubString(const std::string& text, int start, int length) {
  if (start < 1 || static_cast<size_t>(start) > text.size() + 1) Raise("invalid string position");
  size_t from = static_cast<size_t>(start - 1);
  if (length < 0) return text.substr(from);
  return text.substr(from, static_cast<size_t>(length));
}

std::string TrimSpaces(const std::string& text) {
  size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  size_t last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

int SkipQuoted(const std::string& text, int position, int limit) {
  if (limit > static_cast<int>(text.size())) limit = static_cast<int>(text.size());
  if (position < 1 || position > limit || text[position - 1] != '"') return position;
  for (int p = position + 1; p <= limit; p++)
    if (text[p - 1] == '"') return p + 1;
  return limit + 1;
}

int SkipBlanks(const std::string& text, int position, int limit) {
  if (limit > static_cast<int>(text.size())) limit = static_cast<int>(text.size());
  if (position < 1) position = 1;
  while (position <= limit && text[position - 1] == ' ') position++;
  return position;
}

void SplitName(const std::string& input, std::string& left, std::string& right) {
  left.clear();
  right.clear();
  std::string text = TrimSpaces(input);
  if (text.empty() || text[0] != '"') {
    size_t point = text.find('.');
    if (point == std::string::npos) {
      left = text;
    } else {
      left = TrimSpaces(text.substr(0, point));
      right = TrimSpaces(text.substr(point + 1));
    }
    return;
  }
  size_t close = text.find('"', 1);
  if (close == std::string::npos) return;
  left = TrimSpaces(text.substr(1, close - 1));
  size_t rest = close + 1;
  while (rest < text.size() && text[rest] == ' ') rest++;
  if (rest < text.size() && text[rest] == '.') rest++;
  right = TrimSpaces(text.substr(rest));
}

void SplitWords(const std::string& input, TStringList& list) {
  list.Clear();
  std::string text = TrimSpaces(input);
  size_t pos = 0;
  const size_t size = text.size();
  while (pos < size) {
    char c = text[pos];
    if (c == ' ' || c == ',' || c == '\t') {
      pos++;
      continue;
    }
    if (c == '"') {
      size_t close = text.find('"', pos + 1);
      if (close == std::string::npos) close = size;
      list.Add(text.substr(pos + 1, close - pos - 1));
      pos = close + 1;
      continue;
    }
    if (c == '=') {
      // An assignment sign between two words is a word of its own.
      list.Add("=");
      pos++;
      continue;
    }
    size_t start = pos;
    int depth = 0;
    while (pos < size) {
      char d = text[pos];
      if (d == '(') depth++;
      if (d == ')' && depth > 0) depth--;
      if (d == '\t') break;
      if (d == ',' && depth == 0) break;
      if ((d == '<' || d == '>' || d == '=' || d == '!') && pos + 1 < size && text[pos + 1] == '=') {
        pos += 2;
        continue;
      }
      if (d == '=') break;
      pos++;
    }
    std::string word = text.substr(start, pos - start);
    size_t last = word.find_last_not_of(' ');
    word.resize(last == std::string::npos ? 0 : last + 1);
    list.Add(word);
  }
}

std::string FirstQuotedOrPlainWord(const std::string& input) {
  std::string text = TrimSpaces(input);
  if (!text.empty() && text[0] == '"') {
    size_t close = text.find('"', 1);
    if (close == std::string::npos) return text.substr(1);
    return text.substr(1, close - 1);
  }
  size_t end = text.find_first_of(" =,");
  return end == std::string::npos ? text : text.substr(0, end);
}

std::string NextIdentifier(const std::string& text, int& position, int& start) {
  const int size = static_cast<int>(text.size());
  // Characters past the end read as blanks.
  auto at = [&](int p) -> char { return (p >= 1 && p <= size) ? text[p - 1] : ' '; };
  int p = position < 1 ? 1 : position;
  while (p <= size) {
    char c = at(p);
    if (std::isdigit(static_cast<unsigned char>(c)) || c == '.') {
      // A number with its suffix letters and an exponent sign.
      while (p <= size) {
        char d = at(p);
        if ((d == 'e' || d == 'E') && (at(p + 1) == '+' || at(p + 1) == '-')) {
          p += 2;
          continue;
        }
        if (!std::isalnum(static_cast<unsigned char>(d)) && d != '.' && d != '_') break;
        p++;
      }
      continue;
    }
    if (IsNameStart(c) || c == '"') {
      int first = p;
      while (p <= size) {
        char d = at(p);
        if (d == '"') {
          p++;
          while (p <= size && at(p) != '"') p++;
          p++;
          continue;
        }
        if (IsNameChar(d) || d == '.' || d == ' ') {
          p++;
          continue;
        }
        break;
      }
      std::string name = TrimSpaces(text.substr(first - 1, std::min(p, size + 1) - first));
      if (at(p) == '(') continue;  // a function name
      start = first;
      position = p;
      return name;
    }
    p++;
  }
  position = size + 1;
  start = size + 1;
  return "";
}

std::string NextStatement(const std::string& text, int& position) {
  const int size = static_cast<int>(text.size());
  int p = position < 1 ? 1 : position;
  if (p <= size && text[p - 1] == ';') p++;
  int first = p;
  bool quoted = false;
  while (p <= size) {
    char c = text[p - 1];
    if (c == '"') quoted = !quoted;
    if (c == ';' && !quoted) break;
    p++;
  }
  std::string statement = first <= size ? text.substr(first - 1, p - first) : std::string();
  position = p <= size ? p + 1 : size + 1;
  return statement;
}

int SplitAssignment(const std::string& text, std::string& name, std::string& value,
                    std::string& index) {
  name = text;
  value.clear();
  index.clear();
  int op = 0;
  size_t pos = 0;
  while (pos < text.size() && text[pos] == ' ') pos++;
  if (pos < text.size() && text[pos] == '"') {
    size_t close = text.find('"', pos + 1);
    pos = close == std::string::npos ? text.size() : close + 1;
  }
  size_t equal = text.find('=', pos);
  if (equal != std::string::npos && equal > 0 &&
      !(equal + 1 < text.size() && text[equal + 1] == '=')) {
    char before = text[equal - 1];
    size_t width = 1;
    switch (before) {
      case '!': op = 0; break;
      case '|': op = OP_OR; width = 2; break;
      case '^': op = OP_XOR; width = 2; break;
      case '&': op = OP_AND; width = 2; break;
      case '+': op = OP_ADD; width = 2; break;
      case '-': op = OP_SUB; width = 2; break;
      case '*': op = OP_MUL; width = 2; break;
      case '/': op = OP_DIV; width = 2; break;
      case '%': op = OP_MOD; width = 2; break;
      case '<':
      case '>':
        if (equal >= 2 && text[equal - 2] == before) {
          op = before == '<' ? OP_SHL : OP_SHR;
          width = 3;
        }
        break;
      default: op = OP_EQ; break;
    }
    if (op != 0) {
      name = TrimSpaces(text.substr(0, equal + 1 - width));
      value = TrimSpaces(text.substr(equal + 1));
    }
  }
  if (name.size() >= 2 && name.back() == ']') {
    size_t open = name.find('[');
    if (open != std::string::npos) {
      index = TrimSpaces(name.substr(open + 1, name.size() - open - 2));
      if (index.empty()) index = "-100";
      name = TrimSpaces(name.substr(0, open));
    }
  }
  return op;
}

std::string PathOfFile(const std::string& text) {
  size_t last = text.find_last_of("/\\:");
  return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string ExtensionOfFile(const std::string& text) {
  size_t point = text.rfind('.');
  if (point == std::string::npos) return "";
  size_t separator = text.find_last_of("/\\:");
  if (separator != std::string::npos && separator > point) return "";
  return text.substr(point);
}

std::string LastSystemErrorText() { return std::strerror(errno); }

}  // namespace tz4
