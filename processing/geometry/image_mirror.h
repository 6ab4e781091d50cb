// Mirrors images left to right (X) and top to bottom (Y), into another image of the same format and size or in place.
// Formats whose pixels don't lie on whole bytes are not for these modules.
#pragma once

#include "processing/geometry/move_module.h"

namespace img::processing {

template <PixelFormatId formatId>
class TImageMirrorX_Impl;
template <PixelFormatId formatId>
class TImageMirrorY_Impl;
template <PixelFormatId formatId>
class TImageMirrorX_Inplace_Impl;
template <PixelFormatId formatId>
class TImageMirrorY_Inplace_Impl;

using ImageMirrorX = MoveIntoAnother<TImageMirrorX_Impl>;
using ImageMirrorY = MoveIntoAnother<TImageMirrorY_Impl>;
using ImageMirrorX_Inplace = MoveInPlace<TImageMirrorX_Inplace_Impl>;
using ImageMirrorY_Inplace = MoveInPlace<TImageMirrorY_Inplace_Impl>;

extern template class TemplateWrapper_TransformationModule<TImageMirrorX_Impl, IfcTransformationProcessingModule>;
extern template class TemplateWrapper_TransformationModule<TImageMirrorY_Impl, IfcTransformationProcessingModule>;
extern template class TemplateWrapper_InplaceProcessingModule<TImageMirrorX_Inplace_Impl>;
extern template class TemplateWrapper_InplaceProcessingModule<TImageMirrorY_Inplace_Impl>;

}  // namespace img::processing
