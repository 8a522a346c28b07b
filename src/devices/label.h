// CLabel names a node. With its plain model it only names the node and, if
// asked, gives it an initial voltage; switched to one of its source models
// it drives the node from ground, which is how a host feeds an input into a
// circuit. CVariable is a named value that formulas read ("A.Value"); it has
// no pins and writes nothing into the system.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "components/cmp.h"
#include "components/signal.h"
#include "expr/formula.h"

namespace tz4 {

enum : int32_t {
  MODEL_LABEL = 1,
  MODEL_LABEL_V = 13,
  MODEL_VARIABLE = 55,
};

// One pin: the named node.
class CLabel : public CCmp {
 public:
  explicit CLabel(const ElemType& elemType);

  bool IsLabel() const override { return true; }
  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int IsMatrixPin(int pin) override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;

  CFormula* HostInput(int& modelIndex) override {
    modelIndex = kInputModelIndex;
    return &V;
  }
  // Whether the present model is driven by `Signal`.
  bool HasSignalModel() const;

  // Index of the "V" row in the model table, the model a host input selects.
  static constexpr int kInputModelIndex = 1;

  CFormula V;          // "V", the level of the "V" model; attribute "v"; default 10.0
  std::string ICText;  // "VIC", the node's initial voltage, empty for none; attribute "ic"
  CFormula R;          // "R", the resistance through which "VIC" acts; attribute "r"; default 0.0
  CSignal Signal;      // the time function of the timed models; child "Signal"

  bool icDone = false;  // keeps the "VIC" stamp from acting when set

 private:
  // Reads "VIC" at the start of a build; false, with the solver's error set,
  // for a text that is no number.
  bool ReadInitialVoltage(CCalc& calc);
  void StampInitialVoltage(CCalc& calc, double t);

  double initialVoltage = 0.0;
  bool hasInitialVoltage = false;
};

// No pins.
class CVariable : public CCmp {
 public:
  explicit CVariable(const ElemType& elemType);

  bool IsVariable() const override { return true; }
  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;

  CFormula Value;  // "Value"; attribute "val"; default 0.0
};

// The types of labels and variables, outside the list of type tags: the
// collection creates them by the words "label" and "var".
extern const ElemType kTypeLabel;
extern const ElemType kTypeVariable;

std::unique_ptr<CCmp> CreateLabel();
std::unique_ptr<CCmp> CreateVariable();

}  // namespace tz4
