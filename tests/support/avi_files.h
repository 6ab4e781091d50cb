// AVI files that tests write through the layer's functions.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "avi/qavi.h"
#include "tests/model/avi_model.h"

namespace korvel_test {

// A file that is closed, if need be, at the end of the scope.
class AviFile {
 public:
  explicit AviFile(avi::QAVIHandle handle) : handle_(handle) {}
  AviFile(const AviFile&) = delete;
  AviFile& operator=(const AviFile&) = delete;
  ~AviFile() { Close(); }

  static avi::QAVIHandle Create(const std::string& path, size_t streams = 1) {
    avi::QAVIHandle handle = 0;
    EXPECT_EQ(avi::QAVICreateFile(path, streams, &handle), avi::QAVIError::Success);
    return handle;
  }
  static avi::QAVIHandle Open(const std::string& path) {
    avi::QAVIHandle handle = 0;
    EXPECT_EQ(avi::QAVIOpenFile(path, &handle), avi::QAVIError::Success);
    return handle;
  }
  static avi::QAVIHandle Modify(const std::string& path) {
    avi::QAVIHandle handle = 0;
    EXPECT_EQ(avi::QAVIModifyFile(path, &handle), avi::QAVIError::Success);
    return handle;
  }

  avi::QAVIHandle Handle() const { return handle_; }

  void Append(const std::vector<AviBytes>& frames, size_t stream = 0) const {
    for (const AviBytes& frame : frames) {
      EXPECT_EQ(avi::QAVISetData(handle_, stream, frame), avi::QAVIError::Success);
    }
  }

  void Close() {
    if (handle_ != 0) {
      EXPECT_EQ(avi::QAVICloseFile(std::exchange(handle_, 0)), avi::QAVIError::Success);
    }
  }

 private:
  avi::QAVIHandle handle_;
};

// Frames of 1 to 23 bytes, odd and even, each of its own content.
inline std::vector<AviBytes> MakeAviFrames(size_t count) {
  std::vector<AviBytes> frames;
  for (size_t i = 0; i < count; ++i) {
    AviBytes frame((i * 7) % 23 + 1);
    for (size_t k = 0; k < frame.size(); ++k) frame[k] = static_cast<uint8_t>(i * 31 + k);
    frames.push_back(std::move(frame));
  }
  return frames;
}

}  // namespace korvel_test
