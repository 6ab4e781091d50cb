#include "tests/model/conversion_model.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace korvel_test {
namespace {

constexpr uint32_t kModeFast = 1;
constexpr uint32_t kModeClassic = 3;

constexpr int32_t kStatusError = 1;
constexpr int32_t kStatusNotImplemented = -1003;
constexpr int32_t kStatusInvalidParameter = -1009;

struct Failure {
  int32_t status;
  std::string text;
};

[[noreturn]] void Fail(std::string text) { throw Failure{kStatusError, std::move(text)}; }

// ------------------------------------------------------------------------------------------------------- formats --

// For ids that come from the caller of the converter.
const FormatRow& RowOf(uint32_t id) {
  const FormatRow* row = FindFormat(id);
  if (row == nullptr) {
    throw Failure{kStatusInvalidParameter, "Unknown formatId: " + std::to_string(id)};
  }
  return *row;
}

bool IsMipi(const FormatRow& row) {
  return row.rawFormat == IdOf("_RawMipiPacked1Ch10") || row.rawFormat == IdOf("_RawMipiPacked1Ch12");
}

// The format of a class at a depth, 0 if the class doesn't come at that depth.
uint32_t FormatOfClass(uint32_t pixelClass, uint32_t bits) {
  for (const FormatRow& row : kFormatTable) {
    if (row.id != 0 && row.pixelClass == pixelClass && row.significantBitsPerChannel == bits && !IsMipi(row)) {
      return row.id;
    }
  }
  return 0;
}

uint32_t UnpackedClass(uint32_t packedClass) {
  switch (packedClass) {
    case kClassRGB10p32:
      return kClassRGB;
    case kClassBGR10p32:
      return kClassBGR;
    case kClassBayerBGPacked:
      return kClassBayerBG;
    case kClassBayerGBPacked:
      return kClassBayerGB;
    case kClassBayerGRPacked:
      return kClassBayerGR;
    case kClassBayerRGPacked:
      return kClassBayerRG;
    case kClassMonoPacked:
      return kClassMono;
    default:
      return packedClass;
  }
}

bool IsColourClass(uint32_t pixelClass) {
  return pixelClass == kClassRGB || pixelClass == kClassBGR || pixelClass == kClassRGBa || pixelClass == kClassBGRa;
}

bool IsEightBitColour(uint32_t id) {
  return id == IdOf("RGB8") || id == IdOf("BGR8") || id == IdOf("RGBa8") || id == IdOf("BGRa8");
}

bool StoresBlueFirst(uint32_t pixelClass) { return pixelClass == kClassBGR || pixelClass == kClassBGRa; }

std::string Hexadecimal(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%x", value);
  return text;
}

// ------------------------------------------------------------------------------------------------------ pictures --

// An image with its samples taken out of their bytes.
struct Picture {
  const FormatRow* format = nullptr;
  size_t width = 0;
  size_t height = 0;
  size_t channels = 0;
  std::vector<uint32_t> samples;
  std::vector<uint8_t> known;  // for each pixel, whether it has a value at all
  bool spareBitsKnown = true;  // whether the two bits beside three channels of ten have a value, which is 0

  size_t PixelAt(size_t x, size_t y) const { return y * width + x; }
  uint32_t& Sample(size_t x, size_t y, size_t channel) { return samples[PixelAt(x, y) * channels + channel]; }
  uint32_t Sample(size_t x, size_t y, size_t channel) const { return samples[PixelAt(x, y) * channels + channel]; }
  // For images of one channel.
  uint32_t At(size_t x, size_t y) const { return samples[PixelAt(x, y)]; }

