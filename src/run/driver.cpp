// The transient driver and the run control of a document: StartRun and
// RunDocument.
//
// A call of Run is a small state machine. Its labels are the entry points
// that the steps jump to: LOOP (stop test and one turn), RESTART (rebuild and
// new initial conditions), QUERY (ask the devices for their next event),
// EVENT (cross it), FAIL (report, then end) and ERROR (end).
#include "run/driver.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>

#include "base/last_error.h"
#include "components/cmp.h"
#include "doc/doc.h"
#include "expr/numtext.h"
#include "solver/calc.h"
#include "doc/driver_state.h"

namespace tz4 {

namespace {

// Time comparisons of the driver: a and b are equal within 1e-12 of the
// smaller magnitude.
bool Equal(double a, double b) {
  return std::fabs(a - b) <= std::min(std::fabs(a), std::fabs(b)) * 1e-12;
}
bool EqualOrBelow(double a, double b) { return Equal(a, b) || a < b; }

bool IsSubcircuit(const CCmp* component) { return component->ModelId() == MODEL_SUBCIR; }

// The numerical zero of the solver, ten times larger for one solve and put
// back exactly afterwards, also when a device raises.
class WiderZero {
 public:
  explicit WiderZero(double& zero) : zero_(zero), saved_(zero) { zero_ = saved_ * 10.0; }
  ~WiderZero() { zero_ = saved_; }
  WiderZero(const WiderZero&) = delete;
  WiderZero& operator=(const WiderZero&) = delete;

 private:
  double& zero_;
  double saved_;
};

// Ends the run when an exception passes through a call into the driver, so
// that a document is never left running in a half-made step.
class EndRunOnThrow {
 public:
  explicit EndRunOnThrow(bool& running)
      : running_(running), uncaught_(std::uncaught_exceptions()) {}
  ~EndRunOnThrow() {
    if (std::uncaught_exceptions() > uncaught_) running_ = false;
  }
  EndRunOnThrow(const EndRunOnThrow&) = delete;
  EndRunOnThrow& operator=(const EndRunOnThrow&) = delete;

 private:
  bool& running_;
  int uncaught_;
};

}  // namespace

CDriver::CDriver(CDoc& document) : doc_(document), calc_(*document.calc), s_(document.drive) {}

// ---- start ----

bool CDriver::Start() {
  calc_.runClock = ProcessMillis();
  doc_.Reset();
  PassSettings();
  // Nothing of an earlier run carries over, not even its step.
  s_ = CDriverState{};
  doc_.time = 0.0;
  doc_.targetTime = 0.0;
  calc_.stepStart = 0.0;
  calc_.lastTime = 0.0;
  doc_.running = true;
  // The seed is whatever address the solver got: two runs of one process
  // draw different numbers.
  std::srand(static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&calc_) & 0xFFFFFFFFu));
  calc_.os = doc_.settings.os;
  calc_.low = doc_.settings.low;
  calc_.high = doc_.settings.high;
  calc_.thr = doc_.settings.thr;
  doc_.changeFlags = CHANGE_ALL;
  s_.phase = PHASE_EVENTS;

  bool ok = true;
  do {
    ok = Prepare();
  } while (ok && calc_.rebuild);
  if (ok) return true;
  // What the components reported stays; the solver's text goes behind it,
  // unless the failure report already carries it.
  if (!reported_ && !calc_.error.empty()) AppendError(calc_.error);
  doc_.running = false;
  return false;
}

// ---- preparing the system ----

