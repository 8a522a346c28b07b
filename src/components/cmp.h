// CCmp: the base of every circuit component. Identity, pins, the switching
// state, and the virtual operations through which the solver, the file code
// and the trace code talk to a component.
#pragma once
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "components/elem_type.h"
#include "components/param.h"
#include "components/pwl.h"

namespace tz4 {

class CCalc;
class CCmps;
class CXmlNode;
class CSubCir;
class CVarList;
class CFormula;

enum StampPhase : int {
  STAMP_INIT = 1,
  STAMP_RESET = 2,
  STAMP_ACCEPT = 3,
  STAMP_IC_ADJUST = 4,
  STAMP_MATRIX = 5,
  STAMP_SOURCE = 6,
  STAMP_SAMPLE = 7,
  STAMP_SAVE_IC = 8,
};

// Model ids with behaviour outside the devices themselves.
enum : int32_t {
  MODEL_SUBCIR = 7,
  MODEL_TABLE = 8,
};

// The shape of a component whose pins come from its file: how many pins
// stand on each side of its symbol and where, and what its inputs, outputs
// and variables are called. One object per component, archived in the child
// element "Custom". It carries its own copy of the type record, so that the
// component still looks like one of an ordinary type.
class CCustomElemType {
 public:
  // Width and height 1, every other number 0, every text empty; the record
  // is a copy of `base`.
  explicit CCustomElemType(const ElemType& base);
  virtual ~CCustomElemType() = default;

  // Both directions of the "Custom" element: "w", "h"; "l" and "l1".."l7"
  // (written only when not 0); "b"; "r" and "r1".."r7" (the same); "t";
  // "ldot", "rdot" on the custom windings; the child lists "Ins", "Outs",
  // "Vars" on the types that name their pins; "d"; and, when the element had
  // it, the older form of the names "n", kept as it was read. Loading sets
  // every count and position to 0 first.
  void Serialize(CXmlNode& archive);
  // Whether the element of this type carries the three name lists.
  bool HasNameLists() const;
  // Whether the element of this type carries the polarity masks.
  bool HasDots() const;

  int32_t width = 1;         // "w"
  int32_t height = 1;        // "h"
  int32_t leftCount = 0;     // "l": pins on the left side
  int32_t left[7] = {};      // "l1".."l7": position of each left pin
  int32_t bottom = 0;        // "b": pins on the bottom side
  int32_t rightCount = 0;    // "r": pins on the right side
  int32_t right[7] = {};     // "r1".."r7": position of each right pin
  int32_t top = 0;           // "t": pins on the top side
  int32_t leftDots = 0;      // "ldot": bit k reverses winding k
  int32_t rightDots = 0;     // "rdot"
  std::string inNames;       // child "Ins": input names, comma-separated
  std::string outNames;      // child "Outs"
  std::string varNames;      // child "Vars"
  bool flag = false;         // "d": the block has a clock pin
  std::string olderNames;    // "n": an older form of the names, kept only
  ElemType elemType;         // tag and models of the component's type
};

class CCmp {
 public:
  explicit CCmp(const ElemType& elemType);
  virtual ~CCmp();
  CCmp(const CCmp&) = delete;
  CCmp& operator=(const CCmp&) = delete;

  // --- virtual operations, in their fixed order ---
  virtual bool IsLabel() const { return false; }
  virtual bool IsVariable() const { return false; }
  // Load or store by the archive's direction. The default is SerializeBase
  // alone; overrides call SerializeBase first and give up when it fails.
  virtual bool Serialize(CXmlNode& archive, bool customFlag);
  virtual std::string& GetICText(std::string& out) {
    out.clear();
    return out;
  }
  virtual bool CheckParams() { return true; }
  // The current model's parameter table bound to this component: one CParam
  // per ParamDef row, pointing at this component's members. Empty when the
  // model is unresolved or has no table.
  virtual CParamTable BindParams();
  // ModelInfo::extraRows of the current model, 0 when unresolved.
  virtual int32_t GetExtraRows();
  virtual int IsMatrixPin(int /*pin*/) { return 1; }
  // nodeA = pins[0], nodeB = pins[1] (-1 where the pin does not exist),
  // row = firstRow, value = 0; true.
  virtual bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value);
  virtual double GetTraceValue(CCalc& /*calc*/, int /*kind*/) { return 0.0; }
  virtual int Stamp(CCalc& /*calc*/, int /*phase*/, double /*t*/) { return 0; }
  virtual void NextEvent(CCalc& /*calc*/, double /*t*/, double& /*nextTime*/, double& /*maxStep*/) {}
  virtual bool GetStateRange(int& /*low*/, int& /*high*/) { return false; }
  virtual void Reserved() {}
  virtual bool CheckSwitching(CCalc& /*calc*/, bool /*apply*/) { return false; }
  virtual bool PostStep(CCalc& /*calc*/, bool /*apply*/, double /*t*/, bool& changed) {
    changed = false;
    return true;
  }
  // Bracket the reading of a "Custom" element: LoadCustom of a class with a
  // shape creates `customType` with the class's defaults; StoreCustom then
  // derives what the component takes from its shape. A class that creates
  // no shape has its element kept as it was read.
  virtual void LoadCustom() {}
  virtual void StoreCustom() {}
  // The value that a host's input sets, and in `modelIndex` the model that
  // takes it; null for a component that cannot be an input.
  virtual CFormula* HostInput(int& /*modelIndex*/) { return nullptr; }
  // The named variables of a code block, which formulas, traces and hosts
  // read by "NAME.VARIABLE"; null for a component without any.
  virtual CVarList* Variables() { return nullptr; }

