#include "host/base/cairo_device.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <mutex>
#include <new>

#include "host/base/cairo_canvas.h"
#include "host/base/dib_device_cache.h"
#include "host/base/font.h"
#include "host/base/ft_face_source.h"
#include "host/base/memory.h"

namespace host {

namespace {

// cairo keeps coordinates in 24.8 fixed point; anything farther out wraps.
constexpr double kMaxCoord = 1 << 22;
// FreeType refuses sizes above 0xFFFF pixels per em, which would leave the
// context in a sticky error state.
constexpr double kMaxGlyphScale = 32768;
// Glyphs larger than this (pixels per em) are filled as outlines: cairo
// would otherwise render each as a mask of its full size and keep it in its
// process-wide glyph cache, however little of it falls on the device.
constexpr double kMaxCachedGlyphScale = 256;
// Widest pen in device pixels: wider already covers every clamped coordinate.
constexpr double kMaxPen = 1 << 24;

bool IsOk(cairo_t* cr) { return cairo_status(cr) == CAIRO_STATUS_SUCCESS; }

// The matrix in cairo's terms, or false when it has a non-finite entry or
// cannot be inverted (cairo_set_matrix would put the context in error).
bool ToCairoMatrix(const Matrix& m, cairo_matrix_t* out) {
  for (float v : {m.a, m.b, m.c, m.d, m.e, m.f}) {
    if (!std::isfinite(v)) return false;
  }
  cairo_matrix_init(out, m.a, m.b, m.c, m.d, m.e, m.f);
  cairo_matrix_t inverse = *out;
  return cairo_matrix_invert(&inverse) == CAIRO_STATUS_SUCCESS;
}

// The larger length scale of a linear map.
double MaxScale(const cairo_matrix_t& m) {
  return std::max(std::hypot(m.xx, m.yx), std::hypot(m.xy, m.yy));
}

void SetColor(cairo_t* cr, uint32_t argb) {
  cairo_set_source_rgba(cr, ((argb >> 16) & 0xFF) / 255.0, ((argb >> 8) & 0xFF) / 255.0,
                        (argb & 0xFF) / 255.0, (argb >> 24) / 255.0);
}

void SetBlend(cairo_t* cr, BlendMode blend) {
  cairo_set_operator(cr, blend == BlendMode::kMultiply ? CAIRO_OPERATOR_MULTIPLY
                                                       : CAIRO_OPERATOR_OVER);
}

// Before a blended operation on a document: cairo's PDF output (1.16)
// believes a blend mode still holds after a clip change ended it, and would
// draw the next blended operation normally. One transparent pixel drawn in
// the normal mode, inside the clip, makes it state the blend mode again.
// Call before the operation builds its path.
void RestateBlend(const CairoDevice::Canvas& canvas, BlendMode blend) {
  if (!canvas.forDocuments || blend == BlendMode::kNormal) return;
  cairo_t* cr = canvas.cr.get();
  if (!canvas.clearPixel) {
    canvas.clearPixel.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1));
    // Marked as drawn: a surface cairo knows to be clear is skipped.
    cairo_surface_mark_dirty(canvas.clearPixel.get());
  }
  cairo_save(cr);
  cairo_identity_matrix(cr);
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  cairo_clip_extents(cr, &x1, &y1, &x2, &y2);
  cairo_new_path(cr);
  cairo_rectangle(cr, x1, y1, std::min(1.0, x2 - x1), std::min(1.0, y2 - y1));
  cairo_set_source_surface(cr, canvas.clearPixel.get(), x1, y1);
  cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
  cairo_fill(cr);
  cairo_restore(cr);
}