bool CDriver::Prepare() {
  const uint32_t flags = doc_.changeFlags;
  // A text left from an earlier solve (a node at infinity that a crossing
  // let through) must not be taken for a failure of this one.
  calc_.error.clear();

  if (flags & CHANGE_STEP) {
    // A file may hold a step that the host could not set: without this the
    // run would never advance.
    if (!(doc_.settings.step > 0.0)) {
      calc_.error = "step <= 0";
      return false;
    }
    calc_.step = doc_.settings.step;
    s_.hMin = doc_.settings.step;
  }

  if (flags & CHANGE_PARAMS) {
    // Every build numbers the file's nodes afresh: the checks see the pins
    // as the file has them, and nothing of an earlier numbering carries over.
    doc_.RestoreFileNodes();
    if (!doc_.cmps.CheckParams()) return false;
    calc_.ClearRunList();
    if (calc_.AddComponents(doc_.cmps) != 0) return false;
    doc_.cmps.UpdateFormulas();
    calc_.MergeNodes();
    calc_.FreeSystem();
    calc_.NumberNodes();
    if (!calc_.AllocateSystem()) {
      ReportFailure();
      return false;
    }
  }

  if (flags & (CHANGE_TRACES | CHANGE_PARAMS)) {
    const bool bound = doc_.traces.Bind(calc_, doc_.cmps);
    if (!bound || !calc_.error.empty()) {
      ReportFailure();
      return false;
    }
  }

  // Initial conditions; a result of 1 or 99 asks for another attempt with
  // what the last one marked.
  for (CCmp* component : calc_.cmps) {
    component->forceIC = false;
    component->ignoreIC = false;
  }
  constexpr int kAttempts = 10;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    const int r = calc_.CalcIC(doc_.time, s_.h);
    if (r == 0) break;
    if (r == -99) return false;  // the time-out text goes out as it stands
    if (r < 0) {
      ReportFailure();
      return false;
    }
    if (r != 1 && r != 99) break;
    if (attempt == kAttempts) {
      if (r == 1) {
        ReportFailure();
        return false;
      }
      break;
    }
    calc_.error.clear();
  }
  for (CCmp* component : calc_.cmps) {
    component->forceIC = false;
    component->ignoreIC = false;
  }
  calc_.error.clear();
  calc_.cause.clear();

  if (doc_.time == 0.0 && !StoreSample()) return false;

  calc_.AcceptAll();
  doc_.changeFlags = 0;
  calc_.AcceptAll();
  if (!PostStepAll(true, false)) {
    ReportFailure();
    return false;
  }
  return true;
}

// ---- events ----

void CDriver::QueryEvents() {
  calc_.NextEvent(doc_.time, s_.tEvent, s_.hMax);
  if (!doc_.settings.nsr) {
    s_.hNext = s_.hMin;
    s_.hMin = doc_.settings.kmin * s_.hMax;
    if (s_.hMin < s_.hNext) s_.hNext = s_.hMin;
  } else {
    s_.hMax = calc_.step;
    s_.hMin = calc_.step;
    s_.hNext = calc_.step;
  }
  s_.h = s_.hNext;
}

bool CDriver::EventStep() {
  s_.firstTry = true;
  s_.h = s_.hNext;
  int r = calc_.Calculate(doc_.time, s_.h, true, true);
  for (;;) {
    if (r == 0) {
      doc_.time += s_.h;
      if (!StoreSample()) return false;
      s_.stepKind = STEP_CROSSED;
      s_.needRestart = false;
      s_.needEvent = false;
      s_.needEventStep = false;
      return true;
    }
    if (r < -1) {
      ReportFailure();
      return false;
    }
    // No consistent state: a longer step may carry the circuit over the
    // edge; past twice the largest step every component may change.
    if (doc_.settings.nsr || (s_.h *= 2.0) > s_.hMax * 2.0 || !(s_.h > 0.0)) {
      if (!s_.firstTry) {
        calc_.error = "No solution";
        ReportFailure();
        return false;
      }
      s_.firstTry = false;
    }
    r = calc_.Calculate(doc_.time, s_.h, true, s_.firstTry);
  }
}

// ---- samples and failures ----

bool CDriver::StoreSample() {
  if (!calc_.SampleAll(doc_.time)) {
    ReportFailure();
    return false;
  }
  ++s_.samples;
  if (!doc_.traces.Sample(calc_, doc_.cmps, doc_.time)) {
    ReportFailure();
    return false;
  }
  return true;
}

void CDriver::ReportFailure() {
  std::string text = "Transient error at t=" + FormatNumber(doc_.time, 6);
  if (!calc_.error.empty()) text += " : " + calc_.error;
  AppendError(text);
  reported_ = true;
}

bool CDriver::Error() {
  if (!reported_)
    AppendError(calc_.error.empty() ? std::string("unknown transient error") : calc_.error);
  doc_.running = false;
  return false;
}

