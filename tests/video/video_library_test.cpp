// What video writers are, whoever writes the file: statuses, names, factories, and what a writer lacks that replaces
// nothing.
#include "video/video_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/recorder.h"
#include "tests/support/video_frames.h"
#include "video/avi_legacy.h"
#include "video/video_status.h"

namespace {

using korvel_test::StatusOf;
using libvideo::ChannelOrder;
using libvideo::Container;
using libvideo::Encoder;
using libvideo::VideoOptionType;
using libvideo::VideoOptionValue;
using libvideo::VideoPixelFormat;
using libvideo::VideoStatus;

// The value and text of the std::system_error that a call throws.
template <class Call>
std::pair<int, std::string> SystemErrorOf(Call&& call) {
  try {
    call();
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().category(), libvideo::detail::video_error_category::Instance());
    return {error.code().value(), error.what()};
  }
  return {};
}

TEST(VideoStatus, HasATextForEachValue) {
  const auto& category = libvideo::detail::video_error_category::Instance();
  EXPECT_STREQ(category.name(), "libvideo status code");
  EXPECT_EQ(category.message(0), "Success");
  EXPECT_EQ(category.message(1), "No success");
  EXPECT_EQ(category.message(2), "Not supported");
  EXPECT_EQ(category.message(3), "Could not access");
  EXPECT_EQ(category.message(4), "Invalid handle");
  EXPECT_EQ(category.message(5), "Invalid parameter");
  EXPECT_EQ(category.message(6), "Queue is full");
  EXPECT_EQ(category.message(7), "Timeout");
  EXPECT_EQ(category.message(8), "Not initialized");
  EXPECT_EQ(category.message(9), "Not available");
  for (const int other : {-1, 10, 11, 301, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(category.message(other), "Unknown status code") << other;
  }
}

TEST(VideoStatus, BecomesAnExceptionInTheOperationsName) {
  EXPECT_EQ(SystemErrorOf([] { libvideo::ThrowOnFailure(MakeErrorCode(VideoStatus::QueueIsFull), "append"); }),
            (std::pair<int, std::string>(6, "append: Queue is full")));
  EXPECT_NO_THROW(libvideo::ThrowOnFailure(MakeErrorCode(VideoStatus::Success), "append"));
}

TEST(VideoStatus, IsMappedFromThePipelinesStatus) {
  const std::map<int, VideoStatus> expected = {
      {0, VideoStatus::Success},
      {301, VideoStatus::NoSuccess},
      {302, VideoStatus::NoSuccess},
      {303, VideoStatus::NoSuccess},
      {304, VideoStatus::InvalidParameter},
      {305, VideoStatus::NoSuccess},
      {307, VideoStatus::NoSuccess},
      {309, VideoStatus::NoSuccess},
      {310, VideoStatus::NoSuccess},
      {314, VideoStatus::InvalidParameter},
      {316, VideoStatus::InvalidParameter},
      {318, VideoStatus::InvalidParameter},
      {326, VideoStatus::NoSuccess},
      {329, VideoStatus::Timeout},
      {330, VideoStatus::QueueIsFull},
  };
  for (const auto& [slotStatus, videoStatus] : expected) {
    EXPECT_EQ(libvideo::ToVideoStatus(libvideo::SlotStatus{slotStatus}), videoStatus) << slotStatus;
  }
}

TEST(VideoNames, AreToldForEachNumber) {
  const std::vector<std::string> containers = {"Unknown", "AVI", "MP4", "MKV", "Unknown"};
  for (uint32_t i = 0; i < containers.size(); ++i) EXPECT_EQ(NameOf(Container{i}), containers[i]);
  const std::vector<std::string> encoders = {"Unknown", "AVI",  "MJPEG", "MPEG2",  "MPEG4",
                                             "AVC",     "HEVC", "AV1",   "Unknown"};
  for (uint32_t i = 0; i < encoders.size(); ++i) EXPECT_EQ(NameOf(Encoder{i}), encoders[i]);
  const std::vector<std::string> types = {"String", "Uint32", "Int32", "Double", "Unknown"};
  for (uint32_t i = 0; i < types.size(); ++i) EXPECT_EQ(NameOf(VideoOptionType{i}), types[i]);
}

TEST(VideoFactory, OffersOneContainerAndOneEncoder) {
  const auto factories = libvideo::MakeFactories();
  ASSERT_EQ(factories.size(), 1u);
  EXPECT_NE(factories[0], libvideo::MakeFactories()[0]) << "made anew for each use";
  EXPECT_EQ(factories[0]->name(), "avi_legacy");
  EXPECT_THAT(factories[0]->supportedContainers(), testing::ElementsAre(Container::Avi));
  EXPECT_THAT(factories[0]->supportedEncoders(), testing::ElementsAre(Encoder::Mjpeg));
}

TEST(VideoFactory, ListsItsFormatsInOrder) {
  const auto factories = libvideo::MakeFactories();
  const std::vector<VideoPixelFormat> formats = factories.at(0)->supportedPixelFormats(Encoder::Mjpeg);
  ASSERT_EQ(formats.size(), korvel_test::kVideoFormats.size());
  for (size_t i = 0; i < formats.size(); ++i) {
    const korvel_test::VideoFormatCase& expected = korvel_test::kVideoFormats[i];
    EXPECT_EQ(formats[i].name, expected.name);
    EXPECT_EQ(formats[i].bitsPerPixel, expected.bits);
    EXPECT_EQ(formats[i].channels, expected.channels);
    EXPECT_EQ(static_cast<uint32_t>(formats[i].channelOrder), expected.order);
  }
  for (uint32_t encoder = 0; encoder < 10; ++encoder) {
    if (encoder == 2) continue;
    EXPECT_TRUE(factories[0]->supportedPixelFormats(Encoder{encoder}).empty()) << encoder;
  }
}

TEST(VideoFactory, CreatesAviWithMjpegAlone) {
  const auto factories = libvideo::MakeFactories();
  for (uint32_t container = 0; container < 5; ++container) {
    for (uint32_t encoder = 0; encoder < 9; ++encoder) {
      const auto failure = SystemErrorOf([&] { factories[0]->create(Container{container}, Encoder{encoder}); });
      if (container == 1 && encoder == 2) {
        EXPECT_EQ(failure, (std::pair<int, std::string>()));
      } else {
        EXPECT_EQ(failure, (std::pair<int, std::string>(5, "AviLegacy: Invalid parameter")));
      }
    }
  }
}

TEST(VideoFactory, FindsTheFirstThatOffersBoth) {
  const auto video = libvideo::CreateFirstAvailable(Container::Avi, Encoder::Mjpeg);
  EXPECT_EQ(video->GetContainer(), Container::Avi);
  EXPECT_EQ(video->GetEncoder(), Encoder::Mjpeg);
  const auto create = [](Container container, Encoder encoder) {
    return SystemErrorOf([&] { libvideo::CreateFirstAvailable(container, encoder); });
  };
  const std::pair<int, std::string> notSupported(2, "CreateFirstAvailable: Not supported");
  EXPECT_EQ(create(Container::Mp4, Encoder::Mjpeg), notSupported);
  EXPECT_EQ(create(Container::Avi, Encoder::Avi), notSupported);
}

// Replaces what it has to.
class PlainVideo final : public libvideo::VideoLibrary {
 public:
  PlainVideo() : VideoLibrary(Container::Mkv, Encoder::Av1) {}
  void openFile(const std::string&, std::error_code&) override {}
  void closeFile(std::error_code&) override {}
  bool isOpen() const override { return false; }
};

TEST(VideoLibrary, KeepsSizeAndFormat) {
  PlainVideo video;
  EXPECT_EQ(StatusOf([&](std::error_code& error) { video.setDimensions({7, 9}, error); }), VideoStatus::Success);
  EXPECT_EQ(video.dimensions(), (img::Size2D{7, 9}));
  const VideoPixelFormat format = {"RGB24", 24, 3, ChannelOrder::RedFirst};
  EXPECT_EQ(StatusOf([&](std::error_code& error) { video.setSourceFormat(format, error); }), VideoStatus::Success);
  EXPECT_EQ(video.sourceFormat().name, "RGB24");
  EXPECT_TRUE(video.sourceFormat().IsLike(format));
  EXPECT_EQ(video.GetContainer(), Container::Mkv);
  EXPECT_EQ(video.GetEncoder(), Encoder::Av1);
}

TEST(VideoLibrary, SupportsNothingElse) {
  PlainVideo video;
  VideoOptionValue value;
  uint32_t number = 0;
  libvideo::VideoStatistics statistics;
  using Error = std::error_code&;
  EXPECT_EQ(StatusOf([&](Error error) { video.setOption("fps", 1.0, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(StatusOf([&](Error error) { video.option("fps", value, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(StatusOf([&](Error error) { video.optionRange("fps", value, value, value, error); }),
            VideoStatus::NotSupported);
  EXPECT_TRUE(video.options().empty());
  EXPECT_EQ(StatusOf([&](Error error) { video.append(nullptr, 0, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(video.fileSize(), 0u);
  EXPECT_FALSE(video.statistics(statistics));
  video.resetFrameCounters();
  EXPECT_EQ(StatusOf([&](Error error) { video.waitUntilDone(0, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(StatusOf([&](Error error) { video.waitUntilQueueEmpty(0, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(video.queued(), 0xFFFFFFFFu);
  EXPECT_EQ(video.queueSize(), 0xFFFFFFFFu);
  EXPECT_EQ(StatusOf([&](Error error) { video.queueSizeRange(number, number, error); }), VideoStatus::NotSupported);
  EXPECT_EQ(StatusOf([&](Error error) { video.setQueueSize(5, error); }), VideoStatus::NotSupported);
}

TEST(VideoLibrary, ThrowsWhereTheQueueSizeIsSetWithoutAnErrorCode) {
  PlainVideo video;
  libvideo::VideoLibrary& library = video;
  EXPECT_EQ(SystemErrorOf([&] { library.setQueueSize(5); }),
            (std::pair<int, std::string>(2, "setQueueSize: Not supported")));
}

TEST(VideoStatistics, AreUnknownUntilTheyAreHad) {
  const libvideo::VideoStatistics statistics;
  EXPECT_EQ(statistics.framesWritten, ~uint64_t{0});
  EXPECT_EQ(statistics.framesDropped, ~uint64_t{0});
  EXPECT_EQ(statistics.bytesWritten, ~uint64_t{0});
}

TEST(VideoOptionValue, HasItsTypesInOrder) {
  EXPECT_EQ(VideoOptionValue(std::string()).index(), static_cast<size_t>(VideoOptionType::String));
  EXPECT_EQ(VideoOptionValue(uint32_t{1}).index(), static_cast<size_t>(VideoOptionType::Uint32));
  EXPECT_EQ(VideoOptionValue(int32_t{1}).index(), static_cast<size_t>(VideoOptionType::Int32));
  EXPECT_EQ(VideoOptionValue(1.0).index(), static_cast<size_t>(VideoOptionType::Double));
}

}  // namespace
