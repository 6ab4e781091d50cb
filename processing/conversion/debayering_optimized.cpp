#include "processing/conversion/debayering_optimized.h"

#include <algorithm>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/conversion_mode.h"
#include "processing/conversion/demosaic_vectors.h"
#include "processing/conversion/fast_demosaic.h"
#include "processing/streaming.h"

namespace img::processing {
namespace {

constexpr size_t kSmallestSide = 16;

// A mosaic without gaps between lines.
struct Mosaic {
  const uint8_t* data;
  size_t width;
  size_t height;
  BayerPhase phase;
  size_t lineByteCount;

  const uint8_t* Line(size_t y) const { return data + y * lineByteCount; }
};

struct Target {
  const FormatFacts& format;
  uint8_t* data;

  bool IsStreamed(const Mosaic& mosaic) const { return ShouldStream(format.ByteCount(mosaic.width * mosaic.height)); }
};

void ConvertFast(const Mosaic& mosaic, const Target& target, InstructionSet set, size_t luminanceLanes) {
  const MakeFastLine makeLine = FindFastLine(target.format.id);
  const size_t outputLine = target.format.ByteCount(mosaic.width);
  const bool isStreamed = target.IsStreamed(mosaic);
  for (size_t y = 0; y < mosaic.height; ++y) {
    makeLine({.above = y == 0 ? nullptr : mosaic.Line(y - 1),
              .here = mosaic.Line(y),
              .below = y + 1 == mosaic.height ? nullptr : mosaic.Line(y + 1),
              .output = target.data + y * outputLine,
              .width = mosaic.width,
              .isRedLine = mosaic.phase.IsRedLine(y),
              .ownColumn = mosaic.phase.OwnColumn(y),
              .set = set,
              .isStreamed = isStreamed,
              .luminanceLanes = luminanceLanes});
  }
  if (isStreamed) EndStreaming();
}

// The two lines or columns of a plane, whose samples lie two apart, around a position half a pixel further on: the near
// one at a distance of 0.5, the far one at 1.5. Where one lies outside the image the other takes its place, and so the
// whole weight.
struct PlaneNeighbours {
  size_t near;
  size_t far;
};

constexpr PlaneNeighbours NeighboursInPlane(size_t position, size_t planeParity, size_t count) {
  const bool isOnPlane = position % 2 == planeParity;
  const size_t near = isOnPlane ? position : position + 1;
  const size_t far = isOnPlane ? position + 2 : position - 1;  // wraps before the first
  const bool nearExists = near < count;
  const bool farExists = far < count;
  return {nearExists ? near : far, farExists ? far : near};
}

// One line of the classic kernel.
template <PixelFormatId format>
class ClassicLine {
 public:
  ClassicLine(const Mosaic& mosaic, size_t y, uint8_t* line)
      : mosaic_(mosaic),
        line_(line),
        red_(PlaneLines(mosaic.phase.redLine, y)),
        blue_(PlaneLines(1 - mosaic.phase.redLine, y)),
        greenLine_(std::min(y, mosaic.height - 2)),
        greenTop_(mosaic.Line(greenLine_)),
        greenBottom_(mosaic.Line(greenLine_ + 1)) {}

  void Convert(const DemosaicKernels* vectors, bool isStreamed) const {
    const size_t width = mosaic_.width;
    AtBorder(0);
    // Columns 1 to width - 3 have both neighbours in either plane.
    if (vectors != nullptr) {
      ConvertByVectors(*vectors, isStreamed);
    } else {
      for (size_t x = 1; x + 2 < width; x += kBlock) ConvertBlock(x, std::min(kBlock, width - 2 - x));
    }
    AtBorder(width - 2);
    AtBorder(width - 1);
  }

 private:
  static constexpr size_t kBlock = 128;

  // Two lines of a colour's samples.
  using Lines = ClassicTask::Plane;

  Lines PlaneLines(size_t planeParity, size_t y) const {
    const PlaneNeighbours lines = NeighboursInPlane(y, planeParity, mosaic_.height);
    return {mosaic_.Line(lines.near), mosaic_.Line(lines.far)};
  }

