#include "api/handle_registry.h"

#include "processing/conversion/image_converter.h"
#include "processing/correction/adaptive_hotpixel_correction.h"
#include "processing/correction/binning.h"
#include "processing/correction/color_corrector.h"
#include "processing/correction/gain.h"
#include "processing/correction/gamma_corrector.h"
#include "processing/geometry/image_transformer.h"
#include "processing/measure/collect_line.h"
#include "processing/measure/histogram.h"
#include "video/video_library.h"

namespace korvel::internal {

Handle ImageHandleMap::AddImage(Buffer buffer) {
  auto cell = std::make_shared<Buffer>(std::move(buffer));
  const std::lock_guard lock(mutex_);
  if (handlesByBuffer_.contains(cell->get())) throw std::runtime_error("Given imageBuffer was already added!");
  const auto handle = reinterpret_cast<Handle>(cell.get());
  const auto entry = handlesByBuffer_.emplace(cell->get(), handle).first;
  try {
    imagesByHandle_.emplace(handle, std::move(cell));
  } catch (...) {
    handlesByBuffer_.erase(entry);
    throw;
  }
  return handle;
}

ImageHandleMap::Buffer ImageHandleMap::FindImage(Handle handle) const {
  const std::lock_guard lock(mutex_);
  const auto found = imagesByHandle_.find(handle);
  return found == imagesByHandle_.end() ? nullptr : *found->second;
}

ImageHandleMap::Buffer ImageHandleMap::RemoveImage(Handle handle) {
  const std::lock_guard lock(mutex_);
  const auto node = imagesByHandle_.extract(handle);
  if (node.empty()) return nullptr;
  handlesByBuffer_.erase(node.mapped()->get());
  return std::move(*node.mapped());
}

void ImageHandleMap::ReplaceImage(Handle handle, Buffer newBuffer) {
  // Outlives the lock, so that the old buffer's end, if this was its last reference, comes outside it.
  Buffer oldBuffer;
  const std::lock_guard lock(mutex_);
  const auto found = imagesByHandle_.find(handle);
  if (found == imagesByHandle_.end()) {
    throw std::runtime_error("Cannot replace image buffer since given imageHandle is invalid!");
  }
  const img::buffer::IfcImageBuffer* const oldKey = found->second->get();
  if (oldKey != newBuffer.get()) {
    // The old entry's node serves the new one, so that nothing can fail once a buffer has handed its memory over.
    auto node = handlesByBuffer_.extract(oldKey);
    if (node.empty()) {
      handlesByBuffer_.try_emplace(newBuffer.get(), handle);
    } else {
      node.key() = newBuffer.get();
      node.mapped() = handle;
      handlesByBuffer_.insert(std::move(node));  // an entry that is there already stays as it is
    }
  }
  oldBuffer = std::exchange(*found->second, std::move(newBuffer));
}

HandleRegistry& HandleRegistry::Instance() {
  static NeverDestroyed<HandleRegistry> registry;
  struct EndOfProcess {
    ~EndOfProcess() { registry.object.videos_.RemoveAll(); }
  };
  static const EndOfProcess end;
  return registry.object;
}

}  // namespace korvel::internal
