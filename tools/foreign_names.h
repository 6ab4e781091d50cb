// What other programs call the pixel formats.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "format_names.h"

namespace korvel::tools {

enum class Vocabulary { kOpenCv, kV4l2, kLibcamera, kGStreamer, kFfmpeg };
inline constexpr size_t kVocabularyCount = 5;

struct VocabularyFacts {
  Vocabulary vocabulary{};
  std::string_view option;  // the word of --as
  std::string_view title;   // as people write it
  std::string_view prefix;  // of its names in code, which people leave out as well
  std::string_view detail;  // what ForeignName::detail is; empty where there is none
};

std::span<const VocabularyFacts> AllVocabularies();

// What --as takes: the words of all vocabularies, and "all".
std::string WordsOfAs(std::string_view separator);

// The vocabulary of this word; nothing for "all". Throws ToolError for any other word.
std::optional<Vocabulary> ParseVocabulary(std::string_view option);

struct ForeignName {
  std::string_view name{};    // empty where the vocabulary has none for the same bytes
  std::string_view detail{};  // the four characters of V4L2; the code for OpenCV's cvtColor that gives BGR
  std::string_view remark{};  // what to know before the name is used
};

ForeignName NameIn(Vocabulary vocabulary, const NamedFormat& format);

// The format of this name, or all those that the vocabulary calls so (any vocabulary, where none is given), in any
// case of letters unless it is right for some. Throws ToolError where there is none.
std::vector<NamedFormat> FormatsCalled(std::string_view name, std::optional<Vocabulary> vocabulary);

}  // namespace korvel::tools
