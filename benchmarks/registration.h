// The families of benchmarks. Each registers its own with Google Benchmark, for the given sizes of frames.
#pragma once

#include <span>

#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {

using FrameSizes = std::span<const FrameSize>;

// From one pixel format to another, and copies.
void RegisterConversions(FrameSizes sizes);

// Gain, gamma, colours, hot pixels, and binning.
void RegisterCorrections(FrameSizes sizes);

// Mirroring and rotation, into another image and in place.
void RegisterGeometry(FrameSizes sizes);

// Histograms.
void RegisterMeasure(FrameSizes sizes);

// Image files beside those of the bare codecs, and beside one call of the system.
void RegisterImageFiles(FrameSizes sizes);

// Recording beside the bare compressor, and its caller's part beside a copy through a plain queue.
void RegisterVideo(FrameSizes sizes);

// What pictures of any size cost before the first pixel.
void RegisterSmallWork();

}  // namespace korvel::benchmarks
