// From any pixel format to any other that it can become: walks a fixed chain of modules, skipping those that don't
// apply, over images from a pool, unless one pass can do what the chain would.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/processor_features.h"
#include "processing/conversion/bayer_to_color_3x3.h"
#include "processing/conversion/bayer_to_color_5x5.h"
#include "processing/conversion/bayer_to_mono_2x2.h"
#include "processing/conversion/channel_extender.h"
#include "processing/conversion/channel_flipper.h"
#include "processing/conversion/conversion_mode.h"
#include "processing/conversion/convert_pixel_depth.h"
#include "processing/conversion/copy_converter.h"
#include "processing/conversion/debayering_optimized.h"
#include "processing/conversion/fused_conversion.h"
#include "processing/conversion/stream_conversion.h"
#include "processing/conversion/unpack_packed.h"

namespace img::processing {

// Serves one thread at a time; only the mode may be changed from another. Keeps nothing from one image to the next but
// the pool's memory, scratch memory and the modules' instances.
class ImageConverter {
 public:
  explicit ImageConverter(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                          const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  uint32_t GetConversionMode() const { return conversionMode_; }
  // Takes any number. A conversion under way heeds it from its next stage on.
  void SetConversionMode(uint32_t mode) { conversionMode_.exchange(mode); }

  // The module that demosaics input to the class of output, or to RGB10p32. Throws Error if there is none.
  IfcConversionProcessingModule& GetBayerConverter(PixelFormatId input, PixelFormatId output) const;

  // The module that makes a colour image of output's class from a mono image. Throws Error if there is none.
  IfcConversionProcessingModule& GetExtensionConverter(PixelFormatId input, PixelFormatId output) const;

  // Runs one stage: an image of the given format from the pool, filled by a fast path or else by the module. Throws
  // NotAvailableUtilx if the module doesn't take the input's format.
  std::shared_ptr<IfcImage> Convert(const std::shared_ptr<IfcImage>& input, IfcConversionProcessingModule& module,
                                    ImageFormat format) const;

  // Swaps red and blue if that leads to output's class. Throws NotImplementedUtilx between RGBa and BGRa.
  std::shared_ptr<IfcImage> FlipChannelsIfNeeded(const std::shared_ptr<IfcImage>& input, PixelFormatId output) const;

  // A new image of exactly the given format and the input's size; a copy if the input has that format. Throws Error or
  // NotImplementedUtilx if the chain doesn't lead there. Changes the input only where a flip is the first stage.
  std::shared_ptr<IfcImage> ConvertPixelFormat(const std::shared_ptr<IfcImage>& input, PixelFormatId output) const;

  // The same into the caller's memory. A fast path from Bayer that does the whole conversion writes there directly;
  // otherwise size must be the exact byte count of the result. In mode Classic, throws Error for formats without that
  // kernel.
  void ConvertPixelFormat(const std::shared_ptr<IfcImage>& input, PixelFormatId output, uint8_t* buffer,
                          size_t size) const;

  // Takes memory for the intermediates of a conversion and for imageCount results. Throws InvalidParameterUtilx for an
  // unknown id, Error if a stage has no module, OutOfRange for an empty size, Error if imageCount results exceed the
  // memory; then nothing is taken. Pairs that fail at a flip or at the end of the chain aren't found out here.
  void PreAllocateConversion(PixelFormatId input, PixelFormatId output, const Size2D& size, size_t imageCount) const;

  // The formats that input converts to, itself among them.
  std::vector<PixelFormatId> GetSupportedOutputPixelFormats(PixelFormatId input) const;

 private:
  // Converts in one pass into an image from the pool. Null if that can't be done; then nothing is touched.
  std::shared_ptr<IfcImage> ConvertAtOnce(IfcImage& input, PixelFormatId output) const;
  // The same into memory that must not overlap the input's.
  bool ConvertAtOnce(IfcImage& input, PixelFormatId output, uint32_t mode, uint8_t* buffer, size_t size) const;

  std::shared_ptr<IfcImage> ConvertDepth(const std::shared_ptr<IfcImage>& input, PixelFormatId format) const;

  // The modules change their inner instances as formats change.
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  mutable BayerToColor3x3Simple_BGR bayerToBgr3x3_;
  mutable BayerToColor5x5Simple_BGR bayerToBgr5x5_;
  mutable BayerToColor3x3Simple_RGB bayerToRgb3x3_;
  mutable BayerToColor5x5Simple_RGB bayerToRgb5x5_;
  mutable BayerToColor3x3Simple_BGRa bayerToBgra3x3_;
  mutable BayerToColor5x5Simple_BGRa bayerToBgra5x5_;
  mutable BayerToColor3x3Simple_RGBa bayerToRgba3x3_;
  mutable BayerToColor5x5Simple_RGBa bayerToRgba5x5_;
  mutable BayerToColor3x3Simple_RGB10p30 bayerToRgb10p32With3x3_;
  mutable BayerToColor5x5Simple_RGB10p30 bayerToRgb10p32With5x5_;
  mutable BayerToMono2x2Simple bayerToMono_;
  mutable ChannelExtender_BGR extendToBgr_;
  mutable ChannelExtender_RGB extendToRgb_;
  mutable ChannelExtender_BGRa extendToBgra_;
  mutable ChannelExtender_RGBa extendToRgba_;
  mutable CopyConverter copy_;
  mutable ConvertPixelDepth depth_;
  mutable ChannelFlipper flip_;
  mutable UnpackPacked unpack_;
  std::atomic<uint32_t> conversionMode_ = kConversionModeFast;
  std::shared_ptr<DebayeringOptimized> debayeringOptimized_;
  FusedConversion fusedConversion_;
  StreamConversion streamConversion_;
};

}  // namespace img::processing
