// From a camera's buffer to a PNG file:
//
//   frame_to_png FRAME.bin WIDTH HEIGHT OUT.png
//
// FRAME.bin holds one BayerRG12p frame: two pixels in three bytes, without gaps between lines.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <korvel/korvel.hpp>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: frame_to_png FRAME.bin WIDTH HEIGHT OUT.png\n");
    return 2;
  }
  try {
    constexpr auto kFormat = korvel::PixelFormat::BayerRG12p;
    const size_t width = std::strtoul(argv[2], nullptr, 10);
    const size_t height = std::strtoul(argv[3], nullptr, 10);
    std::vector<uint8_t> buffer(korvel::FormatQueries::StorageSizeOfPixels(kFormat, width * height));
    std::ifstream file(argv[1], std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()))) {
      std::fprintf(stderr, "frame_to_png: %s doesn't hold a frame of that size\n", argv[1]);
      return 1;
    }
    // The image lies over the buffer, which must outlive it; nothing is copied.
    const korvel::Image frame(kFormat, buffer.data(), buffer.size(), width, height);
    frame.ConvertTo(korvel::PixelFormat::RGB8, korvel::ConversionMode::HighQuality).Write(argv[4]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "frame_to_png: %s\n", error.what());
    return 1;
  }
  return 0;
}
