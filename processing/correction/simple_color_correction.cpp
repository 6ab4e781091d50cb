#include "processing/correction/simple_color_correction.h"

#include <string>

#include "core/image_lines.h"
#include "status/exceptions.h"

KORVEL_NAME_FOR_DISPATCH(img::processing::TSimpleColorCorrection_Inplace_Impl, "TSimpleColorCorrection_Inplace_Impl");

namespace img::processing {
namespace {

constexpr bool HasColors(const FormatFacts& facts) {
  return facts.id == PixelFormatId::Mono8 || facts.id == PixelFormatId::RGB10p32 ||
         (facts.type == PixelType::Color && !facts.IsPacked());
}

[[noreturn]] void ThrowNoColors(std::string_view formatName) {
  const std::string name(formatName);
  const std::string format = "img::PixelFormatId::" + name;
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Processing>(
      korvel::internal::ImgStatusCode::NotImplementedUtilx,
      "static void img::pixel_modifier::CorrectColor<" + format +
          ">::Process(img::IfcImage &, const float *) [formatId = " + format + "]",
      "No rgb access for format: " + name);
}

}  // namespace

template <PixelFormatId formatId>
void TSimpleColorCorrection_Inplace_Impl<formatId>::Process([[maybe_unused]] IfcImage& image) {
  if constexpr (HasColors(kFacts<formatId>)) {
    const auto& factors = *static_cast<const ColorFactors*>(GetParameters());
    const Size2D size = image.Area().size;
    const auto lines = LinesOf(image);
    for (size_t y = 0; y < size.height; ++y) {
      CorrectPixels<formatId, Rounding::HalfUp, SumOrder::RedFirst>(lines[y], lines[y], size.width, factors);
    }
  } else {
    ThrowNoColors(kFacts<formatId>.name);
  }
}

SimpleColorCorrection_Inplace::SimpleColorCorrection_Inplace() = default;
SimpleColorCorrection_Inplace::~SimpleColorCorrection_Inplace() = default;

void SimpleColorCorrection_Inplace::Process(IfcImage& image) {
  TemplateWrapper_InplaceProcessingModule::Process(image);
}

}  // namespace img::processing
