#include "devices/source.h"

#include <cmath>
#include <string>

#include "components/cmps.h"
#include "expr/context.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "solver/calc_simulation.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

// Relative tolerance of time points: a delay within this fraction of a
// period from 0 after a shift of the time origin is taken as exactly 0.
constexpr double kTimeTolerance = 1e-12;

// Sources and function outputs carry bit 4 of the trace mask.
constexpr int32_t kTraceSource = TRACE_V | TRACE_I | TRACE_P | 16;

const ParamDef kVoltageParams[] = {
    {PK_VALUE, "V", &BindMember<&CElemV::Value>},
    {},
};
const ParamDef kCurrentParams[] = {
    {PK_VALUE, "I", &BindMember<&CElemV::Value>},
    {},
};

using VoltageTables = SignalSourceTables<&CElemV::Signal, false>;
using CurrentTables = SignalSourceTables<&CElemV::Signal, true>;

// Voltage and current sources share their models; the tables differ only
// in the names of the levels.
#define TZ4_SOURCE_MODELS(constant, params, tables)                           \
  {                                                                           \
    {constant, MODEL_V_CONSTANT, params, 0, 1, kTraceSource},                 \
        {"Pulse", SIGNAL_PULSE, tables::Pulse, 0, 1, kTraceSource},           \
        {"Step", SIGNAL_STEP, tables::Step, 0, 1, kTraceSource},              \
        {"Sin", SIGNAL_SIN, tables::Sin, 0, 1, kTraceSource},                 \
        {"PWL", SIGNAL_PWL, tables::Pwl, 0, 1, kTraceSource},                 \
        {"Function", SIGNAL_FUNCTION, tables::Function, 0, 1, kTraceSource},  \
        {"File", SIGNAL_FILE, tables::File, 0, 1, kTraceSource, 0, 1},        \
        {"Trace", SIGNAL_TRACE, tables::Trace, 0, 1, kTraceSource},           \
        {"SubCir", MODEL_SUBCIR, nullptr, 0, 0, TRACE_V | TRACE_P, 0, 1}, {}, \
  }

const ModelInfo kVoltageModels[] = TZ4_SOURCE_MODELS("V", kVoltageParams, VoltageTables);
const ModelInfo kCurrentModels[] = TZ4_SOURCE_MODELS("I", kCurrentParams, CurrentTables);
#undef TZ4_SOURCE_MODELS

bool IsSignalModel(int32_t model) {
  switch (model) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
    case SIGNAL_SIN:
    case SIGNAL_FUNCTION:
    case SIGNAL_FILE:
    case SIGNAL_PWL:
    case SIGNAL_TRACE:
      return true;
    default:
      return false;
  }
}

bool IsCurrentSource(const CCmp& cmp) {
  return cmp.type != nullptr && cmp.type->tag != nullptr && cmp.type->tag[0] == 'I';
}

// The models whose time origin moves when a run is continued from a saved
// state, and that report their delay as the initial condition.
bool HasTimeOrigin(int32_t model) { return IsSignalModel(model) && model != SIGNAL_FUNCTION; }

}  // namespace

const ElemType kTypeV_V = {.tag = "V_V",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemV>,
                           .models = kVoltageModels,
                           .description = "Voltage source"};
const ElemType kTypeI_I = {.tag = "I_I",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemV>,
                           .models = kCurrentModels,
                           .description = "Current source"};

CElemV::CElemV(const ElemType& elemType) : CCmp(elemType) { Value.Value = 10.0; }

bool CElemV::HasSignalModel() const { return IsSignalModel(ModelId()); }

bool CElemV::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveValue("v", Value);
  // A signal that a file or a run has filled is kept even while the model
  // is the constant one.
  if (!archive.storing || HasSignalModel() || Signal.Loaded) Signal.Serialize(archive);
  return true;
}

std::string& CElemV::GetICText(std::string& out) {
  out.clear();
  const int32_t model = ModelId();
  if (HasTimeOrigin(model)) out = GetFullName() + ".Delay=" + FormatNumber(Signal.Delay.Value, 12);
  return out;
}

bool CElemV::CheckParams() {
  const int32_t model = ModelId();
  const std::string letter = IsCurrentSource(*this) ? "I" : "V";
  if (model == MODEL_V_CONSTANT) {
    // Both checks run: a formula that failed keeps its last value, and that
    // may be infinite as well.
    bool ok = true;
    if (Value.Invalid) ok = ComponentError(this, letter + " : formula error");
    if (std::isinf(Value.Value)) ok = ComponentError(this, letter + " = infinite");
    return ok;
  }
  if (model == MODEL_SUBCIR) return ReportNotSimulated(this);
  if (HasTimeOrigin(model)) return Signal.CheckParams(model, this, letter);
  return true;
}

bool CElemV::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  CCmp::GetTraceInfo(kind, nodeA, nodeB, row, value);
  return ModelId() != MODEL_SUBCIR || kind == 0 || kind == 6;
}

int CElemV::Stamp(CCalc& calc, int phase, double t) {
  const int32_t model = ModelId();
  const bool constant = model == MODEL_V_CONSTANT;
  const bool signal = IsSignalModel(model);
  const int r = firstRow;

  SignalEnv env;
  env.context = owner;

  switch (phase) {
    case STAMP_INIT: {
      if (!signal) return 0;
      // Data files named without a folder are looked for beside the circuit.
      env.folder = calc.settings.folder;
      // A fresh run starts the signal from scratch at 0; a rebuild in the
      // middle of a run (a changed parameter) continues it from the last
      // time point that the driver handed back.
      double start = t;
      if (prevModelId == 0) {
        Signal.Start(SIGNAL_NONE, t, this, env);
      } else if (calc.lastTime > start) {
        start = calc.lastTime;
      }
      return Signal.Start(model, start, this, env) ? 0 : -1;
    }

    case STAMP_RESET:
      Signal.ClearPoints();
      return 0;

    case STAMP_MATRIX:
      if (calc.pass != 0 || (!constant && !signal) || pins.size() < 2) return 0;
      if (IsCurrentSource(*this))
        calc.StampOutCurrent(pins[0], pins[1], r, 0.0);
      else
        calc.StampOutVoltage(pins[0], pins[1], r, 0.0);
      // The value comes in through s(t) alone.
      calc.MarkRow(r);
      return 0;

    case STAMP_SOURCE: {
      if (!calc.InMatrix(r)) return 0;
      if (constant) {
        calc.SetSource(r, -Value.Value);
        return 0;
      }
      if (!signal) return 0;
      // The time derivative is the next order of the state form, which the
      // pair solve of the initial conditions reads from sB.
      CCalcSimulation simulation(calc);
      env.simulation = &simulation;
      env.integrating = calc.stampMode == 0;
      env.h = calc.step;
      SignalValue value;
      std::string failure;
      if (!Signal.Value(t, env, value, failure)) {
        calc.error = GetFullName() + ": " + failure;
        return -1;
      }
      calc.SetSource(r, -value.value);
      if (value.hasDerivative) calc.SetSourceSlope(r, -value.derivative);
      return 0;
    }

    case STAMP_SAVE_IC:
      if (HasTimeOrigin(model)) {
        const bool noShift = calc.settings.nsr;
        Signal.ShiftTime(t, noShift, kTimeTolerance);
      }
      return 0;

    default:
      return 0;
  }
}

void CElemV::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  switch (ModelId()) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
    case SIGNAL_SIN:
    case SIGNAL_FILE:
    case SIGNAL_PWL:
      Signal.NextEvent(t, nextTime, maxStep);
      return;
    default:
      return;
  }
}

}  // namespace tz4
