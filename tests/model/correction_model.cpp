#include "tests/model/correction_model.h"

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <initializer_list>
#include <string_view>

namespace korvel_test {
namespace {

// The samples of an image where they lie in its bytes. Writing one leaves all other bits alone.
class Samples {
 public:
  explicit Samples(ModelImage& image) : image_(image), row_(FormatOf(image.format)) {}

  uint32_t Get(size_t x, size_t y, size_t channel = 0) const {
    const size_t at = PlaceOf(x, y, channel);
    if (row_.packed) return Word(at) >> (channel * 10) & 0x3FF;
    if (row_.storageBitsPerChannel == 8) return image_.bytes.at(at);
    return image_.bytes.at(at) | static_cast<uint32_t>(image_.bytes.at(at + 1)) << 8;
  }

  void Set(size_t x, size_t y, size_t channel, uint32_t value) {
    const size_t at = PlaceOf(x, y, channel);
    if (row_.packed) {
      const uint32_t word = (Word(at) & ~(0x3FFU << (channel * 10))) | value << (channel * 10);
      for (size_t i = 0; i < 4; ++i) image_.bytes.at(at + i) = static_cast<uint8_t>(word >> (i * 8));
      return;
    }
    image_.bytes.at(at) = static_cast<uint8_t>(value);
    if (row_.storageBitsPerChannel == 16) image_.bytes.at(at + 1) = static_cast<uint8_t>(value >> 8);
  }

  // For formats whose pixels are words of three channels.
  void ClearTopBits(size_t x, size_t y) {
    uint8_t& top = image_.bytes.at(PlaceOf(x, y, 0) + 3);
    top = static_cast<uint8_t>(top & 0x3F);
  }

 private:
  size_t PlaceOf(size_t x, size_t y, size_t channel) const {
    const size_t pixel = y * image_.width + x;
    if (row_.packed) return pixel * 4;
    return (pixel * row_.channels + channel) * row_.storageBitsPerChannel / 8;
  }
  uint32_t Word(size_t at) const {
    uint32_t word = 0;
    for (size_t i = 0; i < 4; ++i) word |= static_cast<uint32_t>(image_.bytes.at(at + i)) << (i * 8);
    return word;
  }

  ModelImage& image_;
  const FormatRow& row_;
};

bool IsNearOne(float value) {
  return value >= std::bit_cast<float>(0x3F7FBE77U) && value <= std::bit_cast<float>(0x3F8020C5U);
}

bool IsBayer(const FormatRow& row) { return row.pixelClass >= kClassBayerGR && row.pixelClass <= kClassBayerBG; }

enum class Color { kRed, kGreen, kBlue };

Color ColorOfSite(uint32_t pixelClass, size_t x, size_t y) {
  static constexpr Color kGR[4] = {Color::kGreen, Color::kRed, Color::kBlue, Color::kGreen};
  static constexpr Color kRG[4] = {Color::kRed, Color::kGreen, Color::kGreen, Color::kBlue};
  static constexpr Color kGB[4] = {Color::kGreen, Color::kBlue, Color::kRed, Color::kGreen};
  static constexpr Color kBG[4] = {Color::kBlue, Color::kGreen, Color::kGreen, Color::kRed};
  const size_t site = y % 2 * 2 + x % 2;
  switch (pixelClass) {
    case kClassBayerGR:
      return kGR[site];
    case kClassBayerRG:
      return kRG[site];
    case kClassBayerGB:
      return kGB[site];
    default:
      return kBG[site];
  }
}

bool IsOneOf(uint32_t format, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), FormatOf(format).name) != names.end();
}

bool IsUnpackedMonoOrBayer(uint32_t format) {
  return IsOneOf(format, {"Mono8", "Mono10", "Mono12", "BayerGR8", "BayerRG8", "BayerGB8", "BayerBG8", "BayerGR10",
                          "BayerRG10", "BayerGB10", "BayerBG10", "BayerGR12", "BayerRG12", "BayerGB12", "BayerBG12"});
}

bool IsUnpackedColor(uint32_t format) {
  return IsOneOf(format, {"RGB8", "BGR8", "RGBa8", "BGRa8", "RGB10", "BGR10", "RGB12", "BGR12", "RGBa10", "BGRa10",
                          "RGBa12", "BGRa12"});
}

}  // namespace

// --------------------------------------------------------------------------------------------------------- gain --

