// Helpers for the tool's tests: scratch directories, files, and running the
// tool's commands in this process or as the built program.
#pragma once
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "tools/commands.h"

namespace tz4_tool_test {

class ScratchDir {
 public:
  explicit ScratchDir(const std::string& tag) {
    static int counter = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("tz4_cli_" + tag + "_" + std::to_string(::getpid()) + "_" + std::to_string(++counter));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~ScratchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

inline std::string SourcePath(const std::string& relative) { return std::string(TZ4_SOURCE_DIR) + "/" + relative; }

struct Outcome {
  int code = -1;
  std::string out;
  std::string err;
};

// A command line run through the tool's dispatcher in this process.
inline Outcome Tool(const std::vector<std::string>& words) {
  std::ostringstream out;
  std::ostringstream err;
  Outcome outcome;
  outcome.code = tz4::cli::Dispatch(words, out, err);
  outcome.out = out.str();
  outcome.err = err.str();
  return outcome;
}

inline std::string ShellQuote(const std::string& word) {
  std::string quoted = "'";
  for (char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// The built program (build dir/tz4) run with these words; its standard
// output and exit code, standard error going to `errFile`.
inline Outcome Program(const std::vector<std::string>& words, const std::string& errFile) {
  std::string command = ShellQuote(std::string(TZ4_BINARY_DIR) + "/tz4");
  for (const std::string& w : words) command += " " + ShellQuote(w);
  command += " 2>" + ShellQuote(errFile);
  Outcome outcome;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return outcome;
  char buffer[4096];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) outcome.out.append(buffer, n);
  const int status = ::pclose(pipe);
  outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  outcome.err = ReadText(errFile);
  return outcome;
}

}  // namespace tz4_tool_test
