// The checks of an image's format that exported functions which work on pixels share.
#pragma once

#include "api/export_frame.h"
#include "core/pixel_format.h"
#include "processing/unsupported_format.h"

// The guard against packed formats, which comes before a function's own test of the format. name is the operation's.
#define KORVEL_REQUIRE_NOT_PACKED(format, name) \
  KORVEL_DETAIL_REQUIRE_PACKED_GUARD(!img::PixelFormatInfo_IsPacked(format), name)

// The same where RGB10p32 passes: it alone of the packed formats has pixels that lie on whole bytes and an operation
// that takes them.
#define KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(format, name) \
  KORVEL_DETAIL_REQUIRE_PACKED_GUARD(                        \
      (format) == img::PixelFormatId::RGB10p32 || !img::PixelFormatInfo_IsPacked(format), name)

#define KORVEL_DETAIL_REQUIRE_PACKED_GUARD(condition, name) \
  KORVEL_REQUIRE(condition, KORVEL_RETURN_CODE_ImageFormatNotSupported, name " does not support packed pixel formats!")

// condition tells whether the operation takes the format.
#define KORVEL_REQUIRE_SUPPORTED_FORMAT(condition, format) \
  KORVEL_REQUIRE(condition, KORVEL_RETURN_CODE_ImageFormatNotSupported, img::processing::UnsupportedFormatText(format))
