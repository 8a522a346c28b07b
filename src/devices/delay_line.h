// Devices that need the past of the simulation: the delay block CElemDelay
// and the transmission line CElemLine, with CDelay, the store of
// time-stamped samples that both read back.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "components/cmp.h"
#include "expr/formula.h"

namespace tz4 {

// Model ids of delays and lines.
enum : int32_t {
  MODEL_X_LINE = 21,
  MODEL_X_LOSSY = 22,
  MODEL_X_DELAY = 23,
};

// A growing queue of (time, a, b) records. Records are kept in fixed blocks
// so that long runs neither copy old data nor ask for one large array; the
// read position only moves forward, and blocks behind it are released (one
// is kept as a spare against allocation churn at the boundary).
class CDelay {
 public:
  static constexpr int kBlockRecords = 4096;
  struct Record {
    double time;
    double a;
    double b;
  };
  using Block = std::unique_ptr<Record[]>;

  CDelay() = default;
  virtual ~CDelay() = default;
  CDelay(const CDelay&) = delete;
  CDelay& operator=(const CDelay&) = delete;

  // Adds a record behind the last one; false when memory runs out.
  bool Append(double time, double a, double b);
  // The values at `time`, interpolated linearly between the two records
  // around it. Before the oldest kept record gives the oldest, past the
  // newest the newest, an empty store 0 for both. Times must not go back:
  // records before the one found are released.
  void Read(double time, double& a, double& b);
  // Drops all records; one block is kept as the spare.
  void Clear();

  std::vector<Block> Blocks;
  Block Spare;
  int32_t Count = 0;      // records held
  int32_t ReadIndex = 0;  // the oldest record still needed

 private:
  const Record& At(int32_t index) const;
  void DropFirstBlock();
};

// The fixed-step wave model of a lossy line: N wave nodes one solver step
// apart, each section a series resistance (with a ladder of up to four
// stages for the skin effect) and a shunt conductance (with a frequency
// term), advanced in steps of Dt whatever step the solver takes.
class CLossyLine {
 public:
  // 0, or -1 for an unusable delay or step (or no memory).
  int Setup(double step);
  // Takes the waves a and b that leave the two ends at time t, and moves
  // the sections up to t.
  void Advance(double t, double a, double b);
  void Clear();

  // The parameters at the last set-up.
  double Delay = 0.0, Z0 = 0.0, R = 0.0, G = 0.0, Fr = 0.0, Fg = 0.0;
  double LastTime = 0.0, NextTime = 0.0;
  int32_t Sections = 0;
  double Dt = 0.0;
  double OutA = 0.0, OutB = 0.0;
  std::vector<std::pair<double, double>> Waves;  // forward and backward wave per node
  double Rs = 0.0, Gs = 0.0;
  struct Stage {
    std::vector<double> state;
    double L = 0.0, Rstage = 0.0, Reff = 0.0, K = 0.0;
  };
  Stage Stages[4];
  int32_t StageCount = 0;
  double Rtotal = 0.0, A = 0.0, B = 0.0, C = 0.0;
  bool HasGf = false;
  std::vector<double> Gf1, Gf2;
  double H = 0.0;

 private:
  void SetupShunt();
  void Section(int i, double& carry);
};

// The delay block: its output is its input as it was "t0" ago.
// Pins: in, out.
class CElemDelay : public CCmp {
 public:
  explicit CElemDelay(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  std::string& GetICText(std::string& out) override;
  bool CheckParams() override;
  bool GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;

  // Parameters.
  CFormula T0;         // "t0", seconds; attribute "t"; default 0.0
  std::string IcText;  // "IC", volts, empty for none; attribute "ic"

  // Run state.
  CDelay History;
  double IcValue = 0.0;
  bool HasIc = false;
};

// The transmission line, lossless ("Line") or lossy ("Lossy").
// Pins: 1 +, 1 -, 2 +, 2 -.
class CElemLine : public CCmp {
 public:
  explicit CElemLine(const ElemType& elemType);

  bool Serialize(CXmlNode& archive, bool customFlag) override;
  bool CheckParams() override;
  int Stamp(CCalc& calc, int phase, double t) override;
  void NextEvent(CCalc& calc, double t, double& nextTime, double& maxStep) override;

  // Parameters.
  CFormula T0;      // "t0", seconds; attribute "t"; default 1e-06
  CFormula Z0;      // "z0", ohms; attribute "z"; default 50.0
  CFormula R;       // "r", ohms per nanosecond of delay; attribute "r"; default 0.0
  CFormula G;       // "G", siemens per nanosecond of delay; attribute "g"; default 0.0
  CFormula Fr;      // "fr", megahertz; attribute "rf"; default 1.0
  CFormula Fg;      // "fG", megahertz; attribute "gf"; default infinite
  std::string VIC;  // "VIC", volts, empty for none; attribute "vic"
  std::string IIC;  // "IIC", amperes, empty for none; attribute "iic"

  // Run state.
  CDelay History;
  CLossyLine Lossy;
  int32_t Form = 0;  // which of the lossless forms the parameters chose

 private:
  bool SetupLossy(CCalc& calc);
  int StampLossy(CCalc& calc, int phase, double t);
  void StampInitialSolution(CCalc& calc) const;
  void StampWaves(CCalc& calc) const;
};

extern const ElemType kTypeX_Delay;
extern const ElemType kTypeX_Line;

}  // namespace tz4
