/* Tarvik's C interface: OFD documents rendered with their seals, their
 * signatures and verdicts listed, seal pictures decoded. Library tarvik_c
 * (pkg-config tarvik-c, CMake tarvik::c).
 *
 *   tarvik_document* doc;
 *   if (tarvik_open("invoice.ofd", NULL, &doc) != TARVIK_OK) {
 *     puts(tarvik_last_error());
 *     return 1;
 *   }
 *   int w, h;
 *   tarvik_pixel_size(doc, 0, 150, &w, &h);
 *   uint8_t* rgba = malloc((size_t)w * h * 4);
 *   tarvik_render_rgba(doc, 0, NULL, rgba, (size_t)w * h * 4, 0, &w, &h, NULL);
 *   ...
 *   free(rgba);
 *   tarvik_close(doc);
 *
 * Conventions:
 *  - Every function that can fail returns a tarvik_status; on failure
 *    tarvik_last_error() holds the reason for the calling thread. Nothing is
 *    thrown, nothing is printed, a null handle or pointer is a
 *    TARVIK_BAD_ARGUMENT, not a crash.
 *  - Strings are UTF-8 and NUL-terminated, paths included.
 *  - Pages, signatures and stamps are numbered from 0.
 *  - Pixels are RGBA: four bytes per pixel in the order R, G, B, A in memory,
 *    straight (not premultiplied) alpha, rows top to bottom.
 *  - Memory this library allocates for the caller is released with
 *    tarvik_free(); strings inside a signature or stamp belong to the
 *    document and stay valid until tarvik_close().
 *  - Option structs start with struct_size (set by the *_init functions), so
 *    that later versions can append fields without breaking callers.
 *  - Thread safety: every function may be called from any thread. A
 *    document may be used by several threads at once (rendering included),
 *    except tarvik_close(), which must not overlap any other call on it.
 */
#ifndef TARVIK_TARVIK_C_H
#define TARVIK_TARVIK_C_H

#include <stddef.h>
#include <stdint.h>

#if defined(TARVIK_C_BUILDING)
#define TARVIK_C_API __attribute__((visibility("default")))
#else
#define TARVIK_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The interface revision: grows when functions or fields are added. */
#define TARVIK_C_API_VERSION 1

/* What a call concluded. Values are stable. */
typedef enum tarvik_status {
  TARVIK_OK = 0,
  TARVIK_BAD_ARGUMENT = 1,      /* null handle or pointer, empty input, dpi not positive */
  TARVIK_IO_ERROR = 2,          /* the file cannot be read */
  TARVIK_NOT_OFD = 3,           /* not a zip archive, or no OFD.xml with an OFD root */
  TARVIK_BAD_DOCUMENT = 4,      /* no document, or its Document.xml is missing or malformed */
  TARVIK_PAGE_OUT_OF_RANGE = 5, /* no page with that index */
  TARVIK_BAD_PAGE = 6,          /* the page's file is missing or malformed */
  TARVIK_TOO_LARGE = 7,         /* the bitmap would exceed the size limits */
  TARVIK_OUT_OF_MEMORY = 8,
  TARVIK_BAD_SEAL = 9,          /* seal data that cannot be read or decoded */
  TARVIK_UNSUPPORTED = 10,      /* a format or algorithm that is not supported */
  TARVIK_BUFFER_TOO_SMALL = 100, /* the caller's buffer cannot hold the result */
  TARVIK_OUT_OF_RANGE = 101,    /* no signature, stamp, check or seal result with that index */
  TARVIK_INTERNAL = 102         /* an unexpected failure inside the library */
} tarvik_status;

/* What verifying a signature concluded. Values are stable. */
typedef enum tarvik_verdict {
  TARVIK_NOT_CHECKED = 0, /* verification was turned off */
  TARVIK_VALID = 1,       /* everything holds and the signer chains to a trust anchor */
  TARVIK_INTACT = 2,      /* everything holds; no trust anchors were given */
  TARVIK_INVALID = 3,     /* a signed file changed or is missing, or a signature does not verify */
  TARVIK_UNKNOWN = 4      /* cannot be checked (the reason says why) */
} tarvik_verdict;

