/*
 * From a camera's buffer to a PNG file:
 *
 *   frame_to_png FRAME.bin WIDTH HEIGHT OUT.png
 *
 * FRAME.bin holds one BayerRG12p frame: two pixels in three bytes, without gaps between lines.
 */
#include <korvel/korvel.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Every function returns a code; the calling thread's last error tells in words what went wrong. */
static int Succeeded(KORVEL_RETURN_CODE code) {
  char text[512] = "";
  size_t size = sizeof text;
  KORVEL_RETURN_CODE lastCode = code;
  if (code == KORVEL_RETURN_CODE_Success) return 1;
  KORVEL_Library_GetLastError(&lastCode, text, &size);
  fprintf(stderr, "frame_to_png: %s (code %u)\n", text, (unsigned)code);
  return 0;
}

int main(int argc, char** argv) {
  KORVEL_IMAGE_HANDLE frame = NULL;
  KORVEL_IMAGE_HANDLE picture = NULL;
  size_t width, height, size;
  uint8_t* buffer;
  FILE* file;
  int ok;

  if (argc != 5) {
    fprintf(stderr, "usage: frame_to_png FRAME.bin WIDTH HEIGHT OUT.png\n");
    return 2;
  }
  width = strtoul(argv[2], NULL, 10);
  height = strtoul(argv[3], NULL, 10);
  size = (width * height * 12 + 7) / 8;
  buffer = malloc(size);
  file = fopen(argv[1], "rb");
  ok = buffer != NULL && file != NULL && fread(buffer, 1, size, file) == size;
  if (file != NULL) fclose(file);
  if (!ok) {
    fprintf(stderr, "frame_to_png: %s doesn't hold a frame of that size\n", argv[1]);
    free(buffer);
    return 1;
  }

  /* The image lies over the buffer, which must outlive it; nothing is copied. */
  ok = Succeeded(
           KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_BayerRG12p, buffer, size, width, height, &frame)) &&
       Succeeded(
           KORVEL_Image_ConvertTo(frame, KORVEL_PIXEL_FORMAT_RGB8, KORVEL_CONVERSION_MODE_HighQuality, &picture)) &&
       Succeeded(KORVEL_ImageWriter_Write(picture, argv[4], strlen(argv[4])));
  if (picture != NULL) KORVEL_Image_Destruct(picture);
  if (frame != NULL) KORVEL_Image_Destruct(frame);
  free(buffer);
  return ok ? 0 : 1;
}