// Replaces the current path with `path` mapped by `m`, in device space (the
// caller's CTM is the identity). False for a non-finite point.
bool SetPath(cairo_t* cr, const Path& path, const Matrix& m) {
  cairo_new_path(cr);
  double p[6];
  for (const Path::Segment& s : path.segments()) {
    const int points = s.op == Path::Op::kCubic ? 3 : s.op == Path::Op::kClose ? 0 : 1;
    for (int i = 0; i < points; ++i) {
      const double x = s.pts[2 * i], y = s.pts[2 * i + 1];
      const double dx = m.a * x + m.c * y + m.e;
      const double dy = m.b * x + m.d * y + m.f;
      if (!std::isfinite(dx) || !std::isfinite(dy)) {
        cairo_new_path(cr);
        return false;
      }
      p[2 * i] = std::clamp(dx, -kMaxCoord, kMaxCoord);
      p[2 * i + 1] = std::clamp(dy, -kMaxCoord, kMaxCoord);
    }
    switch (s.op) {
      case Path::Op::kMove:
        cairo_move_to(cr, p[0], p[1]);
        break;
      case Path::Op::kLine:
        cairo_line_to(cr, p[0], p[1]);
        break;
      case Path::Op::kCubic:
        cairo_curve_to(cr, p[0], p[1], p[2], p[3], p[4], p[5]);
        break;
      case Path::Op::kClose:
        cairo_close_path(cr);
        break;
    }
  }
  return true;
}

cairo_fill_rule_t CairoFillRule(FillRule rule) {
  return rule == FillRule::kEvenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING;
}

bool IsSourceFormat(DibFormat format) {
  return format == kDibIndexed8 || format == kDibRgb24 || format == kDibArgb32;
}

// Premultiplied pixels kept with a bitmap (Dib::KeepDeviceData), read-only
// once made and shared by every draw of the bitmap, on any thread.
struct PremultipliedPixels {
  std::unique_ptr<uint8_t, FreeMemoryDeleter> data;
  int stride = 0;
};
const char kPremultipliedKey = 0;
const cairo_user_data_key_t kPixelsHolderKey{};

template <class T>
void ReleaseHolder(void* holder) {
  delete static_cast<std::shared_ptr<T>*>(holder);
}

// Keeps `value` alive as long as cairo keeps `object` (`set` is its
// user-data setter). False when memory runs out.
template <class Object, class T>
bool KeepWith(Object* object,
              cairo_status_t (*set)(Object*, const cairo_user_data_key_t*, void*, cairo_destroy_func_t),
              const cairo_user_data_key_t* key, std::shared_ptr<T> value) {
  auto* holder = new (std::nothrow) std::shared_ptr<T>(std::move(value));
  if (!holder) return false;
  if (set(object, key, holder, ReleaseHolder<T>) != CAIRO_STATUS_SUCCESS) {
    delete holder;
    return false;
  }
  return true;
}

// A surface over the pixels kept with `dib`, made on first use; null when
// the bitmap keeps none (or memory runs out).
CairoSurfacePtr KeptSourceSurface(const Dib& dib) {
  const std::shared_ptr<DibDeviceCache>& cache = dib.GetDeviceCache();
  if (!cache) return nullptr;
  std::shared_ptr<const void> kept = cache->Find(&kPremultipliedKey);
  if (!kept) {
    auto pixels = std::make_shared<PremultipliedPixels>();
    pixels->stride = cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, dib.GetWidth());
    if (pixels->stride <= 0) return nullptr;
    pixels->data.reset(static_cast<uint8_t*>(
        AllocMemory(static_cast<size_t>(pixels->stride) * dib.GetHeight())));
    if (!pixels->data) return nullptr;
    ConvertToPremultiplied(dib, pixels->data.get(), pixels->stride);
    kept = pixels;
    cache->Store(&kPremultipliedKey, kept);
  }
  const auto* pixels = static_cast<const PremultipliedPixels*>(kept.get());
  // cairo only reads a source surface; the holder keeps the pixels alive as
  // long as cairo keeps the surface.
  CairoSurfacePtr surface(cairo_image_surface_create_for_data(
      pixels->data.get(), CAIRO_FORMAT_ARGB32, dib.GetWidth(), dib.GetHeight(), pixels->stride));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  if (!KeepWith(surface.get(), cairo_surface_set_user_data, &kPixelsHolderKey, kept)) return nullptr;
  return surface;
}

// A premultiplied ARGB32 copy of `dib` (formats 2, 4 and 7), or null; the
// copy kept with the bitmap when it keeps one.
CairoSurfacePtr MakeSourceSurface(const Dib& dib) {
  if (!IsSourceFormat(dib.GetFormat())) return nullptr;
  if (CairoSurfacePtr kept = KeptSourceSurface(dib)) return kept;
  CairoSurfacePtr surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, dib.GetWidth(), dib.GetHeight()));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(surface.get());
  ConvertToPremultiplied(dib, cairo_image_surface_get_data(surface.get()),
                         cairo_image_surface_get_stride(surface.get()));
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

