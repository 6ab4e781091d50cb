// The conversion modes, under the names of the exported header. Any other number is a mode as well: it takes no fast
// path, like kConversionModeHighQuality.
#pragma once

#include <cstdint>

#include "korvel/korvel.h"

namespace img::processing {

inline constexpr uint32_t kConversionModeFast = KORVEL_CONVERSION_MODE_Fast;
inline constexpr uint32_t kConversionModeHighQuality = KORVEL_CONVERSION_MODE_HighQuality;
inline constexpr uint32_t kConversionModeClassic = KORVEL_CONVERSION_MODE_Classic;

}  // namespace img::processing
