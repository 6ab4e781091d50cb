// The pixel formats by name and by id, and what the exported header's list tells of each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace korvel::tools {

// What the channels of a format mean, whatever their depth and packing.
enum class PixelFamily { kMono, kBayerGR, kBayerRG, kBayerGB, kBayerBG, kRGB, kBGR, kRGBa, kBGRa };

// How channels lie in memory; KORVEL_PIXEL_FORMAT_TABLE tells what each word means.
enum class PixelLayout { kUnpacked, kNoAlignment, kMipi, kWord32 };

struct NamedFormat {
  std::string_view name;
  uint32_t id;
  PixelFamily family;
  PixelLayout layout;
  unsigned bits;  // significant ones of each channel
};

// All public formats, in order of their ids.
std::span<const NamedFormat> AllFormats();

// The format with this name, in exactly this spelling. Throws ToolError, with names that come near, where there is
// none; option is the command-line option that gave the name.
NamedFormat FindFormat(std::string_view name, std::string_view option);

// The format with this id. Throws ToolError where the header has no such format, as a library of another version may.
NamedFormat FormatOfId(uint32_t id);

// The format of this family and depth whose channels each take whole bytes.
NamedFormat UnpackedFormat(PixelFamily family, unsigned bits);

// What is made of a format where pictures of 8 bits are needed: the like of it, and colour of a mosaic.
NamedFormat PictureFormat(const NamedFormat& format);

// The name of a format; its number in hexadecimal where the header has no such format.
std::string NameOfFormat(uint32_t id);

// 0x and eight digits.
std::string HexadecimalId(uint32_t id);

bool IsBayer(const NamedFormat& format);

}  // namespace korvel::tools
