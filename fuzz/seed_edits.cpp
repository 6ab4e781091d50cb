#include "fuzz/seed_edits.h"

#include <limits>
#include <utility>

namespace korvel_fuzz {
namespace {

uint64_t NumberAt(const SeedBytes& file, const HeaderField& field) {
  uint64_t number = 0;
  for (size_t i = 0; i < field.size; ++i) number |= uint64_t{file.at(field.offset + i)} << (8 * i);
  return number;
}

}  // namespace

void SetNumber(SeedBytes& file, const HeaderField& field, uint64_t number) {
  for (size_t i = 0; i < field.size; ++i) file.at(field.offset + i) = static_cast<uint8_t>(number >> (8 * i));
}

void AppendWithCuts(Seeds& seeds, const std::string& name, const SeedBytes& file) {
  for (size_t size = 0; size < file.size(); ++size) {
    seeds.push_back(
        {name + "_cut_at_" + Text(size), {file.begin(), file.begin() + static_cast<ptrdiff_t>(size)}, true});
  }
  seeds.push_back({name, file});
}

void AppendFieldEdges(Seeds& seeds, const std::string& name, const SeedBytes& file,
                      std::span<const HeaderField> fields) {
  for (const HeaderField& field : fields) {
    if (field.offset + field.size > file.size()) continue;
    const uint64_t largest = std::numeric_limits<uint64_t>::max() >> (64 - 8 * field.size);
    const uint64_t now = NumberAt(file, field);
    for (const uint64_t number :
         {uint64_t{0}, uint64_t{1}, largest, largest / 2, largest / 2 + 1, now - 1, now + 1, largest - now + 1}) {
      SeedBytes changed = file;
      SetNumber(changed, field, number);
      seeds.push_back({name + "_" + field.name + "_" + Text(number & largest), std::move(changed)});
    }
  }
}

}  // namespace korvel_fuzz
