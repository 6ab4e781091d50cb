#include "command_repair_avi.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

#include "file_type.h"
#include "options.h"
#include "progress_bar.h"
#include "stop_signals.h"
#include "tool_error.h"
#include "video/avi_repair.h"

namespace korvel::tools {
namespace {

using libvideo::AviRepair;
using Outcome = AviRepair::Outcome;

constexpr uint64_t kMicroSeconds = 1'000'000;

struct RepairArguments {
  std::string input;
  std::string output;
  std::string fps;
};

void RefuseExisting(const std::string& path, const std::string& advice) {
  std::error_code unreachable;  // of which writing the file tells
  if (std::filesystem::exists(path, unreachable)) throw ToolError("'" + path + "' is there already", advice);
}

// The file while it is written, which goes at the end of the scope unless it gets its name.
class UnfinishedOutput {
 public:
  explicit UnfinishedOutput(std::string path) : path_(std::move(path)), unfinished_(path_ + ".part") {
    RefuseExisting(path_, "A video never replaces a file; remove it, or choose another name.");
    RefuseExisting(unfinished_, "A repair was ended before; remove the file.");
  }
  UnfinishedOutput(const UnfinishedOutput&) = delete;
  UnfinishedOutput& operator=(const UnfinishedOutput&) = delete;
  ~UnfinishedOutput() {
    std::error_code error;
    std::filesystem::remove(unfinished_, error);
  }

  const std::string& Path() const { return unfinished_; }

  void Keep() const {
    std::error_code error;
    std::filesystem::rename(unfinished_, path_, error);
    if (error) {
      throw ToolError("cannot name the video '" + path_ + "': " + error.message(), "Check the output folder.");
    }
  }

 private:
  std::string path_;
  std::string unfinished_;
};

[[noreturn]] void Throw(const RepairArguments& arguments, Outcome outcome) {
  switch (outcome) {
    case Outcome::CannotRead:
      throw ToolError("cannot read '" + arguments.input + "'", "Check that it is a file, and its permissions.");
    case Outcome::NoFrame:
      throw ToolError("'" + arguments.input + "' holds no whole frame of a video",
                      "Nothing of it can be brought back; a recording that died at once looks like this.");
    case Outcome::NoFrameTime:
      throw ToolError("the headers of '" + arguments.input + "' are damaged and don't tell the frames per second",
                      "Give them, such as --fps 25.");
    case Outcome::Stopped:
      throw ToolError("ended before '" + arguments.output + "' was whole", "It was not written.");
    default:
      throw ToolError("cannot write '" + arguments.output + "'",
                      "Check the output folder, its permissions and the space there, of which 5 MiB stay free.");
  }
}

void PrintSummary(const RepairArguments& arguments, const AviRepair& repair) {
  std::ostringstream text;
  const double frame_seconds = static_cast<double>(repair.frameTimeUs) / static_cast<double>(kMicroSeconds);
  text << "wrote " << arguments.output << ": " << repair.width << " x " << repair.height << "\n"
       << "  frames     " << repair.frames << " recovered\n"
       << "  play time  " << std::fixed << std::setprecision(2) << static_cast<double>(repair.frames) * frame_seconds
       << " s at " << std::defaultfloat << std::setprecision(4) << 1 / frame_seconds << " fps\n";
  if (repair.bytesCutOff > 0) {
    text << "  left out   " << repair.bytesCutOff << " bytes of the last frame, whose rest was never written\n";
  }
  if (repair.bytesSkipped > 0) {
    text << "  left out   " << repair.bytesSkipped << " bytes in " << repair.placesSkipped
         << (repair.placesSkipped == 1 ? " place" : " places") << " without a whole picture, the first at byte "
         << repair.firstSkipped << "\n";
  }
  if (repair.bytesTooMany > 0) {
    text << "  left out   the last " << repair.bytesTooMany << " bytes, since no AVI file holds more than 4 GiB\n";
  }
  std::cout << text.str() << std::flush;
}

void Repair(const RepairArguments& arguments) {
  if (EndingOf(arguments.output) != ".avi") {
    throw ToolError("'" + arguments.output + "' is no name for a video", "Videos are AVI files; let it end in .avi.");
  }
  RefuseSameFile(arguments.input, arguments.output);
  const uint64_t frame_time_us =
      arguments.fps.empty() ? 0 : kMicroSeconds / ParseWhole("--fps", arguments.fps, 1, 1000);
  const UnfinishedOutput output(arguments.output);

  const ProgressBar bar("repairing", 100);
  const StopSignals stop;
  const auto goes_on = [&](uint64_t done, uint64_t all) {
    bar.Show(static_cast<size_t>(done * 100 / all), " %");
    return !stop.ComeUntil(std::chrono::steady_clock::now());
  };
  const AviRepair repair = libvideo::RepairAvi(arguments.input, output.Path(), frame_time_us, goes_on);
  bar.Clear();
  switch (repair.outcome) {
    case Outcome::Repaired:
      output.Keep();
      PrintSummary(arguments, repair);
      break;
    case Outcome::Whole:
      std::cout << "'" << arguments.input << "' is whole: " << repair.frames << " frames, all in its index; "
                << arguments.output << " was not written\n";
      break;
    default:
      Throw(arguments, repair.outcome);
  }
}

}  // namespace

void AddRepairAviCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("repair-avi", "Make a whole video of a recording whose program died");
  const auto arguments = std::make_shared<RepairArguments>();
  command->add_option("IN", arguments->input, "Recording that was never closed; it stays as it is")
      ->required()
      ->type_name("FILE");
  command->add_option("OUT", arguments->output, "Video to write, which must not exist; ends in .avi")
      ->required()
      ->type_name("FILE");
  command
      ->add_option("--fps", arguments->fps,
                   "Frames per second, in whole numbers, instead of what the headers of IN tell")
      ->type_name("1..1000");
  command->footer(
      "A recording gets its frame counts and its index when it is closed; where the program was killed before, "
      "players\n"
      "may find nothing in it. Its frames are there: this command copies them to OUT, byte by byte, and writes "
      "headers\n"
      "and index anew. A frame that was only half written is left out, and so are places where the file is damaged\n"
      "otherwise; what was left out is told, and why. OUT gets its name when it is whole, and is OUT.part until then.\n"
      "\n"
      "A video that is whole already is told so, and OUT is not written; that is no failure. Meant for recordings of\n"
      "'korvel record' and of libkorvel: of other videos it finds the first stream's pictures only, and no sound.\n"
      "\n"
      "Frames that still waited for the encoder when the program died are in no file. When the machine died, what the\n"
      "system had not brought to the disk is lost too.\n"
      "\n"
      "Examples:\n"
      "  korvel repair-avi killed.avi repaired.avi\n"
      "  korvel repair-avi damaged.avi mended.avi --fps 30");
  command->callback([arguments] { Repair(*arguments); });
}

}  // namespace korvel::tools
