#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/plain_kernels.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "core/processor_features.h"
#include "processing/conversion/bayer_to_color_3x3.h"
#include "processing/conversion/bayer_to_color_5x5.h"
#include "processing/conversion/bayer_to_mono_2x2.h"
#include "processing/conversion/channel_extender.h"
#include "processing/conversion/channel_flipper.h"
#include "processing/conversion/conversion_mode.h"
#include "processing/conversion/convert_pixel_depth.h"
#include "processing/conversion/copy_converter.h"
#include "processing/conversion/debayering_optimized.h"
#include "processing/conversion/unpack_packed.h"

namespace korvel::benchmarks {
namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::Size2D;
using img::processing::DebayeringOptimized;

// A kernel at work: reads the one image and writes the other.
using Kernel = std::function<void(const IfcImage& input, IfcImage& output)>;

struct Case {
  std::string name;
  PixelFormatId in;
  PixelFormatId out;
  Kernel kernel;
  PlainKernel plain;
  Agreement agreement;
};

std::unique_ptr<IfcImage> ImageOver(std::vector<uint8_t>& memory, PixelFormatId format, const Size2D& size) {
  return img::buffer::RawImageBuffer::CreateBuffer(format, memory.data(), size)->CreateImage();
}

void Run(benchmark::State& state, const Case& benchmarkCase, const Size2D& size) {
  const std::vector<uint8_t> frame = MakeFrame(benchmarkCase.in, size);
  std::vector<uint8_t> input = frame;
  std::vector<uint8_t> output(ByteCount(benchmarkCase.out, size));
  std::vector<uint8_t> expected(output.size());
  const std::unique_ptr<IfcImage> source = ImageOver(input, benchmarkCase.in, size);
  const std::unique_ptr<IfcImage> target = ImageOver(output, benchmarkCase.out, size);

  // A module that has no work between two formats does nothing, and would be fast at it.
  benchmarkCase.kernel(*source, *target);
  benchmarkCase.plain(frame.data(), size, expected.data());
  if (const auto difference =
          FindDifference(output.data(), expected.data(), benchmarkCase.out, size, benchmarkCase.agreement)) {
    state.SkipWithError(difference->c_str());
    return;
  }
  input = frame;  // a flip changes it

  Measure(state, {.subject = [&] { benchmarkCase.kernel(*source, *target); },
                  .peer = [&] { benchmarkCase.plain(input.data(), size, expected.data()); },
                  .read = input,
                  .written = output,
                  .pixels = size.width * size.height});
}

void Add(const std::string& kernelName, PixelFormatId in, PixelFormatId out, const Kernel& kernel, PlainKernel plain,
         const Agreement& agreement = {}) {
  const std::string name = kernelName + "/" + img::PixelFormatInfo_Name(in) + "/" + img::PixelFormatInfo_Name(out);
  const Case benchmarkCase{name, in, out, kernel, plain, agreement};
  for (const FrameSize& frame : kFrameSizes) {
    Register(name + "/" + frame.Name(), frame.rounds,
             [=](benchmark::State& state) { Run(state, benchmarkCase, frame.size); });
  }
}

template <class Module>
Kernel MakeKernel() {
  return [module = std::make_shared<Module>()](const IfcImage& input, IfcImage& output) {
    module->Process(input, output);
  };
}

template <PixelFormatId format>
void AddCopy() {
  Add("copy", format, format, MakeKernel<img::processing::CopyConverter>(), PlainCopy<format>);
}

template <class Module, PixelFormatId in, PixelFormatId out>
void AddExtend() {
  Add("extend", in, out, MakeKernel<Module>(), PlainExtend<in, out>);
}

template <PixelFormatId in, PixelFormatId out>
void AddFlip() {
  Add("flip", in, out, MakeKernel<img::processing::ChannelFlipper>(), PlainFlip<in>);
}

template <PixelFormatId in, PixelFormatId out>
void AddDepth() {
  Add("depth", in, out, MakeKernel<img::processing::ConvertPixelDepth>(), PlainDepth<in, out>);
}

template <PixelFormatId in, PixelFormatId out>
void AddUnpack() {
  Add("unpack", in, out, MakeKernel<img::processing::UnpackPacked>(), PlainUnpack<in>);
}

template <PixelFormatId in, PixelFormatId out>
void AddMono2x2() {
  Add("mono_2x2", in, out, MakeKernel<img::processing::BayerToMono2x2Simple>(), PlainMono2x2<in, out>, {.margin = 1});
}

template <class Module, PixelFormatId in, PixelFormatId out>
void AddDemosaic3x3() {
  Add("demosaic_3x3", in, out, MakeKernel<Module>(), PlainDemosaic3x3<in, out>, {.margin = 1});
}

template <class Module, PixelFormatId in, PixelFormatId out>
void AddDemosaic5x5() {
  Add("demosaic_5x5", in, out, MakeKernel<Module>(), PlainDemosaic5x5<in, out>, {.margin = 2});
}

// The fast kernels, whose choice depends on the processor; a record that has what they ask for gives them everywhere.
Kernel MakeFastKernel(PixelFormatId in, PixelFormatId out, uint32_t mode, bool hasAvx2) {
  const img::ProcessorFeatures features{.avx = 1, .avx2 = static_cast<uint8_t>(hasAvx2 ? 1 : 0)};
  return [=, kernel = DebayeringOptimized(features)](const IfcImage& input, IfcImage& output) {
    const Size2D& size = input.Area().size;
    kernel.Convert(input.PixelPointer(0, 0), size.width, size.height, in, output.PixelPointer(0, 0), output.ByteCount(),
                   out, mode);
  };
}

template <PixelFormatId in, PixelFormatId out>
void AddFast() {
  Add("fast", in, out, MakeFastKernel(in, out, img::processing::kConversionModeFast, true), PlainDemosaic3x3<in, out>,
      {.margin = 1});
}

template <PixelFormatId out>
void AddClassic() {
  constexpr PixelFormatId kIn = PixelFormatId::BayerRG8;
  Add("classic", kIn, out, MakeFastKernel(kIn, out, img::processing::kConversionModeClassic, true),
      PlainClassic<kIn, out>, {.margin = 2});
}

// The two forms differ in their rounding at the ends of lines, which the peer does not follow.
void AddLuminance(const char* name, bool hasAvx2) {
  constexpr PixelFormatId kIn = PixelFormatId::BayerRG8;
  constexpr PixelFormatId kOut = PixelFormatId::Mono8;
  Add(name, kIn, kOut, MakeFastKernel(kIn, kOut, img::processing::kConversionModeFast, hasAvx2),
      PlainDemosaic3x3<kIn, kOut>, {.margin = 1, .maximum = 1});
}

}  // namespace

