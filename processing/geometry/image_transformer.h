// Mirrors and rotates images, into memory of its pool or in place, with the Bayer format that fits the result.
#pragma once

#include <memory>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/processor_features.h"
#include "processing/geometry/image_mirror.h"
#include "processing/geometry/image_rotation.h"
#include "processing/geometry/transformed_format.h"

namespace img::processing {

// Serves one thread at a time.
class ImageTransformer {
 public:
  explicit ImageTransformer(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                            const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Throw Error for a direction or an angle that isn't there, and ImageFormatNotSupported for a packed format;
  // mirroring takes the packed formats whose pixels lie on whole bytes.
  std::shared_ptr<IfcImage> mirrorImage(const IfcImage& image, MirrorDirection direction);
  std::shared_ptr<IfcImage> rotateImage(const IfcImage& image, RotationAngle angle);

  // The same in the memory of an image over the whole of its buffer. The image is of no use afterwards. Return the
  // buffer that takes the memory over if the format changes, and null if the image's own buffer has the result. A
  // failure leaves the image as it was, but for one to make that buffer.
  std::shared_ptr<buffer::IfcImageBuffer> mirrorImageInPlace(IfcImage& image, MirrorDirection direction);
  std::shared_ptr<buffer::IfcImageBuffer> rotateImageInPlace(IfcImage& image, RotationAngle angle);

 private:
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  ImageMirrorX mirrorX_;
  ImageMirrorY mirrorY_;
  ImageMirrorX_Inplace mirrorXInplace_;
  ImageMirrorY_Inplace mirrorYInplace_;
  ImageRotateCounterClockwise90 rotateCounterClockwise90_;
  ImageRotate180 rotate180_;
  ImageRotateClockwise90 rotateClockwise90_;
  ImageRotateCounterClockwise90_Inplace rotateCounterClockwise90Inplace_;
  ImageRotate180_Inplace rotate180Inplace_;
  ImageRotateClockwise90_Inplace rotateClockwise90Inplace_;
};

}  // namespace img::processing
