#include "io/path_ending.h"

std::string img::io::LowerCaseEnding(const std::filesystem::path& path) {
  std::string ending = path.extension().string();
  for (char& letter : ending) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return ending;
}
