// All pixel formats with all their properties, written down once more so that the library's own list has something to
// be compared with.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace korvel_test {

// How many bytes a run of n pixels takes.
enum class RunBytes {
  kTimes1,  // n
  kTimes2,  // n * 2
  kTimes3,  // n * 3
  kTimes4,  // n * 4
  kTimes6,  // n * 6
  kTimes8,  // n * 8
  kBits10,  // (n * 10 + 7) >> 3
  kBits12,  // (n * 12 + 7) >> 3
};

inline constexpr size_t BytesOfRun(RunBytes kind, size_t pixels) {
  switch (kind) {
    case RunBytes::kTimes1:
      return pixels;
    case RunBytes::kTimes2:
      return pixels * 2;
    case RunBytes::kTimes3:
      return pixels * 3;
    case RunBytes::kTimes4:
      return pixels * 4;
    case RunBytes::kTimes6:
      return pixels * 6;
    case RunBytes::kTimes8:
      return pixels * 8;
    case RunBytes::kBits10:
      return (pixels * 10 + 7) >> 3;
    case RunBytes::kBits12:
      return (pixels * 12 + 7) >> 3;
  }
  throw std::logic_error("no such kind of run");
}

// One pixel format with all its properties.
struct FormatRow {
  uint32_t id;
  std::string_view name;
  uint32_t pixelClass;
  uint32_t type;
  uint32_t channels;
  uint32_t significantBitsPerChannel;
  uint32_t storageBitsPerChannel;
  uint32_t significantBitsPerPixel;
  uint32_t storageBitsPerPixel;
  uint32_t maximum;
  bool packed;
  bool bayer;
  uint32_t rawFormat;
  RunBytes runBytes;
};

inline constexpr uint32_t kClassBayerGR = 1;
inline constexpr uint32_t kClassBayerRG = 2;
inline constexpr uint32_t kClassBayerGB = 3;
inline constexpr uint32_t kClassBayerBG = 4;
inline constexpr uint32_t kClassMono = 5;
inline constexpr uint32_t kClassRGB = 6;
inline constexpr uint32_t kClassBGR = 7;
inline constexpr uint32_t kClassRGBa = 8;
inline constexpr uint32_t kClassBGRa = 9;
inline constexpr uint32_t kClassRGB10p32 = 10;
inline constexpr uint32_t kClassBGR10p32 = 11;
inline constexpr uint32_t kClassBayerBGPacked = 12;
inline constexpr uint32_t kClassBayerGBPacked = 13;
inline constexpr uint32_t kClassBayerGRPacked = 14;
inline constexpr uint32_t kClassBayerRGPacked = 15;
inline constexpr uint32_t kClassMonoPacked = 16;

inline constexpr uint32_t kTypeBayer = 1;
inline constexpr uint32_t kTypeMono = 2;
inline constexpr uint32_t kTypeColor = 3;
inline constexpr uint32_t kTypeRaw = 4;

