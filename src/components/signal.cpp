// CSignal: archive, checks, start-up and the per-step work (values, events,
// time shift) of a source's time function.
#include "components/signal.h"

#include <cmath>
#include <new>

#include "components/cmp.h"
#include "xml/xml_node.h"
#include "expr/evaluate.h"
#include "expr/numtext.h"
#include "base/raise.h"
#include "expr/text.h"
#include "expr/value.h"

namespace tz4 {

const char* const kSignalSlopeNames[] = {"Linear", "Cos", "Log", nullptr};

namespace {

// π as the whole system uses it: twelve digits and no more.
constexpr double kPi = 3.14159265358;

// The fields of a "PWL" text are its words: separated by tabs and commas,
// while a blank stays inside a field and a comma inside parentheses belongs
// to its function call. So a field may be a formula such as "2 * R1.R" or
// "max(a, b)".
void SplitSignalFields(const std::string& line, std::vector<std::string>& fields) {
  TStringList words;
  SplitWords(line, words);
  fields.clear();
  for (const std::string& word : words) fields.push_back(word);
}

// The fields of a line of a data file, as such files are written: separated
// by blanks, tabs, commas or semicolons. Separators inside parentheses belong
// to a function call, so "max(3, 4)" stays one field.
void SplitDataFields(const std::string& line, std::vector<std::string>& fields) {
  fields.clear();
  std::string field;
  int depth = 0;
  for (const char ch : line) {
    if (ch == '(') ++depth;
    if (ch == ')' && depth > 0) --depth;
    const bool separator = ch == ' ' || ch == '\t' || ch == ',' || ch == ';' || ch == '\r' || ch == '\n';
    if (separator && depth == 0) {
      if (!field.empty()) fields.push_back(field);
      field.clear();
    } else {
      field += ch;
    }
  }
  if (!field.empty()) fields.push_back(field);
}

// The lines of an attachment's text, at CR, LF or CR LF.
void SplitSignalLines(const std::string& text, TStringList& lines) {
  lines.Clear();
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find_first_of("\r\n", start);
    if (end == std::string::npos) end = text.size();
    lines.Add(text.substr(start, end - start));
    start = end;
    if (start < text.size() && text[start] == '\r') start++;
    if (start < text.size() && text[start] == '\n') start++;
  }
}

// The value of one formula text of the signal: a point's time or value, or
// F(t) with the signal's own variables.
double EvaluateSignalText(const std::string& text, const SignalEnv& env, CVarList* variables) {
  return EvaluateExpression(text, env.context, variables, env.simulation, nullptr, false);
}

}  // namespace

CSignal::CSignal() {
  U1.Value = 10.0;
  Period.Value = 1.0;
  Width.Value = 0.5;
  Variables.Add("t", VT_DOUBLE);
}

void CSignal::Serialize(CXmlNode& archive) {
  CXmlNode* node = archive.storing ? archive.AddChild("Signal") : archive.FindChild("Signal");
  if (node == nullptr) return;
  Loaded = true;
  node->ArchiveValue("u0", U0);
  node->ArchiveValue("u1", U1);
  node->ArchiveValue("p", Period);
  node->ArchiveValue("w", Width);
  node->ArchiveInt("s", Slope.Index);
  node->ArchiveValue("r", Rise);
  node->ArchiveValue("f", Fall);
  node->ArchiveValue("d", Delay);
  node->ArchiveValue("ph", Phase);
  node->ArchiveEncodedString("function", Function);
  node->ArchiveEncodedString("file", FileName);
  node->ArchiveEncodedString("pwl", PwlText);
  node->ArchiveEncodedString("trace", TraceName);
  node->ArchiveInt("c", Cycle);
}

// ---- checks ----

