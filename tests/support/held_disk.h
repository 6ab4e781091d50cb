// Stands in for the disk's statistics in a test program: the worker of a recording asks for them once for each picture,
// before it writes it, so that a test can hold workers there and fill the disk.
#pragma once

#include <cstdint>

#include "tests/support/gate.h"

namespace korvel_test {

// Where workers ask. Open at first.
Gate& DiskGate();

// What the disk has free from now on.
void SetFreeBlocks(uint64_t blocks, uint64_t bytesPerBlock);

// As the disk tells it.
void UseTheDisksOwnBlocks();

}  // namespace korvel_test
