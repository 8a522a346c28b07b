// CElemC: the capacitor, fixed, by table, and steered by a voltage or a
// current through a table of capacitances. One extra row holds its current.
//
// In the dynamic form (stampMode 1) the row states i = C dV/dt through B. In
// the state form (stampMode 0, the initial-condition search) the capacitor
// is a source of its known voltage, with -1/C in B as the next order, or an
// open circuit when no voltage is known.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

class CElemC : public CCmp {
 public:
  explicit CElemC(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  // The capacitance in force: "C" of the plain model, the present segment's
  // slope of a table (0 while the table has no segments).
  double Capacitance() const;

  std::string ICText;     // "ic": initial voltage, empty for none
  CFormula C;             // "c", 1
  std::string Zs;         // "fs", "1/s": "Z(s)" of "Function", kept only
  bool HasValue = false;  // Voltage is known
  double Voltage = 0.0;   // present voltage
};

// Model ids of the capacitor family.
enum : int32_t {
  MODEL_C_C = 10,
  MODEL_C_FUNCTION = 5,
};

extern const ElemType kTypeC_C;
extern const ElemType kTypeC_VCC;
extern const ElemType kTypeC_CCC;

}  // namespace tz4
