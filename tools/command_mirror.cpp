#include "command_mirror.h"

#include <memory>
#include <string>

#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"
#include "transform.h"

namespace korvel::tools {
namespace {

struct MirrorArguments {
  TransformOptions files;
  bool left_right = false;
  bool up_down = false;
};

void Mirror(const MirrorArguments& arguments) {
  if (!arguments.left_right && !arguments.up_down) throw CLI::RequiredError("--left-right or --up-down, or both,");
  Transform(arguments.files, [&arguments](const Image& image, const PictureWriter&) {
    ImageTransformer transformer;
    Image mirrored;
    Require(KORVEL_ImageTransformer_Construct(transformer.Out()), "make a transformer", kMemoryAdvice);
    const auto mirror = arguments.left_right && arguments.up_down ? KORVEL_ImageTransformer_MirrorUpDownLeftRight
                        : arguments.left_right                    ? KORVEL_ImageTransformer_MirrorLeftRight
                                                                  : KORVEL_ImageTransformer_MirrorUpDown;
    Require(mirror(transformer.Get(), image.Get(), mirrored.Out()), "mirror the image",
            "Check the input with 'korvel info'.");
    return mirrored;
  });
}

}  // namespace

void AddMirrorCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("mirror", "Mirror an image");
  const auto arguments = std::make_shared<MirrorArguments>();
  AddTransformOptions(*command, arguments->files);
  command->add_flag("--left-right", arguments->left_right, "Exchange left and right");
  command->add_flag("--up-down", arguments->up_down, "Exchange up and down");
  command->footer(std::string("Pixels are moved as they are. A Bayer image becomes one of the format that fits its new "
                              "top left corner.\n"
                              "\n") +
                  kInputHelp + "\n" + kOutputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel mirror picture.png mirrored.png --left-right\n"
                  "  korvel mirror frame.bin mirrored.raw --format BayerRG12p --size 2592x1536 --up-down");
  command->callback([arguments] { Mirror(*arguments); });
}

}  // namespace korvel::tools
