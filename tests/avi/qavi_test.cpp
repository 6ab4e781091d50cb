// The functions on AVI files by handle: handles, reading, appending to what exists, and what each failure is called.
#include "avi/qavi.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/avi_files.h"
#include "tests/support/file_bytes.h"
#include "tests/support/temporary_directory.h"

namespace {

using avi::MainHeader;
using avi::QAVIError;
using avi::QAVIHandle;
using avi::StreamHeader;
using avi::VideoFormat;
using korvel_test::AviBytes;
using korvel_test::AviFile;
using korvel_test::BuildAviFile;
using korvel_test::MakeAviFrames;
using korvel_test::PlainAvi;
using korvel_test::ReadFileBytes;
using korvel_test::WriteFileBytes;

class QAVI : public testing::Test {
 protected:
  QAVIError OpenError(const std::string& name) {
    QAVIHandle handle = -7;
    const QAVIError error = avi::QAVIOpenFile(name, &handle);
    EXPECT_EQ(handle, -7) << "a failure writes no handle";
    return error;
  }
  QAVIError ModifyError(const std::string& name) {
    QAVIHandle handle = -7;
    const QAVIError error = avi::QAVIModifyFile(name, &handle);
    EXPECT_EQ(handle, -7);
    return error;
  }
  QAVIError CreateError(const std::string& name, size_t streams = 1) {
    QAVIHandle handle = -7;
    const QAVIError error = avi::QAVICreateFile(name, streams, &handle);
    EXPECT_EQ(handle, -7);
    return error;
  }

  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
};

AviBytes DataOf(QAVIHandle handle, size_t frame) {
  AviBytes buffer(1000);
  size_t size = 0;
  EXPECT_EQ(avi::QAVIGetData(handle, 0, frame, buffer, &size), QAVIError::Success);
  buffer.resize(size);
  return buffer;
}

TEST_F(QAVI, HasTheNumbersOfItsErrors) {
  EXPECT_EQ(static_cast<int>(QAVIError::Success), 0);
  EXPECT_EQ(static_cast<int>(QAVIError::Exception), 3);
  EXPECT_EQ(static_cast<int>(QAVIError::NoChunk), 100);
  EXPECT_EQ(static_cast<int>(QAVIError::OpenFailed), 500);
  EXPECT_EQ(static_cast<int>(QAVIError::PermissionDenied), 501);
  EXPECT_EQ(static_cast<int>(QAVIError::TooManyOpenFiles), 502);
  EXPECT_EQ(static_cast<int>(QAVIError::DiskFull), 503);
  EXPECT_EQ(static_cast<int>(QAVIError::NotOpen), 504);
  EXPECT_EQ(static_cast<int>(QAVIError::NoHeaderTree), 505);
  EXPECT_EQ(static_cast<int>(QAVIError::ReadFailed), 506);
  EXPECT_EQ(static_cast<int>(QAVIError::NoSuchFile), 507);
  EXPECT_EQ(static_cast<int>(QAVIError::FileExists), 508);
  EXPECT_EQ(static_cast<int>(QAVIError::InvalidArgument), 509);
  EXPECT_EQ(static_cast<int>(QAVIError::NoSuchStream), 1001);
  EXPECT_EQ(static_cast<int>(QAVIError::UnknownHandle), 1002);
  EXPECT_EQ(static_cast<int>(QAVIError::BufferTooSmall), 1200);
  EXPECT_EQ(static_cast<int>(QAVIError::NoIndexEntry), 1201);
  EXPECT_EQ(static_cast<int>(QAVIError::ParsingFailed), 1202);
}

TEST_F(QAVI, GivesTwoHandlesForOnePath) {
  const AviFile one(AviFile::Create(path));
  const AviFile two(AviFile::Create(path));
  EXPECT_GT(one.Handle(), 0);
  EXPECT_GT(two.Handle(), one.Handle());
}

TEST_F(QAVI, RefusesHandlesThatAreNotKnown) {
  const QAVIHandle closed = AviFile::Create(path);
  ASSERT_EQ(avi::QAVICloseFile(closed), QAVIError::Success);
  MainHeader mainHeader;
  StreamHeader streamHeader;
  VideoFormat format;
  std::string name;
  AviBytes bytes(10);
  size_t size = 0;
  for (const QAVIHandle handle : {closed, 0, -1, std::numeric_limits<QAVIHandle>::max()}) {
    SCOPED_TRACE(handle);
    EXPECT_EQ(avi::QAVICloseFile(handle), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIGetMainHeader(handle, &mainHeader), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIChangeMainHeader(handle, [](MainHeader&) {}), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIGetStreamHeader(handle, 0, &streamHeader), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIChangeStreamHeader(handle, 0, [](StreamHeader&) {}), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIGetStreamFormat(handle, 0, &format), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIChangeStreamFormat(handle, 0, [](VideoFormat&) {}), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIGetStreamName(handle, 0, &name), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVISetStreamName(handle, 0, "a"), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVISetData(handle, 0, bytes), QAVIError::UnknownHandle);
    EXPECT_EQ(avi::QAVIGetData(handle, 0, 0, bytes, &size), QAVIError::UnknownHandle);
    EXPECT_FALSE(avi::QAVIHasRoomFor(handle, 0));
  }
}

TEST_F(QAVI, RefusesNumbersOfStreamsAndLeavesNoFile) {
  EXPECT_EQ(CreateError(path, 0), QAVIError::NoSuchStream);
  EXPECT_EQ(CreateError(path, 5), QAVIError::NoSuchStream);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(QAVI, HasNoHeadersForStreamsThatAreNotThere) {
  const AviFile file(AviFile::Create(path));
  StreamHeader header;
  VideoFormat format;
  std::string name;
  AviBytes bytes(10);
  size_t size = 0;
  for (const size_t stream : {size_t{1}, size_t{3}, size_t{4}, SIZE_MAX}) {
    EXPECT_EQ(avi::QAVIGetStreamHeader(file.Handle(), stream, &header), QAVIError::NoChunk);
    EXPECT_EQ(avi::QAVIChangeStreamHeader(file.Handle(), stream, [](StreamHeader&) {}), QAVIError::NoChunk);
    EXPECT_EQ(avi::QAVIGetStreamFormat(file.Handle(), stream, &format), QAVIError::NoChunk);
    EXPECT_EQ(avi::QAVIChangeStreamFormat(file.Handle(), stream, [](VideoFormat&) {}), QAVIError::NoChunk);
    EXPECT_EQ(avi::QAVIGetStreamName(file.Handle(), stream, &name), QAVIError::NoChunk);
    EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), stream, "a"), QAVIError::NoChunk);
  }
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 4, 0, bytes, &size), QAVIError::NoSuchStream);
  EXPECT_EQ(avi::QAVISetData(file.Handle(), 4, bytes), QAVIError::NoSuchStream);
}

