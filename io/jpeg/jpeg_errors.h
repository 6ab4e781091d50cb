// How failures leave libjpeg: as exceptions, with the codec's own text. It prints nothing.
#pragma once

#include <cstdio>  // for jpeglib.h, which includes nothing itself

#include <jpeglib.h>

namespace img::io::jpeg {

// Fills the manager and returns it, for a structure's err member. Warnings that a file ends too early count as errors,
// all others are ignored.
jpeg_error_mgr* SetUpErrors(jpeg_error_mgr& manager);

}  // namespace img::io::jpeg
