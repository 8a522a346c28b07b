// CElemLG: the independent logic source. One output driven high or low by a
// constant, a pulse, a step, a list of points or a data file; all timing
// comes from its signal.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "components/signal.h"

namespace tz4 {

class CCalc;

class CElemLG : public CCmp {
 public:
  explicit CElemLG(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int IsMatrixPin(int /*pin*/) override { return 0; }
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;

  int32_t Active = 1;  // "a": the level of "V"; on "Pulse" and "Step" 0 inverts
  CSignal Signal;      // the time function, archived on the component itself
};

// Model ids of the logic generator.
enum : int32_t {
  MODEL_LG_PULSE = 2,
  MODEL_LG_STEP = 3,
  MODEL_LG_FILE = 6,
  MODEL_LG_LIST = 8,
  MODEL_LG_V = 13,
};

// Whether a model id is one of the timed models (pulse, step, file, list)
// that run on a signal; shared with the time-steered switch.
bool IsTimedSignalModel(int32_t modelId);

// The attributes of a signal-driven logic level, kept on the component
// element itself rather than in a "Signal" child: "a", "p", "w", "d",
// "list", "file", "c".
void ArchiveLogicSignal(CXmlNode& archive, int32_t& active, CSignal& signal);

// The initial-condition text of a timed model: full name, ".Delay=" and the
// delay at 12 digits; empty in other models.
std::string& SignalDelayICText(const CCmp& component, const CSignal& signal, std::string& out);

// What every component steered by a timed logic signal shares (the logic
// generator and the time-steered switch): the checks of its timed models,
// and the phases other than STAMP_MATRIX: the start of the signal, its
// reset, and the move of its time origin when a state is saved.
bool CheckLogicSignal(CCmp& owner, CSignal& signal);
int StampLogicSignal(CCmp& owner, CSignal& signal, CCalc& calc, int phase, double t);

extern const ElemType kTypeY_LG;

}  // namespace tz4
