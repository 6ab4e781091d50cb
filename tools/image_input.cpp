#include "image_input.h"

#include <cstddef>
#include <iostream>
#include <limits>
#include <utility>

#include "format_names.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "pixel_file.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

// The library's arithmetic wraps, so that a size beyond all memory could look small: refused here.
size_t ByteCount(const NamedFormat& format, const PictureSize& size, const std::string& pixels) {
  const std::string doing = "compute the size of " + pixels;
  size_t bits = 0;
  Require(KORVEL_PixelFormat_GetNumStorageBitsPerPixel(format.id, &bits), doing, "Check --format.");
  const size_t count = size.width * size.height;  // fits: ParseSize saw to it
  if (bits == 0 || count > (std::numeric_limits<size_t>::max() - 7) / bits) {
    throw ToolError(pixels + " take more bytes than can be counted", "Check --size.");
  }
  size_t byte_count = 0;
  Require(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format.id, count, &byte_count), doing, "Check --size.");
  return byte_count;
}

void LoadBarePixels(const std::string& path, const InputOptions& options, LoadedImage& loaded) {
  if (options.format.empty() && options.size.empty() && EndingOf(path) == ".avi") {
    throw ToolError("'" + path + "' is a video, and only pictures are read",
                    "Take the frames out before, such as by ffmpeg -i " + ShellWord(path) + " frame%04d.png");
  }
  const std::string bare = "'" + path + "' holds bare pixels, for which ";
  if (options.format.empty()) throw CLI::RequiredError(bare + "--format");
  if (options.size.empty()) throw CLI::RequiredError(bare + "--size");

  const NamedFormat format = FindFormat(options.format, "--format");
  const PictureSize size = ParseSize(options.size);
  const uint64_t skip = options.skip.empty() ? 0 : ParseSkip(options.skip);
  const std::string pixels = options.size + " pixels of " + std::string(format.name);
  const size_t byte_count = ByteCount(format, size, pixels);

  PixelFile file = ReadPixelFile({path, skip, byte_count, pixels});
  loaded.pixels = std::move(file.bytes);
  loaded.bytes_left = file.bytes_left;
  Require(KORVEL_Image_ConstructFromBuffer(format.id, loaded.pixels.get(), byte_count, size.width, size.height,
                                           loaded.image.Out()),
          "make an image of " + pixels, "Check --format and --size.");
}

const char* ReadAdvice(KORVEL_RETURN_CODE code) {
  switch (code) {
    case KORVEL_RETURN_CODE_ImageFormatNotSupported:
      return "The library has no pixel format for what this file holds; save it as grey or true colour.";
    case KORVEL_RETURN_CODE_ImageFormatInterpretationError:
      return "Grey files can be taken for Bayer formats of their depth; leave --format out to read what the file "
             "holds.";
    default:
      return "Check that the file exists, can be read and is whole; bare pixels need --format and --size.";
  }
}

// BMP files hold blue first in 24-bit pixels, and in 10-bit ones those that the library wrote. It reads such files as
// they are but calls them RGB, so that red and blue would be exchanged.
uint32_t FormatInBmp(uint32_t format) {
  switch (format) {
    case KORVEL_PIXEL_FORMAT_RGB8:
      return KORVEL_PIXEL_FORMAT_BGR8;
    case KORVEL_PIXEL_FORMAT_RGB10p32:
      return KORVEL_PIXEL_FORMAT_BGR10p32;
    default:
      return format;
  }
}

void LoadFile(const std::string& path, const InputOptions& options, LoadedImage& loaded) {
  Image& image = loaded.type == FileType::kBmp ? loaded.file_image : loaded.image;
  const KORVEL_RETURN_CODE code =
      options.format.empty() ? KORVEL_ImageReader_Read(path.data(), path.size(), image.Out())
                             : KORVEL_ImageReaderRead_ReadAsPixelFormat(
                                   path.data(), path.size(), FindFormat(options.format, "--format").id, image.Out());
  Require(code, "read '" + path + "'", ReadAdvice(code));
  if (loaded.type != FileType::kBmp) return;

  const ImageFacts facts = FactsOf(image);
  Require(KORVEL_Image_ConstructFromBuffer(FormatInBmp(facts.format.id), facts.bytes, facts.byte_count, facts.width,
                                           facts.height, loaded.image.Out()),
          "take the pixels of '" + path + "'", "Check the file.");
}

}  // namespace

void AddInputOptions(CLI::App& command, InputOptions& options) {
  command.add_option("--format", options.format, "Pixel format of IN; 'korvel formats' lists them")
      ->type_name("FORMAT");
  command.add_option("--size", options.size, "Width and height of bare pixels, such as 2592x1536")->type_name("WxH");
  command.add_option("--skip", options.skip, "Bytes before the first of bare pixels (0)")->type_name("BYTES");
}

LoadedImage LoadImage(const std::string& path, const InputOptions& options) {
  LoadedImage loaded;
  loaded.type = options.size.empty() ? TypeOfFile(path) : FileType::kBarePixels;
  if (loaded.type == FileType::kUnknown) loaded.type = FileType::kBarePixels;
  if (loaded.type == FileType::kBarePixels) {
    LoadBarePixels(path, options, loaded);
  } else if (!options.skip.empty()) {
    throw CLI::RequiredError("--skip belongs to bare pixels, for which --size");
  } else {
    LoadFile(path, options, loaded);
  }
  loaded.facts = FactsOf(loaded.image);
  return loaded;
}

void PrintNotes(const std::string& path, const LoadedImage& image) {
  if (image.bytes_left == 0) return;
  std::cerr << "korvel: note: '" << path << "' has " << image.bytes_left
            << " bytes behind the pixels, which are ignored; if it begins with a header, give its size by --skip\n";
}

}  // namespace korvel::tools
