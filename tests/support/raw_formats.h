// The grids of conversion families over memory layouts.
#pragma once

#include <array>

#include "core/pixel_format.h"
#include "processing/processing_module.h"

namespace korvel_test {

inline constexpr std::array<img::PixelFormatId, 14> kRawFormats = {
    img::PixelFormatId::_RawUnpacked1Ch8,           img::PixelFormatId::_RawUnpacked1Ch10,
    img::PixelFormatId::_RawUnpacked1Ch12,          img::PixelFormatId::_RawUnpacked3Ch8,
    img::PixelFormatId::_RawUnpacked3Ch10,          img::PixelFormatId::_RawUnpacked3Ch12,
    img::PixelFormatId::_RawUnpacked4Ch8,           img::PixelFormatId::_RawUnpacked4Ch10,
    img::PixelFormatId::_RawUnpacked4Ch12,          img::PixelFormatId::_RawMipiPacked1Ch10,
    img::PixelFormatId::_RawMipiPacked1Ch12,        img::PixelFormatId::_RawPackedNoAlignment1Ch10,
    img::PixelFormatId::_RawPackedNoAlignment1Ch12, img::PixelFormatId::_RawPacked10p32,
};

inline constexpr std::array<img::PixelFormatId, 49> kPublicFormats = {
#define KORVEL_TEST_ID(name) img::PixelFormatId::name,
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_TEST_ID)
#undef KORVEL_TEST_ID
};

// Whether an instance does any work.
inline bool Works(const img::processing::IfcConversionProcessingModule& module) {
  return dynamic_cast<const img::processing::ConversionModuleNotImplementedForFormat*>(&module) == nullptr;
}

}  // namespace korvel_test
