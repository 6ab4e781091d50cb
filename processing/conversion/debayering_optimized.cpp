#include "processing/conversion/debayering_optimized.h"

#include <algorithm>
#include <bit>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/conversion_mode.h"

namespace img::processing {
namespace {

constexpr size_t kSmallestSide = 16;

// A mosaic without gaps between lines.
template <class Sample>
struct Mosaic {
  const uint8_t* data;
  size_t width;
  size_t height;
  BayerPhase phase;

  SampleLine<Sample> Line(size_t y) const { return SampleLine<Sample>(data + y * width * sizeof(Sample)); }
};

// The mean of those neighbours of a site that lie inside the image.
template <class Sample>
class EdgeMean {
 public:
  EdgeMean(const Mosaic<Sample>& mosaic, size_t x, size_t y) : mosaic_(mosaic), x_(x), y_(y) {}

  EdgeMean& Add(int dx, int dy) {
    const size_t x = x_ + static_cast<size_t>(dx);  // wraps beyond the first column and line
    const size_t y = y_ + static_cast<size_t>(dy);
    if (x < mosaic_.width && y < mosaic_.height) {
      sum_ += mosaic_.Line(y)[x];
      ++count_;
    }
    return *this;
  }

  int32_t Value() const { return sum_ / count_; }

