#include "support/fixed_metrics_face.h"

namespace testing_support {

FixedMetricsFace::FixedMetricsFace(std::map<uint32_t, GlyphMetrics> byCode, int defaultAdvance,
                                   int defaultHeight)
    : byCode_(std::move(byCode)), defaultAdvance_(defaultAdvance), defaultHeight_(defaultHeight) {
  for (const auto& [code, m] : byCode_) byGlyph_[m.glyph] = m;
}

uint32_t FixedMetricsFace::GlyphIndex(uint32_t code) const {
  auto it = byCode_.find(code);
  return it == byCode_.end() ? 0 : it->second.glyph;
}

int FixedMetricsFace::GlyphAdvance(uint32_t glyph) const {
  auto it = byGlyph_.find(glyph);
  return it == byGlyph_.end() ? defaultAdvance_ : it->second.advance;
}

int FixedMetricsFace::GlyphHeight(uint32_t glyph) const {
  auto it = byGlyph_.find(glyph);
  return it == byGlyph_.end() ? defaultHeight_ : it->second.height;
}

FixedMetricsFont::FixedMetricsFont(std::map<uint32_t, GlyphMetrics> byCode, int defaultAdvance,
                                   int defaultHeight)
    : FixedMetricsFont(std::make_shared<FixedMetricsFace>(std::move(byCode), defaultAdvance, defaultHeight)) {}

FixedMetricsFont::FixedMetricsFont(std::shared_ptr<const FixedMetricsFace> face) : host::Font(nullptr) {
  face_ = std::move(face);
}

}  // namespace testing_support
