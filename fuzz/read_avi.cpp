// AVI files, opened for reading and for appending, against a plain model of the files that recordings leave behind.
// Other files are refused, or read as far as they go; and a file that can be appended to can be read afterwards.
#include <algorithm>
#include <array>
#include <exception>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "avi/qavi.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/session.h"
#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"

namespace {

using avi::QAVIError;
using avi::QAVIHandle;
using korvel_fuzz::ByteView;
using korvel_test::AviBytes;
using korvel_test::AviModel;

constexpr size_t kMostStreams = 4;
constexpr std::array<uint8_t, 3> kNewFrame = {0xA5, 0x5A, 0xA5};

// Some entries are looked up only, since many of them may name most of the file.
constexpr size_t kMostFramesRead = 64;

bool IsOneOf(QAVIError error, std::initializer_list<QAVIError> errors) {
  return std::ranges::find(errors, error) != errors.end();
}

// A file that is open, and closed with the scope.
class OpenFile {
 public:
  using Opener = QAVIError(const std::string&, QAVIHandle*);

  // Not open if the file is refused.
  OpenFile(Opener& opener, const std::string& path) {
    const QAVIError error = opener(path, &handle_);
    KORVEL_FUZZ_REQUIRE(IsOneOf(error, {QAVIError::Success, QAVIError::ParsingFailed}));
    KORVEL_FUZZ_REQUIRE((error == QAVIError::Success) == (handle_ != 0));
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (handle_ == 0) return;
    KORVEL_FUZZ_REQUIRE(avi::QAVICloseFile(handle_) == QAVIError::Success);
    KORVEL_FUZZ_REQUIRE(avi::QAVICloseFile(handle_) == QAVIError::UnknownHandle);
  }

  explicit operator bool() const { return handle_ != 0; }
  QAVIHandle Handle() const { return handle_; }

  size_t FramesOf(size_t stream) const {
    size_t frame = 0;
    size_t size = 0;
    while (avi::QAVIGetData(handle_, stream, frame, {}, &size) != QAVIError::NoIndexEntry) ++frame;
    return frame;
  }

  // Nothing if the index tells of more bytes than may be, or than are there.
  std::optional<AviBytes> Frame(size_t stream, size_t frame, size_t mostBytes) const {
    AviBytes bytes(mostBytes);
    size_t size = 0;
    const QAVIError error = avi::QAVIGetData(handle_, stream, frame, bytes, &size);
    KORVEL_FUZZ_REQUIRE(IsOneOf(error, {QAVIError::Success, QAVIError::BufferTooSmall, QAVIError::ReadFailed}));
    if (error != QAVIError::Success) return std::nullopt;
    KORVEL_FUZZ_REQUIRE(size <= mostBytes);
    bytes.resize(size);
    return bytes;
  }