bool CDriver::PostStepAll(bool apply, bool stopAtFirst) {
  s_.changed = false;
  calc_.rebuild = false;
  for (CCmp* component : calc_.cmps) {
    if (IsSubcircuit(component)) continue;
    bool changedHere = false;
    if (!component->PostStep(calc_, apply, doc_.time, changedHere)) return false;
    if (changedHere) {
      s_.changed = true;
      if (stopAtFirst) break;
    }
  }
  return true;
}

// ---- the main loop ----

bool CDriver::Run(double dt, int mode) {
  calc_.runClock = ProcessMillis();
  PassSettings();
  doc_.targetTime += dt;
  s_.samples = 0;
  if (doc_.settings.step != calc_.step) doc_.changeFlags |= CHANGE_STEP;

  Next next = Next::Loop;
  if (doc_.changeFlags != 0) {
    next = Next::Restart;
  } else if (s_.phase == PHASE_EVENTS) {
    next = Next::Query;
  } else if (s_.phase != PHASE_CLEAN) {
    next = Next::Restart;
  } else if (s_.stepKind == STEP_TO_TARGET) {
    // The last call cut its step to land on its end; go on with the step
    // that was in use before, on a fresh factorisation.
    s_.stepKind = STEP_FACTOR;
    s_.h = s_.hSaved;
  }

  for (;;) {
    switch (next) {
      case Next::Done:
        return true;
      case Next::Loop:
        next = Turn(mode);
        break;
      case Next::Restart: {
        s_.phase = PHASE_EVENTS;
        bool ok = true;
        do {
          ok = Prepare();
        } while (ok && calc_.rebuild);
        next = ok ? Next::Query : Next::Error;
        break;
      }
      case Next::Query:
        QueryEvents();
        next = Next::Event;
        break;
      case Next::Event:
        next = EventStep() ? Next::Loop : Next::Error;
        break;
      case Next::Fail:
        ReportFailure();
        next = Next::Error;
        break;
      case Next::Error:
        return Error();
    }
  }
}

CDriver::Next CDriver::Turn(int mode) {
  calc_.runClock = ProcessMillis();
  if (s_.samples > 0) {
    const bool stop = mode == RUN_ONE_STEP || !(doc_.time < doc_.targetTime - s_.hMin * 0.001) ||
                      Equal(doc_.time, doc_.targetTime - s_.hMin * 0.001);
    if (stop) {
      // A rebuild asked for by the last step stays pending for the next call.
      calc_.lastTime = doc_.time;
      calc_.AcceptAll();
      s_.phase = PHASE_CLEAN;
      if (mode == RUN_ONE_STEP) doc_.targetTime = doc_.time;
      return Next::Done;
    }
  }
  if (s_.needRestart) return Next::Restart;
  if (s_.needEvent) return Next::Query;
  if (s_.needEventStep) return Next::Event;
  if (s_.stepKind == STEP_CROSSED) return AfterEvent();
  return NormalStep(mode);
}

CDriver::Next CDriver::AfterEvent() {
  calc_.AcceptAll();
  if (!PostStepAll(true, false)) return Next::Fail;
  if (calc_.rebuild) return Next::Restart;
  const bool changed = s_.changed;
  if (changed) QueryEvents();

  int r = calc_.Calculate(doc_.time, s_.h, true, false);
  if (r == -1) {
    // One more try with a coarser numerical zero.
    WiderZero wider(calc_.settings.zero);
    calc_.error.clear();
    r = calc_.Calculate(doc_.time, s_.h, true, false);
  }
  if (r == -99) return Next::Fail;
  if (r == -1) {
    calc_.error = "No solution";
    return Next::Fail;
  }
  // A node at infinity (-3) is let through here.
  if (r < -1 && r != -3) return Next::Fail;

  doc_.time += s_.h;
  if (!changed) {
    // The devices are quiet: settle the solution and go back to steady
    // stepping on a new factorisation.
    calc_.AcceptAll();
    s_.stepKind = STEP_PASSING;
    if (calc_.SolveInitial(doc_.time, false, false) == -1) return Next::Fail;
    if (!StoreSample()) return Next::Error;
    s_.stepKind = STEP_FACTOR;
    s_.halving = 0;
    s_.h = s_.hMax;
    return Next::Loop;
  }
  return StoreSample() ? Next::Loop : Next::Error;
}

