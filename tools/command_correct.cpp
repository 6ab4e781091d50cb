#include "command_correct.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "format_names.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "tool_error.h"
#include "transform.h"

namespace korvel::tools {
namespace {

using Matrix = std::array<float, 9>;

struct CorrectArguments {
  TransformOptions files;
  std::string hot_pixels;
  std::string gain;
  std::string matrix;
  std::string gamma;
};

// Master gain, and the gains of red, green and blue.
std::vector<float> ParseGains(const std::string& text) {
  std::vector<float> gains = ParseList(text).value_or(std::vector<float>{});
  if (gains.size() == 1) gains.resize(4, 1.0F);
  if (gains.size() != 4) {
    throw ToolError("--gain: '" + text + "' is neither one gain nor four",
                    "Give the gain of all colours, such as --gain 1.5, or with those of red, green and blue, such as "
                    "--gain 1.0,1.95,1.0,1.34.");
  }
  return gains;
}

// Nine numbers, or a file with them.
Matrix ParseMatrix(const std::string& text) {
  std::optional<std::vector<float>> factors = ParseList(text);
  if (!factors) {
    std::ifstream file(text);
    const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
      throw ToolError("--matrix: '" + text + "' is neither a list of numbers nor a file that can be read",
                      "Give nine numbers, line by line, such as --matrix=\"1.6 -0.4 -0.2 -0.3 1.5 -0.2 0 -0.5 1.5\".");
    }
    factors = ParseList(content);
  }
  Matrix matrix{};
  if (!factors || factors->size() != matrix.size()) {
    throw ToolError("--matrix: '" + text + "' has not nine numbers",
                    "A matrix has three lines of three factors: the new red from red, green and blue, then green, then "
                    "blue.");
  }
  std::copy(factors->begin(), factors->end(), matrix.begin());
  return matrix;
}

Image CorrectHotPixels(const Image& image, uint32_t level) {
  HotpixelCorrector corrector;
  Image corrected;
  Require(KORVEL_AdaptiveHotpixelCorrector_Construct(corrector.Out()), "make a hot pixel corrector", kMemoryAdvice);
  Require(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(corrector.Get(), level), "set the level of hot pixels",
          "Check --hot-pixels.");
  Require(KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(corrector.Get(), image.Get(), corrected.Out()),
          "correct hot pixels", "Hot pixels are those of a sensor: of mono and Bayer images.");
  return corrected;
}

void ApplyGains(const Image& image, const std::vector<float>& gains) {
  constexpr const char* kAdvice = "Each gain is from 1 to 8; to lower one colour, raise the others.";
  Gain gain;
  Require(KORVEL_Gain_Construct(gain.Out()), "make a gain", kMemoryAdvice);
  Require(KORVEL_Gain_SetMasterGainValue(gain.Get(), &gains[0]), "set the gain", kAdvice);
  Require(KORVEL_Gain_SetRedGainValue(gain.Get(), &gains[1]), "set the gain of red", kAdvice);
  Require(KORVEL_Gain_SetGreenGainValue(gain.Get(), &gains[2]), "set the gain of green", kAdvice);
  Require(KORVEL_Gain_SetBlueGainValue(gain.Get(), &gains[3]), "set the gain of blue", kAdvice);
  Require(KORVEL_Gain_ProcessInPlace(gain.Get(), image.Get()), "apply the gain",
          "Gain is for mono and Bayer images; a matrix (--matrix) changes the colours of others.");
}

// Mono and Bayer images become colour before.
Image ApplyMatrix(Image image, const Matrix& matrix, const PictureWriter& writer) {
  ColorCorrector corrector;
  Require(KORVEL_ColorCorrector_Construct(corrector.Out()), "make a colour corrector", kMemoryAdvice);
  Require(KORVEL_ColorCorrector_SetColorCorrectionFactors(corrector.Get(), matrix.data()), "set the matrix",
          "Check --matrix.");
  const NamedFormat format = FactsOf(image).format;
  if (format.family == PixelFamily::kMono || IsBayer(format)) {
    image = writer.Convert(image, UnpackedFormat(PixelFamily::kBGRa, 8));
  }
  Require(KORVEL_ColorCorrector_ProcessInPlace(corrector.Get(), image.Get()), "apply the matrix",
          "Check the input with 'korvel info'.");
  return image;
}

void ApplyGamma(const Image& image, float gamma) {
  GammaCorrector corrector;
  Require(KORVEL_GammaCorrector_Construct(corrector.Out()), "make a gamma corrector", kMemoryAdvice);
  Require(KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector.Get(), &gamma), "set gamma", "Check --gamma.");
  Require(KORVEL_GammaCorrector_ProcessInPlace(corrector.Get(), image.Get()), "apply gamma",
          "Check the input with 'korvel info'.");
}

