// Conversions, each with all that an application does for a frame: a handle for the camera's memory, the call, and both
// handles' end.

#include <string>
#include <vector>

#include "benchmarks/exported_calls.h"
#include "benchmarks/image_work.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

struct Conversion {
  PixelFormatId in;
  PixelFormatId out;
  KORVEL_CONVERSION_MODE mode = KORVEL_CONVERSION_MODE_Fast;
  bool changesPicture = false;

  std::string Name() const {
    return "convert_mode" + std::to_string(mode) + "/" + img::PixelFormatInfo_Name(in) + "/" +
           img::PixelFormatInfo_Name(out);
  }
};

void RunConversion(benchmark::State& state, const Conversion& conversion, const Size2D& size) {
  std::vector<uint8_t> picture = MakeFrame(conversion.in, size);
  ImageConverter converter;
  Require(KORVEL_ImageConverter_Construct(converter.Out()));
  Require(KORVEL_ImageConverter_SetConversionMode(converter.Get(), conversion.mode));
  Image output;
  const auto convert = [&] {
    const Image source = ImageOver(picture, conversion.in, size);
    Require(KORVEL_ImageConverter_Convert(converter.Get(), source.Get(), Id(conversion.out), output.Out()));
  };
  MeasureImageWork(state, {.operation = conversion.Name(),
                           .picture = picture,
                           .size = size,
                           .run = convert,
                           .changesPicture = conversion.changesPicture,
                           .writtenBytes = ByteCount(conversion.out, size),
                           .result = [&] { return BytesOf(output); },
                           .resultFormat = conversion.out,
                           .resultSize = size});
}

void RunClone(benchmark::State& state, const std::string& operation, PixelFormatId format, const Size2D& size) {
  std::vector<uint8_t> picture = MakeFrame(format, size);
  const auto clone = [&] {
    const Image source = ImageOver(picture, format, size);
    Image output;
    Require(KORVEL_Image_Clone(source.Get(), output.Out()));
  };
  MeasureImageWork(
      state, {.operation = operation, .picture = picture, .size = size, .run = clone, .writtenBytes = picture.size()});
}

}  // namespace

void RegisterConversions(FrameSizes sizes) {
  using enum PixelFormatId;
  constexpr KORVEL_CONVERSION_MODE kHighQuality = KORVEL_CONVERSION_MODE_HighQuality;
  constexpr KORVEL_CONVERSION_MODE kClassic = KORVEL_CONVERSION_MODE_Classic;
  const Conversion conversions[] = {
      {BayerRG8, BGRa8},
      {BayerGR8, BGRa8},
      {BayerGB8, BGRa8},
      {BayerBG8, BGRa8},
      {BayerRG8, RGB8},
      {BayerRG8, Mono8},
      {BayerRG8, Mono8, kHighQuality},
      {BayerRG8, Mono8, kClassic},
      {BayerRG8, BGRa8, kHighQuality},
      {BayerRG8, RGB8, kHighQuality},
      {BayerRG8, BGRa8, kClassic},
      {BayerRG10, RGB10p32},
      {BayerRG12, BGRa8},
      {BayerRG12p, BGRa8},
      {BayerRG12g24Qrv, BGRa8},
      {BayerRG10p, BGRa8},
      {BayerRG10g40Qrv, BGRa8},
      {BayerRG12p, BayerRG12},
      {BayerRG12g24Qrv, BayerRG12},
      {BayerRG10p, BayerRG10},
      {BayerRG10g40Qrv, BayerRG10},
      {Mono12p, Mono8},
      {BayerRG12p, RGB12, kHighQuality},
      {Mono12, Mono8},
      {Mono8, BGRa8},
      {.in = RGB8, .out = BGR8, .changesPicture = true},
  };
  for (const Conversion& conversion : conversions) {
    for (const FrameSize& frame : sizes) {
      Register(conversion.Name(), frame.Name(), frame.rounds,
               [=](benchmark::State& state) { RunConversion(state, conversion, frame.size); });
    }
  }
  const std::string clone = "clone/" + img::PixelFormatInfo_Name(BayerRG8);
  for (const FrameSize& frame : sizes) {
    Register(clone, frame.Name(), frame.rounds,
             [=](benchmark::State& state) { RunClone(state, clone, BayerRG8, frame.size); });
  }
}

}  // namespace korvel::benchmarks
