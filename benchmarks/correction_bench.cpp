#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "api/buffer_pools.h"
#include "benchmarks/plain_corrections.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "core/processor_features.h"
#include "processing/correction/binning.h"
#include "processing/correction/color_corrector.h"
#include "processing/correction/gain.h"
#include "processing/correction/gamma_corrector.h"

namespace korvel::benchmarks {
namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::Size2D;

constexpr PlainGains kGains{1.5f, 1.25f, 1.0f, 1.75f};
constexpr float kGamma = 2.2f;
constexpr std::array<float, 9> kFactors{1.6f, -0.4f, -0.2f, -0.3f, 1.5f, -0.2f, 0.1f, -0.6f, 1.5f};

// Makes a new image, in memory that is there from the second time on.
using Operation = std::function<std::shared_ptr<IfcImage>(const IfcImage& input)>;
using Plain = std::function<void(const uint8_t* input, const Size2D& size, uint8_t* output, const Size2D& outputSize)>;

struct Case {
  PixelFormatId format;
  Operation operation;
  Plain plain;
  Agreement agreement;
};

std::shared_ptr<img::buffer::IfcMultiFormatBufferPool> MakePool() {
  return internal::MakeBufferPool(internal::kBuffersOfAnOperation);
}

void Run(benchmark::State& state, const Case& benchmarkCase, const Size2D& size) {
  std::vector<uint8_t> input = MakeFrame(benchmarkCase.format, size);
  const std::unique_ptr<IfcImage> source =
      img::buffer::RawImageBuffer::CreateBuffer(benchmarkCase.format, input.data(), size)->CreateImage();
  std::shared_ptr<IfcImage> result = benchmarkCase.operation(*source);
  const Size2D resultSize = result->Area().size;
  const uint8_t* const pixels = result->PixelPointer(0, 0);

  // Starts from the result for the sake of what neither writes.
  std::vector<uint8_t> expected(pixels, pixels + result->ByteCount());
  const auto runPlain = [&] { benchmarkCase.plain(input.data(), size, expected.data(), resultSize); };
  runPlain();
  if (const auto difference =
          FindDifference(pixels, expected.data(), benchmarkCase.format, resultSize, benchmarkCase.agreement)) {
    state.SkipWithError(difference->c_str());
    return;
  }
  result.reset();

  Measure(state, {.subject = [&] { benchmarkCase.operation(*source); },
                  .peer = runPlain,
                  .read = input,
                  .written = expected,
                  .pixels = size.width * size.height});
}

void Add(const std::string& name, const Case& benchmarkCase) {
  for (const FrameSize& frame : kFrameSizes) {
    Register(name + "/" + img::PixelFormatInfo_Name(benchmarkCase.format) + "/" + frame.Name(), frame.rounds,
             [=](benchmark::State& state) { Run(state, benchmarkCase, frame.size); });
  }
}

template <PixelFormatId format>
void AddGain() {
  const auto gain = std::make_shared<img::processing::Gain>(MakePool());
  gain->SetMasterGainValue(kGains.master);
  gain->SetRedGainValue(kGains.red);
  gain->SetGreenGainValue(kGains.green);
  gain->SetBlueGainValue(kGains.blue);
  Add("gain", {format,
               [gain](const IfcImage& image) { return gain->applyGain(image); },
               [](const uint8_t* input, const Size2D& size, uint8_t* output, const Size2D&) {
                 PlainGain<format>(input, size, kGains, output);
               },
               {}});
}

template <PixelFormatId format>
void AddGamma() {
  const auto corrector = std::make_shared<img::processing::GammaCorrector>(MakePool());
  corrector->SetGammaCorrectionValue(kGamma);
  Add("gamma", {format,
                [corrector](const IfcImage& image) { return corrector->applyGammaCorrection(image); },
                [](const uint8_t* input, const Size2D& size, uint8_t* output, const Size2D&) {
                  PlainGamma<format>(input, size, kGamma, output);
                },
                {}});
}

// The simple path is that of a processor without vectors. The vector path rounds the ends of lines in another way,
// which the peer does not follow.
template <PixelFormatId format, bool kHasVectors>
void AddColorCorrection() {
  const img::ProcessorFeatures features{.avx = kHasVectors, .avx2 = kHasVectors};
  const auto corrector = std::make_shared<img::processing::ColorCorrector>(MakePool(), features);
  corrector->SetFactors(kFactors);
  Add(kHasVectors ? "color_vector" : "color_simple",
      {format,
       [corrector](const IfcImage& image) { return corrector->Process(image); },
       [](const uint8_t* input, const Size2D& size, uint8_t* output, const Size2D&) {
         PlainColorCorrection<format, kHasVectors>(input, size, kFactors, output);
       },
       {.margin = size_t{kHasVectors ? 8 : 0}}});
}

template <PixelFormatId format>
void AddBinning(uint8_t x, uint8_t y, img::processing::BinningMode mode) {
  const bool isSum = mode == img::processing::BinningMode::Sum;
  const auto binning = std::make_shared<img::processing::Binning>(MakePool());
  binning->SetBinningX(x);
  binning->SetBinningY(y);
  binning->SetMode(mode);
  const std::string factors = std::to_string(x) + "x" + std::to_string(y);
  Add((isSum ? "binning_sum_" : "binning_average_") + factors,
      {format,
       [binning](const IfcImage& image) { return binning->Process(image); },
       [=](const uint8_t* input, const Size2D& size, uint8_t* output, const Size2D& outputSize) {
         PlainBinning<format>(input, size, {x, y, isSum}, outputSize, output);
       },
       {}});
}

}  // namespace

void RegisterCorrections() {
  using enum PixelFormatId;
  using img::processing::BinningMode;

  AddGain<Mono8>();
  AddGain<Mono12>();
  AddGain<BayerRG8>();
  AddGain<BayerRG12>();

  AddGamma<Mono8>();
  AddGamma<BayerRG12>();
  AddGamma<RGB8>();
  AddGamma<BGRa8>();
  AddGamma<RGB12>();
  AddGamma<RGB10p32>();

  AddColorCorrection<RGB8, true>();
  AddColorCorrection<BGR8, true>();
  AddColorCorrection<RGBa8, true>();
  AddColorCorrection<BGRa8, true>();
  AddColorCorrection<RGB10, true>();
  AddColorCorrection<RGB12, true>();
  AddColorCorrection<RGB10p32, true>();
  AddColorCorrection<RGB8, false>();
  AddColorCorrection<BGRa8, false>();
  AddColorCorrection<BGRa12, false>();

  AddBinning<Mono8>(2, 2, BinningMode::Sum);
  AddBinning<Mono8>(4, 4, BinningMode::Sum);
  AddBinning<Mono8>(2, 2, BinningMode::Average);
  AddBinning<Mono12>(2, 2, BinningMode::Sum);
  AddBinning<BayerRG8>(2, 2, BinningMode::Sum);
  AddBinning<BayerRG12>(2, 2, BinningMode::Sum);
  AddBinning<RGB8>(2, 2, BinningMode::Sum);
  AddBinning<BGRa8>(2, 2, BinningMode::Average);
}

}  // namespace korvel::benchmarks
