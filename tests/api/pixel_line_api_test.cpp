#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "tests/model/format_table.h"
#include "tests/model/measure_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"
#include "tests/support/seen_image.h"

namespace {

using korvel_test::Bytes;
using korvel_test::CallersMemory;
using korvel_test::ExportedImage;
using korvel_test::Fill;
using korvel_test::FormatOf;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MarkLastError;
using korvel_test::ModelImage;
using korvel_test::ModelLine;
using korvel_test::ModelLineChannel;
using korvel_test::OddImage;
using korvel_test::ReadLastError;
using korvel_test::RefusalAsPacked;
using korvel_test::SeenOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kRow = KORVEL_ORIENTATION_Horizontal;
constexpr uint32_t kColumn = KORVEL_ORIENTATION_Vertical;

const auto kNoHandle = reinterpret_cast<KORVEL_PIXEL_LINE_HANDLE>(0x5A5A);
const LastError kOffsetOutOfRange{6, "offset is out of range!"};

class MeasuredLine {
 public:
  MeasuredLine(KORVEL_IMAGE_HANDLE image, uint32_t orientation, size_t offset) {
    EXPECT_EQ(KORVEL_PixelLine_Construct(image, orientation, offset, &handle_), 0u) << ReadLastError();
  }
  MeasuredLine(const MeasuredLine&) = delete;
  MeasuredLine& operator=(const MeasuredLine&) = delete;
  ~MeasuredLine() { EXPECT_EQ(KORVEL_PixelLine_Destruct(handle_), 0u); }

  KORVEL_PIXEL_LINE_HANDLE Handle() const { return handle_; }

  uint32_t Format() const {
    uint32_t format = 0x5A5A;
    EXPECT_EQ(KORVEL_PixelLine_GetPixelFormat(handle_, &format), 0u);
    return format;
  }
  uint32_t Orientation() const {
    uint32_t orientation = 0x5A5A;
    EXPECT_EQ(KORVEL_PixelLine_GetOrientation(handle_, &orientation), 0u);
    return orientation;
  }
  size_t Offset() const {
    size_t offset = 0x5A5A;
    EXPECT_EQ(KORVEL_PixelLine_GetOffset(handle_, &offset), 0u);
    return offset;
  }
  size_t NumChannels() const {
    size_t channels = 0x5A5A;
    EXPECT_EQ(KORVEL_PixelLine_GetNumChannels(handle_, &channels), 0u);
    return channels;
  }
  ModelLineChannel Channel(size_t channel) const {
    size_t size = 0x5A5A;
    EXPECT_EQ(KORVEL_PixelLine_GetValuesForChannel(handle_, channel, nullptr, &size), 0u);
    ModelLineChannel values(size);
    uint32_t none = 0;
    EXPECT_EQ(KORVEL_PixelLine_GetValuesForChannel(handle_, channel, size == 0 ? &none : values.data(), &size), 0u);
    EXPECT_EQ(size, values.size());
    return values;
  }
  std::vector<ModelLineChannel> Channels() const {
    std::vector<ModelLineChannel> channels;
    for (size_t channel = 0; channel < NumChannels(); ++channel) channels.push_back(Channel(channel));
    return channels;
  }

