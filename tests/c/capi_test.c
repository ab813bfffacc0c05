/* The C interface from C: opening, rendering, signatures, seal decoding and
 * every failure path. Prints the failed checks and exits non-zero.
 *   capi_test SOURCE_DIR */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tarvik/tarvik_c.h"

static int failures = 0;

static void expect(int ok, const char* what, int line) {
  if (ok) return;
  fprintf(stderr, "%s:%d: %s (last error: %s)\n", __FILE__, line, what, tarvik_last_error());
  ++failures;
}

#define CHECK(cond) expect((cond) != 0, #cond, __LINE__)
/* A status and a non-empty reason. */
#define CHECK_FAILS(call, expected) expect((call) == (expected) && tarvik_last_error()[0] != '\0', #call, __LINE__)

/* SOURCE/testdata/NAME, read whole; NULL when it cannot be read. */
static unsigned char* read_sample(const char* source, const char* name, size_t* size) {
  char path[4096];
  FILE* f = NULL;
  unsigned char* data = malloc(1 << 20);
  snprintf(path, sizeof path, "%s/testdata/%s", source, name);
  if (!data || !(f = fopen(path, "rb"))) {
    free(data);
    return NULL;
  }
  *size = fread(data, 1, 1 << 20, f);
  fclose(f);
  return data;
}

static void test_library(void) {
  CHECK(strcmp(tarvik_version(), "") != 0);
  CHECK(tarvik_api_version() == TARVIK_C_API_VERSION);
  CHECK(strcmp(tarvik_status_name(TARVIK_PAGE_OUT_OF_RANGE), tarvik_status_name(TARVIK_OK)) != 0);
  CHECK(strcmp(tarvik_status_name(12345), "unknown status") == 0);
  CHECK(strcmp(tarvik_verdict_name(TARVIK_INVALID), "invalid") == 0);
  tarvik_free(NULL);
  tarvik_close(NULL);
  tarvik_report_free(NULL);
  tarvik_image_free(NULL);
}

/* Every entry point refuses null handles and pointers without crashing. */
static void test_null_arguments(void) {
  tarvik_document* doc = (tarvik_document*)1;
  tarvik_image* image = (tarvik_image*)1;
  int n = 0, w = 0, h = 0;
  double mw = 0, mh = 0;
  unsigned char pixel[4];
  uint8_t* bytes = NULL;
  size_t size = 0;
  tarvik_signature sig = {.struct_size = sizeof sig};
  tarvik_stamp stamp = {.struct_size = sizeof stamp};
  tarvik_check check = {.struct_size = sizeof check};
  const char* text = NULL;

  CHECK_FAILS(tarvik_open(NULL, NULL, &doc), TARVIK_BAD_ARGUMENT);
  CHECK(doc == NULL);
  CHECK_FAILS(tarvik_open("x.ofd", NULL, NULL), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_open_memory(NULL, 0, NULL, &doc), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_page_count(NULL, &n), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_page_size(NULL, 0, &mw, &mh), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_pixel_size(NULL, 0, 150, &w, &h), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_render_rgba(NULL, 0, NULL, pixel, sizeof pixel, 0, &w, &h, NULL), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_render_png(NULL, 0, NULL, &bytes, &size, NULL), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_render_image(NULL, 0, NULL, &image, NULL), TARVIK_BAD_ARGUMENT);
  CHECK(image == NULL);
  CHECK_FAILS(tarvik_encode_png(NULL, 1, 1, 0, &bytes, &size), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_signature_count(NULL, &n), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_signature_info(NULL, 0, &sig), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_signature_stamp(NULL, 0, 0, &stamp), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_signature_check(NULL, 0, 0, &check), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_signature_problem(NULL, 0, 0, &text), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_report_seal_count(NULL, &n), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_report_warning(NULL, 0, &text), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_decode_seal(pixel, sizeof pixel, NULL, NULL, &w, &h, NULL), TARVIK_BAD_ARGUMENT);
}

