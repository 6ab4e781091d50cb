#include "benchmarks/peers.h"

#include <iterator>
#include <utility>

namespace korvel::benchmarks {
namespace {

[[maybe_unused]] void Append(std::vector<PeerMethod>& all, std::vector<PeerMethod> methods) {
  all.insert(all.end(), std::make_move_iterator(methods.begin()), std::make_move_iterator(methods.end()));
}

std::vector<PeerMethod> Collect() {
  std::vector<PeerMethod> all;
#ifdef KORVEL_HAS_OPENCV
  Append(all, OpenCvMethods());
#endif
#ifdef KORVEL_HAS_LIBYUV
  Append(all, LibyuvMethods());
#endif
#ifdef KORVEL_HAS_SWSCALE
  Append(all, SwscaleMethods());
#endif
#ifdef KORVEL_HAS_DC1394
  Append(all, Dc1394Methods());
#endif
  return all;
}

}  // namespace

const std::vector<PeerMethod>& PeerMethods() {
  static const std::vector<PeerMethod> methods = Collect();
  return methods;
}

std::string MissingPeers() {
  std::string missing;
  [[maybe_unused]] const auto add = [&](const char* name) {
    missing += (missing.empty() ? "" : ", ") + std::string(name);
  };
#ifndef KORVEL_HAS_OPENCV
  add("OpenCV");
#endif
#ifndef KORVEL_HAS_LIBYUV
  add("libyuv");
#endif
#ifndef KORVEL_HAS_SWSCALE
  add("swscale");
#endif
#ifndef KORVEL_HAS_DC1394
  add("dc1394");
#endif
  return missing;
}

}  // namespace korvel::benchmarks
