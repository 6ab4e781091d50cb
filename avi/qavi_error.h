// What the functions on AVI files return.
#pragma once

namespace avi {

enum class QAVIError : int {
  Success = 0,
  Exception = 3,  // one left the function
  NoChunk = 100,  // the file has no such header
  OpenFailed = 500,
  PermissionDenied = 501,  // also a write to a file that was opened for reading
  TooManyOpenFiles = 502,
  DiskFull = 503,  // also a frame that the file's 32-bit sizes have no room for
  NotOpen = 504,
  NoHeaderTree = 505,
  ReadFailed = 506,  // fewer bytes than the index tells
  NoSuchFile = 507,
  FileExists = 508,
  InvalidArgument = 509,
  NoSuchStream = 1001,
  UnknownHandle = 1002,
  BufferTooSmall = 1200,
  NoIndexEntry = 1201,
  ParsingFailed = 1202,
};

}  // namespace avi
