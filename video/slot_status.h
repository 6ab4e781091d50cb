// What the pipeline of a recording returns.
#pragma once

namespace libvideo {

enum class SlotStatus : int {
  Success = 0,
  Failed = 301,           // closing, an empty path, a start without a file or without a thread
  OpenFailed = 302,       // of the file
  HeaderFailed = 303,     // of the stream
  InvalidArgument = 304,  // an unknown or disabled event, a queue size out of range
  NoFreeSlot = 305,
  CompressionFailed = 307,
  NotAllowed = 309,  // while recording, or with a file open
  NotRunning = 310,
  OptionOutOfRange = 314,
  UnknownColorMode = 316,
  InvalidSize = 318,   // of the frames, or of a frame with too few bytes
  LimitReached = 326,  // of the file
  WaitTimedOut = 329,
  QueueFull = 330,
};

}  // namespace libvideo
