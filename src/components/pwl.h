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
  // are reported once for `component`. Returns false on a fault.
  bool Parse(CCmp* component);
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
  int32_t Count = 0;
  std::vector<double> X;          // X[i], i >= 1: lower breakpoint of segment i
  std::vector<double> Slope;
  std::vector<double> Intercept;
};

}  // namespace tz4
