// What a call costs beside its pixels. The same code with a record of a processor without vectors is what it is
// compared with.

#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "api/buffer_pools.h"
#include "benchmarks/exported_calls.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "core/processor_features.h"
#include "processing/conversion/image_converter.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;
using img::processing::ImageConverter;

constexpr int kRounds = 41;
constexpr const char* kWithoutVectors = "korvel without vectors";

std::unique_ptr<ImageConverter> MakeConverter(const img::ProcessorFeatures& features) {
  return std::make_unique<ImageConverter>(internal::MakeBufferPool(internal::kBuffersOfAnOperation), features);
}

void RunConstruction(benchmark::State& state) {
  Measure(state, {.run = [] { benchmark::DoNotOptimize(MakeConverter(img::ProcessorFeatures::OfThisProcessor())); },
                  .peers = {{.name = kWithoutVectors,
                             .run = [] { benchmark::DoNotOptimize(MakeConverter(img::ProcessorFeatures())); }}}});
}

// The exported call, with a handle for the input and both handles' end, against the conversion alone.
void RunConversion(benchmark::State& state) {
  constexpr PixelFormatId kIn = PixelFormatId::BayerRG8;
  constexpr PixelFormatId kOut = PixelFormatId::BGRa8;
  const Size2D& size = kSmallSize.size;
  std::vector<uint8_t> picture = MakeFrame(kIn, size);
  tools::ImageConverter converter;
  Require(KORVEL_ImageConverter_Construct(converter.Out()));
  Image output;
  const std::unique_ptr<ImageConverter> scalar = MakeConverter(img::ProcessorFeatures());
  scalar->SetConversionMode(KORVEL_CONVERSION_MODE_Fast);
  std::shared_ptr<img::IfcImage> scalarOutput;
  const std::shared_ptr<img::IfcImage> scalarSource =
      img::buffer::RawImageBuffer::CreateBuffer(kIn, picture.data(), size)->CreateImage();
  const auto convert = [&] {
    const Image source = ImageOver(picture, kIn, size);
    Require(KORVEL_ImageConverter_Convert(converter.Get(), source.Get(), Id(kOut), output.Out()));
  };
  const auto convertWithoutVectors = [&] {
    scalarOutput.reset();
    scalarOutput = scalar->ConvertPixelFormat(scalarSource, kOut);
  };

  // Borders follow another rule without vectors.
  convert();
  convertWithoutVectors();
  if (FindDifference(BytesOf(output).data(), scalarOutput->PixelPointer(0, 0), kOut, size, {.margin = 2})) {
    state.SkipWithError("differs from its peer");
    return;
  }
  Measure(state, {.run = convert,
                  .peers = {{.name = kWithoutVectors,
                             .run = convertWithoutVectors,
                             .isSame = false,
                             .remark = "same within borders"}},
                  .pixels = size.width * size.height});
}

// The least that a call by handle has to do, beside a look-up that keeps the object alive.
void RunLookUp(benchmark::State& state) {
  std::vector<uint8_t> memory = MakeFrame(PixelFormatId::Mono8, kSmallSize.size);
  const Image image = ImageOver(memory, PixelFormatId::Mono8, kSmallSize.size);
  const auto object = std::make_shared<Size2D>(kSmallSize.size);
  std::mutex mutex;
  std::unordered_map<const void*, std::shared_ptr<Size2D>> objects{{object.get(), object}};
  const auto findObject = [&](const void* handle) {
    const std::lock_guard lock(mutex);
    const auto found = objects.find(handle);
    return found == objects.end() ? nullptr : found->second;
  };
  constexpr size_t kCalls = 1000;
  Measure(state, {.run =
                      [&] {
                        for (size_t i = 0; i < kCalls; ++i) {
                          size_t width = 0;
                          Require(KORVEL_Image_GetWidth(image.Get(), &width));
                          benchmark::DoNotOptimize(width);
                        }
                      },
                  .peers = {{.name = "a lock and a map",
                             .run =
                                 [&] {
                                   for (size_t i = 0; i < kCalls; ++i) {
                                     size_t width = findObject(object.get())->width;
                                     benchmark::DoNotOptimize(width);
                                   }
                                 }}},
                  .callsInRun = kCalls});
}

}  // namespace

void RegisterSmallWork() {
  Register("construct_converter", kSmallSize.Name(), kRounds, RunConstruction);
  Register("convert_small/BayerRG8/BGRa8", kSmallSize.Name(), kRounds, RunConversion);
  Register("look_up_handle", kSmallSize.Name(), kRounds, RunLookUp);
}

}  // namespace korvel::benchmarks
