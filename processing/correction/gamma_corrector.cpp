#include "processing/correction/gamma_corrector.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/image_lines.h"
#include "processing/argument_check.h"
#include "processing/correction/table_vectors.h"
#include "processing/unsupported_format.h"

namespace img::processing {
namespace {

void RequireCorrectable(PixelFormatId format, const char* location) {
  RequireSupportedFormat(format != PixelFormatId::Invalid && GammaCorrector::IsFormatSupported(format), format,
                         location);
}

// Values above the depth count as its maximum.
template <uint32_t bits>
auto EntriesOf(const typename Depth<bits>::Table& table) {
  return [entries = table.data()](size_t, typename Depth<bits>::Sample value) {
    return entries[std::min(uint32_t{value}, Depth<bits>::kMaximum)];
  };
}

template <uint32_t bits>
void MapAll(const uint8_t* in, uint8_t* out, size_t samples, const typename Depth<bits>::Table& table,
            const TableKernels* vectors) {
  using Sample = typename Depth<bits>::Sample;
  size_t done = 0;
  if constexpr (bits == 8) {
    if (vectors != nullptr && vectors->bytes != nullptr) done = vectors->bytes(in, out, samples, table.data());
  } else {
    if (vectors != nullptr) done = vectors->words(in, out, samples, table.data(), Depth<bits>::kMaximum);
  }
  const size_t offset = done * sizeof(Sample);
  MapSamples<Sample, 1, 1>(in + offset, out + offset, samples - done, EntriesOf<bits>(table));
}

// The first three channels of four: one look-up less than vectors, which would take the fourth as well, makes up for
// their speed.
template <uint32_t bits>
void MapColors(const uint8_t* in, uint8_t* out, size_t pixels, const typename Depth<bits>::Table& table) {
  MapSamples<typename Depth<bits>::Sample, 4, 3>(in, out, pixels, EntriesOf<bits>(table));
}

// Pixels of three channels of 10 bits in a word, whose unused bits become 0.
void MapWords(const uint8_t* in, uint8_t* out, size_t pixels, const Depth<10>::Table& table) {
  MapSamples<uint32_t, 1, 1>(in, out, pixels, [entries = table.data()](size_t, uint32_t word) {
    const auto entry = [&](uint32_t shift) { return uint32_t{entries[word >> shift & Depth<10>::kMaximum]} << shift; };
    return entry(0) | entry(10) | entry(20);
  });
}

}  // namespace

GammaCorrector::GammaCorrector(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                               const ProcessorFeatures& features)
    : pool_(std::move(pool)), set_(InstructionSetOf(features)) {
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
  const TableKernels* const vectors = FindTableKernels(set_);
  const uint32_t channels = input.NumChannels();
  WithDepth(PixelFormatInfo_ComponentSignificantBits(input.PixelFormat()), [&](auto bits) {
    const auto& table = tables_.template Of<bits>();
    forEachLine([&](const uint8_t* from, uint8_t* to) {
      if (channels == 4) {
        MapColors<bits>(from, to, size.width, table);
      } else {
        MapAll<bits>(from, to, size.width * channels, table, vectors);
      }
    });
  });
}

}  // namespace img::processing