uint32_t ModelGainEntry(float factor, uint32_t maximum, uint32_t value) {
  const float product = factor * static_cast<float>(value);
  if (product > static_cast<float>(maximum)) return maximum;
  return static_cast<uint32_t>(product);
}

ModelImage ModelGain(const ModelImage& input, const GainFactors& factors) {
  ModelImage output = input;
  if (IsNearOne(factors.master) && IsNearOne(factors.red) && IsNearOne(factors.green) && IsNearOne(factors.blue)) {
    return output;
  }
  const FormatRow& row = FormatOf(input.format);
  const float red = factors.red * factors.master;
  const float green = factors.green * factors.master;
  const float blue = factors.blue * factors.master;
  Samples samples(output);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      float factor = factors.master;
      if (IsBayer(row)) {
        const Color color = ColorOfSite(row.pixelClass, x, y);
        factor = color == Color::kRed ? red : color == Color::kGreen ? green : blue;
      }
      samples.Set(x, y, 0, ModelGainEntry(factor, row.maximum, samples.Get(x, y) & row.maximum));
    }
  }
  return output;
}

// -------------------------------------------------------------------------------------------------------- gamma --

uint32_t ModelGammaEntry(float gamma, uint32_t maximum, uint32_t value) {
  const float limited = static_cast<float>(std::min(value, maximum));
  const float x = limited / static_cast<float>(maximum);
  const float y = ::powf(x, 1.0F / gamma);
  return static_cast<uint32_t>(y * static_cast<float>(maximum));
}

ModelImage ModelGamma(const ModelImage& input, float gamma) {
  ModelImage output = input;
  if (IsNearOne(gamma)) return output;
  const FormatRow& row = FormatOf(input.format);
  std::vector<uint32_t> table(row.maximum + 1);
  for (uint32_t i = 0; i <= row.maximum; ++i) table[i] = ModelGammaEntry(gamma, row.maximum, i);
  Samples samples(output);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      for (size_t channel = 0; channel < std::min<size_t>(row.channels, 3); ++channel) {
        samples.Set(x, y, channel, table[std::min(samples.Get(x, y, channel), row.maximum)]);
      }
      if (row.packed) samples.ClearTopBits(x, y);
    }
  }
  return output;
}

// --------------------------------------------------------------------------------------------- colour correction --

namespace {

enum class Rounding {
  kHalfAddedAndTruncated,  // the simple path
  kToNearestEven,          // the main loop of a vector kernel
  kTruncated,              // the rest of a vector kernel
};

bool StoresBlueFirst(uint32_t pixelClass) { return pixelClass == kClassBGR || pixelClass == kClassBGRa; }

uint32_t Limited(float sum, uint32_t maximum, Rounding rounding) {
  if (rounding == Rounding::kHalfAddedAndTruncated) sum = sum + 0.5F;
  if (!(sum >= 0.0F)) return 0;  // a NaN too
  if (sum > static_cast<float>(maximum)) return maximum;
  if (rounding != Rounding::kToNearestEven) return static_cast<uint32_t>(sum);
  const float whole = std::floor(sum);
  const float part = sum - whole;
  const auto below = static_cast<uint32_t>(whole);
  if (part != 0.5F) return part < 0.5F ? below : below + 1;
  return below % 2 == 0 ? below : below + 1;
}

// The pixels that the main loop of a kernel takes: in each line, or in the whole image as one stream.
struct MainLoop {
  size_t pixelsOfLine = 0;
  size_t pixelsOfImage = 0;

  bool Has(size_t x, size_t y, size_t width) const { return x < pixelsOfLine || y * width + x < pixelsOfImage; }
};

MainLoop MainLoopOf(const ModelImage& image, ModelFeatures features) {
  MainLoop loop;
  if (IsOneOf(image.format, {"RGB8", "BGR8"})) {
    size_t remainder = image.width * 3 % 12;
    if (remainder < 4) remainder += 12;
    loop.pixelsOfLine = (image.width * 3 - remainder) / 3;
  } else if (IsOneOf(image.format, {"RGB10", "RGB12"})) {
    loop.pixelsOfImage = image.width * (image.height - 1) / 2 * 2;
  } else {
    const size_t group = features.avx2 ? 8 : 4;
    loop.pixelsOfLine = image.width / group * group;
  }
  return loop;
}

}  // namespace