  static int32_t Interpolate(const Lines& lines, const PlaneNeighbours& columns) {
    return (9 * lines.near[columns.near] + 3 * (lines.near[columns.far] + lines.far[columns.near]) +
            lines.far[columns.far]) >>
           4;
  }

  void AtBorder(size_t x) const {
    const size_t redColumn = mosaic_.phase.redColumn;
    const size_t block = std::min(x, mosaic_.width - 2);
    const bool topLeftIsGreen = block % 2 != mosaic_.phase.OwnColumn(greenLine_);
    const size_t top = topLeftIsGreen ? block : block + 1;
    const size_t bottom = topLeftIsGreen ? block + 1 : block;
    Store(x, SiteColour{Interpolate(red_, NeighboursInPlane(x, redColumn, mosaic_.width)),
                        (greenTop_[top] + greenBottom_[bottom]) >> 1,
                        Interpolate(blue_, NeighboursInPlane(x, 1 - redColumn, mosaic_.width))});
  }

  void ConvertByVectors(const DemosaicKernels& vectors, bool isStreamed) const {
    const bool isRedEven = mosaic_.phase.redColumn == 0;
    const bool isTopGreenEven = mosaic_.phase.OwnColumn(greenLine_) != 0;
    const ClassicTask task = {
        .planes = {isRedEven ? red_ : blue_, isRedEven ? blue_ : red_},
        .green = {isTopGreenEven ? greenTop_ : greenBottom_, isTopGreenEven ? greenBottom_ : greenTop_},
        .output = line_,
        .first = 1,
        .last = mosaic_.width - 2,
        .isEvenFirst = isRedEven != IsBlueFirst(kFacts<format>),
        .alpha = kFacts<format>.maxValue,
        .isStreamed = isStreamed};
    (kFacts<format>.channels == 3 ? vectors.classic3 : vectors.classic4)(task);
  }

  // The same for count columns from first on, which have all their neighbours. The weights are those of the lines times
  // those of the columns, so the lines go first. Each column is computed as one on the plane of red and as one beside
  // it, and a mask picks, so that compilers turn the loops into vector code.
  void ConvertBlock(size_t first, size_t count) const {
    const Lines red = red_;
    const Lines blue = blue_;
    const uint8_t* const greenTop = greenTop_;
    const uint8_t* const greenBottom = greenBottom_;
    uint16_t reds[kBlock + 3];
    uint16_t blues[kBlock + 3];
    for (size_t i = 0; i < count + 3; ++i) {  // from the column before first on
      reds[i] = static_cast<uint16_t>(3 * red.near[first - 1 + i] + red.far[first - 1 + i]);
      blues[i] = static_cast<uint16_t>(3 * blue.near[first - 1 + i] + blue.far[first - 1 + i]);
    }
    const auto isRedOdd = static_cast<uint32_t>((first + mosaic_.phase.redColumn) % 2);
    const auto isGreenOdd = static_cast<uint32_t>((first + 1 - mosaic_.phase.OwnColumn(greenLine_)) % 2);
    uint8_t redOut[kBlock];
    uint8_t greenOut[kBlock];
    uint8_t blueOut[kBlock];
    for (uint32_t i = 0; i < count; ++i) {
      const auto pick = [i](uint32_t isOdd, int32_t a, int32_t b) {
        return static_cast<uint8_t>(a ^ ((a ^ b) & -static_cast<int32_t>((i ^ isOdd) & 1)));
      };
      const auto on = [i](const uint16_t* sums) { return (3 * sums[i + 1] + sums[i + 3]) >> 4; };
      const auto beside = [i](const uint16_t* sums) { return (3 * sums[i + 2] + sums[i]) >> 4; };
      redOut[i] = pick(isRedOdd, on(reds), beside(reds));
      blueOut[i] = pick(isRedOdd, beside(blues), on(blues));
      greenOut[i] = pick(isGreenOdd, (greenTop[first + i] + greenBottom[first + i + 1]) >> 1,
                         (greenTop[first + i + 1] + greenBottom[first + i]) >> 1);
    }
    for (size_t i = 0; i < count; ++i) Store(first + i, SiteColour{redOut[i], greenOut[i], blueOut[i]});
  }

  void Store(size_t x, const SiteColour& colour) const {
    StoreColour<format, true, false>(line_ + x * kFacts<format>.PixelByteCount(), colour);
  }

