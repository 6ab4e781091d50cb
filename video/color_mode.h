// The pixels that go into the compressor.
//
//   mode   source    bytes per pixel   TurboJPEG     subsampling
//   0      RGB32     4                 TJPF_RGBA     4:2:2
//   1      RGB24     3                 TJPF_RGB      4:2:2
//   2      BGR32     4                 TJPF_BGRA     4:2:2
//   3      BGR24     3                 TJPF_BGR      4:2:2
//   6      Y8        1                 TJPF_GRAY     grey
#pragma once

#include <turbojpeg.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "video/video_library.h"

namespace libvideo {

struct ColorMode {
  size_t bytesPerPixel = 0;
  int pixelFormat = -1;
  int subsampling = -1;
};

inline constexpr std::array<ColorMode, 7> kColorModes = {{
    {4, TJPF_RGBA, TJSAMP_422},
    {3, TJPF_RGB, TJSAMP_422},
    {4, TJPF_BGRA, TJSAMP_422},
    {3, TJPF_BGR, TJSAMP_422},
    {},
    {},
    {1, TJPF_GRAY, TJSAMP_GRAY},
}};

// No pixels for a mode that there isn't.
constexpr ColorMode ColorModeOf(int32_t mode) {
  return mode >= 0 && static_cast<size_t>(mode) < kColorModes.size() ? kColorModes[static_cast<size_t>(mode)]
                                                                     : ColorMode{};
}

constexpr int32_t ColorModeOf(uint16_t channels, ChannelOrder order) {
  const bool isRedFirst = order == ChannelOrder::RedFirst;
  switch (channels) {
    case 1:
      return 6;
    case 3:
      return isRedFirst ? 1 : 3;
    case 4:
      return isRedFirst ? 0 : 2;
    default:
      return 0;
  }
}

}  // namespace libvideo
