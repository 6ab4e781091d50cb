// How an operation refuses a pixel format.
#pragma once

#include <string>

#include "core/pixel_format.h"

namespace img::processing {

// "Pixel format Mono8 is not supported!"
std::string UnsupportedFormatText(PixelFormatId format);

// Throws ImageFormatNotSupported with that text unless isSupported. location is the caller's signature.
void RequireSupportedFormat(bool isSupported, PixelFormatId format, const char* location);

}  // namespace img::processing
