#include "processing/correction/binning.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "core/image_lines.h"
#include "processing/argument_check.h"
#include "processing/bayer_phase.h"
#include "processing/correction/binning_vectors.h"
#include "processing/unaligned.h"
#include "processing/unsupported_format.h"

namespace img::processing {
namespace {

// A line is a row of groups, each of which has one sample of every kind that is binned by itself: the channels of a
// pixel, or the two colours of a pair of Bayer pixels. Blocks of as many groups as the factor become one group.
//
// Values above a format's depth don't overflow: 64 of them fit 32 bits, and 8 bytes fit 16.

constexpr size_t kLargestFactor = 8;
// Of the columns that are summed at a time.
constexpr size_t kBlock = 2048;

// Groups of samples in memory; a fourth channel, alpha, is not binned but set.
template <class SampleType, size_t kGroup>
struct SampleGroups {
  using ColumnSum = std::conditional_t<sizeof(SampleType) == 1, uint16_t, uint32_t>;
  static constexpr size_t kSamples = kGroup;
  static constexpr size_t kBytes = kGroup * sizeof(SampleType);

  static size_t BinPairs(const BinningKernels& vectors, const BinnedLines& lines) {
    return (sizeof(SampleType) == 1 ? vectors.bytes : vectors.words)[kGroup](lines);
  }

  static void AddTo(ColumnSum* sums, const uint8_t* line, size_t groups) {
    for (size_t i = 0; i < groups * kGroup; ++i) {
      sums[i] = static_cast<ColumnSum>(sums[i] + LoadSample<SampleType>(line, i));
    }
  }

  static void Store(const int32_t* values, int32_t maximum, uint8_t* line, size_t groups) {
    for (size_t i = 0; i < groups * kGroup; ++i) {
      const bool isAlpha = kGroup == 4 && i % 4 == 3;
      StoreSample<SampleType>(line, i, static_cast<SampleType>(isAlpha ? maximum : values[i]));
    }
  }
};

// Three channels of 10 bits in a word. The bits that carry nothing stay as they are in the output.
struct WordGroups {
  static size_t BinPairs(const BinningKernels&, const BinnedLines&) { return 0; }  // has no vector kernel

  using ColumnSum = uint16_t;
  static constexpr size_t kSamples = 3;
  static constexpr size_t kBytes = 4;

  static void AddTo(ColumnSum* sums, const uint8_t* line, size_t groups) {
    for (size_t i = 0; i < groups; ++i) {
      const auto word = LoadSample<uint32_t>(line, i);
      for (size_t channel = 0; channel < 3; ++channel) {
        sums[3 * i + channel] = static_cast<ColumnSum>(sums[3 * i + channel] + (word >> 10 * channel & kMaximum));
      }
    }
  }

  static void Store(const int32_t* values, int32_t /*maximum*/, uint8_t* line, size_t groups) {
    for (size_t i = 0; i < groups; ++i) {
      uint32_t word = LoadSample<uint32_t>(line, i) & ~((1u << 30) - 1);
      for (size_t channel = 0; channel < 3; ++channel) {
        word |= static_cast<uint32_t>(values[3 * i + channel]) << 10 * channel;
      }
      StoreSample<uint32_t>(line, i, word);
    }
  }

 private:
  static constexpr uint32_t kMaximum = (1u << 10) - 1;
};

// The sums of factor groups each.
template <size_t kGroup, size_t factor, class ColumnSum>
void AddGroups(const ColumnSum* columns, int32_t* sums, size_t groups) {
  for (size_t group = 0; group < groups; ++group) {
    for (size_t sample = 0; sample < kGroup; ++sample) {
      int32_t sum = 0;
      for (size_t i = 0; i < factor; ++i) sum += static_cast<int32_t>(columns[(group * factor + i) * kGroup + sample]);
      sums[group * kGroup + sample] = sum;
    }
  }
}

template <size_t kGroup, class ColumnSum>
void AddGroups(size_t factor, const ColumnSum* columns, int32_t* sums, size_t groups) {
  static_assert(kLargestFactor == 8);
  switch (factor) {
    case 1:
      return AddGroups<kGroup, 1>(columns, sums, groups);
    case 2:
      return AddGroups<kGroup, 2>(columns, sums, groups);
    case 3:
      return AddGroups<kGroup, 3>(columns, sums, groups);
    case 4:
      return AddGroups<kGroup, 4>(columns, sums, groups);
    case 5:
      return AddGroups<kGroup, 5>(columns, sums, groups);
    case 6:
      return AddGroups<kGroup, 6>(columns, sums, groups);
    case 7:
      return AddGroups<kGroup, 7>(columns, sums, groups);
    default:
      return AddGroups<kGroup, 8>(columns, sums, groups);
  }
}

struct Job {
  const BinningKernels* vectors;  // null for plain code
  size_t factorX;
  size_t factorY;
  BinningMode mode;
  int32_t maximum;