  void CopyPixel(size_t fromX, size_t fromY, size_t toX, size_t toY) {
    for (size_t channel = 0; channel < channels; ++channel) {
      Sample(toX, toY, channel) = Sample(fromX, fromY, channel);
    }
    known[PixelAt(toX, toY)] = known[PixelAt(fromX, fromY)];
  }
  void CopyLine(size_t from, size_t to) {
    for (size_t x = 0; x < width; ++x) {
      CopyPixel(x, from, x, to);
    }
  }
  void CopyColumn(size_t from, size_t to) {
    for (size_t y = 0; y < height; ++y) {
      CopyPixel(from, y, to, y);
    }
  }
};

Picture EmptyPicture(uint32_t format, size_t width, size_t height) {
  Picture picture;
  picture.format = &FormatOf(format);
  picture.width = width;
  picture.height = height;
  picture.channels = picture.format->channels;
  picture.samples.assign(width * height * picture.channels, 0);
  picture.known.assign(width * height, 0);
  return picture;
}

Picture PictureOf(const ModelImage& image) {
  Picture picture = EmptyPicture(image.format, image.width, image.height);
  picture.samples = DecodeSamples(image.format, image.width * image.height, image.bytes);
  picture.known.assign(image.width * image.height, 1);
  return picture;
}

ModelImage ImageOf(const Picture& picture) {
  ModelImage image;
  image.format = picture.format->id;
  image.width = picture.width;
  image.height = picture.height;
  const size_t pixels = picture.width * picture.height;
  image.bytes = EncodeSamples(picture.format->id, pixels, picture.samples);
  image.written.assign(image.bytes.size(), 0);
  const size_t bytesPerPixel = image.bytes.size() / pixels;  // no stage yields a format with pixels of odd bits
  for (size_t pixel = 0; pixel < pixels; ++pixel) {
    if (picture.known[pixel] == 0) {
      continue;
    }
    for (size_t byte = 0; byte < bytesPerPixel; ++byte) {
      image.written[pixel * bytesPerPixel + byte] = 0xFF;
    }
    if (picture.format->packed && !picture.spareBitsKnown) {
      image.written[pixel * bytesPerPixel + bytesPerPixel - 1] = 0x3F;
    }
  }
  return image;
}

// --------------------------------------------------------------------------------------------------------- sites --

enum Colour : size_t { kRed = 0, kGreen = 1, kBlue = 2 };

// The colour that the filter over pixel (x, y) lets through.
Colour ColourAt(uint32_t pixelClass, size_t x, size_t y) {
  std::string_view cell;
  switch (pixelClass) {
    case kClassBayerGR:
      cell = "GRBG";
      break;
    case kClassBayerRG:
      cell = "RGGB";
      break;
    case kClassBayerGB:
      cell = "GBRG";
      break;
    case kClassBayerBG:
      cell = "BGGR";
      break;
    default:
      throw std::logic_error("not a mosaic");
  }
  switch (cell[(y % 2) * 2 + x % 2]) {
    case 'R':
      return kRed;
    case 'G':
      return kGreen;
    default:
      return kBlue;
  }
}

using Rgb = std::array<uint32_t, 3>;

// The module's own alpha is the maximum of the depth.
void StoreColour(Picture& output, size_t x, size_t y, const Rgb& colour) {
  const FormatRow& row = *output.format;
  const bool blueFirst = StoresBlueFirst(row.pixelClass);
  const uint32_t mask = row.packed ? 0x3FF : row.storageBitsPerChannel == 8 ? 0xFF : 0xFFFF;
  output.Sample(x, y, 0) = colour[blueFirst ? kBlue : kRed] & mask;
  output.Sample(x, y, 1) = colour[kGreen] & mask;
  output.Sample(x, y, 2) = colour[blueFirst ? kRed : kBlue] & mask;
  if (output.channels == 4) {
    output.Sample(x, y, 3) = row.maximum;
  }
  output.known[output.PixelAt(x, y)] = 1;
}

// The 3x3 rule: a colour that isn't the pixel's own is the mean of the neighbours that have it. In the window around
// a pixel these are always two or four; at the border of the image those outside are left out of the mean.
Rgb ColourFrom3x3(const Picture& input, size_t x, size_t y) {
  const uint32_t pixelClass = input.format->pixelClass;
  Rgb sum = {0, 0, 0};
  Rgb count = {0, 0, 0};
  for (size_t row = y == 0 ? 0 : y - 1; row <= y + 1 && row < input.height; ++row) {
    for (size_t column = x == 0 ? 0 : x - 1; column <= x + 1 && column < input.width; ++column) {
      const Colour colour = ColourAt(pixelClass, column, row);
      sum[colour] += input.At(column, row);
      ++count[colour];
    }
  }
  const Colour own = ColourAt(pixelClass, x, y);
  sum[own] = input.At(x, y);
  count[own] = 1;
  return {sum[kRed] / count[kRed], sum[kGreen] / count[kGreen], sum[kBlue] / count[kBlue]};
}

// -------------------------------------------------------------------------------------------- colour 3x3 and 5x5 --

void CopyBorder(Picture& output) {
  if (output.height >= 2) {
    output.CopyLine(output.height - 2, output.height - 1);
    output.CopyLine(1, 0);
  }
  if (output.width >= 2) {
    output.CopyColumn(1, 0);
    output.CopyColumn(output.width - 2, output.width - 1);
  }
}

Picture BayerToColour3x3(const Picture& input, uint32_t format) {
  Picture output = EmptyPicture(format, input.width, input.height);
  output.spareBitsKnown = false;
  const uint32_t pixelClass = input.format->pixelClass;
  if (input.height == 2) {
    for (size_t x = 1; x + 1 < input.width; ++x) {
      Rgb sum = {0, 0, 0};
      for (size_t y = 0; y < 2; ++y) {
        for (size_t column = x - 1; column <= x; ++column) {
          sum[ColourAt(pixelClass, column, y)] += input.At(column, y);
        }
      }
      StoreColour(output, x, 0, {sum[kRed], sum[kGreen] / 2, sum[kBlue]});
    }
  }
  if (input.height >= 3) {
    for (size_t y = 1; y + 1 < input.height; ++y) {
      for (size_t x = 1; x + 1 < input.width; ++x) {
        StoreColour(output, x, y, ColourFrom3x3(input, x, y));
      }
    }
  }
  CopyBorder(output);
  return output;
}

// The window of a pixel that is at least two away from every border.
struct Window5x5 {
  const Picture& input;
  size_t x;
  size_t y;

