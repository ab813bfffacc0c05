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
                            int defaultHeight = 0);

  uint32_t GlyphIndex(uint32_t code) const override;
  int GlyphAdvance(uint32_t glyph) const override;
  int GlyphHeight(uint32_t glyph) const override;
  std::string Describe() const override { return "FixedMetrics"; }

 private:
  std::map<uint32_t, GlyphMetrics> byCode_;
  std::map<uint32_t, GlyphMetrics> byGlyph_;
  int defaultAdvance_;
  int defaultHeight_;
};

/// A loaded host::Font over a FixedMetricsFace, e.g.
/// `FixedMetricsFont font({{U'A', {1, 500, 700}}, {U'中', {2, 1000, 800}}}, 600);`
class FixedMetricsFont : public host::Font {
 public:
  explicit FixedMetricsFont(std::map<uint32_t, GlyphMetrics> byCode, int defaultAdvance = 1000,
                            int defaultHeight = 0);
  explicit FixedMetricsFont(std::shared_ptr<const FixedMetricsFace> face);
};

}  // namespace testing_support
