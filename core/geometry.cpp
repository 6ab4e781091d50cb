#include "core/geometry.h"

#include <new>

#include "core/memory_limit.h"
#include "status/exceptions.h"

size_t img::ByteCountToAllocate(PixelFormatId formatId, const Size2D& size) {
  // Asked first for its failure: it refuses an id that no format has.
  PixelFormatInfo_CalcSizeOfPixels(formatId, 0);
  const std::optional<size_t> byteCount = CheckedByteCount(*FindFacts(formatId), size);
  if (!byteCount || *byteCount > LargestAllocation()) throw std::bad_alloc();
  return *byteCount;
}

void img::RequireNotEmpty(const Size2D& size, const char* location) {
  if (size.width != 0 && size.height != 0) return;
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Default>(
      korvel::internal::ImgStatusCode::OutOfRange, location,
      size.width == 0 ? "Width must not be 0!" : "Height must not be 0!");
}
