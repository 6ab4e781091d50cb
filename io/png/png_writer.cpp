#include "io/png/png_writer.h"

#include <png.h>

#include "core/image_lines.h"
#include "io/io_failure.h"
#include "io/output_file.h"
#include "io/png/png_header.h"
#include "io/png/png_stages.h"

namespace img::io::png {
namespace {

using korvel::internal::ImgStatusCode;

constexpr const char* kWriteImage =
    "static void img::io::png::PNGWriter::writeImage(const std::string &, const img::IfcImage &, const "
    "img::io::PNGParameter &)";

// libpng's structures, released on every path.
class WriteStructures {
 public:
  WriteStructures() : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning)) {
    if (png_ == nullptr) ThrowIo(ImgStatusCode::Io, kWriteImage, "Could not create png struct.");
    info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_write_struct(&png_, nullptr);
      ThrowIo(ImgStatusCode::Io, kWriteImage, "Could not create png info struct.");
    }
  }
  WriteStructures(const WriteStructures&) = delete;
  WriteStructures& operator=(const WriteStructures&) = delete;
  ~WriteStructures() { png_destroy_write_struct(&png_, &info_); }

  png_structp Png() const { return png_; }
  png_infop Info() const { return info_; }

 private:
  png_structp png_;
  png_infop info_ = nullptr;
};

// What the stages work on.
struct Writing {
  png_structp png;
  png_infop info;
  FILE* file;
  const IfcImage& image;
  const PNGHeader& header;
  int compressionLevel;
};

void Start(Writing& writing) { png_init_io(writing.png, writing.file); }

void SetHeader(Writing& writing) {
  const PNGHeader& header = writing.header;
  if (header.width > PNG_UINT_31_MAX || header.height > PNG_UINT_31_MAX) {
    png_error(writing.png, "the image is too large for the file type");
  }
  png_set_IHDR(writing.png, writing.info, static_cast<png_uint_32>(header.width),
               static_cast<png_uint_32>(header.height), header.bitDepth, header.colourType, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (header.isBlueFirst) png_set_bgr(writing.png);
  if (header.hasSignificantBits) {
    png_color_8 bits{};
    bits.red = header.redBits;
    bits.green = header.greenBits;
    bits.blue = header.blueBits;
    bits.gray = header.greyBits;
    bits.alpha = header.alphaBits;
    png_set_sBIT(writing.png, writing.info, &bits);
    png_set_shift(writing.png, &bits);
  }
  png_set_compression_level(writing.png, writing.compressionLevel);
}

void WriteInfo(Writing& writing) {
  png_write_info(writing.png, writing.info);
  // Samples lie in memory with the low byte first.
  if (writing.header.bitDepth == 16) png_set_swap(writing.png);
}

void WriteRows(Writing& writing) {
  const auto lines = LinesOf(writing.image);
  for (size_t y = 0; y < writing.header.height; ++y) png_write_row(writing.png, lines[y]);
  png_write_end(writing.png, writing.info);
}

}  // namespace

int PNGWriter::CompressionLevel(uint32_t quality) {
  return static_cast<int>(9 - (int64_t{static_cast<int32_t>(quality)} - 10) / 10);
}

void PNGWriter::writeImage(const std::string& path, const IfcImage& image, const PNGParameter& parameter) {
  const PNGHeader header = PNGHeader::imgToHeader(image);
  OutputFile file(path);
  if (!file.IsOpen()) ThrowIo(ImgStatusCode::Io, kWriteImage, kCannotOpen);

  const WriteStructures structures;
  Writing writing{structures.Png(), structures.Info(), file.Get(), image, header, CompressionLevel(parameter.quality)};
  const struct {
    void (*run)(Writing&);
    const char* failure;
  } stages[] = {
      {Start, "Error starting writing png."},
      {SetHeader, "Error during writing png header."},
      {WriteInfo, "Could not write png info."},
      {WriteRows, "Could not write png image data."},
  };
  for (const auto& stage : stages) {
    if (!Runs(stage.run, writing)) ThrowIo(ImgStatusCode::Io, kWriteImage, stage.failure);
  }
  if (!file.Close()) ThrowIo(ImgStatusCode::Io, kWriteImage, kCannotWrite);
}

}  // namespace img::io::png