TEST_F(QAVI, HasDefaultHeaders) {
  const AviFile file(AviFile::Create(path));
  MainHeader mainHeader;
  ASSERT_EQ(avi::QAVIGetMainHeader(file.Handle(), &mainHeader), QAVIError::Success);
  EXPECT_EQ(mainHeader, (MainHeader{.flags = 0x810, .streams = 1}));
  StreamHeader streamHeader;
  ASSERT_EQ(avi::QAVIGetStreamHeader(file.Handle(), 0, &streamHeader), QAVIError::Success);
  EXPECT_EQ(streamHeader, (StreamHeader{.type = 0x73646976, .handler = 0x47504A4D, .scale = 1, .rate = 25}));
  VideoFormat format;
  ASSERT_EQ(avi::QAVIGetStreamFormat(file.Handle(), 0, &format), QAVIError::Success);
  EXPECT_EQ(format, (VideoFormat{.size = 40, .planes = 1, .bitCount = 24}));
  std::string name;
  ASSERT_EQ(avi::QAVIGetStreamName(file.Handle(), 0, &name), QAVIError::Success);
  EXPECT_EQ(name, "stream name");
}

TEST_F(QAVI, ReadsBackWhatWasWritten) {
  const auto frames = MakeAviFrames(127);
  {
    const AviFile file(AviFile::Create(path));
    ASSERT_EQ(avi::QAVIChangeMainHeader(file.Handle(), [](MainHeader& header) { header.width = 77; }),
              QAVIError::Success);
    ASSERT_EQ(avi::QAVISetStreamName(file.Handle(), 0, "camera 1"), QAVIError::Success);
    file.Append(frames);
  }
  const AviFile file(AviFile::Open(path));
  MainHeader mainHeader;
  ASSERT_EQ(avi::QAVIGetMainHeader(file.Handle(), &mainHeader), QAVIError::Success);
  EXPECT_EQ(mainHeader,
            (MainHeader{.flags = 0x810, .totalFrames = 127, .streams = 1, .suggestedBufferSize = 23, .width = 77}));
  StreamHeader streamHeader;
  ASSERT_EQ(avi::QAVIGetStreamHeader(file.Handle(), 0, &streamHeader), QAVIError::Success);
  EXPECT_EQ(streamHeader.length, 127u);
  EXPECT_EQ(streamHeader.suggestedBufferSize, 23u);
  VideoFormat format;
  ASSERT_EQ(avi::QAVIGetStreamFormat(file.Handle(), 0, &format), QAVIError::Success);
  EXPECT_EQ(format, (VideoFormat{.size = 40, .planes = 1, .bitCount = 24}));
  std::string name;
  ASSERT_EQ(avi::QAVIGetStreamName(file.Handle(), 0, &name), QAVIError::Success);
  EXPECT_EQ(name, "camera 1");
  for (size_t i = 0; i < frames.size(); ++i) EXPECT_EQ(DataOf(file.Handle(), i), frames[i]) << i;
}

