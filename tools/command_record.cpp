#include "command_record.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "file_type.h"
#include "format_names.h"
#include "handles.h"
#include "image_input.h"
#include "image_output.h"
#include "options.h"
#include "progress_bar.h"
#include "recording.h"
#include "recording_series.h"
#include "simulated_camera.h"
#include "stop_signals.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

struct RecordArguments {
  std::string output;
  std::vector<std::string> inputs;
  InputOptions reading;
  std::string fps = "25";
  std::string quality = "75";
  std::string frames;
  std::string queue;
  bool as_fast_as_possible = false;
  bool split = false;
  std::string split_at;
  bool progress_json = false;
};

void RequireVideoSize(size_t width, size_t height, const std::string& whose) {
  constexpr size_t kLeast = 16;
  constexpr size_t kMost = 65496;  // the encoder's, in whole steps
  constexpr size_t kWidthStep = 8;
  const size_t near_width = std::clamp(width / kWidthStep * kWidthStep, kLeast, kMost);
  const size_t near_height = std::clamp(height, kLeast, kMost);
  if (width == near_width && height == near_height) return;
  throw ToolError(whose + ": a video can't be " + std::to_string(width) + " x " + std::to_string(height) + " pixels",
                  "Its width is a multiple of 8 and, as its height, 16 or more; " + std::to_string(near_width) + "x" +
                      std::to_string(near_height) + " would do.");
}

// The image of the frame with this number, from 0 on. It stays until the next one.
using Frames = std::function<const Image&(uint64_t number)>;

Frames CameraFrames(const InputOptions& options) {
  if (!options.skip.empty()) throw CLI::RequiredError("--skip belongs to files of bare pixels; IN");
  CameraSettings settings;
  settings.format = FindFormat(options.format.empty() ? "BayerRG8" : options.format, "--format");
  settings.size = ParseSensorSize(options.size.empty() ? "1280x720" : options.size);
  RequireVideoSize(settings.size.width, settings.size.height, "--size");
  return [stream = std::make_shared<CameraStream>(SimulatedCamera(settings))](uint64_t number) -> const Image& {
    return stream->Frame(number);
  };
}

// The files in turn.
class FileFrames {
 public:
  FileFrames(std::vector<std::string> paths, InputOptions options, const ProgressBar& bar)
      : paths_(std::move(paths)), options_(std::move(options)), bar_(bar) {}

  const Image& Frame(uint64_t number) {
    const std::string& path = paths_[number % paths_.size()];
    loaded_ = LoadImage(path, options_);
    if (number < paths_.size()) {
      if (loaded_->bytes_left > 0) bar_.Clear();
      PrintNotes(path, *loaded_);
    }
    if (number == 0) {
      RequireVideoSize(loaded_->facts.width, loaded_->facts.height, "'" + path + "'");
      width_ = loaded_->facts.width;
      height_ = loaded_->facts.height;
    } else if (loaded_->facts.width != width_ || loaded_->facts.height != height_) {
      throw ToolError("'" + path + "' has another size than '" + paths_.front() +
                          "': " + std::to_string(loaded_->facts.width) + " x " + std::to_string(loaded_->facts.height) +
                          ", not " + std::to_string(width_) + " x " + std::to_string(height_),
                      "All frames of a video have one size; leave the file out, or record it to a video of its own.");
    }
    return loaded_->image;
  }

 private:
  std::vector<std::string> paths_;
  InputOptions options_;
  const ProgressBar& bar_;
  std::optional<LoadedImage> loaded_;
  size_t width_ = 0;
  size_t height_ = 0;
};

// When frames are appended: as a camera delivers them, or as soon as the queue has room.
struct Pace {
  bool in_real_time = false;
  uint32_t frames_per_second = 0;

  Seconds Due(uint64_t frames) const { return Seconds(static_cast<double>(frames) / frames_per_second); }
};

