#include <libyuv.h>
#include <libyuv/scale_rgb.h>

#include <array>
#include <cmath>
#include <cstring>
#include <memory>

#include "benchmarks/parameters.h"
#include "benchmarks/peers.h"

namespace korvel::benchmarks {
namespace {

using Calls = std::function<void()>;

struct Sides {
  explicit Sides(const img::Size2D& size)
      : width(static_cast<int>(size.width)), height(static_cast<int>(size.height)) {}

  int width;
  int height;
};

// A function that moves lines from one picture to another; of a negative height from the last one up.
using Move = void (*)(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height);

auto Moving(Move move, int pixelBytes, bool isUpsideDown) {
  return [=](const PeerMemory& memory) -> Calls {
    const Sides sides(memory.size);
    return [=] {
      move(memory.picture, sides.width * pixelBytes, memory.result, sides.width * pixelBytes, sides.width,
           isUpsideDown ? -sides.height : sides.height);
    };
  };
}

template <auto function>
void Ignoring(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height) {
  function(from, fromStride, to, toStride, width, height);
}

// Of pixels with so many bytes.
template <int pixelBytes>
void CopyLines(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height) {
  libyuv::CopyPlane(from, fromStride, to, toStride, width * pixelBytes, height);
}

auto Turning(libyuv::RotationMode mode) {
  return [=](const PeerMemory& memory) -> Calls {
    const Sides sides(memory.size);
    return [=] {
      libyuv::RotatePlane(memory.picture, sides.width, memory.result, sides.height, sides.width, sides.height, mode);
    };
  };
}

auto TurningFourBytes(libyuv::RotationMode mode) {
  return [=](const PeerMemory& memory) -> Calls {
    const Sides sides(memory.size);
    return [=] {
      libyuv::ARGBRotate(memory.picture, 4 * sides.width, memory.result, 4 * sides.height, sides.width, sides.height,
                         mode);
    };
  };
}

void AddMoves(std::vector<PeerMethod>& methods) {
  const auto add = [&](const char* operation, auto make) { methods.push_back({operation, "libyuv", make}); };
  add("mirror_left_right/Mono8", Moving(libyuv::MirrorPlane, 1, false));
  add("mirror_left_right/RGB8", Moving(Ignoring<libyuv::RGB24Mirror>, 3, false));
  add("mirror_left_right/BGRa8", Moving(Ignoring<libyuv::ARGBMirror>, 4, false));
  add("mirror_up_down/Mono8", Moving(CopyLines<1>, 1, true));
  add("mirror_up_down/RGB8", Moving(CopyLines<3>, 3, true));
  add("mirror_up_down/BGRa8", Moving(CopyLines<4>, 4, true));
  add("mirror_both/Mono8", Moving(libyuv::MirrorPlane, 1, true));
  add("mirror_both/RGB8", Moving(Ignoring<libyuv::RGB24Mirror>, 3, true));
  add("mirror_both/BGRa8", Moving(Ignoring<libyuv::ARGBMirror>, 4, true));
  // Two bytes stay together, as of a pixel's two chroma values.
  add("rotate_180/BayerRG12", Moving(libyuv::MirrorUVPlane, 2, true));
  add("rotate_90/Mono8", Turning(libyuv::kRotate270));
  add("rotate_270/Mono8", Turning(libyuv::kRotate90));
  add("rotate_90/BGRa8", TurningFourBytes(libyuv::kRotate270));
  add("rotate_270/BGRa8", TurningFourBytes(libyuv::kRotate90));
}

void AddConversions(std::vector<PeerMethod>& methods) {
  methods.push_back({"convert_mode1/Mono12/Mono8", "libyuv", [](const PeerMemory& memory) -> Calls {
                       constexpr int kTwelveBits = 4096;
                       const Sides sides(memory.size);
                       return [=] {
                         libyuv::Convert16To8Plane(reinterpret_cast<const uint16_t*>(memory.picture), sides.width,
                                                   memory.result, sides.width, kTwelveBits, sides.width, sides.height);
                       };
                     }});
  methods.push_back({"convert_mode1/Mono8/BGRa8", "libyuv", [](const PeerMemory& memory) -> Calls {
                       const Sides sides(memory.size);
                       return [=] {
                         libyuv::J400ToARGB(memory.picture, sides.width, memory.result, 4 * sides.width, sides.width,
                                            sides.height);
                       };
                     }});
  methods.push_back({"convert_mode1/RGB8/BGR8", "libyuv in place, then a copy", [](const PeerMemory& memory) -> Calls {
                       const Sides sides(memory.size);
                       return [=] {
                         libyuv::RAWToRGB24(memory.picture, 3 * sides.width, memory.picture, 3 * sides.width,
                                            sides.width, sides.height);
                         libyuv::CopyPlane(memory.picture, 3 * sides.width, memory.result, 3 * sides.width,
                                           3 * sides.width, sides.height);
                       };
                     }});
  methods.push_back({"clone/BayerRG8", "libyuv", [](const PeerMemory& memory) -> Calls {
                       const Sides sides(memory.size);
                       const size_t size = memory.size.width * memory.size.height;
                       return [=] {
                         const auto clone = std::make_unique_for_overwrite<uint8_t[]>(size);
                         libyuv::CopyPlane(memory.picture, sides.width, clone.get(), sides.width, sides.width,
                                           sides.height);
                       };
                     }});
}

void AddCorrections(std::vector<PeerMethod>& methods) {
  methods.push_back({"gamma_in_place/BGRa8", "libyuv look-up", [](const PeerMemory& memory) -> Calls {
                       std::array<uint8_t, size_t{4} * 256> table{};
                       for (size_t i = 0; i < table.size(); ++i) {
                         const size_t channelValue = i / 4;
                         const float value = std::pow(static_cast<float>(channelValue) / 255, 1 / kGamma) * 255;
                         table[i] = static_cast<uint8_t>(value);
                       }
                       const Sides sides(memory.size);
                       return [=] {
                         libyuv::RGBColorTable(memory.picture, 4 * sides.width, table.data(), 0, 0, sides.width,
                                               sides.height);
                       };
                     }});
  methods.push_back({"color_in_place/BGRa8", "libyuv with coarse factors", [](const PeerMemory& memory) -> Calls {
                       constexpr float kOne = 64;
                       std::array<int8_t, 16> matrix{};
                       for (size_t i = 0; i < kFactors.size(); ++i) {
                         matrix[(2 - i / 3) * 4 + 2 - i % 3] = static_cast<int8_t>(std::lround(kFactors[i] * kOne));
                       }
                       matrix[15] = static_cast<int8_t>(kOne);
                       const Sides sides(memory.size);
                       return [=] {
                         libyuv::ARGBColorMatrix(memory.picture, 4 * sides.width, memory.picture, 4 * sides.width,
                                                 matrix.data(), sides.width, sides.height);
                       };
                     }});
  methods.push_back({"binning_average_2x2/Mono8", "libyuv", [](const PeerMemory& memory) -> Calls {
                       const Sides sides(memory.size);
                       const Sides result(memory.resultSize);
                       return [=] {
                         libyuv::ScalePlane(memory.picture, sides.width, sides.width, sides.height, memory.result,
                                            result.width, result.width, result.height, libyuv::kFilterBox);
                       };
                     }});
  methods.push_back({"binning_average_2x2/RGB8", "libyuv", [](const PeerMemory& memory) -> Calls {
                       const Sides sides(memory.size);
                       const Sides result(memory.resultSize);
                       return [=] {
                         libyuv::RGBScale(memory.picture, 3 * sides.width, sides.width, sides.height, memory.result,
                                          3 * result.width, result.width, result.height, libyuv::kFilterBox);
                       };
                     }});
}

}  // namespace

std::vector<PeerMethod> LibyuvMethods() {
  std::vector<PeerMethod> methods;
  AddMoves(methods);
  AddConversions(methods);
  AddCorrections(methods);
  return methods;
}

}  // namespace korvel::benchmarks
