// Owners of the library's handles: what a scope constructs, its end destructs.
#pragma once

#include <utility>

#include "korvel/korvel.h"

namespace korvel::tools {

template <class Handle, KORVEL_RETURN_CODE (*Destruct)(Handle)>
class UniqueHandle {
 public:
  UniqueHandle() = default;
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      Reset();
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { Reset(); }

  Handle Get() const noexcept { return handle_; }

  // The place for a function of the library to write a new handle to; one that was held is destructed.
  Handle* Out() noexcept {
    Reset();
    return &handle_;
  }

  void Reset() noexcept {
    if (handle_ != nullptr) Destruct(std::exchange(handle_, nullptr));
  }

  // Leaves the handle to the caller, who wants to know how its end went.
  Handle Release() noexcept { return std::exchange(handle_, nullptr); }

 private:
  Handle handle_ = nullptr;
};

using Image = UniqueHandle<KORVEL_IMAGE_HANDLE, KORVEL_Image_Destruct>;
using ImageConverter = UniqueHandle<KORVEL_IMAGE_CONVERTER_HANDLE, KORVEL_ImageConverter_Destruct>;
using Gain = UniqueHandle<KORVEL_GAIN_HANDLE, KORVEL_Gain_Destruct>;
using GammaCorrector = UniqueHandle<KORVEL_GAMMA_CORRECTOR_HANDLE, KORVEL_GammaCorrector_Destruct>;
using ColorCorrector = UniqueHandle<KORVEL_COLOR_CORRECTOR_HANDLE, KORVEL_ColorCorrector_Destruct>;
using Binning = UniqueHandle<KORVEL_BINNING_HANDLE, KORVEL_Binning_Destruct>;
using HotpixelCorrector =
    UniqueHandle<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE, KORVEL_AdaptiveHotpixelCorrector_Destruct>;
using ImageTransformer = UniqueHandle<KORVEL_IMAGE_TRANSFORMER_HANDLE, KORVEL_ImageTransformer_Destruct>;
using Histogram = UniqueHandle<KORVEL_HISTOGRAM_HANDLE, KORVEL_Histogram_Destruct>;
using PixelLine = UniqueHandle<KORVEL_PIXEL_LINE_HANDLE, KORVEL_PixelLine_Destruct>;
using Video = UniqueHandle<KORVEL_VIDEO_HANDLE, KORVEL_VideoWriter_Video_Close>;

}  // namespace korvel::tools
