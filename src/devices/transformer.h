// CElemW: ideal windings and transformers. A winding is a voltage row whose
// voltage is its number of turns times a shared volts-per-turn unknown; the
// ampere-turns of all windings on a core add up to one balance equation.
// The lone winding W_W exposes that unknown at its core pin.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

enum : int32_t {
  MODEL_W_TRANSFORMER = 24,  // "Winding" and "Transformer"
};

class CElemW : public CCmp {
 public:
  explicit CElemW(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  CParamTable BindParams() override;
  int32_t GetExtraRows() override;
  int Stamp(CCalc& calc, int phase, double t) override;
  // W_CUSTOM takes a shape of three windings on the left and three on the
  // right.
  void LoadCustom() override;
  // W_CUSTOM has one winding for each pair of its pins.
  void StoreCustom() override;

  bool IsCustom() const;  // W_CUSTOM
  // Sets the number of windings of W_CUSTOM. When the count changes, the
  // turns, their names "n1", "n2", ... and the parameter table are rebuilt,
  // each winding with 1 turn.
  void SetWindingCount(int32_t count);

  // Parameters.
  CFormula N1;  // "n" on W_W, "n1" on the transformers; attribute "w"; default 1.0
  CFormula N2;  // "n2"; attribute "w1"; default 1.0

  // W_CUSTOM: one winding per pair of pins, each with its turns, which are
  // saved under the parameter's name.
  int32_t WindingCount = 0;
  std::vector<std::string> CustomNames;
  std::vector<CFormula> CustomTurns;
};

extern const ElemType kTypeW_W;
extern const ElemType kTypeW_T2;
extern const ElemType kTypeW_T3;
extern const ElemType kTypeW_CUSTOM;

}  // namespace tz4
