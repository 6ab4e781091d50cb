// The four-character codes that name chunks, lists, forms and stream types in RIFF files.
#pragma once

#include <cstdint>

namespace avi {

// The first character lies in the low byte, and so comes first in a file.
constexpr uint32_t FourCc(const char (&text)[5]) {
  uint32_t code = 0;
  for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<uint8_t>(text[i]);
  return code;
}

inline constexpr uint32_t kRiff = FourCc("RIFF");
inline constexpr uint32_t kList = FourCc("LIST");
inline constexpr uint32_t kAvi = FourCc("AVI ");
inline constexpr uint32_t kHdrl = FourCc("hdrl");
inline constexpr uint32_t kStrl = FourCc("strl");
inline constexpr uint32_t kMovi = FourCc("movi");
inline constexpr uint32_t kAvih = FourCc("avih");
inline constexpr uint32_t kStrh = FourCc("strh");
inline constexpr uint32_t kStrf = FourCc("strf");
inline constexpr uint32_t kStrn = FourCc("strn");
inline constexpr uint32_t kIdx1 = FourCc("idx1");
inline constexpr uint32_t kVids = FourCc("vids");
inline constexpr uint32_t kAuds = FourCc("auds");
inline constexpr uint32_t kTxts = FourCc("txts");
inline constexpr uint32_t kMjpg = FourCc("MJPG");

}  // namespace avi
