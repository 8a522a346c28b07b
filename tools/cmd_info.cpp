// tz4 info FILE: what a circuit holds. The component list, its parameters
// and the solver settings are not reachable through the exports, so this
// command reads them from the document object behind the open handle.
#include <algorithm>
#include <iomanip>
#include <sstream>

#include "components/cmp.h"
#include "components/param_ops.h"
#include "doc/doc.h"
#include "expr/numtext.h"
#include "results/trace.h"
#include "tools/cli_args.h"
#include "tools/cli_errors.h"
#include "tools/commands.h"
#include "tools/library_doc.h"

namespace tz4::cli {

const char* const kInfoHelp =
    "usage: tz4 info FILE\n"
    "\n"
    "Lists what the circuit file holds:\n"
    "  - each component: name, type tag and description, model, the node of\n"
    "    each pin (\"-\" for an unconnected pin), and its parameters with their\n"
    "    kind and value text (a formula is shown with its present value);\n"
    "  - the traces stored in the file (what \"tz4 run\" records by default);\n"
    "  - the solver settings (step, zero, kmin, logic levels, time-out).\n"
    "\n"
    "Parameter paths for \"run --set\" and \"set\" are COMPONENT.PARAMETER,\n"
    "for example R1.R or V1.Period.\n"
    "\n"
    "exit codes: 0 ok, 2 usage error, 3 the file cannot be opened\n";

namespace {

const char* KindName(uint32_t kind) {
  switch (kind) {
    case PK_NAME: return "name";
    case PK_FORMULA_TEXT: return "formula";
    case PK_TEXT:
    case PK_TEXT4:
    case PK_TEXT10: return "text";
    case PK_PWL_SOURCE: return "pwl-list";
    case PK_LOGIC_LIST: return "logic-list";
    case PK_SWITCH_LIST: return "switch-list";
    case PK_TABLE_1:
    case PK_TABLE_2: return "table";
    case PK_DATA_FILE: return "data-file";
    case PK_LIBRARY_FILE: return "library";
    case PK_CODE_FILE: return "code-file";
    case PK_VALUE: return "value";
    case PK_IC: return "ic";
    case PK_ENUM: return "choice";
    case PK_ON_OFF: return "on/off";
    case PK_YES_NO: return "yes/no";
    case PK_HIGH_LOW: return "high/low";
    case PK_PWL: return "pwl";
    case PK_CODE: return "code";
    default: return "?";
  }
}

const char* TraceTypeName(int type) {
  switch (type) {
    case TRACE_TYPE_VOLTAGE: return "voltage";
    case TRACE_TYPE_CURRENT: return "current";
    case TRACE_TYPE_POWER: return "power";
    case TRACE_TYPE_VARIABLE: return "variable";
    case TRACE_TYPE_FUNCTION: return "function";
    default: return "unknown";
  }
}

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::replace(text.begin(), text.end(), '\r', ' ');
  return text;
}

// The value as "set" would take it back, and what it stands for when that
// differs (the value of a formula, "#VAL" for a failed one).
std::string ParamText(const CParam& param) {
  std::string full;
  const std::string display = GetDisplayText(param);
  if (!GetFullText(param, full)) return OneLine(display);
  if (param.Kind == PK_IC && full.empty()) return "(none)";
  std::string text = OneLine(full);
  if (param.Kind == PK_VALUE && display != full) text += "  (" + display + ")";
  if (param.Kind == PK_ENUM) {
    if (const auto* e = std::get_if<CEnumValue*>(&param.Value); e != nullptr && *e != nullptr && (*e)->Names) {
      std::string choices;
      for (const char* const* name = (*e)->Names; *name != nullptr; ++name) {
        choices += choices.empty() ? "" : ", ";
        choices += *name;
      }
      text += "  [" + choices + "]";
    }
  }
  return text;
}

std::string Nodes(const CCmp& cmp) {
  std::string text;
  for (int32_t node : cmp.pins) {
    if (!text.empty()) text += ' ';
    text += node < 0 ? "-" : std::to_string(node);
  }
  return text;
}

void WriteComponent(std::ostream& out, CCmp& cmp) {
  const ModelInfo* model = cmp.GetModel();
  out << "  " << cmp.GetFullName() << "  " << (cmp.type != nullptr && cmp.type->tag ? cmp.type->tag : "?");
  if (cmp.type != nullptr && cmp.type->description != nullptr) out << " (" << OneLine(cmp.type->description) << ")";
  out << "  model " << (model != nullptr ? model->name : "? (not found)");
  if (!cmp.pins.empty()) out << "  nodes " << Nodes(cmp);
  out << '\n';
  const CParamTable table = cmp.BindParams();
  size_t nameWidth = 0;
  size_t kindWidth = 0;
  for (const CParam& param : table) {
    if (param.Kind == PK_END || param.Name == nullptr) break;
    nameWidth = std::max(nameWidth, std::string(param.Name).size());
    kindWidth = std::max(kindWidth, std::string(KindName(param.Kind)).size());
  }
  for (const CParam& param : table) {
    if (param.Kind == PK_END || param.Name == nullptr) break;
    out << "      " << std::left << std::setw(static_cast<int>(nameWidth)) << param.Name << "  "
        << std::setw(static_cast<int>(kindWidth)) << KindName(param.Kind) << "  " << ParamText(param) << '\n';
  }
  out << std::right;
}

}  // namespace

int InfoCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& /*err*/) {
  const ParsedArgs parsed = ParseArgs(args, {{"help"}});
  if (parsed.Has("help")) {
    out << kInfoHelp;
    return kExitOk;
  }
  if (parsed.positionals.size() != 1) throw UsageError("expected one circuit file");
  OpenCircuit circuit(parsed.positionals[0]);
  CDoc& doc = circuit.Document();

  out << "circuit " << circuit.path() << '\n';
  out << "\ncomponents (" << doc.cmps.Count() << ")\n";
  for (int i = 0; i < doc.cmps.Count(); ++i) WriteComponent(out, *doc.cmps[i]);

  out << "\ntraces (" << doc.traces.Count() << ")\n";
  size_t traceWidth = 0;
  for (int i = 0; i < doc.traces.Count(); ++i) traceWidth = std::max(traceWidth, doc.traces[i]->GetName().size());
  for (int i = 0; i < doc.traces.Count(); ++i) {
    const CTrace* trace = doc.traces[i];
    out << "  " << std::left << std::setw(static_cast<int>(traceWidth)) << trace->GetName() << std::right << "  "
        << TraceTypeName(trace->type);
    if (trace->type == TRACE_TYPE_FUNCTION && trace->expr != trace->GetName()) out << "  " << trace->expr;
    out << '\n';
  }

  const CDocSettings& s = doc.settings;
  out << "\nsettings\n"
      << "  step     " << FormatNumber(s.step) << " s\n"
      << "  zero     " << FormatNumber(s.zero) << '\n'
      << "  kmin     " << FormatNumber(s.kmin) << '\n'
      << "  nsr      " << (s.nsr ? "true" : "false") << '\n'
      << "  os       " << (s.os ? "true" : "false") << '\n'
      << "  low      " << FormatNumber(s.low) << " V\n"
      << "  high     " << FormatNumber(s.high) << " V\n"
      << "  thr      " << FormatNumber(s.thr) << " V\n"
      << "  timeout  " << s.timeout << (s.timeout == 0 ? " (none)" : " s") << '\n';
  return kExitOk;
}

}  // namespace tz4::cli
