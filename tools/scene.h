// A test scene for cameras that aren't there: colour patches, gradients, fine detail and edges, in linear light. It has
// no resolution of its own in the large: the layout follows the size of the picture. Fine detail is laid out in
// pixels, so that it always reaches the finest pattern that a picture can hold.
#pragma once

#include <array>
#include <cstddef>

namespace korvel::tools {

// Light: 0 is none, 1 saturates the sensor. Red, green and blue.
using LinearColour = std::array<double, 3>;

// The curve between light and the values that a display expects, both from 0 to 1.
double DisplayFromLinear(double light);
double LinearFromDisplay(double value);

class Scene {
 public:
  Scene(size_t width, size_t height);

  size_t Width() const noexcept { return width_; }
  size_t Height() const noexcept { return height_; }

  // The light at a point; (0, 0) is the top left corner of the picture and (Width(), Height()) the bottom right one.
  LinearColour At(double x, double y) const;

  // The light that falls on the pixel in this column and row: the mean over its area.
  LinearColour Pixel(size_t column, size_t row) const;

 private:
  size_t width_;
  size_t height_;
};

// The patches of the colour chart, for those who want to find them again: their number, and the centre and colour of
// each. The last row is neutral.
inline constexpr size_t kPatchColumns = 6;
inline constexpr size_t kPatchRows = 4;

struct Patch {
  double x = 0;  // centre
  double y = 0;
  double width = 0;
  double height = 0;
  LinearColour colour{};
};

Patch ChartPatch(const Scene& scene, size_t column, size_t row);

}  // namespace korvel::tools
