// How much an image's samples look like a picture, for guessing what bytes mean.
#pragma once

#include "samples.h"

namespace korvel::tools {

// In fractions of the greatest value: the mean step from a sample to the next one of the same colour to the right and
// below, and between samples that have nothing to do with each other. Samples of one channel may be a mosaic, so that
// every second pixel counts as the next one. Alpha doesn't count.
struct Roughness {
  double across = 0;
  double down = 0;
  double anywhere = 0;

  double Mean() const { return (across + down) / 2; }
};

Roughness MeasureRoughness(const Samples& samples, unsigned greatest_value);

// What tells a mosaic from a grey picture, and where its greens are: means over small tiles of the differences between
// the four pixels of a 2 x 2 cell, in fractions of the greatest value.
struct CellDifferences {
  double diagonals = 0;  // between the two diagonals: green against red and blue in any mosaic, fine detail in grey
  double chance = 0;     // what fine detail alone would make of diagonals
  double falling = 0;    // along the diagonal from top left
  double rising = 0;     // along the other one
};

// Of an image of one channel. All are 0 where it is too small.
CellDifferences MeasureCells(const Samples& samples, unsigned greatest_value);

}  // namespace korvel::tools
