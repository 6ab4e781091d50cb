// Binning: blocks of pixels become one, by their sum or their mean.
#pragma once

#include <cstdint>
#include <memory>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/instruction_set.h"

namespace img::processing {

enum class BinningMode : uint16_t { Average = 0, Sum = 1 };

// The blocks of Bayer images are made of pixels of one colour, so that the result is a mosaic of the same pattern.
// Serves one thread at a time.
class Binning {
 public:
  explicit Binning(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                   const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Whatever isn't packed, and RGB10p32. False for Invalid and for an id that no public format has.
  static bool IsFormatSupported(PixelFormatId format);

  // Throw InvalidArgument for a factor outside Min() to Max(); the factor then stays as it was.
  void SetBinningX(uint8_t factor);
  void SetBinningY(uint8_t factor);
  uint8_t GetBinningX() const { return binningX_; }
  uint8_t GetBinningY() const { return binningY_; }
  uint8_t Min() const { return kBinningMin; }
  uint8_t Max() const { return binningMax_; }

  // Throws InvalidArgument for a number that is no mode; the mode then stays as it was.
  void SetMode(BinningMode mode);
  BinningMode GetMode() const { return binningMode_; }

  // The size that an image of a size is binned to; 0 where it is too small. Throws InvalidArgument for a format that is
  // not supported.
  //
  // Intended: it is rounded also for factors that are both 1, though Process then keeps an image's size.
  Size2D ExpectedOutputSize(Size2D size, PixelFormatId format) const;

  // A new image, from the pool. Throws ImageFormatNotSupported, and InvalidArgument for an image that is too small.
  std::shared_ptr<IfcImage> Process(const IfcImage& image) const;

 private:
  static constexpr uint8_t kBinningMin = 1;

  bool isFactor(uint8_t factor) const { return factor >= kBinningMin && factor <= binningMax_; }

  uint8_t binningMax_ = 8;
  uint8_t binningX_ = 1;
  uint8_t binningY_ = 1;
  BinningMode binningMode_ = BinningMode::Sum;
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  InstructionSet set_;
};

}  // namespace img::processing
