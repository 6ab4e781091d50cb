#include "command_convert.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "convert_options.h"
#include "format_names.h"
#include "handles.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "pixel_file.h"

namespace korvel::tools {
namespace {

struct ConvertArguments {
  std::string input;
  std::string output;
  std::string format;
  std::string size;
  std::string skip = "0";
  std::string to;
  std::string mode = "fast";
};

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

void RefuseSameFile(const std::string& input, const std::string& output) {
  std::error_code error;  // set where one of them doesn't exist, and then they aren't the same
  if (std::filesystem::equivalent(input, output, error)) {
    throw ToolError("'" + output + "' is the input itself, which would be overwritten", "Choose another output.");
  }
}

// PNG files hold formats whose channels each take whole bytes.
bool FitsPng(uint32_t format) {
  size_t channels = 0;
  size_t bits = 0;
  return KORVEL_PixelFormat_GetNumChannels(format, &channels) == KORVEL_RETURN_CODE_Success &&
         KORVEL_PixelFormat_GetNumStorageBitsPerPixel(format, &bits) == KORVEL_RETURN_CODE_Success && channels > 0 &&
         bits % (8 * channels) == 0;
}

// "Mono8, BGR8, ...": what a format converts to and can be written as. Empty where the library has no answer.
std::string OutputFormats(const ImageConverter& converter, const NamedFormat& input) {
  size_t count = 0;
  if (KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Get(), input.id, nullptr, &count) !=
      KORVEL_RETURN_CODE_Success) {
    return {};
  }
  std::vector<uint32_t> ids(count);
  if (ids.empty() || KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Get(), input.id, ids.data(),
                                                                          &count) != KORVEL_RETURN_CODE_Success) {
    return {};
  }
  std::string names;
  for (const uint32_t id : ids) {
    if (FitsPng(id)) names += (names.empty() ? "" : ", ") + NameOfFormat(id);
  }
  return names;
}

void Convert(const ConvertArguments& arguments) {
  const NamedFormat input_format = FindFormat(arguments.format, "--format");
  const NamedFormat output_format =
      FindFormat(!arguments.to.empty() ? arguments.to : (IsMono(input_format) ? "Mono8" : "BGRa8"), "--to");
  const PictureSize size = ParseSize(arguments.size);
  const uint64_t skip = ParseSkip(arguments.skip);
  const KORVEL_CONVERSION_MODE mode = ParseMode(arguments.mode);

  const std::string pixels = arguments.size + " pixels of " + std::string(input_format.name);
  const size_t byte_count = ByteCount(input_format, size, pixels);
  ByteCount(output_format, size, arguments.size + " pixels of " + std::string(output_format.name));
  RefuseSameFile(arguments.input, arguments.output);

  const PixelFile file = ReadPixelFile({arguments.input, skip, byte_count, pixels});
  if (file.bytes_left > 0) {
    std::cerr << "korvel: note: '" << arguments.input << "' has " << file.bytes_left
              << " bytes behind the pixels, which are ignored; if it begins with a header, give its size by --skip\n";
  }

  Image input;
  Require(KORVEL_Image_ConstructFromBuffer(input_format.id, file.bytes.get(), byte_count, size.width, size.height,
                                           input.Out()),
          "make an image of " + pixels, "Check --format and --size.");

  ImageConverter converter;
  Require(KORVEL_ImageConverter_Construct(converter.Out()), "make a converter", "Close other programs and try again.");
  Require(KORVEL_ImageConverter_SetConversionMode(converter.Get(), mode), "set the mode", "Check --mode.");

  Image picture;
  const KORVEL_RETURN_CODE converted =
      KORVEL_ImageConverter_Convert(converter.Get(), input.Get(), output_format.id, picture.Out());
  if (converted != KORVEL_RETURN_CODE_Success) {
    const std::string doing = "convert " + std::string(input_format.name) + " to " + std::string(output_format.name);
    ToolError error = LibraryError(converted, doing, "");
    const std::string formats = OutputFormats(converter, input_format);
    throw ToolError(error.what(),
                    formats.empty() ? "Choose another format by --to." : "Choose by --to: " + formats + ".");
  }

  Require(
      KORVEL_ImageWriter_Write(picture.Get(), arguments.output.data(), arguments.output.size()),
      "write '" + arguments.output + "'",
      "The output must end in .png and lie in a folder that exists and can be written to; PNG files hold mono, Bayer "
      "and colour formats that are not packed, such as Mono8, Mono12, RGB8 and BGRa8 (--to).");
  std::cout << "wrote " << arguments.output << ": " << size.width << " x " << size.height << ", " << output_format.name
            << "\n";
}

}  // namespace

void AddConvertCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("convert", "Convert a headerless camera dump to a PNG file");
  const auto arguments = std::make_shared<ConvertArguments>();
  command->add_option("IN", arguments->input, "File with the bare pixels, line by line without padding")
      ->required()
      ->type_name("FILE");
  command->add_option("OUT", arguments->output, "File to write; its name ends in .png")->required()->type_name("FILE");
  command->add_option("--format", arguments->format, "Pixel format of IN; 'korvel formats' lists them")
      ->required()
      ->type_name("FORMAT");
  command->add_option("--size", arguments->size, "Width and height of IN in pixels, such as 2592x1536")
      ->required()
      ->type_name("WxH");
  command->add_option("--skip", arguments->skip, "Bytes in IN before the first pixel (0)")->type_name("BYTES");
  command->add_option("--to", arguments->to, "Pixel format of OUT (BGRa8 for colour and Bayer formats, Mono8 for mono)")
      ->type_name("FORMAT");
  command->add_option("--mode", arguments->mode, "How Bayer images become colour: fast, hq or classic (fast)")
      ->type_name("MODE");
  command->footer(
      "Modes: fast interpolates, hq is sharper at edges, classic is shifted by half a pixel. Where classic does not "
      "exist\n"
      "for a format or size, hq takes its place.\n"
      "\n"
      "Examples:\n"
      "  korvel convert frame.raw frame.png --format BayerRG12p --size 2592x1536\n"
      "  korvel convert frame.raw frame_hq.png --format BayerRG12p --size 2592x1536 --mode hq\n"
      "  korvel convert frame.raw frame_rgb12.png --format BayerRG12p --size 2592x1536 --to RGB12\n"
      "  korvel convert dump.bin grey.png --format Mono10p --size 640x480 --skip 512\n"
      "  korvel convert /dev/stdin grey.png --format Mono8 --size 640x480 < grey.bin");
  command->callback([arguments] { Convert(*arguments); });
}

}  // namespace korvel::tools
