// Failures of the expression and code layers are raised as a text and caught
// at the parameter or component level; they never cross an export.
#pragma once
#include <stdexcept>
#include <string>

namespace tz4 {

class RaisedError : public std::runtime_error {
 public:
  explicit RaisedError(const std::string& text) : std::runtime_error(text) {}
  std::string Text() const { return what(); }
};

[[noreturn]] inline void Raise(const std::string& text) { throw RaisedError(text); }

}  // namespace tz4
