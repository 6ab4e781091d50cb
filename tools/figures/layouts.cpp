#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "figures/figures.h"
#include "figures/svg.h"
#include "image_facts.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct Layout {
  const char* file;
  uint32_t packed;
  uint32_t unpacked;
  size_t pixels;  // of a group, after which the bytes begin anew
  const char* samples[4];
};
constexpr Layout kLayouts[] = {
    {"layout-10p", KORVEL_PIXEL_FORMAT_Mono10p, KORVEL_PIXEL_FORMAT_Mono10, 4, {"A", "B", "C", "D"}},
    {"layout-12p", KORVEL_PIXEL_FORMAT_Mono12p, KORVEL_PIXEL_FORMAT_Mono12, 2, {"A", "B"}},
    {"layout-10g40", KORVEL_PIXEL_FORMAT_Mono10g40Qrv, KORVEL_PIXEL_FORMAT_Mono10, 4, {"A", "B", "C", "D"}},
    {"layout-12g24", KORVEL_PIXEL_FORMAT_Mono12g24Qrv, KORVEL_PIXEL_FORMAT_Mono12, 2, {"A", "B"}},
    {"layout-rgb10p32", KORVEL_PIXEL_FORMAT_RGB10p32, KORVEL_PIXEL_FORMAT_RGB10, 1, {"R", "G", "B"}},
    {"layout-bgr10p32", KORVEL_PIXEL_FORMAT_BGR10p32, KORVEL_PIXEL_FORMAT_BGR10, 1, {"B", "G", "R"}},
};
constexpr const char* kFills[] = {"#9ec9f0", "#f3c98b", "#b6dda0", "#e3b3de"};

struct SampleBit {
  size_t sample;
  unsigned bit;
};

// Which bit of which sample a bit of the packed group carries: the library unpacks a group that has this bit alone. A
// bit without a meaning gives nothing.
std::vector<SampleBit> SampleBitsOf(const Layout& layout, size_t byte, unsigned bit, size_t group_bytes) {
  std::vector<uint8_t> group(group_bytes);
  group[byte] = static_cast<uint8_t>(1U << bit);
  Image packed;
  Image unpacked;
  Require(KORVEL_Image_ConstructFromBuffer(layout.packed, group.data(), group.size(), layout.pixels, 1, packed.Out()),
          "take packed pixels", kBuildAdvice);
  Require(KORVEL_Image_ConvertTo(packed.Get(), layout.unpacked, KORVEL_CONVERSION_MODE_Fast, unpacked.Out()),
          "unpack pixels", kBuildAdvice);
  const ImageFacts facts = FactsOf(unpacked);
  std::vector<uint16_t> samples(facts.byte_count / sizeof(uint16_t));
  std::memcpy(samples.data(), facts.bytes, facts.byte_count);
  std::vector<SampleBit> bits;
  for (size_t sample = 0; sample < samples.size(); ++sample) {
    for (unsigned i = 0; i < 16; ++i) {
      if ((samples[sample] >> i & 1) != 0) bits.push_back({sample, i});
    }
  }
  return bits;
}

constexpr int kCell = 44;
constexpr int kRow = 28;
constexpr int kLeft = 64;
constexpr int kTop = 24;

void DrawLayout(const Layout& layout, const std::string& folder) {
  size_t bytes = 0;
  Require(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(layout.packed, layout.pixels, &bytes), "compute a size",
          kBuildAdvice);
  SvgDrawing drawing(kLeft + 8 * kCell + 8, kTop + static_cast<int>(bytes) * kRow + 8);
  for (unsigned bit = 0; bit < 8; ++bit) {
    drawing.Text({kLeft + static_cast<int>(7 - bit) * kCell + kCell / 2, kTop / 2}, "bit " + std::to_string(bit), 11);
  }
  for (size_t byte = 0; byte < bytes; ++byte) {
    const int top = kTop + static_cast<int>(byte) * kRow;
    drawing.TextFrom({8, top + kRow / 2}, "byte " + std::to_string(byte));
    for (unsigned bit = 0; bit < 8; ++bit) {
      const Box cell{kLeft + static_cast<int>(7 - bit) * kCell, top, kCell, kRow};
      const std::vector<SampleBit> bits = SampleBitsOf(layout, byte, bit, bytes);
      if (bits.size() > 1) throw ToolError("a packed bit lands in several samples", kBuildAdvice);
      drawing.Rectangle(cell, bits.empty() ? "#eeeeee" : kFills[bits[0].sample]);
      if (!bits.empty()) {
        drawing.Text({cell.x + kCell / 2, cell.y + kRow / 2},
                     layout.samples[bits[0].sample] + std::to_string(bits[0].bit));
      }
    }
  }
  drawing.Write(folder + layout.file + ".svg");
}

}  // namespace

void DrawLayouts(const std::string& folder) {
  for (const Layout& layout : kLayouts) DrawLayout(layout, folder);
}

}  // namespace korvel::tools