// Serialises text through faces cairo opens from font files (vector
// output): cairo resolves such a face on use without a lock of its own.
std::mutex& FileFaceLock() {
  static std::mutex mutex;
  return mutex;
}

// Shows `count` glyphs of `font`, glyph i given by next(i) in text space
// (mapped to the device by `matrix`, each glyph shaped by `fontMatrix`).
// Glyph 0 draws no box, and origins far off the device are skipped. 0 when
// nothing could be drawn (no face, a singular or oversized glyph scale).
template <class Next>
int ShowGlyphs(const CairoDevice::Canvas& canvas, const Font& font,
               const Matrix& matrix, const cairo_matrix_t& fontMatrix, uint32_t color,
               BlendMode blend, int count, Next next) {
  const std::shared_ptr<const FaceSource> source = font.face();
  if (!source) return 0;
  // Vector output draws through the file's face where there is one (a
  // document embeds one font subset per cairo face); otherwise the host
  // face's own drawing face, which is then made only when needed.
  const auto* ft = canvas.forDocuments ? dynamic_cast<const FtFaceSource*>(source.get()) : nullptr;
  cairo_font_face_t* const fileFace = ft ? ft->CairoFileFace() : nullptr;
  cairo_font_face_t* const face = fileFace ? fileFace : source->CairoFace();
  cairo_matrix_t ctm;
  if (!face || !ToCairoMatrix(matrix, &ctm)) return 0;
  // Italic the face lacks: glyphs slanted by about 11 degrees.
  cairo_matrix_t glyphSpace = fontMatrix;
  if (font.SyntheticItalic()) {
    cairo_matrix_t slant;
    cairo_matrix_init(&slant, 1, 0, -0.2, 1, 0, 0);
    cairo_matrix_multiply(&glyphSpace, &slant, &fontMatrix);
  }
  // Bold the face lacks: outlines widened by a 24th of an em, as FreeType's
  // emboldening does.
  const double emboldenWidth = font.SyntheticBold() ? MaxScale(glyphSpace) / 24 : 0;
  // The glyphs' device scale must stay invertible and within what FreeType sizes.
  cairo_matrix_t glyphScale;
  cairo_matrix_multiply(&glyphScale, &glyphSpace, &ctm);
  const double det = glyphScale.xx * glyphScale.yy - glyphScale.xy * glyphScale.yx;
  if (MaxScale(glyphScale) > kMaxGlyphScale || !(std::fabs(det) > 1e-6)) return 0;
  const bool asOutlines = MaxScale(glyphScale) > kMaxCachedGlyphScale;

  cairo_t* cr = canvas.cr.get();
  std::unique_lock<std::mutex> fileFaceLock;
  if (fileFace) fileFaceLock = std::unique_lock<std::mutex>(FileFaceLock());
  // A document keeps the host face (and so its cairo faces) for its life.
  if (canvas.forDocuments) canvas.faces.emplace(source.get(), source);
  RestateBlend(canvas, blend);
  cairo_save(cr);
  cairo_set_matrix(cr, &ctm);
  cairo_set_font_face(cr, face);
  cairo_set_font_matrix(cr, &glyphSpace);
  cairo_set_font_options(cr, canvas.fontOptions.get());
  SetColor(cr, color);
  SetBlend(cr, blend);

  // Glyphs go out in batches so that no count needs an allocation.
  std::array<cairo_glyph_t, 256> batch;
  size_t pending = 0;
  for (int i = 0; i < count; ++i) {
    const cairo_glyph_t g = next(i);
    const double dx = ctm.xx * g.x + ctm.xy * g.y + ctm.x0;
    const double dy = ctm.yx * g.x + ctm.yy * g.y + ctm.y0;
    if (g.index != 0 && std::fabs(dx) < kMaxCoord && std::fabs(dy) < kMaxCoord) {
      batch[pending++] = g;
    }
    if (pending == batch.size() || (i + 1 == count && pending > 0)) {
      if (emboldenWidth > 0 || asOutlines) {
        // Emboldened glyphs are outlines widened by a stroke; very large
        // glyphs are filled as outlines rather than cached as huge masks.
        cairo_new_path(cr);
        cairo_glyph_path(cr, batch.data(), static_cast<int>(pending));
        if (emboldenWidth > 0) {
          cairo_set_line_width(cr, emboldenWidth);
          cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
          cairo_fill_preserve(cr);
          cairo_stroke(cr);
        } else {
          cairo_fill(cr);
        }
      } else {
        cairo_show_glyphs(cr, batch.data(), static_cast<int>(pending));
      }
      pending = 0;
    }
  }
  cairo_restore(cr);
  return IsOk(cr) ? 1 : 0;
}

}  // namespace

