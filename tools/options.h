// What the words of options mean.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korvel/korvel.h"

namespace korvel::tools {

struct PictureSize {
  size_t width = 0;
  size_t height = 0;
};

// "2592x1536". Neither is 0, and the number of pixels fits a size_t. Throws ToolError.
PictureSize ParseSize(std::string_view text);

// The same for a simulated camera, whose size has a limit. Throws ToolError.
PictureSize ParseSensorSize(std::string_view text);

// A decimal number of bytes. Throws ToolError.
uint64_t ParseSkip(std::string_view text);

// A number of bytes above 0, in decimal or with K, M or G behind it for the powers of 1024, such as 500M. Throws
// ToolError.
uint64_t ParseByteCount(std::string_view option, std::string_view text);

// A whole number within the limits, which are part of it; option is the one that gave it. Throws ToolError.
uint64_t ParseWhole(std::string_view option, std::string_view text, uint64_t least, uint64_t most);

// A decimal number, such as 1.5, within the limits. Throws ToolError.
double ParseDecimal(std::string_view option, std::string_view text, double least, double most);

// Decimal numbers with commas, semicolons, spaces or line ends between them; nothing where something else is there.
std::optional<std::vector<float>> ParseList(std::string_view text);

// How readily a pixel counts as hot: 1 to 5. Throws ToolError.
uint32_t ParseHotPixelLevel(std::string_view option, std::string_view text);

// "fast", "hq" or "classic". Throws ToolError.
KORVEL_CONVERSION_MODE ParseMode(std::string_view text);

// A text as one word of a shell's command, for commands that are printed.
std::string ShellWord(std::string_view text);

}  // namespace korvel::tools
