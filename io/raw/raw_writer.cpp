#include "io/raw/raw_writer.h"

#include "core/image_buffer.h"
#include "io/file_formats.h"
#include "io/io_failure.h"
#include "io/output_file.h"
#include "io/raw/raw_header.h"

namespace img::io::raw {

using korvel::internal::ImgStatusCode;

void RawWriter::writeImage(const std::string& path, const IfcImage& image) {
  constexpr const char* kLocation =
      "static void img::io::raw::RawWriter::writeImage(const std::string &, const img::IfcImage &)";
  RequireKept(FileFormat::Raw, image, kLocation);

  const buffer::IfcImageBuffer& pixels = *image.Buffer();
  const auto head = kRAWHeaderLayout.Encode({.pixelFormat = static_cast<uint32_t>(pixels.Format()),
                                             .byteCount = pixels.ByteCount(),
                                             .width = pixels.Size().width,
                                             .height = pixels.Size().height});
  OutputFile file(path);
  if (!file.IsOpen()) ThrowIo(ImgStatusCode::Io, kLocation, "ImageWriter: Can't open file for writing!");
  if (file.Write(head.data(), head.size())) file.Write(pixels.Data(), pixels.ByteCount());
  if (!file.Close()) ThrowIo(ImgStatusCode::Io, kLocation, kCannotWrite);
}

}  // namespace img::io::raw
