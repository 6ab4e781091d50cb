#include "io/jpeg/jpeg_header.h"

#include <algorithm>
#include <iterator>

#include "io/file_formats.h"
#include "io/io_failure.h"

namespace img::io::jpeg {
namespace {

constexpr struct {
  PixelFormatId format;
  J_COLOR_SPACE colourSpace;
} kColourSpaces[] = {
    {PixelFormatId::Mono8, JCS_GRAYSCALE}, {PixelFormatId::RGB8, JCS_RGB},       {PixelFormatId::RGB8, JCS_EXT_RGB},
    {PixelFormatId::BGR8, JCS_EXT_BGR},    {PixelFormatId::RGBa8, JCS_EXT_RGBA}, {PixelFormatId::BGRa8, JCS_EXT_BGRA},
};

}  // namespace

JPEGHeader JPEGHeader::imgToHeader(const IfcImage& image) {
  constexpr const char* kLocation =
      "static img::io::jpeg::JPEGHeader img::io::jpeg::JPEGHeader::imgToHeader(const img::IfcImage &)";
  const FormatFacts facts = RequireKept(FileFormat::Jpeg, image, kLocation);
  // Bayer images go out as grey. What is kept is in the table.
  const PixelFormatId format = facts.channels == 1 ? PixelFormatId::Mono8 : facts.id;
  const auto* const row = std::find_if(std::begin(kColourSpaces), std::end(kColourSpaces),
                                       [format](const auto& candidate) { return candidate.format == format; });
  return {.width = image.Area().size.width,
          .height = image.Area().size.height,
          .inputComponents = static_cast<int>(facts.channels),
          .colourSpace = row->colourSpace};
}

PixelFormatId JPEGHeader::formatOfColourSpace(J_COLOR_SPACE colourSpace) {
  for (const auto& row : kColourSpaces) {
    if (row.colourSpace == colourSpace) return row.format;
  }
  ThrowIo(korvel::internal::ImgStatusCode::ImageFormatNotSupported,
          "static PixelFormatId img::io::jpeg::JPEGHeader::formatOfColourSpace(J_COLOR_SPACE)",
          kUnsupportedPixelFormat);
}

PixelFormatId JPEGHeader::reselectPixelFormat(PixelFormatId found, std::optional<PixelFormatId> requested) {
  return ReselectBayerForMono(found, requested,
                              "static PixelFormatId img::io::jpeg::JPEGHeader::reselectPixelFormat(PixelFormatId, "
                              "std::optional<PixelFormatId>)");
}

}  // namespace img::io::jpeg
