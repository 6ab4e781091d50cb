// KORVEL_PixelLine_*: the values of one row or column of an image.

#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"
#include "processing/measure/collect_line.h"

using img::processing::LineRecord;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<LineRecord> FindPixelLine(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle) {
  return HandleRegistry::Instance().PixelLines().Find(FromExported(pixelLineHandle));
}

// Intended: the line just past the image is accepted, and with an unknown orientation any line is.
bool IsAccepted(const img::Size2D& size, uint32_t orientation, size_t offset) {
  switch (orientation) {
    case KORVEL_ORIENTATION_Horizontal:
      return offset <= size.height;
    case KORVEL_ORIENTATION_Vertical:
      return offset <= size.width;
    default:
      return true;
  }
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_PixelLine_Construct(KORVEL_IMAGE_HANDLE imageHandle, uint32_t orientation, size_t offset,
                                              KORVEL_PIXEL_LINE_HANDLE* pixelLineHandle) {
  return ExportFrame([&] {
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED(image->Format(), "PixelLine");
    KORVEL_REQUIRE_POINTER(pixelLineHandle);
    KORVEL_REQUIRE(IsAccepted(image->Size(), orientation, offset), KORVEL_RETURN_CODE_OutOfRange,
                   "offset is out of range!");
    auto record = std::make_shared<LineRecord>();
    img::processing::CollectLine().Process(*image->CreateImage(), orientation == KORVEL_ORIENTATION_Horizontal, offset,
                                           *record);
    *pixelLineHandle =
        ToExported<KORVEL_PIXEL_LINE_HANDLE>(HandleRegistry::Instance().PixelLines().Add(std::move(record)));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_GetPixelFormat(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, uint32_t* pixelFormat) {
  return ExportFrame([&] {
    const auto line = FindPixelLine(pixelLineHandle);
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    KORVEL_REQUIRE_POINTER(pixelFormat);
    *pixelFormat = static_cast<uint32_t>(line->format);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_GetOrientation(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, uint32_t* orientation) {
  return ExportFrame([&] {
    const auto line = FindPixelLine(pixelLineHandle);
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    KORVEL_REQUIRE_POINTER(orientation);
    *orientation = line->isHorizontal ? KORVEL_ORIENTATION_Horizontal : KORVEL_ORIENTATION_Vertical;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_GetOffset(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, size_t* offset) {
  return ExportFrame([&] {
    const auto line = FindPixelLine(pixelLineHandle);
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    KORVEL_REQUIRE_POINTER(offset);
    *offset = line->offset;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_GetNumChannels(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, size_t* numChannels) {
  return ExportFrame([&] {
    const auto line = FindPixelLine(pixelLineHandle);
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    KORVEL_REQUIRE_POINTER(numChannels);
    *numChannels = line->channels.size();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_GetValuesForChannel(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, size_t channelIndex,
                                                        uint32_t* values, size_t* valuesSize) {
  return ExportFrame([&] {
    const auto line = FindPixelLine(pixelLineHandle);
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    KORVEL_REQUIRE_POINTER(valuesSize);
    KORVEL_REQUIRE_INDEX(line->channels, channelIndex);
    const auto& source = line->channels[channelIndex];
    return korvel::internal::FillArray(source.data(), source.size(), values, valuesSize, "*values is too small!");
  });
}

KORVEL_RETURN_CODE KORVEL_PixelLine_Destruct(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle) {
  return ExportFrame([&] {
    const auto line = HandleRegistry::Instance().PixelLines().Remove(FromExported(pixelLineHandle));
    KORVEL_REQUIRE_HANDLE(line, pixelLineHandle);
    return kSuccess;
  });
}
