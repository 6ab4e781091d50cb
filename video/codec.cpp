#include "video/codec.h"

#include <algorithm>

namespace libvideo {

void CCodec::Prepare(uint32_t width, uint32_t height, const ColorMode& mode) {
  const size_t capacity = size_t{width} * height * mode.bytesPerPixel;
  // TurboJPEG takes the destination to be as large as the largest picture, whatever size it is told.
  const auto largest = tjBufSize(static_cast<int>(width), static_cast<int>(height), mode.subsampling);
  const size_t room = std::max(capacity, largest == ~0UL ? size_t{0} : size_t{largest});
  output_.reset(new uint8_t[room]);
  room_ = room;
  capacity_ = capacity;
  width_ = width;
  height_ = height;
  mode_ = mode;
}

void CCodec::Release() {
  output_.reset();
  compressor_.reset();
  capacity_ = room_ = 0;
}

CCodec::Result CCodec::Compress(const uint8_t* frame) {
  if (!output_) return {};
  if (!compressor_) compressor_.reset(tjInitCompress());
  if (!compressor_) return {};
  unsigned char* picture = output_.get();
  auto byteCount = static_cast<unsigned long>(room_);
  const int failed =
      tjCompress2(compressor_.get(), frame, static_cast<int>(width_), 0, static_cast<int>(height_), mode_.pixelFormat,
                  &picture, &byteCount, mode_.subsampling, quality_, TJFLAG_NOREALLOC | TJFLAG_FASTDCT);
  if (failed != 0 || byteCount > capacity_) return {};
  return {.status = SlotStatus::Success, .picture = picture, .byteCount = byteCount};
}

}  // namespace libvideo
