// A file of any type, read as any format: the request decides over success, and over the image's format, by the rules
// of the file type alone, and never over pixels.
#include <korvel/korvel.h>

#include <iterator>
#include <optional>

#include "fuzz/input_layouts.h"
#include "fuzz/reading.h"

namespace {

using korvel_fuzz::DescriptorCheck;
using korvel_fuzz::ReadOutcome;
using korvel_test::FileType;
using korvel_test::kFileTypes;

class RequestSession {
 public:
  void Run(FileType type, uint32_t requested, korvel_fuzz::ByteView content) {
    const DescriptorCheck descriptors;
    korvel_fuzz::ScratchFile& file = files_[static_cast<size_t>(type)];
    file.Rewrite(content);
    const ReadOutcome plain = korvel_fuzz::Read(file.Path());
    const ReadOutcome outcome = korvel_fuzz::ReadAs(file.Path(), requested);
    if (requested == KORVEL_PIXEL_FORMAT_Invalid) {
      KORVEL_FUZZ_REQUIRE(outcome.code == KORVEL_RETURN_CODE_ImageFormatNotSupported);
      return;
    }
    if (!plain.image) {
      // Types differ in whether the request or the rest of the file is looked at first.
      KORVEL_FUZZ_REQUIRE(outcome.code == plain.code ||
                          outcome.code == KORVEL_RETURN_CODE_ImageFormatInterpretationError);
      return;
    }
    const std::optional<uint32_t> format = korvel_test::FormatWhenReadAs(type, plain.image->Format(), requested);
    if (!format) {
      KORVEL_FUZZ_REQUIRE(outcome.code == KORVEL_RETURN_CODE_ImageFormatInterpretationError);
      return;
    }
    KORVEL_FUZZ_REQUIRE(outcome.image && outcome.image->Format() == *format);
    KORVEL_FUZZ_REQUIRE(outcome.image->HasSamePixels(*plain.image));
  }

 private:
  korvel_fuzz::ScratchFile MakeFile(FileType type) const {
    return korvel_fuzz::ScratchFile(session_.PathOf("input" + korvel_test::EndingOf(type)));
  }

  korvel_fuzz::Session session_;
  korvel_fuzz::ScratchFile files_[std::size(kFileTypes)] = {MakeFile(kFileTypes[0]), MakeFile(kFileTypes[1]),
                                                            MakeFile(kFileTypes[2]), MakeFile(kFileTypes[3])};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static RequestSession session;
  const korvel_fuzz::ReadRequest request = korvel_fuzz::DecodeHead(korvel_fuzz::kReadRequestLayout, data, size);
  session.Run(kFileTypes[request.fileType % std::size(kFileTypes)], request.format, {data, size});
  return 0;
}
