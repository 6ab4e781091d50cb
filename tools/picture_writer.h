// Writing images as files that can be looked at, with a conversion where one is asked for or needed.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "format_names.h"
#include "handles.h"
#include "image_facts.h"

namespace korvel::tools {

// As given on the command line; empty where it was not.
struct PictureOptions {
  std::string to;
  std::string mode = "fast";
  std::string quality;
};

void AddPictureOptions(CLI::App& command, PictureOptions& options);

// What the ending of OUT and --to do, for the help of a command.
inline constexpr const char* kOutputHelp =
    "The ending of OUT tells its type: .png, .bmp, .jpg, .jpeg, .raw (the library's own, with any format) or .bin\n"
    "(bare pixels). Without --to, a format that the type doesn't take becomes 8 bits: BGRa8 from Bayer, Mono8 from\n"
    "mono. A Bayer format that it takes stays a mosaic, which looks like a grey picture; --to BGRa8 makes colours.\n";

// Writes any number of images with the same options.
class PictureWriter {
 public:
  explicit PictureWriter(const PictureOptions& options);

  // Returns what was written. Throws ToolError.
  ImageFacts Write(const Image& image, const std::string& path) const;

  // Whether a mosaic that was written to this path deserves a note, because a picture was meant. Prints it.
  void PrintNotes(const std::string& path, const ImageFacts& written) const;

  Image Convert(const Image& image, const NamedFormat& format) const;

 private:
  std::optional<NamedFormat> to_;
  std::optional<uint32_t> quality_;
  ImageConverter converter_;
};

}  // namespace korvel::tools
