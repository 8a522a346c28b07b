// Switches. CElemCS is steered by a voltage, a current or a logic level, as a
// plain switch, a timed pulse, or a resistance that travels in steps.
// CElemS is steered by time alone through a signal. The three-pin (SPDT) form
// of each adds a second contact that is closed while the first is open.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "components/signal.h"
#include "expr/formula.h"

namespace tz4 {

class CElemCS : public CCmp {
 public:
  explicit CElemCS(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int IsMatrixPin(int pin) override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;
  // The control is read once at each time point; a crossing moves the
  // contact between solutions, never inside the state loop.
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  // Parameters, in archive order.
  int32_t Active = 1;   // "a": the contact state that the control's high side selects
  CFormula Threshold;   // "thr"
  CFormula Hysteresis;  // "hyst": full width of the band around the threshold
  int32_t IC = 0;       // "ic": contact state at the start
  CFormula Width;       // "width": pulse length; the whole time of a travel ("Ramp")
  CFormula Roff;        // "roff": resistance at step 0
  CFormula Ron;         // "ron": resistance at the last step
  CFormula Steps;       // "steps"
  CEnumValue Slope;     // "slope": "Linear", "Cos", "Log"

  // Run state.
  int32_t contact = 0;
  double eventTime = 0.0;
  int32_t armed = 0;
  int32_t stepIndex = 0;
  int32_t stepCount = 0;

 private:
  // The control's distance above its level: the control voltage or
  // current less `Threshold`, or a logic pin less the logic threshold.
  double Control(const CCalc& calc) const;
  // The second contact's pin, and its row; -1 on single-contact types.
  int SecondPin() const;
  int SecondRow() const;
  // The resistance of step k of the travel.
  double StepResistance(int32_t k) const;
  void StampSteps(CCalc& calc) const;
  void NextStepEvent(double t, double& nextTime, double& maxStep);
};

class CElemS : public CCmp {
 public:
  explicit CElemS(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;

  int32_t Active = 1;  // "a": the contact state of "Switch"; 0 inverts a timed model
  CSignal Signal;      // the time function, archived on the component itself
};

// Model ids of the switch families.
enum : int32_t {
  MODEL_SW_PULSE = 2,
  MODEL_SW_STEP = 3,  // "Steps" of CElemCS, "Step" of CElemS
  MODEL_SW_FILE = 6,
  MODEL_SW_LIST = 8,
  MODEL_SW_SWITCH = 14,
};

// The contacts of a switch at `level`: the first, from a to b on row r,
// closed at level 1; the second, from e to b on row s (none when e or s is
// negative), closed at level 0. An open contact carries no current.
void StampContacts(CCalc& calc, int32_t level, int a, int b, int r, int e, int s);

extern const ElemType kTypeS_VCS;
extern const ElemType kTypeS_CCS;
extern const ElemType kTypeS_LCS;
extern const ElemType kTypeS_VCS3;
extern const ElemType kTypeS_CCS3;
extern const ElemType kTypeS_LCS3;
extern const ElemType kTypeS_S;
extern const ElemType kTypeS_S3;

}  // namespace tz4
