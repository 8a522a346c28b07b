// tz4: the command-line simulator. See "tz4 --help".
#include <iostream>
#include <string>
#include <vector>

#include "tools/commands.h"

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const int code = tz4::cli::Dispatch(words, std::cout, std::cerr);
  std::cout.flush();
  return code;
}
