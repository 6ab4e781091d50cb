// Other libraries that do the same as an operation, or something close to it: what an application could use instead.
//
// Each library has a file of its own, which is part of the build where the library is installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/geometry.h"

namespace korvel::benchmarks {

// What a peer works on. Lines have no padding.
struct PeerMemory {
  img::Size2D size;  // of the picture
  uint8_t* picture;  // its own where the operation changes the picture
  uint8_t* result;   // null where it makes none
  img::Size2D resultSize;
};

// A library's way to do an operation.
struct PeerMethod {
  std::string operation;
  std::string name;
  // Makes the call for pictures of one size; nothing if the library doesn't take them.
  std::function<std::function<void()>(const PeerMemory&)> make;
};

// All methods of the libraries that are there.
const std::vector<PeerMethod>& PeerMethods();

// The names of libraries that the build didn't find; empty if it found all.
std::string MissingPeers();

std::vector<PeerMethod> OpenCvMethods();
std::vector<PeerMethod> LibyuvMethods();
std::vector<PeerMethod> SwscaleMethods();
std::vector<PeerMethod> Dc1394Methods();

}  // namespace korvel::benchmarks
