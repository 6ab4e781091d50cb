// KORVEL_Image_*: images in the library's and in the caller's memory, and their properties.

#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "buffers/raw_image_buffer.h"
#include "buffers/vector_image_buffer.h"
#include "core/geometry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using img::Size2D;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;

KORVEL_RETURN_CODE KORVEL_Image_Construct(uint32_t pixelFormat, size_t width, size_t height,
                                          KORVEL_IMAGE_HANDLE* imageHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(imageHandle);
    *imageHandle =
        RegisterImage(img::buffer::VectorImageBuffer::AllocBuffer(PixelFormatId{pixelFormat}, Size2D{width, height}));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_ConstructFromBuffer(uint32_t pixelFormat, uint8_t* buffer, size_t bufferSize,
                                                    size_t width, size_t height, KORVEL_IMAGE_HANDLE* imageHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(buffer);
    KORVEL_REQUIRE_POINTER(imageHandle);
    size_t needed = 0;
    // Takes the place of what the query itself recorded.
    KORVEL_REQUIRE(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(pixelFormat, width * height, &needed) == kSuccess,
                   KORVEL_RETURN_CODE_Error, "Calculating the required storage size failed!");
    const auto facts = img::FindFacts(PixelFormatId{pixelFormat});
    KORVEL_REQUIRE(img::CheckedByteCount(*facts, Size2D{width, height}).has_value() && needed <= bufferSize,
                   KORVEL_RETURN_CODE_InvalidArgument, "*buffer is too small to hold the specified pixels!");
    *imageHandle = RegisterImage(
        img::buffer::RawImageBuffer::CreateBuffer(PixelFormatId{pixelFormat}, buffer, Size2D{width, height}));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetWidth(KORVEL_IMAGE_HANDLE imageHandle, size_t* width) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(width);
    *width = buffer->Size().width;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetHeight(KORVEL_IMAGE_HANDLE imageHandle, size_t* height) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(height);
    *height = buffer->Size().height;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetByteCount(KORVEL_IMAGE_HANDLE imageHandle, size_t* byteCount) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(byteCount);
    *byteCount = buffer->ByteCount();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetPixelFormat(KORVEL_IMAGE_HANDLE imageHandle, uint32_t* pixelFormat) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(pixelFormat);
    *pixelFormat = static_cast<uint32_t>(buffer->Format());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetData(KORVEL_IMAGE_HANDLE imageHandle, uint8_t** data) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(data);
    *data = buffer->Data();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_GetPixelPointer(KORVEL_IMAGE_HANDLE imageHandle, size_t xPos, size_t yPos,
                                                uint8_t** pixelPointer) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(pixelPointer);
    const Size2D& size = buffer->Size();
    KORVEL_REQUIRE(size.width != 0 && size.height != 0, KORVEL_RETURN_CODE_OutOfRange, "Image is empty!");
    KORVEL_REQUIRE(xPos < size.width, KORVEL_RETURN_CODE_OutOfRange, "xPos is out of range!");
    KORVEL_REQUIRE(yPos < size.height, KORVEL_RETURN_CODE_OutOfRange, "yPos is out of range!");
    *pixelPointer = buffer->PixelPointer(xPos, yPos);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_Destruct(KORVEL_IMAGE_HANDLE imageHandle) {
  return ExportFrame([&] {
    const auto buffer = korvel::internal::RemoveImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    return kSuccess;
  });
}
