// The library's main job, to be seen: a camera's frames become pictures in a frame loop, in the three conversion modes,
// and a video.

#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "format_names.h"
#include "handles.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "pixel_file.h"
#include "recording.h"
#include "simulated_camera.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr size_t kWidth = 1920;
constexpr size_t kHeight = 1080;
constexpr uint32_t kInputFormat = KORVEL_PIXEL_FORMAT_BayerRG12p;
constexpr uint32_t kOutputFormat = KORVEL_PIXEL_FORMAT_BGRa8;
constexpr const char* kBuildAdvice = "The demo and the library should come from one build; build both anew.";

struct Mode {
  KORVEL_CONVERSION_MODE value;
  const char* name;
  // Into the caller's memory, which is how an application shows frames. Classic exists there only for 8-bit input.
  bool to_buffer;
};

constexpr Mode kModes[] = {
    {KORVEL_CONVERSION_MODE_Fast, "fast", true},
    {KORVEL_CONVERSION_MODE_HighQuality, "high_quality", true},
    {KORVEL_CONVERSION_MODE_Classic, "classic", false},
};

// One mode's frame loop with all that it keeps from frame to frame.
class FrameLoop {
 public:
  FrameLoop(const Mode& mode, std::vector<uint8_t>& frame) : mode_(mode), frame_(frame) {
    Require(KORVEL_ImageConverter_Construct(converter_.Out()), "make a converter", kBuildAdvice);
    Require(KORVEL_ImageConverter_SetConversionMode(converter_.Get(), mode.value), "set the mode", kBuildAdvice);
    Require(
        KORVEL_ImageConverter_PreAllocateConversion(converter_.Get(), kInputFormat, kOutputFormat, kWidth, kHeight, 1),
        "take memory for the frame loop", kMemoryAdvice);
    size_t display_size = 0;
    Require(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(kOutputFormat, kWidth * kHeight, &display_size),
            "compute the size of a picture", kBuildAdvice);
    display_.resize(display_size);
  }

  // What an application does with every frame that its camera delivers. The picture stays until the next one.
  void Convert() {
    picture_.Reset();
    Image input;
    Require(KORVEL_Image_ConstructFromBuffer(kInputFormat, frame_.data(), frame_.size(), kWidth, kHeight, input.Out()),
            "take a frame", kBuildAdvice);
    const KORVEL_RETURN_CODE code =
        mode_.to_buffer ? KORVEL_ImageConverter_ConvertToBuffer(converter_.Get(), input.Get(), kOutputFormat,
                                                                display_.data(), display_.size(), picture_.Out())
                        : KORVEL_ImageConverter_Convert(converter_.Get(), input.Get(), kOutputFormat, picture_.Out());
    Require(code, "convert a frame", kBuildAdvice);
  }

  double FramesPerSecond(double seconds) {
    using Clock = std::chrono::steady_clock;
    Convert();  // the first frame warms up caches and memory, and isn't counted
    const Clock::time_point start = Clock::now();
    size_t frames = 0;
    std::chrono::duration<double> elapsed{};
    do {
      Convert();
      ++frames;
      elapsed = Clock::now() - start;
    } while (elapsed.count() < seconds);
    return static_cast<double>(frames) / elapsed.count();
  }

  void Write(const std::string& path) const {
    Require(KORVEL_ImageWriter_Write(picture_.Get(), path.data(), path.size()), "write '" + path + "'",
            "Check the space and the permissions of the output folder.");
  }

 private:
  Mode mode_;
  std::vector<uint8_t>& frame_;
  std::vector<uint8_t> display_;
  // In this order: what a picture refers to outlives it.
  ImageConverter converter_;
  Image picture_;
};

// What an application does that keeps what its camera delivers. The file of an earlier run is replaced.
void Record(CameraStream& camera, const std::string& path, double seconds) {
  using Clock = std::chrono::steady_clock;
  constexpr uint32_t kFramesPerSecond = 25;
  constexpr std::chrono::microseconds kFrameTime(1'000'000 / kFramesPerSecond);
  const auto frames = static_cast<uint64_t>(std::ceil(seconds * kFramesPerSecond));

  std::error_code none_there;
  std::filesystem::remove(path, none_there);
  Recording recording({.path = path, .frames_per_second = kFramesPerSecond});
  const Clock::time_point start = Clock::now();
  for (uint64_t frame = 0; frame < frames; ++frame) {
    const Image& image = camera.Frame(frame);
    std::this_thread::sleep_until(start + frame * kFrameTime);
    recording.Append(image);
  }
  while (recording.Counts().queued > 0) recording.WaitForWorker();
  const RecordingCounts counts = recording.Counts();
  recording.Close();
  std::cout << "\nThe same camera recorded at " << kFramesPerSecond << " frames per second: " << counts.written
            << " frames written, " << counts.dropped << " dropped\n";
}

void Run(const std::filesystem::path& folder, double seconds, double video_seconds) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    throw ToolError("cannot make the folder '" + folder.string() + "': " + error.message(),
                    "Name a folder that you can write to.");
  }

  const SimulatedCamera camera({.format = FormatOfId(kInputFormat), .size = {.width = kWidth, .height = kHeight}});
  std::vector<uint8_t> frame = camera.Pack(camera.Expose(0));
  const std::filesystem::path frame_path = folder / "frame_BayerRG12p_1920x1080.bin";
  WriteBytes(frame_path.string(), frame.data(), frame.size());
  std::cout << "A test frame of " << kWidth << " x " << kHeight << " pixels in BayerRG12p, converted to BGRa8\n\n";

  std::vector<std::string> written{frame_path.string()};
  for (const Mode& mode : kModes) {
    FrameLoop loop(mode, frame);
    const double rate = loop.FramesPerSecond(seconds);
    std::printf("mode %u  %-13s %8.1f frames per second\n", mode.value, mode.name, rate);
    std::fflush(stdout);
    const std::string picture_path = (folder / (std::string(mode.name) + ".png")).string();
    loop.Write(picture_path);
    written.push_back(picture_path);
  }

  const std::string video_path = (folder / "camera.avi").string();
  CameraStream stream(camera);
  Record(stream, video_path, video_seconds);
  written.push_back(video_path);

  std::cout << "\nFrame, pictures and video:\n";
  for (const std::string& path : written) std::cout << "  " << path << "\n";
}

}  // namespace
}  // namespace korvel::tools

int main(int argc, char** argv) {
  try {
    std::string folder = ".";
    double seconds = 2;
    double video_seconds = 5;
    CLI::App app("Converts a generated camera frame in a loop, prints the speed, writes the pictures and a video.",
                 "korvel-demo");
    app.add_option("FOLDER", folder, "Where to write; it is made if it does not exist")->required();
    app.add_option("--seconds", seconds, "How long to measure each mode (2)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0));
    app.add_option("--video-seconds", video_seconds, "How long the video is (5)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0));
    CLI11_PARSE(app, argc, argv);
    korvel::tools::Run(folder, seconds, video_seconds);
    return 0;
  } catch (const korvel::tools::ToolError& error) {
    std::cerr << "korvel-demo: " << error.what() << "\n  " << error.Advice() << "\n";
  } catch (const std::exception& error) {
    std::cerr << "korvel-demo: " << error.what() << "\n";
  }
  return 1;
}
