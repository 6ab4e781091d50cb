#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "figures/figures.h"
#include "figures/picture.h"
#include "figures/svg.h"
#include "library_error.h"

namespace korvel::tools {
namespace {

constexpr size_t kSide = 8;

// The channel that light on one pixel alone lands in: 0 red, 1 green, 2 blue.
size_t ChannelOfPixel(uint32_t format, size_t column, size_t row) {
  std::array<uint8_t, kSide * kSide> samples{};
  samples[row * kSide + column] = 255;
  Image image;
  Require(KORVEL_Image_ConstructFromBuffer(format, samples.data(), samples.size(), kSide, kSide, image.Out()),
          "take a mosaic", kBuildAdvice);
  const Picture picture = ColourPicture(image, KORVEL_CONVERSION_MODE_Fast);
  const uint8_t* const pixel = &picture.rgb[(row * kSide + column) * 3];
  return static_cast<size_t>(std::max_element(pixel, pixel + 3) - pixel);
}

constexpr std::string_view kLetters = "RGB";
constexpr const char* kFills[] = {"#e86a5f", "#7dbb5e", "#6a93e0"};

struct Phase {
  const char* name;
  uint32_t format;
};
constexpr Phase kPhases[] = {{"BayerRG", KORVEL_PIXEL_FORMAT_BayerRG8},
                             {"BayerGR", KORVEL_PIXEL_FORMAT_BayerGR8},
                             {"BayerGB", KORVEL_PIXEL_FORMAT_BayerGB8},
                             {"BayerBG", KORVEL_PIXEL_FORMAT_BayerBG8}};

constexpr int kCell = 40;
constexpr int kShown = 4;
constexpr int kLeftOfPhase = 24;
constexpr int kTopOfPhase = 34;
constexpr int kPhaseWidth = kShown * kCell + kLeftOfPhase;
constexpr const char* kOwnFrame = "#000000";
constexpr const char* kOpenCvFrame = "#d000d0";

void DrawPhase(SvgDrawing& drawing, const Phase& phase, int left) {
  // An even distance from the corner, where the border's rules don't reach.
  const auto channel = [&](int column, int row) {
    return ChannelOfPixel(phase.format, static_cast<size_t>(column) + 2, static_cast<size_t>(row) + 2);
  };
  drawing.Text({left + kShown * kCell / 2, 16}, phase.name, 15);
  for (int row = 0; row < kShown; ++row) {
    for (int column = 0; column < kShown; ++column) {
      const Box cell{left + column * kCell, kTopOfPhase + row * kCell, kCell, kCell};
      const size_t colour = channel(column, row);
      drawing.Rectangle(cell, kFills[colour], "#ffffff");
      drawing.Text({cell.x + kCell / 2, cell.y + kCell / 2}, kLetters.substr(colour, 1), 15);
    }
  }
  drawing.Rectangle({left, kTopOfPhase, 2 * kCell, 2 * kCell}, "none", kOwnFrame, 4);
  drawing.Rectangle({left + kCell, kTopOfPhase + kCell, 2 * kCell, 2 * kCell}, "none", kOpenCvFrame, 4);
  std::string name = "COLOR_Bayer";
  name += kLetters[channel(1, 1)];
  name += kLetters[channel(2, 1)];
  name += "2BGR";
  drawing.Text({left + kShown * kCell / 2, kTopOfPhase + kShown * kCell + 16}, name, 13, kOpenCvFrame);
}

}  // namespace

void DrawPhases(const std::string& folder) {
  constexpr auto kCount = static_cast<int>(std::size(kPhases));
  SvgDrawing drawing(kCount * kPhaseWidth + kLeftOfPhase, kTopOfPhase + kShown * kCell + 34);
  for (int i = 0; i < kCount; ++i) DrawPhase(drawing, kPhases[i], kLeftOfPhase + i * kPhaseWidth);
  drawing.Write(folder + "phases.svg");
}

}  // namespace korvel::tools
