#include "benchmarks/memory_limit.h"

#include <algorithm>
#include <cstring>

namespace korvel::benchmarks {
namespace {

// Blocks stay below what the nearest cache holds, so that copying and setting alternate as in a kernel.
constexpr size_t kBlock = size_t{16} * 1024;

// Independent sums keep one load from waiting for another.
uint64_t Read(const uint8_t* data, size_t size) {
  constexpr size_t kSums = 8;
  uint64_t sums[kSums] = {};
  size_t i = 0;
  for (; i + sizeof sums <= size; i += sizeof sums) {
    uint64_t words[kSums];
    std::memcpy(words, data + i, sizeof words);
    for (size_t k = 0; k < kSums; ++k) sums[k] += words[k];
  }
  uint64_t sum = 0;
  for (; i < size; ++i) sum += data[i];
  for (const uint64_t part : sums) sum += part;
  return sum;
}

}  // namespace

uint64_t Stream(std::span<const uint8_t> input, std::span<uint8_t> output) {
  const size_t blocks = std::max(input.size(), output.size()) / kBlock + 1;
  uint64_t sum = 0;
  for (size_t block = 0; block < blocks; ++block) {
    const auto part = [=](auto memory) {
      const size_t begin = memory.size() * block / blocks;
      return memory.subspan(begin, memory.size() * (block + 1) / blocks - begin);
    };
    const std::span<const uint8_t> in = part(input);
    const std::span<uint8_t> out = part(output);
    const size_t common = std::min(in.size(), out.size());
    if (common != 0) std::memcpy(out.data(), in.data(), common);
    if (out.size() > common) std::memset(out.data() + common, static_cast<int>(block & 0xFF), out.size() - common);
    sum += Read(in.data() + common, in.size() - common);
  }
  return sum;
}

}  // namespace korvel::benchmarks
