#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace korvel::tools {
namespace {

// A part of the picture in fractions of its width and height.
struct Area {
  double left;
  double top;
  double right;
  double bottom;
};

constexpr Area kChart{0.03, 0.05, 0.49, 0.57};
constexpr Area kZonePlate{0.52, 0.05, 0.76, 0.57};
constexpr Area kLinePairs{0.79, 0.05, 0.97, 0.29};
constexpr Area kSlantedEdges{0.79, 0.33, 0.97, 0.57};
constexpr Area kHues{0.03, 0.63, 0.97, 0.71};
constexpr Area kGreys{0.03, 0.74, 0.97, 0.82};
constexpr Area kRamps{0.03, 0.85, 0.97, 0.95};

constexpr uint8_t kChartColours[kPatchRows][kPatchColumns][3] = {
    {{121, 74, 52}, {214, 164, 132}, {78, 124, 178}, {84, 116, 58}, {142, 126, 192}, {112, 204, 178}},
    {{230, 132, 34}, {58, 82, 176}, {206, 78, 92}, {86, 46, 104}, {168, 200, 58}, {240, 178, 40}},
    {{36, 54, 150}, {62, 148, 76}, {184, 40, 48}, {244, 214, 30}, {196, 76, 150}, {14, 138, 172}},
    {{244, 244, 244}, {202, 202, 202}, {160, 160, 160}, {118, 118, 118}, {80, 80, 80}, {42, 42, 42}},
};
constexpr LinearColour kBackground{0.10, 0.10, 0.10};

LinearColour Grey(double light) { return {light, light, light}; }

// A point in an area: u and v run from 0 to 1; the sizes are those of the area in pixels.
struct Position {
  bool inside;
  double u;
  double v;
  double width;
  double height;
};

Position Locate(const Area& area, const Scene& scene, double x, double y) {
  const auto scene_width = static_cast<double>(scene.Width());
  const auto scene_height = static_cast<double>(scene.Height());
  const double width = (area.right - area.left) * scene_width;
  const double height = (area.bottom - area.top) * scene_height;
  const double u = (x - area.left * scene_width) / width;
  const double v = (y - area.top * scene_height) / height;
  return {u >= 0 && u < 1 && v >= 0 && v < 1, u, v, width, height};
}

// Part of a cell between patches that is left to the background, on each side.
constexpr double kPatchMargin = 0.06;

LinearColour PatchColour(size_t column, size_t row) {
  LinearColour colour{};
  for (size_t channel = 0; channel < 3; ++channel) {
    colour[channel] = LinearFromDisplay(kChartColours[row][column][channel] / 255.0);
  }
  return colour;
}

LinearColour Chart(const Position& at) {
  const double column = std::floor(at.u * kPatchColumns);
  const double row = std::floor(at.v * kPatchRows);
  const double in_cell_u = at.u * kPatchColumns - column;
  const double in_cell_v = at.v * kPatchRows - row;
  const bool on_patch =
      std::min(in_cell_u, in_cell_v) >= kPatchMargin && std::max(in_cell_u, in_cell_v) <= 1 - kPatchMargin;
  if (!on_patch) return Grey(0.01);
  return PatchColour(std::min(static_cast<size_t>(column), kPatchColumns - 1),
                     std::min(static_cast<size_t>(row), kPatchRows - 1));
}

// Rings that grow finer outwards and reach one period in two pixels at the edge of the circle.
LinearColour ZonePlate(const Position& at) {
  const double dx = (at.u - 0.5) * at.width;
  const double dy = (at.v - 0.5) * at.height;
  const double radius = std::min(at.width, at.height) / 2;
  const double squared = dx * dx + dy * dy;
  if (squared > radius * radius) return Grey(0.25);
  return Grey(0.45 + 0.40 * std::cos(std::numbers::pi * squared / (2 * radius)));
}

// Black and white lines with periods from 12 down to 2 pixels; upright above, lying below.
LinearColour LinePairs(const Position& at) {
  constexpr double kPeriods[] = {12, 8, 6, 4, 3, 2};
  constexpr size_t kGroups = std::size(kPeriods);
  const auto group = std::min(static_cast<size_t>(at.u * kGroups), kGroups - 1);
  const bool upright = at.v < 0.5;
  const double along = upright ? at.u * at.width : at.v * at.height;
  const double phase = std::fmod(along, kPeriods[group]) / kPeriods[group];
  return Grey(phase < 0.5 ? 0.80 : 0.02);
}

// Two squares turned a little: white on black, and red on green.
LinearColour SlantedEdges(const Position& at) {
  constexpr double kSlope = 0.12;
  const bool left = at.u < 0.5;
  const double dx = (at.u - (left ? 0.25 : 0.75)) * at.width;
  const double dy = (at.v - 0.5) * at.height;
  const double half = 0.30 * std::min(at.width / 2, at.height);
  const bool inside = std::abs(dx + kSlope * dy) < half && std::abs(dy - kSlope * dx) < half;
  if (left) return Grey(inside ? 0.85 : 0.015);
  return inside ? LinearColour{0.60, 0.03, 0.03} : LinearColour{0.04, 0.35, 0.06};
}

// The colour circle, unrolled.
LinearColour Hue(double turn) {
  LinearColour colour{};
  for (size_t channel = 0; channel < 3; ++channel) {
    const double away = std::fmod(turn * 6 + 6 - 2 * static_cast<double>(channel), 6.0);
    const double strength = std::clamp(std::abs(away - 3) - 1, 0.0, 1.0);
    colour[channel] = LinearFromDisplay(0.08 + 0.84 * strength);
  }
  return colour;
}

// One line each from black to red, green and blue.
LinearColour Ramps(const Position& at) {
  LinearColour colour{};
  colour[std::min<size_t>(static_cast<size_t>(at.v * 3), 2)] = LinearFromDisplay(at.u);
  return colour;
}

}  // namespace

