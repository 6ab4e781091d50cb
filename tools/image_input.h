// Reading images for all commands that take one: the files that the library reads, and bare pixels.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <string>

#include "file_type.h"
#include "handles.h"
#include "image_facts.h"

namespace korvel::tools {

// What files don't tell of themselves, as given on the command line; empty where it was not.
struct InputOptions {
  std::string format;
  std::string size;
  std::string skip;
};

void AddInputOptions(CLI::App& command, InputOptions& options);

// How the options make bare pixels of a file, for the help of a command.
inline constexpr const char* kInputHelp =
    "Files whose names end in .png, .bmp, .jpg, .jpeg or .raw tell their format and size. All others hold bare "
    "pixels,\n"
    "line by line without padding, and need --format and --size; with --size, so does a file of any name. --format\n"
    "without --size takes a file's pixels for another format, such as a grey PNG file for BayerRG8.\n";

struct LoadedImage {
  FileType type = FileType::kUnknown;
  ImageFacts facts;
  uint64_t bytes_left = 0;  // of a file of bare pixels, those behind the pixels

  // In this order: what an image lies over outlives it.
  std::unique_ptr<uint8_t[]> pixels;
  Image file_image;
  Image image;
};

// Throws ToolError, or CLI::RequiredError where bare pixels lack an option.
LoadedImage LoadImage(const std::string& path, const InputOptions& options);

// Prints what a user should know of a file that was read all the same.
void PrintNotes(const std::string& path, const LoadedImage& image);

}  // namespace korvel::tools
