// The signatures of instances for a pair of formats, as they stand in the locations of failures.
#pragma once

#include <string>

#include "core/pixel_format.h"

namespace img::processing {

// "virtual void img::processing::Class<img::PixelFormatId::A, img::PixelFormatId::B>::Member() [formatIdInput =
// img::PixelFormatId::A, formatIdOutput = img::PixelFormatId::B]". before stands in front of the class.
inline std::string PairSignature(const std::string& before, const std::string& className, const std::string& member,
                                 const FormatFacts& in, const FormatFacts& out) {
  const std::string input = "img::PixelFormatId::" + std::string(in.name);
  const std::string output = "img::PixelFormatId::" + std::string(out.name);
  return before + " img::processing::" + className + "<" + input + ", " + output + ">::" + member +
         " [formatIdInput = " + input + ", formatIdOutput = " + output + "]";
}

}  // namespace img::processing