CairoDevice::CairoDevice(int width, int height, std::unique_ptr<Canvas> canvas)
    : width_(width), height_(height), canvas_(std::move(canvas)) {}

CairoDevice::~CairoDevice() = default;

std::unique_ptr<CairoDevice::Canvas> CairoDevice::Canvas::Make(CairoSurfacePtr surface) {
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  std::unique_ptr<Canvas> canvas(new (std::nothrow) Canvas());
  if (!canvas) return nullptr;
  canvas->surface = std::move(surface);
  canvas->cr.reset(cairo_create(canvas->surface.get()));
  canvas->fontOptions.reset(cairo_font_options_create());
  if (!IsOk(canvas->cr.get()) ||
      cairo_font_options_status(canvas->fontOptions.get()) != CAIRO_STATUS_SUCCESS) {
    return nullptr;
  }
  // Text is placed by our advances under arbitrary matrices: no grid fitting.
  cairo_font_options_set_antialias(canvas->fontOptions.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(canvas->fontOptions.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(canvas->fontOptions.get(), CAIRO_HINT_METRICS_OFF);
  return canvas;
}

void CairoDevice::OnSaveState() {
  if (canvas_) cairo_save(canvas_->cr.get());
}

void CairoDevice::OnRestoreState() {
  if (canvas_) cairo_restore(canvas_->cr.get());
}

void CairoDevice::OnClipRect(const GRect& rect) {
  if (!canvas_) return;
  cairo_t* cr = canvas_->cr.get();
  cairo_new_path(cr);
  GRect r = rect;
  r.Normalize();
  // A rectangle with a non-finite corner clips everything away.
  if (std::isfinite(r.left) && std::isfinite(r.top) && std::isfinite(r.right) &&
      std::isfinite(r.bottom)) {
    const double left = std::clamp<double>(r.left, -kMaxCoord, kMaxCoord);
    const double top = std::clamp<double>(r.top, -kMaxCoord, kMaxCoord);
    cairo_rectangle(cr, left, top, std::clamp<double>(r.right, -kMaxCoord, kMaxCoord) - left,
                    std::clamp<double>(r.bottom, -kMaxCoord, kMaxCoord) - top);
  }
  cairo_clip(cr);
}

bool CairoDevice::OnDrawBitmap(const Dib& dib, int x, int y) {
  if (!canvas_) return false;
  const int64_t right = int64_t{x} + dib.GetWidth(), bottom = int64_t{y} + dib.GetHeight();
  if (x >= width_ || y >= height_ || right <= 0 || bottom <= 0) return true;  // nothing visible
  CairoSurfacePtr source = MakeSourceSurface(dib);
  if (!source) return false;
  cairo_t* cr = canvas_->cr.get();
  cairo_save(cr);
  cairo_set_source_surface(cr, source.get(), x, y);
  cairo_rectangle(cr, x, y, dib.GetWidth(), dib.GetHeight());
  cairo_fill(cr);
  cairo_restore(cr);
  return IsOk(cr);
}

int CairoDevice::OnDrawText(const char32_t* codes, int count, Font& font, const Matrix& matrix,
                             uint32_t color, float fontSize) {
  if (!canvas_ || !std::isfinite(fontSize) || fontSize <= 0) return 0;
  cairo_matrix_t fontMatrix;
  cairo_matrix_init_scale(&fontMatrix, fontSize, fontSize);
  // A run from its origin: each glyph one advance after the previous one.
  double x = 0;
  return ShowGlyphs(*canvas_, font, matrix, fontMatrix,
                    color, BlendMode::kNormal, count, [&](int i) {
                      const uint32_t glyph = font.GetGlyphIndex(codes[i]);
                      const cairo_glyph_t g{glyph, x, 0};
                      x += font.GetGlyphAdvance(glyph) * static_cast<double>(fontSize) / 1000;
                      return g;
                    });
}

bool CairoDevice::OnFillPath(const Path& path, const Matrix& matrix, uint32_t color, FillRule rule,
                              BlendMode blend) {
  if (!canvas_) return false;
  cairo_t* cr = canvas_->cr.get();
  RestateBlend(*canvas_, blend);
  if (!SetPath(cr, path, matrix)) return false;
  cairo_save(cr);
  cairo_set_fill_rule(cr, CairoFillRule(rule));
  SetColor(cr, color);
  SetBlend(cr, blend);
  cairo_fill(cr);
  cairo_restore(cr);
  return IsOk(cr);
}

bool CairoDevice::OnStrokePath(const Path& path, const Matrix& matrix, uint32_t color,
                                const StrokeStyle& style, BlendMode blend) {
  cairo_matrix_t ctm;
  if (!canvas_ || !ToCairoMatrix(matrix, &ctm)) return false;
  cairo_t* cr = canvas_->cr.get();
  RestateBlend(*canvas_, blend);
  // The path is built in device space; the matrix set afterwards only scales
  // the pen and the dashes. A width of 0 draws one device pixel.
  if (!SetPath(cr, path, matrix)) return false;
  cairo_save(cr);
  const bool hairline = !(std::isfinite(style.width) && style.width > 0);
  if (!hairline) cairo_set_matrix(cr, &ctm);
  const double penScale = hairline ? 1.0 : MaxScale(ctm);
  // cairo's pen grows a vertex count with its device radius.
  cairo_set_line_width(cr, hairline ? 1.0 : std::min<double>(style.width, kMaxPen / penScale));
  static constexpr cairo_line_cap_t kCaps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND,
                                               CAIRO_LINE_CAP_SQUARE};
  static constexpr cairo_line_join_t kJoins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND,
                                                 CAIRO_LINE_JOIN_BEVEL};
  cairo_set_line_cap(cr, kCaps[std::min<size_t>(static_cast<size_t>(style.cap), 2)]);
  cairo_set_line_join(cr, kJoins[std::min<size_t>(static_cast<size_t>(style.join), 2)]);
  if (std::isfinite(style.miterLimit)) cairo_set_miter_limit(cr, std::max(1.0f, style.miterLimit));

  // Dashes with a negative or non-finite length, or a period under a device
  // pixel (millions of dashes for nothing), draw solid.
  std::array<double, 64> dashes;
  const size_t dashCount = std::min(style.dashes.size(), dashes.size());
  double period = 0;
  bool dashesValid = std::isfinite(style.dashOffset);
  for (size_t i = 0; i < dashCount; ++i) {
    dashes[i] = style.dashes[i];
    dashesValid = dashesValid && std::isfinite(dashes[i]) && dashes[i] >= 0;
    period += dashes[i];
  }
  if (dashesValid && dashCount > 0 && std::isfinite(period) && period * penScale >= 1) {
    cairo_set_dash(cr, dashes.data(), static_cast<int>(dashCount), style.dashOffset);
  }
  SetColor(cr, color);
  SetBlend(cr, blend);
  cairo_stroke(cr);
  cairo_restore(cr);
  return IsOk(cr);
}

