#include "processing/geometry/image_rotation.h"

namespace img::processing {

template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    CopyTurned(input, output, QuarterTurn::CounterClockwise, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageRotateClockwise90_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    CopyTurned(input, output, QuarterTurn::Clockwise, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageRotate180_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    CopyMirrored(input, output, {.leftRight = true, .upDown = true}, MoveParametersOf(*this).set);
  }
};

template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    MoveParameters& parameters = MoveParametersOf(*this);
    TurnInPlace(image, QuarterTurn::CounterClockwise, parameters.scratch, parameters.set);
  }
};

template <PixelFormatId formatId>
class TImageRotateClockwise90_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    MoveParameters& parameters = MoveParametersOf(*this);
    TurnInPlace(image, QuarterTurn::Clockwise, parameters.scratch, parameters.set);
  }
};

template <PixelFormatId formatId>
class TImageRotate180_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    MirrorInPlace(image, {.leftRight = true, .upDown = true}, MoveParametersOf(*this).set);
  }
};

}  // namespace img::processing

KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotateCounterClockwise90_Impl, "TImageRotateCounterClockwise90_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotate180_Impl, "TImageRotate180_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotateClockwise90_Impl, "TImageRotateClockwise90_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotateCounterClockwise90_Inplace_Impl,
                         "TImageRotateCounterClockwise90_Inplace_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotate180_Inplace_Impl, "TImageRotate180_Inplace_Impl");
KORVEL_NAME_FOR_DISPATCH(img::processing::TImageRotateClockwise90_Inplace_Impl, "TImageRotateClockwise90_Inplace_Impl");

namespace img::processing {

template class TemplateWrapper_TransformationModule<TImageRotateCounterClockwise90_Impl,
                                                    IfcTransformationProcessingModule>;
template class TemplateWrapper_TransformationModule<TImageRotate180_Impl, IfcTransformationProcessingModule>;
template class TemplateWrapper_TransformationModule<TImageRotateClockwise90_Impl, IfcTransformationProcessingModule>;
template class TemplateWrapper_InplaceProcessingModule<TImageRotateCounterClockwise90_Inplace_Impl>;
template class TemplateWrapper_InplaceProcessingModule<TImageRotate180_Inplace_Impl>;
template class TemplateWrapper_InplaceProcessingModule<TImageRotateClockwise90_Inplace_Impl>;

}  // namespace img::processing
