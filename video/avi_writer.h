// Writes the pictures of one video to an AVI file, with the headers that players want.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "avi/qavi.h"
#include "video/slot_status.h"

namespace libvideo {

// One thread writes; headers may change meanwhile from another.
class CAvi {
 public:
  // A new file; null with the status of the failure. bytesPerPixel is that of the source at this moment.
  static std::unique_ptr<CAvi> Open(const std::string& path, uint64_t frameTimeUs, size_t bytesPerPixel,
                                    SlotStatus* status);

  CAvi(const CAvi&) = delete;
  CAvi& operator=(const CAvi&) = delete;
  ~CAvi() { Close(); }

  void SetSize(uint32_t width, uint32_t height);
  void SetFrameTime(uint64_t frameTimeUs);

  bool HasRoomFor(size_t byteCount) const { return avi::QAVIHasRoomFor(handle_, byteCount); }

  // False if the disk is nearly full or the picture could not be written.
  bool Write(std::span<const uint8_t> picture);

  // False if something of the file may not have arrived.
  bool Close();

 private:
  explicit CAvi(std::string path) : path_(std::move(path)) {}

  std::string path_;
  avi::QAVIHandle handle_ = 0;
};

}  // namespace libvideo
