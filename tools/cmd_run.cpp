// tz4 run FILE --time T ...: simulates a circuit through the library's
// exports and writes the recorded traces as CSV and as an SVG chart.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "components/cmp.h"
#include "doc/doc.h"
#include "results/trace.h"
#include "tools/axis.h"
#include "tools/cli_args.h"
#include "tools/cli_errors.h"
#include "tools/commands.h"
#include "tools/csv_writer.h"
#include "tools/library_doc.h"
#include "tools/progress.h"
#include "tools/series.h"
#include "tools/svg_plot.h"
#include "tools/trace_request.h"
#include "tz4.h"

namespace tz4::cli {

const char* const kRunHelp =
    "usage: tz4 run FILE --time T [options]\n"
    "\n"
    "Simulates the circuit from time 0 to T and writes the recorded traces.\n"
    "\n"
    "  --time T           simulated time in seconds; engineering suffixes as in\n"
    "                     circuit files: 5m, 20u, 1.5e-3, 2ms (required)\n"
    "  --step H           largest time step (default: the step stored in FILE)\n"
    "  --set PATH=VALUE   change a parameter first, as \"tz4 set\" does (R1.R=2k2,\n"
    "                     V1.Period=4m, C1.C==R1.R*1n); repeatable\n"
    "  --trace EXPR       record EXPR; repeatable. V(R1), I(R1) and P(R1) are the\n"
    "                     voltage, current and power of a component, a bare name\n"
    "                     is a variable of the circuit, anything else a function\n"
    "                     text (\"V(R1)*I(R1)\", \"t*2\"). Default: the traces stored\n"
    "                     in FILE (see \"tz4 info\")\n"
    "  --csv OUT          write CSV to OUT (\"-\": standard output): a column \"time\"\n"
    "                     and one column per trace, numbers at full precision\n"
    "  --plot OUT.svg     draw the traces into an SVG chart\n"
    "  --title TEXT       title of the chart (default: the file name and T)\n"
    "  --timeout S        give up when one time point takes more than S seconds\n"
    "                     of processor time (0: never; default: as stored)\n"
    "  --quiet            no progress bar and no summary\n"
    "\n"
    "Without --csv and --plot the CSV goes to standard output. Missing folders of\n"
    "OUT are created. The file itself is not changed. A progress bar shows on\n"
    "standard error when it is a terminal and the run takes a while.\n"
    "\n"
    "If the simulation fails, what was recorded up to the failure is still\n"
    "written, and the library's message is printed.\n"
    "\n"
    "exit codes: 0 ok, 1 the library refused (simulation failure, unknown\n"
    "            parameter or trace, a device that cannot be simulated),\n"
    "            2 usage error, 3 the circuit cannot be opened or an output\n"
    "            cannot be written\n";

namespace {

// Runs are cut into at most this many intervals, for the progress bar.
constexpr int kMaxIntervals = 100;

struct RecordedTrace {
  int handle;
  std::string name;
};

int AddRequestedTrace(OpenCircuit& circuit, const TraceRequest& request, std::string& name) {
  const int h = circuit.handle();
  const char* text = request.name.c_str();
  switch (request.kind) {
    case TraceKind::kVoltage:
      name = "V(" + request.name + ")";
      return Check(TZ4_AddVTrace(h, text), kExitLibrary);
    case TraceKind::kCurrent:
      name = "I(" + request.name + ")";
      return Check(TZ4_AddITrace(h, text), kExitLibrary);
    case TraceKind::kPower:
      name = "P(" + request.name + ")";
      return Check(TZ4_AddPTrace(h, text), kExitLibrary);
    case TraceKind::kName: {
      name = request.name;
      const CCmp* cmp = circuit.Document().cmps.Find(request.name);
      if (cmp != nullptr && cmp->IsVariable()) return Check(TZ4_AddVarTrace(h, text), kExitLibrary);
      return Check(TZ4_AddFuncTrace(h, text), kExitLibrary);
    }
    case TraceKind::kFunction:
      name = request.name;
      return Check(TZ4_AddFuncTrace(h, text), kExitLibrary);
  }
  return -1;
}

std::vector<RecordedTrace> ChooseTraces(OpenCircuit& circuit, const std::vector<std::string>& options) {
  std::vector<RecordedTrace> traces;
  for (const std::string& request : options) {
    RecordedTrace trace{-1, ""};
    trace.handle = AddRequestedTrace(circuit, ParseTraceRequest(request), trace.name);
    traces.push_back(trace);
  }
  if (!options.empty()) return traces;
  // The file's own traces: the exports find them by name only.
  const CTraces& stored = circuit.Document().traces;
  std::vector<std::string> names;
  for (int i = 0; i < stored.Count(); ++i) names.push_back(stored[i]->GetName());
  for (const std::string& name : names) {
    const int handle = Check(TZ4_GetTrace(circuit.handle(), name.c_str()), kExitLibrary);
    const bool seen = std::any_of(traces.begin(), traces.end(), [&](const auto& t) { return t.handle == handle; });
    if (!seen) traces.push_back({handle, name});
  }
  if (traces.empty()) throw UsageError("the circuit stores no traces: name some with --trace");
  return traces;
}

Series Fetch(int doc, const RecordedTrace& trace) {
  Series series{trace.name, {}, {}};
  const int n = Check(TZ4_GetDataSize(doc, trace.handle), kExitLibrary);
  series.t.reserve(static_cast<size_t>(n));
  series.v.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    double t = 0.0;
    double v = 0.0;
    Check(TZ4_GetDataAt(doc, trace.handle, i, &t, &v), kExitLibrary);
    series.t.push_back(t);
    series.v.push_back(v);
  }
  return series;
}

// Voltages, currents and powers of components each get a panel of their
// own; everything else shares one without unit.
Quantity QuantityOf(const std::string& traceName) {
  if (traceName.find_first_not_of(" \t") == std::string::npos) return {};
  switch (ParseTraceRequest(traceName).kind) {
    case TraceKind::kVoltage: return {"voltage", "V"};
    case TraceKind::kCurrent: return {"current", "A"};
    case TraceKind::kPower: return {"power", "W"};
    default: return {};
  }
}

std::ofstream OpenOutput(const std::string& path) {
  const std::filesystem::path parent = std::filesystem::path(path).parent_path();
  std::error_code ignored;
  if (!parent.empty()) std::filesystem::create_directories(parent, ignored);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw FileError("cannot write " + path);
  return out;
}

void Finish(std::ofstream& out, const std::string& path) {
  out.close();
  if (!out) throw FileError("cannot write " + path);
}

}  // namespace

int RunCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  const ParsedArgs parsed = ParseArgs(args, {{"help"},
                                             {"time", true},
                                             {"step", true},
                                             {"set", true, true},
                                             {"trace", true, true},
                                             {"csv", true},
                                             {"plot", true},
                                             {"title", true},
                                             {"timeout", true},
                                             {"quiet"}});
  if (parsed.Has("help")) {
    out << kRunHelp;
    return kExitOk;
  }
  if (parsed.positionals.size() != 1) throw UsageError("expected one circuit file");
  if (!parsed.Has("time")) throw UsageError("option --time is required");
  const double endTime = ParseDuration("time", parsed.Value("time"));
  const bool hasStep = parsed.Has("step");
  const double step = hasStep ? ParseDuration("step", parsed.Value("step")) : 0.0;
  const bool hasTimeout = parsed.Has("timeout");
  const int timeout = hasTimeout ? ParseCount("timeout", parsed.Value("timeout")) : 0;
  std::vector<Assignment> assignments;
  for (const std::string& text : parsed.Values("set")) assignments.push_back(ParseAssignment(text));
  for (const std::string& request : parsed.Values("trace")) ParseTraceRequest(request);  // usage errors first
  std::string csvPath = parsed.Value("csv");
  const std::string plotPath = parsed.Value("plot");
  if (parsed.Has("csv") && csvPath.empty()) throw UsageError("option --csv needs a file name or -");
  if (parsed.Has("plot") && plotPath.empty()) throw UsageError("option --plot needs a file name");
  if (csvPath.empty() && plotPath.empty()) csvPath = "-";
  const bool quiet = parsed.Has("quiet");
  const std::string file = parsed.positionals[0];

  OpenCircuit circuit(file);
  const int doc = circuit.handle();
  for (const Assignment& a : assignments) circuit.SetParameter(a.path, a.value);
  if (hasStep) Check(TZ4_SetStep(doc, step), kExitLibrary);
  if (hasTimeout) Check(TZ4_SetTimeout(doc, timeout), kExitLibrary);
  const std::vector<RecordedTrace> traces = ChooseTraces(circuit, parsed.Values("trace"));

  // Run in intervals, each landing exactly on its end. An interval is never
  // shorter than the step, so that a coarse step is not cut up.
  const double maxStep = circuit.Document().settings.step;
  const int intervals =
      static_cast<int>(std::clamp(std::floor(endTime / maxStep), 1.0, static_cast<double>(kMaxIntervals)));
  ProgressBar progress(!quiet && StderrIsTerminal(), stderr);
  std::string failure;
  double asked = 0.0;
  for (int k = 1; k <= intervals; ++k) {
    const double target = k == intervals ? endTime : endTime * k / intervals;
    if (TZ4_SimulateInterval(doc, target - asked) < 0) {
      failure = LastLibraryError();
      break;
    }
    asked = target;
    progress.Update(static_cast<double>(k) / intervals,
                    "t = " + EngineeringText(target) + "s of " + EngineeringText(endTime) + "s");
  }
  progress.Finish();

  std::vector<Series> series;
  for (const RecordedTrace& trace : traces) series.push_back(Fetch(doc, trace));
  const SeriesTable table = AlignSeries(series);

  std::ostream& report = csvPath == "-" ? err : out;
  if (!failure.empty() && table.time.empty()) throw LibraryError(failure);
  if (csvPath == "-") {
    WriteCsv(out, table);
  } else if (!csvPath.empty()) {
    std::ofstream csv = OpenOutput(csvPath);
    WriteCsv(csv, table);
    Finish(csv, csvPath);
  }
  if (!plotPath.empty()) {
    PlotOptions options;
    options.title = parsed.Value("title", std::filesystem::path(file).filename().string() + ", " +
                                              EngineeringText(endTime) + "s");
    options.xMin = 0.0;
    options.xMax = endTime;
    for (const Series& s : series) options.quantities.push_back(QuantityOf(s.name));
    std::ofstream svg = OpenOutput(plotPath);
    svg << RenderSvg(series, options);
    Finish(svg, plotPath);
  }
  if (!failure.empty()) {
    throw LibraryError(failure + " (the samples up to t = " + EngineeringText(table.time.back()) +
                       "s were written)");
  }
  if (!quiet) {
    report << "simulated " << EngineeringText(endTime) << "s: " << traces.size() << " trace"
           << (traces.size() == 1 ? "" : "s") << ", " << table.time.size() << " samples\n";
    if (!csvPath.empty() && csvPath != "-") report << "csv:  " << csvPath << '\n';
    if (!plotPath.empty()) report << "plot: " << plotPath << '\n';
  }
  return kExitOk;
}

}  // namespace tz4::cli
