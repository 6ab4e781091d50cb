// Colour correction: every pixel's red, green and blue times a matrix of 3 by 3 factors.
#pragma once

#include <memory>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/processor_features.h"
#include "processing/correction/color_correction_optimized.h"
#include "processing/correction/color_matrix.h"
#include "processing/correction/simple_color_correction.h"

namespace img::processing {

// Takes the path of vector kernels where there is one for the format, the size and the processor. The paths round
// differently. Serves one thread at a time.
class ColorCorrector {
 public:
  explicit ColorCorrector(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                          const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Unpacked colour formats, and RGB10p32. False for an id that no format has.
  bool IsFormatSupported(PixelFormatId format) const;

  void SetFactors(const ColorFactors& factors);
  const ColorFactors& GetFactors() const { return optimized_.GetFactors(); }

  // The first makes a new image, from the pool. Of a format that is not supported they throw, and leave it alone.
  std::shared_ptr<IfcImage> Process(const IfcImage& image);
  void ProcessInPlace(IfcImage& image);

 private:
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  SimpleColorCorrection_Inplace simple_;
  ColorCorrectionOptimized optimized_;
};

}  // namespace img::processing
