// The table of open AVI files.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "avi/avi_file.h"
#include "avi/qavi.h"
#include "status/never_destroyed.h"

namespace avi {

class CAviFileManager {
 public:
  static CAviFileManager& Instance();

  QAVIHandle Add(std::shared_ptr<CAviFile> file);

  // Empty for an unknown handle. A call in progress keeps its file alive.
  std::shared_ptr<CAviFile> FromHandle(QAVIHandle handle) const;
  std::shared_ptr<CAviFile> Remove(QAVIHandle handle);

 private:
  friend korvel::internal::NeverDestroyed<CAviFileManager>;
  CAviFileManager() = default;

  std::atomic<QAVIHandle> lastHandle_ = 0;
  mutable std::mutex mutex_;
  std::unordered_map<QAVIHandle, std::shared_ptr<CAviFile>> files_;
};

}  // namespace avi
