// Pictures that tell their size as JPEG files do, and hold nothing to decode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace korvel_test {

// byteCount is from 32 on, and the content differs with the number.
inline std::vector<uint8_t> SmallPicture(uint32_t width, uint32_t height, size_t byteCount, uint8_t number = 0) {
  std::vector<uint8_t> bytes = {0xFF, 0xD8, 0xFF, 0xFE, 0x00, 0x04, number, number,  // a comment before the size
                                0xFF, 0xC0, 0x00, 0x0B, 0x08};
  for (const uint32_t side : {height, width}) {
    bytes.push_back(static_cast<uint8_t>(side >> 8));
    bytes.push_back(static_cast<uint8_t>(side));
  }
  bytes.insert(bytes.end(), {0x01, 0x01, 0x11, 0x00, 0xFF, 0xDA});
  bytes.resize(byteCount - 2, number);
  bytes.insert(bytes.end(), {0xFF, 0xD9});
  return bytes;
}

// Of 128 bytes and a few more, odd and even.
inline std::vector<std::vector<uint8_t>> SmallPictures(size_t count, uint32_t width = 32, uint32_t height = 16) {
  std::vector<std::vector<uint8_t>> pictures;
  for (size_t i = 0; i < count; ++i) {
    pictures.push_back(SmallPicture(width, height, 128 + i * 5 % 9, static_cast<uint8_t>(i)));
  }
  return pictures;
}

}  // namespace korvel_test
