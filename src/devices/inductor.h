// CElemL: the inductor in four shapes: plain, by table, a coupled pair, and
// a custom set of any number of coupled windings. Each winding has one extra
// row that holds its current.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

class CElemL : public CCmp {
 public:
  explicit CElemL(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  CParamTable BindParams() override;
  int32_t GetExtraRows() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  // The table models follow their segment after each accepted point; a
  // change of inductance keeps the flux and asks for a new build.
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;
  // "L_CUSTOM" takes a shape of three windings on the left and three on
  // the right.
  void LoadCustom() override;
  // The windings of "L_CUSTOM" follow its pins: one for each pair.
  void StoreCustom() override;

  // Sizes the windings of "L_CUSTOM" and builds their parameters "L1".."Ln",
  // "K12", "K13".., "IC1".."ICn"; items whose name stays keep their values.
  void SetWindingCount(int count);

  // One item of the per-instance table of "L_CUSTOM": its kind, its name and
  // its place in customValues (PK_VALUE) or customIC (PK_IC).
  struct CustomParam {
    uint32_t Kind = PK_VALUE;
    std::string Name;
    int Index = 0;
  };

  std::string ICText;    // "ic": initial current of the first winding
  CFormula L;            // "l", 1 (0 on "L_VCL", "L_CCL")
  std::string Zs;        // "fs", "s": "Z(s)" of "Function", kept only
  int32_t HasValue = 0;  // Current is known
  double Current = 0.0;  // present current
  CFormula L2;           // "l2", 1: second winding of "L_CL"
  std::string IC2Text;   // "ic2"
  CFormula K;            // "k", 1: coupling of the pair
  int32_t HasValue2 = 0;
  double Current2 = 0.0;
  int32_t windingCount = 0;               // windings of "L_CUSTOM"
  std::vector<CustomParam> customParams;  // "L" items, "K" items, "IC" items
  std::vector<CFormula> customValues;     // the "L" items, then the "K" items
  std::vector<std::string> customIC;      // the "IC" items
  std::vector<uint8_t> customHasValue;    // per winding
  std::vector<double> customCurrent;      // per winding

  // One winding as a run sees it: its nodes (reversed by a dot), its row,
  // its inductance, and where its initial text and its current live.
  struct Winding {
    int a = -1, b = -1, row = -1;
    double inductance = 0.0;
    std::string* icText = nullptr;
    double* current = nullptr;
    bool known = false;  // a value here is kept as known
    int32_t* flag32 = nullptr;
    uint8_t* flag8 = nullptr;
    bool HasValue() const { return flag32 != nullptr ? *flag32 != 0 : *flag8 != 0; }
    void SetHasValue(bool on) const {
      if (flag32 != nullptr)
        *flag32 = on ? 1 : 0;
      else
        *flag8 = on ? 1 : 0;
    }
  };

 private:
  // The windings of the present shape: one on the plain path, two on
  // "L_CL", one per pin pair on "L_CUSTOM"; none on a subcircuit.
  std::vector<Winding> Windings();
  // The mutual inductance of windings i and j.
  double Mutual(const std::vector<Winding>& windings, size_t i, size_t j) const;
  // The inductance of the plain path: "L", or the slope of the table's
  // present segment.
  double PlainInductance() const;
  bool PlainPath() const;
  int ReadInitialCurrents(CCalc& calc);
  int AdjustInitialCurrents(const CCalc& calc);
  void StampPlain(CCalc& calc, Winding& w);
  void StampCoupled(CCalc& calc, std::vector<Winding>& windings);
};

// Model ids of the inductor family.
enum : int32_t {
  MODEL_L_L = 11,
  MODEL_L_FUNCTION = 5,
};

extern const ElemType kTypeL_L;
extern const ElemType kTypeL_VCL;
extern const ElemType kTypeL_CCL;
extern const ElemType kTypeL_CL;
extern const ElemType kTypeL_CUSTOM;

}  // namespace tz4