void Correct(const CorrectArguments& arguments) {
  if (arguments.hot_pixels.empty() && arguments.gain.empty() && arguments.matrix.empty() && arguments.gamma.empty()) {
    throw CLI::RequiredError("One at least of --hot-pixels, --gain, --matrix and --gamma");
  }
  std::optional<uint32_t> level;
  std::optional<std::vector<float>> gains;
  std::optional<Matrix> matrix;
  std::optional<float> gamma;
  if (!arguments.hot_pixels.empty()) level = ParseHotPixelLevel("--hot-pixels", arguments.hot_pixels);
  if (!arguments.gain.empty()) gains = ParseGains(arguments.gain);
  if (!arguments.matrix.empty()) matrix = ParseMatrix(arguments.matrix);
  if (!arguments.gamma.empty()) gamma = static_cast<float>(ParseDecimal("--gamma", arguments.gamma, 0.3, 3.0));

  Transform(arguments.files, [&](Image image, const PictureWriter& writer) {
    if (level) image = CorrectHotPixels(image, *level);
    if (gains) ApplyGains(image, *gains);
    if (matrix) image = ApplyMatrix(std::move(image), *matrix, writer);
    if (gamma) ApplyGamma(image, *gamma);
    return image;
  });
}

}  // namespace

void AddCorrectCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("correct", "Correct hot pixels, gain, colours and gamma");
  const auto arguments = std::make_shared<CorrectArguments>();
  AddTransformOptions(*command, arguments->files);
  command->add_option("--hot-pixels", arguments->hot_pixels, "Replace hot pixels; 1 finds the fewest, 5 the most")
      ->type_name("1..5");
  command
      ->add_option("--gain", arguments->gain,
                   "Gain of all colours, and those of each, 1 to 8: 1.5 or 1.0,1.95,1.0,1.34")
      ->type_name("ALL[,R,G,B]");
  command
      ->add_option("--matrix", arguments->matrix,
                   "Nine factors, or a file with them: new red from red, green and blue, then green, then blue")
      ->type_name("NUMBERS|FILE");
  command->add_option("--gamma", arguments->gamma, "0.3 to 3; above 1 lightens, below darkens")->type_name("GAMMA");
  command->footer(
      std::string("Corrections are applied in the order above, whatever their order on the command line. Hot "
                  "pixels and gain are for\n"
                  "mono and Bayer images; for a matrix these become BGRa8.\n"
                  "\n") +
      kInputHelp + "\n" + kOutputHelp +
      "\n"
      "Examples:\n"
      "  korvel correct picture.png lighter.png --gamma 2.2\n"
      "  korvel correct defects.png mended.png --hot-pixels 3\n"
      "  korvel correct picture.png vivid.png --matrix=\"1.6 -0.4 -0.2 -0.3 1.5 -0.2 0 -0.5 1.5\"\n"
      "  korvel correct frame.bin out.jpg --format BayerRG12p --size 2592x1536 --gain 1,1.95,1,1.34 --gamma 2.2");
  command->callback([arguments] { Correct(*arguments); });
}

}  // namespace korvel::tools