/* Files and bytes that are not OFD documents. */
static void test_bad_input(const char* source) {
  static const unsigned char junk[] = "PK\3\4 not really a zip archive";
  char path[4096];
  tarvik_document* doc = NULL;
  uint8_t* rgba = NULL;
  int w = 0, h = 0, kind = -1;

  CHECK_FAILS(tarvik_open("/nonexistent/invoice.ofd", NULL, &doc), TARVIK_IO_ERROR);
  CHECK(strstr(tarvik_last_error(), "/nonexistent/invoice.ofd") != NULL);
  snprintf(path, sizeof path, "%s/testdata/sample_seal.png", source);
  CHECK_FAILS(tarvik_open(path, NULL, &doc), TARVIK_NOT_OFD);
  CHECK_FAILS(tarvik_open_memory(junk, sizeof junk, NULL, &doc), TARVIK_NOT_OFD);
  CHECK(doc == NULL);
  CHECK(tarvik_decode_seal(junk, sizeof junk, NULL, &rgba, &w, &h, &kind) != TARVIK_OK);
  CHECK(rgba == NULL && w == 0 && h == 0);
}

static void test_signed_sample(const char* source) {
  char path[4096];
  tarvik_document* doc = NULL;
  tarvik_open_options open_options;
  tarvik_render_options options;
  tarvik_signature sig = {.struct_size = sizeof sig};
  tarvik_stamp stamp = {.struct_size = sizeof stamp};
  tarvik_seal_result seal = {.struct_size = sizeof seal};
  tarvik_report* report = NULL;
  double mw = 0, mh = 0;
  int n = -1, w = 0, h = 0, pw = 0, ph = 0, kind = -1, stride = 0;
  uint8_t *rgba, *png = NULL, *decoded = NULL, *png2 = NULL, *pixels = NULL;
  size_t png_size = 0, png2_size = 0, bytes;
  unsigned char small[16];
  const char* text = NULL;
  tarvik_image* image = NULL;

  snprintf(path, sizeof path, "%s/testdata/signed_v4_png.ofd", source);
  tarvik_open_options_init(&open_options);
  open_options.verify = 0;
  CHECK(tarvik_open(path, &open_options, &doc) == TARVIK_OK);
  if (!doc) return;
  CHECK(tarvik_last_error()[0] == '\0');
  CHECK(tarvik_page_count(doc, &n) == TARVIK_OK && n == 1);
  CHECK(tarvik_page_size(doc, 0, &mw, &mh) == TARVIK_OK && mw == 210 && mh == 297);
  CHECK(tarvik_pixel_size(doc, 0, 50, &pw, &ph) == TARVIK_OK && pw == 413 && ph == 584);
  CHECK_FAILS(tarvik_page_size(doc, 1, &mw, &mh), TARVIK_PAGE_OUT_OF_RANGE);
  CHECK_FAILS(tarvik_pixel_size(doc, 0, 0, &pw, &ph), TARVIK_BAD_ARGUMENT);
  CHECK_FAILS(tarvik_pixel_size(doc, 0, 1e6, &w, &h), TARVIK_TOO_LARGE);

  /* Signatures, with an older caller's shorter struct honoured. */
  CHECK(tarvik_signature_count(doc, &n) == TARVIK_OK && n == 1);
  CHECK(tarvik_signature_info(doc, 0, &sig) == TARVIK_OK);
  CHECK(sig.usable && sig.ses_version == 4 && sig.stamp_count == 1 && sig.problem_count == 0);
  CHECK(strcmp(sig.picture_format, "PNG") == 0 && sig.seal_name[0] != '\0');
  CHECK(sig.verdict == TARVIK_NOT_CHECKED);
  memset(&sig, 0xAB, sizeof sig);
  sig.struct_size = offsetof(tarvik_signature, usable);
  CHECK(tarvik_signature_info(doc, 0, &sig) == TARVIK_OK && sig.struct_size == offsetof(tarvik_signature, usable));
  CHECK(sig.id[0] != '\0' && sig.usable == (int)0xABABABAB);
  CHECK(tarvik_signature_stamp(doc, 0, 0, &stamp) == TARVIK_OK && stamp.page == 0);
  CHECK(stamp.left < stamp.right && stamp.top < stamp.bottom);
  CHECK_FAILS(tarvik_signature_info(doc, 1, &sig), TARVIK_OUT_OF_RANGE);
  CHECK_FAILS(tarvik_signature_stamp(doc, 0, 1, &stamp), TARVIK_OUT_OF_RANGE);
  CHECK_FAILS(tarvik_signature_problem(doc, 0, 0, &text), TARVIK_OUT_OF_RANGE);
  sig.struct_size = 0;
  CHECK_FAILS(tarvik_signature_info(doc, 0, &sig), TARVIK_BAD_ARGUMENT);

  /* RGBA render, with the seal red in R and its report. */
  tarvik_render_options_init(&options);
  options.dpi = 50;
  bytes = (size_t)pw * ph * 4;
  rgba = malloc(bytes);
  CHECK(tarvik_render_rgba(doc, 0, &options, rgba, bytes, 0, &w, &h, &report) == TARVIK_OK);
  CHECK(w == pw && h == ph && report != NULL);
  CHECK(rgba[0] == 255 && rgba[3] == 255); /* white page corner */
  CHECK(tarvik_report_seal_count(report, &n) == TARVIK_OK && n == 1);
  CHECK(tarvik_report_seal(report, 0, &seal) == TARVIK_OK && seal.drawn && seal.signature == 0);
  CHECK(strcmp(seal.stamp_id, stamp.id) == 0);
  CHECK_FAILS(tarvik_report_seal(report, 1, &seal), TARVIK_OUT_OF_RANGE);
  tarvik_report_free(report);

  /* The library-allocated picture holds the same pixels. */
  CHECK(tarvik_render_image(doc, 0, &options, &image, NULL) == TARVIK_OK);
  CHECK(tarvik_image_pixels(image, &pixels, &w, &h, &stride) == TARVIK_OK);
  CHECK(w == pw && h == ph && stride == pw * 4 && memcmp(pixels, rgba, bytes) == 0);
  tarvik_image_free(image);
  CHECK_FAILS(tarvik_render_image(doc, 2, &options, &image, NULL), TARVIK_PAGE_OUT_OF_RANGE);
  CHECK(image == NULL);
  CHECK_FAILS(tarvik_image_pixels(NULL, &pixels, &w, &h, &stride), TARVIK_BAD_ARGUMENT);

  /* The PNG render and the encoder give the same bytes. */
  CHECK(tarvik_render_png(doc, 0, &options, &png, &png_size, NULL) == TARVIK_OK);
  CHECK(png_size > 8 && memcmp(png, "\211PNG", 4) == 0);
  CHECK(tarvik_decode_seal(png, png_size, NULL, &decoded, &w, &h, &kind) == TARVIK_OK);
  CHECK(kind == TARVIK_SEAL_RASTER && w == pw && h == ph);
  CHECK(tarvik_encode_png(rgba, pw, ph, 0, &png2, &png2_size) == TARVIK_OK);
  CHECK(png2_size == png_size && memcmp(png, png2, png_size) == 0);
  tarvik_free(png);
  tarvik_free(png2);
  tarvik_free(decoded);

  /* Failures of the render itself. */
  CHECK_FAILS(tarvik_render_rgba(doc, 1, &options, rgba, bytes, 0, &w, &h, NULL), TARVIK_PAGE_OUT_OF_RANGE);
  CHECK_FAILS(tarvik_render_rgba(doc, -1, &options, rgba, bytes, 0, &w, &h, NULL), TARVIK_PAGE_OUT_OF_RANGE);
  w = h = 0;
  CHECK_FAILS(tarvik_render_rgba(doc, 0, &options, small, sizeof small, 0, &w, &h, &report), TARVIK_BUFFER_TOO_SMALL);
  CHECK(w == pw && h == ph && report == NULL);
  CHECK_FAILS(tarvik_render_rgba(doc, 0, &options, rgba, bytes, pw * 4 - 1, &w, &h, NULL), TARVIK_BUFFER_TOO_SMALL);
  CHECK_FAILS(tarvik_render_rgba(doc, 0, &options, rgba, bytes - 1, 0, &w, &h, NULL), TARVIK_BUFFER_TOO_SMALL);
  options.color_mode = 3;
  CHECK_FAILS(tarvik_render_rgba(doc, 0, &options, rgba, bytes, 0, &w, &h, NULL), TARVIK_BAD_ARGUMENT);
  options.color_mode = TARVIK_COLOR_AS_DECODED;
  options.dpi = -1;
  CHECK_FAILS(tarvik_render_png(doc, 0, &options, &png, &png_size, NULL), TARVIK_BAD_ARGUMENT);
  CHECK(png == NULL);

  free(rgba);
  tarvik_close(doc);
}

