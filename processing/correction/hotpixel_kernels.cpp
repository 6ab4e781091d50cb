#include "processing/correction/hotpixel_kernels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "core/image_lines.h"
#include "processing/bayer_phase.h"
#include "processing/correction/hotpixel_vectors.h"
#include "processing/unaligned.h"

namespace img::processing {
namespace {

// What a mosaic changes. Mono images have no sites: all of their pixels are alike.
template <class SampleType, bool kIsBayer>
struct Layout {
  using Sample = SampleType;
  static constexpr bool kBayer = kIsBayer;
  // The distance of the neighbours in the row, and the width of the image's border.
  static constexpr size_t kReach = kIsBayer ? 2 : 1;
  static constexpr size_t kSmallestSide = 2 * kReach;

  size_t greenParity = 0;  // of x + y at green sites

  // Whether the diagonal neighbours are the nearest ones.
  bool IsNear(size_t x, size_t y) const { return !kIsBayer || (x + y) % 2 == greenParity; }
};

// Calls work with the layout of an image that has hot pixels and is large enough for them.
template <class Work>
void WithLayout(const IfcImage& image, const Work& work) {
  const FormatFacts format = FindFacts(image.PixelFormat()).value();
  const auto withLayout = [&](auto layout) {
    const Size2D& size = image.Area().size;
    if (std::min(size.width, size.height) >= layout.kSmallestSide) work(layout);
  };
  const auto withSample = [&](auto sample) {
    using Sample = decltype(sample);
    if (format.IsBayered()) {
      const BayerPhase phase = PhaseOf(format.pixelClass);
      withLayout(Layout<Sample, true>{(phase.redColumn + phase.redLine + 1) % 2});
    } else {
      withLayout(Layout<Sample, false>{});
    }
  };
  if (format.storageBits == 8) {
    withSample(uint8_t{});
  } else {
    withSample(uint16_t{});
  }
}

// The rows of the neighbours of a pixel's row, by their distance. In a mono image far and near are the same.
struct Rows {
  size_t farUpper;
  size_t nearUpper;
  size_t nearLower;
  size_t farLower;
};

constexpr Rows RowsOfMono(size_t y, size_t height) {
  const size_t upper = y == 0 ? 1 : y - 1;
  const size_t lower = y + 1 < height ? y + 1 : y - 1;
  return {upper, upper, lower, lower};
}

constexpr Rows RowsToFindInBayer(size_t y, size_t height) {
  return {.farUpper = y < 2 ? y + 2 : y - 2,
          .nearUpper = y < 1 ? y + 1 : y - 1,
          .nearLower = y + 1 < height ? y + 1 : y - 1,
          .farLower = y + 2 < height ? y + 2 : y - 2};
}

// Intended: a correction takes other rows at the border than the search. farUpper may lie outside the image.
constexpr Rows RowsToCorrectInBayer(size_t y, size_t height) {
  return {.farUpper = y <= 2 ? y + 2 : y - 2,
          .nearUpper = y <= 1 ? y + 1 : y - 1,
          .nearLower = y + 1 < height ? y + 1 : height - 2,
          .farLower = y + 2 < height ? y + 2 : height - 3};
}

template <class Byte>
HotpixelLines LinesAround(const ImageLines<Byte>& lines, size_t y, const Rows& rows) {
  return {.farUpper = lines[rows.farUpper],
          .nearUpper = lines[rows.nearUpper],
          .here = lines[y],
          .nearLower = lines[rows.nearLower],
          .farLower = lines[rows.farLower]};
}

struct Columns {
  size_t left;
  size_t right;
};

template <class LayoutOf>
Columns ColumnsAround(size_t x, size_t width, size_t distance) {
  if (x < LayoutOf::kReach) return {x + distance, x + distance};
  if (x >= width - LayoutOf::kReach) return {x - distance, x - distance};
  return {x - distance, x + distance};
}

template <class Sample>
int32_t DeviationFrom(const uint8_t* here, size_t x, const uint8_t* oneLine, size_t one, const uint8_t* otherLine,
                      size_t other) {
  return 2 * LoadSample<Sample>(here, x) - LoadSample<Sample>(oneLine, one) - LoadSample<Sample>(otherLine, other);
}

template <class LayoutOf>
std::array<int32_t, 4> Deviations(const HotpixelLines& lines, size_t x, size_t width, bool isNear) {
  const auto from = [&](const uint8_t* oneLine, size_t one, const uint8_t* otherLine, size_t other) {
    return DeviationFrom<typename LayoutOf::Sample>(lines.here, x, oneLine, one, otherLine, other);
  };
  const uint8_t* const upper = isNear ? lines.nearUpper : lines.farUpper;
  const uint8_t* const lower = isNear ? lines.nearLower : lines.farLower;
  const Columns diagonal = ColumnsAround<LayoutOf>(x, width, isNear ? 1 : 2);
  const Columns row = ColumnsAround<LayoutOf>(x, width, LayoutOf::kReach);
  return {from(upper, diagonal.left, lower, diagonal.right), from(lines.farUpper, x, lines.farLower, x),
          from(lower, diagonal.left, upper, diagonal.right), from(lines.here, row.left, lines.here, row.right)};
}

// Whether a pixel is brighter than a pair by more than the threshold.
constexpr bool Exceeds(int64_t deviation, uint32_t threshold) {
  return deviation > 0 && deviation * deviation > int64_t{threshold};
}

// How vectors look for pixels that may exceed their threshold.
struct VectorSearch {
  FindCandidates find = nullptr;
  size_t lanes = 0;
  HotpixelBounds bounds{};
};

template <class LayoutOf>
constexpr FindCandidates FunctionFor(const HotpixelKernels& kernels) {
  if constexpr (sizeof(typename LayoutOf::Sample) == 1) {
    return LayoutOf::kBayer ? kernels.inBayerBytes : kernels.inMonoBytes;
  } else {
    return LayoutOf::kBayer ? kernels.inBayerWords : kernels.inMonoWords;
  }
}

template <class LayoutOf>
VectorSearch MakeVectorSearch(const HotpixelThreshold& threshold, uint32_t significantBits, InstructionSet set) {
  constexpr uint64_t kHighest = std::numeric_limits<typename LayoutOf::Sample>::max();
  VectorSearch search;
  const HotpixelKernels* const kernels = FindHotpixelKernels(set);
  // Thresholds that wrap don't rise with the value, and have no bounds.
  const bool wraps = kHighest * threshold.slope + threshold.floor > std::numeric_limits<uint32_t>::max();
  if (kernels == nullptr || wraps) return search;
  search.find = FunctionFor<LayoutOf>(*kernels);
  search.lanes = kernels->vectorBytes / sizeof(typename LayoutOf::Sample);
  HotpixelBounds& bounds = search.bounds;
  bounds.shift = significantBits - 4;
  for (size_t part = 0; part < bounds.kParts; ++part) {
    const uint64_t lowest = (uint64_t{part} << bounds.shift) * threshold.slope + threshold.floor;
    const uint64_t deviation = static_cast<uint64_t>(std::sqrt(static_cast<double>(lowest))) + 1;
    const uint64_t half = std::min(deviation / 2, kHighest);
    bounds.lower[part] = static_cast<uint8_t>(half);
    bounds.upper[part] = static_cast<uint8_t>(half >> 8);
  }
  return search;
}

// Calls test for the pixels from first to end that may exceed their threshold, as far as they fill a vector. Returns
// how far that is.
template <class LayoutOf, class Test>
size_t TestCandidates(const VectorSearch& vectors, const LayoutOf& layout, const HotpixelLines& lines, size_t y,
                      size_t first, size_t end, const Test& test) {
  if (vectors.find == nullptr || end - first < vectors.lanes) return first;
  size_t x = first;
  while (x < end) {
    // The last vector overlaps the one before it.
    const size_t start = std::min(x, end - vectors.lanes);
    uint32_t candidates = 0;
    const size_t next = vectors.find(lines, start, end, layout.IsNear(start, y), vectors.bounds, candidates);
    for (; candidates != 0; candidates &= candidates - 1) {
      const auto lane = static_cast<size_t>(std::countr_zero(candidates)) / sizeof(typename LayoutOf::Sample);
      const size_t candidate = next - vectors.lanes + lane;
      if (candidate >= x) test(candidate);
    }
    x = next;
  }
  return end;
}

template <class LayoutOf>
void FindInLine(const LayoutOf& layout, const HotpixelLines& lines, size_t y, size_t width,
                const HotpixelThreshold& threshold, const VectorSearch& vectors, std::vector<Point2D>& hotpixels) {
  using Sample = typename LayoutOf::Sample;
  constexpr size_t kReach = LayoutOf::kReach;
  const auto thresholdAt = [&](size_t x) {
    return uint32_t{LoadSample<Sample>(lines.here, x)} * threshold.slope + threshold.floor;
  };
  const auto test = [&](size_t x, uint32_t limit) {
    const auto deviations = Deviations<LayoutOf>(lines, x, width, layout.IsNear(x, y));
    if (std::all_of(deviations.begin(), deviations.end(), [limit](int32_t d) { return Exceeds(d, limit); })) {
      hotpixels.push_back({x, y});
    }
  };
  for (size_t x = 0; x < kReach; ++x) {
    // Intended: the first pixel of a line of a mono image is held against the threshold of the second.
    test(x, thresholdAt(LayoutOf::kBayer ? x : 1));
  }
  const size_t end = width - kReach;
  size_t x = TestCandidates(vectors, layout, lines, y, kReach, end, [&](size_t at) { test(at, thresholdAt(at)); });
  for (; x < end; ++x) {
    // Most pixels end here, by neighbours that have just been read.
    const uint32_t limit = thresholdAt(x);
    if (Exceeds(DeviationFrom<Sample>(lines.here, x, lines.here, x - kReach, lines.here, x + kReach), limit)) {
      test(x, limit);
    }
  }
  for (; x < width; ++x) test(x, thresholdAt(x));
}

// The value of a pixel after its correction.
int32_t CorrectedValue(int32_t value, const std::array<int32_t, 4>& deviations) {
  const auto isAbove = [](int32_t deviation) { return deviation > 0; };
  const auto isBelow = [](int32_t deviation) { return deviation < 0; };
  if (!std::all_of(deviations.begin(), deviations.end(), isAbove) &&
      !std::all_of(deviations.begin(), deviations.end(), isBelow)) {
    return value;
  }
  const int32_t least = *std::min_element(deviations.begin(), deviations.end(),
                                          [](int32_t a, int32_t b) { return std::abs(a) < std::abs(b); });
  return value - least / 2;
}

}  // namespace

bool HasHotpixels(const FormatFacts& format) {
  return !format.IsPacked() && (format.type == PixelType::Mono || format.type == PixelType::Bayer);
}

void FindHotpixels(const IfcImage& image, const HotpixelThreshold& threshold, InstructionSet set,
                   std::vector<Point2D>& hotpixels) {
  WithLayout(image, [&](const auto& layout) {
    using LayoutOf = std::remove_cvref_t<decltype(layout)>;
    const uint32_t bits = PixelFormatInfo_ComponentSignificantBits(image.PixelFormat());
    const VectorSearch vectors = MakeVectorSearch<LayoutOf>(threshold, bits, set);
    const auto all = LinesOf(image);
    const Size2D& size = all.size;
    for (size_t y = 0; y < size.height; ++y) {
      const Rows rows = layout.kBayer ? RowsToFindInBayer(y, size.height) : RowsOfMono(y, size.height);
      FindInLine(layout, LinesAround(all, y, rows), y, size.width, threshold, vectors, hotpixels);
    }
  });
}

void CorrectHotpixels(IfcImage& image, const std::vector<Point2D>& hotpixels) {
  WithLayout(image, [&](const auto& layout) {
    using LayoutOf = std::remove_cvref_t<decltype(layout)>;
    using Sample = typename LayoutOf::Sample;
    const auto all = LinesOf(image);
    const Size2D& size = all.size;
    for (const auto& [x, y] : hotpixels) {
      if (x >= size.width || y >= size.height) continue;
      const Rows rows = layout.kBayer ? RowsToCorrectInBayer(y, size.height) : RowsOfMono(y, size.height);
      if (rows.farUpper >= size.height) continue;
      const HotpixelLines lines = LinesAround(all, y, rows);
      const auto deviations = Deviations<LayoutOf>(lines, x, size.width, layout.IsNear(x, y));
      const int32_t corrected = CorrectedValue(LoadSample<Sample>(lines.here, x), deviations);
      StoreSample<Sample>(all[y], x, static_cast<Sample>(corrected));
    }
  });
}

}  // namespace img::processing
