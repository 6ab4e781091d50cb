// An AVI file with one MJPEG stream once more, byte by byte: every offset stands here as a number, so that it shares
// nothing with the library. Tests compare recordings with it as whole files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvel_test {

using AviBytes = std::vector<uint8_t>;

// What files of this kind tell, frame by frame and in their headers; all else is the same in each.
struct AviModel {
  // Main header.
  uint32_t microSecondsPerFrame = 0;
  uint32_t flags = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  // Stream header.
  uint32_t rate = 0;
  uint32_t quality = 0;
  uint16_t frameRight = 0;
  uint16_t frameBottom = 0;
  // Stream format.
  uint32_t formatSize = 0;
  uint32_t formatWidth = 0;
  uint32_t formatHeight = 0;
  uint16_t bitCount = 0;
  uint32_t compression = 0;

  std::vector<AviBytes> frames;
};

inline constexpr size_t kAviHeaderByteCount = 244;

// As a recording leaves it behind. Without a frame, width and height are 0.
AviModel RecordedAvi(uint32_t width, uint32_t height, std::vector<AviBytes> frames,
                     uint32_t microSecondsPerFrame = 40000, uint32_t rate = 25);

// As it is if nobody sets its headers.
AviModel PlainAvi(std::vector<AviBytes> frames);

// The closed file.
AviBytes BuildAviFile(const AviModel& model);

// The file while frames are written: headers and sizes are those of a file without frames, but for the 126th frame and
// each 126th after it, which put the main header's 56 bytes to where its chunk begins.
AviBytes BuildAviFileBeforeClose(const AviModel& model);

// Headers and, by way of the index, frames. Throws std::runtime_error if the file is not, to the last byte, what
// BuildAviFile makes of the result.
AviModel ParseAviFile(const AviBytes& file);

}  // namespace korvel_test
