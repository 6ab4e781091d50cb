// Which pixel formats go into which file type, and what else a file's pixels may be taken for.
//
//   format                                     BMP   PNG   JPEG  RAW
//   Mono8, Bayer of 8 bits                     yes   yes   yes   yes
//   Mono and Bayer of 10 and 12 bits in 16     yes   yes         yes
//   RGB8, BGR8, RGBa8, BGRa8                   yes   yes   yes   yes
//   colour of 10 and 12 bits in 16                   yes         yes
//   RGB10p32, BGR10p32                         yes               yes
//   other packed formats                                         yes
#pragma once

#include <optional>

#include "core/image.h"
#include "core/pixel_format.h"
#include "io/image_io.h"
#include "io/io_failure.h"

namespace img::io {

constexpr bool IsKept(FileFormat fileFormat, const FormatFacts& format) {
  switch (fileFormat) {
    case FileFormat::Bmp:
      return format.IsPublic() && (format.layout == PixelLayout::Word32 ||
                                   (!format.IsPacked() && (format.channels == 1 || format.significantBits == 8)));
    case FileFormat::Png:
      return format.IsPublic() && !format.IsPacked();
    case FileFormat::Jpeg:
      return format.IsPublic() && !format.IsPacked() && format.significantBits == 8;
    case FileFormat::Raw:
      return format.IsPublic();
  }
  return false;
}

// The facts of an image's format. Throws ImageFormatNotSupported, "Unsupported pixel format", if the file type doesn't
// keep it. location is the caller's signature.
inline FormatFacts RequireKept(FileFormat fileFormat, const IfcImage& image, const char* location) {
  const FormatFacts facts = FindFacts(image.PixelFormat()).value_or(kFacts<PixelFormatId::Invalid>);
  if (!IsKept(fileFormat, facts)) {
    ThrowIo(korvel::internal::ImgStatusCode::ImageFormatNotSupported, location, kUnsupportedPixelFormat);
  }
  return facts;
}

// The format to read a file's pixels as: that which was found in the file, or a Bayer format where its mono format was
// found. Throws ImageFormatInterpretationError for any other request. No request has no value.
inline PixelFormatId ReselectBayerForMono(PixelFormatId found, std::optional<PixelFormatId> requested,
                                          const char* location) {
  if (!requested || *requested == found) return found;
  const std::optional<FormatFacts> wanted = FindFacts(*requested);
  const FormatFacts held = FindFacts(found).value();
  if (!wanted || held.type != PixelType::Mono || wanted->type != PixelType::Bayer ||
      wanted->rawFormat != held.rawFormat) {
    ThrowIo(korvel::internal::ImgStatusCode::ImageFormatInterpretationError, location, kCannotInterpret);
  }
  return *requested;
}

}  // namespace img::io
