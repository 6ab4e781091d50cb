#include "processing/geometry/image_rotation.h"

#include <cstring>
#include <memory>

#include "processing/geometry/move_pixels.h"

namespace img::processing {
namespace {

template <size_t kBytes, bool kClockwise>
void TurnQuarterInPlace(IfcImage& image) {
  const auto lines = LinesOf(image);
  const Size2D before = image.Area().size;
  const Size2D after{before.height, before.width};
  if (lines.size.width != 0) {
    const size_t byteCount = ByteCountToAllocate(image.PixelFormat(), before);
    const std::unique_ptr<uint8_t[]> copy(new uint8_t[byteCount]);
    std::memcpy(copy.get(), lines.first, byteCount);
    TurnQuarter<kBytes, kClockwise>(ImageLines<const uint8_t>{copy.get(), before.width * kBytes, before},
                                    ImageLines<uint8_t>{lines.first, after.width * kBytes, after});
  }
  image.SetSize(after);
  image.Buffer()->SetSize(after);
}

}  // namespace

template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    TurnQuarter<kFacts<formatId>.PixelByteCount(), false>(LinesOf(input), LinesOf(output));
  }
};

template <PixelFormatId formatId>
class TImageRotateClockwise90_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    TurnQuarter<kFacts<formatId>.PixelByteCount(), true>(LinesOf(input), LinesOf(output));
  }
};

template <PixelFormatId formatId>
class TImageRotate180_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    const auto source = LinesOf(input);
    const auto target = LinesOf(output);
    for (size_t y = 0; y < source.size.height; ++y) {
      CopyReversed<kFacts<formatId>.PixelByteCount()>(source[source.size.height - 1 - y], target[y], source.size.width);
    }
  }
};

template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override { TurnQuarterInPlace<kFacts<formatId>.PixelByteCount(), false>(image); }
};

template <PixelFormatId formatId>
class TImageRotateClockwise90_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override { TurnQuarterInPlace<kFacts<formatId>.PixelByteCount(), true>(image); }
};

template <PixelFormatId formatId>
class TImageRotate180_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    constexpr size_t kBytes = kFacts<formatId>.PixelByteCount();
    const auto lines = LinesOf(image);
    const size_t half = lines.size.height / 2;
    for (size_t y = 0; y < half; ++y) {
      SwapReversed<kBytes>(lines[y], lines[lines.size.height - 1 - y], lines.size.width);
    }
    if (lines.size.height % 2 != 0) Reverse<kBytes>(lines[half], lines.size.width);
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
