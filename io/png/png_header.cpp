#include "io/png/png_header.h"

#include <png.h>

#include "io/file_formats.h"
#include "io/io_failure.h"

namespace img::io::png {

PNGHeader PNGHeader::imgToHeader(const IfcImage& image) {
  const FormatFacts facts =
      RequireKept(FileFormat::Png, image,
                  "static img::io::png::PNGHeader img::io::png::PNGHeader::imgToHeader(const img::IfcImage &)");

  PNGHeader header;
  header.width = image.Area().size.width;
  header.height = image.Area().size.height;
  header.bitDepth = static_cast<int>(image.PixelByteCount() / image.NumChannels() * 8);
  header.isBlueFirst = facts.pixelClass == PixelClass::BGR || facts.pixelClass == PixelClass::BGRa;
  header.hasSignificantBits = facts.significantBits != facts.storageBits;
  const auto bits = static_cast<uint8_t>(header.hasSignificantBits ? facts.significantBits : 0);
  if (facts.channels == 1) {
    header.colourType = PNG_COLOR_TYPE_GRAY;
    header.greyBits = bits;
  } else {
    header.colourType = facts.channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
    header.redBits = header.greenBits = header.blueBits = bits;
    header.alphaBits = facts.channels == 4 ? bits : uint8_t{0};
  }
  return header;
}

PixelFormatId PNGHeader::reselectPixelFormat(const PNGHeader& header, std::optional<PixelFormatId> requested) {
  constexpr const char* kLocation =
      "static PixelFormatId img::io::png::PNGHeader::reselectPixelFormat(const PNGHeader &, "
      "std::optional<PixelFormatId>)";
  const uint8_t red = header.redBits;
  PixelClass pixelClass = PixelClass::None;
  uint32_t bits = red;
  bool isEven = true;
  switch (header.colourType) {
    case PNG_COLOR_TYPE_GRAY:
      pixelClass = PixelClass::Mono;
      bits = header.greyBits;
      break;
    case PNG_COLOR_TYPE_RGB:
      pixelClass = PixelClass::RGB;
      isEven = header.greenBits == red && header.blueBits == red;
      break;
    case PNG_COLOR_TYPE_RGB_ALPHA:
      pixelClass = PixelClass::RGBa;
      isEven = header.greenBits == red && header.blueBits == red && header.alphaBits == red;
      break;
    default:
      break;
  }
  // Intended: a file that tells 8 significant bits has no format, unlike one that tells nothing.
  const bool isUnknown = header.hasSignificantBits && (!isEven || bits == 8);
  const PixelFormatId found = isUnknown ? PixelFormatId::Invalid
                                        : PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(pixelClass),
                                                                           header.hasSignificantBits ? bits : 8);
  if (found == PixelFormatId::Invalid) {
    ThrowIo(korvel::internal::ImgStatusCode::ImageFormatNotSupported, kLocation, kUnsupportedPixelFormat);
  }
  return ReselectBayerForMono(found, requested, kLocation);
}

}  // namespace img::io::png
