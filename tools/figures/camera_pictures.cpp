#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "figures/figures.h"
#include "figures/picture.h"
#include "format_names.h"
#include "library_error.h"
#include "scene.h"
#include "sensor.h"
#include "simulated_camera.h"

namespace korvel::tools {
namespace {

// A frame without noise, so that files are small and pixels tell of the conversion alone.
struct Frame {
  std::vector<uint8_t> bytes{};
  Image image{};
};

// Samples become bytes by the format; what change does to them comes first.
template <class Change>
Frame TakeFrame(uint32_t format, const PictureSize& size, Change&& change) {
  const SimulatedCamera camera({.format = FormatOfId(format), .size = size, .noise = 0});
  std::vector<uint16_t> samples = camera.Expose(0);
  change(samples);
  Frame frame{.bytes = camera.Pack(samples)};
  Require(KORVEL_Image_ConstructFromBuffer(format, frame.bytes.data(), frame.bytes.size(), size.width, size.height,
                                           frame.image.Out()),
          "take a frame", kBuildAdvice);
  return frame;
}

Frame TakeFrame(uint32_t format, const PictureSize& size) {
  return TakeFrame(format, size, [](std::vector<uint16_t>&) {});
}

// The left part as the camera's samples, the rest in colours.
void DrawFrameAndPicture(const std::string& folder) {
  const Frame frame = TakeFrame(KORVEL_PIXEL_FORMAT_BayerRG12, {960, 540});
  Picture picture = ColourPicture(frame.image, KORVEL_CONVERSION_MODE_HighQuality);
  const Picture mosaic = MosaicPicture(frame.image);
  const size_t part = picture.width * 3 / 10;
  for (size_t row = 0; row < picture.height; ++row) {
    for (size_t i = row * picture.width * 3; i < (row * picture.width + part) * 3; ++i) picture.rgb[i] = mosaic.rgb[i];
  }
  WritePicture(picture, folder + "camera.png");
}

struct Mode {
  const char* name;
  KORVEL_CONVERSION_MODE value;
};
constexpr Mode kModes[] = {{"fast", KORVEL_CONVERSION_MODE_Fast},
                           {"high-quality", KORVEL_CONVERSION_MODE_HighQuality},
                           {"classic", KORVEL_CONVERSION_MODE_Classic}};

constexpr PictureSize kSceneSize{1920, 1080};

struct NamedDetail {
  const char* name;
  Detail detail;
};
constexpr NamedDetail kDetails[] = {
    {"lines", {1616, 160, 36, 36, 5}}, {"edge", {1720, 420, 36, 36, 5}}, {"rings", {1210, 184, 36, 36, 5}}};

void DrawModes(const std::string& folder) {
  const Picture scene = ColourPicture(TakeFrame(KORVEL_PIXEL_FORMAT_RGB8, kSceneSize).image, kModes[0].value);
  const Frame frame = TakeFrame(KORVEL_PIXEL_FORMAT_BayerRG8, kSceneSize);
  for (const NamedDetail& detail : kDetails) {
    WritePicture(Crop(scene, detail.detail), folder + "modes-scene-" + detail.name + ".png");
  }
  for (const Mode& mode : kModes) {
    const Picture picture = ColourPicture(frame.image, mode.value);
    for (const NamedDetail& detail : kDetails) {
      WritePicture(Crop(picture, detail.detail), folder + "modes-" + mode.name + "-" + detail.name + ".png");
    }
  }
}

// A part of the scene with fine detail as a frame of its own, so that the detail reaches the frame's border.
class BorderFrame {
 public:
  explicit BorderFrame(uint32_t format) {
    const Frame whole = TakeFrame(format, kSceneSize);
    for (size_t row = 0; row < kSide; ++row) {
      const auto first = whole.bytes.begin() + static_cast<std::ptrdiff_t>((kTop + row) * kSceneSize.width + kLeft);
      bytes_.insert(bytes_.end(), first, first + kSide);
    }
    Require(KORVEL_Image_ConstructFromBuffer(format, bytes_.data(), bytes_.size(), kSide, kSide, image_.Out()),
            "take a part of a frame", kBuildAdvice);
  }

  // The corner at the top left.
  void Draw(KORVEL_CONVERSION_MODE mode, const std::string& path) const {
    WritePicture(Crop(ColourPicture(image_, mode), {0, 0, kCorner, kCorner, kMagnification}), path);
  }

