#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "processing/geometry/image_mirror.h"
#include "processing/geometry/image_rotation.h"

namespace korvel::benchmarks {
namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::Point2D;
using img::Size2D;

// Where the pixel of a result comes from, in an image of that size.
using Origin = Point2D (*)(const Point2D& pixel, const Size2D& size);

struct Move {
  std::string name;
  bool isQuarterTurn;
  Origin origin;
  std::function<void(const IfcImage& input, IfcImage& output)> run;
  std::function<void(IfcImage& image)> runInPlace;
};

template <class Module, class InplaceModule>
Move MakeMove(const std::string& name, bool isQuarterTurn, Origin origin) {
  return {name, isQuarterTurn, origin,
          [module = std::make_shared<Module>()](const IfcImage& input, IfcImage& output) {
            module->Process(input, output);
          },
          [module = std::make_shared<InplaceModule>()](IfcImage& image) { module->Process(image); }};
}

// One pixel after the other.
void PlainMove(const uint8_t* input, const Size2D& size, size_t pixelBytes, const Move& move, uint8_t* output) {
  const Size2D moved = move.isQuarterTurn ? Size2D{size.height, size.width} : size;
  for (size_t y = 0; y < moved.height; ++y) {
    for (size_t x = 0; x < moved.width; ++x) {
      const Point2D from = move.origin({x, y}, size);
      std::memcpy(output + (y * moved.width + x) * pixelBytes, input + (from.y * size.width + from.x) * pixelBytes,
                  pixelBytes);
    }
  }
}

std::unique_ptr<IfcImage> ImageOver(std::vector<uint8_t>& memory, PixelFormatId format, const Size2D& size) {
  return img::buffer::RawImageBuffer::CreateBuffer(format, memory.data(), size)->CreateImage();
}

void Run(benchmark::State& state, const Move& move, PixelFormatId format, const Size2D& size, bool isInPlace) {
  const Size2D moved = move.isQuarterTurn ? Size2D{size.height, size.width} : size;
  std::vector<uint8_t> input = MakeFrame(format, size);
  std::vector<uint8_t> expected(input.size());
  std::vector<uint8_t> output = isInPlace ? input : expected;
  const std::unique_ptr<IfcImage> source = ImageOver(input, format, size);
  const std::unique_ptr<IfcImage> target = ImageOver(output, format, isInPlace ? size : moved);
  const auto subject = [&] {
    if (isInPlace) {
      move.runInPlace(*target);
    } else {
      move.run(*source, *target);
    }
  };
  const auto peer = [&] {
    PlainMove(input.data(), size, source->PixelByteCount(), move, expected.data());
    if (isInPlace) std::memcpy(input.data(), expected.data(), expected.size());
  };

  subject();
  peer();
  if (const auto difference = FindDifference(output.data(), expected.data(), format, moved, {})) {
    state.SkipWithError(difference->c_str());
    return;
  }
  Measure(state,
          {.subject = subject, .peer = peer, .read = input, .written = expected, .pixels = size.width * size.height});
}

}  // namespace

void RegisterGeometry() {
  namespace p = img::processing;
  const Move moves[] = {
      MakeMove<p::ImageMirrorX, p::ImageMirrorX_Inplace>("mirror_left_right", false,
                                                         [](const Point2D& pixel, const Size2D& size) {
                                                           return Point2D{size.width - 1 - pixel.x, pixel.y};
                                                         }),
      MakeMove<p::ImageMirrorY, p::ImageMirrorY_Inplace>("mirror_up_down", false,
                                                         [](const Point2D& pixel, const Size2D& size) {
                                                           return Point2D{pixel.x, size.height - 1 - pixel.y};
                                                         }),
      MakeMove<p::ImageRotate180, p::ImageRotate180_Inplace>(
          "rotate180", false,
          [](const Point2D& pixel, const Size2D& size) {
            return Point2D{size.width - 1 - pixel.x, size.height - 1 - pixel.y};
          }),
      MakeMove<p::ImageRotateCounterClockwise90, p::ImageRotateCounterClockwise90_Inplace>(
          "rotate90", true,
          [](const Point2D& pixel, const Size2D& size) {
            return Point2D{size.width - 1 - pixel.y, pixel.x};
          }),
      MakeMove<p::ImageRotateClockwise90, p::ImageRotateClockwise90_Inplace>(
          "rotate270", true,
          [](const Point2D& pixel, const Size2D& size) {
            return Point2D{pixel.y, size.height - 1 - pixel.x};
          }),
  };
  // One for each size of a pixel.
  constexpr PixelFormatId kFormats[] = {PixelFormatId::Mono8, PixelFormatId::Mono12, PixelFormatId::BGR8,
                                        PixelFormatId::BGRa8, PixelFormatId::BGR12,  PixelFormatId::BGRa12};
  for (const Move& move : moves) {
    for (const bool isInPlace : {false, true}) {
      for (const PixelFormatId format : kFormats) {
        for (const FrameSize& frame : kFrameSizes) {
          const std::string name =
              move.name + (isInPlace ? "_in_place/" : "/") + img::PixelFormatInfo_Name(format) + "/" + frame.Name();
          Register(name, frame.rounds,
                   [=](benchmark::State& state) { Run(state, move, format, frame.size, isInPlace); });
        }
      }
    }
  }
}

}  // namespace korvel::benchmarks
