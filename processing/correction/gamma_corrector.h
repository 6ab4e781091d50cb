// Gamma correction: every channel but alpha through a power curve.
#pragma once

#include <memory>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/instruction_set.h"
#include "processing/correction/value_tables.h"

namespace img::processing {

// The curve becomes tables when gamma is set, so that work on images is look-ups alone. Serves one thread at a time.
class GammaCorrector {
 public:
  explicit GammaCorrector(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                          const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Whatever isn't packed, and RGB10p32. Intended: true for Invalid as well, though no image of it is corrected. False
  // for an id that no public format has.
  static bool IsFormatSupported(PixelFormatId format);

  // Throws InvalidArgument for a value outside GetGammaCorrectionMin() to ...Max(); gamma then stays as it was.
  void SetGammaCorrectionValue(float value);
  float GetGammaCorrectionValue() const { return gammaValue_; }
  float GetGammaCorrectionMin() const { return gammaMin_; }
  float GetGammaCorrectionMax() const { return gammaMax_; }

  // The first makes a new image, from the pool, whose alpha is what the pool's memory held. Both throw
  // ImageFormatNotSupported.
  std::shared_ptr<IfcImage> applyGammaCorrection(const IfcImage& image);
  void applyGammaCorrectionInPlace(IfcImage& image);

 private:
  void buildTables();

  // input and output may be the same.
  void process(const IfcImage& input, IfcImage& output) const;

  float gammaValue_ = 1.0f;
  float gammaMin_ = 0.3f;
  float gammaMax_ = 3.0f;
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  ValueTables tables_;
  InstructionSet set_;
};

}  // namespace img::processing
