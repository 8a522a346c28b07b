// CDoc: one open circuit file.
//
// The document keeps the XML tree of its file for its whole life and saves
// from that same tree: whatever the library does not understand (drawings,
// views, settings of other analyses, unknown attributes) is written back in
// place and order. A save only patches the parts the library owns and
// rewrites the component list.
//
// Besides the tree it owns the components, the traces, the solver, and the
// lists behind the numbers that a host holds (parameter, input and output
// numbers). The exported functions do nearly everything through one call on
// this class.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "components/param.h"
#include "components/cmps.h"
#include "doc/doc_settings.h"
#include "xml/xml_node.h"
#include "expr/context.h"
#include "results/traces.h"
#include "doc/driver_state.h"

namespace tz4 {

class CCalc;
class CCmp;
class CTrace;

// Bits of CDoc::changeFlags: what has changed since the driver last built
// the system.
enum : uint32_t {
  CHANGE_STEP = 1,     // the stored step differs from the solver's
  CHANGE_TRACES = 2,   // a trace was added
  CHANGE_PARAMS = 4,   // a parameter really changed (kParamsChangedFlag)
  CHANGE_ALL = 0xFFFF, // everything, at the start of a run
};

class CDoc {
 public:
  CDoc();
  virtual ~CDoc();
  CDoc(const CDoc&) = delete;
  CDoc& operator=(const CDoc&) = delete;

  // Reads the file into a fresh tree, checks "Version" (above 2 is refused),
  // archives "Doc" (settings, traces, components) and brings every formula
  // parameter up to date. False, with no message of its own, for an
  // unreadable file, a file without the root element, too new a version or
  // no "Doc". Trouble inside the component list does not fail the load: the
  // components read so far stay, and the message is left in the last error.
  bool Load(const std::string& path);

  // The archive routine of the "Doc" element, in the direction of its
  // `storing` flag: "Calc", "Tran"/"Settings", "Tran"/"Traces" and "Cmps"
  // ("Options" and the components). Each child is found when loading and
  // added when storing. False only for a null element; the result of the
  // component list is deliberately dropped.
  bool Serialize(CXmlNode* docElement);

  // Writes the tree to `path` after rewriting the children of "Cmps" from
  // the collection and patching "step" on "Tran"/"Settings", "timeout" on
  // "Calc" and "Options" on "Cmps" (when not 0). With bit 1 of the save
  // flags, also the "StorageList" and "DataList" elements and, behind the
  // XML, a zero byte and the sample data. The tree stays in store direction
  // afterwards. `fileName` is not changed.
  bool Save(const std::string& path);

  // The flags of attribute "save": from "Doc" if it has one, else from its
  // child "Properties", else 0.
  static int SaveFlags(CXmlNode& docElement);

  // Rebuilds the description of the stored data under `tran`: "StorageList"
  // (found and emptied, or added) with one "Storage" element, and for the
  // k-th child of "Traces" a "DataList" with one "Data" element of
  // sampleCounts[k] samples, stopping at the first index without a count or
  // with a count of 0.
  static void PrepareDataLists(CXmlNode& tran, const std::vector<int>& sampleCounts);

  // Bit of the save flags that asks for result data in the file.
  static constexpr int kSaveData = 2;

  // Appends the component's full name, " : ", the message and "; " to the
  // last error ("pcmp = NULL" for a null component). Always false, so that a
  // check can end in it.
  static bool ComponentError(const CCmp* cmp, const std::string& message);
  static bool ComponentError(const CCmp* cmp, const char* message);

  // ---- host numbers ----

  // The parameter at a dotted path. Null with "NULL pointer", "no parameter
  // name" or "parameter NAME not found" appended.
  bool FindParam(const char* name, CParam& out);
  // The number of a parameter: the same parameter (the same member of the
  // same component) always gets the same number.
  int GetParamNumber(const CParam& param);
  // The parameter behind a number, null with "wrong param number" or "no
  // parameter" appended. The pointer is good until the next GetParamNumber.
  const CParam* FindParamByNumber(int number);

