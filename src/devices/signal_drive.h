// What every component does that drives a source row from a time function
// (CSignal): the independent sources and the labels in their source models.
// The row's value enters through s(t) alone, so that a step on a kept
// factorisation feeds it in without touching the matrix.
#pragma once
#include <cstdint>
#include <string>

#include "components/signal.h"

namespace tz4 {

class CCalc;
class CCmp;

// The models driven by a time function: "Pulse", "Step", "Sin", "PWL",
// "Function", "File" and "Trace".
bool IsSignalModel(int32_t model);
// Those whose time origin moves when a run continues from a saved state, and
// that report their delay as their initial condition: all but "Function".
bool HasTimeOrigin(int32_t model);

// STAMP_INIT: a fresh run starts the signal at 0; a rebuild in the middle of
// a run continues it from the last time point the driver handed back. Data
// files named without a folder are looked for beside the circuit. 0, or -1
// with the reason in the last error.
int StartSignal(CCmp& owner, CSignal& signal, int32_t model, CCalc& calc, double t);
// STAMP_SOURCE: the value at t (and its slope, where the signal gives one)
// on row r. 0, or -1 with the reason in the solver's error.
int SignalToRow(CCmp& owner, CSignal& signal, CCalc& calc, int row, double t);
// STAMP_SAVE_IC: moves the time origin to the saved point.
void ShiftSignalOrigin(CSignal& signal, int32_t model, const CCalc& calc, double t);
// The next corner of the models that have corners of their own.
void SignalNextEvent(CSignal& signal, int32_t model, double t, double& nextTime, double& maxStep);
// "NAME.Delay=..." for the models with a time origin, else empty.
std::string SignalICText(const CCmp& owner, const CSignal& signal, int32_t model);

}  // namespace tz4
