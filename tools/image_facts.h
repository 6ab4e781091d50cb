// All that an image's handle tells, at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "format_names.h"
#include "handles.h"

namespace korvel::tools {

struct ImageFacts {
  NamedFormat format{};
  size_t width = 0;
  size_t height = 0;
  uint8_t* bytes = nullptr;  // the image's own
  size_t byte_count = 0;
};

// Throws ToolError.
ImageFacts FactsOf(const Image& image);

// "640 x 480, Mono8"
std::string Describe(const ImageFacts& facts);

}  // namespace korvel::tools
