#include "video/avi_repair.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "tests/support/small_pictures.h"
#include "tests/support/temporary_directory.h"
#include "video/seams.h"

namespace {

using korvel_test::AviBytes;
using korvel_test::AviModel;
using korvel_test::BuildAviFile;
using korvel_test::BuildAviFileBeforeClose;
using korvel_test::RecordedAvi;
using korvel_test::SmallPicture;
using korvel_test::SmallPictures;
using libvideo::AviRepair;
using Outcome = AviRepair::Outcome;

constexpr uint32_t kWidth = 32;
constexpr uint32_t kHeight = 16;

AviModel Recording(size_t frames, uint32_t frameTimeUs = 40000, uint32_t rate = 25) {
  return RecordedAvi(kWidth, kHeight, SmallPictures(frames, kWidth, kHeight), frameTimeUs, rate);
}

// The same with the frames from one to before another.
AviModel Part(AviModel model, size_t first, size_t end) {
  model.frames = {model.frames.begin() + static_cast<ptrdiff_t>(first),
                  model.frames.begin() + static_cast<ptrdiff_t>(end)};
  return model;
}

AviBytes Cut(AviBytes bytes, size_t byteCount) {
  bytes.resize(byteCount);
  return bytes;
}

size_t ChunkByteCount(const AviBytes& frame) { return 8 + frame.size() + frame.size() % 2; }

// Where a frame's chunk begins.
size_t PlaceOf(const AviModel& model, size_t frame) {
  size_t place = korvel_test::kAviHeaderByteCount;
  for (size_t i = 0; i < frame; ++i) place += ChunkByteCount(model.frames[i]);
  return place;
}

class AviRepairTest : public testing::Test {
 protected:
  AviRepair Repair(const AviBytes& bytes, uint64_t frameTimeUs = 0) {
    korvel_test::WriteFileBytes(input_, bytes);
    std::filesystem::remove(output_);
    return libvideo::RepairAvi(input_, output_, frameTimeUs, [](uint64_t, uint64_t) { return true; });
  }

  AviBytes Output() const { return korvel_test::ReadFileBytes(output_); }
  bool HasOutput() const { return std::filesystem::exists(output_); }