// Every value is written out and none derived from another, on purpose: the tests hold the library's own catalogue
// against this list, and a list made by the same rules would repeat its mistakes. Two things look wrong and are not:
// Invalid answers like an 8-bit format of one channel, and the raw ids of four channels have the sizes of those of
// three.
// clang-format off
inline constexpr std::array<FormatRow, 64> kFormatTable = {{
    {0x00000000, "Invalid", 0, 0, 1, 8, 8, 8, 8, 255, false, false, 0x00000000, RunBytes::kTimes1},
    {0x01080001, "Mono8", 5, 2, 1, 8, 8, 8, 8, 255, false, false, 0xFFFF0108, RunBytes::kTimes1},
    {0x01080008, "BayerGR8", 1, 1, 1, 8, 8, 8, 8, 255, false, true, 0xFFFF0108, RunBytes::kTimes1},
    {0x01080009, "BayerRG8", 2, 1, 1, 8, 8, 8, 8, 255, false, true, 0xFFFF0108, RunBytes::kTimes1},
    {0x0108000A, "BayerGB8", 3, 1, 1, 8, 8, 8, 8, 255, false, true, 0xFFFF0108, RunBytes::kTimes1},
    {0x0108000B, "BayerBG8", 4, 1, 1, 8, 8, 8, 8, 255, false, true, 0xFFFF0108, RunBytes::kTimes1},
    {0x010A0046, "Mono10p", 16, 2, 1, 10, 10, 10, 10, 1023, true, false, 0xFFFF110A, RunBytes::kBits10},
    {0x010A0052, "BayerBG10p", 12, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFFF110A, RunBytes::kBits10},
    {0x010A0054, "BayerGB10p", 13, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFFF110A, RunBytes::kBits10},
    {0x010A0056, "BayerGR10p", 14, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFFF110A, RunBytes::kBits10},
    {0x010A0058, "BayerRG10p", 15, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFFF110A, RunBytes::kBits10},
    {0x010C0047, "Mono12p", 16, 2, 1, 12, 12, 12, 12, 4095, true, false, 0xFFFF110C, RunBytes::kBits12},
    {0x010C0053, "BayerBG12p", 12, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFFF110C, RunBytes::kBits12},
    {0x010C0055, "BayerGB12p", 13, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFFF110C, RunBytes::kBits12},
    {0x010C0057, "BayerGR12p", 14, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFFF110C, RunBytes::kBits12},
    {0x010C0059, "BayerRG12p", 15, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFFF110C, RunBytes::kBits12},
    {0x01100003, "Mono10", 5, 2, 1, 10, 16, 10, 16, 1023, false, false, 0xFFFF010A, RunBytes::kTimes2},
    {0x01100005, "Mono12", 5, 2, 1, 12, 16, 12, 16, 4095, false, false, 0xFFFF010C, RunBytes::kTimes2},
    {0x0110000C, "BayerGR10", 1, 1, 1, 10, 16, 10, 16, 1023, false, true, 0xFFFF010A, RunBytes::kTimes2},
    {0x0110000D, "BayerRG10", 2, 1, 1, 10, 16, 10, 16, 1023, false, true, 0xFFFF010A, RunBytes::kTimes2},
    {0x0110000E, "BayerGB10", 3, 1, 1, 10, 16, 10, 16, 1023, false, true, 0xFFFF010A, RunBytes::kTimes2},
    {0x0110000F, "BayerBG10", 4, 1, 1, 10, 16, 10, 16, 1023, false, true, 0xFFFF010A, RunBytes::kTimes2},
    {0x01100010, "BayerGR12", 1, 1, 1, 12, 16, 12, 16, 4095, false, true, 0xFFFF010C, RunBytes::kTimes2},
    {0x01100011, "BayerRG12", 2, 1, 1, 12, 16, 12, 16, 4095, false, true, 0xFFFF010C, RunBytes::kTimes2},
    {0x01100012, "BayerGB12", 3, 1, 1, 12, 16, 12, 16, 4095, false, true, 0xFFFF010C, RunBytes::kTimes2},
    {0x01100013, "BayerBG12", 4, 1, 1, 12, 16, 12, 16, 4095, false, true, 0xFFFF010C, RunBytes::kTimes2},
    {0x02180014, "RGB8", 6, 3, 3, 8, 8, 24, 24, 255, false, false, 0xFFFF0308, RunBytes::kTimes3},
    {0x02180015, "BGR8", 7, 3, 3, 8, 8, 24, 24, 255, false, false, 0xFFFF0308, RunBytes::kTimes3},
    {0x02200016, "RGBa8", 8, 3, 4, 8, 8, 32, 32, 255, false, false, 0xFFFF0408, RunBytes::kTimes4},
    {0x02200017, "BGRa8", 9, 3, 4, 8, 8, 32, 32, 255, false, false, 0xFFFF0408, RunBytes::kTimes4},
    {0x0220001D, "RGB10p32", 10, 3, 3, 10, 10, 30, 32, 1023, true, false, 0xFFFF110D, RunBytes::kTimes4},
    {0x0220001E, "BGR10p32", 11, 3, 3, 10, 10, 30, 32, 1023, true, false, 0xFFFF110D, RunBytes::kTimes4},
    {0x02300018, "RGB10", 6, 3, 3, 10, 16, 30, 48, 1023, false, false, 0xFFFF030A, RunBytes::kTimes6},
    {0x02300019, "BGR10", 7, 3, 3, 10, 16, 30, 48, 1023, false, false, 0xFFFF030A, RunBytes::kTimes6},
    {0x0230001A, "RGB12", 6, 3, 3, 12, 16, 36, 48, 4095, false, false, 0xFFFF030C, RunBytes::kTimes6},
    {0x0230001B, "BGR12", 7, 3, 3, 12, 16, 36, 48, 4095, false, false, 0xFFFF030C, RunBytes::kTimes6},
    {0x0240004C, "BGRa10", 9, 3, 4, 10, 16, 40, 64, 1023, false, false, 0xFFFF040A, RunBytes::kTimes8},
    {0x0240004E, "BGRa12", 9, 3, 4, 12, 16, 48, 64, 4095, false, false, 0xFFFF040C, RunBytes::kTimes8},
    {0x0240005F, "RGBa10", 8, 3, 4, 10, 16, 40, 64, 1023, false, false, 0xFFFF040A, RunBytes::kTimes8},
    {0x02400061, "RGBa12", 8, 3, 4, 12, 16, 48, 64, 4095, false, false, 0xFFFF040C, RunBytes::kTimes8},
    {0x40000001, "BayerRG10g40Qrv", 15, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFF1110A, RunBytes::kBits10},
    {0x40000002, "BayerGB10g40Qrv", 13, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFF1110A, RunBytes::kBits10},
    {0x40000003, "BayerGR10g40Qrv", 14, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFF1110A, RunBytes::kBits10},
    {0x40000004, "BayerBG10g40Qrv", 12, 1, 1, 10, 10, 10, 10, 1023, true, true, 0xFFF1110A, RunBytes::kBits10},
    {0x4000000F, "Mono10g40Qrv", 16, 2, 1, 10, 10, 10, 10, 1023, true, false, 0xFFF1110A, RunBytes::kBits10},
    {0x40000011, "BayerRG12g24Qrv", 15, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFF1110C, RunBytes::kBits12},
    {0x40000012, "BayerGB12g24Qrv", 13, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFF1110C, RunBytes::kBits12},
    {0x40000013, "BayerGR12g24Qrv", 14, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFF1110C, RunBytes::kBits12},
    {0x40000014, "BayerBG12g24Qrv", 12, 1, 1, 12, 12, 12, 12, 4095, true, true, 0xFFF1110C, RunBytes::kBits12},
    {0x4000001F, "Mono12g24Qrv", 16, 2, 1, 12, 12, 12, 12, 4095, true, false, 0xFFF1110C, RunBytes::kBits12},
    {0xFFF1110A, "_RawMipiPacked1Ch10", 20, 4, 1, 10, 10, 10, 10, 1023, true, false, 0xFFF1110A, RunBytes::kBits10},
    {0xFFF1110C, "_RawMipiPacked1Ch12", 20, 4, 1, 12, 12, 12, 12, 4095, true, false, 0xFFF1110C, RunBytes::kBits12},
    {0xFFFF0108, "_RawUnpacked1Ch8", 17, 4, 1, 8, 8, 8, 8, 255, false, false, 0xFFFF0108, RunBytes::kTimes1},
    {0xFFFF010A, "_RawUnpacked1Ch10", 17, 4, 1, 10, 16, 10, 16, 1023, false, false, 0xFFFF010A, RunBytes::kTimes2},
    {0xFFFF010C, "_RawUnpacked1Ch12", 17, 4, 1, 12, 16, 12, 16, 4095, false, false, 0xFFFF010C, RunBytes::kTimes2},
    {0xFFFF0308, "_RawUnpacked3Ch8", 18, 4, 3, 8, 8, 24, 24, 255, false, false, 0xFFFF0308, RunBytes::kTimes3},
    {0xFFFF030A, "_RawUnpacked3Ch10", 18, 4, 3, 10, 16, 30, 48, 1023, false, false, 0xFFFF030A, RunBytes::kTimes6},
    {0xFFFF030C, "_RawUnpacked3Ch12", 18, 4, 3, 12, 16, 36, 48, 4095, false, false, 0xFFFF030C, RunBytes::kTimes6},
    {0xFFFF0408, "_RawUnpacked4Ch8", 19, 4, 4, 8, 8, 24, 24, 255, false, false, 0xFFFF0408, RunBytes::kTimes3},
    {0xFFFF040A, "_RawUnpacked4Ch10", 19, 4, 4, 10, 16, 30, 48, 1023, false, false, 0xFFFF040A, RunBytes::kTimes6},
    {0xFFFF040C, "_RawUnpacked4Ch12", 19, 4, 4, 12, 16, 36, 48, 4095, false, false, 0xFFFF040C, RunBytes::kTimes6},
    {0xFFFF110A, "_RawPackedNoAlignment1Ch10", 20, 4, 1, 10, 10, 10, 10, 1023, true, false, 0xFFFF110A, RunBytes::kBits10},
    {0xFFFF110C, "_RawPackedNoAlignment1Ch12", 20, 4, 1, 12, 12, 12, 12, 4095, true, false, 0xFFFF110C, RunBytes::kBits12},
    {0xFFFF110D, "_RawPacked10p32", 21, 4, 3, 10, 10, 30, 32, 1023, true, false, 0xFFFF110D, RunBytes::kTimes4},
}};
// clang-format on

inline constexpr bool IsPublicFormat(const FormatRow& row) { return row.id != 0 && row.id < 0xFFF00000U; }

// The ids of the 49 formats that cross the exported interface, in order.
inline constexpr std::array<uint32_t, 49> PublicFormats() {
  std::array<uint32_t, 49> ids{};
  size_t count = 0;
  for (const FormatRow& row : kFormatTable) {
    if (IsPublicFormat(row)) {
      ids.at(count++) = row.id;
    }
  }
  return ids;
}

// Null for an id outside the table.
inline constexpr const FormatRow* FindFormat(uint32_t id) {
  for (const FormatRow& row : kFormatTable) {
    if (row.id == id) {
      return &row;
    }
  }
  return nullptr;
}

inline constexpr const FormatRow& FormatOf(uint32_t id) {
  const FormatRow* row = FindFormat(id);
  if (row == nullptr) {
    throw std::out_of_range("no such format");
  }
  return *row;
}

// A format by its name; a name with a typing error doesn't compile.
consteval uint32_t IdOf(std::string_view name) {
  for (const FormatRow& row : kFormatTable) {
    if (row.name == name) {
      return row.id;
    }
  }
  throw std::out_of_range("no such format");
}

}  // namespace korvel_test