  void Finish(int32_t* sums, size_t count) const {
    if (mode == BinningMode::Sum) {
      for (size_t i = 0; i < count; ++i) sums[i] = std::min(sums[i], maximum);
      return;
    }
    // Compilers have vectors of this division, and not of one of integers. It is exact: sums are below 2^24, and a
    // quotient that is not whole is further from the next whole number than a rounding reaches.
    const auto divisor = static_cast<float>(factorX * factorY);
    for (size_t i = 0; i < count; ++i) sums[i] = static_cast<int32_t>(static_cast<float>(sums[i]) / divisor);
  }
};

// One line of the output, of as many groups, from input lines that are a step apart.
template <class Groups>
void BinLine(const Job& job, const uint8_t* input, size_t step, uint8_t* output, size_t outputGroups) {
  constexpr size_t kSamples = Groups::kSamples;
  size_t first = 0;
  if (job.vectors != nullptr && job.factorX == 2) {
    first = Groups::BinPairs(*job.vectors, {input, step, job.factorY, output, outputGroups,
                                            job.mode == BinningMode::Average, static_cast<uint16_t>(job.maximum)});
  }
  typename Groups::ColumnSum columns[kBlock];
  int32_t sums[kBlock];
  const size_t groupsAtATime = kBlock / (kSamples * job.factorX);
  for (; first < outputGroups; first += groupsAtATime) {
    const size_t groups = std::min(groupsAtATime, outputGroups - first);
    const size_t columnGroups = groups * job.factorX;
    std::fill_n(columns, columnGroups * kSamples, typename Groups::ColumnSum{0});
    for (size_t i = 0; i < job.factorY; ++i) {
      Groups::AddTo(columns, input + i * step + first * job.factorX * Groups::kBytes, columnGroups);
    }
    AddGroups<kSamples>(job.factorX, columns, sums, groups);
    job.Finish(sums, groups * kSamples);
    Groups::Store(sums, job.maximum, output + first * Groups::kBytes, groups);
  }
}

template <class Groups>
void BinPixels(const Job& job, const IfcImage& input, IfcImage& output) {
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const Size2D size = output.Area().size;
  for (size_t y = 0; y < size.height; ++y) {
    BinLine<Groups>(job, in[y * job.factorY], in.step, out[y], size.width);
  }
}

// The lines of a block are two apart, as its columns are.
template <class Sample>
void BinMosaic(const Job& job, const IfcImage& input, IfcImage& output) {
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const Size2D size = output.Area().size;
  for (size_t y = 0; y < size.height; ++y) {
    BinLine<SampleGroups<Sample, 2>>(job, in[2 * (y / 2 * job.factorY) + y % 2], 2 * in.step, out[y], size.width / 2);
  }
}

template <class Sample>
void BinSamples(const Job& job, const IfcImage& input, IfcImage& output) {
  if (PixelFormatInfo_IsBayered(input.PixelFormat())) return BinMosaic<Sample>(job, input, output);
  switch (input.NumChannels()) {
    case 1:
      return BinPixels<SampleGroups<Sample, 1>>(job, input, output);
    case 3:
      return BinPixels<SampleGroups<Sample, 3>>(job, input, output);
    default:
      return BinPixels<SampleGroups<Sample, 4>>(job, input, output);
  }
}

constexpr size_t RoundDown(size_t value, size_t multiple) { return value / multiple * multiple; }

}  // namespace

Binning::Binning(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool, const ProcessorFeatures& features)
    : pool_(std::move(pool)), set_(InstructionSetOf(features)) {}

bool Binning::IsFormatSupported(PixelFormatId format) {
  const std::optional<FormatFacts> facts = FindFacts(format);
  return facts && facts->IsPublic() && (!facts->IsPacked() || format == PixelFormatId::RGB10p32);
}

void Binning::SetBinningX(uint8_t factor) {
  RequireArgument(isFactor(factor), "void img::processing::Binning::SetBinningX(uint8_t)",
                  "img::processing::Binning::SetBinningX: binning value not supported!");
  binningX_ = factor;
}

void Binning::SetBinningY(uint8_t factor) {
  // Intended: the text names the other setter.
  RequireArgument(isFactor(factor), "void img::processing::Binning::SetBinningY(uint8_t)",
                  "img::processing::Binning::SetBinningX: binning value not supported!");
  binningY_ = factor;
}

void Binning::SetMode(BinningMode mode) {
  RequireArgument(mode == BinningMode::Average || mode == BinningMode::Sum,
                  "void img::processing::Binning::SetMode(img::processing::BinningMode)",
                  "img::processing::Binning::SetMode: mode not supported!");
  binningMode_ = mode;
}

Size2D Binning::ExpectedOutputSize(Size2D size, PixelFormatId format) const {
  RequireArgument(
      IsFormatSupported(format),
      "img::Size2D img::processing::Binning::ExpectedOutputSize(const img::Size2D, const img::PixelFormatId) const",
      "img::processing::Binning::ExpectedOutputSize: pixelFormat value not supported!");
  const size_t width = size.width / binningX_;
  const size_t height = size.height / binningY_;
  if (PixelFormatInfo_IsBayered(format)) return {RoundDown(width, 8), RoundDown(height, 4)};
  return {RoundDown(width, 4), RoundDown(height, 2)};
}

std::shared_ptr<IfcImage> Binning::Process(const IfcImage& image) const {
  constexpr const char* kLocation =
      "std::shared_ptr<img::IfcImage> img::processing::Binning::Process(const img::IfcImage &) const";
  const PixelFormatId format = image.PixelFormat();
  RequireSupportedFormat(IsFormatSupported(format), format, kLocation);
  if (binningX_ == 1 && binningY_ == 1) return image.Clone(*pool_);

  const Size2D size = ExpectedOutputSize(image.Area().size, format);
  RequireArgument(size.width != 0 && size.height != 0, kLocation,
                  "img::processing::Binning::Process: The image is too small!");
  std::shared_ptr<IfcImage> output = pool_->AllocBuffer(format, size)->CreateImage();
  const Job job{FindBinningKernels(set_), binningX_, binningY_, binningMode_,
                static_cast<int32_t>(PixelFormatInfo_ComponentMaxValue(format))};
  if (format == PixelFormatId::RGB10p32) {
    BinPixels<WordGroups>(job, image, *output);
  } else if (PixelFormatInfo_ComponentSignificantBits(format) == 8) {
    BinSamples<uint8_t>(job, image, *output);
  } else {
    BinSamples<uint16_t>(job, image, *output);
  }
  return output;
}

}  // namespace img::processing
