// Colour correction for any size and every colour format whose pixels can be addressed.
#pragma once

#include "processing/correction/color_matrix.h"
#include "processing/module_wrappers.h"

namespace img::processing {

// Rounds each sum half up. Other formats throw NotImplementedUtilx, but for Mono8.
//
// Intended: a Mono8 value counts as all three colours and becomes the new blue.
template <PixelFormatId formatId>
class TSimpleColorCorrection_Inplace_Impl final : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override;
};

// Its members stand in the source file so that the classes of all formats are compiled once.
class SimpleColorCorrection_Inplace final
    : public TemplateWrapper_InplaceProcessingModule<TSimpleColorCorrection_Inplace_Impl> {
 public:
  SimpleColorCorrection_Inplace();
  ~SimpleColorCorrection_Inplace() override;

  void Process(IfcImage& image) override;

  // The instances' parameters are the factors.
  void* GetParameters() override { return &factors_; }
  void SetFactors(const ColorFactors& factors) { factors_ = factors; }

 private:
  ColorFactors factors_ = kIdentityFactors;
};

}  // namespace img::processing
