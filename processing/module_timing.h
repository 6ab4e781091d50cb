// How long the runs of timed modules take, for the whole process.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace img::processing {

struct ModuleTimingRecord {
  std::string name;
  // Milliseconds.
  double last = 0;
  double minimum = std::numeric_limits<double>::max();
  double maximum = std::numeric_limits<double>::min();
  double sum = 0;
  uint64_t count = 0;
  std::array<double, 9> lastDurations{};  // a ring: run n stands in slot n modulo 9
};

// May be used from several threads at once.
class ModuleTimingRegistry {
 public:
  static ModuleTimingRegistry& Instance();

  // The id of a name; a new name gets the next one.
  uint32_t IdOf(const std::string& name);

  // Adds one run to the record of an id, which is made if needed.
  void AddRun(uint32_t id, double milliseconds);

  // A copy of all records, in the order of their ids.
  std::vector<ModuleTimingRecord> Records() const;

 private:
  mutable std::mutex mutex_;
  std::map<uint32_t, ModuleTimingRecord> records_;
};

// Adds the time from its making to its end to a module's record, however the scope is left.
class ScopedModuleTiming {
 public:
  explicit ScopedModuleTiming(uint32_t moduleId) : moduleId_(moduleId), start_(std::chrono::system_clock::now()) {}
  ScopedModuleTiming(const ScopedModuleTiming&) = delete;
  ScopedModuleTiming& operator=(const ScopedModuleTiming&) = delete;
  ~ScopedModuleTiming();

 private:
  uint32_t moduleId_;
  std::chrono::system_clock::time_point start_;
};

}  // namespace img::processing
