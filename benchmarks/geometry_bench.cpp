#include <cstring>
#include <functional>
#include <memory>
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

using Transformer = KORVEL_IMAGE_TRANSFORMER_HANDLE;

struct Move {
  std::string name;
  std::function<KORVEL_RETURN_CODE(Transformer, KORVEL_IMAGE_HANDLE, KORVEL_IMAGE_HANDLE*)> run;
  std::function<KORVEL_RETURN_CODE(Transformer, KORVEL_IMAGE_HANDLE)> runInPlace;
  bool isQuarterTurn = false;
};

Move Rotation(uint32_t angle) {
  return {.name = "rotate_" + std::to_string(angle),
          .run =
              [=](Transformer transformer, KORVEL_IMAGE_HANDLE image, KORVEL_IMAGE_HANDLE* output) {
                return KORVEL_ImageTransformer_Rotate(transformer, image, output, angle);
              },
          .runInPlace =
              [=](Transformer transformer, KORVEL_IMAGE_HANDLE image) {
                return KORVEL_ImageTransformer_RotateInPlace(transformer, image, angle);
              },
          .isQuarterTurn = angle != KORVEL_ROTATION_ANGLE_Degree180};
}

std::shared_ptr<tools::ImageTransformer> MakeTransformer() {
  auto transformer = std::make_shared<tools::ImageTransformer>();
  Require(KORVEL_ImageTransformer_Construct(transformer->Out()));
  return transformer;
}

void RunMaking(benchmark::State& state, const std::string& operation, const Move& move, PixelFormatId format,
               const Size2D& size) {
  std::vector<uint8_t> picture = MakeFrame(format, size);
  const auto transformer = MakeTransformer();
  Image output;
  MeasureImageWork(state, {.operation = operation,
                           .picture = picture,
                           .size = size,
                           .run =
                               [&] {
                                 const Image source = ImageOver(picture, format, size);
                                 Require(move.run(transformer->Get(), source.Get(), output.Out()));
                               },
                           .writtenBytes = picture.size(),
                           .result = [&] { return BytesOf(output); },
                           .resultFormat = format,
                           .resultSize = move.isQuarterTurn ? Size2D{size.height, size.width} : size});
}

// Nothing turns pictures in place by a quarter; what an application can do is to copy back what was turned.
PeerMethod TurnAndCopyBack(const std::string& operation, const Move& move, PixelFormatId format) {
  return {operation, "korvel's own turn and a copy back", [=](const PeerMemory& memory) -> std::function<void()> {
            return [=, transformer = MakeTransformer(), output = std::make_shared<Image>()] {
              Image source;
              Require(KORVEL_Image_ConstructFromBuffer(Id(format), memory.picture, ByteCount(format, memory.size),
                                                       memory.size.width, memory.size.height, source.Out()));
              Require(move.run(transformer->Get(), source.Get(), output->Out()));
              const std::span<const uint8_t> turned = BytesOf(*output);
              std::memcpy(memory.picture, turned.data(), turned.size());
            };
          }};
}

void RunInPlace(benchmark::State& state, const std::string& operation, const Move& move, PixelFormatId format,
                const Size2D& size) {
  std::vector<uint8_t> picture = MakeFrame(format, size);
  const auto transformer = MakeTransformer();
  ImageWork work{.operation = operation,
                 .picture = picture,
                 .size = size,
                 .run =
                     [&] {
                       const Image image = ImageOver(picture, format, size);
                       Require(move.runInPlace(transformer->Get(), image.Get()));
                     },
                 .changesPicture = true,
                 .result = [&] { return std::span<const uint8_t>(picture); },
                 .resultFormat = format,
                 .resultSize = move.isQuarterTurn ? Size2D{size.height, size.width} : size};
  if (move.isQuarterTurn) work.morePeers.push_back(TurnAndCopyBack(operation, move, format));
  MeasureImageWork(state, work);
}

template <class Run>
void Add(FrameSizes sizes, Run run, const std::string& name, const Move& move, PixelFormatId format) {
  const std::string operation = name + "/" + img::PixelFormatInfo_Name(format);
  for (const FrameSize& frame : sizes) {
    Register(operation, frame.Name(), frame.rounds,
             [=](benchmark::State& state) { run(state, operation, move, format, frame.size); });
  }
}

void AddBoth(FrameSizes sizes, const Move& move, std::initializer_list<PixelFormatId> formats) {
  for (const PixelFormatId format : formats) Add(sizes, RunMaking, move.name, move, format);
  for (const PixelFormatId format : formats) Add(sizes, RunInPlace, move.name + "_in_place", move, format);
}

}  // namespace

void RegisterGeometry(FrameSizes sizes) {
  using enum PixelFormatId;
  AddBoth(
      sizes,
      {"mirror_left_right", KORVEL_ImageTransformer_MirrorLeftRight, KORVEL_ImageTransformer_MirrorLeftRightInPlace},
      {Mono8, RGB8, BGRa8});
  AddBoth(sizes, {"mirror_up_down", KORVEL_ImageTransformer_MirrorUpDown, KORVEL_ImageTransformer_MirrorUpDownInPlace},
          {Mono8, RGB8, BGRa8});
  AddBoth(sizes,
          {"mirror_both", KORVEL_ImageTransformer_MirrorUpDownLeftRight,
           KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace},
          {Mono8, RGB8, BGRa8});
  Add(sizes, RunMaking, "rotate_180", Rotation(KORVEL_ROTATION_ANGLE_Degree180), BayerRG12);
  AddBoth(sizes, Rotation(KORVEL_ROTATION_ANGLE_Degree90), {Mono8, BGRa8});
  AddBoth(sizes, Rotation(KORVEL_ROTATION_ANGLE_Degree270), {Mono8, BGRa8});
}

}  // namespace korvel::benchmarks
