#include "io/jpeg/jpeg_writer.h"

#include <algorithm>
#include <limits>

#include "core/image_lines.h"
#include "io/io_failure.h"
#include "io/jpeg/jpeg_errors.h"
#include "io/jpeg/jpeg_header.h"
#include "io/output_file.h"

namespace img::io::jpeg {
namespace {

// libjpeg's structure, released on every path. A failure has destroyed it already; that may happen twice.
class Compressor {
 public:
  Compressor() {
    structure_.err = SetUpErrors(errors_);
    jpeg_create_compress(&structure_);
  }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor() { jpeg_destroy_compress(&structure_); }

  jpeg_compress_struct& Get() { return structure_; }

 private:
  jpeg_error_mgr errors_{};
  jpeg_compress_struct structure_{};
};

// libjpeg itself refuses sides above its own limit, far below this.
JDIMENSION ToDimension(size_t side) {
  return static_cast<JDIMENSION>(std::min<size_t>(side, std::numeric_limits<JDIMENSION>::max()));
}

}  // namespace

void JPEGWriter::writeImage(const std::string& path, const IfcImage& image, const JPEGParameter& parameter) {
  constexpr const char* kLocation =
      "static void img::io::jpeg::JPEGWriter::writeImage(const std::string &, const img::IfcImage &, const "
      "img::io::JPEGParameter &)";
  const JPEGHeader header = JPEGHeader::imgToHeader(image);
  OutputFile file(path);
  if (!file.IsOpen()) ThrowIo(korvel::internal::ImgStatusCode::Io, kLocation, kCannotOpen);

  Compressor compressor;
  jpeg_compress_struct& cinfo = compressor.Get();
  jpeg_stdio_dest(&cinfo, file.Get());
  cinfo.image_width = ToDimension(header.width);
  cinfo.image_height = ToDimension(header.height);
  cinfo.input_components = header.inputComponents;
  cinfo.in_color_space = header.colourSpace;
  jpeg_set_defaults(&cinfo);
  constexpr uint32_t kBestQuality = 100;
  jpeg_set_quality(&cinfo, static_cast<int>(std::min(parameter.quality, kBestQuality)), FALSE);
  jpeg_start_compress(&cinfo, TRUE);
  const auto lines = LinesOf(image);
  while (cinfo.next_scanline < cinfo.image_height) {
    // libjpeg only reads the line, though its declaration doesn't say so.
    JSAMPROW line = const_cast<JSAMPROW>(lines[cinfo.next_scanline]);
    jpeg_write_scanlines(&cinfo, &line, 1);
  }
  jpeg_finish_compress(&cinfo);
  if (!file.Close()) ThrowIo(korvel::internal::ImgStatusCode::Io, kLocation, kCannotWrite);
}

}  // namespace img::io::jpeg
