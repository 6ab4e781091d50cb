// The families of benchmarks. Each registers its own with Google Benchmark.
#pragma once

namespace korvel::benchmarks {

// Every conversion module and fast kernel, on memory that is there.
void RegisterModules();

// The common conversions and other work through the exported functions, with all that a call does besides.
void RegisterChains();

// Mirroring and rotation, into another image and in place.
void RegisterGeometry();

// Histograms and lines.
void RegisterMeasure();

// The search for hot pixels, and their correction with it.
void RegisterHotpixels();

// Corrections of pixel values, and binning.
void RegisterCorrections();

// Image files beside those of the bare codecs, and beside one call of the system.
void RegisterImageFiles();

// Recording beside the bare compressor, and its caller's part beside a copy through a plain queue.
void RegisterVideo();

}  // namespace korvel::benchmarks
