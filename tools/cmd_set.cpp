// tz4 set FILE PATH=VALUE... [--output NEW]: changes parameters through the
// library's text entry and saves the circuit.
#include "tools/cli_args.h"
#include "tools/cli_errors.h"
#include "tools/commands.h"
#include "tools/library_doc.h"
#include "tz4.h"

namespace tz4::cli {

const char* const kSetHelp =
    "usage: tz4 set FILE PATH=VALUE... [--output NEW] [--quiet]\n"
    "\n"
    "Changes parameters of a circuit and saves it, in place or as NEW.\n"
    "\n"
    "  PATH=VALUE      a parameter path (R1.R, V1.Period, X1.R3.R; a bare\n"
    "                  component name means its first parameter) and its new\n"
    "                  text: a number with engineering suffixes (2k2, 10u,\n"
    "                  1.5e-3), a formula beginning with \"=\", or the text of a\n"
    "                  choice (On, Off, Yes, No, Linear, ...)\n"
    "  --output NEW    save to NEW and leave FILE as it is\n"
    "  --quiet         do not list the new values\n"
    "\n"
    "Every assignment is applied in order; if one is refused nothing is saved.\n"
    "Each changed parameter is listed as PATH = TEXT with the text it now holds.\n"
    "\n"
    "exit codes: 0 ok, 1 a parameter was refused (unknown path, bad text),\n"
    "            2 usage error, 3 the file cannot be opened or saved\n";

int SetCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& /*err*/) {
  const ParsedArgs parsed = ParseArgs(args, {{"help"}, {"output", true}, {"quiet"}});
  if (parsed.Has("help")) {
    out << kSetHelp;
    return kExitOk;
  }
  if (parsed.positionals.empty()) throw UsageError("expected a circuit file and PATH=VALUE assignments");
  if (parsed.positionals.size() < 2) throw UsageError("nothing to set: give PATH=VALUE");
  if (parsed.Has("output") && parsed.Value("output").empty()) throw UsageError("option --output needs a file name");
  std::vector<Assignment> assignments;
  for (size_t i = 1; i < parsed.positionals.size(); ++i) assignments.push_back(ParseAssignment(parsed.positionals[i]));

  OpenCircuit circuit(parsed.positionals[0]);
  std::vector<std::string> report;
  for (const Assignment& a : assignments) report.push_back(a.path + " = " + circuit.SetParameter(a.path, a.value));

  const std::string output = parsed.Value("output");
  if (output.empty()) {
    Check(TZ4_Save(circuit.handle()), kExitFile);
  } else {
    Check(TZ4_SaveAs(circuit.handle(), output.c_str()), kExitFile);
  }
  if (!parsed.Has("quiet")) {
    for (const std::string& line : report) out << line << '\n';
    out << "saved " << (output.empty() ? circuit.path() : output) << '\n';
  }
  return kExitOk;
}

}  // namespace tz4::cli
