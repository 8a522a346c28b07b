// CParam: the uniform view of one component setting. A model's parameter
// table is a static list of ParamDef (kind, name, how to reach the member);
// binding it to a component yields CParam rows that point at that
// component's own members, so nothing global is rewritten.
#pragma once
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tz4 {

class CCmp;
class CFormula;
class CPWL;

enum ParamKind : uint32_t {
  PK_END = 0,
  PK_NAME = 1,
  PK_FORMULA_TEXT = 2,
  PK_TEXT = 3,
  PK_TEXT4 = 4,
  PK_PWL_SOURCE = 5,
  PK_LOGIC_LIST = 6,
  PK_SWITCH_LIST = 7,
  PK_TABLE_1 = 8,
  PK_TABLE_2 = 9,
  PK_TEXT10 = 10,
  PK_DATA_FILE = 11,
  PK_LIBRARY_FILE = 12,
  PK_CODE_FILE = 13,
  PK_VALUE = 14,
  PK_IC = 15,
  PK_ENUM = 16,
  PK_ON_OFF = 17,
  PK_YES_NO = 18,
  PK_HIGH_LOW = 19,
  PK_PWL = 20,
  PK_CODE = 21,
};

// An enumerated setting: an index into a null-terminated table of names.
struct CEnumValue {
  int32_t Index = 0;
  const char* const* Names = nullptr;
};

// What a bound parameter points at, by kind: strings for kinds 1-13, 15 and
// 21, CFormula for PK_VALUE, CEnumValue for PK_ENUM, int32 for the on/off,
// yes/no and high/low kinds, CPWL for PK_PWL.
using ParamTarget =
    std::variant<std::monostate, std::string*, CFormula*, int32_t*, CEnumValue*, CPWL*>;

// One row of a model's static parameter table.
struct ParamDef {
  uint32_t Kind = PK_END;
  const char* Name = nullptr;
  ParamTarget (*Bind)(CCmp&) = nullptr;
};

// A parameter bound to one component.
class CParam {
 public:
  CParam() = default;
  CParam(uint32_t kind, const char* name, ParamTarget value) : Kind(kind), Name(name), Value(value) {}
  virtual ~CParam() = default;

  uint32_t Kind = PK_END;
  const char* Name = nullptr;
  ParamTarget Value;
};

using CParamTable = std::vector<CParam>;

// Binder for a ParamDef from a pointer to a data member of a component class:
//   {PK_VALUE, "R", &BindMember<&CElemR::R>}
template <class T>
struct MemberPointerTraits;
template <class C, class M>
struct MemberPointerTraits<M C::*> {
  using Class = C;
};
template <auto Member>
ParamTarget BindMember(CCmp& cmp) {
  using Class = typename MemberPointerTraits<decltype(Member)>::Class;
  return ParamTarget(&(static_cast<Class&>(cmp).*Member));
}

}  // namespace tz4
