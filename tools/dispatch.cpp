#include <exception>
#include <new>

#include "tools/cli_errors.h"
#include "tools/commands.h"
#include "tz4.h"

namespace tz4::cli {

namespace {

constexpr const char* kMainHelp =
    "usage: tz4 COMMAND [ARGUMENTS]\n"
    "\n"
    "Transient simulation of circuit files (.tz4).\n"
    "\n"
    "commands:\n"
    "  run FILE --time T ...     simulate, write the traces as CSV and as an SVG chart\n"
    "  info FILE                 list components, parameters, traces and solver settings\n"
    "  set FILE PATH=VALUE ...   change parameters and save the file\n"
    "  help [COMMAND]            this text, or the help of one command\n"
    "\n"
    "options:\n"
    "  -h, --help                this text (COMMAND --help: that command's help)\n"
    "  --version                 the library's version text\n"
    "\n"
    "exit codes:\n"
    "  0  success\n"
    "  1  the library refused: simulation failure, unknown parameter or trace,\n"
    "     a device that cannot be simulated\n"
    "  2  usage error: unknown command or option, missing or malformed argument\n"
    "  3  file error: the circuit cannot be opened or saved, an output cannot be written\n";

using Command = int (*)(const std::vector<std::string>&, std::ostream&, std::ostream&);

struct Entry {
  const char* name;
  Command command;
  const char* const* help;
};

constexpr Entry kCommands[] = {
    {"run", &RunCommand, &kRunHelp},
    {"info", &InfoCommand, &kInfoHelp},
    {"set", &SetCommand, &kSetHelp},
};

const Entry* FindCommand(const std::string& name) {
  for (const Entry& entry : kCommands) {
    if (name == entry.name) return &entry;
  }
  return nullptr;
}

}  // namespace

int Dispatch(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
  if (words.empty()) {
    err << kMainHelp;
    return kExitUsage;
  }
  const std::string& first = words[0];
  if (first == "-h" || first == "--help") {
    out << kMainHelp;
    return kExitOk;
  }
  if (first == "--version") {
    out << TZ4_GetInfo() << '\n';
    return kExitOk;
  }
  if (first == "help") {
    if (words.size() == 1) {
      out << kMainHelp;
      return kExitOk;
    }
    const Entry* entry = FindCommand(words[1]);
    if (entry == nullptr) {
      err << "tz4: unknown command '" << words[1] << "' (try: tz4 --help)\n";
      return kExitUsage;
    }
    out << *entry->help;
    return kExitOk;
  }
  const Entry* entry = FindCommand(first);
  if (entry == nullptr) {
    err << "tz4: unknown command '" << first << "' (try: tz4 --help)\n";
    return kExitUsage;
  }
  const std::vector<std::string> args(words.begin() + 1, words.end());
  try {
    return entry->command(args, out, err);
  } catch (const CliError& error) {
    err << "tz4 " << entry->name << ": " << error.what() << '\n';
    if (error.code == kExitUsage) err << "(try: tz4 " << entry->name << " --help)\n";
    return error.code;
  } catch (const std::bad_alloc&) {
    err << "tz4 " << entry->name << ": out of memory\n";
    return kExitLibrary;
  } catch (const std::exception& error) {
    err << "tz4 " << entry->name << ": " << error.what() << '\n';
    return kExitLibrary;
  }
}

}  // namespace tz4::cli
