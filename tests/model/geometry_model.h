// Mirrors and turns once more, as plainly as they can be said: every pixel of the result is fetched from its place in
// the input. A Bayer image's format isn't looked up in tables but told from the colours that come to lie in the corner.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/model/conversion_model.h"

namespace korvel_test {

enum class ModelMotion {
  kMirrorLeftRight,
  kMirrorUpDown,
  kMirrorBoth,
  kRotate90,  // counter-clockwise
  kRotate180,
  kRotate270,  // clockwise
};

inline constexpr ModelMotion kAllMotions[] = {ModelMotion::kMirrorLeftRight, ModelMotion::kMirrorUpDown,
                                              ModelMotion::kMirrorBoth,      ModelMotion::kRotate90,
                                              ModelMotion::kRotate180,       ModelMotion::kRotate270};

const char* NameOf(ModelMotion motion);

// For formats whose pixels are whole bytes.
ModelImage ModelMove(const ModelImage& input, ModelMotion motion);

// The format alone. Packed formats keep theirs.
uint32_t ModelFormatAfter(uint32_t format, size_t width, size_t height, ModelMotion motion);

}  // namespace korvel_test