  korvel_test::TemporaryDirectory directory_;
  std::string input_ = directory_.File("input.avi");
  std::string output_ = directory_.File("output.avi");
};

// The 126th frame and each 126th after it leave the main header in another place.
TEST_F(AviRepairTest, MakesTheFileThatClosingWouldHaveMade) {
  for (const size_t count : {1u, 2u, 125u, 126u, 127u, 252u, 300u}) {
    const AviModel model = Recording(count, 33333, 30);
    const AviRepair repair = Repair(BuildAviFileBeforeClose(model));
    ASSERT_EQ(repair.outcome, Outcome::Repaired) << count;
    EXPECT_EQ(repair.frames, count);
    EXPECT_EQ(repair.width, kWidth);
    EXPECT_EQ(repair.height, kHeight);
    EXPECT_EQ(repair.frameTimeUs, 33333u);
    EXPECT_EQ(repair.bytesCutOff + repair.bytesSkipped + repair.bytesTooMany, 0u);
    EXPECT_TRUE(Output() == BuildAviFile(model)) << count;
  }
}

TEST_F(AviRepairTest, LeavesOutAFrameThatIsCutOffAnywhere) {
  const AviModel model = Recording(3);
  const AviBytes file = BuildAviFileBeforeClose(model);
  const size_t place = PlaceOf(model, 2);
  const size_t end = place + 8 + model.frames[2].size();
  for (size_t size = place + 1; size < end; ++size) {
    const AviRepair repair = Repair(Cut(file, size));
    ASSERT_EQ(repair.outcome, Outcome::Repaired) << size;
    EXPECT_EQ(repair.bytesCutOff, size - place);
    EXPECT_EQ(repair.bytesSkipped, 0u);
    EXPECT_TRUE(Output() == BuildAviFile(Part(model, 0, 2))) << size;
  }
}

TEST_F(AviRepairTest, KeepsAFrameWhosePaddingIsMissing) {
  AviModel model = Recording(1);
  model.frames.push_back(SmallPicture(kWidth, kHeight, 131));
  AviBytes file = BuildAviFileBeforeClose(model);
  file.pop_back();
  ASSERT_EQ(Repair(file).outcome, Outcome::Repaired);
  EXPECT_TRUE(Output() == BuildAviFile(model));
}

// While the index is written, sizes and counts are those of the whole file.
TEST_F(AviRepairTest, MendsAFileWhoseIndexIsCutOffAnywhere) {
  const AviModel model = Recording(5);
  const AviBytes file = BuildAviFile(model);
  for (size_t size = PlaceOf(model, 5); size < file.size(); ++size) {
    const AviRepair repair = Repair(Cut(file, size));
    ASSERT_EQ(repair.outcome, Outcome::Repaired) << size;
    EXPECT_TRUE(Output() == file) << size;
  }
}

TEST_F(AviRepairTest, FindsAWholeFileWhole) {
  for (const size_t count : {0u, 1u, 130u}) {
    const AviRepair repair = Repair(BuildAviFile(Recording(count)));
    EXPECT_EQ(repair.outcome, Outcome::Whole) << count;
    EXPECT_EQ(repair.frames, count);
    EXPECT_FALSE(HasOutput());
  }
}

TEST_F(AviRepairTest, MendsAFileWhoseIndexDiffersFromItsFrames) {
  const AviModel model = Recording(4);
  const AviBytes file = BuildAviFile(model);
  const size_t index = PlaceOf(model, 4) + 8;
  for (const size_t number : {0u, 8u, 12u}) {  // of an entry: id, place and size
    AviBytes damaged = file;
    damaged[index + 16 + number] ^= 1;
    ASSERT_EQ(Repair(damaged).outcome, Outcome::Repaired) << number;
    EXPECT_TRUE(Output() == file) << number;
  }
  AviBytes wrongCount = file;
  wrongCount[48] = 3;
  ASSERT_EQ(Repair(wrongCount).outcome, Outcome::Repaired);
  EXPECT_TRUE(Output() == file);
}

TEST_F(AviRepairTest, SkipsAFrameWhosePictureIsDamaged) {
  const AviModel model = Recording(5);
  const AviBytes file = BuildAviFileBeforeClose(model);
  AviModel left = model;
  left.frames.erase(left.frames.begin() + 2);
  const size_t place = PlaceOf(model, 2);
  struct Damage {
    const char* what;
    size_t begin;
    size_t end;
  };
  const size_t chunk = ChunkByteCount(model.frames[2]);
  for (const Damage& damage : {Damage{"id", 0, 4}, Damage{"size", 4, 8}, Damage{"begin", 8, 10}, Damage{"kind", 16, 18},
                               Damage{"end", chunk - 3, chunk}, Damage{"all", 0, chunk}}) {
    AviBytes damaged = file;
    std::fill(damaged.begin() + static_cast<ptrdiff_t>(place + damage.begin),
              damaged.begin() + static_cast<ptrdiff_t>(place + damage.end), uint8_t{0});
    const AviRepair repair = Repair(damaged);
    ASSERT_EQ(repair.outcome, Outcome::Repaired) << damage.what;
    EXPECT_EQ(repair.frames, 4u) << damage.what;
    EXPECT_EQ(repair.placesSkipped, 1u) << damage.what;
    EXPECT_EQ(repair.firstSkipped, place) << damage.what;
    EXPECT_EQ(repair.bytesSkipped, chunk) << damage.what;
    EXPECT_TRUE(Output() == BuildAviFile(left)) << damage.what;
  }
}

TEST_F(AviRepairTest, GoesOnBehindASizeThatReachesBeyondTheFile) {
  const AviModel model = Recording(3);
  AviBytes damaged = BuildAviFileBeforeClose(model);
  damaged[PlaceOf(model, 1) + 7] = 0x7F;
  const AviRepair repair = Repair(damaged);
  ASSERT_EQ(repair.outcome, Outcome::Repaired);
  EXPECT_EQ(repair.frames, 2u);
  EXPECT_EQ(repair.bytesCutOff, 0u);
  EXPECT_EQ(repair.bytesSkipped, ChunkByteCount(model.frames[1]));
}

// Longer than what is looked at in one go, with what looks like frames.
TEST_F(AviRepairTest, FindsAFrameBehindMuchElse) {
  const AviModel model = Recording(2);
  const AviBytes file = BuildAviFileBeforeClose(model);
  const AviBytes lure = {'0', '0', 'd', 'c', 0x80, 0, 0, 0, 0xFF, 0xD8, 0xFF};
  for (const size_t count : {65536u - 5, 65536u, 200000u}) {
    AviBytes between(count);
    for (size_t i = 0; i + lure.size() <= count; i += 1009) {
      std::copy(lure.begin(), lure.end(), between.begin() + static_cast<ptrdiff_t>(i));
    }
    AviBytes damaged = file;
    damaged.insert(damaged.begin() + static_cast<ptrdiff_t>(PlaceOf(model, 1)), between.begin(), between.end());
    const AviRepair repair = Repair(damaged);
    ASSERT_EQ(repair.outcome, Outcome::Repaired) << count;
    EXPECT_EQ(repair.bytesSkipped, count);
    EXPECT_EQ(repair.placesSkipped, 1u);
    EXPECT_TRUE(Output() == BuildAviFile(model)) << count;
  }
}

TEST_F(AviRepairTest, SkipsPicturesOfAnotherSize) {
  AviModel model = Recording(3);
  model.frames.insert(model.frames.begin() + 1, SmallPicture(kWidth, kHeight + 1, 150));
  const AviRepair repair = Repair(BuildAviFileBeforeClose(model));
  ASSERT_EQ(repair.outcome, Outcome::Repaired);
  EXPECT_EQ(repair.bytesSkipped, 158u);
  EXPECT_TRUE(Output() == BuildAviFile(Recording(3)));
}

TEST_F(AviRepairTest, NeedsTheFrameTimeOnlyIfTheHeadersAreDamaged) {
  const AviModel model = Recording(3);
  const AviBytes file = BuildAviFileBeforeClose(model);
  for (size_t offset = 0; offset < korvel_test::kAviHeaderByteCount; offset += 4) {
    AviBytes damaged = file;
    std::fill_n(damaged.begin() + static_cast<ptrdiff_t>(offset), 4, uint8_t{0});
    const Outcome outcome = Repair(damaged).outcome;
    EXPECT_TRUE(outcome == Outcome::Repaired || outcome == Outcome::NoFrameTime) << offset;
    ASSERT_EQ(Repair(damaged, 40000).outcome, Outcome::Repaired) << offset;
    EXPECT_TRUE(Output() == BuildAviFile(model)) << offset;
  }
  AviBytes misnamed = file;
  misnamed[24] = 'x';
  EXPECT_EQ(Repair(misnamed).outcome, Outcome::NoFrameTime);
  const AviBytes noHeaders(file.begin() + 250, file.end());
  EXPECT_EQ(Repair(noHeaders).outcome, Outcome::NoFrameTime);
  EXPECT_FALSE(HasOutput());
  const AviRepair repair = Repair(noHeaders, 40000);
  ASSERT_EQ(repair.outcome, Outcome::Repaired);
  EXPECT_EQ(repair.firstSkipped, 0u);
  EXPECT_TRUE(Output() == BuildAviFile(Part(model, 1, 3)));
}

TEST_F(AviRepairTest, TakesAFrameTimeBeforeThatOfTheHeaders) {
  ASSERT_EQ(Repair(BuildAviFileBeforeClose(Recording(3, 40000, 25)), 20000).outcome, Outcome::Repaired);
  EXPECT_TRUE(Output() == BuildAviFile(Recording(3, 20000, 50)));
}

TEST_F(AviRepairTest, MakesNothingOfAFileWithoutAFrame) {
  const AviBytes file = BuildAviFileBeforeClose(Recording(1));
  for (const size_t size : {0u, 1u, 100u, 244u, 252u, 260u}) {
    EXPECT_EQ(Repair(Cut(file, size)).outcome, Outcome::NoFrame) << size;
    EXPECT_FALSE(HasOutput());
  }
  EXPECT_EQ(Repair(AviBytes(100000, 'x'), 40000).outcome, Outcome::NoFrame);
}

TEST_F(AviRepairTest, TakesLittleMemoryForALargeIndexOfNothing) {
  constexpr uint32_t kIndexByteCount = 256 << 20;
  constexpr uint32_t kFormByteCount = 4 + 12 + 8 + kIndexByteCount;
  AviBytes file;
  const auto add = [&](std::string_view id, uint32_t size) {
    file.insert(file.end(), id.begin(), id.end());
    for (int shift = 0; shift < 32; shift += 8) file.push_back(static_cast<uint8_t>(size >> shift));
  };
  add("RIFF", kFormByteCount);
  for (const char c : std::string_view("AVI ")) file.push_back(static_cast<uint8_t>(c));
  add("LIST", 4);
  for (const char c : std::string_view("movi")) file.push_back(static_cast<uint8_t>(c));
  add("idx1", kIndexByteCount);
  korvel_test::WriteFileBytes(input_, file);
  std::filesystem::resize_file(input_, 8 + uint64_t{kFormByteCount});

  const auto mostKibibytes = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  };
  const long before = mostKibibytes();
  const auto goesOn = [](uint64_t, uint64_t) { return true; };
  EXPECT_EQ(libvideo::RepairAvi(input_, output_, 40000, goesOn).outcome, Outcome::NoFrame);
  EXPECT_LT(mostKibibytes() - before, 64 << 10);
}

