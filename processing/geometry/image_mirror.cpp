#include "processing/geometry/image_mirror.h"

namespace img::processing {

template <PixelFormatId formatId>
class TImageMirrorX_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    CopyMirrored(input, output, {.leftRight = true, .upDown = false}, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageMirrorX_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    MirrorInPlace(image, {.leftRight = true, .upDown = false}, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageMirrorY_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    CopyMirrored(input, output, {.leftRight = false, .upDown = true}, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageMirrorY_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    MirrorInPlace(image, {.leftRight = false, .upDown = true}, MoveParametersOf(*this).set);
  }
};

}  // namespace img::processing

KORVEL_NAME_FOR_DISPATCH(img::processing::TImageMirrorX_Impl, "TImageMirrorX_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageMirrorY_Impl, "TImageMirrorY_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageMirrorX_Inplace_Impl, "TImageMirrorX_Inplace_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageMirrorY_Inplace_Impl, "TImageMirrorY_Inplace_Impl");

namespace img::processing {

template class TemplateWrapper_TransformationModule<TImageMirrorX_Impl, IfcTransformationProcessingModule>;
template class TemplateWrapper_TransformationModule<TImageMirrorY_Impl, IfcTransformationProcessingModule>;
template class TemplateWrapper_InplaceProcessingModule<TImageMirrorX_Inplace_Impl>;
template class TemplateWrapper_InplaceProcessingModule<TImageMirrorY_Inplace_Impl>;

}  // namespace img::processing