/* Seal colours. */
enum { TARVIK_COLOR_AS_DECODED = 0, TARVIK_COLOR_GREY = 1, TARVIK_COLOR_BLACK = 2 };

/* What seal bytes were found to be (tarvik_decode_seal). */
enum {
  TARVIK_SEAL_UNKNOWN = 0,
  TARVIK_SEAL_RASTER = 1,       /* a picture (PNG, JPEG, GIF, BMP, TIFF) */
  TARVIK_SEAL_OFD = 2,          /* an OFD seal package */
  TARVIK_SEAL_FILE = 3,         /* a seal file (.esl), versions 1 and 4 */
  TARVIK_SEAL_SIGNED_VALUE = 4  /* a signed value (SignedValue.dat) holding a seal */
};

typedef struct tarvik_document tarvik_document;
typedef struct tarvik_report tarvik_report;
typedef struct tarvik_image tarvik_image;

/* ---- Library ---------------------------------------------------------- */

/* The library's version, "MAJOR.MINOR.PATCH". Thread-safe. */
TARVIK_C_API const char* tarvik_version(void);
/* TARVIK_C_API_VERSION of the library loaded at run time. Thread-safe. */
TARVIK_C_API int tarvik_api_version(void);
/* The reason of the last failed call on this thread; "" after a successful
 * call that returns a status. Valid until the thread's next call into the
 * library. Thread-safe: each thread has its own. */
TARVIK_C_API const char* tarvik_last_error(void);
/* A short fixed name ("ok", "page out of range", ...); "unknown status" for
 * numbers not listed. Thread-safe. */
TARVIK_C_API const char* tarvik_status_name(int status);
/* "not checked", "valid", "intact", "invalid", "unknown". Thread-safe. */
TARVIK_C_API const char* tarvik_verdict_name(int verdict);
/* Releases memory this library allocated for the caller; null is ignored.
 * Thread-safe (each block released once). */
TARVIK_C_API void tarvik_free(void* memory);

/* ---- Documents -------------------------------------------------------- */

typedef struct tarvik_open_options {
  size_t struct_size;
  int document_index;        /* which document of the package; 0 */
  int verify;                /* nonzero: verify every signature while opening; 1 */
  const char* trust_anchors; /* a PEM file or a directory of PEM files; NULL: none */
} tarvik_open_options;

/* Fills `options` with the defaults above. Thread-safe. */
TARVIK_C_API void tarvik_open_options_init(tarvik_open_options* options);

/* Opens the OFD file at `path`; `options` NULL for the defaults. On success
 * *document receives a handle to release with tarvik_close(); on failure it
 * receives NULL. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_open(const char* path, const tarvik_open_options* options,
                                       tarvik_document** document);
/* The same for an OFD package held in memory (the bytes are copied; the
 * caller may release them on return). Thread-safe. */
TARVIK_C_API tarvik_status tarvik_open_memory(const void* data, size_t size,
                                              const tarvik_open_options* options,
                                              tarvik_document** document);
/* Releases a document; NULL is ignored. Not thread-safe for that document:
 * no other call on it may overlap. */
TARVIK_C_API void tarvik_close(tarvik_document* document);

/* Number of pages. Thread-safe, also on one document from several threads
 * (as are all the document calls below, rendering included). */
TARVIK_C_API tarvik_status tarvik_page_count(const tarvik_document* document, int* count);
/* Page size in millimetres. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_page_size(const tarvik_document* document, int page,
                                            double* width_mm, double* height_mm);
/* Pixel size of a page rendered at `dpi`: millimetres x dpi / 25.4,
 * truncated. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_pixel_size(const tarvik_document* document, int page, double dpi,
                                             int* width, int* height);

/* ---- Rendering -------------------------------------------------------- */