// How far the recording is: for people on a terminal, or for programs.
class Progress {
 public:
  Progress(const ProgressBar& bar, bool for_programs) : bar_(bar), for_programs_(for_programs) {}

  void Show(const RecordingSeries& recording) const {
    if (!for_programs_ && !bar_.IsShown()) return;
    const RecordingCounts counts = recording.Counts();
    if (for_programs_) {
      const nlohmann::ordered_json line = {{"files", recording.Paths().size()},
                                           {"appended", counts.appended},
                                           {"written", counts.written},
                                           {"queued", counts.queued},
                                           {"dropped", counts.dropped}};
      std::cout << line << std::endl;
    } else {
      bar_.Show(counts.appended, ": " + std::to_string(counts.written) + " written, " + std::to_string(counts.queued) +
                                     " queued, " + std::to_string(counts.dropped) + " dropped");
    }
  }

 private:
  const ProgressBar& bar_;
  bool for_programs_;
};

struct Outcome {
  RecordingCounts counts;
  Seconds took{};    // from the first frame to the last one's end
  Seconds behind{};  // what the last frame came too late
  bool is_full = false;
};

// Appends frames until all are, the user ends it, or the file is full; then waits for what is queued.
Outcome RecordFrames(RecordingSeries& recording, const Frames& frames, uint64_t count, const Pace& pace,
                     const StopSignals& stop, const Progress& progress) {
  Outcome outcome;
  const Clock::time_point start = Clock::now();
  for (uint64_t number = 0; number < count && !outcome.is_full; ++number) {
    const Image& frame = frames(number);
    const auto due = pace.in_real_time ? start + std::chrono::duration_cast<Clock::duration>(pace.Due(number)) : start;
    if (stop.ComeUntil(due) && number > 0) break;
    // Who may wait knows afterwards what the frames that are queued really take.
    while (!pace.in_real_time && (!recording.HasRoom() || (recording.IsFileFull() && recording.HasQueued()))) {
      recording.WaitForWorker();
      progress.Show(recording);
    }
    if (recording.IsFileFull()) recording.StartNextFile();
    outcome.behind = Clock::now() - due;
    outcome.is_full = !recording.Append(frame);
    progress.Show(recording);
  }
  for (outcome.counts = recording.Counts(); outcome.counts.queued > 0; outcome.counts = recording.Counts()) {
    recording.WaitForWorker();
    progress.Show(recording);
  }
  outcome.took = Clock::now() - start;
  return outcome;
}

uintmax_t FileSize(const std::string& path) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  if (error) throw ToolError("cannot look at '" + path + "': " + error.message(), "Check the output folder.");
  return size;
}

void PrintSummary(const RecordingSeries& recording, const Outcome& outcome, const Pace& pace) {
  const RecordingCounts& counts = outcome.counts;
  const std::vector<std::string>& paths = recording.Paths();
  uintmax_t size = 0;
  for (const std::string& path : paths) size += FileSize(path);
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << "  frames     " << counts.appended << " appended, " << counts.written
       << " written, " << counts.dropped << " dropped\n"
       << "  took       " << outcome.took.count() << " s\n"
       << "  file size  " << size << " bytes"
       << (paths.size() == 1 ? "" : " in " + std::to_string(paths.size()) + " files") << "\n"
       << "  play time  " << pace.Due(counts.written).count() << " s at " << pace.frames_per_second << " fps\n";
  for (const std::string& path : paths) PrintWritten(path, recording.Facts());
  std::cout << text.str() << std::flush;
}

