// Files with the ending ".jpg".
#include <korvel/korvel.h>

#include "fuzz/reading.h"

namespace {

void Check(korvel_fuzz::ByteView, const korvel_fuzz::ReadOutcome& outcome) {
  if (!outcome.image) return;
  const uint32_t format = outcome.image->Format();
  KORVEL_FUZZ_REQUIRE(format == KORVEL_PIXEL_FORMAT_Mono8 || format == KORVEL_PIXEL_FORMAT_RGB8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static korvel_fuzz::ReaderSession session(korvel_test::FileType::kJpeg,
                                            {KORVEL_RETURN_CODE_Io, KORVEL_RETURN_CODE_ImageFormatNotSupported});
  session.Run({data, size}, Check);
  return 0;
}
