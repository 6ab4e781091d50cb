#include "picture_writer.h"

#include <cstddef>
#include <iostream>
#include <vector>

#include "file_type.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

// "Mono8, BGR8, ...": what a format converts to. Empty where the library has no answer.
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
  for (const uint32_t id : ids) names += (names.empty() ? "" : ", ") + NameOfFormat(id);
  return names;
}

}  // namespace

void AddPictureOptions(CLI::App& command, PictureOptions& options) {
  command.add_option("--to", options.to, "Pixel format of OUT (that of the image where the file type takes it)")
      ->type_name("FORMAT");
  command.add_option("--mode", options.mode, "How Bayer images become colour (fast)")->type_name("fast|hq|classic");
  command
      .add_option("--quality", options.quality,
                  "JPEG: 0 smallest to 100 best (75); PNG: 10 smallest to 100 fastest, the same picture (100)")
      ->type_name("0..100");
}

PictureWriter::PictureWriter(const PictureOptions& options) {
  if (!options.to.empty()) to_ = FindFormat(options.to, "--to");
  if (!options.quality.empty()) quality_ = static_cast<uint32_t>(ParseWhole("--quality", options.quality, 0, 100));
  Require(KORVEL_ImageConverter_Construct(converter_.Out()), "make a converter", kMemoryAdvice);
  Require(KORVEL_ImageConverter_SetConversionMode(converter_.Get(), ParseMode(options.mode)), "set the mode",
          "Check --mode.");
}

ImageFacts PictureWriter::Write(const Image& image, const std::string& path) const {
  const ImageFacts facts = FactsOf(image);
  if (!to_) {
    const KORVEL_RETURN_CODE code = TryWriteImage(image, path, quality_);
    if (code == KORVEL_RETURN_CODE_Success) return facts;
    if (code != KORVEL_RETURN_CODE_ImageFormatNotSupported) throw WriteError(code, path);
  }
  const Image picture = Convert(image, to_.value_or(PictureFormat(facts.format)));
  WriteImage(picture, path, quality_);
  return FactsOf(picture);
}

void PictureWriter::PrintNotes(const std::string& path, const ImageFacts& written) const {
  if (to_ || !IsBayer(written.format) || !IsPicture(TypeOfFile(path))) return;
  std::cerr << "korvel: note: '" << path << "' shows the bare mosaic of " << written.format.name
            << "; --to BGRa8 makes colours of it\n";
}

Image PictureWriter::Convert(const Image& image, const NamedFormat& format) const {
  Image picture;
  const KORVEL_RETURN_CODE code =
      KORVEL_ImageConverter_Convert(converter_.Get(), image.Get(), format.id, picture.Out());
  if (code == KORVEL_RETURN_CODE_Success) return picture;
  const NamedFormat from = FactsOf(image).format;
  const ToolError error =
      LibraryError(code, "convert " + std::string(from.name) + " to " + std::string(format.name), "");
  const std::string formats = OutputFormats(converter_, from);
  throw ToolError(error.what(),
                  formats.empty() ? "Choose another format by --to." : "Choose by --to: " + formats + ".");
}

}  // namespace korvel::tools
