// The first include of a source that is compiled once for each vector instruction set (cmake/KorvelVectors.cmake).
#pragma once

#include <hwy/highway.h>

static_assert(HWY_MAX_BYTES == KORVEL_VECTOR_BYTES, "Highway has chosen another instruction set");

namespace img::processing::KORVEL_VECTORS {

namespace hn = hwy::HWY_NAMESPACE;

}  // namespace img::processing::KORVEL_VECTORS
