// Files with the ending ".raw", against what the header's rules say of them.
#include <korvel/korvel.h>

#include <algorithm>

#include "fuzz/fuzz_input.h"
#include "fuzz/reading.h"

namespace {

using korvel_fuzz::ByteView;
using korvel_fuzz::ReadOutcome;

struct RawHeader {
  uint32_t format;
  uint64_t byteCount;
  uint64_t width;
  uint64_t height;
};

RawHeader HeaderOf(ByteView file) {
  korvel_fuzz::FuzzInput fields(file.data(), file.size());
  RawHeader header{};
  header.format = fields.Take<uint32_t>();
  header.byteCount = fields.Take<uint64_t>();
  header.width = fields.Take<uint64_t>();
  header.height = fields.Take<uint64_t>();
  return header;
}

KORVEL_RETURN_CODE ExpectedCode(ByteView file) {
  if (file.size() < korvel_test::kRawHeaderBytes) return KORVEL_RETURN_CODE_Io;
  const RawHeader header = HeaderOf(file);
  if (header.format == KORVEL_PIXEL_FORMAT_Invalid) return KORVEL_RETURN_CODE_Io;
  if (!korvel_fuzz::IsPublic(header.format)) return KORVEL_RETURN_CODE_Error;
  if (header.width == 0 || header.height == 0) return KORVEL_RETURN_CODE_OutOfRange;
  // No format has more than one pixel in a byte, so neither side exceeds the bytes that are there.
  const size_t available = file.size() - korvel_test::kRawHeaderBytes;
  const bool isPlausible = header.width <= available && header.height <= available && header.byteCount <= available &&
                           header.byteCount <= korvel_fuzz::Session::kLargestAllocation;
  if (!isPlausible || korvel_test::BytesOfImage(header.format, header.width, header.height) != header.byteCount) {
    return KORVEL_RETURN_CODE_Io;
  }
  return KORVEL_RETURN_CODE_Success;
}

void Check(ByteView file, const ReadOutcome& outcome) {
  KORVEL_FUZZ_REQUIRE(outcome.code == ExpectedCode(file));
  if (!outcome.image) return;
  const RawHeader header = HeaderOf(file);
  KORVEL_FUZZ_REQUIRE(outcome.image->Format() == header.format);
  KORVEL_FUZZ_REQUIRE(outcome.image->Width() == header.width && outcome.image->Height() == header.height);
  KORVEL_FUZZ_REQUIRE(
      std::ranges::equal(outcome.image->Bytes(), file.subspan(korvel_test::kRawHeaderBytes, header.byteCount)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static korvel_fuzz::ReaderSession session(
      korvel_test::FileType::kRaw, {KORVEL_RETURN_CODE_Io, KORVEL_RETURN_CODE_Error, KORVEL_RETURN_CODE_OutOfRange});
  session.Run({data, size}, Check);
  return 0;
}