typedef struct tarvik_render_options {
  size_t struct_size;
  double dpi;          /* 150 */
  uint32_t background; /* 0xAARRGGBB the page starts with; 0xFFFFFFFF */
  int seals;           /* nonzero: draw the seals of the signatures; 1 */
  int cross;           /* nonzero: a cross over every seal; 0 */
  int cross_invalid;   /* nonzero: a cross over seals whose signature verified invalid; 1 */
  int color_mode;      /* TARVIK_COLOR_*; TARVIK_COLOR_AS_DECODED */
} tarvik_render_options;

/* Fills `options` with the defaults above. Thread-safe. */
TARVIK_C_API void tarvik_render_options_init(tarvik_render_options* options);

/* Renders `page` (options NULL: the defaults) into the caller's RGBA buffer
 * of `buffer_size` bytes, `stride` bytes per row (0: width x 4). *width and
 * *height receive the pixel size (also on TARVIK_BUFFER_TOO_SMALL, so that
 * the caller can allocate and retry; tarvik_pixel_size tells it beforehand).
 * `report`, when not NULL, receives what happened to the page's seals (on
 * success only; release it with tarvik_report_free). Thread-safe: threads
 * may render pages of one document at once, into different buffers. */
TARVIK_C_API tarvik_status tarvik_render_rgba(const tarvik_document* document, int page,
                                              const tarvik_render_options* options, uint8_t* buffer,
                                              size_t buffer_size, int stride, int* width, int* height,
                                              tarvik_report** report);
/* Renders `page` into a new RGBA picture the library allocates (the
 * fastest way: no copy of the pixels); read it with tarvik_image_pixels and
 * release it with tarvik_image_free. `report` as above. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_render_image(const tarvik_document* document, int page,
                                               const tarvik_render_options* options,
                                               tarvik_image** image, tarvik_report** report);
/* The picture's RGBA pixels (the caller may change them), its size and its
 * bytes per row. Valid until tarvik_image_free. Thread-safe; an image is
 * freed once, after every other use of it. */
TARVIK_C_API tarvik_status tarvik_image_pixels(const tarvik_image* image, uint8_t** pixels,
                                               int* width, int* height, int* stride);
TARVIK_C_API void tarvik_image_free(tarvik_image* image);
/* Renders `page` into a new PNG file image (32-bit RGBA): *png receives the
 * bytes (release with tarvik_free), *size their count. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_render_png(const tarvik_document* document, int page,
                                             const tarvik_render_options* options, uint8_t** png,
                                             size_t* size, tarvik_report** report);
/* Encodes an RGBA picture (`stride` bytes per row, 0: width x 4) as PNG.
 * Thread-safe. */
TARVIK_C_API tarvik_status tarvik_encode_png(const uint8_t* rgba, int width, int height, int stride,
                                             uint8_t** png, size_t* size);

/* What happened to one seal annotation of a rendered page. */
typedef struct tarvik_seal_result {
  size_t struct_size;
  int signature;        /* index of its signature; -1 when unknown */
  const char* stamp_id; /* the stamp annotation's ID */
  int drawn;            /* 0: the seal could not be read; the page is drawn without it */
  int crossed;          /* drawn with the cross mark */
  const char* reason;   /* why it was not drawn; "" when drawn */
} tarvik_seal_result;

/* Number of seal annotations of the rendered page. The report calls are
 * thread-safe; tarvik_report_free must come after every other use. */
TARVIK_C_API tarvik_status tarvik_report_seal_count(const tarvik_report* report, int* count);
/* Seal result `index`; strings valid until tarvik_report_free. Set
 * result->struct_size = sizeof *result first. */
TARVIK_C_API tarvik_status tarvik_report_seal(const tarvik_report* report, int index,
                                              tarvik_seal_result* result);
/* Number of content warnings, and warning `index` (what was skipped, and why). */
TARVIK_C_API tarvik_status tarvik_report_warning_count(const tarvik_report* report, int* count);
TARVIK_C_API tarvik_status tarvik_report_warning(const tarvik_report* report, int index,
                                                 const char** text);
