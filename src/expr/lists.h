// Small containers: the owning list TList, the string list TStringList with
// its split and join operations, and the named variable store CVarList of
// formulas and C-code blocks.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "expr/value.h"

namespace tz4 {

// An ordered list of owned items.
template <class T>
class TList {
 public:
  virtual ~TList() = default;
  int Count() const { return static_cast<int>(items_.size()); }
  // Takes ownership; returns the new index.
  int Add(std::unique_ptr<T> item) {
    items_.push_back(std::move(item));
    return Count() - 1;
  }
  void Insert(int index, std::unique_ptr<T> item) {
    items_.insert(items_.begin() + index, std::move(item));
  }
  // Destroys the item at index.
  void Delete(int index) { items_.erase(items_.begin() + index); }
  // Gives up ownership of the item at index and removes it from the list.
  std::unique_ptr<T> Extract(int index) {
    std::unique_ptr<T> item = std::move(items_[static_cast<size_t>(index)]);
    items_.erase(items_.begin() + index);
    return item;
  }
  void Clear() { items_.clear(); }
  T* operator[](int index) const { return items_[static_cast<size_t>(index)].get(); }
  int IndexOf(const T* item) const {
    for (size_t i = 0; i < items_.size(); i++)
      if (items_[i].get() == item) return static_cast<int>(i);
    return -1;
  }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::vector<std::unique_ptr<T>> items_;
};

// A list of texts.
class TStringList {
 public:
  virtual ~TStringList() = default;
  int Count() const { return static_cast<int>(strings_.size()); }
  void Clear() { strings_.clear(); }
  int Add(const std::string& text) {
    strings_.push_back(text);
    return Count() - 1;
  }
  void Delete(int index) { strings_.erase(strings_.begin() + index); }
  void Insert(int index, const std::string& text) {
    strings_.insert(strings_.begin() + index, text);
  }
  const std::string& operator[](int index) const { return strings_[static_cast<size_t>(index)]; }
  std::string& operator[](int index) { return strings_[static_cast<size_t>(index)]; }
  auto begin() const { return strings_.begin(); }
  auto end() const { return strings_.end(); }

  // Writes each string and a line feed; false when the file cannot be opened.
  bool SaveToFile(const std::string& path) const;
  // Appends the lines of a text file with their line ends (any run of CR and
  // LF) stripped. A last line with no line end is not loaded. False when the
  // file cannot be opened.
  bool LoadFromFile(const std::string& path);

  // Joins all strings with the separator behind each; with "," the last one
  // is left off.
  std::string GetText(char separator) const;
  // Clears the list and splits the text at each separator; the last piece is
  // added also when empty; an empty text gives an empty list. With a carriage
  // return as separator a line feed right behind it belongs to the separator.
  void SetText(const std::string& text, char separator);

  std::string GetText() const { return GetText('\n'); }
  void SetText(const std::string& text) { SetText(text, '\r'); }
  std::string GetCommaText() const { return GetText(','); }
  void SetCommaText(const std::string& text) { SetText(text, ','); }
  std::string GetSemicolonText() const { return GetText(';'); }
  void SetSemicolonText(const std::string& text) { SetText(text, ';'); }

 private:
  std::vector<std::string> strings_;
};

// A named scalar or array. The variable's type is that of its first element;
// Size is 0 for a scalar and N for an array of N. Values always holds at
// least one element.
struct TVariable {
  std::string Name;
  std::vector<TValue> Values;
  int32_t Size = 0;

  int Type() const { return Values.empty() ? VT_INT : Values[0].Type; }
};

// The variable store of a formula context or a C-code block. Entries keep
// their address while others are added or removed.
class CVarList {
 public:
  virtual ~CVarList() = default;
  int Count() const { return static_cast<int>(items_.size()); }
  TVariable* operator[](int index) const { return items_[static_cast<size_t>(index)].get(); }

  // A new variable of max(size, 1) zero elements of the type; null for an
  // empty name.
  TVariable* Add(const std::string& name, int type, int size = 0);
  // Searches from the newest entry down to index from, ignoring case, so the
  // newest of two like names wins; null when absent.
  TVariable* Find(const std::string& name, int from = 0) const;
  // Frees the entries from index on (the end of a C-code scope).
  void Truncate(int index);
  void Clear() { items_.clear(); }
  // Grows an array to size elements of the type of element 0; true at once if
  // it already has that many. False when memory runs out.
  static bool Resize(TVariable* variable, int size);

 private:
  std::vector<std::unique_ptr<TVariable>> items_;
};

}  // namespace tz4