  int32_t At(int dx, int dy) const {
    return static_cast<int32_t>(
        input.At(static_cast<size_t>(static_cast<int64_t>(x) + dx), static_cast<size_t>(static_cast<int64_t>(y) + dy)));
  }
  int32_t Centre() const { return At(0, 0); }
  int32_t Diagonals() const { return At(-1, -1) + At(1, -1) + At(-1, 1) + At(1, 1); }
  int32_t NorthAndSouth() const { return At(0, -1) + At(0, 1); }
  int32_t WestAndEast() const { return At(-1, 0) + At(1, 0); }
  int32_t FarNorthAndSouth() const { return At(0, -2) + At(0, 2); }
  int32_t FarWestAndEast() const { return At(-2, 0) + At(2, 0); }
};

uint32_t DivideAndClip(int32_t value, int32_t divisor, uint32_t maximum) {
  const int32_t quotient = value / divisor;  // toward zero
  return static_cast<uint32_t>(std::clamp(quotient, 0, static_cast<int32_t>(maximum)));
}

uint32_t GreenAtRedOrBlue(const Window5x5& w, uint32_t maximum) {
  return DivideAndClip(
      4 * w.Centre() + 2 * (w.NorthAndSouth() + w.WestAndEast()) - (w.FarNorthAndSouth() + w.FarWestAndEast()), 8,
      maximum);
}

uint32_t ColourAtOpposite(const Window5x5& w, uint32_t maximum) {
  return DivideAndClip(12 * w.Centre() + 4 * w.Diagonals() - 3 * (w.FarNorthAndSouth() + w.FarWestAndEast()), 16,
                       maximum);
}

uint32_t ColourOnLine(const Window5x5& w, uint32_t maximum) {
  return DivideAndClip(
      10 * w.Centre() + 8 * w.WestAndEast() - 2 * (w.Diagonals() + w.FarWestAndEast()) + w.FarNorthAndSouth(), 16,
      maximum);
}

uint32_t ColourOnColumn(const Window5x5& w, uint32_t maximum) {
  return DivideAndClip(
      10 * w.Centre() + 8 * w.NorthAndSouth() - 2 * (w.Diagonals() + w.FarNorthAndSouth()) + w.FarWestAndEast(), 16,
      maximum);
}

Rgb ColourFrom5x5(const Picture& input, size_t x, size_t y) {
  const FormatRow& row = *input.format;
  const Window5x5 w{input, x, y};
  const uint32_t m = row.maximum;
  const uint32_t own = input.At(x, y);
  switch (ColourAt(row.pixelClass, x, y)) {
    case kRed:
      return {own, GreenAtRedOrBlue(w, m), ColourAtOpposite(w, m)};
    case kBlue:
      return {ColourAtOpposite(w, m), GreenAtRedOrBlue(w, m), own};
    case kGreen:
      break;
  }
  const bool onLineOfRed = ColourAt(row.pixelClass, x + 1, y) == kRed;
  if (onLineOfRed) {
    return {ColourOnLine(w, m), own, ColourOnColumn(w, m)};
  }
  return {ColourOnColumn(w, m), own, ColourOnLine(w, m)};
}

Picture BayerToColour5x5(const Picture& input, uint32_t format) {
  if (input.height < 5) {
    return BayerToColour3x3(input, format);
  }
  Picture output = EmptyPicture(format, input.width, input.height);
  output.spareBitsKnown = false;
  for (size_t y = 2; y + 2 < input.height; ++y) {
    for (size_t x = 2; x + 2 < input.width; ++x) {
      StoreColour(output, x, y, ColourFrom5x5(input, x, y));
    }
  }
  if (input.width >= 3) {
    for (const size_t y : {size_t{1}, input.height - 2}) {
      for (size_t x = 1; x + 1 < input.width; ++x) {
        StoreColour(output, x, y, ColourFrom3x3(input, x, y));
      }
    }
    for (const size_t x : {size_t{1}, input.width - 2}) {
      for (size_t y = 1; y + 1 < input.height; ++y) {
        StoreColour(output, x, y, ColourFrom3x3(input, x, y));
      }
    }
  }
  CopyBorder(output);
  return output;
}

// ------------------------------------------------------------------------------------------------------ mono 2x2 --

// The weights go by the position in the cell and not by the colours.
uint32_t MonoWeight(uint32_t pixelClass, size_t x, size_t y) {
  const bool oddColumn = x % 2 == 1;
  const bool oddLine = y % 2 == 1;
  switch (pixelClass) {
    case kClassBayerGR:
      return !oddColumn && !oddLine ? 299 : oddColumn && oddLine ? 114 : 293;
    case kClassBayerRG:
      return oddColumn && !oddLine ? 299 : !oddColumn && oddLine ? 114 : 293;
    case kClassBayerGB:
      return oddColumn && oddLine ? 299 : !oddColumn && !oddLine ? 114 : 293;
    case kClassBayerBG:
      return !oddColumn && oddLine ? 299 : oddColumn && !oddLine ? 114 : 293;
    default:
      throw std::logic_error("not a mosaic");
  }
}

Picture BayerToMono2x2(const Picture& input, uint32_t format) {
  Picture output = EmptyPicture(format, input.width, input.height);
  const FormatRow& row = *input.format;
  for (size_t y = 0; y + 1 < input.height; ++y) {
    for (size_t x = 0; x + 1 < input.width; ++x) {
      uint32_t sum = 0;
      for (size_t line = y; line <= y + 1; ++line) {
        for (size_t column = x; column <= x + 1; ++column) {
          sum += MonoWeight(row.pixelClass, column, line) * input.At(column, line);
        }
      }
      output.Sample(x, y, 0) = std::min(sum / 999, row.maximum);
      output.known[output.PixelAt(x, y)] = 1;
    }
  }
  if (output.height >= 2) {
    output.CopyLine(output.height - 2, output.height - 1);
  }
  if (output.width >= 2) {
    output.CopyColumn(output.width - 2, output.width - 1);
  }
  return output;
}

// ---------------------------------------------------------------------------------------------------- fast paths --

Picture FastColour(const Picture& input, uint32_t format) {
  Picture output = EmptyPicture(format, input.width, input.height);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      StoreColour(output, x, y, ColourFrom3x3(input, x, y));
    }
  }
  return output;
}

