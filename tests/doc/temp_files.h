// Small file helpers for tests that write and read real files.
#pragma once
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

namespace tz4_test {

// A fresh directory under the system temp directory, removed with the object.
class TempDir {
 public:
  explicit TempDir(const std::string& tag) {
    static int counter = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("tz4_" + tag + "_" + std::to_string(::getpid()) + "_" + std::to_string(++counter));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

inline std::string DataFile(const std::string& name) {
  return std::string(TZ4_SOURCE_DIR) + "/tests/data/" + name;
}

}  // namespace tz4_test
