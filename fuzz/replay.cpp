// Runs a target without libFuzzer: over all its seeds, or over files. A program of its own for each target.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/seeds.h"
#include "fuzz/session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// No single block of memory may exceed what libFuzzer is told in scripts/fuzz.sh. Sanitizers replace malloc themselves.
#ifndef KORVEL_FUZZ_SANITIZED
extern "C" {

void* __libc_malloc(size_t size);

__attribute__((visibility("default"))) void* malloc(size_t size) {
  constexpr size_t kLargestBlock = size_t{128} * 1024 * 1024;
  KORVEL_FUZZ_REQUIRE(size <= kLargestBlock);
  return __libc_malloc(size);
}
}
#endif

namespace {

constexpr const char* kUsage =
    "Usage: replay_%s [--verbose] [--cuts EVERY | FILE...]\n"
    "\n"
    "Runs the fuzz target over its generated seeds, or over the files. A fault ends the program.\n"
    "\n"
    "  --cuts EVERY   of the seeds that are cut short, take every EVERYth; 1 by default\n"
    "  --verbose      name each input before it is run\n";

struct Options {
  bool verbose = false;
  size_t cuts = 1;
  std::vector<std::string> files;
};

Options Parse(const std::vector<std::string>& arguments) {
  Options options;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--verbose") {
      options.verbose = true;
    } else if (arguments[i] == "--cuts" && i + 1 < arguments.size()) {
      options.cuts = std::stoul(arguments[++i]);
      if (options.cuts == 0) throw std::invalid_argument("--cuts wants a number above 0");
    } else if (arguments[i].starts_with("--")) {
      throw std::invalid_argument("unknown argument '" + arguments[i] + "'");
    } else {
      options.files.push_back(arguments[i]);
    }
  }
  return options;
}

// A copy of exactly the input's size, so that tools for memory notice what reaches beyond.
void Run(const std::string& name, const std::vector<uint8_t>& bytes, bool verbose) {
  if (verbose) std::fprintf(stderr, "%s\n", name.c_str());
  const std::vector<uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::vector<uint8_t> ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("can't read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

size_t RunSeeds(const Options& options) {
  size_t count = 0;
  size_t cut = 0;
  for (const korvel_fuzz::Seed& seed : korvel_fuzz::SeedsOf(KORVEL_FUZZ_TARGET)) {
    if (seed.isCut && cut++ % options.cuts != 0) continue;
    Run(seed.name, seed.bytes, options.verbose);
    ++count;
  }
  return count;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  const Options options = Parse({arguments + 1, arguments + argumentCount});
  for (const std::string& path : options.files) Run(path, ContentOf(path), options.verbose);
  const size_t count = options.files.empty() ? RunSeeds(options) : options.files.size();
  std::printf("%s: %zu inputs\n", KORVEL_FUZZ_TARGET, count);
  return 0;
} catch (const std::invalid_argument& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  std::fprintf(stderr, kUsage, KORVEL_FUZZ_TARGET);
  return 2;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s: %s\n", KORVEL_FUZZ_TARGET, failure.what());
  return 1;
}
