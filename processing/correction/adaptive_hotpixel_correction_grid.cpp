// The grid of AdaptiveHotpixelCorrection: an instance for every pair of public formats. It stands apart, so that a
// change of the correction itself doesn't compile it anew.

#include "processing/correction/adaptive_hotpixel_correction.h"

namespace img::processing {

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TAdaptiveHotpixelCorrection final : public AdaptiveHotpixelInstance {
 public:
  TAdaptiveHotpixelCorrection() : AdaptiveHotpixelInstance(formatIdInput, formatIdOutput) {}
};

}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TAdaptiveHotpixelCorrection, "TAdaptiveHotpixelCorrection");

namespace img::processing {

template class TemplateWrapper_ConversionProcessingModule<TAdaptiveHotpixelCorrection>;

}  // namespace img::processing
