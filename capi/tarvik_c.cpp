// The C interface over the document library: status codes instead of
// exceptions, a per-thread message, RGBA pixels and library-allocated bytes
// released with tarvik_free.
#include "tarvik/tarvik_c.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "host/base/codec.h"
#include "host/base/dib.h"
#include "tarvik/viewer.h"

namespace viewer = tarvik::viewer;

struct tarvik_document {
  std::unique_ptr<viewer::Document> doc;
};

struct tarvik_report {
  viewer::RenderReport report;
};

struct tarvik_image {
  std::unique_ptr<host::Dib> dib;  // 32 bits per pixel, already in RGBA order
};

namespace {

thread_local std::string lastError;

tarvik_status Fail(tarvik_status status, std::string message) {
  try {
    lastError = std::move(message);
  } catch (...) {
    lastError.clear();
  }
  return status;
}

tarvik_status Fail(const viewer::Error& error) {
  return Fail(static_cast<tarvik_status>(error.status), error.message);
}

tarvik_status Ok() {
  lastError.clear();
  return TARVIK_OK;
}

// Runs `body`, turning anything thrown into a status.
template <typename Body>
tarvik_status Guard(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return Fail(TARVIK_OUT_OF_MEMORY, "out of memory");
  } catch (const std::exception& e) {
    return Fail(TARVIK_INTERNAL, e.what());
  } catch (...) {
    return Fail(TARVIK_INTERNAL, "unexpected failure");
  }
}

tarvik_status NullArgument(const char* what) { return Fail(TARVIK_BAD_ARGUMENT, std::string(what) + " is null"); }

// Copies `full` into the caller's struct, up to the size the caller knows.
template <typename T>
tarvik_status FillStruct(T* out, const T& full) {
  if (out->struct_size < sizeof(size_t)) {
    return Fail(TARVIK_BAD_ARGUMENT, "struct_size is not set");
  }
  const size_t n = std::min(out->struct_size, sizeof(T));
  const size_t callerSize = out->struct_size;
  std::memcpy(static_cast<void*>(out), &full, n);
  out->struct_size = callerSize;
  return Ok();
}

// Reads an options struct of a possibly older, smaller layout over defaults.
template <typename T>
T ReadOptions(const T* in, const T& defaults) {
  T options = defaults;
  if (in && in->struct_size >= sizeof(size_t)) {
    std::memcpy(static_cast<void*>(&options), in, std::min(in->struct_size, sizeof(T)));
  }
  options.struct_size = sizeof(T);
  return options;
}

tarvik_open_options DefaultOpenOptions() {
  tarvik_open_options o{};
  o.struct_size = sizeof o;
  o.document_index = 0;
  o.verify = 1;
  o.trust_anchors = nullptr;
  return o;
}

tarvik_render_options DefaultRenderOptions() {
  tarvik_render_options o{};
  o.struct_size = sizeof o;
  o.dpi = 150;
  o.background = 0xFFFFFFFF;
  o.seals = 1;
  o.cross = 0;
  o.cross_invalid = 1;
  o.color_mode = TARVIK_COLOR_AS_DECODED;
  return o;
}

tarvik_seal_options DefaultSealOptions() {
  tarvik_seal_options o{};
  o.struct_size = sizeof o;
  o.dpi = 300;
  return o;
}

viewer::OpenOptions ToViewer(const tarvik_open_options* in) {
  const tarvik_open_options o = ReadOptions(in, DefaultOpenOptions());
  viewer::OpenOptions out;
  out.documentIndex = o.document_index;
  out.verify = o.verify != 0;
  if (o.trust_anchors) out.trustAnchors = o.trust_anchors;
  return out;
}

bool ToViewer(const tarvik_render_options* in, viewer::RenderOptions& out) {
  const tarvik_render_options o = ReadOptions(in, DefaultRenderOptions());
  if (o.color_mode < TARVIK_COLOR_AS_DECODED || o.color_mode > TARVIK_COLOR_BLACK) return false;
  out.dpi = o.dpi;
  out.background = o.background;
  out.seals = o.seals != 0;
  out.cross = o.cross != 0;
  out.crossInvalid = o.cross_invalid != 0;
  out.colorMode = o.color_mode;
  return true;
}

