// OFD packages made to cost a renderer unbounded work: each is small, and
// each asks for a huge number of objects, template loads or path segments.
#pragma once

#include <string>

namespace testing_support {

/// `units` composite graphic units, each holding `fan` CompositeObjects that
/// use the next unit (the last holds `fan` small paths); the page draws the
/// first unit once: fan^units paths.
std::string CompositeFanOutPackage(int units, int fan);

/// `templates` template pages, each naming the next one `fan` times; the
/// page names the first: fan^(templates-1) template loads without a cap.
std::string TemplateFanOutPackage(int templates, int fan);

/// One page with `paths` filled and stroked paths of `points` points each,
/// zigzagging across the whole page so that every segment crosses others.
std::string SelfCrossingPathsPackage(int paths, int points);

/// A seal picture package (page 30 x 20 mm) holding the composite fan-out.
std::string CompositeFanOutSealPackage(int units, int fan);

}  // namespace testing_support
