#include <dc1394/dc1394.h>

#include "benchmarks/peers.h"

namespace korvel::benchmarks {
namespace {

using Calls = std::function<void()>;

auto Demosaicing(dc1394bayer_method_t method) {
  return [=](const PeerMemory& memory) -> Calls {
    return [=] {
      dc1394_bayer_decoding_8bit(memory.picture, memory.result, static_cast<uint32_t>(memory.size.width),
                                 static_cast<uint32_t>(memory.size.height), DC1394_COLOR_FILTER_RGGB, method);
    };
  };
}

}  // namespace

std::vector<PeerMethod> Dc1394Methods() {
  return {
      {"convert_mode1/BayerRG8/RGB8", "dc1394 bilinear", Demosaicing(DC1394_BAYER_METHOD_BILINEAR)},
      {"convert_mode2/BayerRG8/RGB8", "dc1394 linear filters", Demosaicing(DC1394_BAYER_METHOD_HQLINEAR)},
  };
}

}  // namespace korvel::benchmarks
