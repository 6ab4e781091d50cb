// How the pixels of an image go into a PNG file.
//
//   format                      colour type     depth   sBIT          blue first
//   Mono8, Bayer 8              0 grey          8       none
//   Mono10, 12, Bayer 10, 12    0 grey          16      10 or 12
//   RGB8, BGR8                  2 RGB           8       none          BGR8
//   RGB10, 12, BGR10, 12        2 RGB           16      10 or 12      BGR10, BGR12
//   RGBa8, BGRa8                6 RGB, alpha    8       none          BGRa8
//   RGBa10, 12, BGRa10, 12      6 RGB, alpha    16      10 or 12      BGRa10, BGRa12
//
// Files of 16 bits hold samples shifted to the top; the sBIT chunk tells how many bits are significant.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/image.h"
#include "core/pixel_format.h"

namespace img::io::png {

struct PNGHeader {
  size_t width = 0;
  size_t height = 0;
  int bitDepth = 0;
  int colourType = 0;
  bool hasSignificantBits = false;
  bool isBlueFirst = false;
  // Zero for channels that the colour type hasn't.
  uint8_t redBits = 0;
  uint8_t greenBits = 0;
  uint8_t blueBits = 0;
  uint8_t greyBits = 0;
  uint8_t alphaBits = 0;

  // Throws ImageFormatNotSupported, "Unsupported pixel format", for packed formats and Invalid.
  static PNGHeader imgToHeader(const IfcImage& image);

  // The format of a file's pixels, as the request allows. Colour type and significant bits decide it; the file's depth
  // and the order of its colours play no part. Throws ImageFormatNotSupported if no format fits the file, and
  // ImageFormatInterpretationError for a request that it doesn't allow.
  static PixelFormatId reselectPixelFormat(const PNGHeader& header, std::optional<PixelFormatId> requested);
};

}  // namespace img::io::png