  // The same of the scene.
  static void DrawScene(const std::string& path) {
    const Picture scene = ColourPicture(TakeFrame(KORVEL_PIXEL_FORMAT_RGB8, kSceneSize).image, kModes[0].value);
    WritePicture(Crop(scene, {kLeft, kTop, kCorner, kCorner, kMagnification}), path);
  }

 private:
  static constexpr size_t kLeft = 1728;
  static constexpr size_t kTop = 428;
  static constexpr size_t kSide = 32;
  static constexpr size_t kCorner = 10;
  static constexpr size_t kMagnification = 16;

  std::vector<uint8_t> bytes_;
  Image image_;
};

void DrawBorders(const std::string& folder) {
  BorderFrame::DrawScene(folder + "border-scene.png");
  const BorderFrame red_first(KORVEL_PIXEL_FORMAT_BayerRG8);
  // Without AVX the library copies the border here too.
  if (__builtin_cpu_supports("avx") > 0) red_first.Draw(KORVEL_CONVERSION_MODE_Fast, folder + "border-fast-avx.png");
  red_first.Draw(KORVEL_CONVERSION_MODE_HighQuality, folder + "border-high-quality.png");
  red_first.Draw(KORVEL_CONVERSION_MODE_Classic, folder + "border-classic.png");
  BorderFrame(KORVEL_PIXEL_FORMAT_BayerBG8).Draw(KORVEL_CONVERSION_MODE_Fast, folder + "border-fast.png");
}

// The mean of each colour's samples in the middle of a patch of the chart: red, green, blue.
std::array<double, 3> MeansOfPatch(const std::vector<uint16_t>& samples, const PictureSize& size, const Patch& patch) {
  std::array<double, 3> sums{};
  std::array<double, 3> counts{};
  const auto first_row = static_cast<size_t>(patch.y - patch.height / 4);
  const auto end_row = static_cast<size_t>(patch.y + patch.height / 4);
  const auto first_column = static_cast<size_t>(patch.x - patch.width / 4);
  const auto end_column = static_cast<size_t>(patch.x + patch.width / 4);
  for (size_t row = first_row; row < end_row; ++row) {
    for (size_t column = first_column; column < end_column; ++column) {
      const size_t channel = MosaicChannel(MosaicPhase::kRG, column, row);
      sums[channel] += samples[row * size.width + column];
      counts[channel] += 1;
    }
  }
  return {sums[0] / counts[0], sums[1] / counts[1], sums[2] / counts[2]};
}

// A sensor that sees green best, as most do, and the same frame with gains from a grey patch.
void DrawWhiteBalance(const std::string& folder) {
  constexpr PictureSize kSize{480, 270};
  constexpr double kSensitivity[] = {0.55, 1, 0.7};
  std::array<double, 3> grey{};
  const Frame frame = TakeFrame(KORVEL_PIXEL_FORMAT_BayerRG12, kSize, [&](std::vector<uint16_t>& samples) {
    for (size_t i = 0; i < samples.size(); ++i) {
      const size_t channel = MosaicChannel(MosaicPhase::kRG, i % kSize.width, i / kSize.width);
      samples[i] = static_cast<uint16_t>(samples[i] * kSensitivity[channel]);
    }
    grey = MeansOfPatch(samples, kSize, ChartPatch(Scene(kSize.width, kSize.height), 2, kPatchRows - 1));
  });
  WritePicture(ColourPicture(frame.image, KORVEL_CONVERSION_MODE_HighQuality), folder + "cast.png");

  const auto red = static_cast<float>(grey[1] / grey[0]);
  const auto blue = static_cast<float>(grey[1] / grey[2]);
  Gain gain;
  Require(KORVEL_Gain_Construct(gain.Out()), "make a gain", kBuildAdvice);
  Require(KORVEL_Gain_SetRedGainValue(gain.Get(), &red), "set a gain", kBuildAdvice);
  Require(KORVEL_Gain_SetBlueGainValue(gain.Get(), &blue), "set a gain", kBuildAdvice);
  Require(KORVEL_Gain_ProcessInPlace(gain.Get(), frame.image.Get()), "apply gains", kBuildAdvice);
  WritePicture(ColourPicture(frame.image, KORVEL_CONVERSION_MODE_HighQuality), folder + "cast-balanced.png");
}

}  // namespace

void DrawCameraPictures(const std::string& folder) {
  DrawFrameAndPicture(folder);
  DrawModes(folder);
  DrawBorders(folder);
  DrawWhiteBalance(folder);
}

}  // namespace korvel::tools
