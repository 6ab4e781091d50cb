// RAW as one of the file types that ImageWriter chooses from.
#pragma once

#include <memory>
#include <string>

#include "io/image_io.h"

namespace img::io::raw {

// The output object of an image format. Throws InvalidParameterUtilx, "Unsupported formatId: ", for an id that isn't
// public.
std::unique_ptr<IfcImageOutput> MakeOutput(PixelFormatId format, const std::string& path);

}  // namespace img::io::raw