bool ModelHasColorKernel(uint32_t format, ModelFeatures features) {
  if (IsOneOf(format, {"RGBa8", "BGRa8", "RGB10p32"})) return features.avx || features.avx2;
  if (IsOneOf(format, {"RGB8", "BGR8", "RGB10", "RGB12"})) return features.avx;
  return false;
}

ModelImage ModelColorCorrection(const ModelImage& input, const ColorFactors& factors, ModelFeatures features) {
  const FormatRow& row = FormatOf(input.format);
  const bool blueFirst = StoresBlueFirst(row.pixelClass);
  const size_t redChannel = blueFirst ? 2 : 0;
  const size_t blueChannel = blueFirst ? 0 : 2;
  const bool isVector = input.width >= 16 && input.height >= 16 && ModelHasColorKernel(input.format, features);
  const MainLoop mainLoop = isVector ? MainLoopOf(input, features) : MainLoop{};

  ModelImage output = input;
  Samples samples(output);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      Rounding rounding = Rounding::kHalfAddedAndTruncated;
      if (isVector) rounding = mainLoop.Has(x, y, input.width) ? Rounding::kToNearestEven : Rounding::kTruncated;
      const auto r = static_cast<float>(samples.Get(x, y, redChannel));
      const auto g = static_cast<float>(samples.Get(x, y, 1));
      const auto b = static_cast<float>(samples.Get(x, y, blueChannel));
      uint32_t results[3] = {};
      for (size_t i = 0; i < 3; ++i) {
        const float redTerm = factors[i * 3] * r;
        const float greenTerm = factors[i * 3 + 1] * g;
        const float blueTerm = factors[i * 3 + 2] * b;
        const float sum = isVector && blueFirst ? (blueTerm + greenTerm) + redTerm : (redTerm + greenTerm) + blueTerm;
        results[i] = Limited(sum, row.maximum, rounding);
      }
      samples.Set(x, y, redChannel, results[0]);
      samples.Set(x, y, 1, results[1]);
      samples.Set(x, y, blueChannel, results[2]);
    }
  }
  return output;
}

// --------------------------------------------------------------------------------------------------- hot pixels --

namespace {

using Deviations = std::array<int64_t, 4>;

bool HaveOneSign(const Deviations& deviations) {
  return std::all_of(deviations.begin(), deviations.end(), [](int64_t d) { return d > 0; }) ||
         std::all_of(deviations.begin(), deviations.end(), [](int64_t d) { return d < 0; });
}

int64_t Deciding(const Deviations& deviations) {
  int64_t best = deviations[0];
  for (size_t i = 1; i < 4; ++i) {
    if (deviations[i] * deviations[i] < best * best) best = deviations[i];
  }
  return best;
}

bool IsGreenSite(uint32_t pixelClass, uint64_t x, uint64_t y) {
  const bool isEven = (x + y) % 2 == 0;
  return pixelClass == kClassBayerGR || pixelClass == kClassBayerGB ? isEven : !isEven;
}

// The four lines that the Bayer kernel takes neighbours from, outermost above, next above, next below, outermost below.
struct BayerLines {
  size_t a;
  size_t b;
  size_t c;
  size_t d;
};

class Pixels {
 public:
  explicit Pixels(ModelImage& image) : samples_(image), row_(FormatOf(image.format)), width_(image.width) {}

  int64_t At(size_t x, size_t y) const { return samples_.Get(x, y); }

  Deviations BayerDeviations(size_t x, size_t y, const BayerLines& lines) const {
    const int64_t c2 = 2 * At(x, y);
    const int64_t vertical = c2 - At(x, lines.a) - At(x, lines.d);
    const bool isGreen = IsGreenSite(row_.pixelClass, x, y);
    if (x < 2 || x + 2 >= width_) {
      const size_t next = x < 2 ? x + 1 : x - 1;
      const size_t second = x < 2 ? x + 2 : x - 2;
      const int64_t diagonal =
          isGreen ? c2 - At(next, lines.b) - At(next, lines.c) : c2 - At(second, lines.a) - At(second, lines.d);
      return {diagonal, vertical, diagonal, c2 - 2 * At(second, y)};
    }
    const int64_t horizontal = c2 - At(x - 2, y) - At(x + 2, y);
    if (isGreen) {
      return {c2 - At(x - 1, lines.b) - At(x + 1, lines.c), vertical, c2 - At(x - 1, lines.c) - At(x + 1, lines.b),
              horizontal};
    }
    return {c2 - At(x - 2, lines.a) - At(x + 2, lines.d), vertical, c2 - At(x - 2, lines.d) - At(x + 2, lines.a),
            horizontal};
  }

