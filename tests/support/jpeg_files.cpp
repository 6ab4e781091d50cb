#include "tests/support/jpeg_files.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "tests/model/file_model.h"

namespace korvel_test {
namespace {

[[noreturn]] void Fail(j_common_ptr codec) {
  char text[JMSG_LENGTH_MAX];
  codec->err->format_message(codec, text);
  throw std::runtime_error(text);
}

void PrintNothing(j_common_ptr) {}

struct Compression {
  Compression() {
    codec.err = jpeg_std_error(&errors);
    errors.error_exit = Fail;
    errors.output_message = PrintNothing;
    jpeg_create_compress(&codec);
    jpeg_mem_dest(&codec, &file, &size);
  }
  Compression(const Compression&) = delete;
  Compression& operator=(const Compression&) = delete;
  ~Compression() {
    jpeg_destroy_compress(&codec);
    std::free(file);
  }

  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  unsigned char* file = nullptr;
  unsigned long size = 0;
};

struct Decompression {
  Decompression() {
    codec.err = jpeg_std_error(&errors);
    errors.error_exit = Fail;
    errors.output_message = PrintNothing;
    jpeg_create_decompress(&codec);
  }
  Decompression(const Decompression&) = delete;
  Decompression& operator=(const Decompression&) = delete;
  ~Decompression() { jpeg_destroy_decompress(&codec); }

  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
};

constexpr uint8_t kStartOfScan = 0xDA;

// The offsets of the second bytes of all markers up to the first scan.
std::vector<size_t> MarkersOfHead(const Bytes& file) {
  std::vector<size_t> offsets;
  for (size_t at = 2; file.at(at) == 0xFF;) {
    offsets.push_back(at + 1);
    if (file.at(at + 1) == kStartOfScan) return offsets;
    at += 2 + file.at(at + 2) * 256u + file.at(at + 3);
  }
  throw std::runtime_error("not the head of a JPEG file");
}

}  // namespace

Bytes EncodeJpeg(const JpegRecipe& recipe) {
  Compression compression;
  jpeg_compress_struct& codec = compression.codec;
  codec.image_width = recipe.width;
  codec.image_height = recipe.height;
  codec.input_components = recipe.components;
  codec.in_color_space = recipe.pixels;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, recipe.quality, FALSE);
  if (recipe.inFile) jpeg_set_colorspace(&codec, *recipe.inFile);
  if (recipe.progressive) jpeg_simple_progression(&codec);
  if (recipe.arithmetic) codec.arith_code = TRUE;
  jpeg_start_compress(&codec, TRUE);
  Bytes line(recipe.width * static_cast<size_t>(recipe.components));
  for (size_t y = 0; y < recipe.height; ++y) {
    std::copy_n(recipe.bytes.begin() + static_cast<ptrdiff_t>(y * line.size()), line.size(), line.begin());
    JSAMPROW row = line.data();
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  return {compression.file, compression.file + compression.size};
}

Bytes EncodeJpeg(const ModelImage& image, int quality) {
  const FormatInJpeg& place = PlaceInFiles(image.format).jpeg;
  JpegRecipe recipe;
  recipe.width = static_cast<uint32_t>(image.width);
  recipe.height = static_cast<uint32_t>(image.height);
  recipe.components = place.components;
  recipe.bytes = image.bytes;
  recipe.quality = quality;
  if (place.components == 1) recipe.pixels = JCS_GRAYSCALE;
  if (place.components == 3) recipe.pixels = place.blueFirst ? JCS_EXT_BGR : JCS_RGB;
  if (place.components == 4) recipe.pixels = place.blueFirst ? JCS_EXT_BGRA : JCS_EXT_RGBA;
  return EncodeJpeg(recipe);
}

JpegContent DecodeJpeg(const Bytes& file) {
  Decompression decompression;
  jpeg_decompress_struct& codec = decompression.codec;
  jpeg_mem_src(&codec, file.data(), file.size());
  jpeg_read_header(&codec, TRUE);
  jpeg_start_decompress(&codec);
  JpegContent content{codec.output_width, codec.output_height, codec.output_components, {}};
  Bytes line(content.width * static_cast<size_t>(content.components));
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW row = line.data();
    jpeg_read_scanlines(&codec, &row, 1);
    content.samples.insert(content.samples.end(), line.begin(), line.end());
  }
  jpeg_finish_decompress(&codec);
  return content;
}

std::vector<uint16_t> QuantizationTable(const Bytes& file, int number) {
  constexpr uint8_t kDefineTables = 0xDB;
  for (const size_t marker : MarkersOfHead(file)) {
    if (file[marker] != kDefineTables) continue;
    const size_t end = marker + 1 + file.at(marker + 1) * 256u + file.at(marker + 2);
    for (size_t at = marker + 3; at < end;) {
      const int found = file.at(at) % 16;
      const size_t entryBytes = file.at(at) / 16 == 0 ? 1 : 2;
      ++at;
      std::vector<uint16_t> table;
      for (int i = 0; i < 64; ++i, at += entryBytes) {
        table.push_back(static_cast<uint16_t>(entryBytes == 1 ? file.at(at) : file.at(at) * 256 + file.at(at + 1)));
      }
      if (found == number) return table;
    }
  }
  return {};
}

std::vector<uint8_t> SamplingFactors(const Bytes& file) {
  for (const size_t marker : MarkersOfHead(file)) {
    if (file[marker] < 0xC0 || file[marker] > 0xC2) continue;
    std::vector<uint8_t> factors;
    for (size_t i = 0; i < file.at(marker + 8); ++i) factors.push_back(file.at(marker + 10 + 3 * i));
    return factors;
  }
  throw std::runtime_error("no frame header");
}

size_t MarkerOffset(const Bytes& file, uint8_t marker) {
  for (const size_t offset : MarkersOfHead(file)) {
    if (file[offset] == marker) return offset;
  }
  throw std::runtime_error("no such marker");
}

}  // namespace korvel_test