// Whether a pixel lies in the columns and lines that a processor with these features computes several at a time,
// `step` of them from column 1 on, as long as a whole step lies before the last column.
bool InVectorColumns(const Picture& picture, size_t x, size_t y, size_t step) {
  if (y == 0 || y + 1 == picture.height || x == 0 || x + 1 == picture.width) {
    return false;
  }
  const size_t inner = picture.width - 2;
  const size_t wholeSteps = inner / step;
  return x - 1 < wholeSteps * step;
}

uint32_t LuminanceScalar(const Rgb& colour) {
  const float red = 0.299f * static_cast<float>(colour[kRed]);
  const float green = 0.587f * static_cast<float>(colour[kGreen]);
  const float blue = 0.114f * static_cast<float>(colour[kBlue]);
  const double sum = static_cast<double>(green) + static_cast<double>(red) + static_cast<double>(blue);
  return static_cast<uint32_t>(sum);
}

uint32_t LuminanceVector(const Rgb& colour) {
  const float red = 0.299f * static_cast<float>(colour[kRed]);
  const float green = 0.587f * static_cast<float>(colour[kGreen]);
  const float blue = 0.114f * static_cast<float>(colour[kBlue]);
  const float redAndGreen = red + green;
  const float sum = redAndGreen + blue;
  return std::min(static_cast<uint32_t>(sum), 255U);
}

Picture FastLuminance(const Picture& input, uint32_t format, ModelFeatures features) {
  Picture output = EmptyPicture(format, input.width, input.height);
  const size_t step = features.avx2 ? 32 : 16;
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      const Rgb colour = ColourFrom3x3(input, x, y);
      output.Sample(x, y, 0) = InVectorColumns(input, x, y, step) ? LuminanceVector(colour) : LuminanceScalar(colour);
      output.known[output.PixelAt(x, y)] = 1;
    }
  }
  return output;
}

// Along one axis, the samples of a colour's plane around position + 0.5. The nearer is half a pixel away, the farther
// one and a half; an axis on which one of them lies outside the image has the other alone.
struct Around {
  size_t nearer = 0;
  size_t farther = 0;
  bool both = false;
};

Around PlaneAround(size_t position, size_t planeParity, size_t size) {
  auto nearer = static_cast<int64_t>(position);
  int64_t farther = nearer + 2;
  if (position % 2 != planeParity) {
    nearer = static_cast<int64_t>(position) + 1;
    farther = static_cast<int64_t>(position) - 1;
  }
  const auto inside = [size](int64_t at) { return at >= 0 && at < static_cast<int64_t>(size); };
  Around around;
  around.both = inside(nearer) && inside(farther);
  around.nearer = static_cast<size_t>(inside(nearer) ? nearer : farther);
  around.farther = static_cast<size_t>(inside(farther) ? farther : nearer);
  return around;
}

uint32_t ClassicPlane(const Picture& input, size_t x, size_t y, size_t columnParity, size_t lineParity) {
  const Around h = PlaneAround(x, columnParity, input.width);
  const Around v = PlaneAround(y, lineParity, input.height);
  const uint32_t nearest = input.At(h.nearer, v.nearer);
  if (h.both && v.both) {
    const uint32_t beside = input.At(h.farther, v.nearer);
    const uint32_t below = input.At(h.nearer, v.farther);
    const uint32_t farthest = input.At(h.farther, v.farther);
    return (9 * nearest + 3 * beside + 3 * below + farthest) >> 4;
  }
  if (h.both) {
    return (12 * nearest + 4 * input.At(h.farther, v.nearer)) >> 4;
  }
  if (v.both) {
    return (12 * nearest + 4 * input.At(h.nearer, v.farther)) >> 4;
  }
  return nearest;
}

