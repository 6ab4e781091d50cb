#include "processing/correction/color_correction_optimized.h"

#include <algorithm>

#include "core/image_lines.h"
#include "processing/correction/color_vectors.h"

namespace img::processing {
namespace {

constexpr size_t kSmallestSide = 16;

constexpr CorrectColors KernelOf(const ColorKernels& kernels, const FormatFacts& format) {
  switch (format.PixelByteCount()) {
    case 3:
      return kernels.tripleBytes;
    case 6:
      return kernels.tripleWords;
    default:
      return format.significantBits == 8 ? kernels.quadBytes : kernels.tripleTens;
  }
}

// Corrects lines of a format: their first pixels are rounded to the nearest, the others down.
template <PixelFormatId format>
class Corrector {
 public:
  Corrector(const ColorFactors& factors, InstructionSet set) : factors_(factors), inMemoryOrder_(factors) {
    if (kOrder == SumOrder::BlueFirst) std::reverse(inMemoryOrder_.begin(), inMemoryOrder_.end());
    if (const ColorKernels* const kernels = FindColorKernels(set)) kernel_ = KernelOf(*kernels, kFormat);
  }

  // Whoever rounds all of a line to the nearest must own 4 bytes behind it, if pixels have 3 bytes.
  void CorrectLine(const uint8_t* in, uint8_t* out, size_t width, size_t roundedToNearest) const {
    constexpr auto kMaximum = static_cast<float>(kFormat.maxValue);
    const size_t done = kernel_ == nullptr ? 0 : kernel_(in, out, roundedToNearest, inMemoryOrder_.data(), kMaximum);
    CorrectRun<Rounding::ToNearestEven>(in, out, done, roundedToNearest);
    CorrectRun<Rounding::Down>(in, out, roundedToNearest, width);
  }

 private:
  static constexpr FormatFacts kFormat = kFacts<format>;
  // The order in which the colours lie in memory.
  static constexpr SumOrder kOrder = kFormat.pixelClass == PixelClass::BGR || kFormat.pixelClass == PixelClass::BGRa
                                         ? SumOrder::BlueFirst
                                         : SumOrder::RedFirst;

  template <Rounding rounding>
  void CorrectRun(const uint8_t* in, uint8_t* out, size_t first, size_t end) const {
    const size_t offset = first * kFormat.PixelByteCount();
    CorrectPixels<format, rounding, kOrder>(in + offset, out + offset, end - first, factors_);
  }

  ColorFactors factors_;
  ColorFactors inMemoryOrder_;
  CorrectColors kernel_ = nullptr;
};

// 12 bytes at a time, of which 16 are read: the last group of a line whose next 4 bytes don't belong to the line is
// left to the rest.
template <PixelFormatId format>
void CorrectTriplesOfBytes(const IfcImage& input, IfcImage& output, const Corrector<format>& corrector) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const size_t beyondGroups = 3 * size.width % 12;
  const size_t rest = beyondGroups >= 4 ? beyondGroups : beyondGroups + 12;
  for (size_t y = 0; y < size.height; ++y) {
    corrector.CorrectLine(in[y], out[y], size.width, size.width - rest / 3);
  }
}

template <PixelFormatId format>
void CorrectWords(const IfcImage& input, IfcImage& output, size_t group, const Corrector<format>& corrector) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  for (size_t y = 0; y < size.height; ++y) {
    corrector.CorrectLine(in[y], out[y], size.width, size.width / group * group);
  }
}

// Pairs of pixels, regardless of lines, as far as they lie before the last line.
template <PixelFormatId format>
void CorrectPairs(const IfcImage& input, IfcImage& output, const Corrector<format>& corrector) {
  const Size2D size = input.Area().size;
  const auto in = LinesOf(input);
  const auto out = LinesOf(output);
  const size_t lastLine = size.height - 1;
  const bool isPairSplit = size.width * lastLine % 2 != 0;
  for (size_t y = 0; y < lastLine; ++y) {
    const size_t last = isPairSplit && y + 1 == lastLine ? 1 : 0;
    corrector.CorrectLine(in[y], out[y], size.width, size.width - last);
  }
  corrector.CorrectLine(in[lastLine], out[lastLine], size.width, 0);
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
      CorrectTriplesOfBytes(input, output, Corrector<PixelFormatId::RGB8>(factors_, set_));
      return true;
    case PixelFormatId::BGR8:
      CorrectTriplesOfBytes(input, output, Corrector<PixelFormatId::BGR8>(factors_, set_));
      return true;
    case PixelFormatId::RGBa8:
      CorrectWords(input, output, wordsInAVector, Corrector<PixelFormatId::RGBa8>(factors_, set_));
      return true;
    case PixelFormatId::BGRa8:
      CorrectWords(input, output, wordsInAVector, Corrector<PixelFormatId::BGRa8>(factors_, set_));
      return true;
    case PixelFormatId::RGB10p32:
      CorrectWords(input, output, wordsInAVector, Corrector<PixelFormatId::RGB10p32>(factors_, set_));
      return true;
    case PixelFormatId::RGB10:
      CorrectPairs(input, output, Corrector<PixelFormatId::RGB10>(factors_, set_));
      return true;
    case PixelFormatId::RGB12:
      CorrectPairs(input, output, Corrector<PixelFormatId::RGB12>(factors_, set_));
      return true;
    default:
      return false;
  }
}

}  // namespace img::processing
