// CElemV: the independent voltage source "V_V" and current source "I_I".
// Each holds a constant value or a time function (CSignal).
//
// The source's row is marked as varying: its value enters through the
// time-dependent term s(t) alone, so that a step on a kept factorisation can
// feed it in without touching the matrix. The constant model reads `Value`
// at every evaluation, which is also where a host's input value lands.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "components/signal.h"
#include "expr/formula.h"

namespace tz4 {

class CElemV : public CCmp {
 public:
  explicit CElemV(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;
  // A host's input is the constant of the first model ("V" or "I").
  CFormula* HostInput(int& modelIndex) override {
    modelIndex = 0;
    return &Value;
  }

  // Whether the present model is driven by the signal.
  bool HasSignalModel() const;

  CFormula Value;  // "v", 10: the constant of model "V" or "I"
  CSignal Signal;  // child "Signal": every other setting
};

// Model id of the constant source.
enum : int32_t {
  MODEL_V_CONSTANT = 13,
};

extern const ElemType kTypeV_V;
extern const ElemType kTypeI_I;

}  // namespace tz4