  // Switches the component (a label, "V_V" or "I_I") to the model that takes
  // a host's value and hands out a number for its input value. -1 with
  // "NULL pointer", "no input name", "component NAME not found" or
  // "component NAME cannot be an input" appended.
  int AddInput(const char* name);
  // A number for reading the node of a label during a run. -1 with "NULL
  // pointer", "no label name", "label NAME not found" or "component NAME is
  // not a label" appended.
  int AddOutput(const char* name);

  // ---- traces ----

  // Index of the trace whose display name equals `name` ignoring case; -1
  // with "NULL pointer", "no trace name" or "trace NAME not found" appended.
  int FindTrace(const char* name);
  // The trace with that handle; a negative handle gives null silently, an
  // unknown one appends "no trace".
  CTrace* FindTraceByHandle(int traceHandle);
  // Creates a trace of `type` (0 V, 1 I, 2 P, 3 variable, 4 function) and
  // its "Trace" element; null with the reason appended.
  CTrace* AddTrace(int type, const char* name);
  // Removes the trace and its "Trace" element; a trace not in the list
  // changes nothing.
  void DeleteTrace(CTrace* trace);

  // ---- node numbers ----

  // Puts the file's node numbers back into the pins, so that a build numbers
  // the circuit from them and not from the numbering of an earlier build.
  // Without a record of them (a collection built in memory), the pins as
  // they stand become the record.
  void RestoreFileNodes();

  // ---- the transient run (driven from above the document) ----
  // Ends the run: every component is reset and the recorded samples dropped.
  void Reset();
  // Drops the samples before the time the host has asked to run to.
  void DeleteOldData();

  int32_t handle = -1;            // the host's number; -1 until listed
  std::string fileName;           // the path given to Load
  std::string directory;          // directory part of fileName, with separator
  std::unique_ptr<CXmlNode> xml;  // root of the file's tree; null before Load
  CCmps cmps;                     // the components
  uint32_t options = 0;           // attribute "Options" of "Cmps"
  CDocSettings settings;          // "Calc" and "Tran"/"Settings"
  CTraces traces;                 // the recorded quantities
  std::unique_ptr<CCalc> calc;    // the solver of the run

  // Parameter numbers: the parameter as bound when its number was given out
  // (its typed pointer names the component's own member, so later bindings
  // of the model's table do not disturb it) and the value address by which a
  // later request finds the same number.
  std::vector<std::pair<CParam, ParamTarget>> paramRefs;
  std::vector<double*> inputs;  // input numbers: where the host's value goes
  std::vector<CCmp*> outputs;   // output numbers: the labels whose node is read

  // The node numbers of the file, pin after pin in collection order, as
  // Load read them. A build rewrites the pins with the solver's numbering;
  // a save writes these instead, and the next build starts from them.
  std::vector<int32_t> fileNodes;

  uint32_t changeFlags = 0;  // CHANGE_STEP, CHANGE_TRACES, CHANGE_PARAMS
  bool running = false;      // Start succeeded and nothing has ended the run
  double time = 0.0;         // simulated time the driver has reached
  double targetTime = 0.0;   // time up to which the host has asked to run
  CDriverState drive;        // the transient driver's working fields

 private:
  // The document as the components' formulas see it: the logic levels.
  class LogicLevels final : public CEvalContext {
   public:
    explicit LogicLevels(const CDocSettings& settings) : settings_(settings) {}
    double LogicHigh() const override { return settings_.high; }
    double LogicLow() const override { return settings_.low; }
    double LogicThreshold() const override { return settings_.thr; }

   private:
    const CDocSettings& settings_;
  };

  // Appends the zero byte that ends the XML text, followed by the samples
  // of the recorded traces.
  bool AppendDataTail(const std::string& path);

  LogicLevels levels_{settings};
};

}  // namespace tz4
