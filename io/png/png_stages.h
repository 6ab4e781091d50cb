// How failures leave libpng: with a jump to the start of the stage at work, which is a plain function without objects
// to destroy, since the jump skips destructors. libpng prints nothing.
#pragma once

#include <png.h>

#include <csetjmp>

namespace img::io::png {

[[noreturn]] inline void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
inline void OnWarning(png_structp, png_const_charp) {}

// False if libpng left the stage with a jump. Work has a member png, whose handlers are those above.
template <class Work>
bool Runs(void (*stage)(Work&), Work& work) {
  if (setjmp(png_jmpbuf(work.png)) != 0) return false;
  stage(work);
  return true;
}

}  // namespace img::io::png
