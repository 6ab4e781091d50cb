// The head of a BMP file: the file and info headers of 14 and 40 bytes, masks where the format has any, and a colour
// table for 8 bits.
//
//   format             bits   compression     masks (red, green, blue)            table
//   Mono8, Bayer 8     8      0                                                   256 greys
//   Mono10, Bayer 10   16     3 (bit fields)  0x3FF, 0x3FF, 0x3FF
//   Mono12, Bayer 12   16     3               0xFFF, 0xFFF, 0xFFF
//   RGB8               24     0               0xFF, 0xFF00, 0xFF0000
//   BGR8               24     0               0xFF0000, 0xFF00, 0xFF
//   RGBa8              32     3               0xFF, 0xFF00, 0xFF0000
//   BGRa8              32     3               0xFF0000, 0xFF00, 0xFF
//   RGB10p32           32     3               0x3FF, 0xFFC00, 0x3FF00000
//   BGR10p32           32     3               0x3FF00000, 0xFFC00, 0x3FF
//
// The files keep an image's own depth, so that it reads back unchanged; ordinary viewers may not show them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/fixed_layout.h"
#include "core/image.h"
#include "core/pixel_format.h"

namespace img::io::bmp {

struct BMPMasks {
  uint32_t red = 0;
  uint32_t green = 0;
  uint32_t blue = 0;

  bool operator==(const BMPMasks&) const = default;
};

struct BMPHeader {
  static constexpr uint16_t kMagic = 0x4D42;  // "BM"
  static constexpr uint32_t kInfoSize = 40;
  static constexpr uint32_t kBitFields = 3;
  static constexpr uint32_t kColours = 256;

  uint16_t magic = 0;
  uint32_t fileSize = 0;  // Intended: masks and colour table aren't counted.
  uint32_t reserved = 0;
  uint32_t pixelOffset = 0;
  uint32_t infoSize = 0;
  int32_t width = 0;
  int32_t height = 0;  // above 0 if the file's first line is the image's last, else below
  uint16_t planes = 0;
  uint16_t bitsPerPixel = 0;
  uint32_t compression = 0;
  uint32_t imageSize = 0;
  uint64_t resolution = 0;  // in pixels per metre, of each axis in 32 bits
  uint32_t coloursUsed = 0;
  uint32_t coloursImportant = 0;
  BMPMasks masks;  // behind the info header, if HasMasks()

  bool HasMasks() const;
  bool HasColourTable() const;

  // Bytes that follow the pixels of each line. Intended: the remainder of the line's length by 4, not what it lacks to
  // a multiple of 4.
  static constexpr size_t PaddingOf(size_t lineByteCount) { return lineByteCount & 3; }

  // The header of a new file. Throws ImageFormatNotSupported for a format that has no line in the table above, and Io
  // for an image whose size the header's fields can't hold.
  static BMPHeader imgToHeader(const IfcImage& image);

  // The format of a file's pixels, as the request allows. Throws ImageFormatNotSupported if no format fits the file,
  // and ImageFormatInterpretationError for a request that it doesn't allow.
  static PixelFormatId reselectPixelFormat(const BMPHeader& header, std::optional<PixelFormatId> requested);
};

inline constexpr auto kBMPHeaderLayout = MakeFixedLayout<54>(
    Field{0, &BMPHeader::magic}, Field{2, &BMPHeader::fileSize}, Field{6, &BMPHeader::reserved},
    Field{10, &BMPHeader::pixelOffset}, Field{14, &BMPHeader::infoSize}, Field{18, &BMPHeader::width},
    Field{22, &BMPHeader::height}, Field{26, &BMPHeader::planes}, Field{28, &BMPHeader::bitsPerPixel},
    Field{30, &BMPHeader::compression}, Field{34, &BMPHeader::imageSize}, Field{38, &BMPHeader::resolution},
    Field{46, &BMPHeader::coloursUsed}, Field{50, &BMPHeader::coloursImportant});

inline constexpr auto kBMPMasksLayout =
    MakeFixedLayout<12>(Field{0, &BMPMasks::red}, Field{4, &BMPMasks::green}, Field{8, &BMPMasks::blue});

// Blue, green, red and a zero byte for each colour.
using BMPColourTable = std::array<uint8_t, size_t{4} * BMPHeader::kColours>;

// All three colours of an entry are its index.
BMPColourTable GreyColourTable();

}  // namespace img::io::bmp
