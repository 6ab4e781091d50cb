// Objects of the exported functions, destroyed at the end of their scope.
#pragma once

#include <gtest/gtest.h>
#include <korvel/korvel.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace korvel_test {

using Bytes = std::vector<uint8_t>;

class ExportedImage {
 public:
  ExportedImage(uint32_t format, size_t width, size_t height, const Bytes& bytes = {}) {
    EXPECT_EQ(KORVEL_Image_Construct(format, width, height, &handle_), 0u);
    if (!bytes.empty()) {
      EXPECT_EQ(bytes.size(), ByteCount());
      std::memcpy(Data(), bytes.data(), bytes.size());
    }
  }
  // Takes over a handle that a function gave.
  explicit ExportedImage(KORVEL_IMAGE_HANDLE handle) : handle_(handle) {}
  ExportedImage(const ExportedImage&) = delete;
  ExportedImage& operator=(const ExportedImage&) = delete;
  ~ExportedImage() { EXPECT_EQ(KORVEL_Image_Destruct(handle_), 0u); }

  KORVEL_IMAGE_HANDLE Handle() const { return handle_; }

  size_t ByteCount() const {
    size_t count = 0;
    EXPECT_EQ(KORVEL_Image_GetByteCount(handle_, &count), 0u);
    return count;
  }
  uint8_t* Data() const {
    uint8_t* data = nullptr;
    EXPECT_EQ(KORVEL_Image_GetData(handle_, &data), 0u);
    return data;
  }
  uint32_t Format() const {
    uint32_t format = 0x5A5A;
    EXPECT_EQ(KORVEL_Image_GetPixelFormat(handle_, &format), 0u);
    return format;
  }
  size_t Width() const {
    size_t width = 0;
    EXPECT_EQ(KORVEL_Image_GetWidth(handle_, &width), 0u);
    return width;
  }
  size_t Height() const {
    size_t height = 0;
    EXPECT_EQ(KORVEL_Image_GetHeight(handle_, &height), 0u);
    return height;
  }
  Bytes Content() const { return Bytes(Data(), Data() + ByteCount()); }

 private:
  KORVEL_IMAGE_HANDLE handle_ = nullptr;
};

template <class Object, auto kConstruct, auto kDestruct>
class ExportedObject {
 public:
  ExportedObject() { EXPECT_EQ(kConstruct(&handle_), 0u); }
  ExportedObject(const ExportedObject&) = delete;
  ExportedObject& operator=(const ExportedObject&) = delete;
  ~ExportedObject() { Destruct(); }

  Object Handle() const { return handle_; }

  void Destruct() {
    if (handle_ != nullptr) {
      EXPECT_EQ(kDestruct(std::exchange(handle_, nullptr)), 0u);
    }
  }

 private:
  Object handle_ = nullptr;
};

using ExportedAdaptiveHotpixelCorrector =
    ExportedObject<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE, KORVEL_AdaptiveHotpixelCorrector_Construct,
                   KORVEL_AdaptiveHotpixelCorrector_Destruct>;
using ExportedBinning = ExportedObject<KORVEL_BINNING_HANDLE, KORVEL_Binning_Construct, KORVEL_Binning_Destruct>;
using ExportedColorCorrector =
    ExportedObject<KORVEL_COLOR_CORRECTOR_HANDLE, KORVEL_ColorCorrector_Construct, KORVEL_ColorCorrector_Destruct>;
using ExportedConverter =
    ExportedObject<KORVEL_IMAGE_CONVERTER_HANDLE, KORVEL_ImageConverter_Construct, KORVEL_ImageConverter_Destruct>;
using ExportedGain = ExportedObject<KORVEL_GAIN_HANDLE, KORVEL_Gain_Construct, KORVEL_Gain_Destruct>;
using ExportedGammaCorrector =
    ExportedObject<KORVEL_GAMMA_CORRECTOR_HANDLE, KORVEL_GammaCorrector_Construct, KORVEL_GammaCorrector_Destruct>;
using ExportedTransformer = ExportedObject<KORVEL_IMAGE_TRANSFORMER_HANDLE, KORVEL_ImageTransformer_Construct,
                                           KORVEL_ImageTransformer_Destruct>;
// A video on a new file, closed at the end of its scope unless it was before.
class ExportedVideo {
 public:
  explicit ExportedVideo(const std::string& path) {
    EXPECT_EQ(
        KORVEL_VideoWriter_Video_Open(&handle_, path.c_str(), KORVEL_VIDEO_CONTAINER_AVI, KORVEL_VIDEO_ENCODER_MJPEG),
        0u);
  }
  ExportedVideo(const ExportedVideo&) = delete;
  ExportedVideo& operator=(const ExportedVideo&) = delete;
  ~ExportedVideo() { Close(); }

  KORVEL_VIDEO_HANDLE Handle() const { return handle_; }

  void Close() {
    if (handle_ != nullptr) {
      EXPECT_EQ(KORVEL_VideoWriter_Video_Close(std::exchange(handle_, nullptr)), 0u);
    }
  }

 private:
  KORVEL_VIDEO_HANDLE handle_ = nullptr;
};

// Memory that ends where the next page can't be touched.
class CallersMemory {
 public:
  explicit CallersMemory(size_t size) : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    usable_ = (size + page_ - 1) / page_ * page_;
    void* const mapped = mmap(nullptr, usable_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    mapped_ = static_cast<uint8_t*>(mapped);
    if (mprotect(mapped_ + usable_, page_, PROT_NONE) != 0) throw std::bad_alloc();
    data_ = mapped_ + usable_ - size;
  }
  CallersMemory(const CallersMemory&) = delete;
  CallersMemory& operator=(const CallersMemory&) = delete;
  ~CallersMemory() { munmap(mapped_, usable_ + page_); }

  uint8_t* Data() const { return data_; }

 private:
  size_t page_;
  size_t usable_ = 0;
  uint8_t* mapped_ = nullptr;
  uint8_t* data_ = nullptr;
};

}  // namespace korvel_test