void CairoDevice::OnClipPath(const Path& path, const Matrix& matrix, FillRule rule) {
  if (!canvas_) return;
  cairo_t* cr = canvas_->cr.get();
  // A path with a non-finite point leaves an empty path: everything is clipped.
  SetPath(cr, path, matrix);
  cairo_set_fill_rule(cr, CairoFillRule(rule));
  cairo_clip(cr);
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
}

bool CairoDevice::OnDrawBitmapMatrix(const Dib& dib, const Matrix& matrix, int alpha,
                                      BlendMode blend) {
  cairo_matrix_t ctm;
  if (!canvas_ || !ToCairoMatrix(matrix, &ctm)) return false;
  // User space becomes the bitmap's pixels: scale(1/w, 1/h), then the matrix.
  cairo_matrix_t full;
  cairo_matrix_init_scale(&full, 1.0 / dib.GetWidth(), 1.0 / dib.GetHeight());
  cairo_matrix_multiply(&full, &full, &ctm);
  cairo_matrix_t inverse = full;
  if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return false;
  CairoSurfacePtr source = MakeSourceSurface(dib);
  if (!source) return false;

  cairo_t* cr = canvas_->cr.get();
  RestateBlend(*canvas_, blend);
  cairo_save(cr);
  cairo_set_matrix(cr, &full);
  cairo_new_path(cr);
  cairo_rectangle(cr, 0, 0, dib.GetWidth(), dib.GetHeight());
  cairo_clip(cr);
  cairo_set_source_surface(cr, source.get(), 0, 0);
  // Padding keeps the edges from fading into transparency when filtered; the
  // clip above keeps the padding itself off the page.
  cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  SetBlend(cr, blend);
  cairo_paint_with_alpha(cr, std::clamp(alpha, 0, 255) / 255.0);
  cairo_restore(cr);
  return IsOk(cr);
}