uint32_t ClassicGreen(const Picture& input, size_t x, size_t y) {
  const uint32_t pixelClass = input.format->pixelClass;
  const size_t left = std::min(x, input.width - 2);
  const size_t top = std::min(y, input.height - 2);
  uint32_t sum = 0;
  for (size_t line = top; line <= top + 1; ++line) {
    for (size_t column = left; column <= left + 1; ++column) {
      if (ColourAt(pixelClass, column, line) == kGreen) {
        sum += input.At(column, line);
      }
    }
  }
  return sum >> 1;
}

Picture Classic(const Picture& input, uint32_t format) {
  Picture output = EmptyPicture(format, input.width, input.height);
  const bool redFirst = input.format->pixelClass == kClassBayerRG;
  // RG has red in even columns of even lines and blue in odd ones of odd; GR has red in odd columns of even lines.
  const size_t redColumn = redFirst ? 0 : 1;
  const size_t blueColumn = redFirst ? 1 : 0;
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      StoreColour(output, x, y,
                  {ClassicPlane(input, x, y, redColumn, 0), ClassicGreen(input, x, y),
                   ClassicPlane(input, x, y, blueColumn, 1)});
    }
  }
  return output;
}

// The conversions that don't go through a module; empty where there is none.
std::optional<Picture> TryFastPath(const Picture& input, uint32_t format, uint32_t mode, ModelFeatures features) {
  if (input.width < 16 || input.height < 16 || input.width % 2 != 0 || input.height % 2 != 0) {
    return std::nullopt;
  }
  const bool redGreenFirst = input.format->id == IdOf("BayerGR8") || input.format->id == IdOf("BayerRG8");
  if (mode == kModeClassic) {
    if (redGreenFirst && IsEightBitColour(format)) {
      return Classic(input, format);
    }
    return std::nullopt;
  }
  if (mode != kModeFast) {
    return std::nullopt;
  }
  const bool eitherAvx = features.avx || features.avx2;
  if (redGreenFirst && format == IdOf("Mono8") && eitherAvx) {
    return FastLuminance(input, format, features);
  }
  if (redGreenFirst && (format == IdOf("RGB8") || format == IdOf("BGR8")) && features.avx) {
    return FastColour(input, format);
  }
  if (redGreenFirst && (format == IdOf("RGBa8") || format == IdOf("BGRa8")) && eitherAvx) {
    return FastColour(input, format);
  }
  if (input.format->id == IdOf("BayerRG10") && format == IdOf("RGB10p32") && eitherAvx) {
    return FastColour(input, format);
  }
  return std::nullopt;
}

// ------------------------------------------------------------------------------------------------- small modules --

// Samples already lie apart, so that only the name of the format changes.
Picture Unpack(const Picture& input, uint32_t format) {
  Picture output = input;
  output.format = &FormatOf(format);
  output.spareBitsKnown = true;
  return output;
}

Picture ConvertDepth(const Picture& input, uint32_t format) {
  Picture output = input;
  output.format = &FormatOf(format);
  const uint32_t from = input.format->significantBitsPerChannel;
  const uint32_t to = output.format->significantBitsPerChannel;
  const uint32_t mask = to == 8 ? 0xFF : 0xFFFF;
  for (uint32_t& sample : output.samples) {
    sample = (to > from ? sample << (to - from) : sample >> (from - to)) & mask;
  }
  return output;
}

Picture ExtendChannels(const Picture& input, uint32_t format) {
  Picture output = EmptyPicture(format, input.width, input.height);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      for (size_t channel = 0; channel < 3; ++channel) {
        output.Sample(x, y, channel) = input.At(x, y);
      }
      if (output.channels == 4) {
        output.Sample(x, y, 3) = 255;  // at every depth
      }
    }
  }
  output.known = input.known;
  return output;
}

Picture SwapRedAndBlue(const Picture& input, uint32_t format) {
  Picture output = input;
  output.format = &FormatOf(format);
  for (size_t y = 0; y < input.height; ++y) {
    for (size_t x = 0; x < input.width; ++x) {
      std::swap(output.Sample(x, y, 0), output.Sample(x, y, 2));
    }
  }
  return output;
}

// --------------------------------------------------------------------------------------------------------- chain --

using Module = Picture (*)(const Picture& input, uint32_t format);

// The colour that a Bayer or an extension module makes takes the depth of its input.
uint32_t ColourOfClass(uint32_t pixelClass, const FormatRow& input) {
  return pixelClass == kClassRGB10p32 ? IdOf("RGB10p32") : FormatOfClass(pixelClass, input.significantBitsPerChannel);
}

