#include "io/bmp/bmp_output.h"

#include <cstring>
#include <vector>

#include "core/channel_accessor.h"
#include "core/image_lines.h"
#include "core/instruction_set.h"
#include "io/bmp/bmp_writer.h"
#include "io/file_output.h"
#include "processing/conversion/sample_vectors.h"

namespace img::io::bmp {
namespace {

// RGB8 goes out with blue first, RGB10p32 with its first and last channel exchanged.
constexpr bool SwapsRedAndBlue(PixelFormatId format) {
  return format == PixelFormatId::RGB8 || format == PixelFormatId::RGB10p32;
}

// Two pixels as the low six bytes of a number; the two bytes above them come out without a meaning.
constexpr uint64_t SwapTwoPixels(uint64_t pixels) {
  constexpr uint64_t kFirstBytes = 0x00000000FF0000FF;
  constexpr uint64_t kMiddleBytes = kFirstBytes << 8;
  return (pixels & kMiddleBytes) | (pixels & kFirstBytes) << 16 | (pixels >> 16 & kFirstBytes);
}

// Writes a line with red and blue exchanged. Nothing beyond either line is read or written.
template <PixelFormatId formatId>
void SwapRedAndBlue(const uint8_t* __restrict line, size_t byteCount, uint8_t* __restrict swapped) {
  using Accessor = pixel_accessor::ChannelAccessor<formatId>;
  constexpr size_t kStep = kFacts<formatId>.PixelByteCount();
  const auto swapOne = [&](size_t at) {
    const auto pixel = pixel_accessor::LoadPixel<formatId>(line + at);
    typename Accessor::PixelRepr result{};
    Accessor::template Set<0>(result, Accessor::template Get<2>(pixel));
    Accessor::template Set<1>(result, Accessor::template Get<1>(pixel));
    Accessor::template Set<2>(result, Accessor::template Get<0>(pixel));
    pixel_accessor::StorePixel<formatId>(swapped + at, result);
  };
  size_t i = 0;
  if constexpr (kStep == 3) {
    using processing::kSamplesPerStep;
    static const processing::SampleKernels* const vectors =
        processing::FindSampleKernels(InstructionSetOf(ProcessorFeatures::OfThisProcessor()));
    const size_t width = byteCount / kStep;
    if (vectors != nullptr && width > kSamplesPerStep + 1) {
      // Which want a pixel on either side.
      const size_t steps = (width - 2) / kSamplesPerStep;
      swapOne(0);
      vectors->swapBytes(line + kStep, swapped + kStep, nullptr, steps, false);
      i = kStep + steps * kSamplesPerStep * kStep;
    }
    // Each store covers two bytes of the next pixel, which the next store sets right.
    uint64_t pixels = 0;
    for (; i + sizeof pixels <= byteCount; i += 2 * kStep) {
      std::memcpy(&pixels, line + i, sizeof pixels);
      pixels = SwapTwoPixels(pixels);
      std::memcpy(swapped + i, &pixels, sizeof pixels);
    }
  }
  for (; i < byteCount; i += kStep) swapOne(i);
}

template <PixelFormatId formatId>
class BMPOutput final : public FileOutput<formatId, FileFormat::Bmp> {
 public:
  using FileOutput<formatId, FileFormat::Bmp>::FileOutput;

 private:
  void OutRaw(const TImage<formatId>& image) const override {
    BMPWriter writer(BMPHeader::imgToHeader(image), this->Path());
    std::vector<uint8_t> swapped(SwapsRedAndBlue(formatId) ? image.LineByteCount() : 0);
    const auto lines = LinesOf(image);
    for (size_t y = image.Area().size.height; y > 0; --y) {
      const uint8_t* line = lines[y - 1];
      if constexpr (SwapsRedAndBlue(formatId)) {
        SwapRedAndBlue<formatId>(line, swapped.size(), swapped.data());
        line = swapped.data();
      }
      writer.AppendImageLine(line, image.LineByteCount());
    }
    writer.Write();
  }
};

}  // namespace
}  // namespace img::io::bmp

KORVEL_NAME_FOR_DISPATCH(img::io::bmp::BMPOutput, "bmp::BMPOutput");

std::unique_ptr<img::io::IfcImageOutput> img::io::bmp::MakeOutput(PixelFormatId format, const std::string& path) {
  return MakeFormatClass<BMPOutput, IfcImageOutput>(format, path);
}
