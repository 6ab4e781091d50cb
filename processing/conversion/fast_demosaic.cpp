#include "processing/conversion/fast_demosaic.h"

#include <algorithm>
#include <utility>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/demosaic_vectors.h"

namespace img::processing {
namespace {

// The rule for the first line and for the last one, inside of which lies inner.
template <class Sample>
struct EdgeLineRule {
  using SampleType = Sample;

  SampleLine<Sample> here;
  SampleLine<Sample> inner;

  SiteColour AtOwn(size_t x) const {
    return {here[x], (inner[x] + here[x - 1] + here[x + 1]) / 3, (inner[x - 1] + inner[x + 1]) >> 1};
  }

  SiteColour AtGreen(size_t x) const { return {(here[x - 1] + here[x + 1]) >> 1, here[x], inner[x]}; }
};

// A corner, with the only other column next to it.
template <class Sample>
SiteColour CornerColour(const EdgeLineRule<Sample>& lines, bool isOwn, size_t x, size_t next) {
  const auto& [here, inner] = lines;
  if (isOwn) return {here[x], (here[next] + inner[x]) >> 1, inner[next]};
  return {here[next], here[x], inner[x]};
}

// The first or the last site of an inner line.
template <class Sample>
SiteColour EdgeColour(const BilinearRule<Sample>& lines, bool isOwn, size_t x, size_t next) {
  const auto& [above, here, below] = lines;
  if (isOwn) return {here[x], (above[x] + below[x] + here[next]) / 3, (above[next] + below[next]) >> 1};
  return {here[next], here[x], (above[x] + below[x]) >> 1};
}

// Gives the colours of a line's columns to store(x, colour), but those of an inner line's inner columns only from the
// rule that makeInner(rule) takes them by itself.
template <class Sample, class MakeInner, class Store>
void WalkLine(const FastLine& line, MakeInner&& makeInner, Store&& store) {
  using Line = SampleLine<Sample>;
  const size_t last = line.width - 1;
  const auto isOwn = [&](size_t x) { return x % 2 == line.ownColumn; };
  if (line.above == nullptr || line.below == nullptr) {
    const EdgeLineRule<Sample> rule{Line(line.here), Line(line.above != nullptr ? line.above : line.below)};
    store(0, CornerColour(rule, isOwn(0), 0, 1));
    ForEachSite(rule, line.ownColumn, 1, last, store);
    store(last, CornerColour(rule, isOwn(last), last, last - 1));
    return;
  }
  const BilinearRule<Sample> rule{Line(line.above), Line(line.here), Line(line.below)};
  store(0, EdgeColour(rule, isOwn(0), 0, 1));
  makeInner(rule);
  store(last, EdgeColour(rule, isOwn(last), last, last - 1));
}

BilinearTask TaskOf(const FastLine& line, size_t first, size_t last, bool isRedFirst, uint32_t alpha) {
  return {.above = line.above,
          .here = line.here,
          .below = line.below,
          .output = line.output,
          .first = first,
          .last = last,
          .ownColumn = line.ownColumn,
          .isOwnFirst = line.isRedLine == isRedFirst,
          .alpha = alpha,
          .isStreamed = line.isStreamed};
}

template <PixelFormatId format>
void MakeColourLine(const FastLine& line) {
  constexpr FormatFacts kFormat = kFacts<format>;
  const auto walk = [&]<bool kRedLine>(std::bool_constant<kRedLine>) {
    const auto store = [output = line.output](size_t x, const SiteColour& colour) {
      StoreColour<format, kRedLine, false>(output + x * kFacts<format>.PixelByteCount(), colour);
    };
    const auto makeInner = [&](const BilinearRule<SampleOf<format>>& rule) {
      if (const DemosaicKernels* const vectors = FindDemosaicKernels(line.set)) {
        constexpr auto kLayout = static_cast<size_t>(ColourLayoutOf(kFormat));
        vectors->bilinear[kLayout](TaskOf(line, 1, line.width - 1, !IsBlueFirst(kFormat), kFormat.maxValue));
      } else {
        ForEachSite(rule, line.ownColumn, 1, line.width - 1, store);
      }
    };
    WalkLine<SampleOf<format>>(line, makeInner, store);
  };
  if (line.isRedLine) {
    walk(std::true_type{});
  } else {
    walk(std::false_type{});
  }
}

// Intended: on the edge of a whole number the two may differ by one, and both may fall below the value of an all-equal
// input.
uint8_t ScalarLuminance(int32_t red, int32_t green, int32_t blue) {
  const float redPart = kRedWeight * static_cast<float>(red);
  const float greenPart = kGreenWeight * static_cast<float>(green);
  const float bluePart = kBlueWeight * static_cast<float>(blue);
  const double sum = static_cast<double>(greenPart) + static_cast<double>(redPart) + static_cast<double>(bluePart);
  return static_cast<uint8_t>(static_cast<int32_t>(sum));
}

uint8_t VectorLuminance(int32_t red, int32_t green, int32_t blue) {
  const float redPart = kRedWeight * static_cast<float>(red);
  const float greenPart = kGreenWeight * static_cast<float>(green);
  const float bluePart = kBlueWeight * static_cast<float>(blue);
  const float sum = (redPart + greenPart) + bluePart;
  return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(sum), 0, 255));
}

// The inner columns of inner lines are computed as lanes of vectors, as many at a time as the record of the processor
// tells; the rest, and the border, one by one.
void MakeLuminanceLine(const FastLine& line) {
  const auto storeOf = [&](auto luminance) {
    return [&line, luminance](size_t x, const SiteColour& colour) {
      const auto [red, blue] =
          line.isRedLine ? std::pair(colour.own, colour.other) : std::pair(colour.other, colour.own);
      line.output[x] = luminance(red, colour.green, blue);
    };
  };
  const auto scalar =
      storeOf([](int32_t red, int32_t green, int32_t blue) { return ScalarLuminance(red, green, blue); });
  const auto vector =
      storeOf([](int32_t red, int32_t green, int32_t blue) { return VectorLuminance(red, green, blue); });
  const size_t endOfVectors = 1 + (line.width - 2) / line.luminanceLanes * line.luminanceLanes;
  const auto makeInner = [&](const BilinearRule<uint8_t>& rule) {
    if (const DemosaicKernels* const vectors = FindDemosaicKernels(line.set)) {
      vectors->luminance(TaskOf(line, 1, endOfVectors, true, 0));
    } else {
      ForEachSite(rule, line.ownColumn, 1, endOfVectors, vector);
    }
    ForEachSite(rule, line.ownColumn, endOfVectors, line.width - 1, scalar);
  };
  WalkLine<uint8_t>(line, makeInner, scalar);
}

}  // namespace
}  // namespace img::processing

img::processing::MakeFastLine img::processing::FindFastLine(PixelFormatId output) {
  switch (output) {
    case PixelFormatId::Mono8:
      return MakeLuminanceLine;
    case PixelFormatId::RGB8:
      return MakeColourLine<PixelFormatId::RGB8>;
    case PixelFormatId::BGR8:
      return MakeColourLine<PixelFormatId::BGR8>;
    case PixelFormatId::RGBa8:
      return MakeColourLine<PixelFormatId::RGBa8>;
    case PixelFormatId::BGRa8:
      return MakeColourLine<PixelFormatId::BGRa8>;
    case PixelFormatId::RGB10p32:
      return MakeColourLine<PixelFormatId::RGB10p32>;
    default:
      return nullptr;
  }
}
