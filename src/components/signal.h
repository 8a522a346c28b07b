// CSignal: the time function of an independent source. One class serves all
// source models: pulse, step, sine, a list of points, a data file and an
// arbitrary function of time. It gives the transient driver the value at a
// time, the time of the next corner (so that a step lands on it) and the
// largest step that the present ramp tolerates.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "components/param.h"
#include "expr/formula.h"
#include "expr/lists.h"

namespace tz4 {

class CCmp;
class CXmlNode;
class CEvalContext;
class CEvalSimulation;

// Model kinds that a signal knows (the model ids of the sources' tables).
enum SignalKind : int32_t {
  SIGNAL_NONE = 0,
  SIGNAL_PULSE = 2,
  SIGNAL_STEP = 3,
  SIGNAL_SIN = 4,
  SIGNAL_FUNCTION = 5,
  SIGNAL_FILE = 6,
  SIGNAL_PWL = 8,
  SIGNAL_TRACE = 53,
};

// Stages of a pulse or step; a sine uses 0 (before its delay) and 2 (running).
enum SignalStage : int32_t {
  STAGE_IDLE = 0,
  STAGE_RISING = 1,
  STAGE_HIGH = 2,
  STAGE_FALLING = 3,
  STAGE_LOW = 4,
};

// Edge shapes, the index of the "Slope" setting.
enum SignalSlope : int32_t {
  SLOPE_LINEAR = 0,
  SLOPE_COS = 1,
  SLOPE_LOG = 2,
};

// The names of the "Slope" setting, ended by a null entry.
extern const char* const kSignalSlopeNames[];

// One (time, value) pair of a "PWL" list or a data file.
struct SignalPoint {
  double X = 0.0;
  double Y = 0.0;
};

// What a signal needs from its surroundings while a run is prepared and
// stepped.
struct SignalEnv {
  // Resolves names in the formulas of points and of "Function" (document,
  // components, run); null allows numbers and constants only.
  CEvalContext* context = nullptr;
  // The running simulation, for V(), I() and P() in "Function"; may be null.
  CEvalSimulation* simulation = nullptr;
  // Folder of the circuit file, with its trailing separator; a data file
  // named without a folder is looked for here.
  std::string folder;
  // The solver integrates (transient form): time derivatives are wanted.
  bool integrating = false;
  // The solver's present step, for the derivative of "Function".
  double h = 0.0;
};

// The value of a signal at one time.
struct SignalValue {
  double value = 0.0;
  double derivative = 0.0;
  // False where the model has no derivative to give at this time (idle
  // stage, a held level, a sine before its delay).
  bool hasDerivative = false;
};

class CSignal {
 public:
  CSignal();
  virtual ~CSignal() = default;
  CSignal(const CSignal&) = delete;
  CSignal& operator=(const CSignal&) = delete;

  // Loads or stores the attributes of the child element "Signal" of the
  // component element `archive`. A missing element keeps the defaults.
  void Serialize(CXmlNode& archive);

  // The checks of `kind` for `component`; every fault is reported, and the
  // level names read prefix + "1" and prefix + "0". True when all is good.
  bool CheckParams(int kind, CCmp* component, const std::string& prefix);

  // Prepares a run at `time` (0 for a fresh run, else the present time):
  // stage, cycle start and, for "File" and "PWL", the points. Faults are
  // reported for `component`; false on a fault.
  bool Start(int kind, double time, CCmp* component, const SignalEnv& env);

  // The value at time t for the model that Start set up. Only "Function"
  // can fail: false with the failure's text in `error`.
  bool Value(double t, const SignalEnv& env, SignalValue& out, std::string& error);

  // After an accepted step at t: advances the stage or the point index,
  // lowers nothing itself but writes `nextEvent` and `maxStep` when it has
  // something to say (the caller presets both).
  void NextEvent(double t, double& nextEvent, double& maxStep);

  // Whether the signal counts as logic high.
  bool IsHigh() const;

  // Moves the time origin by `shift` when a run continues from a saved
  // state. Nothing with `noShift`; a delay within period * tolerance of 0
  // becomes exactly 0.
  void ShiftTime(double shift, bool noShift, double tolerance);

  // Drops the points and forgets the file they came from.
  void ClearPoints();

  // ---- settings (attributes of "Signal") ----
  CFormula U0;      // "u0", 0: low level, offset of a sine
  CFormula U1;      // "u1", 10: high level, amplitude of a sine
  CFormula Period;  // "p", 1: infinite means a single pulse
  CFormula Width;   // "w", 0.5: infinite means no falling edge
  CEnumValue Slope{SLOPE_LINEAR, kSignalSlopeNames};  // "s"
  CFormula Rise;    // "r", 0
  CFormula Fall;    // "f", 0
  CFormula Delay;   // "d", 0: infinite means never
  CFormula Phase;   // "ph", 0: degrees
  std::string Function = "10";  // "function": F(t)
  std::string FileName;         // "file"
  std::string PwlText = "0,0";  // "pwl"
  std::string TraceName;        // "trace"
  int32_t Cycle = 0;            // "c": repeat the table

