// CPWL: a device's piecewise-linear characteristic, parsed from one line of
// text into segments (breakpoint, slope, intercept).
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace tz4 {

class CCmp;

class CPWL {
 public:
  CPWL() = default;
  virtual ~CPWL() = default;

  // Builds the tables from Text unless ParsedText already equals it; faults
  // are reported once for `component` (a second Parse of the same faulty
  // text reports nothing but still returns false). Returns false on a fault.
  bool Parse(CCmp* component);
  // Frees the tables so that the next Parse works from scratch.
  void Clear();
  // Whether x lies in another segment than the current one; with update true
  // Segment moves (stopping at the origin segment when crossing it).
  bool FindSegment(double x, bool update);

  // Index into X/Slope/Intercept of the current segment.
  int Index() const { return Segment - FirstSegment; }

  std::string Text = "1.0";
  std::string Curve;  // axis label: "V(V)", "I(V)", "V(I)", "Q(V)", "H(I)" or empty
  bool Changed = false;
  int32_t Segment = 0;
  int32_t FirstSegment = 0;
  int32_t LastSegment = 0;
  bool Reciprocal = false;
  std::string FormulaText;  // attribute "pwlf"
  int32_t Mode = 0;         // attribute "pwlm"
  std::string ParsedText;
  bool Faulty = false;  // the parse of ParsedText failed
  int32_t Count = 0;
  std::vector<double> X;          // X[i], i >= 1: lower breakpoint of segment i
  std::vector<double> Slope;
  std::vector<double> Intercept;
};

// The entries of a table text, split at each comma (the last piece is kept
// also when empty; an empty text gives no entry), and the reverse join.
std::vector<std::string> SplitTableText(const std::string& text);
std::string JoinTableText(const std::vector<std::string>& entries);

// A table text whose first entry is the word "n" marks a table that must not
// be mirrored: the word is removed and a breakpoint 0 is inserted where the
// breakpoints turn positive, so that the text describes the full table.
// Any other text comes back unchanged.
std::string RewriteUnmirroredTable(const std::string& text);

}  // namespace tz4