double DisplayFromLinear(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

double LinearFromDisplay(double value) {
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Scene::Scene(size_t width, size_t height) : width_(width), height_(height) {}

LinearColour Scene::At(double x, double y) const {
  if (const Position at = Locate(kChart, *this, x, y); at.inside) return Chart(at);
  if (const Position at = Locate(kZonePlate, *this, x, y); at.inside) return ZonePlate(at);
  if (const Position at = Locate(kLinePairs, *this, x, y); at.inside) return LinePairs(at);
  if (const Position at = Locate(kSlantedEdges, *this, x, y); at.inside) return SlantedEdges(at);
  if (const Position at = Locate(kHues, *this, x, y); at.inside) return Hue(at.u);
  if (const Position at = Locate(kGreys, *this, x, y); at.inside) return Grey(LinearFromDisplay(at.u));
  if (const Position at = Locate(kRamps, *this, x, y); at.inside) return Ramps(at);
  return kBackground;
}

LinearColour Scene::Pixel(size_t column, size_t row) const {
  constexpr double kOffsets[] = {0.25, 0.75};
  LinearColour sum{};
  for (const double dy : kOffsets) {
    for (const double dx : kOffsets) {
      const LinearColour light = At(static_cast<double>(column) + dx, static_cast<double>(row) + dy);
      for (size_t channel = 0; channel < 3; ++channel) sum[channel] += light[channel] / 4;
    }
  }
  return sum;
}

Patch ChartPatch(const Scene& scene, size_t column, size_t row) {
  const double width = (kChart.right - kChart.left) * static_cast<double>(scene.Width()) / kPatchColumns;
  const double height = (kChart.bottom - kChart.top) * static_cast<double>(scene.Height()) / kPatchRows;
  return {.x = kChart.left * static_cast<double>(scene.Width()) + (static_cast<double>(column) + 0.5) * width,
          .y = kChart.top * static_cast<double>(scene.Height()) + (static_cast<double>(row) + 0.5) * height,
          .width = width * (1 - 2 * kPatchMargin),
          .height = height * (1 - 2 * kPatchMargin),
          .colour = PatchColour(column, row)};
}

}  // namespace korvel::tools
