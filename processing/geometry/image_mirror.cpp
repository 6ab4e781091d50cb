#include "processing/geometry/image_mirror.h"

#include <algorithm>
#include <cstring>

#include "processing/geometry/move_pixels.h"

namespace img::processing {

template <PixelFormatId formatId>
class TImageMirrorX_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    const auto source = LinesOf(input);
    const auto target = LinesOf(output);
    for (size_t y = 0; y < source.size.height; ++y) {
      CopyReversed<kFacts<formatId>.PixelByteCount()>(source[y], target[y], source.size.width);
    }
  }
};

template <PixelFormatId formatId>
class TImageMirrorX_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    const auto lines = LinesOf(image);
    for (size_t y = 0; y < lines.size.height; ++y) {
      Reverse<kFacts<formatId>.PixelByteCount()>(lines[y], lines.size.width);
    }
  }
};

template <PixelFormatId formatId>
class TImageMirrorY_Impl final : public IfcTransformationProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    const auto source = LinesOf(input);
    const auto target = LinesOf(output);
    for (size_t y = 0; y < source.size.height; ++y) {
      std::memcpy(target[y], source[source.size.height - 1 - y], input.LineByteCount());
    }
  }
};

template <PixelFormatId formatId>
class TImageMirrorY_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override {
    const auto lines = LinesOf(image);
    for (size_t y = 0; y < lines.size.height / 2; ++y) {
      std::swap_ranges(lines[y], lines[y] + image.LineByteCount(), lines[lines.size.height - 1 - y]);
    }
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
