// Repairs files of any bytes. What comes out is, to the last byte, the file that a plain model makes of its frames,
// which are bytes of the input in its order; and a second repair finds it whole.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "fuzz/session.h"
#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "video/avi_repair.h"

namespace {

using korvel_fuzz::ByteView;
using korvel_test::AviBytes;
using korvel_test::AviModel;
using libvideo::AviRepair;
using Outcome = AviRepair::Outcome;

constexpr uint64_t kFrameTimeUs = 40000;

class RepairSession {
 public:
  void Run(ByteView content) {
    const korvel_fuzz::DescriptorCheck descriptors;
    file_.Rewrite(content);
    RequireRepaired(content, Repair(file_.Path(), 0), 0);
    RequireRepaired(content, Repair(file_.Path(), kFrameTimeUs), kFrameTimeUs);
  }

 private:
  AviRepair Repair(const std::string& path, uint64_t frameTimeUs) {
    std::remove(output_.c_str());
    uint64_t before = 0;
    return libvideo::RepairAvi(path, output_, frameTimeUs, [&](uint64_t done, uint64_t all) {
      KORVEL_FUZZ_REQUIRE(before <= done && done < all);
      before = done;
      return true;
    });
  }

  void RequireRepaired(ByteView content, const AviRepair& repair, uint64_t frameTimeUs) {
    if (repair.outcome != Outcome::Repaired) {
      KORVEL_FUZZ_REQUIRE(repair.outcome == Outcome::Whole || repair.outcome == Outcome::NoFrame ||
                          (repair.outcome == Outcome::NoFrameTime && frameTimeUs == 0));
      return;
    }
    KORVEL_FUZZ_REQUIRE(repair.frames > 0 && repair.width > 0 && repair.height > 0 && repair.frameTimeUs > 0);
    KORVEL_FUZZ_REQUIRE(frameTimeUs == 0 || repair.frameTimeUs == frameTimeUs);
    KORVEL_FUZZ_REQUIRE((repair.placesSkipped > 0) == (repair.bytesSkipped > 0));
    KORVEL_FUZZ_REQUIRE(repair.bytesTooMany == 0);
    const AviModel model = korvel_test::ParseAviFile(korvel_test::ReadFileBytes(output_));
    KORVEL_FUZZ_REQUIRE(model.frames.size() == repair.frames && model.microSecondsPerFrame == repair.frameTimeUs);
    KORVEL_FUZZ_REQUIRE(model.width == repair.width && model.height == repair.height);
    auto place = content.begin();
    uint64_t frameBytes = 0;
    for (const AviBytes& frame : model.frames) {
      place = std::search(place, content.end(), frame.begin(), frame.end());
      KORVEL_FUZZ_REQUIRE(place != content.end());
      place += static_cast<ptrdiff_t>(frame.size());
      frameBytes += frame.size();
    }
    KORVEL_FUZZ_REQUIRE(frameBytes + repair.bytesSkipped + repair.bytesCutOff < content.size());

    const AviRepair again =
        libvideo::RepairAvi(output_, file_.Path() + ".none", 0, [](uint64_t, uint64_t) { return true; });
    KORVEL_FUZZ_REQUIRE(again.outcome == Outcome::Whole && again.frames == repair.frames);
  }

  korvel_fuzz::Session session_;
  korvel_fuzz::ScratchFile file_{session_.PathOf("input.avi")};
  std::string output_ = session_.PathOf("output.avi");
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static RepairSession session;
  session.Run({data, size});
  return 0;
}
