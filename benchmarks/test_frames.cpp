#include "benchmarks/test_frames.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace korvel::benchmarks {
namespace {

using img::FormatFacts;
using img::PixelFormatId;
using img::PixelLayout;
using img::PixelType;
using img::Size2D;

// A scene in 12 bits: a gradient over the frame in each direction, patches whose brightness changes at their edges, and
// noise.
class Scene {
 public:
  explicit Scene(const Size2D& size) : size_(size) {}

  unsigned At(size_t x, size_t y, size_t channel) {
    const size_t gradient = 1600 * x / size_.width + 1200 * y / size_.height;
    const size_t patch = ((x / 48 * 7 + y / 32 * 11 + channel * 3) % 5) * 240;
    return static_cast<unsigned>(std::min<size_t>(gradient + patch + channel * 60 + Noise(), 4095));
  }

 private:
  size_t Noise() {
    state_ = state_ * 1664525 + 1013904223;
    return state_ >> 26;
  }

  Size2D size_;
  uint32_t state_ = 1;
};

// The colour that an RG mosaic sees at a pixel: 0 red, 1 green, 2 blue. The other phases are measured with the same
// scene, as their speed is the same.
size_t MosaicChannel(size_t x, size_t y) { return x % 2 + y % 2; }

// Samples in 16 bits each, at the format's depth.
std::vector<uint16_t> MakeSamples(const FormatFacts& facts, const Size2D& size) {
  std::vector<uint16_t> samples;
  samples.reserve(size.width * size.height * facts.channels);
  Scene scene(size);
  for (size_t y = 0; y < size.height; ++y) {
    for (size_t x = 0; x < size.width; ++x) {
      for (size_t channel = 0; channel < facts.channels; ++channel) {
        const size_t colour = facts.type == PixelType::Bayer ? MosaicChannel(x, y) : std::min<size_t>(channel, 2);
        samples.push_back(static_cast<uint16_t>(scene.At(x, y, colour) >> (12 - facts.significantBits)));
      }
    }
  }
  return samples;
}

void PutBits(std::vector<uint8_t>& bytes, size_t firstBit, unsigned value) {
  for (size_t bit = firstBit; value != 0; ++bit, value >>= 1) {
    if ((value & 1) != 0) bytes[bit / 8] = static_cast<uint8_t>(bytes[bit / 8] | 1u << bit % 8);
  }
}

}  // namespace

size_t ByteCount(PixelFormatId format, const Size2D& size) {
  return img::PixelFormatInfo_CalcSizeOfPixels(format, size.width * size.height);
}

std::vector<uint8_t> MakeFrame(PixelFormatId format, const Size2D& size) {
  const FormatFacts facts = img::FindFacts(format).value();
  const std::vector<uint16_t> samples = MakeSamples(facts, size);
  std::vector<uint8_t> bytes(ByteCount(format, size));
  const size_t perGroup = facts.significantBits == 10 ? 4 : 2;  // of the MIPI layouts
  const unsigned lowBits = facts.significantBits - 8;
  for (size_t i = 0; i < samples.size(); ++i) {
    const unsigned sample = samples[i];
    switch (facts.layout) {
      case PixelLayout::Unpacked:
        std::memcpy(bytes.data() + i * facts.storageBits / 8, &samples[i], facts.storageBits / 8);
        break;
      case PixelLayout::NoAlignment:
        PutBits(bytes, i * facts.significantBits, sample);
        break;
      case PixelLayout::Word32:
        PutBits(bytes, i / 3 * 32 + i % 3 * 10, sample);
        break;
      case PixelLayout::Mipi:
        PutBits(bytes, (i / perGroup * (perGroup + 1) + i % perGroup) * 8, sample >> lowBits);
        PutBits(bytes, (i / perGroup * (perGroup + 1) + perGroup) * 8 + i % perGroup * lowBits,
                sample & ((1u << lowBits) - 1));
        break;
    }
  }
  return bytes;
}

std::optional<std::string> FindDifference(const uint8_t* actual, const uint8_t* expected, PixelFormatId format,
                                          const Size2D& size, const Agreement& agreement) {
  const size_t pixelBytes = img::FindFacts(format).value().PixelByteCount();
  for (size_t y = agreement.margin; y + agreement.margin < size.height; ++y) {
    for (size_t i = agreement.margin * pixelBytes; i < (size.width - agreement.margin) * pixelBytes; ++i) {
      const size_t index = y * size.width * pixelBytes + i;
      if (static_cast<unsigned>(std::abs(actual[index] - expected[index])) > agreement.maximum) {
        return "differs from its peer at column " + std::to_string(i / pixelBytes) + " of line " + std::to_string(y);
      }
    }
  }
  return std::nullopt;
}

}  // namespace korvel::benchmarks
