// Rotates images, into another image of the same format or in place. Formats whose pixels don't lie on whole bytes are
// not for these modules.
#pragma once

#include "processing/geometry/move_module.h"

namespace img::processing {

template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Impl;
template <PixelFormatId formatId>
class TImageRotate180_Impl;
template <PixelFormatId formatId>
class TImageRotateClockwise90_Impl;
template <PixelFormatId formatId>
class TImageRotateCounterClockwise90_Inplace_Impl;
template <PixelFormatId formatId>
class TImageRotate180_Inplace_Impl;
template <PixelFormatId formatId>
class TImageRotateClockwise90_Inplace_Impl;

// The output of a quarter turn has the input's width as its height, and its height as its width.
using ImageRotateCounterClockwise90 = MoveIntoAnother<TImageRotateCounterClockwise90_Impl>;
using ImageRotate180 = MoveIntoAnother<TImageRotate180_Impl>;
using ImageRotateClockwise90 = MoveIntoAnother<TImageRotateClockwise90_Impl>;

// A quarter turn in place is for images over the whole of their buffer. It exchanges width and height of both, and
// takes memory for a copy, which the module keeps; where that can't be had, it throws std::bad_alloc and changes
// nothing.
using ImageRotateCounterClockwise90_Inplace = MoveInPlace<TImageRotateCounterClockwise90_Inplace_Impl>;
using ImageRotate180_Inplace = MoveInPlace<TImageRotate180_Inplace_Impl>;
using ImageRotateClockwise90_Inplace = MoveInPlace<TImageRotateClockwise90_Inplace_Impl>;

extern template class TemplateWrapper_TransformationModule<TImageRotateCounterClockwise90_Impl,
                                                           IfcTransformationProcessingModule>;
extern template class TemplateWrapper_TransformationModule<TImageRotate180_Impl, IfcTransformationProcessingModule>;
extern template class TemplateWrapper_TransformationModule<TImageRotateClockwise90_Impl,
                                                           IfcTransformationProcessingModule>;
extern template class TemplateWrapper_InplaceProcessingModule<TImageRotateCounterClockwise90_Inplace_Impl>;
extern template class TemplateWrapper_InplaceProcessingModule<TImageRotate180_Inplace_Impl>;
extern template class TemplateWrapper_InplaceProcessingModule<TImageRotateClockwise90_Inplace_Impl>;

}  // namespace img::processing
