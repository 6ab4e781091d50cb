// The one place that turns handles into objects, and what keeps an object alive between exported calls.
//
// Each kind of object has its own map and mutex, held for the map access alone. A lookup copies the shared_ptr, so a
// call in progress keeps its object even if another thread destroys the handle meanwhile.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "core/image_buffer.h"
#include "korvel/korvel.h"
#include "status/never_destroyed.h"

namespace img::processing {
class AdaptiveHotpixelCorrection;
class Binning;
class ColorCorrector;
class Gain;
class GammaCorrector;
class ImageConverter;
class ImageTransformer;
struct HistogramRecord;
struct LineRecord;
}  // namespace img::processing

namespace libvideo {
class VideoLibrary;
}

namespace korvel::internal {

using Handle = uintptr_t;

// Objects of one kind; a handle is the address of its object.
template <class Object>
class HandleMap {
 public:
  // alreadyAdded is the text of the failure to add one object twice.
  explicit HandleMap(const char* alreadyAdded) : alreadyAdded_(alreadyAdded) {}

  Handle Add(std::shared_ptr<Object> object) {
    const auto handle = reinterpret_cast<Handle>(object.get());
    const std::lock_guard lock(mutex_);
    if (!objects_.try_emplace(handle, std::move(object)).second) throw std::runtime_error(alreadyAdded_);
    return handle;
  }

  // Empty for an unknown handle.
  std::shared_ptr<Object> Find(Handle handle) const {
    const std::lock_guard lock(mutex_);
    const auto found = objects_.find(handle);
    return found == objects_.end() ? nullptr : found->second;
  }

  // Takes the registry's reference out, so that the object's end, if this was the last one, comes outside the lock.
  // Empty for an unknown handle: of two threads that remove one handle, one gets the object.
  std::shared_ptr<Object> Remove(Handle handle) {
    const std::lock_guard lock(mutex_);
    const auto node = objects_.extract(handle);
    return node.empty() ? nullptr : std::move(node.mapped());
  }

  // The objects' ends come outside the lock.
  void RemoveAll() {
    std::unordered_map<Handle, std::shared_ptr<Object>> removed;
    const std::lock_guard lock(mutex_);
    removed.swap(objects_);
  }

 private:
  const char* alreadyAdded_;
  mutable std::mutex mutex_;
  std::unordered_map<Handle, std::shared_ptr<Object>> objects_;
};

// Images. A handle is the address of a cell that holds the image's buffer, so that an operation can put another buffer
// behind a handle that the application already has.
class ImageHandleMap {
 public:
  using Buffer = std::shared_ptr<img::buffer::IfcImageBuffer>;

  Handle AddImage(Buffer buffer);
  Buffer FindImage(Handle handle) const;
  Buffer RemoveImage(Handle handle);

  // Puts newBuffer behind a handle. Throws std::runtime_error for an unknown handle.
  void ReplaceImage(Handle handle, Buffer newBuffer);

 private:
  mutable std::mutex mutex_;
  std::unordered_map<Handle, std::shared_ptr<Buffer>> imagesByHandle_;
  std::unordered_map<const img::buffer::IfcImageBuffer*, Handle> handlesByBuffer_;
};

class HandleRegistry {
 public:
  // Made at the first use of a handle and never destroyed. Videos that an application left open end with the process,
  // as properly as if they had been closed.
  static HandleRegistry& Instance();

  HandleMap<img::processing::ImageConverter>& ImageConverters() { return imageConverters_; }
  HandleMap<img::processing::AdaptiveHotpixelCorrection>& AdaptiveHotpixelCorrectors() {
    return adaptiveHotpixelCorrectors_;
  }
  HandleMap<img::processing::ColorCorrector>& ColorCorrectors() { return colorCorrectors_; }
  HandleMap<img::processing::Binning>& Binnings() { return binnings_; }
  HandleMap<img::processing::Gain>& Gains() { return gains_; }
  HandleMap<img::processing::GammaCorrector>& GammaCorrectors() { return gammaCorrectors_; }
  ImageHandleMap& Images() { return images_; }
  HandleMap<img::processing::HistogramRecord>& Histograms() { return histograms_; }
  HandleMap<img::processing::LineRecord>& PixelLines() { return pixelLines_; }
  HandleMap<img::processing::ImageTransformer>& ImageTransformers() { return imageTransformers_; }
  HandleMap<libvideo::VideoLibrary>& Videos() { return videos_; }

 private:
  friend NeverDestroyed<HandleRegistry>;
  HandleRegistry() = default;

  HandleMap<img::processing::ImageConverter> imageConverters_{"Given imageConverter was already added!"};
  HandleMap<img::processing::AdaptiveHotpixelCorrection> adaptiveHotpixelCorrectors_{
      "Given adaptiveHotpixelCorrector was already added!"};
  HandleMap<img::processing::ColorCorrector> colorCorrectors_{"Given colorCorrector was already added!"};
  HandleMap<img::processing::Binning> binnings_{"Given binning was already added!"};
  // Intended: gains share their text with gamma correctors.
  HandleMap<img::processing::Gain> gains_{"Given gammaCorrector was already added!"};
  HandleMap<img::processing::GammaCorrector> gammaCorrectors_{"Given gammaCorrector was already added!"};
  ImageHandleMap images_;
  HandleMap<img::processing::HistogramRecord> histograms_{"Given histogramData was already added!"};
  HandleMap<img::processing::LineRecord> pixelLines_{"Given lineData was already added!"};
  HandleMap<img::processing::ImageTransformer> imageTransformers_{"Given imageTransformer was already added!"};
  HandleMap<libvideo::VideoLibrary> videos_{"Given video was already added!"};
};

// Between the handle types of the exported header and the registry's numbers.
template <class ExportedHandle>
Handle FromExported(ExportedHandle handle) {
  return reinterpret_cast<Handle>(handle);
}

template <class ExportedHandle>
ExportedHandle ToExported(Handle handle) {
  return reinterpret_cast<ExportedHandle>(handle);
}

// What exported functions do with image handles.
inline std::shared_ptr<img::buffer::IfcImageBuffer> FindImage(KORVEL_IMAGE_HANDLE imageHandle) {
  return HandleRegistry::Instance().Images().FindImage(FromExported(imageHandle));
}

inline KORVEL_IMAGE_HANDLE RegisterImage(std::shared_ptr<img::buffer::IfcImageBuffer> buffer) {
  return ToExported<KORVEL_IMAGE_HANDLE>(HandleRegistry::Instance().Images().AddImage(std::move(buffer)));
}

inline std::shared_ptr<img::buffer::IfcImageBuffer> RemoveImage(KORVEL_IMAGE_HANDLE imageHandle) {
  return HandleRegistry::Instance().Images().RemoveImage(FromExported(imageHandle));
}

}  // namespace korvel::internal
