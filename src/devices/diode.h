// CElemD: the ideal rectifying elements: the diode with its charge-storing
// forms, two zeners, three thyristors and a bridge. Each is a clamp on an
// extra row: off, the row's current is held at 0; on, the voltage is held at
// a fixed drop. A change of state happens only through the solver's
// switching loop; the sub-states of thyristors (gate, latch) and of the
// charge-storing diodes follow in PostStep.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

// The start states of a zener, the index of its "IC": "Minus", "Off", "Plus".
extern const char* const kZenerICNames[];

class CElemD : public CCmp {
 public:
  explicit CElemD(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  double GetTraceValue(CCalc& calc, int kind) override;
  int Stamp(CCalc& calc, int phase, double time) override;
  bool GetStateRange(int& low, int& high) override;
  bool CheckSwitching(CCalc& calc, bool apply) override;
  bool PostStep(CCalc& calc, bool apply, double time, bool& changed) override;

  CFormula Vd;              // "vd", 0: forward drop
  CFormula V;               // "v", 8: zener voltage
  CFormula t;               // "t", 0: storage time constant
  CFormula ts;              // "ts", 0: soft recovery time
  int32_t IC = 0;           // "ic": on or off at the start; bit set of the bridge
  CEnumValue ICz{1, kZenerICNames};  // "ic" of the zeners
  CFormula ICQ;             // "icq", 0: stored charge at the start
  CFormula Threshold;       // "thr", 5: thyristor gate level
  CFormula Ihold;           // "hold", 1: holding current
  double charge = 0.0;      // stored charge
  int32_t phase = 0;        // sub-state of thyristors, "Storage" and "Soft"
  double recovery = 0.0;    // constant term of soft recovery
};

// Model ids of the diode family.
enum : int32_t {
  MODEL_D_DIODE = 12,  // also "Zener" and "Thyristor"
  MODEL_D_STORAGE = 39,
  MODEL_D_SOFT = 50,
};

extern const ElemType kTypeD_D;
extern const ElemType kTypeD_Z;
extern const ElemType kTypeD_ZS;
extern const ElemType kTypeD_BR;
extern const ElemType kTypeD_LCT;
extern const ElemType kTypeD_VCT;
extern const ElemType kTypeD_CCT;

}  // namespace tz4