 private:
  Samples samples_;
  const FormatRow& row_;
  size_t width_;
};

Deviations MonoDetectionDeviations(const Pixels& pixels, size_t x, size_t y, size_t width, size_t height) {
  const size_t up = y == 0 ? 1 : y - 1;
  const size_t down = y == height - 1 ? y - 1 : y + 1;
  const int64_t c2 = 2 * pixels.At(x, y);
  const int64_t vertical = c2 - pixels.At(x, up) - pixels.At(x, down);
  if (x == 0) {
    return {c2 - pixels.At(1, up) - pixels.At(1, down), vertical, c2 - pixels.At(1, down) - pixels.At(1, up),
            c2 - 2 * pixels.At(1, y)};
  }
  if (x == width - 1) {
    return {c2 - pixels.At(x - 1, up) - pixels.At(x - 1, down), vertical,
            c2 - pixels.At(x - 1, down) - pixels.At(x - 1, up), c2 - 2 * pixels.At(x - 1, y)};
  }
  return {c2 - pixels.At(x - 1, up) - pixels.At(x + 1, down), vertical,
          c2 - pixels.At(x - 1, down) - pixels.At(x + 1, up), c2 - pixels.At(x - 1, y) - pixels.At(x + 1, y)};
}

Deviations MonoCorrectionDeviations(const Pixels& pixels, size_t x, size_t y, size_t width, size_t height) {
  const size_t left = x == 0 ? 1 : x - 1;
  const size_t above = y == 0 ? 1 : y - 1;
  const size_t right = x + 1 > width - 1 ? width - 2 : x + 1;
  const size_t below = y + 1 > height - 1 ? height - 2 : y + 1;
  const int64_t c2 = 2 * pixels.At(x, y);
  return {c2 - pixels.At(left, above) - pixels.At(right, below), c2 - pixels.At(x, above) - pixels.At(x, below),
          c2 - pixels.At(left, below) - pixels.At(right, above), c2 - pixels.At(left, y) - pixels.At(right, y)};
}

BayerLines DetectionLines(size_t y, size_t height) {
  return {y < 2 ? y + 2 : y - 2, y == 0 ? 1 : y - 1, y == height - 1 ? y - 1 : y + 1, y >= height - 2 ? y - 2 : y + 2};
}

// Other lines than in detection; the first may lie outside an image of four lines.
BayerLines CorrectionLines(size_t y, size_t height) {
  return {y <= 2 ? y + 2 : y - 2, y <= 1 ? y + 1 : y - 1, y + 1 > height - 1 ? height - 2 : y + 1,
          y + 2 > height - 1 ? height - 3 : y + 2};
}

bool IsTooSmallForHotpixels(const ModelImage& image) {
  const size_t smallest = IsBayer(FormatOf(image.format)) ? 4 : 2;
  return image.width < smallest || image.height < smallest;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const ModelPoint& point) {
  return stream << "(" << point.x << ", " << point.y << ")";
}

std::vector<ModelPoint> ModelDetectHotpixels(const ModelImage& input, const NoiseModel& noise) {
  std::vector<ModelPoint> found;
  if (IsTooSmallForHotpixels(input)) return found;
  const FormatRow& row = FormatOf(input.format);
  const uint32_t depthShift = row.significantBitsPerChannel - 8;
  const uint32_t percent = noise.gainFactorPercent;
  const uint32_t slope = noise.slope * percent / 100 << depthShift;
  const uint32_t floor = noise.floor * percent * percent / 10000 << (2 * depthShift);

  ModelImage image = input;
  const Pixels pixels(image);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      Deviations deviations{};
      size_t thresholdColumn = x;
      if (IsBayer(row)) {
        deviations = pixels.BayerDeviations(x, y, DetectionLines(y, input.height));
      } else {
        deviations = MonoDetectionDeviations(pixels, x, y, input.width, input.height);
        if (x == 0) thresholdColumn = 1;
      }
      const uint32_t threshold = static_cast<uint32_t>(pixels.At(thresholdColumn, y)) * slope + floor;
      const bool isFar = std::all_of(deviations.begin(), deviations.end(),
                                     [&](int64_t d) { return d * d > static_cast<int64_t>(threshold); });
      if (isFar && HaveOneSign(deviations) && Deciding(deviations) > 0) found.push_back({x, y});
    }
  }
  return found;
}