Picture RunStage(const Picture& input, Module module, uint32_t format, uint32_t mode, ModelFeatures features) {
  if (std::optional<Picture> output = TryFastPath(input, format, mode, features)) {
    return std::move(*output);
  }
  return module(input, format);
}

bool AreClasses(uint32_t one, uint32_t other, uint32_t wantedOne, uint32_t wantedOther) {
  return one == wantedOne && other == wantedOther;
}

// Leaves in inputAfter what a swap of red and blue makes of the caller's image.
Picture RunChain(const ModelImage& input, uint32_t target, uint32_t mode, ModelFeatures features,
                 std::vector<uint8_t>& inputAfter) {
  const FormatRow& targetRow = RowOf(target);
  const bool toRgb10p32 = target == IdOf("RGB10p32");
  if (targetRow.packed && !toRgb10p32) {
    Fail("ImageConverter: packed output not supported!");
  }

  Picture s = PictureOf(input);
  bool isCallersImage = true;
  const auto row = [&s]() -> const FormatRow& { return *s.format; };
  const auto run = [&](Module module, uint32_t format) {
    s = RunStage(s, module, format, mode, features);
    isCallersImage = false;
  };

  if (row().packed) {
    run(Unpack, FormatOfClass(UnpackedClass(row().pixelClass), row().significantBitsPerChannel));
  }

  if (row().id != target && row().significantBitsPerChannel < targetRow.significantBitsPerChannel) {
    run(ConvertDepth, FormatOfClass(row().pixelClass, targetRow.significantBitsPerChannel));
  }
  if (row().id != target && row().significantBitsPerChannel > targetRow.significantBitsPerChannel) {
    run(ConvertDepth, FormatOfClass(row().pixelClass, targetRow.significantBitsPerChannel));
  }

  if (row().id != target) {
    const uint32_t from = row().pixelClass;
    const uint32_t to = targetRow.pixelClass;
    if (AreClasses(from, to, kClassRGB, kClassBGR) || AreClasses(from, to, kClassBGR, kClassRGB)) {
      const bool changesCallersImage = isCallersImage;
      run(SwapRedAndBlue, target);
      if (changesCallersImage) {
        inputAfter = ImageOf(s).bytes;
      }
    } else if (AreClasses(from, to, kClassRGBa, kClassBGRa) || AreClasses(from, to, kClassBGRa, kClassRGBa)) {
      throw Failure{kStatusNotImplemented, "Conversion from " + std::string(row().name) + " to " +
                                               std::string(targetRow.name) + " not implemented."};
    }
  }

  if (toRgb10p32 && row().significantBitsPerChannel > 10) {
    run(ConvertDepth, FormatOfClass(row().pixelClass, 10));
  }

  if (targetRow.type != kTypeBayer && row().type == kTypeBayer) {
    const uint32_t to = targetRow.pixelClass;
    if (to == kClassMono) {
      run(BayerToMono2x2, FormatOfClass(kClassMono, row().significantBitsPerChannel));
    } else if (IsColourClass(to) || to == kClassRGB10p32) {
      run(mode == kModeFast ? BayerToColour3x3 : BayerToColour5x5, ColourOfClass(to, row()));
    } else {
      Fail("ImageConverter: No bayer converter for conversion from " + std::to_string(row().id) + " to " +
           std::to_string(target));
    }
  }

  if (row().pixelClass == kClassMono && targetRow.pixelClass != kClassMono) {
    if (!IsColourClass(targetRow.pixelClass)) {
      Fail("ImageConverter: No extension converter for conversion from " + std::to_string(row().id) + " to " +
           std::to_string(target));
    }
    run(ExtendChannels, ColourOfClass(targetRow.pixelClass, row()));
  }

  if (row().id != target && row().channels == targetRow.channels &&
      row().significantBitsPerChannel > targetRow.significantBitsPerChannel) {
    run(ConvertDepth, target);
  }

  if (row().id != target) {
    Fail("ImageConverter: conversion failed with pixel format mismatch! desired: " + Hexadecimal(target) +
         ", result: " + Hexadecimal(row().id) + ".");
  }
  return s;
}

void CheckInput(const ModelImage& input) {
  if (!IsPublicFormat(FormatOf(input.format)) || input.width == 0 || input.height == 0 ||
      input.bytes.size() != BytesOfImage(input.format, input.width, input.height)) {
    throw std::invalid_argument("not an image of a public format");
  }
}

void SetFailure(ModelOutcome& outcome, const Failure& failure) {
  outcome.code = failure.status >= 0 ? static_cast<uint32_t>(failure.status) : 1;
  outcome.status = failure.status;
  outcome.text = failure.text;
  outcome.image = ModelImage{};
}

// --------------------------------------------------------------------------------------------------------- bytes --

// Bit 0 of a stream is the least significant of its first byte.
uint32_t BitsFrom(const std::vector<uint8_t>& stream, size_t firstBit, size_t count) {
  uint32_t value = 0;
  for (size_t i = 0; i < count; ++i) {
    const size_t bit = firstBit + i;
    const uint32_t set = static_cast<uint32_t>(stream.at(bit / 8)) >> (bit % 8) & 1U;
    value |= set << i;
  }
  return value;
}

