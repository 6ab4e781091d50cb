#include "command_bin.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"
#include "transform.h"

namespace korvel::tools {
namespace {

struct BinArguments {
  TransformOptions files;
  std::string block;
  bool sum = false;
};

// One side of a block.
uint8_t ParseSide(const std::string& text, const std::string& block) {
  if (text.size() == 1 && text[0] >= '1' && text[0] <= '8') return static_cast<uint8_t>(text[0] - '0');
  throw ToolError("--block: '" + block + "' is not a size of blocks",
                  "Give the sides, each from 1 to 8 pixels, with an x between them, such as --block 2x2.");
}

void Bin(const BinArguments& arguments) {
  const size_t separator = std::min(arguments.block.find('x'), arguments.block.size());
  const uint8_t width = ParseSide(arguments.block.substr(0, separator), arguments.block);
  const uint8_t height =
      separator == arguments.block.size() ? width : ParseSide(arguments.block.substr(separator + 1), arguments.block);
  const KORVEL_BINNING_MODE mode = arguments.sum ? KORVEL_BINNING_MODE_Sum : KORVEL_BINNING_MODE_Average;

  Transform(arguments.files, [&](const Image& image, const PictureWriter&) {
    Binning binning;
    Image binned;
    Require(KORVEL_Binning_Construct(binning.Out()), "make a binning object", kMemoryAdvice);
    Require(KORVEL_Binning_SetBinningX(binning.Get(), &width), "set the width of blocks", "Check --block.");
    Require(KORVEL_Binning_SetBinningY(binning.Get(), &height), "set the height of blocks", "Check --block.");
    Require(KORVEL_Binning_SetBinningMode(binning.Get(), &mode), "set the mode", "Check --sum.");
    Require(KORVEL_Binning_Process(binning.Get(), image.Get(), binned.Out()), "bin the image",
            "Choose smaller blocks, or a larger image.");
    return binned;
  });
}

}  // namespace

void AddBinCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("bin", "Make one pixel of each block of pixels");
  const auto arguments = std::make_shared<BinArguments>();
  AddTransformOptions(*command, arguments->files);
  command->add_option("--block", arguments->block, "Width and height of a block, 1 to 8 pixels each, such as 2x2")
      ->required()
      ->type_name("WxH");
  command->add_flag("--sum", arguments->sum,
                    "Add the pixels up instead of taking their mean: less noise, and brighter");
  command->footer(std::string("On Bayer images the pixels of a block are those of one colour, so that the result is a "
                              "Bayer image again. Width and\n"
                              "height of the result are rounded down to multiples of 4 and 2, of Bayer images to 8 and "
                              "4.\n"
                              "\n") +
                  kInputHelp + "\n" + kOutputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel bin picture.png smaller.png --block 2x2\n"
                  "  korvel bin frame.bin binned.png --format BayerRG12p --size 2592x1536 --block 4x4 --sum --to RGB8");
  command->callback([arguments] { Bin(*arguments); });
}

}  // namespace korvel::tools