/* Opening from bytes, with verification: the document keeps its own copy,
   and every check of the verdict can be read. */
static void test_memory_and_verdicts(const char* source) {
  size_t size = 0;
  unsigned char* data = read_sample(source, "signed_v4_ofdseal.ofd", &size);
  tarvik_document* doc = NULL;
  tarvik_signature sig = {.struct_size = sizeof sig};
  tarvik_check check = {.struct_size = sizeof check};
  int i;

  CHECK(data != NULL && tarvik_open_memory(data, size, NULL, &doc) == TARVIK_OK);
  free(data);
  if (!doc) return;
  CHECK(tarvik_signature_info(doc, 0, &sig) == TARVIK_OK && sig.verdict == TARVIK_INTACT && sig.check_count > 0);
  for (i = 0; i < sig.check_count; ++i)
    CHECK(tarvik_signature_check(doc, 0, i, &check) == TARVIK_OK && check.name[0] != '\0');
  CHECK_FAILS(tarvik_signature_check(doc, 0, sig.check_count, &check), TARVIK_OUT_OF_RANGE);
  tarvik_close(doc);
}

static void test_decode_seal(const char* source) {
  size_t size = 0;
  unsigned char* data = read_sample(source, "sample_seal.ofd", &size);
  uint8_t* rgba = NULL;
  int w = 0, h = 0, kind = -1;
  tarvik_seal_options options;

  CHECK(data != NULL);
  if (!data) return;
  tarvik_seal_options_init(&options);
  options.dpi = 150;
  CHECK(tarvik_decode_seal(data, size, &options, &rgba, &w, &h, &kind) == TARVIK_OK);
  CHECK(kind == TARVIK_SEAL_OFD && w == 236 && rgba != NULL); /* 40 mm at 150 dpi */
  tarvik_free(rgba);
  options.color_mode = TARVIK_COLOR_BLACK;
  CHECK(tarvik_decode_seal(data, size, &options, &rgba, &w, &h, &kind) == TARVIK_OK && rgba != NULL);
  tarvik_free(rgba);
  options.color_mode = -1;
  CHECK_FAILS(tarvik_decode_seal(data, size, &options, &rgba, &w, &h, &kind), TARVIK_BAD_ARGUMENT);
  free(data);
}

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: %s SOURCE_DIR\n", argv[0]);
    return 2;
  }
  test_library();
  test_null_arguments();
  test_bad_input(argv[1]);
  test_signed_sample(argv[1]);
  test_memory_and_verdicts(argv[1]);
  test_decode_seal(argv[1]);
  if (failures) fprintf(stderr, "%d checks failed\n", failures);
  return failures ? 1 : 0;
}
