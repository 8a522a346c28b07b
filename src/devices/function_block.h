// CElemF: signal-processing blocks. A block reads its input pins as
// voltages, computes a value and drives its output pin as a voltage source
// to ground: arithmetic blocks, one- and two-input tables, formula blocks, an
// integrator, and the logic function and bus blocks.
// Pins: the inputs in order, then the output, then the clock of a clocked
// custom block.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/cmp.h"
#include "expr/formula.h"
#include "expr/lists.h"

namespace tz4 {

// Model ids of the function blocks.
enum : int32_t {
  MODEL_F_FUNCTION = 5,
  MODEL_F_LINEAR = 15,
  MODEL_F_PWR = 25,
  MODEL_F_ABS = 26,
  MODEL_F_INT = 27,
  MODEL_F_LIM = 28,
  MODEL_F_MUL = 29,
  MODEL_F_DIV = 30,
  MODEL_F_SUM = 31,
  MODEL_F_SUB = 32,
  MODEL_F_MAX = 33,
  MODEL_F_MIN = 34,
  MODEL_F_GT = 35,
  MODEL_F_LT = 36,
  MODEL_F_MAG = 37,
  MODEL_F_PHASE = 38,
  MODEL_F_TABLE = 52,
  MODEL_F_INTEGRAL = 54,
};

class CElemF : public CCmp {
 public:
  explicit CElemF(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  // F_CUSTOM, Y_FUNCTION and Y_BUS take a shape 2 wide, 3 high, with 7 pins
  // on the left, and their default input names and formula.
  void LoadCustom() override;
  // A custom block evaluates its formula with "t" and its input names, and
  // has a clock pin when its shape says so.
  void StoreCustom() override;
  int Stamp(CCalc& calc, int phase, double t) override;
  // A clocked block takes its inputs on each rising clock edge.
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  bool IsLogicFunction() const;  // Y_FUNCTION
  bool IsBus() const;            // Y_BUS
  // Index of the output pin, -1 when the block has no pins yet.
  int OutputPin() const;

  // Parameters.
  CEnumValue Format;         // "Format" of Y_BUS: "Unsigned", "Signed"; attribute "format"
  std::string Func = "x";    // "F(x)", "F(x,y)", "F(b)"; attribute "func" (older files: "f")
  std::string Fs = "1";      // "F(s)"; attribute "fs"; not used by the time simulation
  CFormula Ic;               // "IC"; attribute "func_ic"; default 0.0
  CFormula K;                // "K"; attribute "k"; default 1.0
  CFormula Resolution;       // "resolution"; attribute "res"; default 1.0
  CFormula Power;            // "power"; attribute "pow"; default 1.0
  CFormula Min;              // "Min"; attribute "min"; default -10.0
  CFormula Max;              // "Max"; attribute "max"; default 10.0
  std::string Table;         // "Table"; attribute "table"
  std::string TableX = "0";  // "X" of the two-input table; attribute "table_x"
  std::string TableY = "0";  // "Y" of the two-input table; attribute "table_y"
  int32_t LogicIc = 0;       // "IC" of Y_FUNCTION, 1 = high; attribute "func_ic"

  // The variables that Func is evaluated with: "t" and the input names.
  CVarList Variables;

  // Run state.
  double Value = 0.0;             // the present output
  int32_t Clocked = 0;            // 1: the last pin is a clock
  std::vector<double> TableData;  // table points, X values, Y values, entries
  int32_t TableCount = 0;
  int32_t TableNx = 0;
  int32_t TableNy = 0;

 private:
  int InputCount() const { return OutputPin() < 0 ? 0 : OutputPin(); }
  // Reads "Table" (and "X", "Y") into TableData; false with the solver's
  // error set.
  bool ReadTables(CCalc& calc);
  // The block's output from its inputs at time t: the formula of the
  // function blocks, or the arithmetic of the model. False, with the
  // solver's error set, when a formula fails.
  bool Compute(CCalc& calc, double t, double& out);
  bool Evaluate(CCalc& calc, double t, double& out);
  double Arithmetic(const CCalc& calc, double a, double b) const;
  double Table1(double a) const;
  double Table2(double a, double b) const;
  // The weighted sum of the bus inputs, as levels (logic) or as voltages.
  double BusSum(const CCalc& calc, bool levels) const;
  void StampOutput(CCalc& calc) const;
};

extern const ElemType kTypeF_1;
extern const ElemType kTypeF_2;
extern const ElemType kTypeF_CUSTOM;
extern const ElemType kTypeY_FUNCTION;
extern const ElemType kTypeY_BUS;

}  // namespace tz4
