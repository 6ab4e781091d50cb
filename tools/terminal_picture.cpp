#include "terminal_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace korvel::tools {
namespace {

using Pixel = std::array<float, 3>;

// The parameters of an escape that sets a colour, behind those that tell whose.
std::string TrueColour(const Pixel& pixel) {
  std::string text = "2";
  for (const float value : pixel) text.append(";").append(std::to_string(std::lround(value * 255)));
  return text;
}

// Of the 256 colours, 216 are a cube with these steps, and 24 behind them a scale of greys.
std::string NearestOf256(const Pixel& pixel) {
  constexpr std::array<int, 6> kSteps{0, 95, 135, 175, 215, 255};
  constexpr int kFirstOfCube = 16;
  constexpr int kFirstGrey = 232;
  constexpr int kGreys = 24;
  int in_cube = 0;
  double cube_error = 0;
  double mean = 0;
  for (const float value : pixel) {
    const double wanted = 255 * static_cast<double>(value);
    const auto* const nearest = std::min_element(
        kSteps.begin(), kSteps.end(), [&](int a, int b) { return std::abs(a - wanted) < std::abs(b - wanted); });
    in_cube = 6 * in_cube + static_cast<int>(nearest - kSteps.begin());
    cube_error += (*nearest - wanted) * (*nearest - wanted);
    mean += wanted / 3;
  }
  const int grey = std::clamp(static_cast<int>(std::lround((mean - 8) / 10)), 0, kGreys - 1);
  double grey_error = 0;
  for (const float value : pixel) {
    const double difference = 8 + 10 * grey - 255 * static_cast<double>(value);
    grey_error += difference * difference;
  }
  return std::string("5;").append(std::to_string(grey_error < cube_error ? kFirstGrey + grey : kFirstOfCube + in_cube));
}

char Shade(const Pixel& upper, const Pixel& lower) {
  constexpr std::string_view kShades = " .:-=+*#%@";  // from dark to light, as on a dark terminal
  double light = 0;
  for (const Pixel& pixel : {upper, lower}) light += 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
  const auto shade = static_cast<size_t>(light / 2 * static_cast<double>(kShades.size()));
  return kShades[std::min(shade, kShades.size() - 1)];
}

}  // namespace

PictureSize TerminalBox(size_t columns, size_t lines) { return {columns, 2 * lines}; }

void PrintPicture(std::ostream& out, const Thumbnail& picture, TerminalColours colours) {
  const auto escape = colours == TerminalColours::kTrue ? TrueColour : NearestOf256;
  for (size_t row = 0; row < picture.height; row += 2) {
    const bool has_lower = row + 1 < picture.height;
    for (size_t column = 0; column < picture.width; ++column) {
      const Pixel& upper = picture.pixels[row * picture.width + column];
      const Pixel& lower = has_lower ? picture.pixels[(row + 1) * picture.width + column] : upper;
      if (colours == TerminalColours::kNone) {
        out << Shade(upper, lower);
        continue;
      }
      out << "\033[38;" << escape(upper);
      if (has_lower) out << ";48;" << escape(lower);
      out << "m▀";
    }
    out << (colours == TerminalColours::kNone ? "\n" : "\033[0m\n");
  }
}

}  // namespace korvel::tools
