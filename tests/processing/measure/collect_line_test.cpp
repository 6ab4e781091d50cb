#include "processing/measure/collect_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/format_table.h"
#include "tests/model/measure_model.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::CollectLine;
using img::processing::LineRecord;
using img::processing::ModuleTimingRecord;
using img::processing::ModuleTimingRegistry;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::Fill;
using korvel_test::FormatRow;
using korvel_test::kFormatTable;
using korvel_test::MakeFilledImage;
using korvel_test::ModelImage;
using korvel_test::ModelLine;
using korvel_test::TestImage;
using testing::ElementsAre;
using testing::IsEmpty;

bool IsMeasured(const FormatRow& row) { return korvel_test::IsPublicFormat(row) && (!row.packed || row.channels == 3); }

TEST(CollectLine, ReadsOneFormatAfterTheOtherIntoOneRecord) {
  CollectLine line;
  LineRecord record;
  size_t measured = 0;
  for (const FormatRow& row : kFormatTable) {
    if (!IsMeasured(row)) continue;
    ++measured;
    const auto format = static_cast<PixelFormatId>(row.id);
    const ModelImage input = MakeFilledImage(row.id, 5, 3, Fill::kGarbage, row.id);
    const TestImage image(format, 5, 3, input.bytes);
    for (const uint64_t offset : {uint64_t{0}, uint64_t{2}, uint64_t{4}, uint64_t{5}, UINT64_MAX}) {
      for (const bool isHorizontal : {true, false}) {
        SCOPED_TRACE(testing::Message() << row.name << ", " << (isHorizontal ? "row " : "column ") << offset);
        line.Process(*image, isHorizontal, offset, record);
        EXPECT_EQ(record.format, format);
        EXPECT_EQ(record.isHorizontal, isHorizontal);
        EXPECT_EQ(record.offset, offset);
        EXPECT_EQ(record.channels, ModelLine(input, isHorizontal ? 0 : 1, offset));
      }
    }
  }
  EXPECT_EQ(measured, 29u) << "RGB10p32 and BGR10p32 too";
}

TEST(CollectLine, ReadsThreeFieldsOfAWord) {
  CollectLine line;
  LineRecord record;
  const TestImage image(PixelFormatId::RGB10p32, 1, 1, Bytes{0x01, 0x08, 0xF0, 0xFF});
  line.Process(*image, true, 0, record);
  EXPECT_THAT(record.channels, ElementsAre(ElementsAre(1), ElementsAre(2), ElementsAre(1023)));
}

TEST(CollectLine, ReadsWithinAPartOfAnImage) {
  CollectLine line;
  LineRecord record;
  const TestImage image(PixelFormatId::Mono8, 3, 3, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
  const auto part = image.Shared()->Region({1, 1}, {2, 1});
  line.Process(*part, true, 0, record);
  EXPECT_THAT(record.channels, ElementsAre(ElementsAre(5, 6)));
  line.Process(*part, false, 1, record);
  EXPECT_THAT(record.channels, ElementsAre(ElementsAre(6)));
  line.Process(*part, true, 1, record);
  EXPECT_THAT(record.channels, ElementsAre(IsEmpty()));
}

TEST(CollectLine, RefusesFormatsWhoseChannelsHaveNoAddress) {
  CollectLine line;
  size_t refused = 0;
  for (const FormatRow& row : kFormatTable) {
    const bool isPublic = korvel_test::IsPublicFormat(row) || row.id == 0;
    if (!isPublic || IsMeasured(row)) continue;
    const TestImage image(static_cast<PixelFormatId>(row.id), 4, 2);
    LineRecord record;
    for (const bool isHorizontal : {true, false}) {
      EXPECT_EQ(FailureOf([&] { line.Process(*image, isHorizontal, 1, record); }),
                (Failure{-1003, 9004, "IMPLEMENT IT!!! format: " + std::string(row.name)}));
    }
    ++refused;
  }
  EXPECT_EQ(refused, 21u);
}

TEST(CollectLine, CountsItsRunsUnderItsName) {
  const auto runs = [] {
    for (const ModuleTimingRecord& record : ModuleTimingRegistry::Instance().Records()) {
      if (record.name == "PM_Measure::CollectLine") return record.count;
    }
    return uint64_t{0};
  };
  CollectLine line;
  const uint64_t before = runs();
  const TestImage image(PixelFormatId::Mono8, 1, 1, Bytes{9});
  LineRecord record;
  line.Process(*image, true, 0, record);
  line.Process(*image, false, 0, record);
  EXPECT_EQ(runs(), before + 2);
}

}  // namespace
