// A file name of this process whose file goes with the scope.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace korvel::benchmarks {

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& ending)
      : path_(std::filesystem::temp_directory_path() / ("korvel_benchmarks_" + std::to_string(getpid()) + ending)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace korvel::benchmarks
