#include "io/bmp/bmp_reader.h"

#include <limits>

#include "core/image_lines.h"
#include "io/bmp/bmp_header.h"
#include "io/input_file.h"
#include "io/io_failure.h"
#include "io/read_image.h"

namespace img::io::bmp {
namespace {

using korvel::internal::ImgStatusCode;

constexpr const char* kReadImage =
    "static std::unique_ptr<IfcImage> img::io::bmp::BMPReader::readImage(const std::string &, "
    "buffer::IfcBufferFactory &, std::optional<PixelFormatId>)";

void Require(bool condition) {
  if (!condition) ThrowIo(ImgStatusCode::Io, kReadImage, kCannotRead);
}

// Reads all that stands before the pixels.
BMPHeader ReadHeader(InputFile& file) {
  decltype(kBMPHeaderLayout)::Bytes head;
  Require(file.Read(head.data(), head.size()));
  BMPHeader header = kBMPHeaderLayout.Decode(head);
  Require(header.magic == BMPHeader::kMagic && header.infoSize >= BMPHeader::kInfoSize);
  if (header.HasMasks()) {
    decltype(kBMPMasksLayout)::Bytes masks;
    Require(file.Read(masks.data(), masks.size()));
    header.masks = kBMPMasksLayout.Decode(masks);
  }
  // The colours of a table play no part.
  if (header.HasColourTable()) Require(file.Skip(sizeof(BMPColourTable)));
  return header;
}

}  // namespace

std::unique_ptr<IfcImage> BMPReader::readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                               std::optional<PixelFormatId> requested) {
  InputFile file(path);
  if (!file.IsOpen()) ThrowIo(ImgStatusCode::Io, kReadImage, kCannotOpen);
  file.ReadInBlocks();
  const BMPHeader header = ReadHeader(file);
  const PixelFormatId format = BMPHeader::reselectPixelFormat(header, requested);

  Require(header.width >= 1 && header.height != 0 && header.height != std::numeric_limits<int32_t>::min());
  const bool isTopDown = header.height < 0;
  const Size2D size{static_cast<size_t>(header.width), static_cast<size_t>(isTopDown ? -header.height : header.height)};
  const size_t passed = file.Size() - file.Remaining();
  Require(header.pixelOffset >= passed && file.Skip(header.pixelOffset - passed));
  const FormatFacts facts = FindFacts(format).value();
  // Neither product wraps: a side has 31 bits and a pixel at most 4 bytes.
  const size_t lineByteCount = facts.ByteCount(size.width);
  const size_t padding = BMPHeader::PaddingOf(lineByteCount);
  // The last line's padding may be missing.
  Require((lineByteCount + padding) * size.height - padding <= file.Remaining());
  RequireReadable(lineByteCount * size.height, kReadImage);

  std::unique_ptr<IfcImage> image = AllocImage(bufferFactory, format, size);
  if (!image) return nullptr;
  uint8_t paddingBytes[3];
  const auto lines = LinesOf(*image);
  for (size_t i = 0; i < size.height; ++i) {
    if (i != 0) Require(file.Read(paddingBytes, padding));
    Require(file.Read(lines[isTopDown ? i : size.height - 1 - i], lineByteCount));
  }
  return image;
}

}  // namespace img::io::bmp
