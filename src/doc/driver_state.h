// The working fields of the transient driver. They live in the document
// between the host's calls, so that a run stopped at the end of one call
// continues at the next exactly where it stood.
#pragma once
#include <cstdint>

namespace tz4 {

// How the next normal step is made.
enum DriverStepKind : int32_t {
  STEP_LANDING = 0,    // cut to land on a known event: full trapezoid step
  STEP_STEADY = 1,     // one product with the kept factorisation
  STEP_FACTOR = 2,     // first step after a change: factorise, then as steady
  STEP_PASSING = 3,    // an event sequence is ending; not stepped
  STEP_CROSSED = 4,    // an event was just crossed: backward Euler
  STEP_TO_TARGET = 5,  // cut to reach the target time; the old step comes back next call
};

// What the last call into the driver left behind.
enum DriverPhase : int32_t {
  PHASE_NONE = 0,
  PHASE_EVENTS = 1,  // in the start-up or an event sequence
  PHASE_CLEAN = 2,   // a call ended cleanly; the next may continue
};

struct CDriverState {
  int32_t samples = 0;  // points stored since the present call began
  double h = 0.0;       // the step in use
  double hMax = 0.0;    // the largest step, as the devices allow it
  double hMin = 0.0;    // the smallest step: kmin * hMax
  double tEvent = 0.0;  // next known event time
  double tBad = 0.0;    // end of the last step that a state change refused
  double hNext = 0.0;   // the step to take after an event
  double hSaved = 0.0;  // the step put aside by a cut to reach the target
  int32_t phase = PHASE_NONE;
  int32_t stepKind = STEP_LANDING;
  int32_t halving = 0;       // 0 none; 1 a state change was seen; 2 part of the step then accepted
  bool firstTry = false;     // the event step is on its first round
  bool changed = false;      // result of the last state check
  bool needRestart = false;  // the system must be rebuilt before the next step
  bool needEvent = false;    // ask the devices for their events next
  bool needEventStep = false;  // cross the event next
};

}  // namespace tz4
