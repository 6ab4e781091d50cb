// Changes that make many seeds of one file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fuzz/seeds.h"

namespace korvel_fuzz {

using Seeds = std::vector<Seed>;

inline std::string Text(uint64_t number) { return std::to_string(number); }

// A number in a header, little endian.
struct HeaderField {
  const char* name;
  size_t offset;
  size_t size;
};

void SetNumber(SeedBytes& file, const HeaderField& field, uint64_t number);

// The file itself, and its first bytes for every number of them.
void AppendWithCuts(Seeds& seeds, const std::string& name, const SeedBytes& file);

// Each field of a header at its edges, and beside the value that it had.
void AppendFieldEdges(Seeds& seeds, const std::string& name, const SeedBytes& file,
                      std::span<const HeaderField> fields);

}  // namespace korvel_fuzz
