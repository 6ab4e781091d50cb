// The filters of the 5x5 demosaic for one site, in plain code.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/bayer_to_color_5x5.h"

namespace img::processing {

// Five lines around a site, and the filters for what it lacks. Overshoot is clipped to the depth's range.
template <class Sample, int32_t maximum>
struct FilterRule {
  using SampleType = Sample;

  SampleLine<Sample> above2;
  SampleLine<Sample> above;
  SampleLine<Sample> here;
  SampleLine<Sample> below;
  SampleLine<Sample> below2;

  int32_t Diagonals(size_t x) const { return above[x - 1] + above[x + 1] + below[x - 1] + below[x + 1]; }

  SiteColour AtOwn(size_t x) const {
    const int32_t far = above2[x] + below2[x] + here[x - 2] + here[x + 2];
    const int32_t near = above[x] + below[x] + here[x - 1] + here[x + 1];
    return {here[x], DivideAndClip<3, maximum>(4 * here[x] + 2 * near - far),
            DivideAndClip<4, maximum>(12 * here[x] + 4 * Diagonals(x) - 3 * far)};
  }

  SiteColour AtGreen(size_t x) const {
    const int32_t diagonals = Diagonals(x);
    const int32_t farOnLine = here[x - 2] + here[x + 2];
    const int32_t farOnColumn = above2[x] + below2[x];
    const int32_t own = 10 * here[x] + 8 * (here[x - 1] + here[x + 1]) - 2 * (diagonals + farOnLine) + farOnColumn;
    const int32_t other = 10 * here[x] + 8 * (above[x] + below[x]) - 2 * (diagonals + farOnColumn) + farOnLine;
    return {DivideAndClip<4, maximum>(own), here[x], DivideAndClip<4, maximum>(other)};
  }
};

}  // namespace img::processing
