// The transient driver: advances a running simulation of one document.
//
// The step is variable. In quiet stretches it is the largest step the
// devices allow, and each step is one product with a kept factorisation of
// the trapezoidal system. A discontinuity, known in advance (a source's
// corner) or found by a device's change of state, is approached by cutting or
// halving the step, crossed by a short backward Euler step, and followed by a
// new factorisation.
//
// The driver's fields live in CDoc::drive between calls; a CDriver is made
// for one call and holds only what that call needs.
#pragma once
#include <cstdint>

namespace tz4 {

class CCalc;
class CDoc;
struct CDriverState;

// Modes of CDoc::Run.
enum RunMode : int {
  RUN_INTERVAL = 0,  // run `interval` more seconds; stop at the first point at or past the end
  RUN_ONE_STEP = 1,  // store one more point; the target follows the time reached
  RUN_EXACT = 2,     // run `interval` more seconds, landing exactly on the end
};

class CDriver {
 public:
  explicit CDriver(CDoc& document);

  // A new run at time 0: everything of the old one is reset, the system is
  // built and the initial point found and stored. False when the circuit
  // cannot be run; the reasons are in the last-error text.
  bool Start();

  // Advances the run by `dt` in `mode` (RunMode). False after a failure,
  // which has ended the run and appended its text to the last error.
  bool Run(double dt, int mode);

  // Builds what the change flags ask for and finds the initial conditions
  // at the present time; stores the point at time 0. False on failure.
  bool Prepare();

  // Asks the devices for their next event and the largest step, and sets
  // the smallest step and the step with which to cross an event.
  void QueryEvents();

  // Crosses a discontinuity with backward Euler, lengthening the step while
  // no consistent state is found. False on failure (reported).
  bool EventStep();

  // Samples every component and trace at the present time. False on
  // failure (reported).
  bool StoreSample();

  // Hands the document's settings that the solver reads to CCalc.
  void PassSettings();

  // Appends "Transient error at t=", the time, and " : " with the solver's
  // text when it has one, to the last error.
  void ReportFailure();

 private:
  enum class Next { Done, Loop, Restart, Query, Event, Fail, Error };

  // One turn of the main loop: the stop test, then the pending work or one
  // step.
  Next Turn(int mode);
  // The point after a crossed event: more Euler steps until the devices are
  // quiet, then a fresh factorisation.
  Next AfterEvent();
  // One normal step, with event landing, target landing and halving.
  Next NormalStep(int mode);
  // PostStep on every component; false when one failed. `changed` is set
  // when any reported a change (with stopAtFirst, the walk ends there).
  bool PostStepAll(bool apply, bool stopAtFirst);
  // The end of a failed call: the text, unless already written, and the end
  // of the run.
  bool Error();

  CDoc& doc_;
  CCalc& calc_;
  CDriverState& s_;
  bool reported_ = false;  // ReportFailure has written this call's text
};

// A new run of the document at time 0 (TZ4_Start). False when the circuit
// cannot be run; the reasons are in the last-error text.
bool StartRun(CDoc& doc);
// Advances the run by `interval` in `mode` (RunMode), starting it first when
// none is in progress. False after a failure, which has ended the run.
bool RunDocument(CDoc& doc, double interval, int mode);

}  // namespace tz4
