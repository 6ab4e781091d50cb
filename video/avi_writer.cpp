#include "video/avi_writer.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "video/seams.h"

namespace libvideo {
namespace {

using avi::MainHeader;
using avi::QAVIError;
using avi::StreamHeader;
using avi::VideoFormat;

constexpr size_t kStream = 0;

// Below this, frames are refused, so that headers and index still find room.
constexpr uint64_t kLeastFreeKibibytes = 5025;

bool HasDiskSpace(const std::string& path) {
  if (const uint64_t* const instead = Seams::Instance().freeKibibytes) return *instead >= kLeastFreeKibibytes;
  struct statvfs status {};
  if (statvfs(path.c_str(), &status) != 0) return false;
  uint64_t byteCount = 0;
  return __builtin_mul_overflow(status.f_bfree, status.f_bsize, &byteCount) || byteCount >> 10 >= kLeastFreeKibibytes;
}

uint32_t RateOf(uint64_t frameTimeUs) {
  constexpr uint64_t kMicroSeconds = 1'000'000;
  return frameTimeUs == 0 ? 1 : static_cast<uint32_t>(kMicroSeconds / frameTimeUs);
}

uint32_t MicroSecondsOf(uint64_t frameTimeUs) {
  constexpr uint32_t kForNone = 1000;
  return frameTimeUs == 0
             ? kForNone
             : static_cast<uint32_t>(std::min<uint64_t>(frameTimeUs, std::numeric_limits<uint32_t>::max()));
}

}  // namespace

std::unique_ptr<CAvi> CAvi::Open(const std::string& path, uint64_t frameTimeUs, size_t bytesPerPixel,
                                 SlotStatus* status) {
  *status = SlotStatus::OpenFailed;
  // Before the file is made, so that no failure leaves one open.
  std::unique_ptr<CAvi> writer(new CAvi(path));
  if (avi::QAVICreateFile(path, 1, &writer->handle_) != QAVIError::Success) return nullptr;
  const avi::QAVIHandle handle = writer->handle_;

  const QAVIError mainHeader = avi::QAVIChangeMainHeader(handle, [&](MainHeader& header) {
    // Stands until the frames tell.
    constexpr uint32_t kSuggestedBufferSize = 25893;
    header = {.microSecondsPerFrame = MicroSecondsOf(frameTimeUs),
              .flags = MainHeader::kHasIndex,
              .streams = 1,
              .suggestedBufferSize = kSuggestedBufferSize};
  });
  if (mainHeader != QAVIError::Success) return nullptr;

  *status = SlotStatus::HeaderFailed;
  const QAVIError streamHeader = avi::QAVIChangeStreamHeader(handle, kStream, [&](StreamHeader& header) {
    constexpr uint32_t kQuality = 3000;
    header = {.type = avi::kVids, .handler = avi::kMjpg, .scale = 1, .rate = RateOf(frameTimeUs), .quality = kQuality};
  });
  const QAVIError streamFormat = avi::QAVIChangeStreamFormat(handle, kStream, [&](VideoFormat& format) {
    constexpr uint32_t kFormatByteCount = 40;
    format = {.size = kFormatByteCount,
              .planes = 1,
              .bitCount = static_cast<uint16_t>(bytesPerPixel * 8),
              .compression = avi::kMjpg};
  });
  if (streamHeader != QAVIError::Success || streamFormat != QAVIError::Success) return nullptr;
  *status = SlotStatus::Success;
  return writer;
}

void CAvi::SetSize(uint32_t width, uint32_t height) {
  avi::QAVIChangeMainHeader(handle_, [&](MainHeader& header) {
    header.width = width;
    header.height = height;
  });
  avi::QAVIChangeStreamHeader(handle_, kStream, [&](StreamHeader& header) {
    // Intended: the height stands on the right and the width at the bottom.
    header.frameLeft = header.frameTop = 0;
    header.frameRight = static_cast<uint16_t>(height);
    header.frameBottom = static_cast<uint16_t>(width);
  });
  avi::QAVIChangeStreamFormat(handle_, kStream, [&](VideoFormat& format) {
    format.width = width;
    format.height = height;
    // Intended: the size of the image takes the place of that of the structure.
    format.size = static_cast<uint32_t>(uint64_t{(format.bitCount + 7u) >> 3} * width * height);
  });
}

void CAvi::SetFrameTime(uint64_t frameTimeUs) {
  avi::QAVIChangeStreamHeader(handle_, kStream, [&](StreamHeader& header) {
    header.scale = 1;
    header.rate = RateOf(frameTimeUs);
  });
  avi::QAVIChangeMainHeader(handle_,
                            [&](MainHeader& header) { header.microSecondsPerFrame = MicroSecondsOf(frameTimeUs); });
}

bool CAvi::Write(std::span<const uint8_t> picture) {
  return HasDiskSpace(path_) && avi::QAVISetData(handle_, kStream, picture) == QAVIError::Success;
}

bool CAvi::Close() {
  const avi::QAVIHandle handle = std::exchange(handle_, 0);
  return handle == 0 || avi::QAVICloseFile(handle) == QAVIError::Success;
}

}  // namespace libvideo
