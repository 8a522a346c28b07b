// Piecewise-linear tables: parsing a table text into segments, finding the
// segment of a control value, and the load-time rewrite of unmirrored texts.
#include "components/pwl.h"

#include <cmath>
#include <exception>
#include <new>

#include "components/cmp.h"
#include "expr/lists.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/text.h"

namespace tz4 {

std::vector<std::string> SplitTableText(const std::string& text) {
  TStringList list;
  list.SetCommaText(text);
  return std::vector<std::string>(list.begin(), list.end());
}

std::string JoinTableText(const std::vector<std::string>& entries) {
  TStringList list;
  for (const std::string& entry : entries) list.Add(entry);
  return list.GetCommaText();
}

std::string RewriteUnmirroredTable(const std::string& text) {
  std::vector<std::string> entries = SplitTableText(text);
  if (entries.empty() || TrimSpaces(entries[0]) != "n") return text;
  // h counts the slopes: half the entries, the word included.
  const size_t h = entries.size() / 2;
  entries.erase(entries.begin());
  for (size_t i = 0;; i++) {
    const size_t slope = 2 * i;
    const size_t breakpoint = slope + 1;
    bool insert = false;
    if (i + 1 >= h || breakpoint >= entries.size()) {
      insert = true;  // no breakpoint is left
    } else {
      double x = 0.0;
      try {
        x = TextToDouble(entries[breakpoint]);
      } catch (const std::exception&) {
        break;  // not a number: leave the text for the parser to report
      }
      if (x == 0.0) break;  // already given in full
      insert = x > 0.0;
    }
    if (insert) {
      if (slope >= entries.size()) break;
      const std::string copy = entries[slope];
      entries.insert(entries.begin() + static_cast<long>(breakpoint), {"0", copy});
      break;
    }
  }
  return JoinTableText(entries);
}

void CPWL::Clear() {
  X.clear();
  X.shrink_to_fit();
  Slope.clear();
  Slope.shrink_to_fit();
  Intercept.clear();
  Intercept.shrink_to_fit();
  Count = 0;
  FirstSegment = 0;
  ParsedText.clear();
  Faulty = false;
}

bool CPWL::Parse(CCmp* component) {
  if (ParsedText == Text && (Count > 0 || Faulty)) return !Faulty;
  Clear();
  Changed = true;
  ParsedText = Text;
  Segment = 0;
  Faulty = true;  // until the tables are complete

  const std::vector<std::string> entries = SplitTableText(Text);
  if (entries.size() % 2 == 0) return ComponentError(component, "Wrong number of PWL parameters");

  // Breakpoints x1 .. x(h-1); none at exactly 0 means an odd-symmetric table
  // of which the text gives only the side x > 0.
  const int h = static_cast<int>(entries.size() + 1) / 2;
  std::vector<double> breakpoints(static_cast<size_t>(h), 0.0);
  bool full = false;
  try {
    for (int i = 1; i < h; i++) {
      breakpoints[static_cast<size_t>(i)] = TextToDouble(entries[static_cast<size_t>(2 * i - 1)]);
      if (breakpoints[static_cast<size_t>(i)] == 0.0) full = true;
    }
  } catch (const RaisedError& e) {
    return ComponentError(component, "PWL error: " + e.Text());
  }

  const int n = full ? h : static_cast<int>(entries.size());
  const int o = full ? 0 : h - 1;
  try {
    X.assign(static_cast<size_t>(n), 0.0);
    Slope.assign(static_cast<size_t>(n), 0.0);
    Intercept.assign(static_cast<size_t>(n), 0.0);
  } catch (const std::bad_alloc&) {
    Clear();
    return ComponentError(component, "No enough memory");
  }
  Count = n;

  for (int i = 0; i < h; i++) {
    if (i > 0) X[static_cast<size_t>(i + o)] = breakpoints[static_cast<size_t>(i)];
    double v = 0.0;
    try {
      v = TextToDouble(entries[static_cast<size_t>(2 * i)]);
    } catch (const RaisedError& e) {
      return ComponentError(component, "PWL error: " + e.Text());
    }
    if (!Curve.empty()) {
      if (Reciprocal) {
        if (v == 0.0) return ComponentError(component, "Zero value not allowed");
        v = 1.0 / v;
      } else if (IsInfinite(v)) {
        return ComponentError(component, "Infinite value not allowed");
      }
    }
    Slope[static_cast<size_t>(i + o)] = v;
  }

  if (!full) {
    for (int j = 0; j < o; j++) {
      Slope[static_cast<size_t>(j)] = Slope[static_cast<size_t>(n - 1 - j)];
      X[static_cast<size_t>(j + 1)] = -X[static_cast<size_t>(n - 1 - j)];
    }
  }

  // Heights at the breakpoints, from 0 at X[1].
  const bool curve = !Curve.empty();
  if (curve) {
    for (int i = 2; i < n; i++)
      Intercept[static_cast<size_t>(i)] =
          (X[static_cast<size_t>(i)] - X[static_cast<size_t>(i - 1)]) * Slope[static_cast<size_t>(i - 1)] +
          Intercept[static_cast<size_t>(i - 1)];
  }

  // The segment that holds 0 is relative number 0.
  int k = n;
  for (int i = 1; i < n; i++) {
    if (X[static_cast<size_t>(i)] >= 0.0) {
      k = i;
      break;
    }
  }
  FirstSegment = 1 - k;
  LastSegment = n - k;

  if (curve) {
    // Shift the heights so that the curve passes through the origin.
    const size_t km = static_cast<size_t>(k - 1);
    const double d = k < n ? Slope[km] * X[km + 1] - Intercept[km + 1]
                           : Slope[km] * X[km] - Intercept[km];
    for (double& z : Intercept) z += d;
    // Heights into intercepts.
    if (n > 1) Intercept[0] = Intercept[1] - X[1] * Slope[0];
    for (int i = 1; i < n; i++)
      Intercept[static_cast<size_t>(i)] -= Slope[static_cast<size_t>(i)] * X[static_cast<size_t>(i)];
    Intercept[km] = 0.0;
  }
  Faulty = false;
  return true;
}

bool CPWL::FindSegment(double x, bool update) {
  int i = 1;
  if (Count >= 2) {
    i = Count;
    for (int j = 1; j < Count; j++) {
      if (X[static_cast<size_t>(j)] > x) {
        i = j;
        break;
      }
    }
  }
  const int next = FirstSegment - 1 + i;
  if (next == Segment) return false;
  if (!update) return true;
  if ((Segment < 0 && next > 0) || (Segment > 0 && next < 0))
    Segment = 0;
  else
    Segment = next;
  return true;
}

}  // namespace tz4
