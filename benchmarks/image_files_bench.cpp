// Image files beside the bare codecs, with their settings and on the same pixels, and beside a single write or read of
// the same bytes where there is no codec.

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <jpeglib.h>  // needs what cstdio declares

#include "benchmarks/exported_calls.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/temporary_file.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File Open(const std::string& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode), std::fclose);
  if (!file) throw std::runtime_error("cannot open " + path);
  return file;
}

std::vector<uint8_t> BytesIn(const TemporaryFile& file) {
  std::vector<uint8_t> bytes(std::filesystem::file_size(file.Path()));
  if (std::fread(bytes.data(), 1, bytes.size(), Open(file.Path(), "rb").get()) != bytes.size()) {
    throw std::runtime_error("cannot read " + file.Path());
  }
  return bytes;
}

// What a peer works on.
struct Pixels {
  uint8_t* data;
  PixelFormatId format;
  Size2D size;

  img::FormatFacts Facts() const { return img::FindFacts(format).value(); }
  size_t LineByteCount() const { return size.width * Facts().PixelByteCount(); }
};

// libpng wants to be left with a jump or not at all; a benchmark without its peer has nothing to say.
[[noreturn]] void OnPngError(png_structp /*png*/, png_const_charp text) {
  std::fprintf(stderr, "libpng: %s\n", text);
  std::abort();
}

void WritePng(const std::string& path, const Pixels& pixels, int level) {
  const File file = Open(path, "wb");
  const img::FormatFacts facts = pixels.Facts();
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnPngError, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  const int colourType = facts.channels == 1   ? PNG_COLOR_TYPE_GRAY
                         : facts.channels == 3 ? PNG_COLOR_TYPE_RGB
                                               : PNG_COLOR_TYPE_RGB_ALPHA;
  png_set_IHDR(png, info, static_cast<png_uint_32>(pixels.size.width), static_cast<png_uint_32>(pixels.size.height), 8,
               colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (facts.pixelClass == img::PixelClass::BGRa) png_set_bgr(png);
  png_set_compression_level(png, level);
  png_write_info(png, info);
  for (size_t y = 0; y < pixels.size.height; ++y) png_write_row(png, pixels.data + y * pixels.LineByteCount());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
}

void ReadPng(const std::string& path, const Pixels& pixels) {
  const File file = Open(path, "rb");
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnPngError, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  png_read_info(png, info);
  for (size_t y = 0; y < pixels.size.height; ++y) png_read_row(png, pixels.data + y * pixels.LineByteCount(), nullptr);
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
}

// libjpeg's own error handler ends the process, which suits a benchmark.
void WriteJpeg(const std::string& path, const Pixels& pixels, int quality) {
  const File file = Open(path, "wb");
  const img::FormatFacts facts = pixels.Facts();
  jpeg_error_mgr errors;
  jpeg_compress_struct cinfo;
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_compress(&cinfo);
  jpeg_stdio_dest(&cinfo, file.get());
  cinfo.image_width = static_cast<JDIMENSION>(pixels.size.width);
  cinfo.image_height = static_cast<JDIMENSION>(pixels.size.height);
  cinfo.input_components = static_cast<int>(facts.channels);
  cinfo.in_color_space = facts.channels == 1 ? JCS_GRAYSCALE : facts.channels == 3 ? JCS_RGB : JCS_EXT_BGRA;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, quality, FALSE);
  jpeg_start_compress(&cinfo, TRUE);
  std::vector<JSAMPROW> lines;
  for (size_t y = 0; y < pixels.size.height; ++y) lines.push_back(pixels.data + y * pixels.LineByteCount());
  constexpr JDIMENSION kLinesInCall = 16;  // two rows of blocks with their colours at half the size
  while (cinfo.next_scanline < cinfo.image_height) {
    jpeg_write_scanlines(&cinfo, lines.data() + cinfo.next_scanline,
                         std::min(kLinesInCall, cinfo.image_height - cinfo.next_scanline));
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
}

void ReadJpeg(const std::string& path, const Pixels& pixels) {
  const File file = Open(path, "rb");
  jpeg_error_mgr errors;
  jpeg_decompress_struct cinfo;
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&cinfo);
  jpeg_stdio_src(&cinfo, file.get());
  jpeg_read_header(&cinfo, TRUE);
  jpeg_start_decompress(&cinfo);
  while (cinfo.output_scanline < cinfo.output_height) {
    JSAMPROW line = pixels.data + cinfo.output_scanline * pixels.LineByteCount();
    jpeg_read_scanlines(&cinfo, &line, 1);
  }
  jpeg_finish_decompress(&cinfo);
  jpeg_destroy_decompress(&cinfo);
}

// All bytes in one call of the system.
void WriteAtOnce(const std::string& path, const std::vector<uint8_t>& bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  const bool isWritten = file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  if (file < 0 || close(file) != 0 || !isWritten) throw std::runtime_error("cannot write " + path);
}

void ReadAtOnce(const std::string& path, std::vector<uint8_t>& bytes) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool isRead = file >= 0 && read(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  if (file < 0 || close(file) != 0 || !isRead) throw std::runtime_error("cannot read " + path);
}

// A file type with its settings, and what it competes with; without a codec, with one call of the system.
struct FileType {
  std::string name;
  std::string ending;
  std::string peer;
  std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE, const std::string&)> write;
  std::function<void(const std::string&, const Pixels&)> writeWithCodec = nullptr;
  std::function<void(const std::string&, const Pixels&)> readWithCodec = nullptr;
};

