#include "io/bmp/bmp_header.h"

#include <limits>

#include "io/file_formats.h"
#include "io/io_failure.h"

namespace img::io::bmp {
namespace {

using korvel::internal::ImgStatusCode;

// Where pixels begin with masks, with a colour table and with both.
constexpr uint32_t kHeadersEnd = static_cast<uint32_t>(decltype(kBMPHeaderLayout)::kByteCount);
constexpr uint32_t kMasksEnd = kHeadersEnd + static_cast<uint32_t>(decltype(kBMPMasksLayout)::kByteCount);
constexpr uint32_t kTableEnd = kHeadersEnd + static_cast<uint32_t>(sizeof(BMPColourTable));
constexpr uint32_t kMasksAndTableEnd = kMasksEnd + static_cast<uint32_t>(sizeof(BMPColourTable));

// The bits of each colour in a pixel read as a little-endian number; those of a single channel are the same for all
// three, and at 8 bits the colour table takes the place of masks.
constexpr BMPMasks MasksOf(const FormatFacts& format) {
  const uint32_t first = format.maxValue;
  if (format.channels == 1) return format.significantBits == 8 ? BMPMasks{} : BMPMasks{first, first, first};
  const uint32_t second = first << format.significantBits;
  const uint32_t third = second << format.significantBits;
  const bool isBlueFirst = format.pixelClass == PixelClass::BGR || format.pixelClass == PixelClass::BGRa ||
                           format.pixelClass == PixelClass::BGR10p32;
  return isBlueFirst ? BMPMasks{third, second, first} : BMPMasks{first, second, third};
}

constexpr uint32_t CompressionOf(const FormatFacts& format) {
  const bool isPlain = format.pixelStorageBits == 8 || format.pixelStorageBits == 24;
  return isPlain ? 0 : BMPHeader::kBitFields;
}

// The format of a file with bit fields: of those with the same masks, the mono one. Invalid if there is none.
PixelFormatId FormatOfMasks(const BMPMasks& masks) {
#define KORVEL_MATCH_MASKS(name)                                                      \
  {                                                                                   \
    constexpr FormatFacts format = kFacts<PixelFormatId::name>;                       \
    if (IsKept(FileFormat::Bmp, format) && format.type != PixelType::Bayer &&         \
        CompressionOf(format) == BMPHeader::kBitFields && masks == MasksOf(format)) { \
      return PixelFormatId::name;                                                     \
    }                                                                                 \
  }
  KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_MATCH_MASKS)
#undef KORVEL_MATCH_MASKS
  return PixelFormatId::Invalid;
}

PixelFormatId FindFormat(const BMPHeader& header) {
  if (header.compression == BMPHeader::kBitFields) return FormatOfMasks(header.masks);
  if (header.compression != 0) return PixelFormatId::Invalid;
  if (header.coloursUsed == BMPHeader::kColours && header.coloursImportant == BMPHeader::kColours) {
    return PixelFormatId::Mono8;
  }
  const bool isBlueFirst = header.pixelOffset == kMasksEnd && header.masks == MasksOf(kFacts<PixelFormatId::BGR8>);
  return isBlueFirst ? PixelFormatId::BGR8 : PixelFormatId::RGB8;
}

}  // namespace

bool BMPHeader::HasMasks() const { return pixelOffset == kMasksEnd || pixelOffset == kMasksAndTableEnd; }

bool BMPHeader::HasColourTable() const { return pixelOffset == kTableEnd || pixelOffset == kMasksAndTableEnd; }

BMPHeader BMPHeader::imgToHeader(const IfcImage& image) {
  constexpr const char* kLocation =
      "static img::io::bmp::BMPHeader img::io::bmp::BMPHeader::imgToHeader(const img::IfcImage &)";
  const FormatFacts format = RequireKept(FileFormat::Bmp, image, kLocation);

  const Size2D& size = image.Area().size;
  const size_t lineByteCount = size.width * (format.pixelStorageBits / 8);
  // An image in memory has fewer bytes than a size_t counts, and so has one with three more for each line.
  const size_t imageSize = (lineByteCount + PaddingOf(lineByteCount)) * size.height;
  constexpr auto kLargestSide = static_cast<size_t>(std::numeric_limits<int32_t>::max());
  if (size.width > kLargestSide || size.height > kLargestSide ||
      imageSize > std::numeric_limits<uint32_t>::max() - kMasksAndTableEnd) {
    ThrowIo(ImgStatusCode::Io, kLocation, kCannotWrite);
  }

  BMPHeader header;
  header.magic = kMagic;
  header.fileSize = static_cast<uint32_t>(imageSize) + kHeadersEnd;
  header.infoSize = kInfoSize;
  header.width = static_cast<int32_t>(size.width);
  header.height = static_cast<int32_t>(size.height);
  header.planes = 1;
  header.bitsPerPixel = static_cast<uint16_t>(format.pixelStorageBits);
  header.compression = CompressionOf(format);
  header.imageSize = static_cast<uint32_t>(imageSize);
  header.masks = MasksOf(format);
  if (header.masks == BMPMasks{}) {
    header.pixelOffset = kTableEnd;
    header.coloursUsed = header.coloursImportant = kColours;
  } else {
    header.pixelOffset = kMasksEnd;
  }
  return header;
}

PixelFormatId BMPHeader::reselectPixelFormat(const BMPHeader& header, std::optional<PixelFormatId> requested) {
  constexpr const char* kLocation =
      "static PixelFormatId img::io::bmp::BMPHeader::reselectPixelFormat(const BMPHeader &, "
      "std::optional<PixelFormatId>)";
  const PixelFormatId found = FindFormat(header);
  if (found == PixelFormatId::Invalid || FindFacts(found)->pixelStorageBits != header.bitsPerPixel) {
    ThrowIo(ImgStatusCode::ImageFormatNotSupported, kLocation, kUnsupportedPixelFormat);
  }
  return ReselectBayerForMono(found, requested, kLocation);
}

BMPColourTable GreyColourTable() {
  BMPColourTable table{};
  for (size_t i = 0; i < BMPHeader::kColours; ++i) {
    for (size_t colour = 0; colour < 3; ++colour) table[4 * i + colour] = static_cast<uint8_t>(i);
  }
  return table;
}

}  // namespace img::io::bmp
