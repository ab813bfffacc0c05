// Units every layer shares: inches against the millimetres of OFD pages and
// the points of fonts, and the two font weights seal text chooses between.
#pragma once

namespace host {

/// Millimetres in an inch: page sizes are in millimetres, resolutions in dpi.
inline constexpr double kMmPerInch = 25.4;
/// Points in an inch: font sizes and PDF surfaces are in points.
inline constexpr double kPointsPerInch = 72.0;

/// Font weights (100 .. 900 scale) of regular and bold text.
inline constexpr int kFontWeightRegular = 400;
inline constexpr int kFontWeightBold = 700;

}  // namespace host
