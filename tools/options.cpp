#include "options.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>
#include <string>
#include <system_error>

#include "tool_error.h"

namespace korvel::tools {
namespace {

// Digits alone, to the last character, and no more than Number holds.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

}  // namespace

PictureSize ParseSize(std::string_view text) {
  const std::string advice = "Give width and height in pixels with an x between them, such as --size 2592x1536.";
  const size_t separator = text.find('x');
  if (separator == std::string_view::npos) throw ToolError("--size: " + Quoted(text) + " is not a size", advice);
  const auto width = ParseNumber<size_t>(text.substr(0, separator));
  const auto height = ParseNumber<size_t>(text.substr(separator + 1));
  if (!width || !height) throw ToolError("--size: " + Quoted(text) + " is not a size", advice);
  if (*width == 0 || *height == 0) throw ToolError("--size: " + Quoted(text) + " has no pixels", advice);
  if (*height > std::numeric_limits<size_t>::max() / *width) {
    throw ToolError("--size: " + Quoted(text) + " has more pixels than can be counted", advice);
  }
  return {*width, *height};
}

PictureSize ParseSensorSize(std::string_view text) {
  constexpr size_t kMostPixels = size_t{1} << 28;  // some bytes of working memory for each, and beyond any sensor
  const PictureSize size = ParseSize(text);
  if (size.width * size.height > kMostPixels) {
    throw ToolError("--size: " + std::string(text) + " has more pixels than a simulated sensor",
                    "Choose a size of up to " + std::to_string(kMostPixels) + " pixels.");
  }
  return size;
}

uint64_t ParseSkip(std::string_view text) {
  const auto skip = ParseNumber<uint64_t>(text);
  if (!skip) {
    throw ToolError("--skip: " + Quoted(text) + " is not a number of bytes",
                    "Give the bytes before the first pixel in decimal, such as --skip 512.");
  }
  return *skip;
}

uint64_t ParseByteCount(std::string_view option, std::string_view text) {
  constexpr std::string_view kUnits = "KMG";
  std::string_view digits = text;
  unsigned shift = 0;
  const size_t unit = text.empty() ? std::string_view::npos : kUnits.find(text.back());
  if (unit != std::string_view::npos) {
    shift = 10 * (static_cast<unsigned>(unit) + 1);
    digits.remove_suffix(1);
  }
  const auto number = ParseNumber<uint64_t>(digits);
  if (!number || *number == 0 || *number > std::numeric_limits<uint64_t>::max() >> shift) {
    throw ToolError(std::string(option) + ": " + Quoted(text) + " is not a number of bytes",
                    "Give a size such as 500M, 2G or 700000.");
  }
  return *number << shift;
}

uint64_t ParseWhole(std::string_view option, std::string_view text, uint64_t least, uint64_t most) {
  const auto number = ParseNumber<uint64_t>(text);
  if (number && *number >= least && *number <= most) return *number;
  const std::string advice =
      most == std::numeric_limits<uint64_t>::max()
          ? "Give a whole number from " + std::to_string(least) + " on."
          : "Give a whole number from " + std::to_string(least) + " to " + std::to_string(most) + ".";
  throw ToolError(std::string(option) + ": " + Quoted(text) + " is not a number that can be used here", advice);
}

double ParseDecimal(std::string_view option, std::string_view text, double least, double most) {
  const auto number = ParseNumber<double>(text);
  if (number && *number >= least && *number <= most) return *number;
  std::ostringstream advice;
  advice << "Give a number from " << least << " to " << most << ", such as 1.5.";
  throw ToolError(std::string(option) + ": " + Quoted(text) + " is not a number that can be used here", advice.str());
}

std::optional<std::vector<float>> ParseList(std::string_view text) {
  constexpr std::string_view kSeparators = ",; \t\r\n";
  std::vector<float> numbers;
  for (size_t begin = text.find_first_not_of(kSeparators); begin != std::string_view::npos;) {
    const size_t end = std::min(text.find_first_of(kSeparators, begin), text.size());
    const auto number = ParseNumber<float>(text.substr(begin, end - begin));
    if (!number) return std::nullopt;
    numbers.push_back(*number);
    begin = text.find_first_not_of(kSeparators, end);
  }
  return numbers;
}

uint32_t ParseHotPixelLevel(std::string_view option, std::string_view text) {
  return static_cast<uint32_t>(ParseWhole(option, text, 1, 5));
}

KORVEL_CONVERSION_MODE ParseMode(std::string_view text) {
  if (text == "fast") return KORVEL_CONVERSION_MODE_Fast;
  if (text == "hq") return KORVEL_CONVERSION_MODE_HighQuality;
  if (text == "classic") return KORVEL_CONVERSION_MODE_Classic;
  throw ToolError("--mode: there is no mode " + Quoted(text), "The modes are fast, hq and classic.");
}

std::string ShellWord(std::string_view text) {
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./-+:,@%";
  if (text.starts_with('-')) {  // no option
    std::string path = "./";
    path += text;
    return ShellWord(path);
  }
  if (!text.empty() && text.find_first_not_of(kPlain) == std::string_view::npos) return std::string(text);
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? "'\\''" : std::string(1, c);
  return word + "'";
}

}  // namespace korvel::tools
