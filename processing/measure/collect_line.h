// Copies the values of one row or column of an image, for each channel.
#pragma once

#include <cstdint>
#include <vector>

#include "processing/module_wrappers.h"

namespace img::processing {

struct LineRecord {
  std::vector<std::vector<uint32_t>> channels;  // in the order of memory; one for a Bayer format
  PixelFormatId format = PixelFormatId::Invalid;
  bool isHorizontal = true;
  uint64_t offset = 0;  // the number of the row or column
};

class CollectLineIfc {
 public:
  CollectLineIfc() = default;
  CollectLineIfc(const CollectLineIfc&) = delete;
  CollectLineIfc& operator=(const CollectLineIfc&) = delete;
  virtual ~CollectLineIfc() = default;

  // Fills the record anew. A line outside the image has no values. Throws for a line with pixels whose channels have no
  // address.
  virtual void Process(const IfcImage& image, bool isHorizontal, uint64_t offset, LineRecord& record) = 0;
};

template <PixelFormatId formatId>
class TCollectLine;

class CollectLine final : public TemplateWrapper_MeasureModule<TCollectLine, CollectLineIfc> {
 public:
  CollectLine();

  // See CollectLineIfc.
  void Process(const IfcImage& image, bool isHorizontal, uint64_t offset, LineRecord& record);
};

}  // namespace img::processing
