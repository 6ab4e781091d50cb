#include "processing/conversion/fused_conversion.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/image_buffer.h"
#include "processing/bayer_phase.h"
#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/bayer_to_color.h"
#include "processing/conversion/conversion_mode.h"
#include "processing/conversion/demosaic_vectors.h"
#include "processing/conversion/fast_demosaic.h"
#include "processing/conversion/filter_rule.h"
#include "processing/conversion/filter_vectors.h"
#include "processing/conversion/mono_line.h"
#include "processing/conversion/mosaic_lines.h"
#include "processing/conversion/unpack_packed.h"
#include "processing/streaming.h"

namespace img::processing {
namespace {

constexpr size_t kSmallestWidth = kFewestFilteredColumns + 4;
constexpr size_t kSmallestHeight = 5;

// The class of a mosaic's format once it is unpacked.
PixelClass MosaicClass(const FormatFacts& format) {
  return format.IsPacked() ? UnpackedClass(format.pixelClass) : format.pixelClass;
}

ColourLayout LayoutOf(const FusedConversion::Plan& plan) {
  return plan.keepsUnusedBits ? ColourLayout::Word32Kept : ColourLayoutOf(plan.output);
}

// Stores one pixel of a format from the colours of a site on a red line or on a blue one.
using StorePixel = void (*)(uint8_t* address, const SiteColour& colour);

StorePixel FindStore(PixelFormatId format, bool isRedLine) {
  switch (format) {
#define KORVEL_CASE(name)                                                                                              \
  case PixelFormatId::name:                                                                                            \
    if constexpr (kFacts<PixelFormatId::name>.type == PixelType::Color) {                                              \
      return isRedLine ? StoreColour<PixelFormatId::name, true, true> : StoreColour<PixelFormatId::name, false, true>; \
    }                                                                                                                  \
    return nullptr;
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_CASE)
#undef KORVEL_CASE
    default:
      return nullptr;
  }
}

// Whether an image is all of its buffer, whose lines then follow each other without gaps.
bool IsWhole(const IfcImage& image) {
  return image.Area().offset == Point2D{} && image.Area().size == image.Buffer()->Size() &&
         image.PixelPointer(0, 0) != nullptr;
}

// One conversion: makes the lines of an output, from the first to the last.
template <class Sample>
class LineMaker {
 public:
  LineMaker(const FusedConversion::Plan& plan, const Size2D& size, InstructionSet set, size_t luminanceLanes,
            MosaicLines lines, uint16_t* planes, uint8_t* output)
      : plan_(plan),
        set_(set),
        luminanceLanes_(luminanceLanes),
        width_(size.width),
        height_(size.height),
        phase_(PhaseOf(MosaicClass(plan.input))),
        layout_(static_cast<size_t>(LayoutOf(plan))),
        demosaic_(*FindDemosaicKernels(set)),
        filter_(*FindFilterKernels(set)),
        stores_{FindStore(plan.output.id, false), FindStore(plan.output.id, true)},
        isStreamed_(ShouldStream(plan.output.ByteCount(size.width * size.height))),
        lines_(lines),
        planes_(planes),
        output_(output) {}

  // What the planes of a filter take, which begin at a multiple of a vector.
  static constexpr size_t PlaneSamples(size_t width) { return kAhead + MosaicLines::kWindow * 2 * PlaneSize(width); }

  void Make() {
    using enum FusedConversion::LastStage;
    if (plan_.lastStage == kFast) {
      for (size_t y = 0; y < height_; ++y) MakeFast(y);
    } else if (plan_.lastStage == kMono) {
      // Blocks reach downward, so that the last line is a copy of the one above, made once more.
      for (size_t y = 0; y + 1 < height_; ++y) MakeMono(y, y);
      MakeMono(height_ - 2, height_ - 1);
    } else {
      // The border has the colours of the pixels next to it, made once more.
      MakeColours(1, 0);
      for (size_t y = 1; y + 1 < height_; ++y) MakeColours(y, y);
      MakeColours(height_ - 2, height_ - 1);
    }
    if (isStreamed_) EndStreaming();
  }

 private:
  static constexpr size_t kAhead = 15;  // samples before a plane, whose second one so begins a vector

  // Even columns, or odd ones, of a line.
  static constexpr size_t PlaneSize(size_t width) { return (width / 2 + 32) / 32 * 32; }

  size_t PixelByteCount() const { return plan_.output.PixelByteCount(); }
  bool IsOwnFirst(size_t y) const { return phase_.IsRedLine(y) == !IsBlueFirst(plan_.output); }
  SampleLine<Sample> LineAt(size_t y) { return SampleLine<Sample>(lines_[y]); }
  uint16_t* EvenColumns(size_t y) { return planes_ + kAhead + y % MosaicLines::kWindow * 2 * PlaneSize(width_); }

