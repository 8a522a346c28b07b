// Four small families: the meters CElemA (amperemeter, voltmeter,
// wattmeter), through which a trace reads a quantity at a place in the
// circuit; the directional coupler CElemDC; the sample and hold CElemSH;
// and the blocks CElemX, empty shells for a subcircuit.
#pragma once
#include <cstdint>
#include <string>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

enum : int32_t {
  MODEL_A_VOLTMETER = 13,
  MODEL_A_AMPEREMETER = 16,
  MODEL_X_SH = 40,
  MODEL_A_WATTMETER = 44,
  MODEL_X_COUPLER = 46,
};

// A_A pins: 1, 2. V_VM pins: +, -. W_WM pins: +, common, current in.
class CElemA : public CCmp {
 public:
  explicit CElemA(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
};

// Pins: in, out, forward, reverse.
class CElemDC : public CCmp {
 public:
  explicit CElemDC(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;

  int Stamp(CCalc& calc, int phase, double t) override;

  CFormula Z0;  // "z0", ohms; attribute "z"; default 50.0
  CFormula Cf;  // "CF", coupling in decibels; attribute "cf"; default 0.0
};

// Pins: in, out, clock. Bit 0 of `view` inverts the clock; bit 1 turns the
// device from sample-and-hold into track-and-hold.
class CElemSH : public CCmp {
 public:
  explicit CElemSH(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  int IsMatrixPin(int pin) override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;

  int Stamp(CCalc& calc, int phase, double t) override;
  bool PostStep(CCalc& calc, bool apply, double t, bool& changed) override;

  static constexpr int kClockPin = 2;

  CFormula Ic;        // "IC", the held value at the start; attribute "ic"; default 0.0
  double Held = 0.0;  // run state: the value held now
};

// X_B2 ... X_B8, X_CUSTOM and X_TZ4: a block has only the "SubCir" model
// and shows no trace of its own; its parameters are the subcircuit's.
class CElemX : public CCmp {
 public:
  explicit CElemX(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  // X_CUSTOM and X_TZ4 take a shape of their own; X_TZ4's is 2 wide, 3 high,
  // with 7 pins on each side, inputs "x1,x2,x3" and outputs "y1,y2,y3".
  void LoadCustom() override;
};

extern const ElemType kTypeA_A;
extern const ElemType kTypeV_VM;
extern const ElemType kTypeW_WM;
extern const ElemType kTypeX_DC;
extern const ElemType kTypeX_SH;
extern const ElemType kTypeX_B2;
extern const ElemType kTypeX_B3;
extern const ElemType kTypeX_B4;
extern const ElemType kTypeX_B6;
extern const ElemType kTypeX_B8;
extern const ElemType kTypeX_CUSTOM;
extern const ElemType kTypeX_TZ4;

}  // namespace tz4
