// CElemLog: gates, flip-flops and Schmitt triggers. They live beside the
// analogue equations: inputs are voltages compared with the logic threshold,
// outputs are written as one of two levels, and delays are timed events.
// CCmp::view selects the function (gate kind, clock edge, inversion).
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

class CElemLog : public CCmp {
 public:
  explicit CElemLog(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int IsMatrixPin(int pin) override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;
  // Reads the inputs once at each time point and moves the outputs; a delay
  // makes the move a timed event.
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;
  // Y_CUSTOM takes a shape 2 wide, 3 high, with 7 pins on the left.
  void LoadCustom() override;
  // Y_CUSTOM takes its pins from its shape.
  void StoreCustom() override;

  // Index of the pin that a trace reads: Q on the flip-flops, the output of
  // the trigger, the last pin of a gate; -1 when there is none.
  int OutputPin() const;

  // Parameters, in archive order.
  int32_t Ic = 0;        // "ic", high/low
  CFormula Delay;        // "delay": "Delay" and "Up"
  CFormula Down;         // "down"
  CFormula Hysteresis;   // "hyst", Y_ST only
  CEnumValue Dominance;  // "dominance": "None", "Set", "Reset"; Y_RS, Y_JK only

  // Run state.
  int32_t LastClock = -1;  // last clock level, -1 while not known
  int32_t Out = 0;         // level presented at Q
  int32_t StateN = 0;      // internal state of Q-bar
  int32_t OutN = 0;        // level presented at Q-bar
  double TimeQ = -999.0;   // pending change of Out; -999.0 means none
  double TimeN = -999.0;   // pending change of OutN

 private:
  // The gate function or the Schmitt trigger of the inputs.
  int32_t Combine(const CCalc& calc) const;
  bool PostStepCombinational(const CCalc& calc, bool apply, double t, bool& changed);
  bool PostStepFlipFlop(const CCalc& calc, bool apply, double t, bool& changed);
  bool PostStepTrigger(const CCalc& calc, bool apply, double t, bool& changed);
  // Brings Q (and Q-bar) to new internal levels, timed by the model.
  void Move(int32_t q, int32_t qBar, bool bothTimed, double t, bool& changed, bool apply);
  // The delay rule for one output: at once, or a pending change at t + delay.
  void Schedule(int32_t level, int32_t& presented, double& pending, double t) const;
};

// Model ids of the logic family.
enum : int32_t {
  MODEL_LOG_DELAY = 23,
  MODEL_LOG_LOGIC = 41,
  MODEL_LOG_DELAY2 = 58,
};

extern const ElemType kTypeY_1;
extern const ElemType kTypeY_2;
extern const ElemType kTypeY_3;
extern const ElemType kTypeY_CUSTOM;
extern const ElemType kTypeY_FF;
extern const ElemType kTypeY_RS;
extern const ElemType kTypeY_JK;
extern const ElemType kTypeY_ST;

}  // namespace tz4
