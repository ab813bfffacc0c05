#include "host/base/library_versions.h"

#include <cstddef>
#include <cstdio>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <gif_lib.h>
#include <jbig2.h>
#include <jpeglib.h>
#include <openssl/crypto.h>
#include <png.h>
#include <tiffio.h>
#include <zip.h>

namespace host {

namespace {

// "major.minor.patch" of a number packed as major * f1 + minor * f2 + patch.
std::string Dotted(long value, long f1, long f2) {
  char text[48];
  std::snprintf(text, sizeof text, "%ld.%ld.%ld", value / f1, value % f1 / f2, value % f2);
  return text;
}

std::string FreeTypeVersion() {
  FT_Library library = nullptr;
  if (FT_Init_FreeType(&library) != 0) {
    return Dotted(FREETYPE_MAJOR * 10000L + FREETYPE_MINOR * 100L + FREETYPE_PATCH, 10000, 100);
  }
  FT_Int major = 0, minor = 0, patch = 0;
  FT_Library_Version(library, &major, &minor, &patch);
  FT_Done_FreeType(library);
  return Dotted(major * 10000L + minor * 100L + patch, 10000, 100);
}

// TIFFGetVersion() is a sentence; keep its version number.
std::string TiffVersion() {
  std::string text = TIFFGetVersion();
  const size_t at = text.find("Version ");
  if (at == std::string::npos) return text;
  text.erase(0, at + 8);
  return text.substr(0, text.find_first_of(" \n"));
}

}  // namespace

std::vector<LibraryVersion> LibraryVersions() {
  const std::string pugixml = std::to_string(PUGIXML_VERSION / 1000) + "." +
                              std::to_string(PUGIXML_VERSION % 1000 / 10);
  return {
      {"cairo", cairo_version_string()},
      {"FreeType", FreeTypeVersion()},
      {"fontconfig", Dotted(FcGetVersion(), 10000, 100)},
      {"libpng", png_get_libpng_ver(nullptr)},
      {"libjpeg-turbo", Dotted(LIBJPEG_TURBO_VERSION_NUMBER, 1000000, 1000)},
      {"giflib", Dotted(GIFLIB_MAJOR * 10000L + GIFLIB_MINOR * 100L + GIFLIB_RELEASE, 10000, 100)},
      {"libtiff", TiffVersion()},
      {"jbig2dec", std::to_string(JBIG2_VERSION_MAJOR) + "." + std::to_string(JBIG2_VERSION_MINOR)},
      {"libzip", zip_libzip_version()},
      {"pugixml", pugixml},
      {"OpenSSL", OpenSSL_version(OPENSSL_VERSION_STRING)},
  };
}

}  // namespace host
