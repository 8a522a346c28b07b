// Exit codes of the command-line tool and the error that carries one.
//
// Scripts rely on the codes, so they never change meaning:
//   0  success
//   1  the library refused: a simulation failed, a parameter or trace name
//      was not accepted, a device cannot be simulated
//   2  usage: unknown command or option, missing or malformed argument
//   3  files: the circuit cannot be opened or saved, an output cannot be
//      written
#pragma once
#include <stdexcept>
#include <string>

namespace tz4::cli {

enum ExitCode : int {
  kExitOk = 0,
  kExitLibrary = 1,
  kExitUsage = 2,
  kExitFile = 3,
};

// A failure that ends a command with an exit code and a one-line message.
class CliError : public std::runtime_error {
 public:
  CliError(int exitCode, const std::string& message) : std::runtime_error(message), code(exitCode) {}
  int code;
};

inline CliError UsageError(const std::string& message) { return CliError(kExitUsage, message); }
inline CliError FileError(const std::string& message) { return CliError(kExitFile, message); }
inline CliError LibraryError(const std::string& message) { return CliError(kExitLibrary, message); }

}  // namespace tz4::cli
