/* The exported header in a C99 program: it compiles, its list expands, and its functions link. */
#include <korvel/korvel.h>
#include <stdio.h>
#include <string.h>

#define COUNT_FORMAT(name, id) +1
#define CHECK_CONSTANT(name, id) &&KORVEL_PIXEL_FORMAT_##name == (id)
#define FIND_NAME(name, id) \
  if (id == KORVEL_PIXEL_FORMAT_BayerRG12p) found = #name;

int main(void) {
  uint32_t major = 0;
  const char* found = "";
  KORVEL_PIXEL_FORMATS(FIND_NAME)
  if ((0 KORVEL_PIXEL_FORMATS(COUNT_FORMAT)) != 49) return 1;
  if (!(1 KORVEL_PIXEL_FORMATS(CHECK_CONSTANT))) return 2;
  if (strcmp(found, "BayerRG12p") != 0) return 3;
  if (KORVEL_Library_GetVersionMajor(&major) != KORVEL_RETURN_CODE_Success || major != 1) return 4;
  puts("ok");
  return 0;
}
