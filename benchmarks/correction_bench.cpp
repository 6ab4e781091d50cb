// Corrections of pixel values, in place as an application does them before it converts, hot pixels, and binning.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/exported_calls.h"
#include "benchmarks/image_work.h"
#include "benchmarks/parameters.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

// What corrects, with its handle. Each benchmark makes its own and ends it.
using InPlace = std::function<void(const Image& image)>;
using Making = std::function<void(const Image& image, Image& output)>;

void RunInPlace(benchmark::State& state, const std::string& operation, const std::function<InPlace()>& make,
                PixelFormatId format, const Size2D& size) {
  const InPlace correct = make();
  std::vector<uint8_t> picture = MakeFrame(format, size);
  MeasureImageWork(state, {.operation = operation,
                           .picture = picture,
                           .size = size,
                           .run = [&] { correct(ImageOver(picture, format, size)); },
                           .changesPicture = true,
                           .result = [&] { return std::span<const uint8_t>(picture); },
                           .resultFormat = format,
                           .resultSize = size});
}

void RunMaking(benchmark::State& state, const std::string& operation, const std::function<Making()>& make,
               PixelFormatId format, const Size2D& size) {
  const Making process = make();
  std::vector<uint8_t> picture = MakeFrame(format, size);
  Image output;
  const auto run = [&] { process(ImageOver(picture, format, size), output); };
  run();
  MeasureImageWork(state, {.operation = operation,
                           .picture = picture,
                           .size = size,
                           .run = run,
                           .writtenBytes = BytesOf(output).size(),
                           .result = [&] { return BytesOf(output); },
                           .resultFormat = format,
                           .resultSize = SizeOf(output)});
}

// Registers an operation on images of a format.
template <class Run, class Make>
void Add(FrameSizes sizes, Run run, const std::string& name, PixelFormatId format, const Make& make) {
  const std::string nameAndFormat = name + "/" + img::PixelFormatInfo_Name(format);
  for (const FrameSize& frame : sizes) {
    Register(nameAndFormat, frame.Name(), frame.rounds,
             [=](benchmark::State& state) { run(state, nameAndFormat, make, format, frame.size); });
  }
}

InPlace MakeGain() {
  const auto gain = std::make_shared<tools::Gain>();
  Require(KORVEL_Gain_Construct(gain->Out()));
  Require(KORVEL_Gain_SetMasterGainValue(gain->Get(), &kGains.master));
  Require(KORVEL_Gain_SetRedGainValue(gain->Get(), &kGains.red));
  Require(KORVEL_Gain_SetGreenGainValue(gain->Get(), &kGains.green));
  Require(KORVEL_Gain_SetBlueGainValue(gain->Get(), &kGains.blue));
  return [gain](const Image& image) { Require(KORVEL_Gain_ProcessInPlace(gain->Get(), image.Get())); };
}

InPlace MakeGamma() {
  const auto corrector = std::make_shared<tools::GammaCorrector>();
  Require(KORVEL_GammaCorrector_Construct(corrector->Out()));
  Require(KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector->Get(), &kGamma));
  return
      [corrector](const Image& image) { Require(KORVEL_GammaCorrector_ProcessInPlace(corrector->Get(), image.Get())); };
}

InPlace MakeColorCorrection() {
  const auto corrector = std::make_shared<tools::ColorCorrector>();
  Require(KORVEL_ColorCorrector_Construct(corrector->Out()));
  Require(KORVEL_ColorCorrector_SetColorCorrectionFactors(corrector->Get(), kFactors.data()));
  return
      [corrector](const Image& image) { Require(KORVEL_ColorCorrector_ProcessInPlace(corrector->Get(), image.Get())); };
}

Making MakeHotpixelCorrection() {
  const auto corrector = std::make_shared<tools::HotpixelCorrector>();
  Require(KORVEL_AdaptiveHotpixelCorrector_Construct(corrector->Out()));
  return [corrector](const Image& image, Image& output) {
    Require(KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(corrector->Get(), image.Get(), output.Out()));
  };
}

Making MakeBinning(KORVEL_BINNING_MODE mode) {
  constexpr uint8_t kTwo = 2;
  const auto binning = std::make_shared<tools::Binning>();
  Require(KORVEL_Binning_Construct(binning->Out()));
  Require(KORVEL_Binning_SetBinningX(binning->Get(), &kTwo));
  Require(KORVEL_Binning_SetBinningY(binning->Get(), &kTwo));
  Require(KORVEL_Binning_SetBinningMode(binning->Get(), &mode));
  return [binning](const Image& image, Image& output) {
    Require(KORVEL_Binning_Process(binning->Get(), image.Get(), output.Out()));
  };
}

}  // namespace

void RegisterCorrections(FrameSizes sizes) {
  using enum PixelFormatId;
  for (const PixelFormatId format : {Mono8, BayerRG8, Mono12, BayerRG12}) {
    Add(sizes, RunInPlace, "gain_in_place", format, MakeGain);
  }
  for (const PixelFormatId format : {RGB8, BGRa8, Mono12}) {
    Add(sizes, RunInPlace, "gamma_in_place", format, MakeGamma);
  }
  for (const PixelFormatId format : {BGRa8, RGB10p32, RGB8}) {
    Add(sizes, RunInPlace, "color_in_place", format, MakeColorCorrection);
  }
  for (const PixelFormatId format : {BayerRG8, Mono8, BayerRG12}) {
    Add(sizes, RunMaking, "hotpixels", format, MakeHotpixelCorrection);
  }
  for (const PixelFormatId format : {Mono8, BayerRG8, RGB8}) {
    Add(sizes, RunMaking, "binning_average_2x2", format, [] { return MakeBinning(KORVEL_BINNING_MODE_Average); });
  }
  Add(sizes, RunMaking, "binning_sum_2x2", Mono8, [] { return MakeBinning(KORVEL_BINNING_MODE_Sum); });
}

}  // namespace korvel::benchmarks
