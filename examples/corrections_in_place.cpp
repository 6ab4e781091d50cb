// Corrects a raw image in its own memory, as a camera's buffer would be, and writes it as a picture:
//
//   corrections_in_place IN OUT
//
// IN is an image file with a mono or Bayer image; PNG, BMP and JPEG files hold Bayer images as mono ones.
#include <cstdio>
#include <korvel/korvel.hpp>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: corrections_in_place IN OUT\n");
    return 2;
  }
  try {
    // Make these once and keep them: setting a value makes tables, using it doesn't.
    korvel::Gain gain;
    gain.SetMaster(1.2f);
    gain.SetRed(1.5f);
    gain.SetBlue(1.8f);
    korvel::GammaCorrector gamma;
    gamma.SetGamma(1.6f);
    korvel::ColorCorrector color;
    color.SetFactors({1.4f, -0.3f, -0.1f, -0.2f, 1.4f, -0.2f, -0.1f, -0.4f, 1.5f});

    korvel::Image raw = korvel::Image::Read(argv[1]);
    gain.ProcessInPlace(raw);  // before colours are made: gains are those of the sensor's pixels

    korvel::Image picture = raw.ConvertTo(korvel::PixelFormat::RGB8);
    color.ProcessInPlace(picture);
    gamma.ProcessInPlace(picture);  // last: the matrix is meant for linear values

    picture.Write(argv[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corrections_in_place: %s\n", error.what());
    return 1;
  }
  return 0;
}
