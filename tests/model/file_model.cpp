#include "tests/model/file_model.h"

#include <zlib.h>

#include <algorithm>
#include <stdexcept>

namespace korvel_test {
namespace {

constexpr uint32_t kMono8 = IdOf("Mono8");
constexpr uint32_t kMono10 = IdOf("Mono10");
constexpr uint32_t kMono12 = IdOf("Mono12");

constexpr FormatInBmp kNoBmp = {0, 0, std::nullopt, false, 0};
constexpr FormatInBmp kBmpGrey8 = {8, 0, std::nullopt, true, kMono8};
constexpr FormatInBmp kBmpGrey10 = {16, 3, {{0x3FF, 0x3FF, 0x3FF}}, false, kMono10};
constexpr FormatInBmp kBmpGrey12 = {16, 3, {{0xFFF, 0xFFF, 0xFFF}}, false, kMono12};
constexpr FormatInBmp kBmpRgb8 = {24, 0, {{0xFF, 0xFF00, 0xFF0000}}, false, IdOf("RGB8")};
constexpr FormatInBmp kBmpBgr8 = {24, 0, {{0xFF0000, 0xFF00, 0xFF}}, false, IdOf("BGR8")};
constexpr FormatInBmp kBmpRgba8 = {32, 3, {{0xFF, 0xFF00, 0xFF0000}}, false, IdOf("RGBa8")};
constexpr FormatInBmp kBmpBgra8 = {32, 3, {{0xFF0000, 0xFF00, 0xFF}}, false, IdOf("BGRa8")};
constexpr FormatInBmp kBmpRgb10p32 = {32, 3, {{0x3FF, 0xFFC00, 0x3FF00000}}, false, IdOf("RGB10p32")};
constexpr FormatInBmp kBmpBgr10p32 = {32, 3, {{0x3FF00000, 0xFFC00, 0x3FF}}, false, IdOf("BGR10p32")};

constexpr FormatInPng kNoPng = {0, 0, 0, false, 0};
constexpr FormatInPng kPngGrey8 = {8, 0, 0, false, kMono8};
constexpr FormatInPng kPngGrey10 = {16, 0, 10, false, kMono10};
constexpr FormatInPng kPngGrey12 = {16, 0, 12, false, kMono12};
constexpr FormatInPng kPngRgb8 = {8, 2, 0, false, IdOf("RGB8")};
constexpr FormatInPng kPngBgr8 = {8, 2, 0, true, IdOf("RGB8")};
constexpr FormatInPng kPngRgba8 = {8, 6, 0, false, IdOf("RGBa8")};
constexpr FormatInPng kPngBgra8 = {8, 6, 0, true, IdOf("RGBa8")};
constexpr FormatInPng kPngRgb10 = {16, 2, 10, false, IdOf("RGB10")};
constexpr FormatInPng kPngBgr10 = {16, 2, 10, true, IdOf("RGB10")};
constexpr FormatInPng kPngRgb12 = {16, 2, 12, false, IdOf("RGB12")};
constexpr FormatInPng kPngBgr12 = {16, 2, 12, true, IdOf("RGB12")};
constexpr FormatInPng kPngRgba10 = {16, 6, 10, false, IdOf("RGBa10")};
constexpr FormatInPng kPngBgra10 = {16, 6, 10, true, IdOf("RGBa10")};
constexpr FormatInPng kPngRgba12 = {16, 6, 12, false, IdOf("RGBa12")};
constexpr FormatInPng kPngBgra12 = {16, 6, 12, true, IdOf("RGBa12")};

constexpr FormatInJpeg kNoJpeg = {0, false, 0};
constexpr FormatInJpeg kJpegGrey = {1, false, kMono8};
constexpr FormatInJpeg kJpegRgb = {3, false, IdOf("RGB8")};
constexpr FormatInJpeg kJpegBgr = {3, true, IdOf("RGB8")};
constexpr FormatInJpeg kJpegRgba = {4, false, IdOf("RGB8")};
constexpr FormatInJpeg kJpegBgra = {4, true, IdOf("RGB8")};

constexpr std::array<FormatInFiles, 50> kPlaces = {{
    {IdOf("Invalid"), kNoBmp, kNoPng, kNoJpeg},           {IdOf("Mono8"), kBmpGrey8, kPngGrey8, kJpegGrey},
    {IdOf("BayerGR8"), kBmpGrey8, kPngGrey8, kJpegGrey},  {IdOf("BayerRG8"), kBmpGrey8, kPngGrey8, kJpegGrey},
    {IdOf("BayerGB8"), kBmpGrey8, kPngGrey8, kJpegGrey},  {IdOf("BayerBG8"), kBmpGrey8, kPngGrey8, kJpegGrey},
    {IdOf("Mono10p"), kNoBmp, kNoPng, kNoJpeg},           {IdOf("BayerBG10p"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerGB10p"), kNoBmp, kNoPng, kNoJpeg},        {IdOf("BayerGR10p"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerRG10p"), kNoBmp, kNoPng, kNoJpeg},        {IdOf("Mono12p"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerBG12p"), kNoBmp, kNoPng, kNoJpeg},        {IdOf("BayerGB12p"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerGR12p"), kNoBmp, kNoPng, kNoJpeg},        {IdOf("BayerRG12p"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("Mono10"), kBmpGrey10, kPngGrey10, kNoJpeg},    {IdOf("Mono12"), kBmpGrey12, kPngGrey12, kNoJpeg},
    {IdOf("BayerGR10"), kBmpGrey10, kPngGrey10, kNoJpeg}, {IdOf("BayerRG10"), kBmpGrey10, kPngGrey10, kNoJpeg},
    {IdOf("BayerGB10"), kBmpGrey10, kPngGrey10, kNoJpeg}, {IdOf("BayerBG10"), kBmpGrey10, kPngGrey10, kNoJpeg},
    {IdOf("BayerGR12"), kBmpGrey12, kPngGrey12, kNoJpeg}, {IdOf("BayerRG12"), kBmpGrey12, kPngGrey12, kNoJpeg},
    {IdOf("BayerGB12"), kBmpGrey12, kPngGrey12, kNoJpeg}, {IdOf("BayerBG12"), kBmpGrey12, kPngGrey12, kNoJpeg},
    {IdOf("RGB8"), kBmpRgb8, kPngRgb8, kJpegRgb},         {IdOf("BGR8"), kBmpBgr8, kPngBgr8, kJpegBgr},
    {IdOf("RGBa8"), kBmpRgba8, kPngRgba8, kJpegRgba},     {IdOf("BGRa8"), kBmpBgra8, kPngBgra8, kJpegBgra},
    {IdOf("RGB10p32"), kBmpRgb10p32, kNoPng, kNoJpeg},    {IdOf("BGR10p32"), kBmpBgr10p32, kNoPng, kNoJpeg},
    {IdOf("RGB10"), kNoBmp, kPngRgb10, kNoJpeg},          {IdOf("BGR10"), kNoBmp, kPngBgr10, kNoJpeg},
    {IdOf("RGB12"), kNoBmp, kPngRgb12, kNoJpeg},          {IdOf("BGR12"), kNoBmp, kPngBgr12, kNoJpeg},
    {IdOf("BGRa10"), kNoBmp, kPngBgra10, kNoJpeg},        {IdOf("BGRa12"), kNoBmp, kPngBgra12, kNoJpeg},
    {IdOf("RGBa10"), kNoBmp, kPngRgba10, kNoJpeg},        {IdOf("RGBa12"), kNoBmp, kPngRgba12, kNoJpeg},
    {IdOf("BayerRG10g40Qrv"), kNoBmp, kNoPng, kNoJpeg},   {IdOf("BayerGB10g40Qrv"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerGR10g40Qrv"), kNoBmp, kNoPng, kNoJpeg},   {IdOf("BayerBG10g40Qrv"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("Mono10g40Qrv"), kNoBmp, kNoPng, kNoJpeg},      {IdOf("BayerRG12g24Qrv"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerGB12g24Qrv"), kNoBmp, kNoPng, kNoJpeg},   {IdOf("BayerGR12g24Qrv"), kNoBmp, kNoPng, kNoJpeg},
    {IdOf("BayerBG12g24Qrv"), kNoBmp, kNoPng, kNoJpeg},   {IdOf("Mono12g24Qrv"), kNoBmp, kNoPng, kNoJpeg},
}};

// A mono format and the Bayer formats whose pixels lie in memory as its own do.
struct Family {
  uint32_t mono;
  std::array<uint32_t, 4> bayer;
};

constexpr Family kFamilies[] = {
    {kMono8, {IdOf("BayerGR8"), IdOf("BayerRG8"), IdOf("BayerGB8"), IdOf("BayerBG8")}},
    {kMono10, {IdOf("BayerGR10"), IdOf("BayerRG10"), IdOf("BayerGB10"), IdOf("BayerBG10")}},
    {kMono12, {IdOf("BayerGR12"), IdOf("BayerRG12"), IdOf("BayerGB12"), IdOf("BayerBG12")}},
    {IdOf("Mono10p"), {IdOf("BayerBG10p"), IdOf("BayerGB10p"), IdOf("BayerGR10p"), IdOf("BayerRG10p")}},
    {IdOf("Mono12p"), {IdOf("BayerBG12p"), IdOf("BayerGB12p"), IdOf("BayerGR12p"), IdOf("BayerRG12p")}},
};

bool IsBayerOfMono(uint32_t bayer, uint32_t mono) {
  return std::any_of(std::begin(kFamilies), std::end(kFamilies), [&](const Family& family) {
    return family.mono == mono && std::find(family.bayer.begin(), family.bayer.end(), bayer) != family.bayer.end();
  });
}

void Append(Bytes& to, const Bytes& bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

void AppendLittleEndian(Bytes& to, uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) to.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void AppendBigEndian32(Bytes& to, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) to.push_back(static_cast<uint8_t>(value >> shift));
}

uint32_t BigEndian32(const Bytes& bytes, size_t at) {
  return static_cast<uint32_t>(bytes.at(at)) << 24 | static_cast<uint32_t>(bytes.at(at + 1)) << 16 |
         static_cast<uint32_t>(bytes.at(at + 2)) << 8 | bytes.at(at + 3);
}

uint32_t LittleEndian32(const Bytes& bytes, size_t at) {
  return static_cast<uint32_t>(bytes.at(at + 3)) << 24 | static_cast<uint32_t>(bytes.at(at + 2)) << 16 |
         static_cast<uint32_t>(bytes.at(at + 1)) << 8 | bytes.at(at);
}

void SwapRedAndBlue(Bytes& bytes, size_t pixelBytes) {
  for (size_t i = 0; i + pixelBytes <= bytes.size(); i += pixelBytes) std::swap(bytes[i], bytes[i + 2]);
}

// What a BMP file holds in place of a run of an image's pixels.
Bytes BmpPixels(uint32_t format, Bytes bytes) {
  if (format == IdOf("RGB8")) SwapRedAndBlue(bytes, 3);
  if (format == IdOf("RGB10p32")) {
    Bytes swapped;
    for (size_t i = 0; i < bytes.size(); i += 4) {
      const uint32_t word = LittleEndian32(bytes, i);
      const uint32_t low = word % 1024;
      const uint32_t middle = word / 1024 % 1024;
      const uint32_t high = word / 1048576 % 1024;
      AppendLittleEndian(swapped, low * 1048576 + middle * 1024 + high, 4);
    }
    return swapped;
  }
  return bytes;
}

size_t PngChannels(uint8_t colourType) {
  switch (colourType) {
    case 0:
    case 3:
      return 1;
    case 2:
      return 3;
    case 4:
      return 2;
    case 6:
      return 4;
    default:
      throw std::runtime_error("no such colour type");
  }
}

uint8_t Paeth(int left, int above, int corner) {
  const int estimate = left + above - corner;
  const int toLeft = std::abs(estimate - left);
  const int toAbove = std::abs(estimate - above);
  const int toCorner = std::abs(estimate - corner);
  if (toLeft <= toAbove && toLeft <= toCorner) return static_cast<uint8_t>(left);
  return static_cast<uint8_t>(toAbove <= toCorner ? above : corner);
}

Bytes Inflated(const Bytes& compressed, size_t size) {
  Bytes bytes(size + 1);
  uLongf length = bytes.size();
  if (uncompress(bytes.data(), &length, compressed.data(), compressed.size()) != Z_OK || length != size) {
    throw std::runtime_error("the compressed data doesn't hold the image");
  }
  bytes.resize(size);
  return bytes;
}

Bytes Unfiltered(const Bytes& filtered, size_t rowBytes, size_t pixelBytes) {
  Bytes rows;
  for (size_t row = 0; row < filtered.size() / (rowBytes + 1); ++row) {
    const uint8_t filter = filtered[row * (rowBytes + 1)];
    for (size_t i = 0; i < rowBytes; ++i) {
      const int left = i < pixelBytes ? 0 : rows[row * rowBytes + i - pixelBytes];
      const int above = row == 0 ? 0 : rows[(row - 1) * rowBytes + i];
      const int corner = row == 0 || i < pixelBytes ? 0 : rows[(row - 1) * rowBytes + i - pixelBytes];
      int prediction = 0;
      if (filter == 1) prediction = left;
      if (filter == 2) prediction = above;
      if (filter == 3) prediction = (left + above) / 2;
      if (filter == 4) prediction = Paeth(left, above, corner);
      if (filter > 4) throw std::runtime_error("no such filter");
      rows.push_back(static_cast<uint8_t>(filtered[row * (rowBytes + 1) + 1 + i] + prediction));
    }
  }
  return rows;
}

// Where the pixels of one pass through an interlaced image lie.
struct Pass {
  uint32_t firstX, firstY, stepX, stepY;
};

constexpr Pass kWholeImage[] = {{0, 0, 1, 1}};
constexpr Pass kAdam7[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                           {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

// The rows of one pass, each behind a zero for "no filter".
void AppendPass(Bytes& rows, const PngRecipe& recipe, const Pass& pass) {
  const size_t channels = PngChannels(recipe.colourType);
  if (pass.firstX >= recipe.width) return;
  for (uint32_t y = pass.firstY; y < recipe.height; y += pass.stepY) {
    rows.push_back(0);
    unsigned bitsFilled = 8;
    for (uint32_t x = pass.firstX; x < recipe.width; x += pass.stepX) {
      for (size_t channel = 0; channel < channels; ++channel) {
        const unsigned sample = recipe.samples.at((size_t{y} * recipe.width + x) * channels + channel);
        for (unsigned bit = recipe.depth; bit > 0; --bit) {
          if (bitsFilled == 8) {
            rows.push_back(0);
            bitsFilled = 0;
          }
          rows.back() = static_cast<uint8_t>(rows.back() | ((sample >> (bit - 1)) & 1) << (7 - bitsFilled));
          ++bitsFilled;
        }
      }
    }
  }
}

}  // namespace

const std::string& EndingOf(FileType type) {
  static const std::array<std::string, 4> endings = {".bmp", ".png", ".jpg", ".raw"};
  return endings.at(static_cast<size_t>(type));
}

const FormatInFiles& PlaceInFiles(uint32_t format) {
  for (const FormatInFiles& place : kPlaces) {
    if (place.id == format) return place;
  }
  throw std::out_of_range("no such format");
}

bool HasPlace(FileType type, uint32_t format) {
  const FormatInFiles& place = PlaceInFiles(format);
  switch (type) {
    case FileType::kBmp:
      return place.bmp.bits != 0;
    case FileType::kPng:
      return place.png.depth != 0;
    case FileType::kJpeg:
      return place.jpeg.components != 0;
    case FileType::kRaw:
      return format != 0;
  }
  throw std::logic_error("no such file type");
}

uint32_t ReadBackFormat(FileType type, uint32_t format) {
  const FormatInFiles& place = PlaceInFiles(format);
  switch (type) {
    case FileType::kBmp:
      return place.bmp.readBack;
    case FileType::kPng:
      return place.png.readBack;
    case FileType::kJpeg:
      return place.jpeg.readBack;
    case FileType::kRaw:
      return format;
  }
  throw std::logic_error("no such file type");
}

std::optional<uint32_t> FormatWhenReadAs(FileType type, uint32_t found, uint32_t requested) {
  if (requested == found) return found;
  if (type == FileType::kRaw) {
    if (IsBayerOfMono(found, requested)) return found;
  } else if (IsBayerOfMono(requested, found)) {
    return requested;
  }
  return std::nullopt;
}

ModelImage ReadBack(FileType type, const ModelImage& image) {
  Bytes bytes = image.bytes;
  if (type == FileType::kBmp) bytes = BmpPixels(image.format, std::move(bytes));
  if (type == FileType::kPng && PlaceInFiles(image.format).png.blueFirst) {
    const size_t channelBytes = PlaceInFiles(image.format).png.depth / 8;
    const size_t pixelBytes = PngChannels(PlaceInFiles(image.format).png.colourType) * channelBytes;
    for (size_t i = 0; i < bytes.size(); i += pixelBytes) {
      for (size_t k = 0; k < channelBytes; ++k) std::swap(bytes[i + k], bytes[i + 2 * channelBytes + k]);
    }
  }
  if (type == FileType::kJpeg) throw std::logic_error("pixels don't come back from JPEG files as they were");
  return MakeModelImage(ReadBackFormat(type, image.format), image.width, image.height, std::move(bytes));
}

Bytes BmpHeader(const BmpHeaderFields& fields) {
  Bytes header;
  AppendLittleEndian(header, fields.magic, 2);
  AppendLittleEndian(header, fields.fileSize, 4);
  AppendLittleEndian(header, fields.reserved1, 2);
  AppendLittleEndian(header, fields.reserved2, 2);
  AppendLittleEndian(header, fields.pixelOffset, 4);
  AppendLittleEndian(header, fields.infoSize, 4);
  AppendLittleEndian(header, static_cast<uint32_t>(fields.width), 4);
  AppendLittleEndian(header, static_cast<uint32_t>(fields.height), 4);
  AppendLittleEndian(header, fields.planes, 2);
  AppendLittleEndian(header, fields.bitsPerPixel, 2);
  AppendLittleEndian(header, fields.compression, 4);
  AppendLittleEndian(header, fields.imageSize, 4);
  AppendLittleEndian(header, fields.resolutionX, 4);
  AppendLittleEndian(header, fields.resolutionY, 4);
  AppendLittleEndian(header, fields.coloursUsed, 4);
  AppendLittleEndian(header, fields.coloursImportant, 4);
  return header;
}

Bytes BmpMasks(const std::array<uint32_t, 3>& masks) {
  Bytes bytes;
  for (const uint32_t mask : masks) AppendLittleEndian(bytes, mask, 4);
  return bytes;
}

Bytes GreyColourTable() {
  Bytes table;
  for (int i = 0; i < 256; ++i) {
    const auto grey = static_cast<uint8_t>(i);
    Append(table, {grey, grey, grey, 0});
  }
  return table;
}

size_t BmpPadding(size_t lineBytes) { return lineBytes % 4; }

Bytes BmpFile(const ModelImage& image) {
  const FormatInBmp& place = PlaceInFiles(image.format).bmp;
  if (place.bits == 0) throw std::invalid_argument("BMP has no place for the format");
  const size_t lineBytes = image.width * place.bits / 8;
  const size_t pixelBytes = (lineBytes + BmpPadding(lineBytes)) * image.height;
  BmpHeaderFields fields;
  fields.fileSize = static_cast<uint32_t>(kBmpHeaderBytes + pixelBytes);
  fields.pixelOffset = 54;
  if (place.masks) fields.pixelOffset = 66;
  if (place.colourTable) fields.pixelOffset = 1078;
  fields.width = static_cast<int32_t>(image.width);
  fields.height = static_cast<int32_t>(image.height);
  fields.bitsPerPixel = place.bits;
  fields.compression = place.compression;
  fields.imageSize = static_cast<uint32_t>(pixelBytes);
  fields.coloursUsed = place.colourTable ? 256 : 0;
  fields.coloursImportant = fields.coloursUsed;

  Bytes file = BmpHeader(fields);
  if (place.masks) Append(file, BmpMasks(*place.masks));
  if (place.colourTable) Append(file, GreyColourTable());
  const Bytes pixels = BmpPixels(image.format, image.bytes);
  for (size_t line = image.height; line > 0; --line) {
    const uint8_t* const first = pixels.data() + (line - 1) * lineBytes;
    file.insert(file.end(), first, first + lineBytes);
    file.insert(file.end(), BmpPadding(lineBytes), 0);
  }
  return file;
}

Bytes RawHeader(uint32_t format, uint64_t byteCount, uint64_t width, uint64_t height) {
  Bytes header;
  AppendLittleEndian(header, format, 4);
  AppendLittleEndian(header, byteCount, 8);
  AppendLittleEndian(header, width, 8);
  AppendLittleEndian(header, height, 8);
  return header;
}

Bytes RawFile(const ModelImage& image) {
  return Joined({RawHeader(image.format, image.bytes.size(), image.width, image.height), image.bytes});
}

PngContent ParsePng(const Bytes& file) {
  const Bytes signature = PngSignature();
  if (file.size() < signature.size() || !std::equal(signature.begin(), signature.end(), file.begin())) {
    throw std::runtime_error("no PNG signature");
  }
  PngContent content;
  Bytes compressed;
  for (size_t at = signature.size(); at < file.size();) {
    const size_t length = BigEndian32(file, at);
    if (length > file.size() - at - 4 || file.size() - at - 4 - length < 8) throw std::runtime_error("a chunk is cut");
    const std::string name(file.begin() + static_cast<ptrdiff_t>(at + 4),
                           file.begin() + static_cast<ptrdiff_t>(at + 8));
    const Bytes data(file.begin() + static_cast<ptrdiff_t>(at + 8),
                     file.begin() + static_cast<ptrdiff_t>(at + 8 + length));
    if (crc32(0, file.data() + at + 4, static_cast<uInt>(length + 4)) != BigEndian32(file, at + 8 + length)) {
      throw std::runtime_error("a chunk's checksum is wrong");
    }
    if (content.chunks.empty() || name != "IDAT" || content.chunks.back() != name) content.chunks.push_back(name);
    if (name == "IHDR") {
      content.width = BigEndian32(data, 0);
      content.height = BigEndian32(data, 4);
      content.depth = data.at(8);
      content.colourType = data.at(9);
      content.interlace = data.at(12);
    }
    if (name == "sBIT") content.significantBits = data;
    if (name == "IDAT") Append(compressed, data);
    at += 12 + length;
  }
  if (content.chunks.empty() || content.chunks.front() != "IHDR" || content.chunks.back() != "IEND") {
    throw std::runtime_error("no whole PNG file");
  }
  if (content.interlace != 0 || (content.depth != 8 && content.depth != 16)) {
    throw std::runtime_error("interlaced, or of another depth");
  }
  content.levelClass = compressed.at(1) >> 6;
  const size_t pixelBytes = PngChannels(content.colourType) * content.depth / 8;
  const size_t rowBytes = pixelBytes * content.width;
  const Bytes rows = Unfiltered(Inflated(compressed, (rowBytes + 1) * content.height), rowBytes, pixelBytes);
  if (content.depth == 8) {
    content.samples.assign(rows.begin(), rows.end());
  } else {
    for (size_t i = 0; i < rows.size(); i += 2) {
      content.samples.push_back(static_cast<uint16_t>(rows[i] * 256 + rows[i + 1]));
    }
  }
  return content;
}

std::vector<uint16_t> PngSamples(const ModelImage& image) {
  const FormatInPng& place = PlaceInFiles(image.format).png;
  std::vector<uint16_t> samples;
  for (const uint32_t sample : DecodeSamples(image.format, image.width * image.height, image.bytes)) {
    samples.push_back(static_cast<uint16_t>(sample));
  }
  if (place.blueFirst) {
    const size_t channels = PngChannels(place.colourType);
    for (size_t i = 0; i < samples.size(); i += channels) std::swap(samples[i], samples[i + 2]);
  }
  return samples;
}

Bytes PngSignature() { return {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}; }

Bytes PngChunk(std::string_view name, const Bytes& content) {
  Bytes chunk;
  AppendBigEndian32(chunk, static_cast<uint32_t>(content.size()));
  for (const char letter : name) chunk.push_back(static_cast<uint8_t>(letter));
  Append(chunk, content);
  AppendBigEndian32(chunk, static_cast<uint32_t>(crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4))));
  return chunk;
}

Bytes PngHeaderChunk(uint32_t width, uint32_t height, uint8_t depth, uint8_t colourType, uint8_t interlace) {
  Bytes content;
  AppendBigEndian32(content, width);
  AppendBigEndian32(content, height);
  Append(content, {depth, colourType, 0, 0, interlace});
  return PngChunk("IHDR", content);
}

Bytes MakePng(const PngRecipe& recipe) {
  Bytes file = PngSignature();
  Append(file, PngHeaderChunk(recipe.width, recipe.height, recipe.depth, recipe.colourType, recipe.interlaced ? 1 : 0));
  if (!recipe.significantBits.empty()) Append(file, PngChunk("sBIT", recipe.significantBits));
  if (!recipe.palette.empty()) Append(file, PngChunk("PLTE", recipe.palette));
  if (!recipe.transparency.empty()) Append(file, PngChunk("tRNS", recipe.transparency));
  Bytes rows;
  if (recipe.interlaced) {
    for (const Pass& pass : kAdam7) AppendPass(rows, recipe, pass);
  } else {
    AppendPass(rows, recipe, kWholeImage[0]);
  }
  Bytes compressed(compressBound(rows.size()));
  uLongf length = compressed.size();
  if (compress(compressed.data(), &length, rows.data(), rows.size()) != Z_OK) throw std::runtime_error("zlib failed");
  compressed.resize(length);
  Append(file, PngChunk("IDAT", compressed));
  Append(file, PngChunk("IEND", {}));
  return file;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) Append(whole, part);
  return whole;
}

}  // namespace korvel_test
