// Makes a whole file of a recording that nobody closed: headers and index anew around the frames that are there.
//
// What such a file holds, avi/form_avi_handler.h tells. Here nothing of it is trusted: frames are looked for wherever
// the bytes before them are of no use.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace libvideo {

struct AviRepair {
  enum class Outcome {
    Repaired,
    Whole,        // nothing is written
    CannotRead,   // no file, or none that can be read from
    NoFrame,      // there is nothing to make a video of
    NoFrameTime,  // the headers are of no use, and nothing else tells it
    CannotWrite,  // also a disk with less than 5025 KiB left
    Stopped,      // by the caller
  };

  Outcome outcome = Outcome::CannotRead;
  uint32_t width = 0;
  uint32_t height = 0;
  uint64_t frameTimeUs = 0;
  uint64_t frames = 0;  // that were written; for a whole file, those it has
  // What was left out.
  uint64_t bytesCutOff = 0;   // of the last frame, whose end was never written
  uint64_t bytesSkipped = 0;  // elsewhere, where no frame's whole chunk with a whole picture is
  uint64_t placesSkipped = 0;
  uint64_t firstSkipped = 0;  // where the first of these places is
  uint64_t bytesTooMany = 0;  // of frames that the sizes of an AVI file have no room for
};

// Reads path and writes output, which is emptied if it exists; it stays as far as it came if the outcome isn't
// Repaired. frameTimeUs above 0 is taken instead of what the headers tell. goesOn is asked before each frame, and again
// and again where one is looked for, with the bytes that are done and all bytes. Takes memory for one frame, and 16
// bytes for each.
AviRepair RepairAvi(const std::string& path, const std::string& output, uint64_t frameTimeUs,
                    const std::function<bool(uint64_t done, uint64_t all)>& goesOn);

}  // namespace libvideo