void BitsInto(std::vector<uint8_t>& stream, size_t firstBit, size_t count, uint32_t value) {
  for (size_t i = 0; i < count; ++i) {
    const size_t bit = firstBit + i;
    if ((value >> i & 1U) != 0) {
      stream.at(bit / 8) = static_cast<uint8_t>(stream.at(bit / 8) | 1U << (bit % 8));
    }
  }
}

// Where a pixel of a format lies whose groups have the high bytes of all their pixels first and then one byte with
// the low bits of all.
struct MipiPlace {
  size_t highByte;
  size_t lowByte;
  size_t lowShift;
  size_t lowBits;
};

MipiPlace PlaceOfMipi(uint32_t bits, size_t pixel) {
  const size_t perGroup = bits == 10 ? 4 : 2;
  const size_t lowBits = bits - 8;
  const size_t group = pixel / perGroup * (perGroup + 1);
  return {group + pixel % perGroup, group + perGroup, pixel % perGroup * lowBits, lowBits};
}

}  // namespace

ModelImage MakeModelImage(uint32_t format, size_t width, size_t height, std::vector<uint8_t> bytes) {
  ModelImage image;
  image.format = format;
  image.width = width;
  image.height = height;
  image.written.assign(bytes.size(), 0xFF);
  image.bytes = std::move(bytes);
  return image;
}

ModelOutcome ModelConvert(const ModelImage& input, uint32_t target, uint32_t mode, ModelFeatures features) {
  CheckInput(input);
  ModelOutcome outcome;
  outcome.inputAfter = input.bytes;
  if (input.format == target) {
    outcome.image = input;
    return outcome;
  }
  try {
    outcome.image = ImageOf(RunChain(input, target, mode, features, outcome.inputAfter));
  } catch (const Failure& failure) {
    SetFailure(outcome, failure);
  }
  return outcome;
}

ModelOutcome ModelConvertToBuffer(const ModelImage& input, uint32_t target, uint32_t mode, ModelFeatures features,
                                  size_t bufferSize) {
  CheckInput(input);
  ModelOutcome outcome;
  outcome.inputAfter = input.bytes;
  try {
    if (mode == kModeClassic) {
      if (input.format != IdOf("BayerRG8") && input.format != IdOf("BayerGR8")) {
        Fail("ImageConverter: the input pixel format does not support the classic conversion mode.");
      }
      if (!IsEightBitColour(target)) {
        Fail("ImageConverter: the output pixel format does not support the classic conversion mode.");
      }
    }
    if (const std::optional<Picture> direct = TryFastPath(PictureOf(input), target, mode, features)) {
      outcome.image = ImageOf(*direct);
      return outcome;
    }
    outcome = ModelConvert(input, target, mode, features);
    if (outcome.code == 0 && outcome.image.bytes.size() != bufferSize) {
      Fail("ImageConverter: conversion failed with buffer size mismatch! provided: " + std::to_string(bufferSize) +
           ", required : " + std::to_string(outcome.image.bytes.size()) + ".");
    }
  } catch (const Failure& failure) {
    SetFailure(outcome, failure);
  }
  return outcome;
}

std::vector<uint32_t> ModelSupportedOutputs(uint32_t input) {
  const FormatRow& row = FormatOf(input);
  std::vector<uint32_t> classes;
  if (row.type == kTypeMono) {
    classes = {kClassMono, kClassBGR, kClassRGB, kClassBGRa, kClassRGBa};
  } else if (row.type == kTypeBayer) {
    classes = {UnpackedClass(row.pixelClass), kClassMono, kClassBGR, kClassRGB, kClassBGRa, kClassRGBa};
  } else if (row.pixelClass == kClassRGB || row.pixelClass == kClassRGB10p32) {
    classes = {kClassRGB, kClassBGR};
  } else if (row.pixelClass == kClassBGR || row.pixelClass == kClassBGR10p32) {
    classes = {kClassBGR, kClassRGB};
  } else if (row.pixelClass == kClassRGBa || row.pixelClass == kClassBGRa) {
    classes = {row.pixelClass};
  }
  std::vector<uint32_t> outputs;
  for (const uint32_t bits : {8U, 10U, 12U}) {
    for (const uint32_t pixelClass : classes) {
      outputs.push_back(FormatOfClass(pixelClass, bits));
    }
  }
  if (row.type == kTypeBayer) {
    outputs.push_back(IdOf("RGB10p32"));
  }
  if (std::find(outputs.begin(), outputs.end(), input) == outputs.end()) {
    outputs.push_back(input);
  }
  return outputs;
}

size_t BytesOfImage(uint32_t format, size_t width, size_t height) {
  return BytesOfRun(FormatOf(format).runBytes, width * height);
}

