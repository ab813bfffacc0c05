// Faces and fonts with metrics set by the test, for exact layout checks.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "host/base/font.h"

namespace testing_support {

/// What one character maps to: its glyph and that glyph's metrics
/// (thousandths of the font size).
struct GlyphMetrics {
  uint32_t glyph = 0;
  int advance = 0;
  int height = 0;
};

/// A FaceSource without outlines: codes map to glyphs through the table;
/// glyphs not in the table (including 0) have `defaultAdvance` and
/// `defaultHeight`. CairoFace() is null. Immutable, thread-safe.
class FixedMetricsFace : public host::FaceSource {
 public:
  explicit FixedMetricsFace(std::map<uint32_t, GlyphMetrics> byCode, int defaultAdvance = 1000,
                            int defaultHeight = 0)
      : byCode_(std::move(byCode)), defaultAdvance_(defaultAdvance), defaultHeight_(defaultHeight) {
    for (const auto& [code, m] : byCode_) byGlyph_[m.glyph] = m;
  }

  uint32_t GlyphIndex(uint32_t code) const override {
    auto it = byCode_.find(code);
    return it == byCode_.end() ? 0 : it->second.glyph;
  }
  int GlyphAdvance(uint32_t glyph) const override { return Of(glyph, defaultAdvance_, &GlyphMetrics::advance); }
  int GlyphHeight(uint32_t glyph) const override { return Of(glyph, defaultHeight_, &GlyphMetrics::height); }
  std::string Describe() const override { return "FixedMetrics"; }

 private:
  int Of(uint32_t glyph, int fallback, int GlyphMetrics::*field) const {
    auto it = byGlyph_.find(glyph);
    return it == byGlyph_.end() ? fallback : it->second.*field;
  }
  std::map<uint32_t, GlyphMetrics> byCode_, byGlyph_;
  int defaultAdvance_, defaultHeight_;
};

/// A loaded host::Font over a FixedMetricsFace, e.g.
/// `FixedMetricsFont font({{U'A', {1, 500, 700}}, {U'中', {2, 1000, 800}}}, 600);`
class FixedMetricsFont : public host::Font {
 public:
  explicit FixedMetricsFont(std::map<uint32_t, GlyphMetrics> byCode, int defaultAdvance = 1000,
                            int defaultHeight = 0)
      : host::Font(nullptr) {
    face_ = std::make_shared<FixedMetricsFace>(std::move(byCode), defaultAdvance, defaultHeight);
  }
};

}  // namespace testing_support
