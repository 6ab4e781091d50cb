/*
 * What each error looks like: makes calls that fail, and prints the code and the text of each. Codes that need a full
 * disk or a missing feature to come about are not among them.
 *
 *   errors OUT.avi
 *
 * OUT.avi is made, and must not exist.
 */
#include <korvel/korvel.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void Show(const char* name, KORVEL_RETURN_CODE code) {
  uint32_t lastCode = 0;
  size_t size = 0;
  char* text;
  if (code == KORVEL_RETURN_CODE_Success) {
    printf("%s: no error\n", name);
    return;
  }
  /* The text is that of this thread's last failure: ask for it before the next call. First its size, then itself. */
  KORVEL_Library_GetLastError(&lastCode, NULL, &size);
  text = malloc(size);
  if (text == NULL) return;
  KORVEL_Library_GetLastError(&lastCode, text, &size);
  printf("%s: %u, %s\n", name, (unsigned)lastCode, text);
  free(text);
}

int main(int argc, char** argv) {
  uint8_t pixels[4] = {0, 0, 0, 0};
  uint8_t* pixel = NULL;
  char shortText[1];
  uint32_t lastCode = 0;
  size_t size = sizeof shortText;
  size_t i;
  KORVEL_IMAGE_HANDLE image = NULL, packed = NULL, picture = NULL, other = NULL;
  KORVEL_GAIN_HANDLE gain = NULL;
  KORVEL_VIDEO_HANDLE video = NULL, same = NULL;
  const char* file = "image.txt";
  KORVEL_RETURN_CODE code = KORVEL_RETURN_CODE_Success;

  if (argc != 2) {
    fprintf(stderr, "usage: errors OUT.avi\n");
    return 2;
  }
  if (KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, pixels, sizeof pixels, 2, 2, &image) != 0 ||
      KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono12p, 2, 2, &packed) != 0 ||
      KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_RGB8, 2048, 2048, &picture) != 0 ||
      KORVEL_Gain_Construct(&gain) != 0 ||
      KORVEL_VideoWriter_Video_Open(&video, argv[1], KORVEL_VIDEO_CONTAINER_AVI, KORVEL_VIDEO_ENCODER_MJPEG) != 0 ||
      KORVEL_VideoWriter_Queue_SetSize(video, 1) != 0) {
    fprintf(stderr, "errors: could not begin\n");
    return 1;
  }

  Show("Error", KORVEL_Image_Construct(0x12345678, 2, 2, &other)); /* no format has this id */
  Show("InvalidHandle", KORVEL_Image_GetWidth(NULL, &size));
  Show("Io", KORVEL_ImageWriter_Write(image, file, strlen(file))); /* no file type of this library */
  Show("BufferToSmall", KORVEL_Library_GetLastError(&lastCode, shortText, &size));
  Show("InvalidArgument", KORVEL_Image_GetWidth(image, NULL));
  Show("OutOfRange", KORVEL_Image_GetPixelPointer(image, 2, 0, &pixel));
  Show("ImageFormatNotSupported", KORVEL_Gain_ProcessInPlace(gain, packed));
  Show("AccessFailed", KORVEL_VideoWriter_Video_Open(&same, argv[1], KORVEL_VIDEO_CONTAINER_AVI,
                                                     KORVEL_VIDEO_ENCODER_MJPEG)); /* never overwritten */
  /* Faster than any encoder: the queue of one fills, and images are dropped. */
  for (i = 0; i < 1000 && code == KORVEL_RETURN_CODE_Success; ++i)
    code = KORVEL_VideoWriter_Video_Append(video, picture);
  Show("QueueFull", code);
  Show("Timeout", KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video, 0));

  KORVEL_VideoWriter_Video_Close(video);
  KORVEL_Gain_Destruct(gain);
  KORVEL_Image_Destruct(picture);
  KORVEL_Image_Destruct(packed);
  KORVEL_Image_Destruct(image);
  return 0;
}