bool CSignal::CheckParams(int kind, CCmp* component, const std::string& prefix) {
  bool ok = true;
  switch (kind) {
    case SIGNAL_PULSE:
      ok &= CheckFinite(component, U1, prefix + "1");
      ok &= CheckFinite(component, U0, prefix + "0");
      if (!CheckValid(component, Period, "Period"))
        ok = false;
      else if (Period.Value <= 0)
        ok = ComponentError(component, "Period <= 0");
      if (!CheckValid(component, Width, "Width"))
        ok = false;
      else if (Width.Value < 0)
        ok = ComponentError(component, "Width < 0");
      ok &= CheckNonNegative(component, Rise, "Rise");
      ok &= CheckNonNegative(component, Fall, "Fall");
      ok &= CheckValid(component, Delay, "Delay");
      break;
    case SIGNAL_STEP:
      ok &= CheckFinite(component, U1, prefix + "1");
      ok &= CheckFinite(component, U0, prefix + "0");
      ok &= CheckNonNegative(component, Rise, "Rise");
      ok &= CheckValid(component, Delay, "Delay");
      break;
    case SIGNAL_SIN:
      ok &= CheckFinite(component, U1, prefix + "1");
      ok &= CheckFinite(component, U0, prefix + "0");
      if (!CheckFinite(component, Period, "Period"))
        ok = false;
      else if (Period.Value <= 0)
        ok = ComponentError(component, "Period <= 0");
      ok &= CheckValid(component, Delay, "Delay");
      ok &= CheckFinite(component, Phase, "Phase");
      break;
    case SIGNAL_FILE:
    case SIGNAL_PWL:
      ok &= CheckValid(component, Delay, "Delay");
      break;
    case SIGNAL_TRACE:
      ok = ComponentError(component, "Trace model not supported");
      break;
    default:
      break;
  }
  return ok;
}

// ---- start of a run ----

bool CSignal::Start(int kind, double time, CCmp* component, const SignalEnv& env) {
  Loaded = true;
  bool ok = true;
  switch (kind) {
    case SIGNAL_PULSE:
      StartPulse(time);
      break;
    case SIGNAL_STEP:
      StartStep(time);
      break;
    case SIGNAL_SIN:
      StartSin(time);
      break;
    case SIGNAL_FILE: {
      const bool attached = component != nullptr && !component->attachment.empty();
      if (!attached && FileName.empty()) return ComponentError(component, "No file name");
      bool loaded = false;
      ok = LoadFile(component, env, loaded);
      if (ok && loaded) PlaceInTable(time);
      break;
    }
    case SIGNAL_PWL:
      ok = LoadPwl(component, env);
      if (ok) PlaceInTable(time);
      break;
    default:
      break;
  }
  ActiveModel = kind;
  return ok;
}

void CSignal::StartPulse(double t) {
  const double d = Delay.Value;
  if (std::isinf(d)) {
    State = STAGE_IDLE;
    return;
  }
  if (d >= t) {
    State = STAGE_IDLE;
    CycleStart = d;
    return;
  }
  const double period = Period.Value;
  double tau = t - d;
  if (!std::isinf(period)) {
    tau = std::fmod(tau, period);
    if (tau == period) tau = 0.0;
  }
  CycleStart = t - tau;
  const double width = Width.Value;
  if (std::isinf(width)) {
    State = tau < Rise.Value ? STAGE_RISING : STAGE_HIGH;
  } else if (tau > width + Fall.Value) {
    State = STAGE_LOW;
  } else if (tau > width) {
    State = STAGE_FALLING;
  } else if (tau > Rise.Value) {
    State = STAGE_HIGH;
  } else if (tau > 0) {
    State = STAGE_RISING;
  } else {
    State = STAGE_LOW;
  }
}

void CSignal::StartStep(double t) {
  const double d = Delay.Value;
  State = STAGE_IDLE;
  if (!std::isinf(d) && d < t) State = d + Rise.Value <= t ? STAGE_HIGH : STAGE_RISING;
  CycleStart = d;
}

void CSignal::StartSin(double t) {
  const double d = Delay.Value;
  if (std::isinf(d) || t < d) {
    State = STAGE_IDLE;
  } else {
    State = STAGE_HIGH;
    // A sine that already runs keeps its accumulated phase across a restart.
    if (ActiveModel != SIGNAL_SIN) PhaseAccum = std::fmod(t - d, Period.Value) / Period.Value;
  }
  LastTime = t;
}

void CSignal::ClearPoints() {
  Points.clear();
  PointCount = 0;
  PointIndex = 0;
  LoadedFile.clear();
}

