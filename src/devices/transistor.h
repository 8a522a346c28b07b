// CElemT: bipolar and field-effect transistors, each model a small state
// machine whose states are linear circuits built from ideal pieces (clamps,
// controlled currents, a resistor, a first-order lag).
// Pins: control (base or gate), common (emitter or source), output
// (collector or drain).
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

class CElemT : public CCmp {
 public:
  explicit CElemT(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;

  bool IsBipolar() const;  // T_TNPN, T_TPNP

  // Parameters.
  CFormula K;      // "B" on bipolar types, "S" on FETs; attribute "k"
  CFormula F1;     // "f1"
  CFormula Vbe;    // "Vbe" on bipolar types, "Vth" on FETs; attribute "vbe"
  CFormula Vsat;   // "vsat"
  CFormula Rdson;  // "rdson"
  CFormula Vd;     // "vd"
  std::string ICText;   // "IC" of "Linear" and "Transistor"; attribute "ic"
  int32_t SwitchIc = 0;  // "IC" of "Switch"; attribute "s_ic"
  int32_t IcBe = 0;      // "ICbe"; attribute "be_ic"
  int32_t IcBc = 0;      // "ICbc"; attribute "bc_ic"
  CEnumValue FetIc;      // "IC" of "FET"; attribute "fet_ic"
  CEnumValue FetDIc;     // "IC" of "FET-D"; attribute "fetd_ic"

  // Run state.
  bool HasIc = false;       // an initial value of the lag current is known
  double IcValue = 0.0;     // that value, in amperes
  int32_t SwitchState = 0;  // main switch of "Switch", 1 closed
  double Tau = 0.0;         // time constant of the lag
  double Alpha = 0.0;       // common-base gain
};

// Model ids of the transistor family.
enum : int32_t {
  MODEL_T_SWITCH = 14,
  MODEL_T_LINEAR = 15,
  MODEL_T_TRANSISTOR = 19,
  MODEL_T_FET = 20,
  MODEL_T_FETD = 57,
};

extern const ElemType kTypeT_TNPN;
extern const ElemType kTypeT_TPNP;
extern const ElemType kTypeT_NFET;
extern const ElemType kTypeT_PFET;

}  // namespace tz4