 private:
  KORVEL_PIXEL_LINE_HANDLE handle_ = nullptr;
};

void ExpectFailure(KORVEL_RETURN_CODE code, const LastError& expected) {
  EXPECT_EQ(code, expected.code);
  EXPECT_EQ(ReadLastError(), expected);
}

constexpr std::pair<size_t, size_t> kSizes[] = {{1, 1},  {2, 1},   {1, 2},   {4, 2},  {3, 5},
                                                {17, 9}, {32, 31}, {1, 300}, {301, 1}};

// The first line, the last, one between, the one just past the edge, and ones far out.
std::set<size_t> OffsetsFor(size_t limit) {
  return {0, limit / 2, limit - 1, limit, limit + 1, size_t{1} << 32, SIZE_MAX};
}

TEST(PixelLineApi, MeasuresEveryFormatThatIsNotPacked) {
  size_t measured = 0;
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (FormatOf(id).packed) continue;
    ++measured;
    for (const auto& [width, height] : kSizes) {
      const ModelImage input = MakeFilledImage(id, width, height, Fill::kGarbage, id + width);
      const OddImage image(input);
      for (const uint32_t orientation : {0u, 1u, 2u, 0x100u, 0xFFFFFFFFu}) {
        const size_t limit = orientation == kRow ? height : width;
        for (const size_t offset : OffsetsFor(limit)) {
          SCOPED_TRACE(testing::Message() << FormatOf(id).name << ", " << width << " x " << height << ", orientation "
                                          << orientation << ", offset " << offset);
          if (orientation <= kColumn && offset > limit) {
            KORVEL_PIXEL_LINE_HANDLE handle = kNoHandle;
            ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), orientation, offset, &handle), kOffsetOutOfRange);
            EXPECT_EQ(handle, kNoHandle);
            continue;
          }
          const LastError before = MarkLastError();
          const MeasuredLine line(image.Handle(), orientation, offset);
          EXPECT_EQ(line.Format(), id);
          EXPECT_EQ(line.Orientation(), orientation == kRow ? 0u : 1u);
          EXPECT_EQ(line.Offset(), offset);
          EXPECT_EQ(line.Channels(), ModelLine(input, orientation, offset));
          EXPECT_EQ(ReadLastError(), before);
          if (testing::Test::HasFailure()) return;
        }
      }
      EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
      EXPECT_TRUE(image.IsMarkedOutside());
    }
  }
  EXPECT_EQ(measured, 27u);
}

TEST(PixelLineApi, ReadsNothingBehindTheImage) {
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (FormatOf(id).packed) continue;
    for (const auto& [width, height] : kSizes) {
      const ModelImage input = MakeFilledImage(id, width, height, Fill::kRandom, id);
      const CallersMemory memory(input.bytes.size());
      std::memcpy(memory.Data(), input.bytes.data(), input.bytes.size());
      KORVEL_IMAGE_HANDLE handle = nullptr;
      ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(id, memory.Data(), input.bytes.size(), width, height, &handle), 0u);
      const ExportedImage image(handle);
      for (const size_t past : {0u, 1u}) {
        EXPECT_EQ(MeasuredLine(handle, kRow, height - 1 + past).Channels(), ModelLine(input, kRow, height - 1 + past));
        EXPECT_EQ(MeasuredLine(handle, kColumn, width - 1 + past).Channels(),
                  ModelLine(input, kColumn, width - 1 + past));
      }
      EXPECT_EQ(MeasuredLine(handle, 2, SIZE_MAX).Channels(), ModelLine(input, 2, SIZE_MAX));
    }
  }
}

TEST(PixelLineApi, ReadsRowsAndColumnsOfAByHandWrittenImage) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 4, 2, Bytes{1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_THAT(MeasuredLine(image.Handle(), kRow, 0).Channels(), ElementsAre(ElementsAre(1, 2, 3, 4)));
  EXPECT_THAT(MeasuredLine(image.Handle(), kRow, 1).Channels(), ElementsAre(ElementsAre(5, 6, 7, 8)));
  EXPECT_THAT(MeasuredLine(image.Handle(), kColumn, 3).Channels(), ElementsAre(ElementsAre(4, 8)));
  EXPECT_THAT(MeasuredLine(image.Handle(), kRow, 2).Channels(), ElementsAre(IsEmpty()));
  EXPECT_THAT(MeasuredLine(image.Handle(), kColumn, 4).Channels(), ElementsAre(IsEmpty()));
}

TEST(PixelLineApi, ReadsChannelsInTheOrderOfMemory) {
  const ExportedImage rgb(KORVEL_PIXEL_FORMAT_RGB8, 2, 1, Bytes{1, 2, 3, 4, 5, 6});
  const MeasuredLine line(rgb.Handle(), kRow, 0);
  EXPECT_EQ(line.NumChannels(), 3u);
  EXPECT_THAT(line.Channel(2), ElementsAre(3, 6));
  const ExportedImage bgra(KORVEL_PIXEL_FORMAT_BGRa12, 1, 1, Bytes{1, 0, 2, 0, 3, 0, 0xFF, 0xFF});
  EXPECT_THAT(MeasuredLine(bgra.Handle(), kColumn, 0).Channels(),
              ElementsAre(ElementsAre(1), ElementsAre(2), ElementsAre(3), ElementsAre(65535)))
      << "as stored, whatever the depth";
}

