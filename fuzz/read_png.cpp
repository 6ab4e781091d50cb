// Files with the ending ".png". Inputs that libFuzzer has changed get the checksums of their chunks set right, most of
// the time: otherwise hardly any would come further than the first chunk.
#include <korvel/korvel.h>
#include <zlib.h>

#include "fuzz/fuzz_input.h"
#include "fuzz/reading.h"

// libFuzzer's own change of an input; absent where the inputs are replayed.
extern "C" __attribute__((weak)) size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

using korvel_fuzz::ByteView;

constexpr size_t kSignatureBytes = 8;
constexpr size_t kBytesAroundContent = 12;  // length and name before it, checksum behind it

uint32_t BigEndianAt(ByteView bytes, size_t offset) {
  return uint32_t{bytes[offset]} << 24 | uint32_t{bytes[offset + 1]} << 16 | uint32_t{bytes[offset + 2]} << 8 |
         bytes[offset + 3];
}

void RepairChecksums(std::span<uint8_t> file) {
  size_t at = kSignatureBytes;
  while (at < file.size() && file.size() - at >= kBytesAroundContent) {
    const size_t content = BigEndianAt(file, at);
    if (content > file.size() - at - kBytesAroundContent) return;
    const uint32_t checksum = static_cast<uint32_t>(crc32(0, file.data() + at + 4, static_cast<unsigned>(4 + content)));
    for (size_t i = 0; i < 4; ++i) file[at + 8 + content + i] = static_cast<uint8_t>(checksum >> (24 - 8 * i));
    at += kBytesAroundContent + content;
  }
}

// The header chunk comes first, or the file would not have been read.
void Check(ByteView file, const korvel_fuzz::ReadOutcome& outcome) {
  if (!outcome.image) return;
  constexpr size_t kWidth = 16;
  constexpr size_t kHeight = 20;
  KORVEL_FUZZ_REQUIRE(file.size() > kHeight + 4);
  KORVEL_FUZZ_REQUIRE(outcome.image->Width() == BigEndianAt(file, kWidth));
  KORVEL_FUZZ_REQUIRE(outcome.image->Height() == BigEndianAt(file, kHeight));
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
  const size_t mutated = LLVMFuzzerMutate(data, size, maxSize);
  if (seed % 8 != 0) RepairChecksums({data, mutated});
  return mutated;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static korvel_fuzz::ReaderSession session(korvel_test::FileType::kPng,
                                            {KORVEL_RETURN_CODE_Io, KORVEL_RETURN_CODE_ImageFormatNotSupported});
  session.Run({data, size}, Check);
  return 0;
}
