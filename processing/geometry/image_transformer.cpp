#include "processing/geometry/image_transformer.h"

#include <utility>

#include "status/exceptions.h"

namespace img::processing {
namespace {

using korvel::internal::ImgStatusCode;
using korvel::internal::ThrowStatus;

void RequireAddressable(bool isAddressable, PixelFormatId format, const char* location) {
  if (isAddressable) return;
  ThrowStatus<cfg_libimg::Modules::Processing>(
      ImgStatusCode::ImageFormatNotSupported, location,
      "Packed image formats not yet implemented: " + PixelFormatInfo_Name(format));
}

void RequireMirrorable(PixelFormatId format, const char* location) {
  const auto facts = FindFacts(format);
  RequireAddressable(facts && !facts->IsBitStream(), format, location);
}

void RequireRotatable(PixelFormatId format, const char* location) {
  RequireAddressable(!PixelFormatInfo_IsPacked(format), format, location);
}

// The module of a direction. both serves the third one.
template <class Module>
Module& ModuleOf(MirrorDirection direction, const char* location, Module& leftRight, Module& upDown, Module& both) {
  switch (direction) {
    case MirrorDirection::LeftRight:
      return leftRight;
    case MirrorDirection::UpDown:
      return upDown;
    case MirrorDirection::UpDownLeftRight:
      return both;
  }
  ThrowStatus<cfg_libimg::Modules::Processing>(ImgStatusCode::Error, location,
                                               "img::ImageTransformer: Mirror mode not supported!");
}

template <class Module>
Module& ModuleOf(RotationAngle angle, const char* location, Module& degree90, Module& degree180, Module& degree270) {
  switch (angle) {
    case RotationAngle::Degree90:
      return degree90;
    case RotationAngle::Degree180:
      return degree180;
    case RotationAngle::Degree270:
      return degree270;
  }
  ThrowStatus<cfg_libimg::Modules::Processing>(ImgStatusCode::Error, location,
                                               "img::ImageTransformer: Rotation mode not supported!");
}

// The image's buffer as one of another format; null if it has that format.
std::shared_ptr<buffer::IfcImageBuffer> BufferAs(PixelFormatId format, const IfcImage& image) {
  return format == image.PixelFormat() ? nullptr : image.Buffer()->ChangeFormat(format);
}

// Moves an image's pixels and takes its buffer under another format. An operation that is its own inverse is taken back
// if there is no memory for the new buffer.
std::shared_ptr<buffer::IfcImageBuffer> ProcessAs(PixelFormatId format, IfcInplaceProcessingModule& module,
                                                  IfcImage& image, bool isOwnInverse) {
  module.Process(image);
  try {
    return BufferAs(format, image);
  } catch (...) {
    if (isOwnInverse) module.Process(image);
    throw;
  }
}

}  // namespace

ImageTransformer::ImageTransformer(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                                   const ProcessorFeatures& features)
    : pool_(std::move(pool)),
      mirrorX_(features),
      mirrorY_(features),
      mirrorXInplace_(features),
      mirrorYInplace_(features),
      rotateCounterClockwise90_(features),
      rotate180_(features),
      rotateClockwise90_(features),
      rotateCounterClockwise90Inplace_(features),
      rotate180Inplace_(features),
      rotateClockwise90Inplace_(features) {}

std::shared_ptr<IfcImage> ImageTransformer::mirrorImage(const IfcImage& image, MirrorDirection direction) {
  constexpr const char* kLocation =
      "std::shared_ptr<img::IfcImage> img::processing::ImageTransformer::mirrorImage(const img::IfcImage &, const "
      "img::processing::MirrorDirection)";
  RequireMirrorable(image.PixelFormat(), kLocation);
  // Both mirrors at once are a half turn, which takes one pass.
  auto& module = ModuleOf<IfcTransformationProcessingModule>(direction, kLocation, mirrorX_, mirrorY_, rotate180_);
  const Size2D& size = image.Area().size;
  std::shared_ptr<IfcImage> output =
      pool_->AllocBuffer(MirroredFormat(image.PixelFormat(), size, direction), size)->CreateImage();
  module.Process(image, *output);
  return output;
}

std::shared_ptr<IfcImage> ImageTransformer::rotateImage(const IfcImage& image, RotationAngle angle) {
  constexpr const char* kLocation =
      "std::shared_ptr<img::IfcImage> img::processing::ImageTransformer::rotateImage(const img::IfcImage &, const "
      "img::processing::RotationAngle)";
  RequireRotatable(image.PixelFormat(), kLocation);
  auto& module = ModuleOf<IfcTransformationProcessingModule>(angle, kLocation, rotateCounterClockwise90_, rotate180_,
                                                             rotateClockwise90_);
  const Size2D& size = image.Area().size;
  const Size2D rotated = angle == RotationAngle::Degree180 ? size : Size2D{size.height, size.width};
  std::shared_ptr<IfcImage> output =
      pool_->AllocBuffer(RotatedFormat(image.PixelFormat(), size, angle), rotated)->CreateImage();
  module.Process(image, *output);
  return output;
}

std::shared_ptr<buffer::IfcImageBuffer> ImageTransformer::mirrorImageInPlace(IfcImage& image,
                                                                             MirrorDirection direction) {
  constexpr const char* kLocation =
      "std::shared_ptr<img::buffer::IfcImageBuffer> "
      "img::processing::ImageTransformer::mirrorImageInPlace(img::IfcImage &, "
      "const img::processing::MirrorDirection)";
  RequireMirrorable(image.PixelFormat(), kLocation);
  auto& module =
      ModuleOf<IfcInplaceProcessingModule>(direction, kLocation, mirrorXInplace_, mirrorYInplace_, rotate180Inplace_);
  const PixelFormatId format = MirroredFormat(image.PixelFormat(), image.Area().size, direction);
  return ProcessAs(format, module, image, true);
}

std::shared_ptr<buffer::IfcImageBuffer> ImageTransformer::rotateImageInPlace(IfcImage& image, RotationAngle angle) {
  constexpr const char* kLocation =
      "std::shared_ptr<img::buffer::IfcImageBuffer> "
      "img::processing::ImageTransformer::rotateImageInPlace(img::IfcImage &, "
      "const img::processing::RotationAngle)";
  RequireRotatable(image.PixelFormat(), kLocation);
  auto& module = ModuleOf<IfcInplaceProcessingModule>(angle, kLocation, rotateCounterClockwise90Inplace_,
                                                      rotate180Inplace_, rotateClockwise90Inplace_);
  const PixelFormatId format = RotatedFormat(image.PixelFormat(), image.Area().size, angle);
  return ProcessAs(format, module, image, angle == RotationAngle::Degree180);
}

}  // namespace img::processing