  // --- non-virtual operations ---
  // Nothing when n equals pinCount; otherwise n zeroed pins (none for n <= 0).
  void SetPinCount(int n);
  // The current model's row; null while unresolved or without a table.
  const ModelInfo* GetModel() const;
  int32_t ModelId() const;  // id of the current model, 0 when unresolved
  // The node of pin `index`, -1 where the component has no such pin.
  int Pin(size_t index) const {
    return index < pins.size() ? pins[index] : -1;
  }
  // Whether the component's type tag is `tag` (exact comparison).
  bool IsType(const char* tag) const;
  // Whether it is any of `tags`.
  bool IsTypeIn(std::initializer_list<const char*> tags) const;
  // name, or path + "." + name inside a subcircuit.
  std::string GetFullName() const;
  // Binds the table and takes the row whose name equals paramName ignoring
  // case; an empty name gives the first row. False when not found or when
  // the model has no table.
  bool FindParam(const std::string& paramName, CParam& out);
  // Index of the parameter in the bound table, -1 when not found.
  int FindParamIndex(const std::string& paramName);
  // The subcircuit part, made on first use and sized for the pins.
  CSubCir& SubCircuit();
  // Gives the component a shape of its own (a fresh CCustomElemType made
  // from its type) and points `type` at the record inside it.
  CCustomElemType& CreateCustomType();
  // The common part of a component element: "type", "Custom", "id", "name",
  // "file_name", "view", "group", "node0".. (these with customFlag false),
  // then "model", "SubCir", "pwl"/"pwlf"/"pwlm" and "Attachment". On load an
  // unknown model appends "Model '...' not found for NAME" and gives false.
  bool SerializeBase(CXmlNode& archive, bool customFlag);

  // --- fields ---
  int32_t id = 0;
  const ElemType* type = nullptr;
  // Null unless the component's class gave it a shape (LoadCustom); the
  // component is its only owner.
  std::shared_ptr<CCustomElemType> customType;
  std::string name;
  const ModelInfo* models = nullptr;
  int32_t modelIndex = -1;
  int32_t prevModelId = 0;
  std::string fileName;
  std::string group;
  int32_t view = 0;
  int32_t state = 0;
  bool switched = false;
  bool forceIC = false;
  bool ignoreIC = false;
  bool icRetry = false;
  bool hostInput = false;  // a host feeds its value: a restored subcircuit keeps its model
  std::shared_ptr<CSubCir> subCir;  // model 7 only; created on demand, sole owner
  CPWL pwl;
  std::string attachment;
  std::string path;
  CCmps* owner = nullptr;
  int32_t pinCount = -1;
  std::vector<int32_t> pins;
  int32_t firstRow = 0;
  // A "Custom" child of a class that has no shape of its own, kept as it
  // was read and written back unchanged.
  std::string keptCustomXml;
};

// Appends the component's full name, " : ", the text and "; " to the last
// error; a null component gives "pcmp = NULL". Always returns false.
bool ComponentError(const CCmp* component, const std::string& text);

// The checks of a value parameter, each reported through ComponentError by
// the parameter's name: a formula that failed ("NAME : formula error");
// CheckFinite also an infinite value ("NAME = infinite"); CheckNonNegative
// also a negative one ("NAME < 0"). Each stops at the first fault and gives
// whether the value passed.
bool CheckValid(CCmp* component, const CFormula& value, const std::string& name);
bool CheckFinite(CCmp* component, const CFormula& value, const std::string& name);
bool CheckNonNegative(CCmp* component, const CFormula& value, const std::string& name);

// CheckParams of a type whose simulation behaviour is not available: reports
// "type TAG cannot be simulated yet" for the component and returns false, so
// that no run silently ignores a device. In the subcircuit model, which runs
// as its contents, it passes.
bool ReportNotSimulated(const CCmp* component);

}  // namespace tz4
