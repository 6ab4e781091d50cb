// Compresses frames to JPEG pictures through TurboJPEG. For one thread at a time, but for the quality.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "video/color_mode.h"
#include "video/slot_status.h"

namespace libvideo {

class CCodec {
 public:
  // Takes the room for pictures of frames of one kind, which is kept. Throws std::bad_alloc.
  void Prepare(uint32_t width, uint32_t height, const ColorMode& mode);
  void Release();

  // 1 to 100, at any time; the next frame has it.
  void SetQuality(int32_t quality) { quality_ = quality; }

  struct Result {
    SlotStatus status = SlotStatus::CompressionFailed;
    const uint8_t* picture = nullptr;  // valid until the next frame
    size_t byteCount = 0;
  };

  // A picture that is larger than its frame counts as a failure.
  Result Compress(const uint8_t* frame);

 private:
  struct Destroyer {
    void operator()(void* handle) const { tjDestroy(handle); }
  };

  std::unique_ptr<void, Destroyer> compressor_;
  std::unique_ptr<uint8_t[]> output_;
  size_t capacity_ = 0;
  size_t room_ = 0;
  uint32_t width_ = 0;
  uint32_t height_ = 0;
  ColorMode mode_;
  std::atomic<int32_t> quality_ = 75;
};

}  // namespace libvideo
