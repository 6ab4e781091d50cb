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

 private:
  Handle handle_ = nullptr;
};

using Image = UniqueHandle<KORVEL_IMAGE_HANDLE, KORVEL_Image_Destruct>;
using ImageConverter = UniqueHandle<KORVEL_IMAGE_CONVERTER_HANDLE, KORVEL_ImageConverter_Destruct>;

}  // namespace korvel::tools
