#include "tools/progress.h"

#include <algorithm>
#include <cmath>

#include <unistd.h>

namespace tz4::cli {

namespace {

// Runs shorter than this show no bar at all; redraws are spaced by the
// second constant.
constexpr auto kShowAfter = std::chrono::milliseconds(400);
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);

}  // namespace

bool StderrIsTerminal() { return isatty(STDERR_FILENO) == 1; }

std::string ProgressLine(double fraction, const std::string& note, int barWidth) {
  if (!(fraction >= 0.0)) fraction = 0.0;
  fraction = std::min(fraction, 1.0);
  barWidth = std::max(barWidth, 1);
  const int filled = static_cast<int>(std::floor(fraction * barWidth));
  std::string line = "[";
  line.append(static_cast<size_t>(filled), '#');
  line.append(static_cast<size_t>(barWidth - filled), '.');
  char percent[16];
  std::snprintf(percent, sizeof percent, "] %3d%%", static_cast<int>(std::floor(fraction * 100.0)));
  line += percent;
  if (!note.empty()) line += "  " + note;
  return line;
}

ProgressBar::ProgressBar(bool enabled, std::FILE* out)
    : enabled_(enabled && out != nullptr), out_(out), start_(std::chrono::steady_clock::now()) {}

void ProgressBar::Update(double fraction, const std::string& note) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - start_ < kShowAfter) return;
  if (shown_ && now - lastDraw_ < kRedrawEvery && fraction < 1.0) return;
  lastDraw_ = now;
  shown_ = true;
  std::fprintf(out_, "\r%s\x1b[K", ProgressLine(fraction, note).c_str());
  std::fflush(out_);
}

void ProgressBar::Finish() {
  if (!shown_) return;
  std::fprintf(out_, "\r\x1b[K");
  std::fflush(out_);
  shown_ = false;
}

}  // namespace tz4::cli
