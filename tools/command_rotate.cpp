#include "command_rotate.h"

#include <memory>
#include <string>

#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"
#include "transform.h"

namespace korvel::tools {
namespace {

struct RotateArguments {
  TransformOptions files;
  std::string angle;
};

KORVEL_ROTATION_ANGLE ParseAngle(const std::string& text) {
  if (text == "90") return KORVEL_ROTATION_ANGLE_Degree90;
  if (text == "180") return KORVEL_ROTATION_ANGLE_Degree180;
  if (text == "270") return KORVEL_ROTATION_ANGLE_Degree270;
  throw ToolError("--angle: images are not rotated by '" + text + "' degrees", "The angles are 90, 180 and 270.");
}

void Rotate(const RotateArguments& arguments) {
  const KORVEL_ROTATION_ANGLE angle = ParseAngle(arguments.angle);
  Transform(arguments.files, [angle](const Image& image, const PictureWriter&) {
    ImageTransformer transformer;
    Image rotated;
    Require(KORVEL_ImageTransformer_Construct(transformer.Out()), "make a transformer", kMemoryAdvice);
    Require(KORVEL_ImageTransformer_Rotate(transformer.Get(), image.Get(), rotated.Out(), angle), "rotate the image",
            "Check the input with 'korvel info'.");
    return rotated;
  });
}

}  // namespace

void AddRotateCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("rotate", "Rotate an image by quarter turns");
  const auto arguments = std::make_shared<RotateArguments>();
  AddTransformOptions(*command, arguments->files);
  command->add_option("--angle", arguments->angle, "Degrees counter-clockwise; 270 is a quarter turn clockwise")
      ->required()
      ->type_name("90|180|270");
  command->footer(std::string("Pixels are moved as they are. A Bayer image becomes one of the format that fits its new "
                              "top left corner.\n"
                              "\n") +
                  kInputHelp + "\n" + kOutputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel rotate picture.png turned.png --angle 90\n"
                  "  korvel rotate frame.bin turned.raw --format BayerRG12p --size 2592x1536 --angle 180");
  command->callback([arguments] { Rotate(*arguments); });
}

}  // namespace korvel::tools
