// Samples into bytes, in each of the layouts that pixel formats have.
#pragma once

#include <cstdint>
#include <vector>

namespace korvel::tools {

// One byte for each sample, which is its low one.
std::vector<uint8_t> PackBytes(const std::vector<uint16_t>& samples);

// One little-endian 16-bit word for each sample.
std::vector<uint8_t> PackWords(const std::vector<uint16_t>& samples);

// A little-endian bit stream without gaps, as the formats "10p" and "12p" are. The last byte is filled with zeros.
std::vector<uint8_t> PackBitStream(const std::vector<uint16_t>& samples, unsigned bits);

// Groups of bytes that hold the high 8 bits of one sample each, then one byte with the low bits of them all, as the
// formats "10g40" (10 bits) and "12g24" (12 bits) are. The bytes are those that the samples' bits fill: of a last group
// that is not whole, what lies behind them is missing.
std::vector<uint8_t> PackMipi(const std::vector<uint16_t>& samples, unsigned bits);

// Three samples of 10 bits in the low bits of each little-endian 32-bit word, the first lowest, as the formats "10p32"
// are. The number of samples is a multiple of 3.
std::vector<uint8_t> PackThreePerWord(const std::vector<uint16_t>& samples);

}  // namespace korvel::tools
