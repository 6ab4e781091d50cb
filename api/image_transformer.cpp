// KORVEL_ImageTransformer_*: mirrored and rotated images.

#include "processing/geometry/image_transformer.h"

#include "api/buffer_pools.h"
#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::processing::ImageTransformer;
using img::processing::MirrorDirection;
using img::processing::RotationAngle;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<ImageTransformer> FindTransformer(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle) {
  return HandleRegistry::Instance().ImageTransformers().Find(FromExported(imageTransformerHandle));
}

// What the functions share that make an image: transform(transformer, image) gives it.
template <class Transform>
KORVEL_RETURN_CODE TransformIntoNewImage(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                         KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle,
                                         const Transform& transform) {
  return ExportFrame([&] {
    const auto transformer = FindTransformer(imageTransformerHandle);
    KORVEL_REQUIRE_HANDLE(transformer, imageTransformerHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED(buffer->Format(), "ImageTransformer");
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    *outputImageHandle = RegisterImage(transform(*transformer, *buffer->CreateImage())->Buffer());
    return kSuccess;
  });
}

// What the functions share that change an image: transform(transformer, image) gives its new buffer, if there is one.
template <class Transform>
KORVEL_RETURN_CODE TransformInPlace(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                    KORVEL_IMAGE_HANDLE imageHandle, const Transform& transform) {
  return ExportFrame([&] {
    const auto transformer = FindTransformer(imageTransformerHandle);
    KORVEL_REQUIRE_HANDLE(transformer, imageTransformerHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED(buffer->Format(), "ImageTransformer");
    if (auto changed = transform(*transformer, *buffer->CreateImage())) {
      HandleRegistry::Instance().Images().ReplaceImage(FromExported(imageHandle), std::move(changed));
    }
    return kSuccess;
  });
}

KORVEL_RETURN_CODE Mirror(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle,
                          KORVEL_IMAGE_HANDLE* outputImageHandle, MirrorDirection direction) {
  return TransformIntoNewImage(imageTransformerHandle, imageHandle, outputImageHandle,
                               [=](ImageTransformer& transformer, const img::IfcImage& image) {
                                 return transformer.mirrorImage(image, direction);
                               });
}

KORVEL_RETURN_CODE MirrorInPlace(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                 KORVEL_IMAGE_HANDLE imageHandle, MirrorDirection direction) {
  return TransformInPlace(imageTransformerHandle, imageHandle,
                          [=](ImageTransformer& transformer, img::IfcImage& image) {
                            return transformer.mirrorImageInPlace(image, direction);
                          });
}

// Intended: the high bits of an angle don't count.
RotationAngle AngleOf(uint32_t angle) { return RotationAngle{static_cast<uint16_t>(angle & 0xFFFF)}; }

}  // namespace

KORVEL_RETURN_CODE KORVEL_ImageTransformer_Construct(KORVEL_IMAGE_TRANSFORMER_HANDLE* imageTransformerHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(imageTransformerHandle);
    auto pool = korvel::internal::MakeBufferPool(korvel::internal::kBuffersOfAnOperation);
    *imageTransformerHandle = ToExported<KORVEL_IMAGE_TRANSFORMER_HANDLE>(
        HandleRegistry::Instance().ImageTransformers().Add(std::make_shared<ImageTransformer>(std::move(pool))));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDown(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                        KORVEL_IMAGE_HANDLE imageHandle,
                                                        KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return Mirror(imageTransformerHandle, imageHandle, outputImageHandle, MirrorDirection::UpDown);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                           KORVEL_IMAGE_HANDLE imageHandle,
                                                           KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return Mirror(imageTransformerHandle, imageHandle, outputImageHandle, MirrorDirection::LeftRight);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                                 KORVEL_IMAGE_HANDLE imageHandle,
                                                                 KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return Mirror(imageTransformerHandle, imageHandle, outputImageHandle, MirrorDirection::UpDownLeftRight);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownInPlace(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                               KORVEL_IMAGE_HANDLE imageHandle) {
  return MirrorInPlace(imageTransformerHandle, imageHandle, MirrorDirection::UpDown);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle) {
  return MirrorInPlace(imageTransformerHandle, imageHandle, MirrorDirection::LeftRight);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle) {
  return MirrorInPlace(imageTransformerHandle, imageHandle, MirrorDirection::UpDownLeftRight);
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_Rotate(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                  KORVEL_IMAGE_HANDLE imageHandle,
                                                  KORVEL_IMAGE_HANDLE* outputImageHandle, uint32_t angle) {
  return TransformIntoNewImage(imageTransformerHandle, imageHandle, outputImageHandle,
                               [=](ImageTransformer& transformer, const img::IfcImage& image) {
                                 return transformer.rotateImage(image, AngleOf(angle));
                               });
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_RotateInPlace(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                         KORVEL_IMAGE_HANDLE imageHandle, uint32_t angle) {
  return TransformInPlace(imageTransformerHandle, imageHandle,
                          [=](ImageTransformer& transformer, img::IfcImage& image) {
                            return transformer.rotateImageInPlace(image, AngleOf(angle));
                          });
}

KORVEL_RETURN_CODE KORVEL_ImageTransformer_Destruct(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle) {
  return ExportFrame([&] {
    const auto transformer =
        HandleRegistry::Instance().ImageTransformers().Remove(FromExported(imageTransformerHandle));
    // Intended: the text names another handle than the argument.
    KORVEL_REQUIRE_HANDLE(transformer, imageConverterHandle);
    return kSuccess;
  });
}
