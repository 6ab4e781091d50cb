// What all fuzz targets share: the lowered bound of memory, a directory for files, and how a broken promise of the
// library ends the program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tests/support/temporary_directory.h"

namespace korvel_fuzz {

using ByteView = std::span<const uint8_t>;

// Writes the condition and the calling thread's last failure to stderr and aborts, which libFuzzer takes for a finding.
[[noreturn]] void Fail(const char* condition, const char* file, int line);

#define KORVEL_FUZZ_REQUIRE(condition)                                     \
  do {                                                                     \
    if (!(condition)) ::korvel_fuzz::Fail(#condition, __FILE__, __LINE__); \
  } while (false)

// A file that is rewritten for each input; it stays open, which saves most of the time.
class ScratchFile {
 public:
  explicit ScratchFile(std::string path);
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  const std::string& Path() const { return path_; }
  void Rewrite(ByteView content);

 private:
  std::string path_;
  int descriptor_;
};

// Made at the first input. The library then takes at most largestAllocation bytes for an image, and its lines for the
// system log go nowhere.
class Session {
 public:
  static constexpr size_t kLargestAllocation = size_t{64} * 1024 * 1024;

  explicit Session(size_t largestAllocation = kLargestAllocation);

  std::string PathOf(const std::string& name) const { return directory_.File(name); }

 private:
  korvel_test::TemporaryDirectory directory_;
};

// Fails if as many descriptors aren't open at its end as at its beginning.
class DescriptorCheck {
 public:
  DescriptorCheck() : lowest_(LowestFree()) {}
  DescriptorCheck(const DescriptorCheck&) = delete;
  DescriptorCheck& operator=(const DescriptorCheck&) = delete;
  ~DescriptorCheck() { KORVEL_FUZZ_REQUIRE(LowestFree() == lowest_); }

 private:
  static int LowestFree();

  int lowest_;
};

}  // namespace korvel_fuzz
