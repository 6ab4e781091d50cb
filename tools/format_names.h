// Names and ids of the pixel formats, as the exported header lists them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace korvel::tools {

struct NamedFormat {
  std::string_view name;
  uint32_t id;
};

// All public formats, in order of their ids.
std::span<const NamedFormat> AllFormats();

// The format with this name, in exactly this spelling. Throws ToolError, with names that come near, where there is
// none; option is the command-line option that gave the name.
NamedFormat FindFormat(std::string_view name, std::string_view option);

// The name of a format; its number in hexadecimal where the header has no such format.
std::string NameOfFormat(uint32_t id);

// 0x and eight digits.
std::string HexadecimalId(uint32_t id);

// Tells grey formats from Bayer and colour ones.
bool IsMono(const NamedFormat& format);

}  // namespace korvel::tools
