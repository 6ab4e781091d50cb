// What the target of AVI files begins with.
#pragma once

#include <vector>

#include "fuzz/seeds.h"

namespace korvel_fuzz {

std::vector<Seed> AviSeeds();
std::vector<Seed> RepairAviSeeds();
std::vector<SeedBytes> AviWords();

}  // namespace korvel_fuzz