namespace {

// Reads one point from each line of two or more fields; false when a field
// could not be evaluated (reported for `component`).
bool ReadPoints(const TStringList& lines, const SignalEnv& env, CCmp* component,
                std::vector<SignalPoint>& points) {
  try {
    std::vector<std::string> fields;
    for (const std::string& line : lines) {
      SplitDataFields(line, fields);
      if (fields.size() < 2) continue;
      SignalPoint point;
      point.X = EvaluateSignalText(fields[0], env, nullptr);
      point.Y = EvaluateSignalText(fields[1], env, nullptr);
      points.push_back(point);
    }
  } catch (const RaisedError& e) {
    points.clear();
    return ComponentError(component, "Error: " + e.Text());
  } catch (const std::bad_alloc&) {
    points.clear();
    return ComponentError(component, "No enough memory");
  }
  return true;
}

}  // namespace

bool CSignal::LoadFile(CCmp* component, const SignalEnv& env, bool& loaded) {
  loaded = false;
  const bool attached = component != nullptr && !component->attachment.empty();
  std::string path = FileName;
  if (!path.empty() && PathOfFile(path).empty()) path = env.folder + path;
  // The same file is read once; its position is kept as it was.
  if (!attached && !LoadedFile.empty() && path == LoadedFile) return true;

  ClearPoints();
  TStringList lines;
  if (attached) {
    SplitSignalLines(component->attachment, lines);
  } else if (!lines.LoadFromFile(path)) {
    return ComponentError(component, "Can't open file \"" + path + "\"");
  }
  if (!ReadPoints(lines, env, component, Points)) return false;
  if (Points.empty()) {
    return ComponentError(component,
                          attached ? std::string("Attachment is empty") : "Empty file \"" + path + "\"");
  }
  PointCount = static_cast<int32_t>(Points.size());
  if (!attached) LoadedFile = path;
  loaded = true;
  return true;
}

bool CSignal::LoadPwl(CCmp* component, const SignalEnv& env) {
  Points.clear();
  PointCount = 0;
  PointIndex = 0;
  std::vector<std::string> fields;
  try {
    SplitSignalFields(PwlText, fields);
    const size_t count = fields.size() / 2;
    Points.reserve(count);
    for (size_t i = 0; i < count; i++) {
      SignalPoint point;
      point.X = EvaluateSignalText(fields[2 * i], env, nullptr);
      point.Y = EvaluateSignalText(fields[2 * i + 1], env, nullptr);
      Points.push_back(point);
    }
  } catch (const RaisedError& e) {
    Points.clear();
    return ComponentError(component, "Error: " + e.Text());
  } catch (const std::bad_alloc&) {
    Points.clear();
    return ComponentError(component, "No enough memory");
  }
  PointCount = static_cast<int32_t>(Points.size());
  return true;
}

// Where a freshly loaded table stands at time t.
void CSignal::PlaceInTable(double t) {
  if (PointCount == 1) {
    PointIndex = 0;
    return;
  }
  PointIndex = -1;
  const double d = Delay.Value;
  if (std::isinf(d)) return;
  CycleStart = d;
  if (PointCount < 2) return;
  double tau = t - d;
  const double first = Points.front().X;
  const double last = Points.back().X;
  if (!(first < last && first <= tau)) return;
  if (last < tau) {
    if (!Cycle) {
      PointIndex = PointCount;
      return;
    }
    tau = std::fmod(tau - first, last - first) + first;
  }
  CycleStart = t - tau;
  int32_t index = 0;
  for (int32_t i = 0; i < PointCount; i++)
    if (Points[static_cast<size_t>(i)].X <= tau) index = i;
  if (index == PointCount - 1) index--;
  PointIndex = index;
}

// ---- values ----

bool CSignal::Value(double t, const SignalEnv& env, SignalValue& out, std::string& error) {
  out = SignalValue();
  switch (ActiveModel) {
    case SIGNAL_PULSE:
    case SIGNAL_STEP:
      if (State == STAGE_IDLE)
        out.value = U0.Value;
      else
        EdgeValue(t - CycleStart, out);
      break;
    case SIGNAL_SIN:
      if (State != STAGE_HIGH) {
        out.value = U0.Value;
      } else {
        // The phase is accumulated step by step, so that a period changed
        // by a formula between steps bends the wave without a jump.
        PhaseAccum += (t - LastTime) / Period.Value;
        const double p = (Phase.Value / 360.0 + PhaseAccum) * 2.0 * kPi;
        out.value = std::sin(p) * U1.Value + U0.Value;
        out.derivative = std::cos(p) * U1.Value * 2.0 * kPi / Period.Value;
        out.hasDerivative = true;
      }
      LastTime = t;
      break;
    case SIGNAL_FUNCTION:
      if (!FunctionValue(t, env, out, error)) return false;
      break;
    case SIGNAL_FILE:
    case SIGNAL_PWL:
      TableValue(t, out);
      break;
    default:
      break;
  }
  if (!env.integrating) {
    out.derivative = 0.0;
    out.hasDerivative = false;
  }
  return true;
}

