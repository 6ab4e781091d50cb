#include "processing/module_timing.h"

#include <algorithm>

#include "status/never_destroyed.h"

namespace img::processing {

ModuleTimingRegistry& ModuleTimingRegistry::Instance() {
  static korvel::internal::NeverDestroyed<ModuleTimingRegistry> registry;
  return registry.object;
}

uint32_t ModuleTimingRegistry::IdOf(const std::string& name) {
  const std::lock_guard lock(mutex_);
  for (const auto& [id, record] : records_) {
    if (record.name == name) return id;
  }
  const uint32_t next = records_.empty() ? 0 : records_.rbegin()->first + 1;
  records_[next].name = name;
  return next;
}

void ModuleTimingRegistry::AddRun(uint32_t id, double milliseconds) {
  const std::lock_guard lock(mutex_);
  ModuleTimingRecord& record = records_[id];
  record.last = milliseconds;
  record.minimum = std::min(record.minimum, milliseconds);
  record.maximum = std::max(record.maximum, milliseconds);
  record.sum += milliseconds;
  record.lastDurations[record.count % record.lastDurations.size()] = milliseconds;
  ++record.count;
}

std::vector<ModuleTimingRecord> ModuleTimingRegistry::Records() const {
  const std::lock_guard lock(mutex_);
  std::vector<ModuleTimingRecord> records;
  records.reserve(records_.size());
  for (const auto& [id, record] : records_) records.push_back(record);
  return records;
}

ScopedModuleTiming::~ScopedModuleTiming() {
  const auto duration =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now() - start_).count();
  ModuleTimingRegistry::Instance().AddRun(moduleId_, static_cast<double>(duration) / 1e6);
}

}  // namespace img::processing