  const Mosaic& mosaic_;
  uint8_t* line_;
  Lines red_;
  Lines blue_;
  size_t greenLine_;
  const uint8_t* greenTop_;
  const uint8_t* greenBottom_;
};

template <PixelFormatId format>
void ConvertClassic(const Mosaic& mosaic, const Target& target, InstructionSet set) {
  const DemosaicKernels* const vectors = FindDemosaicKernels(set);
  const bool isStreamed = target.IsStreamed(mosaic);
  for (size_t y = 0; y < mosaic.height; ++y) {
    ClassicLine<format>(mosaic, y, target.data + y * target.format.ByteCount(mosaic.width))
        .Convert(vectors, isStreamed);
  }
  if (isStreamed) EndStreaming();
}

constexpr bool IsColour8(const FormatFacts& facts) {
  return facts.type == PixelType::Color && facts.significantBits == 8;
}

// Calls convert with the format, an 8-bit colour, as a constant.
template <class ConvertTo>
void ForColour8(PixelFormatId format, ConvertTo&& convert) {
  switch (format) {
#define KORVEL_CASE(name)                                                    \
  case PixelFormatId::name:                                                  \
    if constexpr (IsColour8(kFacts<PixelFormatId::name>)) {                  \
      convert(std::integral_constant<PixelFormatId, PixelFormatId::name>{}); \
    }                                                                        \
    break;
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_CASE)
#undef KORVEL_CASE
    default:
      break;
  }
}

}  // namespace

bool DebayeringOptimized::IsClassicInput(PixelFormatId format) {
  return format == PixelFormatId::BayerRG8 || format == PixelFormatId::BayerGR8;
}

bool DebayeringOptimized::IsClassicOutput(PixelFormatId format) {
  const std::optional<FormatFacts> facts = FindFacts(format);
  return facts && IsColour8(*facts);
}

DebayeringOptimized::Path DebayeringOptimized::FindPath(const Size2D& size, PixelFormatId inputFormat,
                                                        PixelFormatId outputFormat, uint32_t conversionMode) const {
  if (size.width < kSmallestSide || size.height < kSmallestSide || size.width % 2 != 0 || size.height % 2 != 0) {
    return Path::kNone;
  }
  const bool hasVectors = features_.avx != 0 || features_.avx2 != 0;
  const bool isFast = conversionMode == kConversionModeFast && hasVectors;
  if (inputFormat == PixelFormatId::BayerRG10 && outputFormat == PixelFormatId::RGB10p32) {
    return isFast ? Path::kFast : Path::kNone;
  }
  // Classic and the 8-bit paths of Fast exist for the same inputs.
  if (!IsClassicInput(inputFormat)) return Path::kNone;
  if (conversionMode == kConversionModeClassic) return IsClassicOutput(outputFormat) ? Path::kClassic : Path::kNone;
  // Intended: the three-byte pixels have no path for a processor that has AVX2 and not AVX.
  const bool isThreeBytes = outputFormat == PixelFormatId::RGB8 || outputFormat == PixelFormatId::BGR8;
  if (!isFast || (isThreeBytes && features_.avx == 0)) return Path::kNone;
  return outputFormat == PixelFormatId::Mono8 || IsClassicOutput(outputFormat) ? Path::kFast : Path::kNone;
}

bool DebayeringOptimized::Convert(const uint8_t* input, size_t width, size_t height, PixelFormatId inputFormat,
                                  uint8_t* output, size_t /*outputSize*/, PixelFormatId outputFormat,
                                  uint32_t conversionMode) const {
  const Path path = FindPath({width, height}, inputFormat, outputFormat, conversionMode);
  if (path == Path::kNone) return false;
  const FormatFacts from = *FindFacts(inputFormat);
  const FormatFacts to = *FindFacts(outputFormat);
  const Mosaic mosaic{input, width, height, PhaseOf(from.pixelClass), from.ByteCount(width)};
  const Target target = {to, output};
  if (path == Path::kFast) {
    ConvertFast(mosaic, target, set_, LuminanceLanes());
  } else {
    ForColour8(outputFormat, [&](auto id) { ConvertClassic<id>(mosaic, target, set_); });
  }
  return true;
}

}  // namespace img::processing