// Pulse and step outside the idle stage; tau is the time in the cycle.
void CSignal::EdgeValue(double tau, SignalValue& out) const {
  const double a = U0.Value;
  const double b = U1.Value;
  const double rise = Rise.Value;
  const double fall = Fall.Value;
  const double width = Width.Value;
  if (Slope.Index == SLOPE_LOG) {
    if (ActiveModel == SIGNAL_PULSE) {
      LogPulseValue(tau, out);
    } else if (rise > 0) {
      const double e = std::exp(-tau / rise);
      out.value = (a - b) * e + b;
      out.derivative = -(a - b) / rise * e;
      out.hasDerivative = true;
    } else {
      out.value = b;
    }
    return;
  }
  const bool cosine = Slope.Index == SLOPE_COS;
  switch (State) {
    case STAGE_RISING:
      if (!(rise > 0)) {
        out.value = b;
        return;
      }
      if (tau > rise) tau = rise;
      if (cosine) {
        const double u = tau / rise * kPi;
        out.value = (1.0 - std::cos(u)) * (b - a) * 0.5 + a;
        out.derivative = std::sin(u) * (b - a) * 0.5 / rise * kPi;
      } else {
        out.value = (b - a) * tau / rise + a;
        out.derivative = (b - a) / rise;
      }
      out.hasDerivative = true;
      return;
    case STAGE_FALLING:
      if (!(fall > 0)) {
        out.value = a;
        return;
      }
      if (tau > width + fall) tau = width + fall;
      if (cosine) {
        const double u = (tau - width) / fall * kPi;
        out.value = b - (1.0 - std::cos(u)) * (b - a) * 0.5;
        out.derivative = -std::sin(u) * (b - a) * 0.5 / fall * kPi;
      } else {
        out.value = b - (tau - width) * (b - a) / fall;
        out.derivative = -(b - a) / fall;
      }
      out.hasDerivative = true;
      return;
    case STAGE_HIGH:
      out.value = b;
      return;
    default:
      out.value = a;
      return;
  }
}

// The "Log" pulse charges towards the high level until the end of Width and
// back towards the low level until the end of the period, whatever the
// stage's length: Rise and Fall are time constants here.
void CSignal::LogPulseValue(double tau, SignalValue& out) const {
  const double a = U0.Value;
  const double b = U1.Value;
  const double rise = Rise.Value;
  const double fall = Fall.Value;
  const double width = Width.Value;
  const double period = Period.Value;
  if (std::isinf(width)) {
    if (rise > 0) {
      const double e = std::exp(-tau / rise);
      out.value = (1.0 - e) * (b - a) + a;
      out.derivative = e * (b - a) / rise;
      out.hasDerivative = true;
    } else {
      out.value = b;
    }
    return;
  }
  if (State == STAGE_RISING || State == STAGE_HIGH) {
    if (rise > 0 && width != 0) {
      const double e = std::exp(-tau / rise);
      const double full = 1.0 - std::exp(-width / rise);
      out.value = (1.0 - e) * (b - a) / full + a;
      out.derivative = e * (b - a) / full / rise;
      out.hasDerivative = true;
    } else {
      out.value = b;
    }
    return;
  }
  if (!std::isinf(period)) {
    if (fall > 0 && width < period) {
      const double end = std::exp(-period / fall);
      const double e = std::exp(-tau / fall);
      const double span = end - std::exp(-width / fall);
      out.value = (end - e) * (b - a) / span + a;
      out.derivative = e * (b - a) / span / fall;
      out.hasDerivative = true;
    } else {
      out.value = a;
    }
    return;
  }
  if (fall > 0) {
    const double e = std::exp(-tau / fall);
    const double start = std::exp(-width / fall);
    out.value = e * (b - a) / start + a;
    out.derivative = -e * (b - a) / start / fall;
    out.hasDerivative = true;
  } else {
    out.value = a;
  }
}

