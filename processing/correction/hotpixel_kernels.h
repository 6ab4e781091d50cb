// Hot pixels of raw images: finding them, and replacing them by a mean of their neighbours.
//
// A pixel of value c is compared with four pairs of opposite neighbours (a, b) of its own colour. Its deviation from a
// pair is 2c - a - b.
//
//   deviation   pair                              mono   Bayer, green site   Bayer, red or blue site
//   1           upper left and lower right        1, 1   1, 1                2, 2
//   2           above and below                   0, 1   0, 2                0, 2
//   3           lower left and upper right        1, 1   1, 1                2, 2
//   4           left and right                    1, 0   2, 0                2, 0
//
// The numbers are the distances in columns and rows. Where a column lies outside the image, the column on the other
// side of the pixel takes its place, and so for rows; in a border column of a Bayer image (the two outermost) all
// neighbours lie on the inner side.
#pragma once

#include <cstdint>
#include <vector>

#include "core/geometry.h"
#include "core/image.h"
#include "core/instruction_set.h"

namespace img::processing {

// A pixel of value c stands out if the squares of its deviations exceed c * slope + floor, in integers that wrap at 32
// bits.
struct HotpixelThreshold {
  uint32_t slope;
  uint32_t floor;
};

// The formats that have hot pixels: Mono and unpacked Bayer.
bool HasHotpixels(const FormatFacts& format);

// Appends the pixels that are brighter than all pairs of their neighbours by more than the threshold, row by row, in
// each row from the left. A mono image below 2 and a Bayer image below 4 pixels in width or height has none.
void FindHotpixels(const IfcImage& image, const HotpixelThreshold& threshold, InstructionSet set,
                   std::vector<Point2D>& hotpixels);

// Replaces the listed pixels in order, so that a later one sees the new values of earlier ones. A pixel that deviates
// from all pairs in the same direction takes the mean of the pair from which it deviates least, the earlier one of two
// alike, rounded towards its old value; any other keeps its value. Positions outside the image are skipped, and so is
// all of an image that is too small to have hot pixels.
void CorrectHotpixels(IfcImage& image, const std::vector<Point2D>& hotpixels);

}  // namespace img::processing