bool CairoDevice::OnFillPathGradient(const Path& path, const Matrix& matrix,
                                      const Gradient& gradient, FillRule rule, int alpha,
                                      BlendMode blend) {
  cairo_matrix_t ctm;
  if (!canvas_ || !ToCairoMatrix(matrix, &ctm)) return false;
  for (float v : {gradient.x0, gradient.y0, gradient.r0, gradient.x1, gradient.y1, gradient.r1}) {
    if (!std::isfinite(v)) return false;
  }
  CairoPatternPtr pattern(
      gradient.kind == Gradient::Kind::kRadial
          ? cairo_pattern_create_radial(gradient.x0, gradient.y0, std::max(0.0f, gradient.r0),
                                        gradient.x1, gradient.y1, std::max(0.0f, gradient.r1))
          : cairo_pattern_create_linear(gradient.x0, gradient.y0, gradient.x1, gradient.y1));
  if (cairo_pattern_status(pattern.get()) != CAIRO_STATUS_SUCCESS) return false;
  const double opacity = std::clamp(alpha, 0, 255) / 255.0;
  for (const GradientStop& stop : gradient.stops) {
    const uint32_t c = stop.color;
    const double offset = std::isfinite(stop.offset) ? std::clamp(stop.offset, 0.0f, 1.0f) : 0.0;
    cairo_pattern_add_color_stop_rgba(pattern.get(), offset, ((c >> 16) & 0xFF) / 255.0,
                                      ((c >> 8) & 0xFF) / 255.0, (c & 0xFF) / 255.0,
                                      (c >> 24) / 255.0 * opacity);
  }
  static constexpr cairo_extend_t kExtends[] = {CAIRO_EXTEND_NONE, CAIRO_EXTEND_PAD,
                                                CAIRO_EXTEND_REPEAT, CAIRO_EXTEND_REFLECT};
  cairo_pattern_set_extend(pattern.get(),
                           kExtends[std::min<size_t>(static_cast<size_t>(gradient.extend), 3)]);
  // The path is built in device space, so the pattern maps device to user space.
  cairo_matrix_t inverse = ctm;
  cairo_matrix_invert(&inverse);
  cairo_pattern_set_matrix(pattern.get(), &inverse);

  cairo_t* cr = canvas_->cr.get();
  RestateBlend(*canvas_, blend);
  if (!SetPath(cr, path, matrix)) return false;
  cairo_save(cr);
  cairo_set_fill_rule(cr, CairoFillRule(rule));
  cairo_set_source(cr, pattern.get());
  SetBlend(cr, blend);
  cairo_fill(cr);
  cairo_restore(cr);
  return IsOk(cr);
}

int CairoDevice::OnDrawGlyphs(const GlyphPosition* glyphs, int count, Font& font,
                               const Matrix& matrix, const Matrix& glyphMatrix, uint32_t color,
                               BlendMode blend) {
  cairo_matrix_t fontMatrix;
  if (!canvas_ || !ToCairoMatrix(glyphMatrix, &fontMatrix)) return 0;
  fontMatrix.x0 = fontMatrix.y0 = 0;
  return ShowGlyphs(*canvas_, font, matrix, fontMatrix,
                    color, blend, count, [&](int i) {
                      return cairo_glyph_t{glyphs[i].glyph, glyphs[i].x, glyphs[i].y};
                    });
}

}  // namespace host