// What the user should know of a recording that isn't what it was meant to be. Throws ToolError where frames are
// missing that nobody had to miss.
void PrintNotes(const std::string& path, const Outcome& outcome, const Pace& pace) {
  const RecordingCounts& counts = outcome.counts;
  if (counts.refused > 0) {
    std::cerr << "korvel: note: " << counts.refused << " of " << counts.appended
              << " frames found the queue full and were dropped; a larger --queue, a smaller --size, a lower --fps or "
                 "--quality helps\n";
  }
  const Seconds due = pace.Due(counts.appended);
  if (pace.in_real_time && outcome.behind > std::max(Seconds(0.25), 0.1 * due)) {
    std::cerr << "korvel: note: the simulated camera was too slow for " << pace.frames_per_second
              << " frames per second; choose a smaller --size or a lower --fps\n";
  }
  if (outcome.is_full) {
    throw ToolError("'" + path + "' is as long as an AVI file gets, and took no frames after these",
                    "Let --split record the rest to other files, or choose a lower --quality.");
  }
  if (counts.dropped > counts.refused) {
    throw ToolError(
        std::to_string(counts.dropped - counts.refused) + " of " + std::to_string(counts.appended) +
            " frames could not be compressed or written to '" + path + "'",
        "Check the space and the permissions of the output folder, or choose a lower --quality: frames that "
        "compression makes larger are dropped too. The other frames are in the file.");
  }
}

uint64_t FrameCount(const RecordArguments& arguments, uint32_t frames_per_second) {
  constexpr uint64_t kMostFrames = 100'000'000;
  constexpr uint64_t kSeconds = 5;
  if (!arguments.frames.empty()) return ParseWhole("--frames", arguments.frames, 1, kMostFrames);
  return arguments.inputs.empty() ? kSeconds * frames_per_second : arguments.inputs.size();
}

void Record(const RecordArguments& arguments) {
  if (EndingOf(arguments.output) != ".avi") {
    throw ToolError("'" + arguments.output + "' is no name for a video", "Videos are AVI files; let it end in .avi.");
  }
  std::error_code unreachable;  // of which opening the file tells
  if (std::filesystem::exists(arguments.output, unreachable)) {
    throw ToolError("'" + arguments.output + "' is there already",
                    "A video never replaces a file; remove it, or choose another name.");
  }
  RecordingOptions options{.path = arguments.output};
  options.frames_per_second = static_cast<uint32_t>(ParseWhole("--fps", arguments.fps, 1, 1000));
  options.quality = static_cast<int32_t>(ParseWhole("--quality", arguments.quality, 1, 100));
  if (!arguments.queue.empty()) options.queue = static_cast<uint32_t>(ParseWhole("--queue", arguments.queue, 1, 1000));
  const uint64_t count = FrameCount(arguments, options.frames_per_second);
  const bool from_camera = arguments.inputs.empty();
  const Pace pace{.in_real_time = from_camera && !arguments.as_fast_as_possible,
                  .frames_per_second = options.frames_per_second};

  std::optional<uint64_t> file_size;
  if (!arguments.split_at.empty()) {
    file_size = ParseByteCount("--split-at", arguments.split_at);
  } else if (arguments.split) {
    file_size = std::numeric_limits<uint64_t>::max();
  }

  const ProgressBar bar("recording", arguments.progress_json ? 0 : count);
  FileFrames files(arguments.inputs, arguments.reading, bar);
  const Frames frames = from_camera ? CameraFrames(arguments.reading)
                                    : [&](uint64_t number) -> const Image& { return files.Frame(number); };
  const StopSignals stop;
  RecordingSeries recording(options, file_size);
  Outcome outcome;
  try {
    outcome = RecordFrames(recording, frames, count, pace, stop, Progress(bar, arguments.progress_json));
  } catch (...) {
    // Files are not lost: once the input is mended, all can be recorded under this name. What a camera saw would be.
    if (!from_camera || recording.Counts().written == 0) recording.Remove();
    throw;
  }
  recording.Close();
  bar.Clear();
  if (!arguments.progress_json) PrintSummary(recording, outcome, pace);
  PrintNotes(options.path, outcome, pace);
}

}  // namespace

void AddRecordCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("record", "Record a simulated camera or image files to an AVI video");
  const auto arguments = std::make_shared<RecordArguments>();
  command->add_option("OUT", arguments->output, "Video to write, which must not exist; ends in .avi")
      ->required()
      ->type_name("FILE");
  command->add_option("IN", arguments->inputs, "Files to record in this order; without any, a camera is simulated")
      ->type_name("FILES");
  command
      ->add_option("--format", arguments->reading.format,
                   "Pixel format of the camera (BayerRG8) or of IN; 'korvel formats' lists them")
      ->type_name("FORMAT");
  command->add_option("--size", arguments->reading.size, "Width and height of the camera (1280x720) or of bare pixels")
      ->type_name("WxH");
  command->add_option("--skip", arguments->reading.skip, "Bytes before the first of bare pixels (0)")
      ->type_name("BYTES");
  command->add_option("--fps", arguments->fps, "Frames per second, in whole numbers (25)")->type_name("1..1000");
  command->add_option("--quality", arguments->quality, "1 smallest to 100 best (75)")->type_name("1..100");
  command->add_option("--frames", arguments->frames, "How many frames (5 seconds of the camera; each file once)")
      ->type_name("N");
  command
      ->add_option("--queue", arguments->queue,
                   "How many frames may wait for the encoder (as many as fit 200 MiB with four bytes a pixel)")
      ->type_name("1..1000");
  command->add_flag("--as-fast-as-possible", arguments->as_fast_as_possible,
                    "Let the camera wait for the encoder, instead of delivering --fps frames each second");
  command->add_flag("--split", arguments->split,
                    "Go on in OUT-0002 and so on, when a file is as long as an AVI file gets");
  command->add_option("--split-at", arguments->split_at, "Go on in another file before one gets larger than this")
      ->type_name("SIZE");
  command->add_flag("--progress-json", arguments->progress_json,
                    "Print how far the recording is after each frame, as a line of JSON, and no summary");
  command->footer(
      std::string(
          "The camera looks at the scene of 'korvel simulate' and turns slowly. It delivers frames in real time, and "
          "does\n"
          "not wait: a frame that finds the queue full is dropped, which the summary tells. Files are recorded as fast "
          "as\n"
          "they can be read, and none is dropped; with more --frames than files they are taken in turn, again and "
          "again.\n"
          "\n"
          "Videos hold Mono8, RGB8, BGR8, RGBa8 or BGRa8. Other formats are converted to the like with 8 bits, mosaics "
          "to\n"
          "BGRa8. The first file decides; all have one size, whose width is a multiple of 8. Ctrl-C ends a recording "
          "early;\n"
          "the video is whole up to there. 'korvel repair-avi' mends the video of a recording that was killed.\n"
          "\n"
          "No AVI file gets longer than 4 GiB. With --split the recording goes on in OUT-0002.avi, OUT-0003.avi and so "
          "on,\n"
          "and no frame is lost in between; --split-at makes shorter files, of one frame at least. None of these files "
          "may\n"
          "exist. The length of frames that are still to be compressed is guessed from those before; a file gets "
          "larger "
          "than\n"
          "SIZE if they suddenly take more than twice as much, but never too long.\n"
          "\n") +
      kInputHelp +
      "\n"
      "Examples:\n"
      "  korvel record camera.avi\n"
      "  korvel record camera12.avi --format BayerRG12p --size 1920x1080 --fps 30 --frames 90 --quality 90\n"
      "  korvel record quick.avi --size 640x480 --frames 1000 --as-fast-as-possible\n"
      "  korvel record parts.avi --size 640x480 --frames 1000 --as-fast-as-possible --split-at 10M\n"
      "  korvel record pictures.avi --fps 2 picture.png photo.jpg\n"
      "  korvel record still.avi --frames 250 picture.png\n"
      "  korvel record dump.avi --format BayerRG12p --size 2592x1536 frame.bin");
  command->callback([arguments] { Record(*arguments); });
}

}  // namespace korvel::tools