TEST_F(QAVI, TellsWhatIsWrongWithARequestForData) {
  {
    const AviFile file(AviFile::Create(path));
    file.Append({{1, 2, 3}, {4}});
  }
  const AviFile file(AviFile::Open(path));
  AviBytes buffer = {9, 9, 9};
  size_t size = 77;
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 2, buffer, &size), QAVIError::NoIndexEntry);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, SIZE_MAX, buffer, &size), QAVIError::NoIndexEntry);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 1, 0, buffer, &size), QAVIError::NoIndexEntry);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 4, 0, buffer, &size), QAVIError::NoSuchStream);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 0, std::span(buffer).first(2), &size), QAVIError::BufferTooSmall);
  EXPECT_EQ(buffer, (AviBytes{9, 9, 9}));
  EXPECT_EQ(size, 77u);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 0, buffer, &size), QAVIError::Success);
  EXPECT_EQ(buffer, (AviBytes{1, 2, 3}));
  EXPECT_EQ(size, 3u);
  // The file shrinks under the reader's feet.
  ASSERT_EQ(truncate(path.c_str(), 254), 0);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 0, buffer, &size), QAVIError::ReadFailed);
}

TEST_F(QAVI, RefusesToWriteToAFileThatWasOpenedForReading) {
  {
    const AviFile file(AviFile::Create(path));
    file.Append({{1, 2, 3}});
  }
  const AviBytes before = ReadFileBytes(path);
  AviFile file(AviFile::Open(path));
  EXPECT_EQ(avi::QAVISetData(file.Handle(), 0, AviBytes{4}), QAVIError::PermissionDenied);
  EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), 0, "a"), QAVIError::PermissionDenied);
  file.Close();
  EXPECT_EQ(ReadFileBytes(path), before);
}

TEST_F(QAVI, AppendsToAFileThatExists) {
  const auto frames = MakeAviFrames(130);
  for (const size_t first : {0u, 1u, 3u, 126u}) {
    SCOPED_TRACE(first);
    {
      const AviFile file(AviFile::Create(path));
      file.Append({frames.begin(), frames.begin() + static_cast<ptrdiff_t>(first)});
    }
    {
      const AviFile file(AviFile::Modify(path));
      file.Append({frames.begin() + static_cast<ptrdiff_t>(first), frames.end()});
    }
    EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi(frames)));
  }
}