 private:
  QAVIHandle handle_ = 0;
};

uint32_t NumberAt(ByteView file, size_t offset) {
  const ByteView rest = file.subspan(std::min(offset, file.size()));
  return korvel_fuzz::FuzzInput(rest.data(), rest.size()).Take<uint32_t>();
}

// What a recording has left behind; nothing if no recording leaves such a file.
std::optional<AviModel> ModelOf(ByteView file) {
  // The model copies each frame, so that a file whose frames overlap would take far more memory than it has bytes.
  constexpr size_t kFramesSize = 236;
  constexpr size_t kEntryBytes = 16;
  uint64_t total = 0;
  for (size_t entry = kFramesSize + 4 + 8 + size_t{NumberAt(file, kFramesSize)}; entry < file.size();
       entry += kEntryBytes) {
    total += NumberAt(file, entry + 12);
  }
  if (total > file.size()) return std::nullopt;
  try {
    return korvel_test::ParseAviFile(AviBytes(file.begin(), file.end()));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

// Asks for everything, and for what no file has.
void RequireReadable(const OpenFile& file, size_t byteCount, const std::optional<AviModel>& model) {
  avi::MainHeader mainHeader;
  const QAVIError mainError = avi::QAVIGetMainHeader(file.Handle(), &mainHeader);
  KORVEL_FUZZ_REQUIRE(IsOneOf(mainError, {QAVIError::Success, QAVIError::NoChunk}));
  for (size_t stream = 0; stream < kMostStreams; ++stream) {
    avi::StreamHeader header;
    avi::VideoFormat format;
    std::string name;
    for (const QAVIError error : {avi::QAVIGetStreamHeader(file.Handle(), stream, &header),
                                  avi::QAVIGetStreamFormat(file.Handle(), stream, &format),
                                  avi::QAVIGetStreamName(file.Handle(), stream, &name)}) {
      KORVEL_FUZZ_REQUIRE(IsOneOf(error, {QAVIError::Success, QAVIError::NoChunk}));
    }
    KORVEL_FUZZ_REQUIRE(name.size() <= byteCount);
    const size_t frames = file.FramesOf(stream);
    for (size_t frame = 0; frame < std::min(frames, kMostFramesRead); ++frame) file.Frame(stream, frame, byteCount);
  }
  avi::StreamHeader header;
  size_t size = 0;
  KORVEL_FUZZ_REQUIRE(avi::QAVIGetStreamHeader(file.Handle(), kMostStreams, &header) == QAVIError::NoChunk);
  KORVEL_FUZZ_REQUIRE(avi::QAVIGetData(file.Handle(), kMostStreams, 0, {}, &size) == QAVIError::NoSuchStream);

  if (!model) return;
  KORVEL_FUZZ_REQUIRE(mainError == QAVIError::Success && mainHeader.totalFrames == model->frames.size());
  KORVEL_FUZZ_REQUIRE(file.FramesOf(0) == model->frames.size());
  for (size_t frame = 0; frame < std::min(model->frames.size(), kMostFramesRead); ++frame) {
    KORVEL_FUZZ_REQUIRE(file.Frame(0, frame, byteCount) == model->frames[frame]);
  }
}

class AviSession {
 public:
  void Run(ByteView content) {
    const korvel_fuzz::DescriptorCheck descriptors;
    file_.Rewrite(content);
    const std::optional<AviModel> model = ModelOf(content);
    const bool isRead = Read(content.size(), model);
    KORVEL_FUZZ_REQUIRE(isRead || !model);
    const std::optional<size_t> appended = Append(model);
    KORVEL_FUZZ_REQUIRE(isRead || !appended);
    KORVEL_FUZZ_REQUIRE(appended || !model);
    if (appended) RequireAppended(*appended, model);
  }

 private:
  bool Read(size_t byteCount, const std::optional<AviModel>& model) const {
    const OpenFile file(avi::QAVIOpenFile, file_.Path());
    if (!file) return false;
    RequireReadable(file, byteCount, model);
    KORVEL_FUZZ_REQUIRE(avi::QAVISetData(file.Handle(), 0, kNewFrame) == QAVIError::PermissionDenied);
    KORVEL_FUZZ_REQUIRE(avi::QAVISetStreamName(file.Handle(), 0, kDefaultName) != QAVIError::Success);
    return true;
  }

  // The number of the new frame; nothing if the file is refused.
  std::optional<size_t> Append(const std::optional<AviModel>& model) const {
    const OpenFile file(avi::QAVIModifyFile, file_.Path());
    if (!file) return std::nullopt;
    for (size_t stream = 0; stream < kMostStreams; ++stream) {
      const QAVIError error = avi::QAVISetStreamName(file.Handle(), stream, kDefaultName);
      KORVEL_FUZZ_REQUIRE(IsOneOf(error, {QAVIError::Success, QAVIError::NoChunk, QAVIError::PermissionDenied}));
    }
    const size_t frames = file.FramesOf(0);
    const QAVIError error = avi::QAVISetData(file.Handle(), 0, kNewFrame);
    KORVEL_FUZZ_REQUIRE(IsOneOf(error, {QAVIError::Success, QAVIError::NoHeaderTree}));
    if (error == QAVIError::Success) {
      KORVEL_FUZZ_REQUIRE(IsNewFrame(file, frames));
    } else {
      KORVEL_FUZZ_REQUIRE(!model);
    }
    return frames;
  }

  void RequireAppended(size_t frame, std::optional<AviModel> model) const {
    const OpenFile file(avi::QAVIOpenFile, file_.Path());
    KORVEL_FUZZ_REQUIRE(file);
    // A file without an index has no such frame.
    KORVEL_FUZZ_REQUIRE(file.FramesOf(0) <= frame || IsNewFrame(file, frame));
    if (!model) return;
    model->frames.emplace_back(kNewFrame.begin(), kNewFrame.end());
    KORVEL_FUZZ_REQUIRE(korvel_test::ReadFileBytes(file_.Path()) == korvel_test::BuildAviFile(*model));
  }

  static bool IsNewFrame(const OpenFile& file, size_t frame) {
    const std::optional<AviBytes> bytes = file.Frame(0, frame, kNewFrame.size());
    return bytes && std::ranges::equal(*bytes, kNewFrame);
  }

  // That of the model, which knows no other.
  static constexpr const char* kDefaultName = "stream name";

  korvel_fuzz::Session session_;
  korvel_fuzz::ScratchFile file_{session_.PathOf("input.avi")};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static AviSession session;
  session.Run({data, size});
  return 0;
}
