// CElemO: amplifiers and comparators. The output is a voltage source to
// ground set by a gain, a function, a piecewise-linear table or a comparator;
// limiting amplifiers and comparators switch between linear states.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"
#include "expr/lists.h"

namespace tz4 {

class CElemO : public CCmp {
 public:
  explicit CElemO(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;
  bool GetStateRange(int& low, int& high) override;
  // The limits of an op-amp with no bandwidth limit move inside the
  // switching resolution.
  bool CheckSwitching(CCalc& calc, bool apply) override;
  // Tables, limited op-amps with a finite bandwidth and comparators move
  // once at each time point.
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  // Parameters, in archive order.
  CFormula K;                // "k"; infinite on O_OD, else 1
  CFormula F1;               // "f1", gain-bandwidth product
  CFormula Vhi;              // "hi"
  CFormula Vlo;              // "lo"
  CFormula Hysteresis;       // "hyst"
  std::string Fx = "x";      // "f", the output as a function of the input x
  std::string Fs = "1";      // "fs", kept only
  std::string LinearIc;      // "ic"
  int32_t ComparatorIc = 0;  // "comp_ic"
  CFormula OpAmpIc;          // "opamp_ic"
  CFormula FunctionIc;       // "func_ic"
  CFormula Delay;            // "delay"

  // Formula variables "t" and "x".
  CVarList Variables;

  // Run state.
  bool HasIc = false;
  double IcValue = 0.0;  // the last output voltage
  double Tau = 0.0;
  int32_t TargetState = 0;  // comparator: the state to take after the delay
  double SwitchTime = 0.0;

 private:
  // The input quantity x of the type (for the controlled types, the
  // control of their table).
  double Input(const CCalc& calc) const;
  // Row r says V(out) = g times the input pins' quantity (the inputs equal
  // each other with an infinite g); the output takes the row's current.
  void StampAmplifier(CCalc& calc, int in, int in2, double g) const;
  void StampOutput(CCalc& calc, double value) const;
  bool LimitedOpAmp(bool finiteBandwidth) const;
  // Whether the limit state should move, and where to; false when not.
  bool LimitMove(const CCalc& calc, int32_t& next) const;
  int StampLinear(CCalc& calc) const;
};

// Model ids of the amplifier family.
enum : int32_t {
  MODEL_O_FUNCTION = 5,
  MODEL_O_PWL = 8,
  MODEL_O_LINEAR = 15,
  MODEL_O_OPAMP = 17,
  MODEL_O_COMPARATOR = 18,
};

extern const ElemType kTypeO_O;
extern const ElemType kTypeO_OD;
extern const ElemType kTypeO_OS;
extern const ElemType kTypeO_VCG;
extern const ElemType kTypeO_CCG;

}  // namespace tz4
