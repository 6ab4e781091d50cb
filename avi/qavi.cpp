#include "avi/qavi.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>

#include "avi/avi_file_manager.h"

namespace avi {
namespace {

// Runs action(file) under the file's mutex.
template <class Action>
QAVIError OnFile(QAVIHandle handle, Action&& action) {
  try {
    const std::shared_ptr<CAviFile> file = CAviFileManager::Instance().FromHandle(handle);
    if (!file) return QAVIError::UnknownHandle;
    const std::lock_guard lock(file->Mutex());
    return action(*file);
  } catch (const std::exception&) {
    return QAVIError::Exception;
  }
}

template <class Open>
QAVIError OpenWith(QAVIHandle* handle, Open&& open) {
  try {
    const auto file = std::make_shared<CAviFile>();
    const QAVIError error = open(*file);
    if (error == QAVIError::Success) *handle = CAviFileManager::Instance().Add(file);
    return error;
  } catch (const std::exception&) {
    return QAVIError::Exception;
  }
}

template <class Layout>
typename Layout::Bytes FirstBytes(const Layout&, const std::vector<uint8_t>& data) {
  typename Layout::Bytes bytes;
  std::copy_n(data.begin(), bytes.size(), bytes.begin());
  return bytes;
}

template <class Layout, class Record>
QAVIError Get(const Layout& layout, const std::vector<uint8_t>* data, Record* record) {
  if (data == nullptr) return QAVIError::NoChunk;
  *record = layout.Decode(FirstBytes(layout, *data));
  return QAVIError::Success;
}

template <class Layout, class Record>
QAVIError Change(const Layout& layout, std::vector<uint8_t>* data, const std::function<void(Record&)>& change) {
  if (data == nullptr) return QAVIError::NoChunk;
  Record record = layout.Decode(FirstBytes(layout, *data));
  change(record);
  const auto bytes = layout.Encode(record);
  std::copy(bytes.begin(), bytes.end(), data->begin());
  return QAVIError::Success;
}

}  // namespace

QAVIError QAVICreateFile(const std::string& path, size_t streams, QAVIHandle* handle) {
  return OpenWith(handle, [&](CAviFile& file) { return file.Create(path, streams); });
}

QAVIError QAVIOpenFile(const std::string& path, QAVIHandle* handle) {
  return OpenWith(handle, [&](CAviFile& file) { return file.OpenExisting(path, false); });
}

QAVIError QAVIModifyFile(const std::string& path, QAVIHandle* handle) {
  return OpenWith(handle, [&](CAviFile& file) { return file.OpenExisting(path, true); });
}

QAVIError QAVICloseFile(QAVIHandle handle) {
  try {
    const std::shared_ptr<CAviFile> file = CAviFileManager::Instance().Remove(handle);
    if (!file) return QAVIError::UnknownHandle;
    const std::lock_guard lock(file->Mutex());
    return file->close() ? QAVIError::Success : QAVIError::DiskFull;
  } catch (const std::exception&) {
    return QAVIError::Exception;
  }
}

QAVIError QAVIGetMainHeader(QAVIHandle handle, MainHeader* header) {
  return OnFile(handle, [&](CAviFile& file) { return Get(kMainHeaderLayout, file.MainHeaderData(), header); });
}

QAVIError QAVIChangeMainHeader(QAVIHandle handle, const std::function<void(MainHeader&)>& change) {
  return OnFile(handle, [&](CAviFile& file) { return Change(kMainHeaderLayout, file.MainHeaderData(), change); });
}

QAVIError QAVIGetStreamHeader(QAVIHandle handle, size_t stream, StreamHeader* header) {
  return OnFile(handle,
                [&](CAviFile& file) { return Get(kStreamHeaderLayout, file.StreamHeaderData(stream), header); });
}

QAVIError QAVIChangeStreamHeader(QAVIHandle handle, size_t stream, const std::function<void(StreamHeader&)>& change) {
  return OnFile(handle,
                [&](CAviFile& file) { return Change(kStreamHeaderLayout, file.StreamHeaderData(stream), change); });
}

QAVIError QAVIGetStreamFormat(QAVIHandle handle, size_t stream, VideoFormat* format) {
  return OnFile(handle, [&](CAviFile& file) { return Get(kVideoFormatLayout, file.StreamFormatData(stream), format); });
}

QAVIError QAVIChangeStreamFormat(QAVIHandle handle, size_t stream, const std::function<void(VideoFormat&)>& change) {
  return OnFile(handle,
                [&](CAviFile& file) { return Change(kVideoFormatLayout, file.StreamFormatData(stream), change); });
}

QAVIError QAVIGetStreamName(QAVIHandle handle, size_t stream, std::string* name) {
  return OnFile(handle, [&](CAviFile& file) {
    const RIFFchunk* const chunk = file.StreamName(stream);
    if (chunk == nullptr) return QAVIError::NoChunk;
    name->assign(chunk->data.begin(), std::find(chunk->data.begin(), chunk->data.end(), uint8_t{0}));
    return QAVIError::Success;
  });
}

QAVIError QAVISetStreamName(QAVIHandle handle, size_t stream, const std::string& name) {
  return OnFile(handle, [&](CAviFile& file) { return file.SetStreamName(stream, name); });
}

bool QAVIHasRoomFor(QAVIHandle handle, size_t frameSize) {
  return OnFile(handle, [&](CAviFile& file) {
           return file.HasRoomFor(frameSize) ? QAVIError::Success : QAVIError::DiskFull;
         }) == QAVIError::Success;
}

QAVIError QAVISetData(QAVIHandle handle, size_t stream, std::span<const uint8_t> frame, uint32_t flags) {
  return OnFile(handle, [&](CAviFile& file) { return file.SetData(stream, frame, flags); });
}

QAVIError QAVIGetData(QAVIHandle handle, size_t stream, size_t frame, std::span<uint8_t> buffer, size_t* size) {
  return OnFile(handle, [&](CAviFile& file) { return file.ReadFrame(file, stream, frame, buffer, size); });
}

}  // namespace avi
