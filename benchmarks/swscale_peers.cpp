extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <memory>

#include "benchmarks/peers.h"

namespace korvel::benchmarks {
namespace {

using Calls = std::function<void()>;

auto Converting(AVPixelFormat from, int fromBytes, AVPixelFormat to, int toBytes) {
  return [=](const PeerMemory& memory) -> Calls {
    const auto width = static_cast<int>(memory.size.width);
    const auto height = static_cast<int>(memory.size.height);
    const std::shared_ptr<SwsContext> context(
        sws_getContext(width, height, from, width, height, to, SWS_POINT, nullptr, nullptr, nullptr), sws_freeContext);
    if (!context) return nullptr;
    return [=] {
      const uint8_t* const picture[] = {memory.picture, nullptr, nullptr, nullptr};
      const int pictureStride[] = {width * fromBytes, 0, 0, 0};
      uint8_t* const result[] = {memory.result, nullptr, nullptr, nullptr};
      const int resultStride[] = {width * toBytes, 0, 0, 0};
      sws_scale(context.get(), picture, pictureStride, 0, height, result, resultStride);
    };
  };
}

}  // namespace

std::vector<PeerMethod> SwscaleMethods() {
  av_log_set_level(AV_LOG_ERROR);
  return {
      {"convert_mode1/BayerRG8/RGB8", "swscale", Converting(AV_PIX_FMT_BAYER_RGGB8, 1, AV_PIX_FMT_RGB24, 3)},
      {"convert_mode1/BayerRG8/BGRa8", "swscale", Converting(AV_PIX_FMT_BAYER_RGGB8, 1, AV_PIX_FMT_BGRA, 4)},
      {"convert_mode1/BayerGR8/BGRa8", "swscale", Converting(AV_PIX_FMT_BAYER_GRBG8, 1, AV_PIX_FMT_BGRA, 4)},
      {"convert_mode1/Mono12/Mono8", "swscale", Converting(AV_PIX_FMT_GRAY12LE, 2, AV_PIX_FMT_GRAY8, 1)},
      {"convert_mode1/Mono8/BGRa8", "swscale", Converting(AV_PIX_FMT_GRAY8, 1, AV_PIX_FMT_BGRA, 4)},
  };
}

}  // namespace korvel::benchmarks
