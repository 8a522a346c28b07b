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

  std::string ICText;       // "ic": initial current of the first winding
  CFormula L;               // "l", 1 (0 on "L_VCL", "L_CCL")
  std::string Zs;           // "fs", "s": "Z(s)" of "Function", kept only
  int32_t HasValue = 0;     // Current is known
  double Current = 0.0;     // present current
  CFormula L2;              // "l2", 1: second winding of "L_CL"
  std::string IC2Text;      // "ic2"
  CFormula K;               // "k", 1: coupling of the pair
  int32_t HasValue2 = 0;
  double Current2 = 0.0;
  int32_t windingCount = 0;                 // windings of "L_CUSTOM"
  std::vector<CustomParam> customParams;    // "L" items, "K" items, "IC" items
  std::vector<CFormula> customValues;       // the "L" items, then the "K" items
  std::vector<std::string> customIC;        // the "IC" items
  std::vector<uint8_t> customHasValue;      // per winding
  std::vector<double> customCurrent;        // per winding
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