bool CSignal::FunctionValue(double t, const SignalEnv& env, SignalValue& out, std::string& error) {
  TVariable* time = Variables.Find("t");
  try {
    if (time != nullptr) time->Values[0] = TValue::MakeDouble(t);
    const double f = EvaluateSignalText(Function, env, &Variables);
    out.value = f;
    if (env.integrating && env.h > 0) {
      // The variable stays at t + h afterwards.
      if (time != nullptr) time->Values[0] = TValue::MakeDouble(t + env.h);
      const double next = EvaluateSignalText(Function, env, &Variables);
      out.derivative = (next - f) / env.h;
      out.hasDerivative = true;
    }
  } catch (const RaisedError& e) {
    error = e.Text();
    return false;
  } catch (const std::bad_alloc&) {
    error = "No enough memory";
    return false;
  }
  return true;
}

void CSignal::TableValue(double t, SignalValue& out) const {
  out.hasDerivative = true;
  if (PointCount <= 0 || Points.empty()) return;
  if (PointCount == 1 || PointIndex < 0) {
    out.value = Points.front().Y;
    return;
  }
  if (PointIndex >= PointCount - 1) {
    out.value = Points.back().Y;
    return;
  }
  const SignalPoint& p = Points[static_cast<size_t>(PointIndex)];
  const SignalPoint& q = Points[static_cast<size_t>(PointIndex) + 1];
  // Equal times make a jump: the slope there is 0.
  const double slope = q.X > p.X ? (q.Y - p.Y) / (q.X - p.X) : 0.0;
  out.value = p.Y + (t - CycleStart - p.X) * slope;
  out.derivative = slope;
}

// ---- events ----

void CSignal::NextEvent(double t, double& nextEvent, double& maxStep) {
  switch (ActiveModel) {
    case SIGNAL_STEP: {
      const double d = Delay.Value;
      if (std::isinf(d)) return;
      const double end = d + Rise.Value;
      if (CompareDouble(t, end) == 0 || t > end) {
        State = STAGE_HIGH;
        return;
      }
      if (d > t && CompareDouble(d, t) != 0) {
        nextEvent = d;
        return;
      }
      State = STAGE_RISING;
      nextEvent = end;
      if (Rise.Value * 0.25 > 0) maxStep = Rise.Value * 0.25;
      return;
    }
    case SIGNAL_SIN: {
      const double d = Delay.Value;
      if (std::isinf(d)) return;
      if (d > t) {
        nextEvent = d;
        return;
      }
      if (State != STAGE_HIGH) PhaseAccum = 0.0;
      State = STAGE_HIGH;
      // Sixteen points a period.
      if (Period.Value * 0.0625 > 0) maxStep = Period.Value * 0.0625;
      return;
    }
    case SIGNAL_PULSE:
      PulseEvent(t, nextEvent, maxStep);
      return;
    case SIGNAL_FILE:
    case SIGNAL_PWL:
      TableEvent(t, nextEvent, maxStep);
      return;
    default:
      return;
  }
}

