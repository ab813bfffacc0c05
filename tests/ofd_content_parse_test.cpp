// Parsing the attribute strings of page content: path data, glyph
// position lists and colours.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

#include "host/ofd/ofd_page.h"
#include "host/ofd/path_data.h"
#include "host/ofd/text_code.h"

namespace host {
namespace {

TEST(OfdPathData_Parse, Table) {
  using Op = Path::Op;
  const struct { const char* data; PathDataResult::Code code; std::vector<Op> ops; } cases[] = {
      {"M 0 0 L 10 0", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"S 1 2 L 3 4 C", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kClose}},
      {"M 0 0 Q 5 5 10 0", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M 0 0 B 1 2 3 4 5 6", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M0,0L1,1 L+2 -.5e1", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kLine}},
      {"M 0 0 L 1 1 2 2", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kLine}},
      {"M 0 0 1 1", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"M 0 0 A 5 5 0 0 1 10 0", PathDataResult::kOk, {Op::kMove, Op::kCubic, Op::kCubic}},
      {"M 0 0 A 0 5 0 0 1 10 0", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"M 0 0 A 5 5 0 0 1 0 0", PathDataResult::kOk, {Op::kMove}},
      {"M 0 0 A 10 10 0 0 0 0 10", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M 0 0 A 10 10 0 1 0 0 10", PathDataResult::kOk, {Op::kMove, Op::kCubic, Op::kCubic, Op::kCubic, Op::kCubic}},
      {"", PathDataResult::kOk, {}},
      {"M 0 0 X 1 1", PathDataResult::kUnknownCommand, {Op::kMove}},
      {"m 0 0", PathDataResult::kUnknownCommand, {}},
      {"1 2", PathDataResult::kUnknownCommand, {}},
      {"M 0 0 C 1 1", PathDataResult::kUnknownCommand, {Op::kMove, Op::kClose}},
      {"M 0 abc", PathDataResult::kBadNumber, {}},
      {"M 0 0 L 1e999 0", PathDataResult::kBadNumber, {Op::kMove}},
      {"M nan 0", PathDataResult::kBadNumber, {}},
      {"M inf 0", PathDataResult::kBadNumber, {}},
      {"M 0 0 B 1 2 3", PathDataResult::kBadNumber, {Op::kMove}},
  };
  for (const auto& c : cases) {
    Path path;
    const PathDataResult r = ParseAbbreviatedData(c.data, path);
    EXPECT_EQ(r.code, c.code) << c.data << ": " << r.Description();
    std::vector<Op> ops;
    for (const auto& s : path.segments()) ops.push_back(s.op);
    EXPECT_EQ(ops, c.ops) << c.data;
  }
  Path quad, arc, grown, capped;
  ParseAbbreviatedData("M 0 0 Q 6 6 12 0", quad);
  EXPECT_EQ(std::vector<float>(quad.segments()[1].pts, quad.segments()[1].pts + 6),
            (std::vector<float>{4, 4, 8, 4, 12, 0}));
  // A half circle from (0,0) to (10,0) with sweep 1 passes (5,-5) and ends
  // exactly; radii too small to span the ends grow to that half circle.
  ParseAbbreviatedData("M 0 0 A 5 5 0 0 1 10 0", arc);
  ParseAbbreviatedData("M 0 0 A 1 1 0 0 1 10 0", grown);
  EXPECT_NEAR(arc.segments()[1].pts[4], 5, 1e-4);
  for (const Path* p : {&arc, &grown}) EXPECT_NEAR(p->segments()[1].pts[5], -5, 1e-4);
  EXPECT_EQ(std::pair(arc.CurrentX(), arc.CurrentY()), std::pair(10.f, 0.f));
  // Cut at the fourth command.
  const PathDataResult r = ParseAbbreviatedData("M 0 0 L 1 1 L 2 2 L 3 3", capped, 3);
  EXPECT_EQ(std::tuple(r.code, r.offset, capped.segments().size()),
            std::tuple(PathDataResult::kTooManySegments, 18u, 3u));
}

TEST(OfdTextCode_DeltaList, Table) {
  const struct { const char* text; size_t max; bool ok; std::vector<float> want; } cases[] = {
      {"1 2 3", 10, true, {1, 2, 3}},
      {"g 3 1.5", 10, true, {1.5f, 1.5f, 1.5f}},
      {"g 2 1 3 g 2 0.5", 10, true, {1, 1, 3, 0.5f, 0.5f}},
      {"G 2 1", 10, true, {1, 1}},
      {"g 0 7 4", 10, true, {4}},
      {"g 4000000000 1", 5, true, {1, 1, 1, 1, 1}},
      {"g 1e30 1", 3, true, {1, 1, 1}},
      {"1 2 3", 2, true, {1, 2}},
      {"  3.88 3.88 ", 10, true, {3.88f, 3.88f}},
      {"", 10, true, {}},
      {"g 2", 10, false, {}},
      {"g -1 2", 10, false, {}},
      {"g 1.5 2", 10, false, {}},
      {"1 x 2", 10, false, {1}},
      {"g x 1", 10, false, {}},
  };
  for (const auto& c : cases) {
    std::vector<float> out;
    EXPECT_EQ(ParseDeltaList(c.text, c.max, out), c.ok) << c.text;
    EXPECT_EQ(out, c.want) << c.text;
  }
  std::vector<float> xs, ys;
  LayoutCharacters(1, 2, {1}, {0.5f}, 3, [](size_t, void*) { return 4.0f; }, nullptr, xs, ys);
  EXPECT_EQ(xs, (std::vector<float>{1, 2, 6}));
  EXPECT_EQ(ys, (std::vector<float>{2, 2.5f, 2.5f}));
}

TEST(OfdColor_ToArgb, Table) {
  OfdColorSpace gray16{1, OfdColorSpace::Kind::kGray, 16, {}};
  OfdColorSpace indexed{2, OfdColorSpace::Kind::kRGB, 8, {{0, 128, 255}}};
  const struct { std::vector<float> values; const OfdColorSpace* space; int index, alpha; uint32_t want; } cases[] = {
      {{255, 0, 0}, nullptr, -1, 255, 0xFFFF0000u},
      {{128}, nullptr, -1, 255, 0xFF808080u},
      {{0, 255, 0, 0}, nullptr, -1, 76, 0x4CFF00FFu},
      {{65535}, &gray16, -1, 255, 0xFFFFFFFFu},
      {{}, &indexed, 0, 255, 0xFF0080FFu},
      {{999, -5, 10}, nullptr, -1, 255, 0xFFFF000Au},
      {{}, nullptr, -1, 255, 0xFF000000u},
  };
  for (const auto& c : cases) {
    OfdColor color;
    color.values = c.values, color.colorSpace = c.space, color.index = c.index, color.alpha = c.alpha;
    EXPECT_EQ(color.ToArgb(), c.want);
  }
}

}  // namespace
}  // namespace host