  // ---- run state ----
  int32_t ActiveModel = SIGNAL_NONE;
  bool Loaded = false;  // an archive or a run has filled the signal
  int32_t State = STAGE_IDLE;
  double PhaseAccum = 0.0;  // sine phase in cycles
  double LastTime = 0.0;    // time of the last sine evaluation
  double CycleStart = 0.0;  // absolute start of the present cycle
  std::vector<SignalPoint> Points;
  int32_t PointCount = 0;
  int32_t PointIndex = 0;  // -1 before the first point, PointCount when finished
  std::string LoadedFile;  // the file the points came from
  CVarList Variables;      // holds "t" for "Function"

 private:
  void StartPulse(double t);
  void StartStep(double t);
  void StartSin(double t);
  bool LoadFile(CCmp* component, const SignalEnv& env, bool& loaded);
  bool LoadPwl(CCmp* component, const SignalEnv& env);
  void PlaceInTable(double t);
  void EdgeValue(double tau, SignalValue& out) const;
  void LogPulseValue(double tau, SignalValue& out) const;
  bool FunctionValue(double t, const SignalEnv& env, SignalValue& out, std::string& error);
  void TableValue(double t, SignalValue& out) const;
  void PulseEvent(double t, double& nextEvent, double& maxStep);
  void TableEvent(double t, double& nextEvent, double& maxStep);
};

// Binder of one member of the CSignal `SignalMember` of a component class:
//   {PK_VALUE, "V1", &BindSignalField<&CElemV::Signal, &CSignal::U1>}
template <auto SignalMember, auto Field>
ParamTarget BindSignalField(CCmp& cmp) {
  using Owner = typename MemberPointerTraits<decltype(SignalMember)>::Class;
  return ParamTarget(&((static_cast<Owner&>(cmp).*SignalMember).*Field));
}

// The parameter tables of the signal models of a source, for an owner class
// with a CSignal member; `Current` names the levels "I1", "I0" instead of
// "V1", "V0".
template <auto SignalMember, bool Current>
struct SignalSourceTables {
  static constexpr const char* kHigh = Current ? "I1" : "V1";
  static constexpr const char* kLow = Current ? "I0" : "V0";
  template <auto Field>
  static ParamTarget Bind(CCmp& cmp) {
    return BindSignalField<SignalMember, Field>(cmp);
  }

  static constexpr ParamDef Pulse[] = {
      {PK_VALUE, kHigh, &Bind<&CSignal::U1>},       {PK_VALUE, kLow, &Bind<&CSignal::U0>},
      {PK_VALUE, "Period", &Bind<&CSignal::Period>}, {PK_VALUE, "Width", &Bind<&CSignal::Width>},
      {PK_ENUM, "Slope", &Bind<&CSignal::Slope>},    {PK_VALUE, "Rise", &Bind<&CSignal::Rise>},
      {PK_VALUE, "Fall", &Bind<&CSignal::Fall>},     {PK_VALUE, "Delay", &Bind<&CSignal::Delay>},
      {}};
  static constexpr ParamDef Step[] = {
      {PK_VALUE, kHigh, &Bind<&CSignal::U1>},     {PK_VALUE, kLow, &Bind<&CSignal::U0>},
      {PK_ENUM, "Slope", &Bind<&CSignal::Slope>}, {PK_VALUE, "Rise", &Bind<&CSignal::Rise>},
      {PK_VALUE, "Delay", &Bind<&CSignal::Delay>}, {}};
  static constexpr ParamDef Sin[] = {
      {PK_VALUE, kHigh, &Bind<&CSignal::U1>},       {PK_VALUE, kLow, &Bind<&CSignal::U0>},
      {PK_VALUE, "Period", &Bind<&CSignal::Period>}, {PK_VALUE, "Phase", &Bind<&CSignal::Phase>},
      {PK_VALUE, "Delay", &Bind<&CSignal::Delay>},   {}};
  static constexpr ParamDef Pwl[] = {{PK_PWL_SOURCE, "pwl", &Bind<&CSignal::PwlText>},
                                     {PK_YES_NO, "Cycle", &Bind<&CSignal::Cycle>},
                                     {PK_VALUE, "Delay", &Bind<&CSignal::Delay>},
                                     {}};
  static constexpr ParamDef Function[] = {{PK_FORMULA_TEXT, "F(t)", &Bind<&CSignal::Function>},
                                          {}};
  static constexpr ParamDef File[] = {{PK_DATA_FILE, "File", &Bind<&CSignal::FileName>},
                                      {PK_YES_NO, "Cycle", &Bind<&CSignal::Cycle>},
                                      {PK_VALUE, "Delay", &Bind<&CSignal::Delay>},
                                      {}};
  static constexpr ParamDef Trace[] = {{PK_NAME, "Trace", &Bind<&CSignal::TraceName>},
                                       {PK_YES_NO, "Cycle", &Bind<&CSignal::Cycle>},
                                       {PK_VALUE, "Delay", &Bind<&CSignal::Delay>},
                                       {}};
};

}  // namespace tz4