TEST(PixelLineApi, RefusesPackedFormats) {
  size_t refused = 0;
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (!FormatOf(id).packed) continue;
    SCOPED_TRACE(FormatOf(id).name);
    const ModelImage input = MakeFilledImage(id, 6, 4, Fill::kGarbage, id);
    const ExportedImage image(id, 6, 4, input.bytes);
    KORVEL_PIXEL_LINE_HANDLE handle = kNoHandle;
    for (const uint32_t orientation : {0u, 1u, 2u}) {
      for (const size_t offset : {0u, 99u}) {
        ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), orientation, offset, &handle),
                      RefusalAsPacked("PixelLine"));
      }
      ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), orientation, 0, nullptr), RefusalAsPacked("PixelLine"));
    }
    EXPECT_EQ(handle, kNoHandle);
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
    ++refused;
  }
  EXPECT_EQ(refused, 22u);
}

TEST(PixelLineApi, RefusesPixelsOfNoFormat) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Invalid, 2, 2);
  KORVEL_PIXEL_LINE_HANDLE handle = kNoHandle;
  for (const uint32_t orientation : {kRow, kColumn}) {
    ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), orientation, 0, &handle),
                  {1, "error: type=NotImplementedUtilx[-1003], module_id=9004, txt=IMPLEMENT IT!!! format: Invalid"});
  }
  EXPECT_EQ(handle, kNoHandle);
}

TEST(PixelLineApi, ChecksImageThenFormatThenPointerThenOffset) {
  ExpectFailure(KORVEL_PixelLine_Construct(nullptr, kRow, 99, nullptr), {2, "imageHandle is invalid!"});
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 3, 4);
  ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), kRow, 99, nullptr),
                {5, "pixelLineHandle is not a valid pointer!"});
  KORVEL_PIXEL_LINE_HANDLE handle = kNoHandle;
  ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), kRow, 5, &handle), kOffsetOutOfRange);
  ExpectFailure(KORVEL_PixelLine_Construct(image.Handle(), kColumn, 4, &handle), kOffsetOutOfRange);
  const ExportedImage invalid(KORVEL_PIXEL_FORMAT_Invalid, 2, 2);
  ExpectFailure(KORVEL_PixelLine_Construct(invalid.Handle(), kColumn, 3, &handle), kOffsetOutOfRange);
  EXPECT_EQ(handle, kNoHandle);
}

TEST(PixelLineApi, ChecksHandleThenPointerThenChannel) {
  const LastError badHandle{2, "pixelLineHandle is invalid!"};
  ExpectFailure(KORVEL_PixelLine_GetPixelFormat(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_PixelLine_GetOrientation(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_PixelLine_GetOffset(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_PixelLine_GetNumChannels(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_PixelLine_GetValuesForChannel(nullptr, 9, nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_PixelLine_Destruct(nullptr), badHandle);

  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1, 1);
  const MeasuredLine line(image.Handle(), kRow, 0);
  ExpectFailure(KORVEL_PixelLine_GetPixelFormat(line.Handle(), nullptr), {5, "pixelFormat is not a valid pointer!"});
  ExpectFailure(KORVEL_PixelLine_GetOrientation(line.Handle(), nullptr), {5, "orientation is not a valid pointer!"});
  ExpectFailure(KORVEL_PixelLine_GetOffset(line.Handle(), nullptr), {5, "offset is not a valid pointer!"});
  ExpectFailure(KORVEL_PixelLine_GetNumChannels(line.Handle(), nullptr), {5, "numChannels is not a valid pointer!"});
  uint32_t value = 7;
  ExpectFailure(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), 9, &value, nullptr),
                {5, "valuesSize is not a valid pointer!"});
  for (const size_t channel : {size_t{1}, size_t{1} << 32, SIZE_MAX}) {
    size_t size = 0;
    ExpectFailure(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), channel, &value, &size),
                  {6, "channelIndex is out of range!"});
    ExpectFailure(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), channel, nullptr, &size),
                  {6, "channelIndex is out of range!"});
    EXPECT_EQ(size, 0u);
  }
  EXPECT_EQ(value, 7u);
}