// Four 32-bit lanes (SSE2 and the like; both compilers we build with know
// the vector extension).
typedef uint32_t Pixels4 __attribute__((vector_size(16)));

// 0xAARRGGBB stored little-endian (B, G, R, A) to R, G, B, A: bytes 0 and
// 2 of each pixel trade places, four pixels per step. `in` may be `out`.
void BgraToRgba(const uint8_t* in, uint8_t* out, int width) {
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    Pixels4 p;
    std::memcpy(&p, in + 4 * x, sizeof p);
    p = (p & 0xFF00FF00u) | ((p >> 16) & 0xFFu) | ((p & 0xFFu) << 16);
    std::memcpy(out + 4 * x, &p, sizeof p);
  }
  for (; x < width; ++x) {
    uint32_t p;
    std::memcpy(&p, in + 4 * x, 4);
    p = (p & 0xFF00FF00u) | ((p >> 16) & 0xFFu) | ((p & 0xFFu) << 16);
    std::memcpy(out + 4 * x, &p, 4);
  }
}

// The swap is its own inverse.
void RgbaToBgra(const uint8_t* in, uint8_t* out, int width) { BgraToRgba(in, out, width); }

tarvik_status RenderDib(const tarvik_document* document, int page, const tarvik_render_options* options,
                        std::unique_ptr<host::Dib>& dib, tarvik_report** report) {
  if (report) *report = nullptr;
  if (!document) return NullArgument("the document");
  viewer::RenderOptions o;
  if (!ToViewer(options, o)) return Fail(TARVIK_BAD_ARGUMENT, "color_mode must be 0, 1 or 2");
  auto out = std::make_unique<tarvik_report>();
  dib = document->doc->RenderPage(page, o, &out->report);
  if (!dib) return Fail(out->report.error);
  if (report) *report = out.release();
  return Ok();
}

tarvik_status CopyToMalloc(const std::string& bytes, uint8_t** out, size_t* size) {
  auto* memory = static_cast<uint8_t*>(std::malloc(bytes.empty() ? 1 : bytes.size()));
  if (!memory) return Fail(TARVIK_OUT_OF_MEMORY, "out of memory");
  std::memcpy(memory, bytes.data(), bytes.size());
  *out = memory;
  *size = bytes.size();
  return Ok();
}

const viewer::SignatureInfo* SignatureAt(const tarvik_document* document, int index, tarvik_status& status) {
  if (!document) {
    status = NullArgument("the document");
    return nullptr;
  }
  const auto& list = document->doc->Signatures();
  if (index < 0 || static_cast<size_t>(index) >= list.size()) {
    status = Fail(TARVIK_OUT_OF_RANGE, "no signature " + std::to_string(index) + " (the document has " +
                                           std::to_string(list.size()) + ")");
    return nullptr;
  }
  return &list[static_cast<size_t>(index)];
}

template <typename List>
bool InRange(const List& list, int index, const char* what) {
  if (index >= 0 && static_cast<size_t>(index) < list.size()) return true;
  Fail(TARVIK_OUT_OF_RANGE,
       std::string("no ") + what + " " + std::to_string(index) + " (there are " + std::to_string(list.size()) + ")");
  return false;
}

}  // namespace

