// CElemR: the resistive elements: a fixed resistor, a table in either
// direction, a potentiometer and two resistors steered by a voltage or a
// current through a table of resistances.
//
// The tables turn a nonlinear curve into switching states. On "R_R" the
// segment of the table is the component's `state`, moved by CheckSwitching
// within a solve. On "R_VCR" and "R_CCR" the segment (`pwl.Segment`) follows
// the control quantity after each accepted step (PostStep), like a value
// read from outside rather than a state of the resistor's own branch.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

class CElemR : public CCmp {
 public:
  explicit CElemR(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  int32_t GetExtraRows() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  bool GetStateRange(int& low, int& high) override;
  bool CheckSwitching(CCalc& calc, bool apply) override;
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  CFormula R;         // "r", 1: "R" of "R" and "Potentiometer"
  std::string Zs;     // "fs", "1": "Z(s)" of "Function", kept only
  CFormula Position;  // "p", 0: wiper position of "Potentiometer", 0 to 1
  CPWL pwlI;          // "pwli", "pwlif", "pwlim": the table of "PWL-I"
};

// Model ids of the resistor family.
enum : int32_t {
  MODEL_R_R = 9,
  MODEL_R_PWL_I = 51,
  MODEL_R_FUNCTION = 5,
  MODEL_R_POTENTIOMETER = 45,
};

extern const ElemType kTypeR_R;
extern const ElemType kTypeR_Pot;
extern const ElemType kTypeR_VCR;
extern const ElemType kTypeR_CCR;

}  // namespace tz4