  uint8_t* OutputLine(size_t y) const { return output_ + y * width_ * PixelByteCount(); }

  void MakeFast(size_t y) {
    FindFastLine(plan_.output.id)({.above = y == 0 ? nullptr : lines_[y - 1],
                                   .here = lines_[y],
                                   .below = y + 1 == height_ ? nullptr : lines_[y + 1],
                                   .output = OutputLine(y),
                                   .width = width_,
                                   .isRedLine = phase_.IsRedLine(y),
                                   .ownColumn = phase_.OwnColumn(y),
                                   .set = set_,
                                   .isStreamed = isStreamed_,
                                   .luminanceLanes = luminanceLanes_});
  }

  // Makes line y, as one of the output that may be another.
  void MakeMono(size_t y, size_t outputY) {
    const HeavySample heavy = HeavySampleOf(ClassOf(phase_));
    MakeMonoLine({.upper = lines_[y],
                  .lower = lines_[y + 1],
                  .output = OutputLine(outputY),
                  .width = width_,
                  .isUpperHeavy = y % 2 == heavy.line,
                  .heavyColumn = heavy.column,
                  .maximum = plan_.output.maxValue,
                  .isStreamed = isStreamed_},
                 demosaic_);
  }

  // The same by the colour modules.
  void MakeColours(size_t y, size_t outputY) {
    uint8_t* const to = OutputLine(outputY);
    const SiteColour left = BilinearAt(y, 1);
    const SiteColour right = BilinearAt(y, width_ - 2);
    const auto store = [&, storePixel = stores_[phase_.IsRedLine(y)]](size_t x, const SiteColour& colour) {
      storePixel(to + x * PixelByteCount(), colour);
    };
    store(0, left);
    if (plan_.lastStage == FusedConversion::LastStage::kFilter && y != 1 && y != height_ - 2) {
      store(1, left);
      MakeFiltered(y, to);
      store(width_ - 2, right);
    } else {
      MakeBilinear(y, to);
    }
    store(width_ - 1, right);
  }

  SiteColour BilinearAt(size_t y, size_t x) {
    const BilinearRule<Sample> rule{LineAt(y - 1), LineAt(y), LineAt(y + 1)};
    return x % 2 == phase_.OwnColumn(y) ? rule.AtOwn(x) : rule.AtGreen(x);
  }

  void MakeBilinear(size_t y, uint8_t* to) {
    demosaic_.bilinear[layout_]({.above = lines_[y - 1],
                                 .here = lines_[y],
                                 .below = lines_[y + 1],
                                 .output = to,
                                 .first = 1,
                                 .last = width_ - 1,
                                 .ownColumn = phase_.OwnColumn(y),
                                 .isOwnFirst = IsOwnFirst(y),
                                 .alpha = plan_.output.maxValue,
                                 .isStreamed = isStreamed_});
  }

  void MakeFiltered(size_t y, uint8_t* to) {
    for (; linesSplit_ <= y + 2; ++linesSplit_) Split(linesSplit_);
    if (std::any_of(bitsSeen_.begin(), bitsSeen_.end(), [](uint32_t bits) { return bits > kLargestFilteredSample; })) {
      MakeFilteredPlainly(y, to);
      return;
    }
    filter_.filter[layout_](
        {.even = {EvenColumns(y - 2), EvenColumns(y - 1), EvenColumns(y), EvenColumns(y + 1), EvenColumns(y + 2)},
         .odd = static_cast<ptrdiff_t>(PlaneSize(width_)),
         .output = to,
         .first = 2,
         .last = width_ - 2,
         .ownColumn = phase_.OwnColumn(y),
         .isOwnFirst = IsOwnFirst(y),
         .maximum = plan_.output.maxValue,
         .isStreamed = isStreamed_});
  }

  void Split(size_t y) {
    uint16_t* const even = EvenColumns(y);
    uint16_t* const odd = even + PlaneSize(width_);
    if constexpr (sizeof(Sample) == 1) {
      filter_.splitBytes(lines_[y], width_, even, odd);
    } else {
      bitsSeen_[y % MosaicLines::kWindow] = filter_.splitWords(lines_[y], width_, even, odd);
    }
  }

