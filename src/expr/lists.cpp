// String list file and join operations, and the variable store.
#include "expr/lists.h"

#include <cstdio>
#include <new>

#include "expr/text.h"

namespace tz4 {

bool TStringList::SaveToFile(const std::string& path) const {
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  bool ok = true;
  for (const std::string& s : strings_) {
    if (std::fwrite(s.data(), 1, s.size(), file) != s.size() || std::fputc('\n', file) == EOF)
      ok = false;
  }
  if (std::fclose(file) != 0) ok = false;
  return ok;
}

bool TStringList::LoadFromFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return false;
  std::string line;
  char chunk[2048];
  for (;;) {
    size_t length = 0;
    int c = 0;
    // One chunk: up to 2047 characters or through the next line feed.
    while (length < sizeof chunk - 1 && (c = std::fgetc(file)) != EOF) {
      chunk[length++] = static_cast<char>(c);
      if (c == '\n') break;
    }
    if (length == 0) break;
    line.append(chunk, length);
    char last = chunk[length - 1];
    if (last == '\n' || last == '\r') {
      size_t end = line.find_last_not_of("\r\n");
      line.resize(end == std::string::npos ? 0 : end + 1);
      strings_.push_back(line);
      line.clear();
    }
  }
  std::fclose(file);
  return true;
}

std::string TStringList::GetText(char separator) const {
  std::string text;
  for (const std::string& s : strings_) {
    text += s;
    text += separator;
  }
  if (separator == ',' && !text.empty()) text.pop_back();
  return text;
}

void TStringList::SetText(const std::string& text, char separator) {
  strings_.clear();
  if (text.empty()) return;
  size_t start = 0;
  for (;;) {
    size_t found = text.find(separator, start);
    if (found == std::string::npos) {
      strings_.push_back(text.substr(start));
      return;
    }
    strings_.push_back(text.substr(start, found - start));
    start = found + 1;
    if (separator == '\r' && start < text.size() && text[start] == '\n') start++;
  }
}

TVariable* CVarList::Add(const std::string& name, int type, int size) {
  if (name.empty()) return nullptr;
  try {
    auto variable = std::make_unique<TVariable>();
    variable->Name = name;
    TValue zero;
    zero.Type = type;
    variable->Values.assign(static_cast<size_t>(size > 1 ? size : 1), zero);
    variable->Size = size > 0 ? size : 0;
    items_.push_back(std::move(variable));
    return items_.back().get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  } catch (const std::length_error&) {
    return nullptr;
  }
}

TVariable* CVarList::Find(const std::string& name, int from) const {
  if (from < 0) from = 0;
  for (int i = Count() - 1; i >= from; i--)
    if (SameText(items_[static_cast<size_t>(i)]->Name, name)) return items_[static_cast<size_t>(i)].get();
  return nullptr;
}

void CVarList::Truncate(int index) {
  if (index < 0) index = 0;
  if (index < Count()) items_.resize(static_cast<size_t>(index));
}

bool CVarList::Resize(TVariable* variable, int size) {
  if (variable == nullptr) return false;
  if (variable->Size >= size && static_cast<int>(variable->Values.size()) >= size) return true;
  try {
    TValue zero;
    zero.Type = variable->Type();
    variable->Values.resize(static_cast<size_t>(size), zero);
    variable->Size = size;
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {
    return false;
  }
}

}  // namespace tz4
