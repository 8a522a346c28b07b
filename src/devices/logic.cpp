#include "devices/logic.h"

#include <cmath>
#include <cstring>

#include "solver/calc.h"
#include "xml/xml_node.h"

namespace tz4 {

namespace {

const char* const kDominanceNames[] = {"None", "Set", "Reset", nullptr};

// Gates and the D flip-flop.
const ParamDef kGateLogicParams[] = {
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kGateDelayParams[] = {
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kGateDelay2Params[] = {
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
// Set/reset triggers.
const ParamDef kTriggerLogicParams[] = {
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kTriggerDelayParams[] = {
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kTriggerDelay2Params[] = {
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_ENUM, "Dominance", &BindMember<&CElemLog::Dominance>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
// Schmitt trigger.
const ParamDef kSchmittLogicParams[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kSchmittDelayParams[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_VALUE, "Delay", &BindMember<&CElemLog::Delay>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};
const ParamDef kSchmittDelay2Params[] = {
    {PK_VALUE, "Hysteresis", &BindMember<&CElemLog::Hysteresis>},
    {PK_VALUE, "Up", &BindMember<&CElemLog::Delay>},
    {PK_VALUE, "Down", &BindMember<&CElemLog::Down>},
    {PK_HIGH_LOW, "IC", &BindMember<&CElemLog::Ic>},
    {},
};

// name, id, params, editHint, extraRows, traceMask. A logic output has a
// voltage trace only: there is no branch row to carry a current.
const ModelInfo kGateModels[] = {
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kGateLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kGateDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2", .id = MODEL_LOG_DELAY2, .params = kGateDelay2Params, .traceMask = TRACE_V},
    {},
};
const ModelInfo kTriggerModels[] = {
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kTriggerLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kTriggerDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2",
     .id = MODEL_LOG_DELAY2,
     .params = kTriggerDelay2Params,
     .traceMask = TRACE_V},
    {},
};
const ModelInfo kSchmittModels[] = {
    {.name = "Logic", .id = MODEL_LOG_LOGIC, .params = kSchmittLogicParams, .traceMask = TRACE_V},
    {.name = "Delay", .id = MODEL_LOG_DELAY, .params = kSchmittDelayParams, .traceMask = TRACE_V},
    {.name = "Delay2",
     .id = MODEL_LOG_DELAY2,
     .params = kSchmittDelay2Params,
     .traceMask = TRACE_V},
    {},
};

bool IsTrigger(const CCmp& cmp) { return cmp.IsType("Y_RS") || cmp.IsType("Y_JK"); }

constexpr double kNoEvent = -999.0;

// A pin's level: its voltage above the logic threshold.
int32_t Level(const CCalc& calc, int node) { return calc.V(node) > calc.thr ? 1 : 0; }

bool NearOrPast(double time, double t) {
  return time <= t || std::fabs(time - t) <= 1e-12 * std::fmin(std::fabs(time), std::fabs(t));
}

}  // namespace

const ElemType kTypeY_1 = {.tag = "Y_1",
                           .pinCount = 2,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-1"};
const ElemType kTypeY_2 = {.tag = "Y_2",
                           .pinCount = 3,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-2"};
const ElemType kTypeY_3 = {.tag = "Y_3",
                           .pinCount = 4,
                           .factory = &MakeCmp<CElemLog>,
                           .models = kGateModels,
                           .description = "Logic-3"};
const ElemType kTypeY_CUSTOM = {.tag = "Y_CUSTOM",
                                .pinCount = 0,
                                .factory = &MakeCmp<CElemLog>,
                                .models = kGateModels,
                                .description = "Custom logic"};
const ElemType kTypeY_FF = {.tag = "Y_FF",
                            .pinCount = 4,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kGateModels,
                            .description = "D flip-flop"};
const ElemType kTypeY_RS = {.tag = "Y_RS",
                            .pinCount = 6,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kTriggerModels,
                            .description = "SR trigger"};
const ElemType kTypeY_JK = {.tag = "Y_JK",
                            .pinCount = 7,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kTriggerModels,
                            .description = "JK trigger"};
const ElemType kTypeY_ST = {.tag = "Y_ST",
                            .pinCount = 2,
                            .factory = &MakeCmp<CElemLog>,
                            .models = kSchmittModels,
                            .description = "Schmitt trigger"};

CElemLog::CElemLog(const ElemType& elemType)
    : CCmp(elemType), Delay(0.0), Down(0.0), Hysteresis(0.1), Dominance{0, kDominanceNames} {}

bool CElemLog::Serialize(CXmlNode& archive, bool customFlag) {
  if (!SerializeBase(archive, customFlag)) return false;
  archive.ArchiveInt("ic", Ic);
  archive.ArchiveValue("delay", Delay);
  archive.ArchiveValue("down", Down);
  if (IsType("Y_ST")) archive.ArchiveValue("hyst", Hysteresis);
  if (IsTrigger(*this)) archive.ArchiveInt("dominance", Dominance.Index);
  return true;
}

void CElemLog::LoadCustom() {
  if (!IsType("Y_CUSTOM")) return;
  CCustomElemType& shape = CreateCustomType();
  shape.width = 2;
  shape.height = 3;
  shape.leftCount = 7;
}

std::string& CElemLog::GetICText(std::string& out) {
  out = GetFullName() + ".IC=" + (Ic == 1 ? "high" : "low");
  return out;
}

bool CElemLog::CheckParams() {
  bool ok = true;
  if (IsType("Y_ST")) ok &= CheckNonNegative(this, Hysteresis, "Hysteresis");
  switch (ModelId()) {
    case MODEL_LOG_DELAY:
      ok &= CheckNonNegative(this, Delay, "Delay");
      break;
    case MODEL_LOG_DELAY2:
      ok &= CheckNonNegative(this, Delay, "Up");
      ok &= CheckNonNegative(this, Down, "Down");
      break;
    default:
      break;
  }
  return ok;
}

void CElemLog::StoreCustom() {
  if (customType == nullptr) return;
  const CCustomElemType& shape = *customType;
  SetPinCount(shape.leftCount + shape.bottom + shape.rightCount + shape.top);
}

int CElemLog::Stamp(CCalc& calc, int phase, double /*t*/) {
  switch (phase) {
    case STAMP_INIT:
      if (ModelId() == prevModelId) return 0;
      state = Out = Ic;
      StateN = OutN = Ic ^ 1;
      LastClock = -1;
      TimeQ = TimeN = kNoEvent;
      return 0;
    case STAMP_MATRIX: {
      if (calc.pass != 1) return 0;
      const bool flipFlop = IsType("Y_FF") || IsTrigger(*this);
      const int q = flipFlop ? Pin(2) : Pin(static_cast<size_t>(pinCount - 1));
      const int qBar = flipFlop ? Pin(3) : -1;
      if (q == 0 || qBar == 0) {
        calc.error = GetFullName() + " : grounded output";
        return -1;
      }
      calc.StampLogicOutput(q, Out);
      if (flipFlop) calc.StampLogicOutput(qBar, OutN);
      return 0;
    }
    case STAMP_SAVE_IC:
      Ic = state;
      return 0;
    default:
      return 0;
  }
}

int32_t CElemLog::Combine(const CCalc& calc) const {
  const int inputs = pinCount - 1;
  if (IsType("Y_ST")) {
    const double v = calc.V(Pin(0)) - calc.thr, h = Hysteresis.Value;
    if (view != 0) return state == 0 ? v > h / 2 : v >= -h / 2;
    return state == 1 ? v <= h / 2 : v < -h / 2;
  }
  int32_t result = state;
  if (view == 0 || view == 1) {
    result = 1;
    for (int i = 0; i < inputs; ++i) result &= Level(calc, Pin(static_cast<size_t>(i)));
  } else if (view == 2 || view == 3) {
    result = 0;
    for (int i = 0; i < inputs; ++i) result |= Level(calc, Pin(static_cast<size_t>(i)));
  } else if (view == 4 || view == 5) {
    result = 1;
    const int32_t first = Level(calc, Pin(0));
    for (int i = 1; i < inputs; ++i)
      if (Level(calc, Pin(static_cast<size_t>(i))) != first) result = 0;
  } else {
    return state;
  }
  const bool inverted = IsType("Y_1") ? view == 0 : (view & 1) != 0;
  return inverted ? result ^ 1 : result;
}

void CElemLog::Schedule(int32_t level, int32_t& presented, double& pending, double t) const {
  const int32_t model = ModelId();
  if (model == MODEL_LOG_LOGIC) {
    presented = level;
    pending = kNoEvent;
    return;
  }
  if (presented == level) {
    pending = kNoEvent;  // a pending change is cancelled
    return;
  }
  const double delay = model == MODEL_LOG_DELAY2 && level == 0 ? Down.Value : Delay.Value;
  if (delay > 0) {
    pending = t + delay;
  } else {
    presented = level;
    pending = kNoEvent;
  }
}

void CElemLog::Move(int32_t q, int32_t qBar, bool bothTimed, double t, bool& changed, bool apply) {
  if (q != state) {
    changed = true;
    if (apply) {
      state = q;
      Schedule(q, Out, TimeQ, t);
    }
  }
  if (qBar != StateN) {
    changed = true;
    if (apply) {
      StateN = qBar;
      if (bothTimed) Schedule(qBar, OutN, TimeN, t);
    }
  }
}

bool CElemLog::PostStepCombinational(const CCalc& calc, bool apply, double t, bool& changed) {
  const int32_t result = Combine(calc);
  OutN = StateN;
  if (result != state) {
    changed = true;
    if (apply) {
      state = result;
      Schedule(result, Out, TimeQ, t);
    }
  }
  return true;
}

bool CElemLog::PostStepFlipFlop(const CCalc& calc, bool apply, double t, bool& changed) {
  const int32_t d = Level(calc, Pin(0)), clock = Level(calc, Pin(1));
  if (LastClock == -1) LastClock = clock;
  if (clock == LastClock) return true;
  changed = true;
  if (!apply) return true;
  LastClock = clock;
  const bool falling = (view & 2) != 0;
  const bool active = falling ? clock == 0 : clock == 1;
  const int32_t q = active ? d : state;
  if (q == state) return true;
  // Under "Delay" Q-bar follows Q at the same event; "Delay2" times each.
  const bool bothTimed = ModelId() != MODEL_LOG_DELAY;
  Move(q, q ^ 1, bothTimed, t, changed, apply);
  if (!bothTimed) {
    if (TimeQ < 0) OutN = StateN;
  }
  return true;
}

bool CElemLog::PostStepTrigger(const CCalc& calc, bool apply, double t, bool& changed) {
  const bool activeLow = view >= 4;
  const int32_t set = Level(calc, Pin(4)) ^ (activeLow ? 1 : 0);
  const int32_t reset = Level(calc, Pin(5)) ^ (activeLow ? 1 : 0);
  const int32_t clock = Level(calc, Pin(1));
  int32_t q = state, qBar = StateN;
  int32_t lastClock = LastClock;
  if (set == 1 && (reset == 0 || Dominance.Index == 1)) {
    q = 1, qBar = 0, lastClock = -1;
  } else if (set == 1) {
    q = Dominance.Index == 2 ? 0 : 1, qBar = 1, lastClock = -1;
  } else if (reset == 1) {
    q = 0, qBar = 1, lastClock = -1;
  } else if (q == qBar) {
    q = 0, qBar = 1;
  } else if (lastClock != -1 && clock != lastClock) {
    const bool falling = (view & 2) != 0;
    const bool active = falling ? clock == 0 : clock == 1;
    if (active && IsType("Y_RS")) {
      q = Level(calc, Pin(0));
    } else if (active) {
      const int32_t j = Level(calc, Pin(0)), k = Level(calc, Pin(6));
      if (j == 1 && k == 1)
        q ^= 1;
      else if (j != k)
        q = j;
    }
    qBar = q ^ 1;
  } else {
    qBar = q ^ 1;
  }
  // The clock level is taken at every time point after set and reset, so
  // that the edge after a set or reset is seen again.
  if (clock != lastClock) {
    if (lastClock != -1) changed = true;
    lastClock = clock;
  }
  if (apply) LastClock = lastClock;
  Move(q, qBar, true, t, changed, apply);
  return true;
}

bool CElemLog::PostStep(CCalc& calc, bool apply, double t, bool& changed) {
  changed = false;
  switch (ModelId()) {
    case MODEL_LOG_LOGIC:
    case MODEL_LOG_DELAY:
    case MODEL_LOG_DELAY2:
      break;
    default:
      return true;
  }
  if (IsType("Y_FF")) return PostStepFlipFlop(calc, apply, t, changed);
  if (IsTrigger(*this)) return PostStepTrigger(calc, apply, t, changed);
  return PostStepCombinational(calc, apply, t, changed);
}

void CElemLog::NextEvent(CCalc& /*calc*/, double t, double& nextTime, double& maxStep) {
  const int32_t model = ModelId();
  if (model != MODEL_LOG_DELAY && model != MODEL_LOG_DELAY2) return;
  auto pending = [&](double& time, int32_t& presented, int32_t level, bool partner) {
    if (time < 0) return;
    if (NearOrPast(time, t)) {
      presented = level;
      time = kNoEvent;
      if (partner) OutN = StateN;
      return;
    }
    const double step = model == MODEL_LOG_DELAY2 && level == 0 ? Down.Value : Delay.Value;
    nextTime = std::fmin(nextTime, time);
    maxStep = std::fmin(maxStep, step);
  };
  pending(TimeQ, Out, state, IsType("Y_FF") && model == MODEL_LOG_DELAY);
  pending(TimeN, OutN, StateN, false);
}

// Logic pins are written, not solved: a node that only logic pins touch
// stays outside the matrix.
int CElemLog::IsMatrixPin(int /*pin*/) { return 0; }

int CElemLog::OutputPin() const {
  if (IsType("Y_FF") || IsTrigger(*this)) return 2;
  if (IsType("Y_ST")) return 1;
  return pinCount - 1;
}

// The output's voltage against ground; no branch row.
bool CElemLog::GetTraceInfo(int kind, int& nodeA, int& nodeB, int& row, double& value) {
  (void)kind;
  const int out = OutputPin();
  nodeA = 0;
  nodeB = out >= 0 && out < pinCount ? pins[static_cast<size_t>(out)] : 0;
  row = 0;
  value = 0.0;
  return ModelId() != MODEL_SUBCIR;
}

}  // namespace tz4