 private:
  const Mosaic<Sample>& mosaic_;
  size_t x_;
  size_t y_;
  int32_t sum_ = 0;
  int32_t count_ = 0;
};

// The bilinear rule for a site at the border: a neighbour outside the image is left out of its mean.
template <class Sample>
SiteColour EdgeColour(const Mosaic<Sample>& mosaic, size_t x, size_t y) {
  const auto mean = [&] { return EdgeMean<Sample>(mosaic, x, y); };
  const int32_t centre = mosaic.Line(y)[x];
  if (x % 2 == mosaic.phase.OwnColumn(y)) {
    return {centre, mean().Add(0, -1).Add(0, 1).Add(-1, 0).Add(1, 0).Value(),
            mean().Add(-1, -1).Add(1, -1).Add(-1, 1).Add(1, 1).Value()};
  }
  return {mean().Add(-1, 0).Add(1, 0).Value(), centre, mean().Add(0, -1).Add(0, 1).Value()};
}

// Gives every pixel's colours, line by line: columns 1 to endOfInner - 1 of the inner lines to what
// makeInnerStore(red line or not, y) returns, as (x, colour), and all others to what makeStore does.
template <class Sample, class MakeInnerStore, class MakeStore>
void ForEachFastColour(const Mosaic<Sample>& mosaic, size_t endOfInner, MakeInnerStore&& makeInnerStore,
                       MakeStore&& makeStore) {
  const size_t lastColumn = mosaic.width - 1;
  for (size_t y = 0; y < mosaic.height; ++y) {
    const auto walk = [&](auto isRedLine) {
      const auto store = makeStore(isRedLine, y);
      if (y == 0 || y + 1 == mosaic.height) {
        for (size_t x = 0; x < mosaic.width; ++x) store(x, EdgeColour(mosaic, x, y));
        return;
      }
      const BilinearRule<Sample> rule{mosaic.Line(y - 1), mosaic.Line(y), mosaic.Line(y + 1)};
      const size_t ownColumn = mosaic.phase.OwnColumn(y);
      store(0, EdgeColour(mosaic, 0, y));
      ForEachSite(rule, ownColumn, 1, endOfInner, makeInnerStore(isRedLine, y));
      ForEachSite(rule, ownColumn, endOfInner, lastColumn, store);
      store(lastColumn, EdgeColour(mosaic, lastColumn, y));
    };
    if (mosaic.phase.IsRedLine(y)) {
      walk(std::true_type{});
    } else {
      walk(std::false_type{});
    }
  }
}

template <PixelFormatId format>
void ConvertFast(const Mosaic<SampleOf<format>>& mosaic, uint8_t* output) {
  const auto makeStore = [&](auto isRedLine, size_t y) {
    return [line = output + y * mosaic.width * kFacts<format>.PixelByteCount()](size_t x, const SiteColour& colour) {
      StoreColour<format, decltype(isRedLine)::value, false>(line + x * kFacts<format>.PixelByteCount(), colour);
    };
  };
  ForEachFastColour(mosaic, mosaic.width - 1, makeStore, makeStore);
}

// The weights of ITU-R BT.601 in single precision.
constexpr float kRedWeight = 0.299f;
constexpr float kGreenWeight = 0.587f;
constexpr float kBlueWeight = 0.114f;
static_assert(std::bit_cast<uint32_t>(kRedWeight) == 0x3E991687);
static_assert(std::bit_cast<uint32_t>(kGreenWeight) == 0x3F1645A2);
static_assert(std::bit_cast<uint32_t>(kBlueWeight) == 0x3DE978D5);

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

// The inner columns of inner lines are computed as lanes of vectors, as many at a time as the processor has; the rest,
// and the border, one by one.
void ConvertLuminance(const Mosaic<uint8_t>& mosaic, uint8_t* output, size_t lanes) {
  const auto makeStoreOf = [&](auto luminance) {
    return [&mosaic, output, luminance](auto isRedLine, size_t y) {
      return [line = output + y * mosaic.width, luminance](size_t x, const SiteColour& colour) {
        constexpr bool kRedLine = decltype(isRedLine)::value;
        line[x] = luminance(kRedLine ? colour.own : colour.other, colour.green, kRedLine ? colour.other : colour.own);
      };
    };
  };
  const auto vector = [](int32_t red, int32_t green, int32_t blue) { return VectorLuminance(red, green, blue); };
  const auto scalar = [](int32_t red, int32_t green, int32_t blue) { return ScalarLuminance(red, green, blue); };
  const size_t vectorColumns = (mosaic.width - 2) / lanes * lanes;
  ForEachFastColour(mosaic, 1 + vectorColumns, makeStoreOf(vector), makeStoreOf(scalar));
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
  ClassicLine(const Mosaic<uint8_t>& mosaic, size_t y, uint8_t* line)
      : mosaic_(mosaic),
        line_(line),
        red_(PlaneLines(mosaic.phase.redLine, y)),
        blue_(PlaneLines(1 - mosaic.phase.redLine, y)),
        greenLine_(std::min(y, mosaic.height - 2)),
        greenTop_(mosaic.Line(greenLine_)),
        greenBottom_(mosaic.Line(greenLine_ + 1)) {}

  void Convert() {
    const size_t width = mosaic_.width;
    AtBorder(0);
    // Columns 1 to width - 3 have both neighbours in either plane.
    for (size_t x = 1; x + 2 < width; x += kBlock) ConvertBlock(x, std::min(kBlock, width - 2 - x));
    AtBorder(width - 2);
    AtBorder(width - 1);
  }

 private:
  static constexpr size_t kBlock = 128;

  struct Lines {
    SampleLine<uint8_t> near;
    SampleLine<uint8_t> far;
  };

  Lines PlaneLines(size_t planeParity, size_t y) const {
    const PlaneNeighbours lines = NeighboursInPlane(y, planeParity, mosaic_.height);
    return {mosaic_.Line(lines.near), mosaic_.Line(lines.far)};
  }

  static int32_t Interpolate(const Lines& lines, const PlaneNeighbours& columns) {
    return (9 * lines.near[columns.near] + 3 * (lines.near[columns.far] + lines.far[columns.near]) +
            lines.far[columns.far]) >>
           4;
  }

  void AtBorder(size_t x) {
    const size_t redColumn = mosaic_.phase.redColumn;
    const size_t block = std::min(x, mosaic_.width - 2);
    const bool topLeftIsGreen = block % 2 != mosaic_.phase.OwnColumn(greenLine_);
    const size_t top = topLeftIsGreen ? block : block + 1;
    const size_t bottom = topLeftIsGreen ? block + 1 : block;
    Store(x, SiteColour{Interpolate(red_, NeighboursInPlane(x, redColumn, mosaic_.width)),
                        (greenTop_[top] + greenBottom_[bottom]) >> 1,
                        Interpolate(blue_, NeighboursInPlane(x, 1 - redColumn, mosaic_.width))});
  }

  // The same for count columns from first on, which have all their neighbours. The weights are those of the lines times
  // those of the columns, so the lines go first. Each column is computed as one on the plane of red and as one beside
  // it, and a mask picks, so that compilers turn the loops into vector code.
  void ConvertBlock(size_t first, size_t count) const {
    const Lines red = red_;
    const Lines blue = blue_;
    const SampleLine<uint8_t> greenTop = greenTop_;
    const SampleLine<uint8_t> greenBottom = greenBottom_;
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

  const Mosaic<uint8_t>& mosaic_;
  uint8_t* line_;
  Lines red_;
  Lines blue_;
  size_t greenLine_;
  SampleLine<uint8_t> greenTop_;
  SampleLine<uint8_t> greenBottom_;
};

template <PixelFormatId format>
void ConvertClassic(const Mosaic<uint8_t>& mosaic, uint8_t* output) {
  for (size_t y = 0; y < mosaic.height; ++y) {
    ClassicLine<format>(mosaic, y, output + y * mosaic.width * kFacts<format>.PixelByteCount()).Convert();
  }
}

constexpr bool IsColour8(const FormatFacts& facts) {
  return facts.type == PixelType::Color && facts.significantBits == 8;
}

// Calls convert with the format as a constant if it is an 8-bit colour; false otherwise.
template <class ConvertTo>
bool ForColour8(PixelFormatId format, ConvertTo&& convert) {
  switch (format) {
#define KORVEL_CASE(name)                                                    \
  case PixelFormatId::name:                                                  \
    if constexpr (IsColour8(kFacts<PixelFormatId::name>)) {                  \
      convert(std::integral_constant<PixelFormatId, PixelFormatId::name>{}); \
      return true;                                                           \
    }                                                                        \
    return false;
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_CASE)
#undef KORVEL_CASE
    default:
      return false;
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

bool DebayeringOptimized::Convert(const uint8_t* input, size_t width, size_t height, PixelFormatId inputFormat,
                                  uint8_t* output, size_t /*outputSize*/, PixelFormatId outputFormat,
                                  uint32_t conversionMode) const {
  if (width < kSmallestSide || height < kSmallestSide || width % 2 != 0 || height % 2 != 0) return false;
  const bool hasVectors = features_.avx != 0 || features_.avx2 != 0;

  if (inputFormat == PixelFormatId::BayerRG10 && outputFormat == PixelFormatId::RGB10p32) {
    if (conversionMode != kConversionModeFast || !hasVectors) return false;
    ConvertFast<PixelFormatId::RGB10p32>({input, width, height, PhaseOf(PixelClass::BayerRG)}, output);
    return true;
  }

  // Classic and the 8-bit paths of Fast exist for the same inputs.
  if (!IsClassicInput(inputFormat)) return false;
  const Mosaic<uint8_t> mosaic{input, width, height, PhaseOf(PixelFormatInfo_Class(inputFormat))};
  if (conversionMode == kConversionModeClassic) {
    return ForColour8(outputFormat, [&](auto format) { ConvertClassic<format>(mosaic, output); });
  }
  if (conversionMode != kConversionModeFast || !hasVectors) return false;
  if (outputFormat == PixelFormatId::Mono8) {
    ConvertLuminance(mosaic, output, features_.avx2 != 0 ? 32 : 16);
    return true;
  }
  // Intended: the three-byte pixels have no path for a processor that has AVX2 and not AVX.
  const bool isThreeBytes = outputFormat == PixelFormatId::RGB8 || outputFormat == PixelFormatId::BGR8;
  if (isThreeBytes && features_.avx == 0) return false;
  return ForColour8(outputFormat, [&](auto format) { ConvertFast<format>(mosaic, output); });
}

}  // namespace img::processing
