// An application whose static objects hold handles, and let them go after the library's own static objects are gone.

#include <korvel/korvel.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

void Require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "static_objects: " << what << '\n';
  std::_Exit(1);
}

std::string path;
std::vector<uint8_t> pixels(64 * 48);

struct Application {
  KORVEL_IMAGE_HANDLE image = nullptr;
  KORVEL_GAMMA_CORRECTOR_HANDLE gamma = nullptr;
  KORVEL_VIDEO_HANDLE video = nullptr;

  ~Application() {
    Require(KORVEL_GammaCorrector_Destruct(gamma) == KORVEL_RETURN_CODE_Success, "a handle is lost");
    Require(KORVEL_GammaCorrector_Destruct(gamma) == KORVEL_RETURN_CODE_InvalidHandle, "a handle is known twice");
    uint32_t code = 0;
    char text[256] = "";
    size_t size = sizeof text;
    Require(KORVEL_Library_GetLastError(&code, text, &size) == KORVEL_RETURN_CODE_Success, "no error can be read");
    Require(code == KORVEL_RETURN_CODE_InvalidHandle && std::strlen(text) > 0, "the error is not told");

    // The recording has ended with the process.
    Require(KORVEL_VideoWriter_Video_Close(video) == KORVEL_RETURN_CODE_InvalidHandle, "a video is still open");
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    Require(bytes.find("00dc") < bytes.find("idx1") && bytes.find("idx1") != std::string::npos,
            "the recording lacks its frame or its index");

    KORVEL_IMAGE_HANDLE picture = nullptr;
    Require(KORVEL_Image_ConvertTo(image, KORVEL_PIXEL_FORMAT_BGRa8, KORVEL_CONVERSION_MODE_Fast, &picture) ==
                KORVEL_RETURN_CODE_Success,
            "no image can be made");
    Require(KORVEL_Image_Destruct(picture) == KORVEL_RETURN_CODE_Success, "no image can be destructed");
    std::filesystem::remove(path);
  }
};

Application application;  // made before the library's first use, so it goes after what that makes

}  // namespace

int main(int argc, char** argv) {
  Require(argc == 2, "usage: static_objects FILE.avi");
  path = argv[1];
  std::filesystem::remove(path);
  const bool isReady =
      KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, pixels.data(), pixels.size(), 64, 48,
                                       &application.image) == KORVEL_RETURN_CODE_Success &&
      KORVEL_GammaCorrector_Construct(&application.gamma) == KORVEL_RETURN_CODE_Success &&
      KORVEL_VideoWriter_Video_Open(&application.video, path.c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                    KORVEL_VIDEO_ENCODER_MJPEG) == KORVEL_RETURN_CODE_Success &&
      KORVEL_VideoWriter_Video_Append(application.video, application.image) == KORVEL_RETURN_CODE_Success;
  Require(isReady, "the objects can't be made");
}
