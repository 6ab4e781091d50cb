#include "io/png/png_header.h"

#include <png.h>

#include "io/io_failure.h"

namespace img::io::png {

PNGHeader PNGHeader::imgToHeader(const IfcImage& image) {
  const FormatFacts facts = FindFacts(image.PixelFormat()).value_or(kFacts<PixelFormatId::Invalid>);
  if (facts.IsPacked() || facts.type == PixelType::None || facts.type == PixelType::Raw) {
    ThrowIo(korvel::internal::ImgStatusCode::ImageFormatNotSupported,
            "static img::io::png::PNGHeader img::io::png::PNGHeader::imgToHeader(const img::IfcImage &)",
            kUnsupportedPixelFormat);
  }

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

}  // namespace img::io::png
