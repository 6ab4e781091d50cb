#include "format_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <numeric>
#include <vector>

#include "korvel/korvel.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

// The header's words for a family, which tell some layouts as well.
constexpr PixelFamily kMono = PixelFamily::kMono, kMonoPacked = kMono;
constexpr PixelFamily kBayerGR = PixelFamily::kBayerGR, kBayerGRPacked = kBayerGR;
constexpr PixelFamily kBayerRG = PixelFamily::kBayerRG, kBayerRGPacked = kBayerRG;
constexpr PixelFamily kBayerGB = PixelFamily::kBayerGB, kBayerGBPacked = kBayerGB;
constexpr PixelFamily kBayerBG = PixelFamily::kBayerBG, kBayerBGPacked = kBayerBG;
constexpr PixelFamily kRGB = PixelFamily::kRGB, kRGB10p32 = kRGB;
constexpr PixelFamily kBGR = PixelFamily::kBGR, kBGR10p32 = kBGR;
constexpr PixelFamily kRGBa = PixelFamily::kRGBa;
constexpr PixelFamily kBGRa = PixelFamily::kBGRa;

#define NAMED_FORMAT(x, name, id, pixel_class, layout, bits) \
  NamedFormat{#name, id, k##pixel_class, PixelLayout::k##layout, bits},
constexpr NamedFormat kFormats[] = {KORVEL_PIXEL_FORMAT_TABLE(NAMED_FORMAT, )};
#undef NAMED_FORMAT

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

// The number of characters to insert, delete or replace that makes one text into the other.
size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i + 1;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row[b.size()];
}

// The formats whose names come nearest, the best first; none if nothing is near.
std::vector<std::string_view> NearNames(std::string_view name) {
  constexpr size_t kMostSuggestions = 3;
  constexpr size_t kLongestName = 32;  // longer texts resemble nothing, and are not worth comparing
  if (name.size() > kLongestName) return {};

  const size_t limit = std::max<size_t>(2, name.size() / 4);
  std::vector<std::pair<size_t, std::string_view>> candidates;
  for (const NamedFormat& format : kFormats) {
    const size_t distance = EditDistance(LowerCase(name), LowerCase(format.name));
    if (distance <= limit) candidates.emplace_back(distance, format.name);
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });

  std::vector<std::string_view> names;
  for (const auto& [distance, candidate] : candidates) {
    // Another spelling of one format is what was meant.
    if (names.size() == kMostSuggestions || (!names.empty() && candidates.front().first == 0)) break;
    names.push_back(candidate);
  }
  return names;
}

std::string Suggestion(std::string_view name) {
  const std::vector<std::string_view> names = NearNames(name);
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text.empty() ? "'korvel formats' lists all formats."
                      : "Did you mean " + text + "? 'korvel formats' lists all.";
}

}  // namespace

std::span<const NamedFormat> AllFormats() { return kFormats; }

NamedFormat FindFormat(std::string_view name, std::string_view option) {
  for (const NamedFormat& format : kFormats) {
    if (format.name == name) return format;
  }
  std::string problem(option);
  problem += ": there is no pixel format '";
  problem += name;
  problem += "'";
  throw ToolError(problem, Suggestion(name));
}

NamedFormat FormatOfId(uint32_t id) {
  for (const NamedFormat& format : kFormats) {
    if (format.id == id) return format;
  }
  throw ToolError("there is no pixel format " + HexadecimalId(id), kVersionAdvice);
}

NamedFormat UnpackedFormat(PixelFamily family, unsigned bits) {
  return *std::find_if(std::begin(kFormats), std::end(kFormats), [&](const NamedFormat& format) {
    return format.family == family && format.layout == PixelLayout::kUnpacked && format.bits == bits;
  });
}

NamedFormat PictureFormat(const NamedFormat& format) {
  return UnpackedFormat(IsBayer(format) ? PixelFamily::kBGRa : format.family, 8);
}

std::string NameOfFormat(uint32_t id) {
  for (const NamedFormat& format : kFormats) {
    if (format.id == id) return std::string(format.name);
  }
  return HexadecimalId(id);
}

std::string HexadecimalId(uint32_t id) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%08X", id);
  return text.data();
}

bool IsBayer(const NamedFormat& format) {
  return format.family == kBayerGR || format.family == kBayerRG || format.family == kBayerGB ||
         format.family == kBayerBG;
}

}  // namespace korvel::tools
