#include "simulated_camera.h"

#include <algorithm>
#include <utility>

#include "korvel/korvel.h"
#include "library_error.h"
#include "packing.h"
#include "scene.h"
#include "sensor.h"

namespace korvel::tools {
namespace {

bool SeesOneColour(const NamedFormat& format) { return format.family == PixelFamily::kMono || IsBayer(format); }

bool HasAlpha(const NamedFormat& format) {
  return format.family == PixelFamily::kRGBa || format.family == PixelFamily::kBGRa;
}

std::vector<float> LightFor(const NamedFormat& format, const Scene& scene) {
  switch (format.family) {
    case PixelFamily::kMono:
      return GreyLight(scene);
    case PixelFamily::kBayerGR:
      return MosaicLight(scene, MosaicPhase::kGR);
    case PixelFamily::kBayerRG:
      return MosaicLight(scene, MosaicPhase::kRG);
    case PixelFamily::kBayerGB:
      return MosaicLight(scene, MosaicPhase::kGB);
    case PixelFamily::kBayerBG:
      return MosaicLight(scene, MosaicPhase::kBG);
    default:
      return ColourLight(scene);
  }
}

// Red, green and blue of each pixel in the order of the format, with an opaque alpha where it has one.
std::vector<uint16_t> InChannelOrder(std::vector<uint16_t> samples, const NamedFormat& format) {
  if (SeesOneColour(format)) return samples;
  const bool blue_first = format.family == PixelFamily::kBGR || format.family == PixelFamily::kBGRa;
  const bool has_alpha = HasAlpha(format);
  if (!blue_first && !has_alpha) return samples;
  const auto opaque = static_cast<uint16_t>((1U << format.bits) - 1);
  std::vector<uint16_t> ordered;
  ordered.reserve(samples.size() / 3 * (has_alpha ? 4 : 3));
  for (size_t first = 0; first < samples.size(); first += 3) {
    ordered.push_back(samples[first + (blue_first ? 2 : 0)]);
    ordered.push_back(samples[first + 1]);
    ordered.push_back(samples[first + (blue_first ? 0 : 2)]);
    if (has_alpha) ordered.push_back(opaque);
  }
  return ordered;
}

}  // namespace

SimulatedCamera::SimulatedCamera(const CameraSettings& settings)
    : settings_(settings), light_(LightFor(settings.format, Scene(settings.size.width, settings.size.height))) {
  AddHotPixels(light_, SeesOneColour(settings.format) ? 1 : 3, settings.hot_pixels, settings.seed);
}

size_t SimulatedCamera::SamplesPerPixel() const {
  if (SeesOneColour(settings_.format)) return 1;
  return HasAlpha(settings_.format) ? 4 : 3;
}

std::vector<uint16_t> SimulatedCamera::Expose(uint64_t frame) const {
  const Sensor sensor{.bits = settings_.format.bits, .noise = settings_.noise, .seed = settings_.seed + frame};
  return InChannelOrder(tools::Expose(light_, sensor), settings_.format);
}

std::vector<uint8_t> SimulatedCamera::Pack(const std::vector<uint16_t>& samples) const {
  const NamedFormat& format = settings_.format;
  switch (format.layout) {
    case PixelLayout::kNoAlignment:
      return PackBitStream(samples, format.bits);
    case PixelLayout::kMipi:
      return PackMipi(samples, format.bits);
    case PixelLayout::kWord32:
      return PackThreePerWord(samples);
    case PixelLayout::kUnpacked:
      break;
  }
  return format.bits == 8 ? PackBytes(samples) : PackWords(samples);
}

CameraStream::CameraStream(SimulatedCamera camera) : camera_(std::move(camera)) {
  constexpr uint64_t kExposures = 4;
  for (uint64_t frame = 0; frame < kExposures; ++frame) exposures_.push_back(camera_.Expose(frame));
  samples_.resize(exposures_.front().size());
}

const Image& CameraStream::Frame(uint64_t number) {
  constexpr uint64_t kPixelsPerFrame = 4;  // even, so that colours of a mosaic keep their columns
  const CameraSettings& settings = camera_.Settings();
  const std::vector<uint16_t>& exposure = exposures_[number % exposures_.size()];
  const size_t line = settings.size.width * camera_.SamplesPerPixel();
  const size_t shift = number % settings.size.width * kPixelsPerFrame % settings.size.width * camera_.SamplesPerPixel();
  for (size_t first = 0; first < exposure.size(); first += line) {
    const uint16_t* const from = exposure.data() + first;
    std::rotate_copy(from, from + shift, from + line, samples_.data() + first);
  }
  image_.Reset();
  bytes_ = camera_.Pack(samples_);
  Require(KORVEL_Image_ConstructFromBuffer(settings.format.id, bytes_.data(), bytes_.size(), settings.size.width,
                                           settings.size.height, image_.Out()),
          "make an image of a frame", "Choose another size.");
  return image_;
}

}  // namespace korvel::tools
