#include "packing.h"

#include <algorithm>
#include <cstddef>

namespace korvel::tools {
namespace {

uint8_t LowByte(uint32_t value) { return static_cast<uint8_t>(value & 0xFF); }

}  // namespace

std::vector<uint8_t> PackBytes(const std::vector<uint16_t>& samples) {
  std::vector<uint8_t> bytes(samples.size());
  std::transform(samples.begin(), samples.end(), bytes.begin(), [](uint16_t sample) { return LowByte(sample); });
  return bytes;
}

std::vector<uint8_t> PackWords(const std::vector<uint16_t>& samples) {
  std::vector<uint8_t> bytes;
  bytes.reserve(2 * samples.size());
  for (const uint16_t sample : samples) {
    bytes.push_back(LowByte(sample));
    bytes.push_back(LowByte(sample >> 8U));
  }
  return bytes;
}

std::vector<uint8_t> PackBitStream(const std::vector<uint16_t>& samples, unsigned bits) {
  const uint32_t mask = (1U << bits) - 1;
  std::vector<uint8_t> bytes;
  bytes.reserve((samples.size() * bits + 7) / 8);
  uint32_t pending = 0;
  unsigned pending_bits = 0;
  for (const uint16_t sample : samples) {
    pending |= (sample & mask) << pending_bits;
    pending_bits += bits;
    while (pending_bits >= 8) {
      bytes.push_back(LowByte(pending));
      pending >>= 8;
      pending_bits -= 8;
    }
  }
  if (pending_bits > 0) bytes.push_back(LowByte(pending));
  return bytes;
}

std::vector<uint8_t> PackMipi(const std::vector<uint16_t>& samples, unsigned bits) {
  const unsigned low_bits = bits - 8;
  const size_t group = 8 / low_bits;
  const uint32_t low_mask = (1U << low_bits) - 1;
  std::vector<uint8_t> bytes;
  bytes.reserve((samples.size() / group + 1) * (group + 1));
  for (size_t first = 0; first < samples.size(); first += group) {
    const size_t count = std::min(group, samples.size() - first);
    uint32_t low = 0;
    for (size_t i = 0; i < count; ++i) {
      const uint32_t sample = samples[first + i];
      bytes.push_back(LowByte(sample >> low_bits));
      low |= (sample & low_mask) << (i * low_bits);
    }
    bytes.resize(bytes.size() + (group - count));  // places of samples that are not there
    bytes.push_back(LowByte(low));
  }
  bytes.resize((samples.size() * bits + 7) / 8);
  return bytes;
}

std::vector<uint8_t> PackThreePerWord(const std::vector<uint16_t>& samples) {
  std::vector<uint8_t> bytes;
  bytes.reserve(samples.size() / 3 * 4);
  for (size_t first = 0; first + 3 <= samples.size(); first += 3) {
    const uint32_t word =
        (samples[first] & 0x3FFU) | (samples[first + 1] & 0x3FFU) << 10U | (samples[first + 2] & 0x3FFU) << 20U;
    for (unsigned shift = 0; shift < 32; shift += 8) bytes.push_back(LowByte(word >> shift));
  }
  return bytes;
}

}  // namespace korvel::tools
