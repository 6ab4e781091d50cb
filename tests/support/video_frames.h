// Frames of the five formats that can be recorded, and what TurboJPEG makes of them when a test asks it directly.
#pragma once

#include <turbojpeg.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

namespace korvel_test {

struct VideoFormatCase {
  const char* name;  // as the video writer has it
  uint32_t id;
  uint32_t bits;
  uint16_t channels;
  uint32_t order;  // 1 blue first, 2 red first, 3 a single channel
  int turboFormat;
  int subsampling;
};

inline constexpr std::array<VideoFormatCase, 5> kVideoFormats = {{
    {"BGR24", 0x02180015, 24, 3, 1, TJPF_BGR, TJSAMP_422},
    {"BGR32", 0x02200017, 32, 4, 1, TJPF_BGRA, TJSAMP_422},
    {"RGB24", 0x02180014, 24, 3, 2, TJPF_RGB, TJSAMP_422},
    {"RGB32", 0x02200016, 32, 4, 2, TJPF_RGBA, TJSAMP_422},
    {"Y8", 0x01080001, 8, 1, 3, TJPF_GRAY, TJSAMP_GRAY},
}};

inline constexpr VideoFormatCase kY8 = kVideoFormats[4];
inline constexpr VideoFormatCase kRgb24 = kVideoFormats[2];

using Pixels = std::vector<uint8_t>;

// Red rises to the right, green downwards, blue falls to the right; step moves all of it. JPEG loses little of it.
inline Pixels MakeSmoothFrame(const VideoFormatCase& format, size_t width, size_t height, uint32_t step) {
  Pixels pixels(width * height * format.channels, 255);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const auto red = static_cast<uint8_t>(x * 100 / width + step % 100);
      const auto green = static_cast<uint8_t>(40 + y * 160 / height);
      const auto blue = static_cast<uint8_t>(220 - x * 160 / width);
      uint8_t* const pixel = &pixels[(y * width + x) * format.channels];
      if (format.channels == 1) {
        pixel[0] = green;
        continue;
      }
      pixel[0] = format.order == 2 ? red : blue;
      pixel[1] = green;
      pixel[2] = format.order == 2 ? blue : red;
    }
  }
  if (format.channels == 1) pixels[step % pixels.size()] ^= 1;
  return pixels;
}

inline Pixels MakeNoiseFrame(const VideoFormatCase& format, size_t width, size_t height, uint32_t seed) {
  Pixels pixels(width * height * format.channels);
  std::mt19937 random(seed);
  for (uint8_t& sample : pixels) sample = static_cast<uint8_t>(random() >> 24);
  return pixels;
}

struct TurboJpegCloser {
  void operator()(void* handle) const { tjDestroy(handle); }
};

// The picture of a frame with the settings that recordings have.
inline std::vector<uint8_t> CompressFrame(const VideoFormatCase& format, size_t width, size_t height,
                                          const Pixels& pixels, int quality) {
  const std::unique_ptr<void, TurboJpegCloser> compressor(tjInitCompress());
  unsigned char* buffer = nullptr;
  unsigned long size = 0;
  if (tjCompress2(compressor.get(), pixels.data(), static_cast<int>(width), 0, static_cast<int>(height),
                  format.turboFormat, &buffer, &size, format.subsampling, quality, TJFLAG_FASTDCT) != 0) {
    throw std::runtime_error("a frame can't be compressed");
  }
  std::vector<uint8_t> picture(buffer, buffer + size);
  tjFree(buffer);
  return picture;
}

struct DecodedPicture {
  size_t width = 0;
  size_t height = 0;
  int subsampling = 0;
  Pixels pixels;  // in the format that was asked for
};

inline DecodedPicture DecodePicture(const VideoFormatCase& format, const std::vector<uint8_t>& picture) {
  const std::unique_ptr<void, TurboJpegCloser> decompressor(tjInitDecompress());
  const auto size = static_cast<unsigned long>(picture.size());
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colorSpace = 0;
  if (tjDecompressHeader3(decompressor.get(), picture.data(), size, &width, &height, &subsampling, &colorSpace) != 0) {
    throw std::runtime_error("a picture has no JPEG header");
  }
  DecodedPicture decoded{static_cast<size_t>(width), static_cast<size_t>(height), subsampling, {}};
  decoded.pixels.resize(decoded.width * decoded.height * format.channels);
  if (tjDecompress2(decompressor.get(), picture.data(), size, decoded.pixels.data(), width, 0, height,
                    format.turboFormat, 0) != 0) {
    throw std::runtime_error("a picture can't be decoded");
  }
  return decoded;
}

// The largest difference of a sample, alpha left out.
inline int LargestDifference(const VideoFormatCase& format, const Pixels& a, const Pixels& b) {
  if (a.size() != b.size()) throw std::runtime_error("pictures of different sizes");
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    if (format.channels == 4 && i % 4 == 3) continue;
    const int difference = a[i] > b[i] ? a[i] - b[i] : b[i] - a[i];
    if (difference > largest) largest = difference;
  }
  return largest;
}

}  // namespace korvel_test
