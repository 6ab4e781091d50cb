#include "io/jpeg/jpeg_reader.h"

#include "core/image_lines.h"
#include "io/input_file.h"
#include "io/io_failure.h"
#include "io/jpeg/jpeg_errors.h"
#include "io/jpeg/jpeg_header.h"
#include "io/read_image.h"

namespace img::io::jpeg {
namespace {

using korvel::internal::ImgStatusCode;

constexpr const char* kReadImage =
    "static std::unique_ptr<IfcImage> img::io::jpeg::JPEGReader::readImage(const std::string &, "
    "buffer::IfcBufferFactory &, std::optional<PixelFormatId>)";

// A scan of a few bytes costs the time of the whole image, so that a small file of many scans would seem to hang.
// Progressive files have about ten; those of large images may have fewer.
void RequireFewScans(j_common_ptr common) {
  constexpr size_t kMostScans = 500;
  constexpr size_t kMostBlockVisits = size_t{1} << 31;  // takes some seconds
  const jpeg_decompress_struct& cinfo = *reinterpret_cast<j_decompress_ptr>(common);
  const auto scans = static_cast<size_t>(cinfo.input_scan_number);
  size_t blocks = 0;
  for (int i = 0; i < cinfo.num_components; ++i) {
    blocks += size_t{cinfo.comp_info[i].width_in_blocks} * cinfo.comp_info[i].height_in_blocks;
  }
  if (scans > kMostScans || (scans > 1 && scans * blocks > kMostBlockVisits)) {
    ThrowIo(ImgStatusCode::Io, kReadImage, kCannotRead);
  }
}

// libjpeg's structure, released on every path. A failure has destroyed it already; that may happen twice.
class Decompressor {
 public:
  Decompressor() {
    structure_.err = SetUpErrors(errors_);
    jpeg_create_decompress(&structure_);
    progress_.progress_monitor = RequireFewScans;
    structure_.progress = &progress_;
  }
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor() { jpeg_destroy_decompress(&structure_); }

  jpeg_decompress_struct& Get() { return structure_; }

 private:
  jpeg_error_mgr errors_{};
  jpeg_progress_mgr progress_{};
  jpeg_decompress_struct structure_{};
};

// Refuses an image above the limit by what the header tells. Files of several scans are decoded through the
// coefficients of the whole image.
void RequireDecodable(jpeg_decompress_struct& cinfo) {
  // Nothing wraps: a side has 16 bits, and there are at most ten components.
  const auto components = static_cast<size_t>(cinfo.num_components);
  size_t byteCount = size_t{cinfo.image_width} * cinfo.image_height * components;
  if (jpeg_has_multiple_scans(&cinfo)) {
    for (size_t i = 0; i < components; ++i) {
      const jpeg_component_info& component = cinfo.comp_info[i];
      byteCount += size_t{component.width_in_blocks} * component.height_in_blocks * DCTSIZE2 * sizeof(JCOEF);
    }
  }
  RequireReadable(byteCount, kReadImage);
}

}  // namespace

std::unique_ptr<IfcImage> JPEGReader::readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                                std::optional<PixelFormatId> requested) {
  InputFile file(path);
  if (!file.IsOpen()) ThrowIo(ImgStatusCode::Io, kReadImage, kCannotOpen);
  file.ReadInBlocks();

  Decompressor decompressor;
  jpeg_decompress_struct& cinfo = decompressor.Get();
  jpeg_stdio_src(&cinfo, file.Get());
  if (jpeg_read_header(&cinfo, TRUE) != JPEG_HEADER_OK) ThrowIo(ImgStatusCode::Io, kReadImage, kCannotRead);
  RequireDecodable(cinfo);
  jpeg_start_decompress(&cinfo);

  const PixelFormatId found = JPEGHeader::formatOfColourSpace(cinfo.out_color_space);
  const PixelFormatId format = JPEGHeader::reselectPixelFormat(found, requested);
  const FormatFacts facts = FindFacts(format).value();
  if (cinfo.output_components != static_cast<int>(facts.channels)) {
    ThrowIo(ImgStatusCode::ImageFormatNotSupported, kReadImage, kUnsupportedPixelFormat);
  }
  std::unique_ptr<IfcImage> image = AllocImage(bufferFactory, format, Size2D{cinfo.output_width, cinfo.output_height});
  if (!image) return nullptr;
  const auto lines = LinesOf(*image);
  while (cinfo.output_scanline < cinfo.output_height) {
    JSAMPROW line = lines[cinfo.output_scanline];
    jpeg_read_scanlines(&cinfo, &line, 1);
  }
  jpeg_finish_decompress(&cinfo);
  return image;
}

}  // namespace img::io::jpeg
