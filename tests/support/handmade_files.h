// Reads files of one type whose bytes a test puts together.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/memory_limit.h"
#include "tests/model/file_model.h"
#include "tests/support/exported_files.h"
#include "tests/support/temporary_directory.h"

namespace korvel_test {

class HandmadeFiles : public testing::Test {
 protected:
  explicit HandmadeFiles(FileType type) : path_(directory_.File("handmade" + EndingOf(type))) {}

  ReadOutcome ReadBytes(const Bytes& file) const {
    WriteFile(path_, file);
    return Read(path_);
  }
  ReadOutcome ReadBytesAs(const Bytes& file, uint32_t format) const {
    WriteFile(path_, file);
    return ReadAs(path_, format);
  }
  const std::string& Path() const { return path_; }

 private:
  TemporaryDirectory directory_;
  std::string path_;
};

inline Bytes FirstBytes(const Bytes& bytes, size_t count) {
  return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count)};
}

// Another bound on the memory of an image, for the time of a scope.
class AllocationLimit {
 public:
  explicit AllocationLimit(size_t byteCount) { img::OverrideLargestAllocation(byteCount); }
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;
  ~AllocationLimit() { img::OverrideLargestAllocation(0); }
};

}  // namespace korvel_test
