#include "host/ofd/path_data.h"

#include <algorithm>
#include <cmath>

#include "host/ofd/ofd_xml.h"

namespace host {

const char* PathDataResult::Description() const {
  switch (code) {
    case kOk: return "no error";
    case kBadNumber: return "missing or malformed number";
    case kUnknownCommand: return "unknown command";
    case kTooManySegments: return "too many segments";
  }
  return "unknown error";
}

namespace {

constexpr double kPi = 3.14159265358979323846;

int ArgumentCount(char command) {
  switch (command) {
    case 'S': case 'M': case 'L': return 2;
    case 'Q': return 4;
    case 'B': return 6;
    case 'A': return 7;
    case 'C': return 0;
    default: return -1;
  }
}

// Endpoint-parameterised elliptical arc from the current point to (x, y),
// split into pieces of at most a quarter turn, each one cubic. Returns the
// number of segments added.
size_t AppendArc(Path& path, double rx, double ry, double angleDeg, bool largeArc, bool sweep,
                 double x, double y) {
  const double x0 = path.CurrentX(), y0 = path.CurrentY();
  if (x0 == x && y0 == y) return 0;
  rx = std::fabs(rx);
  ry = std::fabs(ry);
  if (rx == 0 || ry == 0) {
    path.LineTo(static_cast<float>(x), static_cast<float>(y));
    return 1;
  }
  const double phi = std::fmod(angleDeg, 360.0) * kPi / 180.0;
  const double cosPhi = std::cos(phi), sinPhi = std::sin(phi);
  const double dx = (x0 - x) / 2, dy = (y0 - y) / 2;
  const double x1p = cosPhi * dx + sinPhi * dy;
  const double y1p = -sinPhi * dx + cosPhi * dy;
  // Radii too small to reach the end point grow until they just do.
  const double lambda = (x1p * x1p) / (rx * rx) + (y1p * y1p) / (ry * ry);
  if (lambda > 1) {
    const double s = std::sqrt(lambda);
    rx *= s;
    ry *= s;
  }
  const double num = rx * rx * ry * ry - rx * rx * y1p * y1p - ry * ry * x1p * x1p;
  const double den = rx * rx * y1p * y1p + ry * ry * x1p * x1p;
  double coef = den > 0 && num > 0 ? std::sqrt(num / den) : 0;
  if (largeArc == sweep) coef = -coef;
  const double cxp = coef * rx * y1p / ry;
  const double cyp = -coef * ry * x1p / rx;
  const double cx = cosPhi * cxp - sinPhi * cyp + (x0 + x) / 2;
  const double cy = sinPhi * cxp + cosPhi * cyp + (y0 + y) / 2;
  const double theta1 = std::atan2((y1p - cyp) / ry, (x1p - cxp) / rx);
  double delta = std::atan2((-y1p - cyp) / ry, (-x1p - cxp) / rx) - theta1;
  if (sweep && delta < 0) delta += 2 * kPi;
  if (!sweep && delta > 0) delta -= 2 * kPi;
  if (!std::isfinite(delta) || !std::isfinite(cx) || !std::isfinite(cy)) {
    path.LineTo(static_cast<float>(x), static_cast<float>(y));
    return 1;
  }
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::fabs(delta) / (kPi / 2) - 1e-9)));
  const double step = delta / pieces;
  const double k = 4.0 / 3.0 * std::tan(step / 4);
  // A point of the unit circle at angle t, mapped onto the ellipse.
  auto point = [&](double ux, double uy, double& px, double& py) {
    px = cx + rx * ux * cosPhi - ry * uy * sinPhi;
    py = cy + rx * ux * sinPhi + ry * uy * cosPhi;
  };
  double t = theta1;
  for (int i = 0; i < pieces; ++i) {
    const double t2 = t + step;
    const double c1 = std::cos(t), s1 = std::sin(t), c2 = std::cos(t2), s2 = std::sin(t2);
    double ax, ay, bx, by, ex, ey;
    point(c1 - k * s1, s1 + k * c1, ax, ay);
    point(c2 + k * s2, s2 - k * c2, bx, by);
    if (i == pieces - 1) {
      ex = x;  // land exactly on the end point
      ey = y;
    } else {
      point(c2, s2, ex, ey);
    }
    path.CubicTo(static_cast<float>(ax), static_cast<float>(ay), static_cast<float>(bx),
                 static_cast<float>(by), static_cast<float>(ex), static_cast<float>(ey));
    t = t2;
  }
  return static_cast<size_t>(pieces);
}

}  // namespace

PathDataResult ParseAbbreviatedData(std::string_view data, Path& path, size_t maxSegments) {
  PathDataResult result;
  std::string_view s = data;
  char command = 0;
  size_t segments = 0;
  auto offset = [&] { return static_cast<size_t>(data.size() - s.size()); };
  for (;;) {
    ofdxml::SkipSeparators(s);
    if (s.empty()) break;
    const size_t at = offset();
    const char c = s.front();
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
      if (ArgumentCount(c) < 0) return {PathDataResult::kUnknownCommand, at};
      command = c;
      s.remove_prefix(1);
    } else if (command == 0 || command == 'C') {
      // Numbers with no command to repeat.
      return {PathDataResult::kUnknownCommand, at};
    } else if (command == 'S' || command == 'M') {
      command = 'L';
    }
    const int argc = ArgumentCount(command);
    float v[7];
    for (int i = 0; i < argc; ++i)
      if (!ofdxml::ScanNumber(s, v[i])) return {PathDataResult::kBadNumber, at};
    // An arc adds up to four cubics; count before adding.
    const size_t need = command == 'A' ? 4 : 1;
    if (segments + need > maxSegments) return {PathDataResult::kTooManySegments, at};
    switch (command) {
      case 'S':
      case 'M': path.MoveTo(v[0], v[1]); ++segments; break;
      case 'L': path.LineTo(v[0], v[1]); ++segments; break;
      case 'Q': path.QuadTo(v[0], v[1], v[2], v[3]); ++segments; break;
      case 'B': path.CubicTo(v[0], v[1], v[2], v[3], v[4], v[5]); ++segments; break;
      case 'A':
        segments += AppendArc(path, v[0], v[1], v[2], v[3] != 0, v[4] != 0, v[5], v[6]);
        break;
      case 'C':
        path.Close();
        ++segments;
        break;
    }
  }
  result.offset = data.size();
  return result;
}

}  // namespace host