ModelImage ModelCorrectHotpixels(const ModelImage& input, const std::vector<ModelPoint>& hotpixels) {
  ModelImage output = input;
  if (IsTooSmallForHotpixels(input)) return output;
  const FormatRow& row = FormatOf(input.format);
  const Pixels pixels(output);
  Samples samples(output);
  for (const ModelPoint& point : hotpixels) {
    if (point.x > input.width - 1 || point.y > input.height - 1) continue;
    Deviations deviations{};
    if (IsBayer(row)) {
      const BayerLines lines = CorrectionLines(point.y, input.height);
      if (std::max({lines.a, lines.b, lines.c, lines.d}) >= input.height) continue;
      deviations = pixels.BayerDeviations(point.x, point.y, lines);
    } else {
      deviations = MonoCorrectionDeviations(pixels, point.x, point.y, input.width, input.height);
    }
    if (!HaveOneSign(deviations)) continue;
    const int64_t corrected = pixels.At(point.x, point.y) - Deciding(deviations) / 2;
    samples.Set(point.x, point.y, 0, static_cast<uint32_t>(corrected));
  }
  return output;
}

// ------------------------------------------------------------------------------------------------------ binning --

std::ostream& operator<<(std::ostream& stream, const ModelSize& size) {
  return stream << size.width << " x " << size.height;
}

ModelSize ModelExpectedBinnedSize(uint32_t format, ModelSize size, const BinningSettings& settings) {
  const bool isBayer = IsBayer(FormatOf(format));
  const uint64_t widthUnit = isBayer ? 8 : 4;
  const uint64_t heightUnit = isBayer ? 4 : 2;
  return {size.width / settings.x / widthUnit * widthUnit, size.height / settings.y / heightUnit * heightUnit};
}

std::optional<ModelImage> ModelBin(const ModelImage& input, const BinningSettings& settings) {
  if (settings.x == 1 && settings.y == 1) return input;
  const ModelSize size = ModelExpectedBinnedSize(input.format, {input.width, input.height}, settings);
  if (size.width == 0 || size.height == 0) return std::nullopt;
  const FormatRow& row = FormatOf(input.format);
  ModelImage output = MakeModelImage(input.format, size.width, size.height,
                                     std::vector<uint8_t>(BytesOfImage(input.format, size.width, size.height)));
  ModelImage source = input;
  const Samples from(source);
  Samples to(output);
  for (size_t y = 0; y < size.height; ++y) {
    for (size_t x = 0; x < size.width; ++x) {
      for (size_t channel = 0; channel < std::min<size_t>(row.channels, 3); ++channel) {
        uint32_t sum = 0;
        for (size_t j = 0; j < settings.y; ++j) {
          for (size_t i = 0; i < settings.x; ++i) {
            sum += IsBayer(row) ? from.Get(2 * (x / 2 * settings.x + i) + x % 2, 2 * (y / 2 * settings.y + j) + y % 2)
                                : from.Get(x * settings.x + i, y * settings.y + j, channel);
          }
        }
        to.Set(x, y, channel,
               settings.average ? sum / (settings.x * settings.y) : std::min(sum, uint32_t{row.maximum}));
      }
      if (row.channels == 4) to.Set(x, y, 3, row.maximum);
    }
  }
  if (row.packed) {
    for (size_t i = 3; i < output.written.size(); i += 4) output.written[i] = 0x3F;
  }
  return output;
}

// ------------------------------------------------------------------------------------- formats that are accepted --

bool IsFormatOfGain(uint32_t format) { return IsUnpackedMonoOrBayer(format); }

bool IsFormatOfGamma(uint32_t format) {
  return IsUnpackedMonoOrBayer(format) || IsUnpackedColor(format) || IsOneOf(format, {"RGB10p32"});
}

bool IsFormatOfColorCorrection(uint32_t format) { return IsUnpackedColor(format) || IsOneOf(format, {"RGB10p32"}); }

bool IsFormatOfHotpixels(uint32_t format) { return IsUnpackedMonoOrBayer(format); }

bool IsFormatOfBinning(uint32_t format) { return IsUnpackedMonoOrBayer(format) || IsUnpackedColor(format); }

}  // namespace korvel_test