TEST(PixelLineApi, GivesValuesInTwoCalls) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BGR8, 3, 1, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
  const MeasuredLine line(image.Handle(), kRow, 0);
  const LastError before = MarkLastError();
  size_t size = 99;
  EXPECT_EQ(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), 1, nullptr, &size), 0u);
  EXPECT_EQ(size, 3u);
  std::vector<uint32_t> values(5, 77);
  size = 5;
  EXPECT_EQ(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), 1, values.data(), &size), 0u);
  EXPECT_EQ(size, 3u) << "how many were written";
  EXPECT_THAT(values, ElementsAre(2, 5, 8, 77, 77));
  EXPECT_EQ(ReadLastError(), before);
  values.assign(5, 77);
  for (const size_t tooSmall : {2u, 0u}) {
    size = tooSmall;
    ExpectFailure(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), 1, values.data(), &size),
                  {4, "*values is too small!"});
    EXPECT_EQ(size, tooSmall);
  }
  EXPECT_THAT(values, Each(77u));
}

TEST(PixelLineApi, FillsNothingWithALineWithoutValues) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_RGBa8, 2, 2);
  const MeasuredLine line(image.Handle(), kRow, 2);
  EXPECT_EQ(line.NumChannels(), 4u);
  uint32_t value = 7;
  for (const size_t given : {0u, 1u}) {
    size_t size = given;
    EXPECT_EQ(KORVEL_PixelLine_GetValuesForChannel(line.Handle(), 3, &value, &size), 0u);
    EXPECT_EQ(size, 0u);
  }
  EXPECT_EQ(value, 7u);
}

TEST(PixelLineApi, OutlivesTheImage) {
  std::optional<ExportedImage> image(std::in_place, uint32_t{KORVEL_PIXEL_FORMAT_Mono8}, size_t{2}, size_t{1},
                                     Bytes{4, 5});
  const MeasuredLine line(image->Handle(), kRow, 0);
  image->Data()[0] = 77;
  image.reset();
  EXPECT_THAT(line.Channel(0), ElementsAre(4, 5)) << "read at construction";
}

TEST(PixelLineApi, IsGoneAfterItsEnd) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1, 1);
  KORVEL_PIXEL_LINE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_PixelLine_Construct(image.Handle(), kRow, 0, &handle), 0u);
  ASSERT_EQ(KORVEL_PixelLine_Destruct(handle), 0u);
  ExpectFailure(KORVEL_PixelLine_Destruct(handle), {2, "pixelLineHandle is invalid!"});
  size_t offset = 7;
  ExpectFailure(KORVEL_PixelLine_GetOffset(handle, &offset), {2, "pixelLineHandle is invalid!"});
  EXPECT_EQ(offset, 7u);
}

TEST(PixelLineApi, FollowsAQuarterTurnInPlace) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 3, 1, Bytes{1, 2, 3});
  const korvel_test::ExportedTransformer transformer;
  ASSERT_EQ(KORVEL_ImageTransformer_RotateInPlace(transformer.Handle(), image.Handle(), 90), 0u);
  EXPECT_THAT(MeasuredLine(image.Handle(), kColumn, 0).Channels(), ElementsAre(ElementsAre(3, 2, 1)));
  EXPECT_THAT(MeasuredLine(image.Handle(), kRow, 2).Channels(), ElementsAre(ElementsAre(1)));
}

TEST(PixelLineApi, ServesSeveralThreads) {
  const ModelImage input = MakeFilledImage(KORVEL_PIXEL_FORMAT_RGB12, 40, 30, Fill::kRandom, 3);
  const ExportedImage image(input.format, 40, 30, input.bytes);
  const MeasuredLine shared(image.Handle(), kRow, 7);
  const auto work = [&](size_t offset) {
    for (int i = 0; i < 50; ++i) {
      ASSERT_EQ(shared.Channels(), ModelLine(input, kRow, 7));
      ASSERT_EQ(MeasuredLine(image.Handle(), kColumn, offset).Channels(), ModelLine(input, kColumn, offset));
    }
  };
  std::thread first(work, 1);
  std::thread second(work, 2);
  first.join();
  second.join();
}

}  // namespace