TEST_F(AviRepairTest, ReadsRegularFilesOnly) {
  const auto repair = [&](const std::string& path) {
    return libvideo::RepairAvi(path, output_, 0, [](uint64_t, uint64_t) { return true; }).outcome;
  };
  EXPECT_EQ(repair(directory_.File("missing.avi")), Outcome::CannotRead);
  EXPECT_EQ(repair(directory_.File("")), Outcome::CannotRead);
}

TEST_F(AviRepairTest, TellsAnOutputThatCannotBeWritten) {
  korvel_test::WriteFileBytes(input_, BuildAviFileBeforeClose(Recording(2)));
  const auto repair = [&](const std::string& path) {
    return libvideo::RepairAvi(input_, path, 0, [](uint64_t, uint64_t) { return true; }).outcome;
  };
  EXPECT_EQ(repair(directory_.File("missing/output.avi")), Outcome::CannotWrite);
  const uint64_t little = 5024;
  libvideo::Seams::Instance().freeKibibytes = &little;
  EXPECT_EQ(repair(output_), Outcome::CannotWrite);
  libvideo::Seams::Instance().freeKibibytes = nullptr;
}

TEST_F(AviRepairTest, EndsWhenItIsTold) {
  const AviModel model = Recording(4);
  korvel_test::WriteFileBytes(input_, BuildAviFileBeforeClose(model));
  std::vector<uint64_t> done;
  const AviRepair repair = libvideo::RepairAvi(input_, output_, 0, [&](uint64_t now, uint64_t) {
    done.push_back(now);
    return done.size() < 3;
  });
  EXPECT_EQ(repair.outcome, Outcome::Stopped);
  EXPECT_EQ(done, (std::vector<uint64_t>{PlaceOf(model, 0) + 8, PlaceOf(model, 1) + 8, PlaceOf(model, 2) + 8}));
}

TEST_F(AviRepairTest, EndsWhenItIsToldWhereNoFrameIsFound) {
  constexpr uint64_t kByteCount = 1 << 20;
  korvel_test::WriteFileBytes(input_, AviBytes(kByteCount, 'x'));
  std::vector<uint64_t> done;
  const AviRepair repair = libvideo::RepairAvi(input_, output_, 40000, [&](uint64_t now, uint64_t all) {
    EXPECT_EQ(all, kByteCount);
    done.push_back(now);
    return done.size() < 3;
  });
  EXPECT_EQ(repair.outcome, Outcome::Stopped);
  ASSERT_EQ(done.size(), 3u);
  EXPECT_LT(done[0], done[1]);
  EXPECT_LT(done[1], done[2]);
  EXPECT_FALSE(HasOutput());
}

}  // namespace
