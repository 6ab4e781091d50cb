#include "avi/avi_file_manager.h"

#include <utility>

namespace avi {

CAviFileManager& CAviFileManager::Instance() {
  static korvel::internal::NeverDestroyed<CAviFileManager> manager;
  return manager.object;
}

QAVIHandle CAviFileManager::Add(std::shared_ptr<CAviFile> file) {
  const QAVIHandle handle = ++lastHandle_;
  const std::lock_guard lock(mutex_);
  files_.emplace(handle, std::move(file));
  return handle;
}

std::shared_ptr<CAviFile> CAviFileManager::FromHandle(QAVIHandle handle) const {
  const std::lock_guard lock(mutex_);
  const auto found = files_.find(handle);
  return found == files_.end() ? nullptr : found->second;
}

std::shared_ptr<CAviFile> CAviFileManager::Remove(QAVIHandle handle) {
  const std::lock_guard lock(mutex_);
  const auto node = files_.extract(handle);
  return node.empty() ? nullptr : node.mapped();
}

}  // namespace avi
