#include "recording.h"

#include "format_names.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

template <class Value>
Value Ask(const Video& video, KORVEL_RETURN_CODE (*query)(KORVEL_VIDEO_HANDLE, Value*)) {
  Value value{};
  Require(query(video.Get(), &value), "ask how far the recording is", kVersionAdvice);
  return value;
}

}  // namespace

Recording::Recording(const RecordingOptions& options) : format_(options.format) {
  Require(KORVEL_ImageConverter_Construct(converter_.Out()), "make a converter", kMemoryAdvice);
  const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Open(video_.Out(), options.path.c_str(),
                                                                KORVEL_VIDEO_CONTAINER_AVI, KORVEL_VIDEO_ENCODER_MJPEG);
  Require(code, "make '" + options.path + "'",
          code == KORVEL_RETURN_CODE_AccessFailed
              ? "A video never replaces a file; remove it, or choose another name."
              : "Choose a name in UTF-8, in a folder that exists and that you can write to.");

  const double frames_per_second = options.frames_per_second;
  Require(KORVEL_VideoWriter_Container_SetOption(video_.Get(), KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond,
                                                 &frames_per_second, sizeof frames_per_second),
          "set the frames per second", "Check --fps.");
  Require(KORVEL_VideoWriter_Encoder_SetOption(video_.Get(), KORVEL_VIDEO_ENCODER_OPTION_Quality, &options.quality,
                                               sizeof options.quality),
          "set the quality", "Check --quality.");
  if (options.queue) {
    Require(KORVEL_VideoWriter_Queue_SetSize(video_.Get(), *options.queue), "set the size of the queue",
            "Check --queue.");
  }
}

bool Recording::Append(const Image& image) {
  const bool is_first = appended_ == 0;
  const Image& recordable = Recordable(image);
  if (is_first) frame_byte_count_ = FactsOf(recordable).byte_count;
  const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Append(video_.Get(), recordable.Get());
  if (code == KORVEL_RETURN_CODE_QueueFull) {
    if (QueueSize() == 0) {
      throw ToolError("the queue that the library chooses holds no frame of this size", "Choose one by --queue 4.");
    }
    ++refused_;
  } else if (code == KORVEL_RETURN_CODE_Error && !is_first) {
    return false;
  } else {
    Require(code, "record " + Describe(facts_), "Check the size, and the free memory of the machine.");
  }
  ++appended_;
  return true;
}

const Image& Recording::Recordable(const Image& image) {
  const ImageFacts facts = FactsOf(image);
  if (appended_ == 0) {
    facts_ = facts;
    facts_.format = format_.value_or(PictureFormat(facts.format));
  }
  if (facts.format.id == facts_.format.id) return image;
  Require(
      KORVEL_ImageConverter_Convert(converter_.Get(), image.Get(), facts_.format.id, converted_.Out()),
      "convert " + std::string(facts.format.name) + " to " + std::string(facts_.format.name),
      "All frames of a video have the format of the first. Grey ones can follow those in colour; record others to a "
      "file of their own.");
  return converted_;
}

RecordingCounts Recording::Counts() const {
  RecordingCounts counts;
  counts.appended = appended_;
  counts.refused = refused_;
  counts.queued = Ask(video_, KORVEL_VideoWriter_Queue_GetQueued);
  counts.written = Ask(video_, KORVEL_VideoWriter_Video_GetEncodedFrames);
  counts.dropped = Ask(video_, KORVEL_VideoWriter_Video_GetDroppedFrames);
  counts.bytes = Ask(video_, KORVEL_VideoWriter_Video_GetFileSize);
  return counts;
}

bool Recording::HasRoom() const { return Ask(video_, KORVEL_VideoWriter_Queue_GetQueued) < QueueSize(); }

uint32_t Recording::QueueSize() const { return Ask(video_, KORVEL_VideoWriter_Queue_GetSize); }

void Recording::WaitForWorker() const {
  constexpr uint32_t kMoment_ms = 20;
  const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video_.Get(), kMoment_ms);
  if (code != KORVEL_RETURN_CODE_Timeout) Require(code, "wait for the queue", kVersionAdvice);
}

void Recording::Close() {
  Require(KORVEL_VideoWriter_Video_Close(video_.Get()), "end the file",
          "Check the space and the permissions of the output folder; 'korvel repair-avi' brings the frames back.");
  video_.Release();
}

}  // namespace korvel::tools
