#include "processing/correction/gain.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "core/image_lines.h"
#include "processing/argument_check.h"
#include "processing/bayer_phase.h"
#include "processing/unsupported_format.h"

namespace img::processing {
namespace {

bool GivesTable(const FixedFactor& fixed, const Depth<8>::Table& table) {
  for (uint32_t value = 0; value < table.size(); ++value) {
    const uint32_t sum = value * fixed.whole + (value * fixed.fraction >> 16);
    if (std::min(sum * fixed.scale >> 16, Depth<8>::kMaximum) != table[value]) return false;
  }
  return true;
}

// For a factor of 1 to 64.
std::optional<FixedFactor> FindFixedFactor(float factor, const Depth<8>::Table& table) {
  const auto bits = std::bit_cast<uint32_t>(factor);
  const uint32_t mantissa = (bits & 0x7FFFFF) | 0x800000;
  const uint32_t exponent = (bits >> 23) - 127;
  // Single precision rounds some products up to the next integer, which exact ones of the next mantissa reach as well.
  for (const uint32_t candidate : {mantissa, mantissa + 1}) {
    const FixedFactor fixed = {.whole = static_cast<uint16_t>(candidate >> 16),
                               .fraction = static_cast<uint16_t>(candidate & 0xFFFF),
                               .scale = static_cast<uint16_t>(1u << (9 + exponent))};
    if (GivesTable(fixed, table)) return fixed;
  }
  return std::nullopt;
}

// A line whose even columns have one gain and whose odd columns another. Bits above the depth are ignored.
template <uint32_t bits>
void MapLine(const uint8_t* in, uint8_t* out, size_t width, const GainTables& even, const GainTables& odd,
             const GainKernels* vectors) {
  using Sample = typename Depth<bits>::Sample;
  size_t done = 0;
  if (vectors != nullptr) {
    if constexpr (bits == 8) {
      done = even.fixed && odd.fixed ? vectors->bytesInIntegers(in, out, width, *even.fixed, *odd.fixed)
                                     : vectors->bytes(in, out, width, even.factor, odd.factor);
    } else {
      done = vectors->words(in, out, width, even.factor, odd.factor, Depth<bits>::kMaximum);
    }
  }
  const auto newValue = [evenTable = even.tables.Of<bits>().data(), oddTable = odd.tables.Of<bits>().data()](
                            size_t column, Sample value) {
    return (column == 0 ? evenTable : oddTable)[value & Depth<bits>::kMaximum];
  };
  const size_t rest = width - done;
  MapSamples<Sample, 2, 2>(in + done * sizeof(Sample), out + done * sizeof(Sample), rest / 2, newValue);
  const size_t last = width / 2 * 2 * sizeof(Sample);
  MapSamples<Sample, 1, 1>(in + last, out + last, rest % 2, newValue);
}

}  // namespace

void GainTables::Build(float newFactor) {
  factor = newFactor;
  tables.Build([newFactor](float value, float maximum) {
    const float product = newFactor * value;
    return product < maximum ? product : maximum;
  });
  fixed = FindFixedFactor(factor, tables.Of<8>());
}

Gain::Gain(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool, const ProcessorFeatures& features)
    : pool_(std::move(pool)), set_(InstructionSetOf(features)) {
  for (GainTables* tables : {&masterTables_, &redTables_, &greenTables_, &blueTables_}) tables->Build(1.0f);
}

bool Gain::IsFormatSupported(PixelFormatId format) {
  const std::optional<FormatFacts> facts = FindFacts(format);
  return facts && !facts->IsPacked() && (facts->type == PixelType::Mono || facts->type == PixelType::Bayer);
}

void Gain::SetMasterGainValue(float value) {
  RequireArgument(value >= gainMin_ && value <= gainMax_, "void img::processing::Gain::SetMasterGainValue(float)",
                  "img::processing::Gain::SetMasterGainValue: gain value not supported!");
  masterGain_ = value;
  masterTables_.Build(masterGain_);
  redTables_.Build(redGain_ * masterGain_);
  greenTables_.Build(greenGain_ * masterGain_);
  blueTables_.Build(blueGain_ * masterGain_);
}

void Gain::setColourGain(float& gain, GainTables& tables, float value, const char* location, const char* text) {
  RequireArgument(value >= gainMin_ && value <= gainMax_, location, text);
  gain = value;
  tables.Build(gain * masterGain_);
}

void Gain::SetRedGainValue(float value) {
  setColourGain(redGain_, redTables_, value, "void img::processing::Gain::SetRedGainValue(float)",
                "img::processing::Gain::SetRedGainValue: gain value not supported!");
}

void Gain::SetGreenGainValue(float value) {
  setColourGain(greenGain_, greenTables_, value, "void img::processing::Gain::SetGreenGainValue(float)",
                "img::processing::Gain::SetGreenGainValue: gain value not supported!");
}

void Gain::SetBlueGainValue(float value) {
  setColourGain(blueGain_, blueTables_, value, "void img::processing::Gain::SetBlueGainValue(float)",
                "img::processing::Gain::SetBlueGainValue: gain value not supported!");
}

// Intended: each gain by itself, also on mono images, which have no colours, and whatever the products.
bool Gain::isNeutral() const {
  return IsNeutral(masterGain_) && IsNeutral(redGain_) && IsNeutral(greenGain_) && IsNeutral(blueGain_);
}

std::shared_ptr<IfcImage> Gain::applyGain(const IfcImage& image) const {
  RequireSupportedFormat(
      IsFormatSupported(image.PixelFormat()), image.PixelFormat(),
      "std::shared_ptr<img::IfcImage> img::processing::Gain::applyGain(const img::IfcImage &) const");
  if (isNeutral()) return image.Clone(*pool_);
  std::shared_ptr<IfcImage> output = pool_->AllocBuffer(image.PixelFormat(), image.Area().size)->CreateImage();
  process(image, *output);
  return output;
}

void Gain::applyGainInPlace(IfcImage& image) const {
  RequireSupportedFormat(IsFormatSupported(image.PixelFormat()), image.PixelFormat(),
                         "void img::processing::Gain::applyGainInPlace(img::IfcImage &) const");
  if (!isNeutral()) process(image, image);
}

void Gain::process(const IfcImage& input, IfcImage& output) const {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const bool isMono = PixelFormatInfo_Type(input.PixelFormat()) == PixelType::Mono;
  const BayerPhase phase = PhaseOf(PixelFormatInfo_Class(input.PixelFormat()));
  const GainKernels* const vectors = FindGainKernels(set_);
  WithDepth(PixelFormatInfo_ComponentSignificantBits(input.PixelFormat()), [&](auto bits) {
    for (size_t y = 0; y < size.height; ++y) {
      const GainTables& own = isMono ? masterTables_ : phase.IsRedLine(y) ? redTables_ : blueTables_;
      const GainTables& green = isMono ? masterTables_ : greenTables_;
      const bool isOwnEven = phase.OwnColumn(y) == 0;
      MapLine<bits>(in[y], out[y], size.width, isOwnEven ? own : green, isOwnEven ? green : own, vectors);
    }
  });
}

}  // namespace img::processing
