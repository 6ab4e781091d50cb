// What the commands have in common that read an image, change it and write it.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "handles.h"
#include "image_input.h"
#include "picture_writer.h"

namespace korvel::tools {

struct TransformOptions {
  std::string input;
  std::string output;
  InputOptions reading;
  PictureOptions writing;
};

// IN, OUT and the options of both.
void AddTransformOptions(CLI::App& command, TransformOptions& options);

// Reads, unpacks, calls change(image, writer), and writes the image that it returns. Throws ToolError.
void Transform(const TransformOptions& options,
               const std::function<Image(Image image, const PictureWriter& writer)>& change);

}  // namespace korvel::tools
