// Writes a target's seeds into a directory, one file each, and its words into a dictionary of libFuzzer's.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <stdexcept>
#include <string>

#include "fuzz/seeds.h"

namespace {

void Write(const std::filesystem::path& path, const korvel_fuzz::SeedBytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  for (const uint8_t byte : bytes) file.put(static_cast<char>(byte));
  if (!file.flush()) throw std::runtime_error("can't write " + path.string());
}

void WriteDictionary(const std::filesystem::path& path, const std::string& target) {
  std::ofstream file(path);
  file << std::hex << std::setfill('0');
  for (const korvel_fuzz::SeedBytes& word : korvel_fuzz::WordsOf(target)) {
    file << '"';
    for (const uint8_t byte : word) file << "\\x" << std::setw(2) << unsigned{byte};
    file << "\"\n";
  }
  if (!file.flush()) throw std::runtime_error("can't write " + path.string());
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  if (argumentCount != 4) {
    std::fprintf(stderr, "Usage: make_seeds TARGET DIRECTORY DICTIONARY\n");
    return 2;
  }
  const std::string target = arguments[1];
  const std::filesystem::path directory = arguments[2];
  std::filesystem::create_directories(directory);
  for (const korvel_fuzz::Seed& seed : korvel_fuzz::SeedsOf(target)) Write(directory / seed.name, seed.bytes);
  WriteDictionary(arguments[3], target);
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "make_seeds: %s\n", failure.what());
  return 1;
}
