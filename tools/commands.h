// The commands of the tool. Each takes the words after its name, writes its
// results to `out`, and returns an exit code (cli_errors.h) or raises a
// CliError; Dispatch turns the error into a message on `err`.
#pragma once
#include <ostream>
#include <string>
#include <vector>

namespace tz4::cli {

int RunCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int InfoCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int SetCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

extern const char* const kRunHelp;
extern const char* const kInfoHelp;
extern const char* const kSetHelp;

// The whole command line after the program name: "run FILE ...", "info
// FILE", "set FILE ...", "help [COMMAND]", "--help", "--version".
int Dispatch(const std::vector<std::string>& words, std::ostream& out, std::ostream& err);

}  // namespace tz4::cli
