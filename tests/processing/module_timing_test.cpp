#include "processing/module_timing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using img::processing::ModuleTimingRecord;
using img::processing::ModuleTimingRegistry;
using img::processing::ScopedModuleTiming;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ModuleTimingRecord, StartsWithoutARun) {
  ModuleTimingRegistry registry;
  registry.IdOf("PM_Conversion::A");
  const ModuleTimingRecord record = registry.Records().at(0);
  EXPECT_EQ(record.name, "PM_Conversion::A");
  EXPECT_EQ(record.last, 0.0);
  EXPECT_EQ(record.minimum, std::numeric_limits<double>::max());
  EXPECT_EQ(record.maximum, std::numeric_limits<double>::min()) << "the smallest positive normal number";
  EXPECT_EQ(record.sum, 0.0);
  EXPECT_EQ(record.count, 0u);
  EXPECT_THAT(record.lastDurations, Each(0.0));
}

TEST(ModuleTimingRegistry, IsOneForTheProcess) {
  EXPECT_EQ(&ModuleTimingRegistry::Instance(), &ModuleTimingRegistry::Instance());
}

TEST(ModuleTimingRegistry, GivesAKnownNameItsIdAndANewNameTheNext) {
  ModuleTimingRegistry registry;
  EXPECT_THAT(registry.Records(), IsEmpty());
  const uint32_t first = registry.IdOf("PM_Conversion::A");
  const uint32_t second = registry.IdOf("PM_Measure::A");
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(registry.IdOf("PM_Conversion::A"), first);
  EXPECT_EQ(registry.IdOf("PM_Measure::A"), second);
  EXPECT_EQ(registry.IdOf("PM_Measure::a"), second + 1) << "names are compared exactly";
  EXPECT_EQ(registry.IdOf("PM_Measure::"), second + 2);
  EXPECT_EQ(registry.Records().size(), 4u);
}

TEST(ModuleTimingRegistry, KeepsLastSmallestLargestSumAndCount) {
  ModuleTimingRegistry registry;
  const uint32_t id = registry.IdOf("A");
  const uint32_t other = registry.IdOf("B");
  registry.AddRun(id, 3.0);
  registry.AddRun(id, 0.5);
  registry.AddRun(id, 2.0);
  const ModuleTimingRecord record = registry.Records().at(0);
  EXPECT_EQ(record.last, 2.0);
  EXPECT_EQ(record.minimum, 0.5);
  EXPECT_EQ(record.maximum, 3.0);
  EXPECT_EQ(record.sum, 5.5);
  EXPECT_EQ(record.count, 3u);
  EXPECT_THAT(record.lastDurations, ElementsAre(3.0, 0.5, 2.0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(registry.Records().at(other).count, 0u);
}

TEST(ModuleTimingRegistry, TakesRunsOfNoOrOfNegativeDuration) {
  ModuleTimingRegistry registry;
  const uint32_t id = registry.IdOf("A");
  registry.AddRun(id, 0.0);
  EXPECT_EQ(registry.Records().at(0).minimum, 0.0);
  EXPECT_EQ(registry.Records().at(0).maximum, std::numeric_limits<double>::min());
  // The clock may be set back during a run.
  registry.AddRun(id, -1.0);
  EXPECT_EQ(registry.Records().at(0).minimum, -1.0);
  EXPECT_EQ(registry.Records().at(0).sum, -1.0);
  EXPECT_EQ(registry.Records().at(0).count, 2u);
}

TEST(ModuleTimingRegistry, KeepsTheLastNineRunsInARing) {
  ModuleTimingRegistry registry;
  const uint32_t id = registry.IdOf("A");
  for (int run = 0; run < 9; ++run) registry.AddRun(id, run);
  EXPECT_THAT(registry.Records().at(0).lastDurations, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  registry.AddRun(id, 9);
  registry.AddRun(id, 10);
  EXPECT_THAT(registry.Records().at(0).lastDurations, ElementsAre(9, 10, 2, 3, 4, 5, 6, 7, 8));
  EXPECT_EQ(registry.Records().at(0).count, 11u);
  for (int run = 11; run < 21; ++run) registry.AddRun(id, run);
  EXPECT_THAT(registry.Records().at(0).lastDurations, ElementsAre(18, 19, 20, 12, 13, 14, 15, 16, 17));
  EXPECT_EQ(registry.Records().at(0).sum, 210.0);
}

TEST(ModuleTimingRegistry, MakesTheRecordOfAnIdThatItHasNot) {
  ModuleTimingRegistry registry;
  registry.AddRun(7, 1.5);
  ASSERT_EQ(registry.Records().size(), 1u);
  EXPECT_EQ(registry.Records().at(0).name, "");
  EXPECT_EQ(registry.Records().at(0).count, 1u);
  EXPECT_EQ(registry.IdOf("A"), 8u) << "the next id, not one that is taken";
}

TEST(ModuleTimingRegistry, GivesCopies) {
  ModuleTimingRegistry registry;
  const uint32_t id = registry.IdOf("A");
  std::vector<ModuleTimingRecord> records = registry.Records();
  records[0].name = "changed";
  registry.AddRun(id, 1.0);
  EXPECT_EQ(records[0].count, 0u);
  EXPECT_EQ(registry.Records().at(0).name, "A");
}

TEST(ModuleTimingRegistry, ServesSeveralThreads) {
  ModuleTimingRegistry registry;
  constexpr int kThreads = 4;
  constexpr int kRuns = 1000;
  std::array<uint32_t, kThreads> ids{};
  std::vector<std::thread> threads;
  for (size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&registry, &id = ids.at(thread), thread] {
      for (int run = 0; run < kRuns; ++run) {
        id = registry.IdOf("shared");
        registry.AddRun(id, 1.0);
        registry.AddRun(registry.IdOf("own " + std::to_string(thread)), 2.0);
        if (run % 100 == 0) registry.Records();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(ids, Each(ids[0]));
  const std::vector<ModuleTimingRecord> records = registry.Records();
  ASSERT_EQ(records.size(), kThreads + 1u);
  EXPECT_EQ(records.at(ids[0]).count, uint64_t{kThreads} * kRuns);
  EXPECT_EQ(records.at(ids[0]).sum, 4000.0);
}

TEST(ScopedModuleTiming, AddsTheTimeOfItsScopeInMilliseconds) {
  const uint32_t id = ModuleTimingRegistry::Instance().IdOf("ScopedModuleTimingTest");
  {
    const ScopedModuleTiming timing(id);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  const ModuleTimingRecord record = ModuleTimingRegistry::Instance().Records().at(id);
  EXPECT_EQ(record.count, 1u);
  EXPECT_GE(record.last, 19.0);
  EXPECT_LT(record.last, 10000.0);
  EXPECT_EQ(record.sum, record.last);
  EXPECT_EQ(record.lastDurations[0], record.last);
}

}  // namespace
