// Functions on AVI files by handle. Paths are UTF-8. Any thread may call any of them; one file's calls go one after the
// other. A handle that isn't known gives UnknownHandle, and an exception on the way Exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "avi/avi_headers.h"
#include "avi/qavi_error.h"

namespace avi {

// Above 0 for an open file.
using QAVIHandle = int32_t;

// A new file for writing, with 1 to 4 streams; one that exists is emptied. One path may be open twice.
QAVIError QAVICreateFile(const std::string& path, size_t streams, QAVIHandle* handle);

// An existing file for reading, and for appending.
QAVIError QAVIOpenFile(const std::string& path, QAVIHandle* handle);
QAVIError QAVIModifyFile(const std::string& path, QAVIHandle* handle);

// Ends the handle, whatever it returns. DiskFull means that the file may be incomplete.
QAVIError QAVICloseFile(QAVIHandle handle);

// The headers as they will be written; NoChunk if the file has none. A function changes a header as one step, between
// which and the next no frame is written.
QAVIError QAVIGetMainHeader(QAVIHandle handle, MainHeader* header);
QAVIError QAVIChangeMainHeader(QAVIHandle handle, const std::function<void(MainHeader&)>& change);
QAVIError QAVIGetStreamHeader(QAVIHandle handle, size_t stream, StreamHeader* header);
QAVIError QAVIChangeStreamHeader(QAVIHandle handle, size_t stream, const std::function<void(StreamHeader&)>& change);
QAVIError QAVIGetStreamFormat(QAVIHandle handle, size_t stream, VideoFormat* format);
QAVIError QAVIChangeStreamFormat(QAVIHandle handle, size_t stream, const std::function<void(VideoFormat&)>& change);
QAVIError QAVIGetStreamName(QAVIHandle handle, size_t stream, std::string* name);
QAVIError QAVISetStreamName(QAVIHandle handle, size_t stream, const std::string& name);

// Whether the file's 32-bit sizes have room for one more frame.
bool QAVIHasRoomFor(QAVIHandle handle, size_t frameSize);

// Appends a frame; PermissionDenied for a file that was opened for reading, DiskFull if it could not be written, which
// leaves the file as it was.
QAVIError QAVISetData(QAVIHandle handle, size_t stream, std::span<const uint8_t> frame,
                      uint32_t flags = IndexEntry::kKeyFrame);

// Copies a frame and tells its size.
QAVIError QAVIGetData(QAVIHandle handle, size_t stream, size_t frame, std::span<uint8_t> buffer, size_t* size);

}  // namespace avi