std::vector<uint32_t> DecodeSamples(uint32_t format, size_t pixels, const std::vector<uint8_t>& bytes) {
  const FormatRow& row = FormatOf(format);
  const size_t bits = row.significantBitsPerChannel;
  std::vector<uint32_t> samples(pixels * row.channels);
  for (size_t pixel = 0; pixel < pixels; ++pixel) {
    for (size_t channel = 0; channel < row.channels; ++channel) {
      const size_t index = pixel * row.channels + channel;
      uint32_t& sample = samples[index];
      if (IsMipi(row)) {
        const MipiPlace place = PlaceOfMipi(row.significantBitsPerChannel, pixel);
        // The last group may be cut off before its low bits, which then count as 0.
        const uint32_t low = place.lowByte < bytes.size() ? bytes[place.lowByte] : 0U;
        const uint32_t lowMask = (1U << place.lowBits) - 1;
        sample = static_cast<uint32_t>(bytes.at(place.highByte)) << place.lowBits | (low >> place.lowShift & lowMask);
      } else if (row.packed && row.channels == 3) {
        sample = BitsFrom(bytes, pixel * 32 + channel * 10, 10);
      } else if (row.packed) {
        sample = BitsFrom(bytes, pixel * bits, bits);
      } else if (row.storageBitsPerChannel == 16) {
        sample = static_cast<uint32_t>(bytes.at(index * 2) | bytes.at(index * 2 + 1) << 8);
      } else {
        sample = bytes.at(index);
      }
    }
  }
  return samples;
}

std::vector<uint8_t> EncodeSamples(uint32_t format, size_t pixels, const std::vector<uint32_t>& samples) {
  const FormatRow& row = FormatOf(format);
  const size_t bits = row.significantBitsPerChannel;
  std::vector<uint8_t> bytes(BytesOfRun(row.runBytes, pixels));
  for (size_t pixel = 0; pixel < pixels; ++pixel) {
    for (size_t channel = 0; channel < row.channels; ++channel) {
      const size_t index = pixel * row.channels + channel;
      const uint32_t sample = samples.at(index);
      if (IsMipi(row)) {
        const MipiPlace place = PlaceOfMipi(row.significantBitsPerChannel, pixel);
        bytes.at(place.highByte) = static_cast<uint8_t>(sample >> place.lowBits);
        if (place.lowByte < bytes.size()) {
          const uint32_t low = (sample & ((1U << place.lowBits) - 1)) << place.lowShift;
          bytes[place.lowByte] = static_cast<uint8_t>(bytes[place.lowByte] | low);
        }
      } else if (row.packed && row.channels == 3) {
        BitsInto(bytes, pixel * 32 + channel * 10, 10, sample);
      } else if (row.packed) {
        BitsInto(bytes, pixel * bits, bits, sample);
      } else if (row.storageBitsPerChannel == 16) {
        bytes.at(index * 2) = static_cast<uint8_t>(sample);
        bytes.at(index * 2 + 1) = static_cast<uint8_t>(sample >> 8);
      } else {
        bytes.at(index) = static_cast<uint8_t>(sample);
      }
    }
  }
  return bytes;
}

// SplitMix64.
uint64_t ModelRandom::Next() {
  state_ += 0x9E3779B97F4A7C15U;
  uint64_t z = state_;
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9U;
  z = (z ^ z >> 27) * 0x94D049BB133111EBU;
  return z ^ z >> 31;
}

const char* NameOf(Fill fill) {
  switch (fill) {
    case Fill::kZero:
      return "zero";
    case Fill::kMaximum:
      return "maximum";
    case Fill::kAlternating:
      return "alternating";
    case Fill::kFlat:
      return "flat";
    case Fill::kRandom:
      return "random";
    case Fill::kGarbage:
      return "garbage";
  }
  return "?";
}

ModelImage MakeFilledImage(uint32_t format, size_t width, size_t height, Fill fill, uint64_t seed) {
  const FormatRow& row = FormatOf(format);
  ModelRandom random(seed);
  if (fill == Fill::kGarbage) {
    std::vector<uint8_t> bytes(BytesOfImage(format, width, height));
    for (uint8_t& byte : bytes) {
      byte = static_cast<uint8_t>(random.Below(256));
    }
    return MakeModelImage(format, width, height, std::move(bytes));
  }
  const uint32_t flat = random.Below(row.maximum + 1);
  std::vector<uint32_t> samples(width * height * row.channels);
  for (size_t i = 0; i < samples.size(); ++i) {
    switch (fill) {
      case Fill::kZero:
        samples[i] = 0;
        break;
      case Fill::kMaximum:
        samples[i] = row.maximum;
        break;
      case Fill::kAlternating:
        samples[i] = i / row.channels % 2 == 0 ? row.maximum : 0;
        break;
      case Fill::kFlat:
        samples[i] = flat;
        break;
      case Fill::kRandom:
      case Fill::kGarbage:
        samples[i] = random.Below(row.maximum + 1);
        break;
    }
  }
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

}  // namespace korvel_test
