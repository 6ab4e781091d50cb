// What an exported image holds, as a value that tests compare and print.
#pragma once

#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>

#include "tests/model/conversion_model.h"
#include "tests/model/format_table.h"
#include "tests/support/exported_objects.h"

namespace korvel_test {

struct SeenImage {
  uint32_t format = 0;
  size_t width = 0;
  size_t height = 0;
  Bytes bytes;

  bool operator==(const SeenImage&) const = default;
};

inline void PrintTo(const SeenImage& image, std::ostream* stream) {
  const FormatRow* const format = FindFormat(image.format);
  *stream << (format == nullptr ? "no format" : format->name) << " of " << image.width << " x " << image.height
          << ", bytes";
  constexpr size_t kShown = 48;
  for (size_t i = 0; i < std::min(kShown, image.bytes.size()); ++i) *stream << " " << unsigned{image.bytes[i]};
  if (image.bytes.size() > kShown) *stream << " and " << image.bytes.size() - kShown << " more";
}

inline SeenImage SeenOf(KORVEL_IMAGE_HANDLE handle) {
  SeenImage image;
  size_t byteCount = 0;
  uint8_t* data = nullptr;
  EXPECT_EQ(KORVEL_Image_GetPixelFormat(handle, &image.format), 0u);
  EXPECT_EQ(KORVEL_Image_GetWidth(handle, &image.width), 0u);
  EXPECT_EQ(KORVEL_Image_GetHeight(handle, &image.height), 0u);
  EXPECT_EQ(KORVEL_Image_GetByteCount(handle, &byteCount), 0u);
  EXPECT_EQ(KORVEL_Image_GetData(handle, &data), 0u);
  image.bytes.assign(data, data + byteCount);
  return image;
}

inline SeenImage SeenOf(const ModelImage& image) { return {image.format, image.width, image.height, image.bytes}; }

}  // namespace korvel_test
