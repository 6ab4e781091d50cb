#include "processing/correction/gamma_corrector.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/image_lines.h"
#include "processing/argument_check.h"
#include "processing/unsupported_format.h"

namespace img::processing {
namespace {

void RequireCorrectable(PixelFormatId format, const char* location) {
  RequireSupportedFormat(format != PixelFormatId::Invalid && GammaCorrector::IsFormatSupported(format), format,
                         location);
}

// Values above the depth count as its maximum.
template <uint32_t bits, size_t kChannels>
void MapPixels(const uint8_t* in, uint8_t* out, size_t pixels, const typename Depth<bits>::Table& table) {
  using Sample = typename Depth<bits>::Sample;
  MapSamples<Sample, kChannels, std::min<size_t>(kChannels, 3)>(
      in, out, pixels, [entries = table.data()](size_t, Sample value) {
        return entries[std::min(uint32_t{value}, Depth<bits>::kMaximum)];
      });
}

// Pixels of three channels of 10 bits in a word, whose unused bits become 0.
void MapWords(const uint8_t* in, uint8_t* out, size_t pixels, const Depth<10>::Table& table) {
  MapSamples<uint32_t, 1, 1>(in, out, pixels, [entries = table.data()](size_t, uint32_t word) {
    const auto entry = [&](uint32_t shift) { return uint32_t{entries[word >> shift & Depth<10>::kMaximum]} << shift; };
    return entry(0) | entry(10) | entry(20);
  });
}

}  // namespace

GammaCorrector::GammaCorrector(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool) : pool_(std::move(pool)) {
  buildTables();
}

bool GammaCorrector::IsFormatSupported(PixelFormatId format) {
  const std::optional<FormatFacts> facts = FindFacts(format);
  return facts && facts->type != PixelType::Raw && (!facts->IsPacked() || format == PixelFormatId::RGB10p32);
}

void GammaCorrector::SetGammaCorrectionValue(float value) {
  RequireArgument(value >= gammaMin_ && value <= gammaMax_,
                  "void img::processing::GammaCorrector::SetGammaCorrectionValue(float)",
                  "img::processing::GammaCorrector::SetGammaCorrectionValue: Gamma value not supported!");
  gammaValue_ = value;
  buildTables();
}

void GammaCorrector::buildTables() {
  // All in single precision: an exponent or a power in double precision gives other entries here and there.
  tables_.Build([exponent = 1.0f / gammaValue_](float value, float maximum) {
    return std::pow(value / maximum, exponent) * maximum;
  });
}

std::shared_ptr<IfcImage> GammaCorrector::applyGammaCorrection(const IfcImage& image) {
  RequireCorrectable(image.PixelFormat(),
                     "std::shared_ptr<img::IfcImage> img::processing::GammaCorrector::applyGammaCorrection(const "
                     "img::IfcImage &)");
  if (IsNeutral(gammaValue_)) return image.Clone(*pool_);
  std::shared_ptr<IfcImage> output = pool_->AllocBuffer(image.PixelFormat(), image.Area().size)->CreateImage();
  process(image, *output);
  return output;
}

void GammaCorrector::applyGammaCorrectionInPlace(IfcImage& image) {
  RequireCorrectable(image.PixelFormat(),
                     "void img::processing::GammaCorrector::applyGammaCorrectionInPlace(img::IfcImage &)");
  if (!IsNeutral(gammaValue_)) process(image, image);
}

void GammaCorrector::process(const IfcImage& input, IfcImage& output) const {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const auto forEachLine = [&](auto&& map) {
    for (size_t y = 0; y < size.height; ++y) map(in[y], out[y]);
  };
  if (input.PixelFormat() == PixelFormatId::RGB10p32) {
    forEachLine([&](const uint8_t* from, uint8_t* to) { MapWords(from, to, size.width, tables_.Of<10>()); });
    return;
  }
  WithDepth(PixelFormatInfo_ComponentSignificantBits(input.PixelFormat()), [&](auto bits) {
    const auto& table = tables_.template Of<bits>();
    forEachLine([&](const uint8_t* from, uint8_t* to) {
      switch (input.NumChannels()) {
        case 1:
          return MapPixels<bits, 1>(from, to, size.width, table);
        case 3:
          return MapPixels<bits, 3>(from, to, size.width, table);
        default:
          return MapPixels<bits, 4>(from, to, size.width, table);
      }
    });
  });
}

}  // namespace img::processing
