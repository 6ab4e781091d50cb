// Files with the ending ".bmp", against what the header's rules say of them.
#include <korvel/korvel.h>

#include <algorithm>
#include <array>
#include <limits>

#include "fuzz/fuzz_input.h"
#include "fuzz/reading.h"

namespace {

using korvel_fuzz::ByteView;
using korvel_fuzz::FuzzInput;
using korvel_fuzz::ReadOutcome;
using korvel_test::FormatInBmp;
using korvel_test::PlaceInFiles;

constexpr size_t kMaskBytes = 12;
constexpr size_t kTableBytes = 1024;
constexpr size_t kMasksEnd = korvel_test::kBmpHeaderBytes + kMaskBytes;

// The fields that a reader looks at.
struct BmpHead {
  uint16_t magic;
  uint32_t pixelOffset;
  uint32_t infoSize;
  int32_t width;
  int32_t height;
  uint16_t bits;
  uint32_t compression;
  uint32_t coloursUsed;
  uint32_t coloursImportant;
  std::array<uint32_t, 3> masks;
};

template <class Number>
Number NumberAt(ByteView file, size_t offset) {
  const ByteView rest = file.subspan(std::min(offset, file.size()));
  return FuzzInput(rest.data(), rest.size()).Take<Number>();
}

bool HasMasks(const BmpHead& head) {
  return head.pixelOffset == kMasksEnd || head.pixelOffset == kMasksEnd + kTableBytes;
}

bool HasTable(const BmpHead& head) {
  return head.pixelOffset == korvel_test::kBmpHeaderBytes + kTableBytes || head.pixelOffset == kMasksEnd + kTableBytes;
}

BmpHead HeadOf(ByteView file) {
  BmpHead head{};
  head.magic = NumberAt<uint16_t>(file, 0);
  head.pixelOffset = NumberAt<uint32_t>(file, 10);
  head.infoSize = NumberAt<uint32_t>(file, 14);
  head.width = NumberAt<int32_t>(file, 18);
  head.height = NumberAt<int32_t>(file, 22);
  head.bits = NumberAt<uint16_t>(file, 28);
  head.compression = NumberAt<uint32_t>(file, 30);
  head.coloursUsed = NumberAt<uint32_t>(file, 46);
  head.coloursImportant = NumberAt<uint32_t>(file, 50);
  if (HasMasks(head)) {
    for (size_t i = 0; i < 3; ++i) head.masks[i] = NumberAt<uint32_t>(file, korvel_test::kBmpHeaderBytes + 4 * i);
  }
  return head;
}

// Invalid if no format has such a head.
uint32_t FormatOf(const BmpHead& head) {
  uint32_t found = KORVEL_PIXEL_FORMAT_Invalid;
  if (head.compression == 3) {
    for (const uint32_t format :
         {KORVEL_PIXEL_FORMAT_Mono10, KORVEL_PIXEL_FORMAT_Mono12, KORVEL_PIXEL_FORMAT_RGBa8, KORVEL_PIXEL_FORMAT_BGRa8,
          KORVEL_PIXEL_FORMAT_RGB10p32, KORVEL_PIXEL_FORMAT_BGR10p32}) {
      if (PlaceInFiles(format).bmp.masks == head.masks) found = format;
    }
  } else if (head.compression == 0) {
    const auto blueFirst = PlaceInFiles(KORVEL_PIXEL_FORMAT_BGR8).bmp.masks;
    found =
        head.pixelOffset == kMasksEnd && head.masks == blueFirst ? KORVEL_PIXEL_FORMAT_BGR8 : KORVEL_PIXEL_FORMAT_RGB8;
    if (head.coloursUsed == 256 && head.coloursImportant == 256) found = KORVEL_PIXEL_FORMAT_Mono8;
  }
  const bool fits = found != KORVEL_PIXEL_FORMAT_Invalid && PlaceInFiles(found).bmp.bits == head.bits;
  return fits ? found : uint32_t{KORVEL_PIXEL_FORMAT_Invalid};
}

struct Expectation {
  KORVEL_RETURN_CODE code = KORVEL_RETURN_CODE_Io;
  uint32_t format = KORVEL_PIXEL_FORMAT_Invalid;
  size_t width = 0;
  size_t height = 0;
  size_t lineBytes = 0;
};

Expectation Expected(ByteView file) {
  Expectation expected;
  const BmpHead head = HeadOf(file);
  size_t headBytes = korvel_test::kBmpHeaderBytes;
  if (file.size() < headBytes || head.magic != 19778 || head.infoSize < 40) return expected;
  if (HasMasks(head)) headBytes += kMaskBytes;
  if (HasTable(head)) headBytes += kTableBytes;
  if (file.size() < headBytes) return expected;
  expected.format = FormatOf(head);
  if (expected.format == KORVEL_PIXEL_FORMAT_Invalid) {
    expected.code = KORVEL_RETURN_CODE_ImageFormatNotSupported;
    return expected;
  }
  if (head.width < 1 || head.height == 0 || head.height == std::numeric_limits<int32_t>::min()) return expected;
  if (head.pixelOffset < headBytes || head.pixelOffset > file.size()) return expected;
  expected.width = static_cast<size_t>(head.width);
  expected.height = static_cast<size_t>(head.height < 0 ? -head.height : head.height);
  expected.lineBytes = expected.width * (head.bits / 8u);
  const size_t padding = korvel_test::BmpPadding(expected.lineBytes);
  const size_t needed = (expected.lineBytes + padding) * expected.height - padding;
  const bool isLarge = expected.lineBytes * expected.height > korvel_fuzz::Session::kLargestAllocation;
  if (needed <= file.size() - head.pixelOffset && !isLarge) expected.code = KORVEL_RETURN_CODE_Success;
  return expected;
}

void Check(ByteView file, const ReadOutcome& outcome) {
  const Expectation expected = Expected(file);
  KORVEL_FUZZ_REQUIRE(outcome.code == expected.code);
  if (!outcome.image) return;
  KORVEL_FUZZ_REQUIRE(outcome.image->Format() == expected.format);
  KORVEL_FUZZ_REQUIRE(outcome.image->Width() == expected.width && outcome.image->Height() == expected.height);
  const BmpHead head = HeadOf(file);
  const size_t step = expected.lineBytes + korvel_test::BmpPadding(expected.lineBytes);
  for (size_t i = 0; i < expected.height; ++i) {
    const size_t y = head.height < 0 ? i : expected.height - 1 - i;
    KORVEL_FUZZ_REQUIRE(std::ranges::equal(outcome.image->Bytes().subspan(y * expected.lineBytes, expected.lineBytes),
                                           file.subspan(head.pixelOffset + i * step, expected.lineBytes)));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static korvel_fuzz::ReaderSession session(korvel_test::FileType::kBmp,
                                            {KORVEL_RETURN_CODE_Io, KORVEL_RETURN_CODE_ImageFormatNotSupported});
  session.Run({data, size}, Check);
  return 0;
}