FileType Png(uint32_t quality, int level) {
  return {.name = "png_quality" + std::to_string(quality),
          .ending = ".png",
          .peer = "libpng",
          .write =
              [=](KORVEL_IMAGE_HANDLE image, const std::string& path) {
                return KORVEL_ImageWriter_WriteAsPNG(image, quality, path.data(), path.size());
              },
          .writeWithCodec = [=](const std::string& path, const Pixels& pixels) { WritePng(path, pixels, level); },
          .readWithCodec = ReadPng};
}

FileType Jpeg(uint32_t quality) {
  return {.name = "jpeg_quality" + std::to_string(quality),
          .ending = ".jpg",
          .peer = "libjpeg",
          .write =
              [=](KORVEL_IMAGE_HANDLE image, const std::string& path) {
                return KORVEL_ImageWriter_WriteAsJPG(image, quality, path.data(), path.size());
              },
          .writeWithCodec = [=](const std::string& path,
                                const Pixels& pixels) { WriteJpeg(path, pixels, static_cast<int>(quality)); },
          .readWithCodec = ReadJpeg};
}

FileType WithoutCodec(const std::string& name) {
  return {.name = name,
          .ending = std::string(".").append(name),
          .peer = "one call of the system",
          .write = [](KORVEL_IMAGE_HANDLE image, const std::string& path) {
            return KORVEL_ImageWriter_Write(image, path.data(), path.size());
          }};
}

void RunWrite(benchmark::State& state, const FileType& type, PixelFormatId format, const Size2D& size) {
  std::vector<uint8_t> frame = MakeFrame(format, size);
  const Pixels pixels{.data = frame.data(), .format = format, .size = size};
  const TemporaryFile file(type.ending);
  const auto write = [&] {
    const Image image = ImageOver(frame, format, size);
    Require(type.write(image.Get(), file.Path()));
  };
  write();
  const std::vector<uint8_t> expected = BytesIn(file);
  const auto writeWithPeer = [&] {
    if (type.writeWithCodec) {
      type.writeWithCodec(file.Path(), pixels);
    } else {
      WriteAtOnce(file.Path(), expected);
    }
  };

  writeWithPeer();
  if (BytesIn(file) != expected) {
    state.SkipWithError("differs from the file of its peer");
    return;
  }
  Measure(state,
          {.run = write, .peers = {{.name = type.peer, .run = writeWithPeer}}, .pixels = size.width * size.height});
}

void RunRead(benchmark::State& state, const FileType& type, PixelFormatId format, const Size2D& size) {
  std::vector<uint8_t> frame = MakeFrame(format, size);
  const TemporaryFile file(type.ending);
  Require(type.write(ImageOver(frame, format, size).Get(), file.Path()));
  const size_t fileByteCount = BytesIn(file).size();
  Image image;
  const auto read = [&] {
    image = Image();
    Require(KORVEL_ImageReader_Read(file.Path().data(), file.Path().size(), image.Out()));
  };
  // A result is new memory each time, as it is for an application that reads one file after the other.
  std::vector<uint8_t> result;
  const auto readWithPeer = [&] {
    result = std::vector<uint8_t>();
    result.resize(type.readWithCodec ? frame.size() : fileByteCount);
    if (type.readWithCodec) {
      type.readWithCodec(file.Path(), {.data = result.data(), .format = format, .size = size});
    } else {
      ReadAtOnce(file.Path(), result);
    }
  };

  read();
  readWithPeer();
  if (type.readWithCodec && FindDifference(BytesOf(image).data(), result.data(), format, size, {})) {
    state.SkipWithError("differs from the result of its peer");
    return;
  }
  Measure(state,
          {.run = read, .peers = {{.name = type.peer, .run = readWithPeer}}, .pixels = size.width * size.height});
}

void AddWrite(FrameSizes sizes, const FileType& type, PixelFormatId format, int mostRounds) {
  for (const FrameSize& frame : sizes) {
    Register("write_" + type.name + "/" + img::PixelFormatInfo_Name(format), frame.Name(),
             std::min(frame.rounds, mostRounds),
             [=](benchmark::State& state) { RunWrite(state, type, format, frame.size); });
  }
}

void AddRead(FrameSizes sizes, const FileType& type, PixelFormatId format, int mostRounds) {
  for (const FrameSize& frame : sizes) {
    Register("read_" + type.name + "/" + img::PixelFormatInfo_Name(format), frame.Name(),
             std::min(frame.rounds, mostRounds),
             [=](benchmark::State& state) { RunRead(state, type, format, frame.size); });
  }
}

}  // namespace

void RegisterImageFiles(FrameSizes sizes) {
  using enum PixelFormatId;
  // Compression decides the time, so few rounds are steady enough.
  constexpr int kCodecRounds = 7;
  for (const auto& [type, format] :
       {std::pair(Png(80, 2), Mono8), {Png(80, 2), RGB8}, {Png(100, 0), RGB8}, {Jpeg(75), Mono8}, {Jpeg(75), RGB8}}) {
    AddWrite(sizes, type, format, kCodecRounds);
    AddRead(sizes, type, format, kCodecRounds);
  }
  // The system's own work on files varies.
  constexpr int kSystemRounds = 25;
  for (const auto& [type, format] : {std::pair(WithoutCodec("bmp"), Mono8),
                                     {WithoutCodec("bmp"), RGB8},
                                     {WithoutCodec("bmp"), BGRa8},
                                     {WithoutCodec("raw"), Mono8},
                                     {WithoutCodec("raw"), BGRa8}}) {
    AddWrite(sizes, type, format, kSystemRounds);
    AddRead(sizes, type, format, kSystemRounds);
  }
}

}  // namespace korvel::benchmarks
