// A progress bar on one terminal line: "[#####.....]  42%  t = 2.1 ms".
// It draws only when enabled (the caller checks that standard error is a
// terminal) and only once the work has taken a moment, so that short runs
// leave no trace; Finish clears the line.
#pragma once
#include <chrono>
#include <cstdio>
#include <string>

namespace tz4::cli {

// True when standard error is a terminal.
bool StderrIsTerminal();

// The bar's text for a fraction in [0, 1] (clamped) and a note behind it.
std::string ProgressLine(double fraction, const std::string& note, int barWidth = 30);

class ProgressBar {
 public:
  ProgressBar(bool enabled, std::FILE* out);
  ~ProgressBar() { Finish(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Update(double fraction, const std::string& note);
  void Finish();

 private:
  bool enabled_;
  bool shown_ = false;
  std::FILE* out_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace tz4::cli
