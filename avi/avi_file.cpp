#include "avi/avi_file.h"

#include <cerrno>

namespace avi {
namespace {

QAVIError ErrorOfSystem(int number) {
  switch (number) {
    case EACCES:
      return QAVIError::PermissionDenied;
    case EMFILE:
      return QAVIError::TooManyOpenFiles;
    case ENOSPC:
      return QAVIError::DiskFull;
    case ENOENT:
      return QAVIError::NoSuchFile;
    case EEXIST:
      return QAVIError::FileExists;
    case EINVAL:
      return QAVIError::InvalidArgument;
    default:
      return QAVIError::OpenFailed;
  }
}

}  // namespace

QAVIError CAviFile::Create(const std::string& path, size_t streams) {
  // Before the file is made, so that a number of streams that is refused leaves none behind.
  if (const QAVIError error = BuildTree(streams); error != QAVIError::Success) return error;
  if (const int number = Open(path, Mode::Write); number != 0) return ErrorOfSystem(number);
  isWritable_ = true;
  return QAVIError::Success;
}

QAVIError CAviFile::OpenExisting(const std::string& path, bool isWritable) {
  if (const int number = Open(path, isWritable ? Mode::Both : Mode::Read); number != 0) return ErrorOfSystem(number);
  if (!ReadTree(*this) || (isWritable && !CanGrow())) return QAVIError::ParsingFailed;
  isWritable_ = isWritable;
  return QAVIError::Success;
}

bool CAviFile::close() {
  if (!IsOpen()) return true;
  const bool isWritten = !isWritable_ || WriteTree(*this);
  isWritable_ = isTreeWritten_ = false;
  FreeTree();
  return CFile64::close() && isWritten;
}

QAVIError CAviFile::SetData(size_t stream, std::span<const uint8_t> frame, uint32_t flags) {
  if (!IsOpen()) return QAVIError::NotOpen;
  if (!isWritable_) return QAVIError::PermissionDenied;
  if (!isTreeWritten_ && !WriteTree(*this)) return QAVIError::DiskFull;
  isTreeWritten_ = true;
  return WriteFrame(*this, stream, frame, flags);
}

QAVIError CAviFile::SetStreamName(size_t stream, const std::string& name) {
  RIFFchunk* const chunk = StreamName(stream);
  if (chunk == nullptr) return QAVIError::NoChunk;
  if (!isWritable_ || isTreeWritten_ || HasFrames()) return QAVIError::PermissionDenied;
  chunk->data.assign(name.c_str(), name.c_str() + name.size() + 1);
  chunk->size = static_cast<uint32_t>(chunk->data.size());
  if (chunk->parent != nullptr) chunk->parent->SumSizes();
  return QAVIError::Success;
}

}  // namespace avi
