// libpng structures with their owner, error handling and guard, shared by
// the PNG decoder and encoder. Internal to the host platform: it brings in
// png.h.
#pragma once

#include <png.h>

#include <csetjmp>
#include <new>

namespace host {

/// A read or write structure and its info structure, made with error
/// handlers that longjmp (no message kept, warnings dropped); libpng frees
/// them together. Either pointer is null when it could not be made.
template <bool kWrite>
class PngHandles {
 public:
  PngHandles() {
    png = kWrite ? png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Error, Warning)
                 : png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Error, Warning);
    if (png) info = png_create_info_struct(png);
  }
  ~PngHandles() {
    if (kWrite && png) png_destroy_write_struct(&png, info ? &info : nullptr);
    if (!kWrite && png) png_destroy_read_struct(&png, info ? &info : nullptr, nullptr);
  }
  PngHandles(const PngHandles&) = delete;
  PngHandles& operator=(const PngHandles&) = delete;

  png_structp png = nullptr;
  png_infop info = nullptr;

 private:
  // libpng calls this on any error; it must not return.
  static void Error(png_structp p, png_const_charp) { png_longjmp(p, 1); }
  static void Warning(png_structp, png_const_charp) {}
};

/// Runs `body(png, info, state)` with libpng's error jump armed; false on a
/// libpng error or when memory runs out. An error longjmps out of `body`, so
/// nothing in its frames may need destroying: `state` owns it all.
template <typename State>
bool RunPngGuarded(png_structp png, png_infop info, State* state,
                   bool (*body)(png_structp, png_infop, State*)) {
  if (setjmp(png_jmpbuf(png))) return false;
  try {
    return body(png, info, state);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace host
