// CTraces: a document's list of traces.
//
// The list is read from the "Traces" element of the file and grows and
// shrinks as the host adds and deletes traces. The k-th child of
// "Doc"/"Tran"/"Traces" belongs to the k-th trace: adding appends both, and
// deleting removes both at the same index, so the file always describes the
// list as it stands.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "expr/lists.h"
#include "results/trace.h"

namespace tz4 {

class CCalc;
class CCmps;
class CXmlNode;

class CTraces {
 public:
  // What hands out host handles; TakeNextHandle in the library.
  using HandleAllocator = int32_t (*)();

  CTraces() = default;
  virtual ~CTraces();
  CTraces(const CTraces&) = delete;
  CTraces& operator=(const CTraces&) = delete;

  // Loading: one trace for every child of `traces`, whatever its name,
  // appended in order. Storing: one "Trace" child for every trace. False for
  // a null element.
  bool Serialize(CXmlNode* traces);

  // Creates a trace of `type` (TraceType) named `name` and appends it to the
  // list and, as a "Trace" element, to "Doc"/"Tran"/"Traces" under `root`
  // (skipped with a null root). Voltage, current and power traces need a
  // component of `components` (top level only) whose model allows the kind;
  // a variable trace needs a component; a function trace takes `name` as
  // its expression. On failure the reason is appended to the last error and
  // the result is null.
  CTrace* Add(int type, const char* name, CCmps& components, CXmlNode* root);

  // Index of the first trace whose display name equals `name` ignoring case;
  // -1 with "NULL pointer", "no trace name" or "trace NAME not found"
  // appended to the last error.
  int Find(const char* name) const;

  // The first trace with this handle. A negative handle gives null silently;
  // an unknown one appends "no trace".
  CTrace* FindByHandle(int handle) const;

  // The trace's handle, taken from `next` when it has none yet.
  static int32_t AssignHandle(CTrace& trace, HandleAllocator next);
  int32_t AssignHandle(CTrace& trace);

  // Removes the trace and its "Trace" element (the child of the same index
  // of the first "Doc"/"Tran"/"Traces" under `root`, found without changing
  // the tree's direction) and destroys it with its data. A trace that is not
  // in the list changes nothing.
  void Delete(CTrace* trace, CXmlNode* root);

  // Takes a trace out of the list and hands it over; null if it is not there.
  std::unique_ptr<CTrace> Remove(CTrace* trace);

  // Binds every trace for a run, once the system is built: a trace with an
  // "id" other than 0 measures the first component of `components` with
  // that id; one with id 0 measures the component it was added for, if any.
  // A lookup that fails puts its text into calc.error (unless that already
  // holds one) and gives false; the other traces are still bound.
  bool Bind(CCalc& calc, CCmps& components);

  // Appends a sample at time t to every trace. A failure (a function that
  // cannot be evaluated) puts its text into calc.error and gives false.
  bool Sample(CCalc& calc, CCmps& components, double t);

  // Frees the samples of every trace.
  void Clear();
  // Drops the samples before t in every trace, keeping the one at or before t.
  void DeleteOld(double t);

  // The sample count of each trace, in list order.
  std::vector<int> SampleCounts() const;

  // Writes every trace's samples, in list order and in time order, as
  // 16-byte records (time, value; little-endian doubles) with nothing
  // between them. False when the file cannot be written.
  bool WriteData(std::FILE* file) const;

  int Count() const { return list.Count(); }
  CTrace* operator[](int index) const { return list[index]; }

  TList<CTrace> list;
};

}  // namespace tz4
