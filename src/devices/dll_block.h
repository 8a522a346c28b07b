// CElemDll: a block whose behaviour lives in a dynamic library of the
// user's. The library is called with one flat array of doubles: inputs,
// outputs, internal variables and 100 guard words. It is named on disk by
// "DLL", or stored in the circuit file as hexadecimal text (the component's
// attachment) and written to a temporary file for the run.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/lists.h"

namespace tz4 {

enum : int32_t {
  MODEL_CODE_DLL = 49,
};

class CElemDll : public CCmp {
 public:
  // The entries of a user's library: main and init take the simulated time
  // and the data array and give 0 on success; exit takes nothing.
  using DllEntry = int32_t (*)(double t, double* data);
  using DllExit = void (*)();

  // Name of the exit entry, fixed.
  static constexpr const char* kExitName = "dll_exit";
  // Each guard word holds the bytes "__%n/a__".
  static constexpr uint64_t kGuardWord = 0x5F5F612F6E255F5FULL;
  static constexpr int kGuardCount = 100;

  explicit CElemDll(const ElemType& elemType);
  ~CElemDll() override;

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  // The block's own shape: inputs "x1,x2,x3", outputs "y1,y2,y3", no
  // variables, no clock, unless its element says otherwise.
  void LoadCustom() override;
  // A block has a clock pin, its last one, when its shape says so.
  void StoreCustom() override;
  bool CheckParams() override;
  int32_t GetExtraRows() override { return OutCount; }

  // The library as hexadecimal text, kept in the circuit file beside the
  // component (its attachment); empty when the library is named by "DLL".
  const std::string& StoredText() const { return attachment; }

  // Parameters.
  std::string Dll;                // "DLL", the library path; attribute "dll"
  std::string Init = "dll_init";  // "Init", the initialisation entry; attribute "dll_init"
  std::string Main = "dll_main";  // "Main", the main entry; attribute "dll_code"
  std::string IC;                 // "IC", start values of variables; attribute "ic"

  // Run state.
  int32_t InCount = 0;
  int32_t OutCount = 0;
  int32_t VarCount = 0;
  CVarList Variables;  // double scalars: inputs, outputs, variables
  void* Library = nullptr;
  DllEntry InitEntry = nullptr;
  DllEntry MainEntry = nullptr;
  DllExit ExitEntry = nullptr;
  std::string TempPath;       // the temporary library file, deleted with the block
  std::vector<double> Data;   // the array handed to the library
  bool Clocked = false;
  int32_t ClockState = -1;
};

extern const ElemType kTypeX_DLL;

}  // namespace tz4
