#include "io/png/png_reader.h"

#include <png.h>

#include <array>

#include "core/image_lines.h"
#include "io/input_file.h"
#include "io/io_failure.h"
#include "io/png/png_header.h"
#include "io/png/png_stages.h"
#include "io/read_image.h"

namespace img::io::png {
namespace {

using korvel::internal::ImgStatusCode;

constexpr const char* kReadImage =
    "static std::unique_ptr<IfcImage> img::io::png::PNGReader::readImage(const std::string &, "
    "buffer::IfcBufferFactory &, std::optional<PixelFormatId>)";

constexpr size_t kSignatureByteCount = 8;

[[noreturn]] void Fail(const char* text) { ThrowIo(ImgStatusCode::Io, kReadImage, text); }

// libpng's structures, released on every path.
class ReadStructures {
 public:
  ReadStructures() : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning)) {
    if (png_ == nullptr) Fail("Error creating png file reader.");
    info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_read_struct(&png_, nullptr, nullptr);
      Fail("Error creating png info file reader.");
    }
  }
  ReadStructures(const ReadStructures&) = delete;
  ReadStructures& operator=(const ReadStructures&) = delete;
  ~ReadStructures() { png_destroy_read_struct(&png_, &info_, nullptr); }

  png_structp Png() const { return png_; }
  png_infop Info() const { return info_; }

 private:
  png_structp png_;
  png_infop info_ = nullptr;
};

// What the stages work on.
struct Reading {
  png_structp png;
  png_infop info;
  FILE* file;
  PNGHeader header{};
  size_t fileRowByteCount = 0;  // of the file's own samples
  int passes = 0;               // several for an interlaced file
  size_t rowByteCount = 0;      // of the samples as they are delivered
  IfcImage* image = nullptr;
};

// Passes over chunks that tell nothing about samples: libpng takes memory by the length that a chunk claims, and again
// by what it inflates to, whatever the file's own size.
void SkipOtherChunks(png_structp png) {
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  constexpr png_byte kSignificantBits[] = "sBIT";
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT, kSignificantBits, 1);
}

void ReadInfo(Reading& reading) {
  png_init_io(reading.png, reading.file);
  png_set_sig_bytes(reading.png, kSignatureByteCount);
  SkipOtherChunks(reading.png);
  // libpng by itself drops a damaged sBIT chunk, and the samples would come out as others.
  png_set_crc_action(reading.png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
  png_read_info(reading.png, reading.info);
  PNGHeader& header = reading.header;
  header.width = png_get_image_width(reading.png, reading.info);
  header.height = png_get_image_height(reading.png, reading.info);
  header.bitDepth = png_get_bit_depth(reading.png, reading.info);
  header.colourType = png_get_color_type(reading.png, reading.info);
  reading.fileRowByteCount = png_get_rowbytes(reading.png, reading.info);

  png_color_8p bits = nullptr;
  if (png_get_sBIT(reading.png, reading.info, &bits) != 0) {
    header.hasSignificantBits = true;
    header.redBits = bits->red;
    header.greenBits = bits->green;
    header.blueBits = bits->blue;
    header.greyBits = bits->gray;
    header.alphaBits = bits->alpha;
    png_set_shift(reading.png, bits);
  } else if (header.bitDepth == 16) {
    png_set_scale_16(reading.png);
  }
  if (header.colourType == PNG_COLOR_TYPE_GRAY && header.bitDepth < 8) png_set_expand_gray_1_2_4_to_8(reading.png);
  // Samples lie in memory with the low byte first.
  if (header.bitDepth == 16) png_set_swap(reading.png);
}

void StartRows(Reading& reading) {
  reading.passes = png_set_interlace_handling(reading.png);
  png_read_update_info(reading.png, reading.info);
  reading.rowByteCount = png_get_rowbytes(reading.png, reading.info);
}

void ReadRows(Reading& reading) {
  const auto lines = LinesOf(*reading.image);
  for (int pass = 0; pass < reading.passes; ++pass) {
    for (size_t y = 0; y < reading.header.height; ++y) png_read_row(reading.png, lines[y], nullptr);
  }
  png_read_end(reading.png, nullptr);
}

// Refuses what a file of this size can't hold. The bytes of all rows fit 64 bits, as libpng limits both sides.
void RequirePlausible(const Reading& reading, size_t fileByteCount) {
  // Deflate makes at most 1032 bytes of one.
  constexpr size_t kMostExpansion = 1100;
  const size_t byteCount = reading.fileRowByteCount * reading.header.height;
  if ((byteCount + kMostExpansion - 1) / kMostExpansion > fileByteCount) Fail(kCannotRead);
}

}  // namespace

std::unique_ptr<IfcImage> PNGReader::readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                               std::optional<PixelFormatId> requested) {
  InputFile file(path);
  if (!file.IsOpen()) Fail(kCannotOpen);
  file.ReadInBlocks();
  std::array<png_byte, kSignatureByteCount> signature{};
  if (!file.Read(signature.data(), signature.size()) || png_sig_cmp(signature.data(), 0, signature.size()) != 0) {
    Fail("Error reading header of png file.");
  }

  const ReadStructures structures;
  Reading reading{.png = structures.Png(), .info = structures.Info(), .file = file.Get()};
  if (!Runs(ReadInfo, reading)) Fail("Error during png io init.");
  const PixelFormatId format = PNGHeader::reselectPixelFormat(reading.header, requested);
  const Size2D size{reading.header.width, reading.header.height};
  RequirePlausible(reading, file.Size());
  RequireReadable(CheckedByteCount(FindFacts(format).value(), size), kReadImage);

  constexpr const char* kReadFailure = "Error during png file read.";
  if (!Runs(StartRows, reading)) Fail(kReadFailure);
  if (reading.rowByteCount != FindFacts(format)->ByteCount(size.width)) Fail(kCannotRead);
  std::unique_ptr<IfcImage> image = AllocImage(bufferFactory, format, size);
  if (!image) return nullptr;
  reading.image = image.get();
  if (!Runs(ReadRows, reading)) Fail(kReadFailure);
  return image;
}

}  // namespace img::io::png