void RegisterModules() {
  using enum PixelFormatId;
  namespace p = img::processing;

  AddCopy<Mono8>();
  AddCopy<BGRa8>();
  AddCopy<RGB12>();

  AddExtend<p::ChannelExtender_BGR, Mono8, BGR8>();
  AddExtend<p::ChannelExtender_RGB, Mono8, RGB8>();
  AddExtend<p::ChannelExtender_BGRa, Mono8, BGRa8>();
  AddExtend<p::ChannelExtender_RGBa, Mono8, RGBa8>();
  AddExtend<p::ChannelExtender_BGR, Mono12, BGR12>();
  AddExtend<p::ChannelExtender_RGB, Mono12, RGB12>();
  AddExtend<p::ChannelExtender_BGRa, Mono12, BGRa12>();
  AddExtend<p::ChannelExtender_RGBa, Mono12, RGBa12>();

  AddFlip<RGB8, BGR8>();
  AddFlip<BGR8, RGB8>();
  AddFlip<BGRa8, RGBa8>();
  AddFlip<RGB12, BGR12>();
  AddFlip<BGRa12, RGBa12>();

  AddDepth<Mono8, Mono10>();
  AddDepth<Mono8, Mono12>();
  AddDepth<Mono10, Mono8>();
  AddDepth<Mono10, Mono12>();
  AddDepth<Mono12, Mono8>();
  AddDepth<Mono12, Mono10>();
  AddDepth<RGB12, RGB8>();
  AddDepth<RGBa8, RGBa12>();

  AddUnpack<BayerRG10p, BayerRG10>();
  AddUnpack<BayerRG12p, BayerRG12>();
  AddUnpack<RGB10p32, RGB10>();
  AddUnpack<BayerRG10g40Qrv, BayerRG10>();
  AddUnpack<BayerRG12g24Qrv, BayerRG12>();

  AddDemosaic3x3<p::BayerToColor3x3Simple_BGR, BayerRG8, BGR8>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGB, BayerRG8, RGB8>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_BGRa, BayerRG8, BGRa8>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGBa, BayerRG8, RGBa8>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_BGR, BayerRG10, BGR10>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGB, BayerRG10, RGB10>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_BGRa, BayerRG10, BGRa10>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGBa, BayerRG10, RGBa10>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGB10p30, BayerRG10, RGB10p32>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_BGR, BayerRG12, BGR12>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGB, BayerRG12, RGB12>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_BGRa, BayerRG12, BGRa12>();
  AddDemosaic3x3<p::BayerToColor3x3Simple_RGBa, BayerRG12, RGBa12>();

  AddDemosaic5x5<p::BayerToColor5x5Simple_BGR, BayerRG8, BGR8>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGB, BayerRG8, RGB8>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_BGRa, BayerRG8, BGRa8>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGBa, BayerRG8, RGBa8>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_BGR, BayerRG10, BGR10>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGB, BayerRG10, RGB10>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_BGRa, BayerRG10, BGRa10>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGBa, BayerRG10, RGBa10>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGB10p30, BayerRG10, RGB10p32>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_BGR, BayerRG12, BGR12>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGB, BayerRG12, RGB12>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_BGRa, BayerRG12, BGRa12>();
  AddDemosaic5x5<p::BayerToColor5x5Simple_RGBa, BayerRG12, RGBa12>();

  AddMono2x2<BayerRG8, Mono8>();
  AddMono2x2<BayerRG10, Mono10>();
  AddMono2x2<BayerRG12, Mono12>();

  AddFast<BayerRG8, RGB8>();
  AddFast<BayerRG8, BGR8>();
  AddFast<BayerRG8, RGBa8>();
  AddFast<BayerRG8, BGRa8>();
  AddFast<BayerRG10, RGB10p32>();
  AddLuminance("luminance_avx", false);
  AddLuminance("luminance_avx2", true);
  AddClassic<RGB8>();
  AddClassic<BGR8>();
  AddClassic<RGBa8>();
  AddClassic<BGRa8>();
}

}  // namespace korvel::benchmarks
