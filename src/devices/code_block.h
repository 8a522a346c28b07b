// CElemCode: a block with input pins, output pins and a program in the
// C-code language. Inputs are read into double variables, the program runs,
// and each output drives its pin like an ideal voltage source whose value is
// a variable. The pin names come from the block's own shape (inputs
// "x1,x2,x3" and outputs "y1,y2,y3" unless the file says otherwise).
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/lists.h"

namespace tz4 {

enum : int32_t {
  MODEL_CODE_C = 48,
  MODEL_CODE_FILE = 56,
};

class CElemCode : public CCmp {
 public:
  explicit CElemCode(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  // The block's own shape: inputs "x1,x2,x3", outputs "y1,y2,y3", no
  // variables, no clock, unless its element says otherwise.
  void LoadCustom() override;
  // A block has a clock pin, its last one, when its shape says so.
  void StoreCustom() override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int32_t GetExtraRows() override { return OutCount; }

  // The program text kept in the circuit file beside the component (its
  // attachment); when not empty, a "File" model runs it instead of the file.
  const std::string& StoredText() const { return attachment; }

  // Parameters.
  std::string Code;      // "Code", the program text; attribute "c_code"
  std::string IC;        // "IC", start values such as "a=1,b=2"; attribute "ic"
  std::string FileName;  // "File", the program file of the "File" model; attribute "file"

  // Run state.
  bool Clocked = false;     // the shape has a clock pin, the last one
  int32_t ClockState = -1;  // -1 unknown, else the last clock level
  int32_t InCount = 0;
  int32_t OutCount = 0;
  CVarList Variables;                 // "t" at index 0, then the program's variables
  std::vector<TValue*> PinValues;     // per input, then per output: its variable element, or null
  int32_t RunPart = 0;                // 2 when the program has a "main", else 0
};

// The "ic" attribute keeps ";" where the working text has ",".
std::string IcTextFromFile(const std::string& stored);
std::string IcTextToFile(const std::string& working);

extern const ElemType kTypeX_C;

}  // namespace tz4
