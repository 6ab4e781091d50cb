// JPEG files made and read with the bare codec, and what their markers tell.
#pragma once

#include <cstddef>
#include <cstdint>
// The codec's header needs FILE to be known.
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include <jpeglib.h>

#include "tests/model/conversion_model.h"

namespace korvel_test {

using Bytes = std::vector<uint8_t>;

struct JpegRecipe {
  uint32_t width = 0;
  uint32_t height = 0;
  J_COLOR_SPACE pixels = JCS_GRAYSCALE;  // what the bytes are
  int components = 1;
  Bytes bytes = {};
  int quality = 75;
  bool progressive = false;
  bool arithmetic = false;
  std::optional<J_COLOR_SPACE> inFile = std::nullopt;  // the codec's own choice without
};

// Throws std::runtime_error with the codec's text.
Bytes EncodeJpeg(const JpegRecipe& recipe);

// The file of an image of a format that JPEG has a place for, at the codec's defaults.
Bytes EncodeJpeg(const ModelImage& image, int quality);

struct JpegContent {
  size_t width = 0;
  size_t height = 0;
  int components = 0;
  Bytes samples;
};

JpegContent DecodeJpeg(const Bytes& file);

// In the zigzag order of the file; empty if the file has no table of the number.
std::vector<uint16_t> QuantizationTable(const Bytes& file, int number);

// The sampling factors of each component, as their byte in the frame header.
std::vector<uint8_t> SamplingFactors(const Bytes& file);

// The offset of a marker's second byte in the file's head; throws if the marker isn't there.
size_t MarkerOffset(const Bytes& file, uint8_t marker);

}  // namespace korvel_test
