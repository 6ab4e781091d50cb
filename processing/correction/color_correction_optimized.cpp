#include "processing/correction/color_correction_optimized.h"

#include "core/image_lines.h"

namespace img::processing {
namespace {

constexpr size_t kSmallestSide = 16;

// A line's first pixels are rounded to the nearest, the others down.
template <PixelFormatId format, SumOrder order>
void CorrectLine(const uint8_t* in, uint8_t* out, size_t width, size_t roundedToNearest, const ColorFactors& factors) {
  const size_t offset = roundedToNearest * kFacts<format>.PixelByteCount();
  CorrectPixels<format, Rounding::ToNearestEven, order>(in, out, roundedToNearest, factors);
  CorrectPixels<format, Rounding::Down, order>(in + offset, out + offset, width - roundedToNearest, factors);
}

// 12 bytes at a time, of which 16 are read: the last group of a line whose next 4 bytes don't belong to the line is
// left to the rest.
template <PixelFormatId format, SumOrder order>
void CorrectTriplesOfBytes(const IfcImage& input, IfcImage& output, const ColorFactors& factors) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const size_t beyondGroups = 3 * size.width % 12;
  const size_t rest = beyondGroups >= 4 ? beyondGroups : beyondGroups + 12;
  for (size_t y = 0; y < size.height; ++y) {
    CorrectLine<format, order>(in[y], out[y], size.width, size.width - rest / 3, factors);
  }
}

template <PixelFormatId format, SumOrder order>
void CorrectWords(const IfcImage& input, IfcImage& output, size_t group, const ColorFactors& factors) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  for (size_t y = 0; y < size.height; ++y) {
    CorrectLine<format, order>(in[y], out[y], size.width, size.width / group * group, factors);
  }
}

// Pairs of pixels, regardless of lines, as far as they lie before the last line.
template <PixelFormatId format>
void CorrectPairs(const IfcImage& input, IfcImage& output, const ColorFactors& factors) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const size_t lastLine = size.height - 1;
  const bool isPairSplit = size.width * lastLine % 2 != 0;
  for (size_t y = 0; y < lastLine; ++y) {
    const size_t last = isPairSplit && y + 1 == lastLine ? 1 : 0;
    CorrectLine<format, SumOrder::RedFirst>(in[y], out[y], size.width, size.width - last, factors);
  }
  CorrectLine<format, SumOrder::RedFirst>(in[lastLine], out[lastLine], size.width, 0, factors);
}

}  // namespace

bool ColorCorrectionOptimized::IsFormatSupported(PixelFormatId format) const {
  switch (format) {
    case PixelFormatId::RGBa8:
    case PixelFormatId::BGRa8:
    case PixelFormatId::RGB10p32:
      return features_.avx != 0 || features_.avx2 != 0;
    case PixelFormatId::RGB8:
    case PixelFormatId::BGR8:
    case PixelFormatId::RGB10:
    case PixelFormatId::RGB12:
      return features_.avx != 0;
    default:
      return false;
  }
}

bool ColorCorrectionOptimized::Accepts(const IfcImage& image) const {
  const Size2D size = image.Area().size;
  return size.width >= kSmallestSide && size.height >= kSmallestSide && IsFormatSupported(image.PixelFormat());
}

bool ColorCorrectionOptimized::Process(const IfcImage& input, IfcImage& output) const {
  if (!Accepts(input)) return false;
  const size_t wordsInAVector = features_.avx2 != 0 ? 8 : 4;
  switch (input.PixelFormat()) {
    case PixelFormatId::RGB8:
      CorrectTriplesOfBytes<PixelFormatId::RGB8, SumOrder::RedFirst>(input, output, factors_);
      return true;
    case PixelFormatId::BGR8:
      CorrectTriplesOfBytes<PixelFormatId::BGR8, SumOrder::BlueFirst>(input, output, factors_);
      return true;
    case PixelFormatId::RGBa8:
      CorrectWords<PixelFormatId::RGBa8, SumOrder::RedFirst>(input, output, wordsInAVector, factors_);
      return true;
    case PixelFormatId::BGRa8:
      CorrectWords<PixelFormatId::BGRa8, SumOrder::BlueFirst>(input, output, wordsInAVector, factors_);
      return true;
    case PixelFormatId::RGB10p32:
      CorrectWords<PixelFormatId::RGB10p32, SumOrder::RedFirst>(input, output, wordsInAVector, factors_);
      return true;
    case PixelFormatId::RGB10:
      CorrectPairs<PixelFormatId::RGB10>(input, output, factors_);
      return true;
    case PixelFormatId::RGB12:
      CorrectPairs<PixelFormatId::RGB12>(input, output, factors_);
      return true;
    default:
      return false;
  }
}

}  // namespace img::processing