TEST_F(QAVI, LeavesAFileAsItWasIfNothingIsAppended) {
  {
    const AviFile file(AviFile::Create(path));
    file.Append(MakeAviFrames(5));
  }
  const AviBytes before = ReadFileBytes(path);
  { const AviFile file(AviFile::Modify(path)); }
  EXPECT_EQ(ReadFileBytes(path), before);
}

TEST_F(QAVI, EmptiesAFileThatIsCreatedAgain) {
  WriteFileBytes(path, AviBytes(5000, 7));
  { const AviFile file(AviFile::Create(path)); }
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi({})));
}

TEST_F(QAVI, NamesAStreamBeforeItsFirstFrameOnly) {
  const AviFile file(AviFile::Create(path));
  EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), 0, ""), QAVIError::Success);
  EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), 0, std::string(1000, 'x')), QAVIError::Success);
  file.Append({{1}});
  EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), 0, "late"), QAVIError::PermissionDenied);
  std::string name;
  EXPECT_EQ(avi::QAVIGetStreamName(file.Handle(), 0, &name), QAVIError::Success);
  EXPECT_EQ(name, std::string(1000, 'x'));
}

// A longer name of any stream would move the frames of all.
TEST_F(QAVI, NamesNoStreamOfAFileWithFrames) {
  {
    const AviFile file(AviFile::Create(path, 2));
    file.Append({{1}}, 0);
  }
  const AviFile file(AviFile::Modify(path));
  EXPECT_EQ(avi::QAVISetStreamName(file.Handle(), 1, "another name"), QAVIError::PermissionDenied);
}

TEST_F(QAVI, TurnsAnExceptionIntoAnError) {
  const AviFile file(AviFile::Create(path));
  EXPECT_EQ(avi::QAVIChangeMainHeader(file.Handle(), [](MainHeader&) { throw std::runtime_error("no"); }),
            QAVIError::Exception);
  MainHeader header;
  EXPECT_EQ(avi::QAVIGetMainHeader(file.Handle(), &header), QAVIError::Success) << "the file isn't locked any more";
}

TEST_F(QAVI, TellsWhyAFileCannotBeOpened) {
  EXPECT_EQ(OpenError(path), QAVIError::NoSuchFile);
  EXPECT_EQ(ModifyError(path), QAVIError::NoSuchFile);
  EXPECT_EQ(CreateError(directory.File("missing/a.avi")), QAVIError::NoSuchFile);
  EXPECT_EQ(CreateError(""), QAVIError::NoSuchFile);
  EXPECT_EQ(CreateError(std::string("a\0b", 3)), QAVIError::InvalidArgument);
  EXPECT_EQ(OpenError(directory.Path()), QAVIError::InvalidArgument) << "a directory holds no bytes";
  EXPECT_EQ(CreateError(directory.Path()), QAVIError::OpenFailed);
  EXPECT_EQ(ModifyError(directory.Path()), QAVIError::OpenFailed);
}

TEST_F(QAVI, TellsThatPermissionIsMissing) {
  ASSERT_EQ(chmod(directory.Path().c_str(), 0), 0);
  // The system refuses nothing to root, so that another user makes the call.
  const uid_t nobody = 65534;
  const auto self = static_cast<uid_t>(setfsuid(nobody));
  const QAVIError error = CreateError(path);
  setfsuid(self);
  EXPECT_EQ(error, QAVIError::PermissionDenied);
}

TEST_F(QAVI, TellsThatTooManyFilesAreOpen) {
  // The same call first: sanitizers need descriptors themselves where they come for the first time.
  ASSERT_EQ(CreateError(directory.File("missing/a.avi")), QAVIError::NoSuchFile);
  const int lowest = open("/dev/null", O_RDONLY | O_CLOEXEC);
  ASSERT_GE(lowest, 0);
  close(lowest);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  rlimit none = limit;
  none.rlim_cur = static_cast<rlim_t>(lowest);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const QAVIError error = CreateError(path);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(error, QAVIError::TooManyOpenFiles);
}

