// CElemVCVS: the four controlled sources, each output a voltage or a current
// steered by a voltage or a current, as a linear gain, a function, a
// piecewise-linear table, an oscillator, a one-shot pulse or a pulse-width
// modulator. Pins: output 1, output 2, control 1, control 2.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"
#include "expr/lists.h"

namespace tz4 {

class CElemVCVS : public CCmp {
 public:
  explicit CElemVCVS(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  // Parameters, in archive order.
  CFormula K;            // "k"
  std::string Fx = "x";  // "f"
  std::string Fs = "1";  // "fs", kept only
  CFormula Ic;           // "ic"
  CFormula V0;           // "v0"
  CFormula V1;           // "v1"
  CFormula Rate;         // "dfdv": "dFdV", "dFdI", and "F" of "PWM"
  CFormula Phase;        // "phase", degrees
  CEnumValue Type;       // "vcotype": "Sin", "Square", "Triangle", "Sawtooth"
  CFormula Threshold;    // "thr"
  CFormula Width;        // "width"
  CFormula Max;          // "max": "Vmax", "Imax"

  // Formula variables "t" and "x".
  CVarList Variables;

  // Run state.
  double LastValue = 0.0;
  double PhaseAcc = 0.0;
  double EventTime = 0.0;
  int32_t Output = 0;
  int32_t Latch = 0;

 private:
  bool CurrentOutput() const;
  bool CurrentControl() const;
  // The control quantity: V(control 2) - V(control 1), or the current
  // through the zero-volt branch of row r + 1.
  double Control(const CCalc& calc) const;
  // The linear form of the output for gain g (the "Linear" and "PWL" rows).
  void StampGain(CCalc& calc, double g) const;
  // The output held at `value` (pulse and modulator levels, or 0 for the
  // rows whose value comes in through the source term).
  void StampLevel(CCalc& calc, double value) const;
  bool Evaluate(CCalc& calc, double t, double& out);
  double Oscillate(const CCalc& calc, double t, double& slope);
  void NextPwmEvent(const CCalc& calc, double t, double& nextTime, double& maxStep);
};

// Model ids of the controlled-source family.
enum : int32_t {
  MODEL_CS_PULSE = 2,
  MODEL_CS_FUNCTION = 5,
  MODEL_CS_PWL = 8,
  MODEL_CS_LINEAR = 15,
  MODEL_CS_OSCILLATOR = 42,
  MODEL_CS_PWM = 47,
};

extern const ElemType kTypeV_VCVS;
extern const ElemType kTypeV_CCVS;
extern const ElemType kTypeI_VCCS;
extern const ElemType kTypeI_CCCS;

}  // namespace tz4