CDriver::Next CDriver::NormalStep(int mode) {
  CCalc& calc = calc_;
  const bool nsr = doc_.settings.nsr;
  double& time = doc_.time;

  calc.KeepStepStart();
  calc.stepStart = time;

  if (EqualOrBelow(s_.tEvent, time)) return Next::Query;

  // Land on a known event that this step would reach.
  if (!EqualOrBelow(time + s_.h + s_.hMin * 0.5, s_.tEvent) && !nsr) {
    s_.h = std::max(s_.tEvent - time, s_.hMin * 0.1);
    s_.stepKind = STEP_LANDING;
  }
  // Land on the end of the interval.
  if (!nsr && mode == RUN_EXACT) {
    const double end = time + s_.h + s_.hMin;
    if (!Equal(end, doc_.targetTime) && !(end < doc_.targetTime)) {
      s_.hSaved = s_.h;
      s_.h = std::max(doc_.targetTime - time, s_.hMin * 0.1);
      s_.stepKind = STEP_TO_TARGET;
    }
  }

  switch (s_.stepKind) {
    case STEP_FACTOR:
      if (!calc.FactorTrapezoid(time, s_.h)) return Next::Fail;
      s_.stepKind = STEP_STEADY;
      [[fallthrough]];
    case STEP_STEADY:
      if (!calc.StepFactored(time + s_.h)) return Next::Fail;
      break;
    case STEP_LANDING:
    case STEP_TO_TARGET:
      if (!calc.StepTrapezoid(time, s_.h)) {
        ReportFailure();
        time += s_.h;
        return Next::Error;
      }
      break;
    default:
      break;
  }

  // Does any device object to the step? If so, halve it until the point of
  // change is bracketed within the smallest step, keeping the parts before
  // it that are free of change.
  calc.cause.clear();
  bool landed = false;  // a step with nsr set: accept it as it is
  for (;;) {
    s_.changed = calc.CheckAll(false);
    if (!s_.changed && !PostStepAll(false, true)) return Next::Fail;
    if (!s_.changed) {
      time += s_.h;
      if (s_.halving == 0) return StoreSample() ? Next::Loop : Next::Error;
      s_.halving = 2;
    } else {
      if (s_.halving == 0) s_.halving = 1;
      s_.tBad = time + s_.h;
      calc.RestoreStepStart();
      s_.stepKind = STEP_LANDING;
    }
    if (nsr) {
      s_.hNext = s_.h;
      landed = true;
      break;
    }
    s_.h *= 0.5;
    if (s_.h < s_.hMin || !(s_.h > 0.0)) break;  // also with a smallest step of 0
    calc.KeepStepStart();
    calc.stepStart = time;
    if (!calc.StepTrapezoid(time, s_.h)) return Next::Fail;
  }

  if (!landed) {
    if (s_.halving == 2 && !StoreSample()) return Next::Error;
    s_.hNext = std::max(s_.tBad - time, s_.hMin);
  }

  calc.AcceptAll();
  if (!PostStepAll(true, false)) return Next::Fail;
  if (calc.rebuild)
    s_.needRestart = true;
  else if (s_.changed)
    s_.needEvent = true;
  else
    s_.needEventStep = true;
  return Next::Loop;
}

void CDriver::PassSettings() {
  calc_.settings.zero = doc_.settings.zero;
  calc_.settings.timeout = doc_.settings.timeout;
  calc_.settings.nsr = doc_.settings.nsr;
  calc_.settings.folder = doc_.directory;
}

// ---- run control of a document ----

bool StartRun(CDoc& doc) {
  EndRunOnThrow guard(doc.running);
  return CDriver(doc).Start();
}

bool RunDocument(CDoc& doc, double interval, int mode) {
  EndRunOnThrow guard(doc.running);
  if (!doc.running && !CDriver(doc).Start()) return false;
  return CDriver(doc).Run(interval, mode);
}

}  // namespace tz4
