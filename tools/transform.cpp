#include "transform.h"

#include <utility>

#include "file_type.h"
#include "image_output.h"
#include "samples.h"

namespace korvel::tools {

void AddTransformOptions(CLI::App& command, TransformOptions& options) {
  command.add_option("IN", options.input, "File to read")->required()->type_name("FILE");
  command.add_option("OUT", options.output, "File to write")->required()->type_name("FILE");
  AddInputOptions(command, options.reading);
  AddPictureOptions(command, options.writing);
}

void Transform(const TransformOptions& options,
               const std::function<Image(Image image, const PictureWriter& writer)>& change) {
  const PictureWriter writer(options.writing);
  RefuseSameFile(options.input, options.output);
  LoadedImage loaded = LoadImage(options.input, options.reading);
  PrintNotes(options.input, loaded);
  Unpack(loaded.image);
  const Image changed = change(std::move(loaded.image), writer);
  const ImageFacts written = writer.Write(changed, options.output);
  PrintWritten(options.output, written);
  writer.PrintNotes(options.output, written);
}

}  // namespace korvel::tools