TEST_F(QAVI, TellsThatTheDiskIsFull) {
  QAVIHandle handle = 0;
  ASSERT_EQ(avi::QAVICreateFile("/dev/full", 1, &handle), QAVIError::Success);
  EXPECT_EQ(avi::QAVISetData(handle, 0, AviBytes{1}), QAVIError::DiskFull);
  EXPECT_EQ(avi::QAVICloseFile(handle), QAVIError::DiskFull);
  EXPECT_EQ(avi::QAVICloseFile(handle), QAVIError::UnknownHandle);
}

TEST_F(QAVI, ForgetsAFrameThatCouldNotBeWritten) {
  AviFile file(AviFile::Create(path));
  file.Append({{1, 2, 3}, {4}});
  // The system refuses to make the file longer, as a full disk does.
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  rlimit none = limit;
  none.rlim_cur = ReadFileBytes(path).size() + 5;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
  EXPECT_EQ(avi::QAVISetData(file.Handle(), 0, AviBytes(100, 9)), QAVIError::DiskFull);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, handler);
  file.Append({{5, 6}});
  file.Close();
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi({{1, 2, 3}, {4}, {5, 6}})));
}

// Its beginning would lie behind the index, which is shorter.
TEST_F(QAVI, LeavesNothingOfAFrameThatCouldNotBeWritten) {
  AviFile file(AviFile::Create(path));
  file.Append({{1, 2, 3}, {4}});
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  rlimit none = limit;
  none.rlim_cur = ReadFileBytes(path).size() + 500;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
  EXPECT_EQ(avi::QAVISetData(file.Handle(), 0, AviBytes(1000, 9)), QAVIError::DiskFull);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, handler);
  file.Close();
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi({{1, 2, 3}, {4}})));
}

// The file's 32-bit sizes hold up to 4294967295 bytes behind their own place: 228 are there before the frames' list,
// that list takes 4 and a head of 8, the index a head of 8 and 16 for the frame, and the frame's chunk 8.
TEST_F(QAVI, HasRoomForFramesAsLongAsSizesFit32Bits) {
  const AviFile file(AviFile::Create(path));
  EXPECT_TRUE(avi::QAVIHasRoomFor(file.Handle(), 0));
  EXPECT_TRUE(avi::QAVIHasRoomFor(file.Handle(), 4294967026));
  EXPECT_FALSE(avi::QAVIHasRoomFor(file.Handle(), 4294967027));
  EXPECT_FALSE(avi::QAVIHasRoomFor(file.Handle(), 4294967295));
  EXPECT_FALSE(avi::QAVIHasRoomFor(file.Handle(), 4294967296));
  EXPECT_FALSE(avi::QAVIHasRoomFor(file.Handle(), SIZE_MAX));
  file.Append({{1, 2, 3}});  // 12 bytes and 16 in the index
  EXPECT_TRUE(avi::QAVIHasRoomFor(file.Handle(), 4294966998));
  EXPECT_FALSE(avi::QAVIHasRoomFor(file.Handle(), 4294966999));
}

TEST_F(QAVI, LeavesNoDescriptorBehind) {
  WriteFileBytes(directory.File("damaged.avi"), AviBytes(100, 1));
  const size_t before = korvel_test::OpenDescriptors();
  for (int i = 0; i < 100; ++i) {
    { const AviFile file(AviFile::Create(path)); }
    { const AviFile file(AviFile::Open(path)); }
    { const AviFile file(AviFile::Modify(path)); }
    EXPECT_EQ(OpenError(directory.File("damaged.avi")), QAVIError::ParsingFailed);
    EXPECT_EQ(OpenError(directory.Path()), QAVIError::InvalidArgument);
  }
  EXPECT_EQ(korvel_test::OpenDescriptors(), before);
}

}  // namespace
