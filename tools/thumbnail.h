// Images made small, to be looked at on a sheet or on a terminal.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "handles.h"
#include "korvel/korvel.h"
#include "options.h"
#include "samples.h"

namespace korvel::tools {

// Red, green and blue of each pixel, line by line, from 0 to 1.
struct Thumbnail {
  size_t width = 0;
  size_t height = 0;
  std::vector<std::array<float, 3>> pixels{};
};

// The largest size of the picture's shape within a box, and no larger than the picture.
PictureSize FitInto(PictureSize picture, PictureSize box);

// The image at this size, which is no larger than its own: each pixel is the mean of those that it stands for. Mosaics
// become colour before. Throws ToolError.
Thumbnail MakeThumbnail(const Image& image, PictureSize size, KORVEL_CONVERSION_MODE mode);

}  // namespace korvel::tools
