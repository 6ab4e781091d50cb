// Guesses the pixel format of a dump by trying all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "format_names.h"
#include "options.h"
#include "smoothness.h"

namespace korvel::tools {

// The file and what is known of it.
struct Dump {
  std::string path{};
  uint64_t bytes = 0;  // of the whole file
  PictureSize size{};
  uint64_t skip = 0;          // bytes before the first pixel
  bool skip_is_known = true;  // false where bytes too many may as well lie before the first pixel
};

// A format that the bytes may have.
struct Guess {
  NamedFormat format{};
  uint64_t skip = 0;
  Roughness roughness{};
  double score = 0;   // the mean roughness and what else doesn't fit a picture of this format; 0 is best, 1 worst
  double warmth = 0;  // by how much red is above blue, which decides where the score can't
  size_t rank = 0;    // from 1 on; those of one rank can't be told from each other
};

// Formats that the bytes can't have, and why.
struct Refusal {
  std::vector<NamedFormat> formats{};
  std::string reason{};
};

struct Findings {
  bool size_fits = false;        // whether a frame of some format takes exactly the bytes that there are
  std::vector<Guess> guesses{};  // the best first
  std::vector<Refusal> refusals{};
  std::vector<std::string> doubts{};  // what can't be told, in sentences
};

// Bytes of a frame in this format.
uint64_t FrameBytes(const NamedFormat& format, const PictureSize& size);

// Where the size fits for some formats, these alone are tried; else all whose frames are small enough. Throws
// ToolError.
Findings GuessFormat(const Dump& dump);

}  // namespace korvel::tools