void CSignal::PulseEvent(double t, double& nextEvent, double& maxStep) {
  const double d = Delay.Value;
  if (std::isinf(d)) return;
  if (State == STAGE_IDLE) {
    if (CompareDouble(t, d) < 0) {
      nextEvent = d;
      return;
    }
    CycleStart = d;
  }
  const double period = Period.Value;
  const double width = Width.Value;
  const double rise = Rise.Value;
  const double fall = Fall.Value;
  const bool periodic = !std::isinf(period);
  if (periodic && CompareDouble(t, period + CycleStart) >= 0) CycleStart += period;
  const double start = CycleStart;

  // The stage, decided on the tolerant compare.
  if (std::isinf(width)) {
    State = CompareDouble(t, start + rise) < 0 ? STAGE_RISING : STAGE_HIGH;
  } else if (CompareDouble(t, start + width + fall) >= 0) {
    State = STAGE_LOW;
  } else if (CompareDouble(t, start + width) >= 0) {
    State = STAGE_FALLING;
  } else if (CompareDouble(t, start + rise) < 0) {
    State = STAGE_RISING;
  } else {
    State = STAGE_HIGH;
  }

  // The next corner as an offset from the cycle's start, and the time of
  // the edge in progress (a quarter of it is the largest step).
  double corner = 0.0;
  double edge = 0.0;
  bool hasCorner = true;
  if (periodic && std::isinf(width)) {
    if (State == STAGE_RISING) {
      corner = std::fmin(period, rise);
      edge = corner;
    } else {
      corner = period;
    }
  } else if (periodic) {
    switch (State) {
      case STAGE_RISING:
        corner = std::fmin(period, std::fmin(rise, width));
        edge = corner;
        break;
      case STAGE_HIGH:
        corner = std::fmin(period, width);
        edge = corner;
        break;
      case STAGE_FALLING:
        corner = std::fmin(period, width + fall);
        edge = corner - width;
        break;
      default:
        corner = period;
        edge = period - width;
        break;
    }
  } else if (!std::isinf(width)) {
    switch (State) {
      case STAGE_RISING:
        corner = std::fmin(rise, width);
        edge = corner;
        break;
      case STAGE_HIGH:
        corner = width;
        break;
      case STAGE_FALLING:
        corner = width + fall;
        edge = fall;
        break;
      default:
        hasCorner = false;
        break;
    }
  } else if (State == STAGE_RISING) {
    corner = rise;
    edge = rise;
  } else {
    hasCorner = false;
  }
  if (!hasCorner) return;
  nextEvent = start + corner;
  if (edge * 0.25 > 0) maxStep = edge * 0.25;
}

void CSignal::TableEvent(double t, double& nextEvent, double& maxStep) {
  State = STAGE_IDLE;
  if (PointCount < 2 || std::isinf(Delay.Value) || PointIndex >= PointCount) return;
  double tau = t - CycleStart;
  if (PointIndex < 0) {
    if (CompareDouble(Points.front().X, tau) > 0) {
      nextEvent = Points.front().X + CycleStart;
      return;
    }
    PointIndex = 0;
  }
  // A time one rounding step short of a point counts as at it.
  while (PointIndex + 1 < PointCount &&
         CompareDouble(tau, Points[static_cast<size_t>(PointIndex) + 1].X) >= 0) {
    PointIndex++;
    if (PointIndex < PointCount - 1) continue;
    if (!Cycle) return;
    PointIndex = 0;
    const double length = Points.back().X - Points.front().X;
    tau -= length;
    CycleStart += length;
    if (!(length > 0)) {
      PointIndex = PointCount;
      return;
    }
  }
  if (PointIndex + 1 >= PointCount) return;
  const double next = Points[static_cast<size_t>(PointIndex) + 1].X;
  const double present = Points[static_cast<size_t>(PointIndex)].X;
  nextEvent = next + CycleStart;
  if ((next - present) * 0.25 > 0) maxStep = (next - present) * 0.25;
}

// ---- logic level and time shift ----

bool CSignal::IsHigh() const {
  if (ActiveModel != SIGNAL_FILE && ActiveModel != SIGNAL_PWL) return State == STAGE_HIGH;
  if (PointCount <= 0 || Points.empty()) return false;
  if (PointCount == 1) return Points.front().Y > 0;
  if (PointIndex < 0) return false;
  if (PointIndex >= PointCount - 1) return Points.back().Y > 0;
  return Points[static_cast<size_t>(PointIndex)].Y > 0;
}

void CSignal::ShiftTime(double shift, bool noShift, double tolerance) {
  if (noShift) return;
  double d = Delay.Value;
  const double period = Period.Value;
  const bool periodic = ActiveModel == SIGNAL_PULSE || ActiveModel == SIGNAL_SIN;
  if (periodic && !(d > shift) && period > 0 && !std::isinf(period)) {
    // The delay ends in [-period, 0): the same phase, moved to the new origin.
    d = std::fmod(d - std::fmod(shift, period), period);
    if (d >= 0) d -= period;
    if (period * tolerance > std::fabs(d)) d = 0.0;
  } else if (periodic || ActiveModel == SIGNAL_STEP || ActiveModel == SIGNAL_FILE ||
             ActiveModel == SIGNAL_PWL) {
    d -= shift;
  } else {
    return;
  }
  Delay.Value = d;
  // The value is no longer what the text says.
  Delay.Text.clear();
}

}  // namespace tz4