  // For samples far above their depth.
  void MakeFilteredPlainly(size_t y, uint8_t* to) {
    const auto make = [&]<int32_t maximum>(std::integral_constant<int32_t, maximum>) {
      const FilterRule<Sample, maximum> rule{LineAt(y - 2), LineAt(y - 1), LineAt(y), LineAt(y + 1), LineAt(y + 2)};
      ForEachSite(rule, phase_.OwnColumn(y), 2, width_ - 2,
                  [&, storePixel = stores_[phase_.IsRedLine(y)]](size_t x, const SiteColour& colour) {
                    storePixel(to + x * PixelByteCount(), colour);
                  });
    };
    if (plan_.output.significantBits == 10) {
      make(std::integral_constant<int32_t, 1023>{});
    } else {
      make(std::integral_constant<int32_t, 4095>{});
    }
  }

  const FusedConversion::Plan& plan_;
  InstructionSet set_;
  size_t luminanceLanes_;
  size_t width_;
  size_t height_;
  BayerPhase phase_;
  size_t layout_;
  const DemosaicKernels& demosaic_;
  const FilterKernels& filter_;
  StorePixel stores_[2];  // for blue lines and for red ones
  bool isStreamed_;
  MosaicLines lines_;
  uint16_t* planes_;  // of the lines in the window, for the filter
  uint8_t* output_;
  size_t linesSplit_ = 0;
  std::array<uint32_t, MosaicLines::kWindow> bitsSeen_{};
};

}  // namespace

std::optional<FusedConversion::Plan> FusedConversion::FindPlan(const IfcImage& input, PixelFormatId output,
                                                               uint32_t conversionMode) const {
  if (set_ == InstructionSet::Baseline) return std::nullopt;
  const std::optional<FormatFacts> from = FindFacts(input.PixelFormat());
  const std::optional<FormatFacts> to = FindFacts(output);
  const Size2D& size = input.Area().size;
  if (!from || !to || from->type != PixelType::Bayer || size.width < kSmallestWidth || size.height < kSmallestHeight ||
      !IsWhole(input)) {
    return std::nullopt;
  }
  const bool isMono = to->type == PixelType::Mono && !to->IsPacked();
  const bool isColour = to->type == PixelType::Color && IsDemosaicTarget(*to);
  if (!isMono && !isColour) return std::nullopt;
  // Modules find lines by a sum of 32 bits.
  const size_t mostBytes = std::max(to->PixelByteCount(), uint32_t{sizeof(uint16_t)});
  if (size.height > std::numeric_limits<uint32_t>::max() / mostBytes / size.width) return std::nullopt;

  const PixelFormatId mosaic =
      PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(MosaicClass(*from)), to->significantBits);
  switch (fastPaths_.FindPath(size, mosaic, output, conversionMode)) {
    case DebayeringOptimized::Path::kFast:
      // Without a stage before it, the path by itself is one pass.
      if (mosaic == from->id) return std::nullopt;
      return Plan{*from, *to, LastStage::kFast, false};
    case DebayeringOptimized::Path::kClassic:
      return std::nullopt;
    default:
      break;
  }
  if (isMono) return Plan{*from, *to, LastStage::kMono, false};
  const bool isFast = conversionMode == kConversionModeFast;
  return Plan{*from, *to, isFast ? LastStage::kBilinear : LastStage::kFilter, to->layout == PixelLayout::Word32};
}

void FusedConversion::Convert(const Plan& plan, const IfcImage& input, uint8_t* output) const {
  if (plan.output.storageBits == 8) {
    ConvertAs<uint8_t>(plan, input, output);
  } else {
    ConvertAs<uint16_t>(plan, input, output);
  }
}

template <class Sample>
void FusedConversion::ConvertAs(const Plan& plan, const IfcImage& input, uint8_t* output) const {
  const Size2D& size = input.Area().size;
  const uint8_t* const samples = input.PixelPointer(0, 0);
  const bool isFiltered = plan.lastStage == LastStage::kFilter;
  const bool isReady = !plan.input.IsPacked() && plan.input.significantBits == plan.output.significantBits;
  const size_t planeSamples = isFiltered ? LineMaker<Sample>::PlaneSamples(size.width) : 0;
  const size_t ringByteCount = isReady ? 0 : MosaicLines::RingByteCount(size.width, sizeof(Sample));
  const KeptScratch::Loan scratch(scratch_, ringByteCount + planeSamples * sizeof(uint16_t));
  const SampleReader reader(plan.input, samples, size.width * size.height, plan.output.significantBits, set_);
  const MosaicLines lines =
      isReady ? MosaicLines(samples, size.width * sizeof(Sample)) : MosaicLines(reader, size.width, scratch.Bytes());
  LineMaker<Sample>(plan, size, set_, fastPaths_.LuminanceLanes(), lines,
                    reinterpret_cast<uint16_t*>(scratch.Bytes() + ringByteCount), output)
      .Make();
}

}  // namespace img::processing
