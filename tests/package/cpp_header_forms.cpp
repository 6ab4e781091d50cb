// Everything in the C++ header, in both forms, for the compiler alone: it is compiled as each standard that the header
// is for, and without exceptions.
#include <korvel/korvel.hpp>

#define KORVEL_BOTH_FORMS(name)                  \
  template class korvel::name<korvel::Throwing>; \
  template class korvel::name<korvel::Returning>;

KORVEL_BOTH_FORMS(BasicFormatQueries)
KORVEL_BOTH_FORMS(BasicLibrary)
KORVEL_BOTH_FORMS(BasicImage)
KORVEL_BOTH_FORMS(BasicImageConverter)
KORVEL_BOTH_FORMS(BasicGain)
KORVEL_BOTH_FORMS(BasicGammaCorrector)
KORVEL_BOTH_FORMS(BasicColorCorrector)
KORVEL_BOTH_FORMS(BasicAdaptiveHotpixelCorrector)
KORVEL_BOTH_FORMS(BasicBinning)
KORVEL_BOTH_FORMS(BasicImageTransformer)
KORVEL_BOTH_FORMS(BasicHistogram)
KORVEL_BOTH_FORMS(BasicPixelLine)
KORVEL_BOTH_FORMS(BasicVideo)

template class korvel::PixelView<uint8_t>;
template class korvel::PixelView<const uint16_t>;
template class korvel::Span<uint32_t>;
template class korvel::Result<int>;
