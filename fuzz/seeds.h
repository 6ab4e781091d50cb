// What the targets begin with: a matrix of files and calls, made anew each time and the same each time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/file_model.h"

namespace korvel_fuzz {

using SeedBytes = std::vector<uint8_t>;

struct Seed {
  std::string name;
  SeedBytes bytes;
  bool isCut = false;  // the first part of another seed
};

// The file of an image, which has a format that the type can hold.
SeedBytes FileOf(korvel_test::FileType type, const korvel_test::ModelImage& image);

// The seeds of the target of a name. Throws std::invalid_argument for a name that no target has.
std::vector<Seed> SeedsOf(std::string_view target);

// Words that libFuzzer puts into the target's inputs.
std::vector<SeedBytes> WordsOf(std::string_view target);

}  // namespace korvel_fuzz
