#include "io/jpeg/jpeg_errors.h"

#include <jerror.h>

#include "io/io_failure.h"
#include "io/jpeg/jpeg_reader.h"

namespace img::io::jpeg {
namespace {

// libjpeg counts warnings as -1 and traces as 0 and above.
void OnMessage(j_common_ptr cinfo, int level) {
  if (level >= 0) return;
  const int code = cinfo->err->msg_code;
  if (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER) JPEGReader::JpegErrorExit(cinfo);
}

void PrintNothing(j_common_ptr) {}

}  // namespace

jpeg_error_mgr* SetUpErrors(jpeg_error_mgr& manager) {
  jpeg_std_error(&manager);
  manager.error_exit = JPEGReader::JpegErrorExit;
  manager.emit_message = OnMessage;
  manager.output_message = PrintNothing;
  return &manager;
}

void JPEGReader::JpegErrorExit(j_common_ptr cinfo) {
  const jpeg_error_mgr& errors = *cinfo->err;
  const bool isInTable = errors.msg_code > 0 && errors.msg_code <= errors.last_jpeg_message;
  const char* const text = errors.jpeg_message_table[isInTable ? errors.msg_code : 0];
  jpeg_destroy(cinfo);
  ThrowIo(korvel::internal::ImgStatusCode::Io, "static void img::io::jpeg::JPEGReader::JpegErrorExit(j_common_ptr)",
          text);
}

}  // namespace img::io::jpeg
