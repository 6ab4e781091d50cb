// What stands before the rest of an input, for the targets whose inputs aren't files alone.
#pragma once

#include <cstdint>

#include "core/fixed_layout.h"

namespace korvel_fuzz {

// read_as_format: behind this comes the file.
struct ReadRequest {
  uint8_t fileType = 0;  // the place in korvel_test::kFileTypes, modulo their number
  uint32_t format = 0;
};

inline constexpr auto kReadRequestLayout =
    img::MakeFixedLayout<5>(img::Field{0, &ReadRequest::fileType}, img::Field{1, &ReadRequest::format});

// round_trip: behind this come the first bytes of the pixels; the others are made from the seed.
struct WriteRequest {
  uint8_t fileType = 0;  // as above
  uint8_t byEnding = 0;  // odd: the file type and quality come from the path's ending
  uint8_t format = 0;    // the place in the table of formats, modulo their number
  uint8_t width = 0;     // less 1
  uint8_t height = 0;    // less 1
  uint32_t quality = 0;
  uint32_t seed = 0;
};

inline constexpr auto kWriteRequestLayout = img::MakeFixedLayout<13>(
    img::Field{0, &WriteRequest::fileType}, img::Field{1, &WriteRequest::byEnding},
    img::Field{2, &WriteRequest::format}, img::Field{3, &WriteRequest::width}, img::Field{4, &WriteRequest::height},
    img::Field{5, &WriteRequest::quality}, img::Field{9, &WriteRequest::seed});

// Takes the head off an input; what a short one lacks is zero.
template <class Layout>
auto DecodeHead(const Layout& layout, const uint8_t*& data, size_t& size) {
  typename Layout::Bytes head{};
  const size_t present = size < head.size() ? size : head.size();
  for (size_t i = 0; i < present; ++i) head[i] = data[i];
  data += present;
  size -= present;
  return layout.Decode(head);
}

}  // namespace korvel_fuzz