extern "C" {

const char* tarvik_version(void) { return TARVIK_VERSION_STRING; }

int tarvik_api_version(void) { return TARVIK_C_API_VERSION; }

const char* tarvik_last_error(void) { return lastError.c_str(); }

const char* tarvik_status_name(int status) {
  switch (status) {
    case TARVIK_BUFFER_TOO_SMALL: return "buffer too small";
    case TARVIK_OUT_OF_RANGE: return "index out of range";
    case TARVIK_INTERNAL: return "internal error";
    default:
      if (status >= TARVIK_OK && status <= TARVIK_UNSUPPORTED) {
        return viewer::StatusName(static_cast<viewer::Status>(status));
      }
      return "unknown status";
  }
}

const char* tarvik_verdict_name(int verdict) {
  if (verdict < TARVIK_NOT_CHECKED || verdict > TARVIK_UNKNOWN) return "unknown";
  return viewer::VerdictName(static_cast<viewer::Verdict>(verdict));
}

void tarvik_free(void* memory) { std::free(memory); }

void tarvik_open_options_init(tarvik_open_options* options) {
  if (options) *options = DefaultOpenOptions();
}

void tarvik_render_options_init(tarvik_render_options* options) {
  if (options) *options = DefaultRenderOptions();
}

void tarvik_seal_options_init(tarvik_seal_options* options) {
  if (options) *options = DefaultSealOptions();
}

tarvik_status tarvik_open(const char* path, const tarvik_open_options* options, tarvik_document** document) {
  return Guard([&] {
    if (!document) return NullArgument("the document pointer");
    *document = nullptr;
    if (!path) return NullArgument("the path");
    viewer::Error error;
    auto doc = viewer::Document::Open(path, &error, ToViewer(options));
    if (!doc) return Fail(error);
    *document = new tarvik_document{std::move(doc)};
    return Ok();
  });
}

tarvik_status tarvik_open_memory(const void* data, size_t size, const tarvik_open_options* options,
                                 tarvik_document** document) {
  return Guard([&] {
    if (!document) return NullArgument("the document pointer");
    *document = nullptr;
    viewer::Error error;
    auto doc = viewer::Document::OpenMemory(data, size, "<memory>", &error, ToViewer(options));
    if (!doc) return Fail(error);
    *document = new tarvik_document{std::move(doc)};
    return Ok();
  });
}

void tarvik_close(tarvik_document* document) { delete document; }

tarvik_status tarvik_page_count(const tarvik_document* document, int* count) {
  return Guard([&] {
    if (!document) return NullArgument("the document");
    if (!count) return NullArgument("count");
    *count = document->doc->PageCount();
    return Ok();
  });
}

tarvik_status tarvik_page_size(const tarvik_document* document, int page, double* width_mm, double* height_mm) {
  return Guard([&] {
    if (!document) return NullArgument("the document");
    if (!width_mm || !height_mm) return NullArgument("width_mm or height_mm");
    viewer::PageSize size;
    viewer::Error error;
    if (!document->doc->GetPageSize(page, size, &error)) return Fail(error);
    *width_mm = size.width;
    *height_mm = size.height;
    return Ok();
  });
}

tarvik_status tarvik_pixel_size(const tarvik_document* document, int page, double dpi, int* width, int* height) {
  return Guard([&] {
    if (!document) return NullArgument("the document");
    if (!width || !height) return NullArgument("width or height");
    viewer::Error error;
    if (!document->doc->GetPixelSize(page, dpi, *width, *height, &error)) return Fail(error);
    return Ok();
  });
}

tarvik_status tarvik_render_rgba(const tarvik_document* document, int page, const tarvik_render_options* options,
                                 uint8_t* buffer, size_t buffer_size, int stride, int* width, int* height,
                                 tarvik_report** report) {
  return Guard([&] {
    if (report) *report = nullptr;
    if (!buffer) return NullArgument("the buffer");
    if (!width || !height) return NullArgument("width or height");
    if (stride < 0) return Fail(TARVIK_BAD_ARGUMENT, "the stride is negative");
    std::unique_ptr<host::Dib> dib;
    tarvik_report* made = nullptr;
    if (tarvik_status s = RenderDib(document, page, options, dib, report ? &made : nullptr); s != TARVIK_OK) {
      return s;
    }
    std::unique_ptr<tarvik_report> owned(made);
    const int w = dib->GetWidth(), h = dib->GetHeight();
    *width = w;
    *height = h;
    const size_t rowBytes = static_cast<size_t>(w) * 4;
    const size_t pitch = stride == 0 ? rowBytes : static_cast<size_t>(stride);
    if (pitch < rowBytes) {
      return Fail(TARVIK_BUFFER_TOO_SMALL,
                  "a stride of " + std::to_string(stride) + " bytes is below a row of " + std::to_string(rowBytes));
    }
    const size_t needed = pitch * static_cast<size_t>(h - 1) + rowBytes;
    if (buffer_size < needed) {
      return Fail(TARVIK_BUFFER_TOO_SMALL, "the page needs " + std::to_string(needed) + " bytes (" +
                                               std::to_string(w) + " x " + std::to_string(h) + " pixels), the buffer has " +
                                               std::to_string(buffer_size));
    }
    for (int y = 0; y < h; ++y) BgraToRgba(dib->GetScanline(y), buffer + pitch * static_cast<size_t>(y), w);
    if (report) *report = owned.release();
    return Ok();
  });
}

tarvik_status tarvik_render_image(const tarvik_document* document, int page, const tarvik_render_options* options,
                                  tarvik_image** image, tarvik_report** report) {
  return Guard([&] {
    if (report) *report = nullptr;
    if (!image) return NullArgument("the image pointer");
    *image = nullptr;
    auto made = std::make_unique<tarvik_image>();
    tarvik_report* madeReport = nullptr;
    if (tarvik_status s = RenderDib(document, page, options, made->dib, report ? &madeReport : nullptr);
        s != TARVIK_OK) {
      return s;
    }
    host::Dib& dib = *made->dib;
    for (int y = 0; y < dib.GetHeight(); ++y) BgraToRgba(dib.GetScanline(y), dib.GetScanline(y), dib.GetWidth());
    *image = made.release();
    if (report) *report = madeReport;
    return Ok();
  });
}

tarvik_status tarvik_image_pixels(const tarvik_image* image, uint8_t** pixels, int* width, int* height,
                                  int* stride) {
  if (!image) return NullArgument("the image");
  if (!pixels || !width || !height || !stride) return NullArgument("pixels, width, height or stride");
  *pixels = const_cast<uint8_t*>(image->dib->GetBuffer());
  *width = image->dib->GetWidth();
  *height = image->dib->GetHeight();
  *stride = image->dib->GetPitch();
  return Ok();
}

void tarvik_image_free(tarvik_image* image) { delete image; }

tarvik_status tarvik_render_png(const tarvik_document* document, int page, const tarvik_render_options* options,
                                uint8_t** png, size_t* size, tarvik_report** report) {
  return Guard([&] {
    if (report) *report = nullptr;
    if (!png || !size) return NullArgument("png or size");
    *png = nullptr;
    *size = 0;
    std::unique_ptr<host::Dib> dib;
    tarvik_report* made = nullptr;
    if (tarvik_status s = RenderDib(document, page, options, dib, report ? &made : nullptr); s != TARVIK_OK) {
      return s;
    }
    std::unique_ptr<tarvik_report> owned(made);
    std::string bytes;
    if (!host::EncodePng(*dib, bytes, true)) return Fail(TARVIK_OUT_OF_MEMORY, "cannot encode the page as PNG");
    if (tarvik_status s = CopyToMalloc(bytes, png, size); s != TARVIK_OK) return s;
    if (report) *report = owned.release();
    return Ok();
  });
}

tarvik_status tarvik_encode_png(const uint8_t* rgba, int width, int height, int stride, uint8_t** png,
                                size_t* size) {
  return Guard([&] {
    if (!png || !size) return NullArgument("png or size");
    *png = nullptr;
    *size = 0;
    if (!rgba) return NullArgument("the pixels");
    if (!host::IsDibSizeAllowed(width, height)) {
      return Fail(TARVIK_TOO_LARGE, std::to_string(width) + " x " + std::to_string(height) +
                                        " pixels is empty or beyond the bitmap limits");
    }
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    const size_t pitch = stride == 0 ? rowBytes : static_cast<size_t>(stride);
    if (stride < 0 || pitch < rowBytes) return Fail(TARVIK_BAD_ARGUMENT, "the stride is below a row");
    auto dib = host::Dib::Create(width, height, host::kDibArgb32);
    if (!dib) return Fail(TARVIK_OUT_OF_MEMORY, "out of memory");
    for (int y = 0; y < height; ++y) RgbaToBgra(rgba + pitch * static_cast<size_t>(y), dib->GetScanline(y), width);
    std::string bytes;
    if (!host::EncodePng(*dib, bytes, true)) return Fail(TARVIK_OUT_OF_MEMORY, "cannot encode the picture as PNG");
    return CopyToMalloc(bytes, png, size);
  });
}

tarvik_status tarvik_report_seal_count(const tarvik_report* report, int* count) {
  if (!report) return NullArgument("the report");
  if (!count) return NullArgument("count");
  *count = static_cast<int>(report->report.seals.size());
  return Ok();
}

tarvik_status tarvik_report_seal(const tarvik_report* report, int index, tarvik_seal_result* result) {
  return Guard([&] {
    if (!report) return NullArgument("the report");
    if (!result) return NullArgument("the result");
    if (!InRange(report->report.seals, index, "seal result")) return TARVIK_OUT_OF_RANGE;
    const viewer::SealResult& s = report->report.seals[static_cast<size_t>(index)];
    tarvik_seal_result full{};
    full.struct_size = sizeof full;
    full.signature = s.signature;
    full.stamp_id = s.stampId.c_str();
    full.drawn = s.drawn;
    full.crossed = s.crossed;
    full.reason = s.reason.c_str();
    return FillStruct(result, full);
  });
}

tarvik_status tarvik_report_warning_count(const tarvik_report* report, int* count) {
  if (!report) return NullArgument("the report");
  if (!count) return NullArgument("count");
  *count = static_cast<int>(report->report.warnings.size());
  return Ok();
}

tarvik_status tarvik_report_warning(const tarvik_report* report, int index, const char** text) {
  return Guard([&] {
    if (!report) return NullArgument("the report");
    if (!text) return NullArgument("text");
    if (!InRange(report->report.warnings, index, "warning")) return TARVIK_OUT_OF_RANGE;
    *text = report->report.warnings[static_cast<size_t>(index)].c_str();
    return Ok();
  });
}

void tarvik_report_free(tarvik_report* report) { delete report; }

tarvik_status tarvik_signature_count(const tarvik_document* document, int* count) {
  if (!document) return NullArgument("the document");
  if (!count) return NullArgument("count");
  *count = static_cast<int>(document->doc->Signatures().size());
  return Ok();
}

tarvik_status tarvik_signature_info(const tarvik_document* document, int index, tarvik_signature* out) {
  return Guard([&] {
    if (!out) return NullArgument("the signature");
    tarvik_status status = TARVIK_OK;
    const viewer::SignatureInfo* s = SignatureAt(document, index, status);
    if (!s) return status;
    tarvik_signature f{};
    f.struct_size = sizeof f;
    f.id = s->id.c_str();
    f.type = s->type.c_str();
    f.location = s->location.c_str();
    f.usable = s->usable;
    f.problem_count = static_cast<int>(s->problems.size());
    f.provider = s->provider.c_str();
    f.signature_method = s->signatureMethod.c_str();
    f.signature_date_time = s->signatureDateTime.c_str();
    f.check_method = s->checkMethod.c_str();
    f.reference_count = s->referenceCount;
    f.seal_location = s->sealLocation.c_str();
    f.signed_value_location = s->signedValueLocation.c_str();
    f.ses_version = s->sesVersion;
    f.seal_name = s->sealName.c_str();
    f.seal_id = s->sealId.c_str();
    f.valid_start = s->validStart.c_str();
    f.valid_end = s->validEnd.c_str();
    f.signing_time = s->signingTime.c_str();
    f.picture_type = s->pictureType.c_str();
    f.picture_format = s->pictureFormat.c_str();
    f.picture_width_mm = s->pictureWidth;
    f.picture_height_mm = s->pictureHeight;
    f.stamp_count = static_cast<int>(s->stamps.size());
    f.verdict = static_cast<int>(s->verdict);
    f.verdict_reason = s->verdictReason.c_str();
    f.signer = s->signer.c_str();
    f.check_count = static_cast<int>(s->checks.size());
    return FillStruct(out, f);
  });
}

tarvik_status tarvik_signature_stamp(const tarvik_document* document, int signature, int index, tarvik_stamp* out) {
  return Guard([&] {
    if (!out) return NullArgument("the stamp");
    tarvik_status status = TARVIK_OK;
    const viewer::SignatureInfo* s = SignatureAt(document, signature, status);
    if (!s) return status;
    if (!InRange(s->stamps, index, "stamp")) return TARVIK_OUT_OF_RANGE;
    const viewer::StampInfo& st = s->stamps[static_cast<size_t>(index)];
    tarvik_stamp f{};
    f.struct_size = sizeof f;
    f.id = st.id.c_str();
    f.page_id = st.pageId;
    f.page = st.page;
    f.left = st.boundary.left;
    f.top = st.boundary.top;
    f.right = st.boundary.right;
    f.bottom = st.boundary.bottom;
    f.has_clip = !st.clip.IsRectNull();
    f.clip_left = st.clip.left;
    f.clip_top = st.clip.top;
    f.clip_right = st.clip.right;
    f.clip_bottom = st.clip.bottom;
    return FillStruct(out, f);
  });
}

tarvik_status tarvik_signature_check(const tarvik_document* document, int signature, int index, tarvik_check* out) {
  return Guard([&] {
    if (!out) return NullArgument("the check");
    tarvik_status status = TARVIK_OK;
    const viewer::SignatureInfo* s = SignatureAt(document, signature, status);
    if (!s) return status;
    if (!InRange(s->checks, index, "check")) return TARVIK_OUT_OF_RANGE;
    const viewer::CheckResult& c = s->checks[static_cast<size_t>(index)];
    tarvik_check f{};
    f.struct_size = sizeof f;
    f.name = c.name.c_str();
    f.outcome = static_cast<int>(c.outcome);
    f.detail = c.detail.c_str();
    return FillStruct(out, f);
  });
}

tarvik_status tarvik_signature_problem(const tarvik_document* document, int signature, int index, const char** text) {
  return Guard([&] {
    if (!text) return NullArgument("text");
    tarvik_status status = TARVIK_OK;
    const viewer::SignatureInfo* s = SignatureAt(document, signature, status);
    if (!s) return status;
    if (!InRange(s->problems, index, "problem")) return TARVIK_OUT_OF_RANGE;
    *text = s->problems[static_cast<size_t>(index)].c_str();
    return Ok();
  });
}

tarvik_status tarvik_decode_seal(const void* data, size_t size, const tarvik_seal_options* options, uint8_t** rgba,
                                 int* width, int* height, int* kind) {
  return Guard([&] {
    if (kind) *kind = TARVIK_SEAL_UNKNOWN;
    if (!rgba || !width || !height) return NullArgument("rgba, width or height");
    *rgba = nullptr;
    *width = *height = 0;
    const tarvik_seal_options o = ReadOptions(options, DefaultSealOptions());
    if (o.color_mode < TARVIK_COLOR_AS_DECODED || o.color_mode > TARVIK_COLOR_BLACK) {
      return Fail(TARVIK_BAD_ARGUMENT, "color_mode must be 0, 1 or 2");
    }
    tarvik::RenderSealParam::ImageParam image;
    image.crossMark = o.cross != 0;
    image.colorMode = o.color_mode;
    viewer::SealDecodeOptions decode;
    decode.dpi = o.dpi;
    decode.width = o.width;
    decode.height = o.height;
    if (o.cross || o.color_mode != TARVIK_COLOR_AS_DECODED) decode.image = &image;
    viewer::Error error;
    viewer::SealFileKind found = viewer::SealFileKind::kUnknown;
    std::unique_ptr<host::Dib> dib = viewer::DecodeSeal(data, size, decode, &error, &found);
    if (kind) *kind = static_cast<int>(found);
    if (!dib) return Fail(error);
    if (dib->GetFormat() != host::kDibArgb32) {
      dib = dib->CloneConvert(host::kDibArgb32);
      if (!dib) return Fail(TARVIK_OUT_OF_MEMORY, "out of memory converting the seal picture");
    }
    const int w = dib->GetWidth(), h = dib->GetHeight();
    const size_t rowBytes = static_cast<size_t>(w) * 4;
    auto* out = static_cast<uint8_t*>(std::malloc(rowBytes * static_cast<size_t>(h)));
    if (!out) return Fail(TARVIK_OUT_OF_MEMORY, "out of memory");
    for (int y = 0; y < h; ++y) BgraToRgba(dib->GetScanline(y), out + rowBytes * static_cast<size_t>(y), w);
    *rgba = out;
    *width = w;
    *height = h;
    return Ok();
  });
}

}  // extern "C"