TARVIK_C_API void tarvik_report_free(tarvik_report* report);

/* ---- Signatures and verdicts ------------------------------------------ */

/* One signature of the document. Strings belong to the document. */
typedef struct tarvik_signature {
  size_t struct_size;
  const char* id;        /* ID in the signature list */
  const char* type;      /* "Seal" or "Sign" */
  const char* location; /* its Signature.xml */
  int usable;            /* 0: cannot be used; problems say why */
  int problem_count;     /* see tarvik_signature_problem */
  const char* provider;
  const char* signature_method;
  const char* signature_date_time;
  const char* check_method;
  int reference_count;
  const char* seal_location;         /* "" when none */
  const char* signed_value_location; /* "" when none */
  int ses_version;                   /* 1 or 4; 0 when not a seal */
  const char* seal_name;
  const char* seal_id;
  const char* valid_start;
  const char* valid_end;
  const char* signing_time;
  const char* picture_type;   /* as the seal says: "PNG", "ofd", ... */
  const char* picture_format; /* what the bytes are */
  int picture_width_mm;
  int picture_height_mm;
  int stamp_count;            /* see tarvik_signature_stamp */
  int verdict;                /* tarvik_verdict */
  const char* verdict_reason; /* "" when valid or intact */
  const char* signer;         /* the signer certificate's subject; "" when unknown */
  int check_count;            /* see tarvik_signature_check */
} tarvik_signature;

/* Where a signature's seal appears on a page. */
typedef struct tarvik_stamp {
  size_t struct_size;
  const char* id;
  uint32_t page_id; /* the page ID as written */
  int page;         /* page index; -1 when no page has that ID */
  double left, top, right, bottom;                     /* page millimetres */
  int has_clip;
  double clip_left, clip_top, clip_right, clip_bottom; /* relative to the boundary */
} tarvik_stamp;

/* One check made while verifying. */
typedef struct tarvik_check {
  size_t struct_size;
  const char* name;   /* "references", "signature value", ... */
  int outcome;        /* 0 passed, 1 failed, 2 not checked */
  const char* detail;
} tarvik_check;

TARVIK_C_API tarvik_status tarvik_signature_count(const tarvik_document* document, int* count);
/* Signature `index`. Set out->struct_size = sizeof *out first (likewise for
 * stamps and checks). The signature calls are thread-safe. */
TARVIK_C_API tarvik_status tarvik_signature_info(const tarvik_document* document, int index,
                                            tarvik_signature* out);
TARVIK_C_API tarvik_status tarvik_signature_stamp(const tarvik_document* document, int signature,
                                                  int index, tarvik_stamp* out);
TARVIK_C_API tarvik_status tarvik_signature_check(const tarvik_document* document, int signature,
                                                  int index, tarvik_check* out);
TARVIK_C_API tarvik_status tarvik_signature_problem(const tarvik_document* document, int signature,
                                                    int index, const char** text);

/* ---- Seal pictures ---------------------------------------------------- */

typedef struct tarvik_seal_options {
  size_t struct_size;
  /* OFD seal pictures: resolution (300), or 0 to use width x height. An
   * adjusted picture (cross or colour) is drawn at 300 dpi. */
  int dpi;
  int width;
  int height;
  int cross;      /* nonzero: a cross over the picture */
  int color_mode; /* TARVIK_COLOR_* */
} tarvik_seal_options;

/* Fills `options` with the defaults above. Thread-safe. */
TARVIK_C_API void tarvik_seal_options_init(tarvik_seal_options* options);

/* Decodes a seal picture, OFD seal package, seal file or signed value into a
 * new RGBA picture: *rgba (release with tarvik_free), width x 4 bytes per
 * row. `kind`, when not NULL, receives TARVIK_SEAL_*. Thread-safe. */
TARVIK_C_API tarvik_status tarvik_decode_seal(const void* data, size_t size,
                                              const tarvik_seal_options* options, uint8_t** rgba,
                                              int* width, int* height, int* kind);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_TARVIK_C_H */
