#include "benchmarks/memory_limit.h"

#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include <algorithm>
#include <cstring>

namespace korvel::benchmarks {
namespace {

// Blocks stay below what the nearest cache holds, so that copying and setting alternate as in a kernel.
constexpr size_t kBlock = size_t{8} * 1024;
constexpr size_t kLine = 64;

// Whole cache lines, on their boundaries.
std::span<uint8_t> AlignedPart(std::vector<uint8_t>& memory, size_t size) {
  const size_t offset = (kLine - reinterpret_cast<uintptr_t>(memory.data()) % kLine) % kLine;
  return {memory.data() + offset, size / kLine * kLine};
}

struct Block {
  uint8_t* picture;
  size_t read;
  bool writesBack;
  uint8_t* result;
  size_t written;
};

// Half a cache line, in one register where there are such.
using Half = uint64_t __attribute__((vector_size(kLine / 2), may_alias));

// Reads of a picture without a result would be dropped; the sum is where they go. Lambdas would not be compiled for the
// wider registers.
[[gnu::target_clones("avx2", "default")]] uint64_t MoveThroughCaches(const Block& block) {
  auto* const picture = reinterpret_cast<Half*>(block.picture);
  auto* const result = reinterpret_cast<Half*>(block.result);
  const size_t read = block.read / sizeof(Half);
  const size_t written = block.written / sizeof(Half);
  const size_t common = std::min(read, written);
  Half sum = {};
  if (block.writesBack) {
    for (size_t i = 0; i < common; i += 2) {
      const Half first = picture[i];
      const Half second = picture[i + 1];
      result[i] = first;
      result[i + 1] = second;
      picture[i] = first + 1;
      picture[i + 1] = second + 1;
    }
    for (size_t i = common; i < read; i += 2) {
      picture[i] += 1;
      picture[i + 1] += 1;
    }
  } else {
    for (size_t i = 0; i < common; i += 2) {
      const Half first = picture[i];
      const Half second = picture[i + 1];
      result[i] = first;
      result[i + 1] = second;
    }
    Half otherSum = {};
    for (size_t i = common; i < read; i += 2) {
      sum += picture[i];
      otherSum += picture[i + 1];
    }
    sum += otherSum;
  }
  for (size_t i = common; i < written; i += 2) {
    result[i] = sum;
    result[i + 1] = sum;
  }
  return sum[0];
}

void StreamLine(uint8_t* to, const __m128i (&values)[4]) {
  for (int k = 0; k < 4; ++k) _mm_stream_si128(reinterpret_cast<__m128i*>(to) + k, values[k]);
}

// What has a result writes its picture back through the caches, where it was just read.
uint64_t MoveAroundCaches(const Block& block) {
  const size_t common = std::min(block.read, block.written);
  __m128i sum = _mm_setzero_si128();
  __m128i values[4] = {};
  const auto load = [&](size_t i) {
    for (int k = 0; k < 4; ++k) values[k] = _mm_load_si128(reinterpret_cast<const __m128i*>(block.picture + i) + k);
  };
  for (size_t i = 0; i < common; i += kLine) {
    load(i);
    StreamLine(block.result + i, values);
    if (!block.writesBack) continue;
    for (int k = 0; k < 4; ++k) _mm_store_si128(reinterpret_cast<__m128i*>(block.picture + i) + k, values[k]);
  }
  for (size_t i = common; i < block.written; i += kLine) StreamLine(block.result + i, values);
  for (size_t i = common; i < block.read; i += kLine) {
    load(i);
    if (block.writesBack) {
      StreamLine(block.picture + i, values);
    } else {
      for (const __m128i& value : values) sum = _mm_add_epi64(sum, value);
    }
  }
  return static_cast<uint64_t>(_mm_cvtsi128_si64(sum));
}

}  // namespace

MemoryLimit::MemoryLimit(size_t readBytes, bool writesBack, size_t writtenBytes)
    : pictureMemory_(readBytes + kLine),
      resultMemory_(writtenBytes + kLine),
      picture_(AlignedPart(pictureMemory_, readBytes)),
      writesBack_(writesBack),
      result_(AlignedPart(resultMemory_, writtenBytes)) {}

void MemoryLimit::Restore(std::span<const uint8_t> frame) {
  if (!picture_.empty()) std::memcpy(picture_.data(), frame.data(), picture_.size());
}

void MemoryLimit::Run(Stores stores) {
  const size_t blocks = std::max(picture_.size(), result_.size()) / kBlock + 1;
  const auto begin = [&](std::span<uint8_t> memory, size_t block) {
    return memory.size() * block / blocks / kLine * kLine;
  };
  uint64_t sum = 0;
  for (size_t i = 0; i < blocks; ++i) {
    const size_t pictureBegin = begin(picture_, i);
    const size_t resultBegin = begin(result_, i);
    const Block block{.picture = picture_.data() + pictureBegin,
                      .read = begin(picture_, i + 1) - pictureBegin,
                      .writesBack = writesBack_,
                      .result = result_.data() + resultBegin,
                      .written = begin(result_, i + 1) - resultBegin};
    sum += stores == Stores::Ordinary ? MoveThroughCaches(block) : MoveAroundCaches(block);
  }
  if (stores == Stores::NonTemporal) _mm_sfence();
  benchmark::DoNotOptimize(sum);
}

}  // namespace korvel::benchmarks
