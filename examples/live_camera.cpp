// Pictures of a live GenICam camera, through Aravis:
//
//   live_camera FRAMES OUT.png [CAMERA]
//
// Takes FRAMES images, tells the mean of each, and writes the last one. CAMERA is the camera's name as `arv-tool` lists
// it; without it the first camera is taken. The name Fake_1 is that of a camera without hardware.
//
// Nothing is copied between the camera's buffers and the library: an image lies over each buffer while it is looked at.
#include <arv.h>

#include <cstdio>
#include <cstdlib>
#include <korvel/korvel.hpp>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

// Turns the error that a call of Aravis may leave into an exception.
class Check {
 public:
  Check() = default;
  Check(const Check&) = delete;
  Check& operator=(const Check&) = delete;
  ~Check() { g_clear_error(&error_); }

  GError** operator&() { return &error_; }
  void Throw() const {
    if (error_ != nullptr) throw std::runtime_error(error_->message);
  }

 private:
  GError* error_ = nullptr;
};

constexpr int kBuffers = 4;
constexpr guint64 kTimeoutMicroseconds = 5'000'000;

// Looks at one frame in the camera's own buffer. The id of the camera's pixel format is the library's; only
// Mono12Packed and its kin, which it doesn't know, need korvel::Image::CopyLegacyPacked instead.
void Look(ArvBuffer* buffer, korvel::ImageConverter& converter, const char* path) {
  size_t size = 0;
  auto* const data = static_cast<uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &size)));
  const korvel::Image frame(static_cast<korvel::PixelFormat>(arv_buffer_get_image_pixel_format(buffer)), data, size,
                            static_cast<size_t>(arv_buffer_get_image_width(buffer)),
                            static_cast<size_t>(arv_buffer_get_image_height(buffer)));
  if (frame.Data() != data) throw std::logic_error("the frame was copied");
  const korvel::Histogram histogram(frame);
  std::printf("%s, mean %.2f\n", std::string(Name(frame.Format())).c_str(),
              static_cast<double>(histogram.PixelSum(0)) / static_cast<double>(histogram.PixelCount(0)));
  if (path != nullptr) converter.Convert(frame, korvel::PixelFormat::RGB8).Write(path);
}

void Run(unsigned long frames, const char* path, const char* name) {
  Check check;
  const Owned<ArvCamera> camera(arv_camera_new(name, &check));
  check.Throw();
  const Owned<ArvStream> stream(arv_camera_create_stream(camera.get(), nullptr, nullptr, &check));
  check.Throw();
  const size_t payload = arv_camera_get_payload(camera.get(), &check);
  check.Throw();
  for (int i = 0; i < kBuffers; ++i) arv_stream_push_buffer(stream.get(), arv_buffer_new_allocate(payload));

  korvel::ImageConverter converter;
  arv_camera_start_acquisition(camera.get(), &check);
  check.Throw();
  for (unsigned long i = 0; i < frames;) {
    Owned<ArvBuffer> buffer(arv_stream_timeout_pop_buffer(stream.get(), kTimeoutMicroseconds));
    if (buffer == nullptr) throw std::runtime_error("the camera sends nothing");
    if (arv_buffer_get_status(buffer.get()) == ARV_BUFFER_STATUS_SUCCESS) {
      ++i;
      Look(buffer.get(), converter, i == frames ? path : nullptr);
    }
    arv_stream_push_buffer(stream.get(), buffer.release());  // back to the camera, to be filled again
  }
  arv_camera_stop_acquisition(camera.get(), &check);
  check.Throw();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr, "usage: live_camera FRAMES OUT.png [CAMERA]\n");
    return 2;
  }
  int result = 0;
  try {
    arv_enable_interface("Fake");
    Run(std::strtoul(argv[1], nullptr, 10), argv[2], argc == 4 ? argv[3] : nullptr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "live_camera: %s\n", error.what());
    result = 1;
  }
  arv_shutdown();
  return result;
}
