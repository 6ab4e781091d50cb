#include <png.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/exported_calls.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

// A file name of this process that goes with the scope.
class TemporaryFile {
 public:
  TemporaryFile()
      : path_(std::filesystem::temp_directory_path() / ("korvel_benchmarks_" + std::to_string(getpid()) + ".png")) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  const std::string& Path() const { return path_; }
  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> bytes(std::filesystem::file_size(path_));
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path_.c_str(), "rb"), std::fclose);
    if (!file || std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
      throw std::runtime_error("cannot read " + path_);
    }
    return bytes;
  }

 private:
  std::string path_;
};

// libpng wants to be left with a jump or not at all; a benchmark without its peer has nothing to say.
[[noreturn]] void OnError(png_structp /*png*/, png_const_charp text) {
  std::fprintf(stderr, "libpng: %s\n", text);
  std::abort();
}

// The same image by libpng alone, with the library's settings.
void WriteWithLibpng(const std::string& path, const std::vector<uint8_t>& pixels, PixelFormatId format,
                     const Size2D& size, int level) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
  if (!file) throw std::runtime_error("cannot write " + path);
  const img::FormatFacts facts = img::FindFacts(format).value();
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file.get());
  const int colourType = facts.channels == 1   ? PNG_COLOR_TYPE_GRAY
                         : facts.channels == 3 ? PNG_COLOR_TYPE_RGB
                                               : PNG_COLOR_TYPE_RGB_ALPHA;
  png_set_IHDR(png, info, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), 8, colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (facts.pixelClass == img::PixelClass::BGRa) png_set_bgr(png);
  png_set_compression_level(png, level);
  png_write_info(png, info);
  const size_t lineBytes = size.width * facts.PixelByteCount();
  for (size_t y = 0; y < size.height; ++y) png_write_row(png, pixels.data() + y * lineBytes);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
}

void Run(benchmark::State& state, PixelFormatId format, const Size2D& size, uint32_t quality, int level) {
  std::vector<uint8_t> pixels = MakeFrame(format, size);
  const Image image = ImageOver(pixels, format, size);
  const TemporaryFile file;
  const auto write = [&] {
    Require(KORVEL_ImageWriter_WriteAsPNG(image.Get(), quality, file.Path().data(), file.Path().size()));
  };
  const auto writeWithLibpng = [&] { WriteWithLibpng(file.Path(), pixels, format, size, level); };

  write();
  std::vector<uint8_t> written = file.Bytes();
  writeWithLibpng();
  if (written != file.Bytes()) {
    state.SkipWithError("differs from the file of its peer");
    return;
  }
  Measure(state, {.subject = write,
                  .peer = writeWithLibpng,
                  .read = pixels,
                  .written = written,
                  .pixels = size.width * size.height});
}

}  // namespace

void RegisterPng() {
  // Compression decides the time, so few rounds are steady enough.
  constexpr int kRounds = 2;
  const struct {
    uint32_t quality;
    int level;
  } settings[] = {{100, 0}, {80, 2}};
  for (const auto& [quality, level] : settings) {
    for (const PixelFormatId format : {PixelFormatId::Mono8, PixelFormatId::BGRa8}) {
      for (const FrameSize& frame : kFrameSizes) {
        const std::string name = "write_png_quality" + std::to_string(quality) + "/" +
                                 img::PixelFormatInfo_Name(format) + "/" + frame.Name();
        Register(name, kRounds, [=, quality = quality, level = level](benchmark::State& state) {
          Run(state, format, frame.size, quality, level);
        });
      }
    }
  }
}

}  // namespace korvel::benchmarks
