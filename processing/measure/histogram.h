// Counts the values of an image, for each channel.
#pragma once

#include <cstdint>
#include <vector>

#include "processing/module_wrappers.h"

namespace img::processing {

struct HistogramChannel {
  uint64_t pixelSum = 0;    // of all values
  uint64_t pixelCount = 0;  // of values
  std::vector<uint64_t> bins;
};

struct HistogramRecord {
  PixelFormatId format = PixelFormatId::Invalid;
  std::vector<HistogramChannel> channels;  // in the order of memory; one for a Bayer format
};

class HistogramIfc {
 public:
  HistogramIfc() = default;
  HistogramIfc(const HistogramIfc&) = delete;
  HistogramIfc& operator=(const HistogramIfc&) = delete;
  virtual ~HistogramIfc() = default;

  // Gives the record the image's format and channels, and adds the image's values to it. A stored value above the
  // maximum of the depth counts in the last bin, and in the sum as it is. Throws for an image with pixels whose
  // channels have no address.
  virtual void Process(const IfcImage& image, HistogramRecord& record) = 0;
};

template <PixelFormatId formatId>
class THistogram;

class Histogram final : public TemplateWrapper_MeasureModule<THistogram, HistogramIfc> {
 public:
  Histogram();

  // See HistogramIfc.
  void Process(const IfcImage& image, HistogramRecord& record);
};

}  // namespace img::processing
