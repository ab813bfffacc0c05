// Value types and helpers of the host base: strings, hashing, matrices,
// memory blocks, streams.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include "host/base/binary_buf.h"
#include "host/base/byte_string.h"
#include "host/base/geometry.h"
#include "host/base/matrix.h"
#include "host/base/memory.h"
#include "host/base/stream_reader.h"
#include "host/base/wide_string.h"

namespace host {
namespace {

TEST(ByteString_Compare, SignsOfExactAndCaseFoldedOrder) {
  const struct { const char *a, *b; int exact, noCase; } cases[] = {
      {"ofd", "ofd", 0, 0}, {"OFD", "ofd", -1, 0}, {"Ofd", "ofD", -1, 0}, {"image", "ofd", -1, -1},
      {"", "", 0, 0},       {"", "a", -1, -1},     {"ab", "a", 1, 1},     {"a[", "A{", 1, -1},
      {"\xC3\xA9", "\xC3\x89", 1, 1},  // bytes above 0x7F compare unsigned and never fold
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ByteString(c.a).Compare(c.b), c.exact) << c.a << " " << c.b;
    EXPECT_EQ(ByteString(c.a).CompareNoCase(c.b), c.noCase) << c.a << " " << c.b;
  }
}

TEST(HashKey_Spread, DistinctLocationsRarelyCollideInBucketsAndNulBytesCount) {
  const ByteString nul("a\0b", 3);
  EXPECT_EQ(nul.GetLength(), 3);
  EXPECT_NE(nul.Compare(std::string_view("a\0c", 3)), 0);
  EXPECT_NE(HashKey(nul), HashKey(ByteString("a")));
  // Typical cache keys differ in a few digits; they must not pile up.
  constexpr unsigned kBuckets = 17;
  int counts[kBuckets] = {};
  for (int i = 0; i < 170; ++i) {
    const std::string key = "/Doc_0/Signs/Sign_" + std::to_string(i) + "/SignedValue.dat";
    ++counts[HashKey(ByteString(key)) % kBuckets];
  }
  for (int c : counts) EXPECT_LE(c, 25);
  EXPECT_EQ(HashKey(ByteString("abc")), HashKey(ByteString(std::string("abc"))));
}

TEST(CalcHashTableSize_Table, SmallestOddNotBelow) {
  // 17 stays 17 and one and a half times 17 entries gives 25 buckets.
  const std::pair<int, unsigned> cases[] = {{-5, 3},  {0, 3},   {1, 3},   {3, 3},
                                            {4, 5},   {17, 17}, {18, 19}, {25, 25},
                                            {90, 91}, {1000, 1001}, {1 << 30, (1u << 24) - 3}};
  for (auto [in, out] : cases) EXPECT_EQ(CalcHashTableSize(in), out) << in;
}

TEST(WideString_Utf8, RoundTripsAndKeepsAbsentApart) {
  const WideString absent, empty(U"");
  EXPECT_EQ(std::make_pair(absent.IsNull(), empty.IsNull()), std::make_pair(true, false));
  EXPECT_EQ(absent.c_str(), nullptr);
  EXPECT_NE(empty.c_str(), nullptr);
  EXPECT_NE(absent, empty);
  EXPECT_EQ(WideString(static_cast<const char32_t*>(nullptr)), absent);

  const WideString text = WideString::FromUtf8("中文 seal 😀");
  EXPECT_EQ(text.view(), std::u32string_view(U"中文 seal 😀"));
  EXPECT_EQ(text.ToUtf8(), "中文 seal 😀");

  // Truncated and invalid sequences become U+FFFD instead of being dropped.
  const WideString bad = WideString::FromUtf8("a\xE4\xB8" "b\xFF");
  EXPECT_EQ(bad.view(), std::u32string_view(U"a\uFFFDb\uFFFD"));
}

TEST(Matrix_Contact, AppliesThisThenArgumentInvertsAndMapsRects) {
  Matrix m(2, 0, 0, 3, 10, 20);  // scale then move
  m.Contact(Matrix(0, 1, -1, 0, 5, 0));  // then turn 90 degrees and move
  float x = 1, y = 1;
  m.TransformPoint(x, y);
  EXPECT_EQ(std::make_pair(x, y), std::make_pair(-18.0f, 12.0f));  // (1,1) -> (12, 23) -> (-23 + 5, 12)
  m.Inverse().TransformPoint(x, y);
  EXPECT_NEAR(std::hypot(x - 1, y - 1), 0, 1e-5);
  EXPECT_TRUE(Matrix(0, 0, 0, 0, 1, 1).Inverse().IsIdentity());
  // Rectangles map to their normalised bounding boxes.
  GRect r(0, 0, 10, 20);
  Matrix(0, 1, -1, 0, 0, 0).TransformRect(r);  // 90 degrees: x' = -y, y' = x
  EXPECT_EQ(r, GRect(-20, 0, 0, 10));
  GRect flipped(10, 20, 0, 0);
  Matrix().TransformRect(flipped);
  EXPECT_EQ(flipped, GRect(0, 0, 10, 20));
  EXPECT_EQ(std::make_pair(Matrix(3, 4, 0, 2, 0, 0).XUnit(), Matrix(3, 4, 0, 2, 0, 0).YUnit()),
            std::make_pair(5.0f, 2.0f));
}

TEST(GRect_Null, ZeroWidthOrHeight) {
  for (const GRect& r : {GRect(), GRect(1, 2, 1, 9), GRect(1, 2, 9, 2)}) EXPECT_TRUE(r.IsRectNull());
  EXPECT_FALSE(GRect(1, 2, 0, 0).IsRectNull());
  GRect r(1, 2, 3, 4);
  r.OffsetRect(10, -2);
  EXPECT_EQ(r, GRect(11, 0, 13, 2));
}

TEST(Memory_Functions, FailSafely) {
  EXPECT_EQ(AllocMemory(0), nullptr);
  size_t out = 0;
  EXPECT_FALSE(CheckedMul(SIZE_MAX / 2, 3, out));
  EXPECT_TRUE(CheckedMul(1000, 1000, out));
  EXPECT_EQ(out, 1000000u);
  void* q = ReallocMemory(AllocMemory(16), 64);
  ASSERT_NE(q, nullptr);
  FreeMemory(q);
  FreeMemory(nullptr);
}

TEST(BinaryBuf_Append, IgnoresNullAndNonPositive) {
  BinaryBuf buf;
  buf.AppendBuf("abc", 3);
  buf.AppendBuf(nullptr, 5);
  buf.AppendBuf("x", 0);
  buf.AppendBuf("x", -1);
  buf.AppendBuf("de", 2);
  ASSERT_EQ(buf.GetSize(), 5);
  EXPECT_EQ(std::memcmp(buf.GetBuffer(), "abcde", 5), 0);
}

void CheckReader(StreamReader* r, const std::string& bytes) {
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->GetSize(), bytes.size());
  char buf[8] = {};
  EXPECT_EQ(r->ReadBlock(buf, 2, 3), 3u);
  EXPECT_EQ(std::string(buf, 3), bytes.substr(2, 3));
  EXPECT_EQ(r->GetPosition(), 0u);  // ReadBlock leaves the position
  EXPECT_EQ(r->ReadBlock(buf, bytes.size() - 2, 8), 2u);
  EXPECT_EQ(r->ReadBlock(buf, bytes.size(), 8), 0u);
  EXPECT_EQ(r->ReadBlock(buf, UINT64_MAX, 8), 0u);
  EXPECT_TRUE(r->SetPosition(4));
  EXPECT_EQ(r->Read(buf, 8), bytes.size() - 4);
  EXPECT_EQ(r->GetPosition(), bytes.size());
  EXPECT_FALSE(r->SetPosition(bytes.size() + 1));
  EXPECT_EQ(r->GetPosition(), bytes.size());
}

TEST(StreamReader_Kinds, MemoryAndFileReadAlike) {
  const std::string bytes = "0123456789";
  StreamReaderPtr inPlace(StreamReader::CreateMemoryStreamReader(
      reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), 0));
  CheckReader(inPlace.get(), bytes);
  EXPECT_EQ(inPlace->GetBuffer(), reinterpret_cast<const uint8_t*>(bytes.data()));

  auto* owned = static_cast<uint8_t*>(AllocMemory(bytes.size()));
  std::memcpy(owned, bytes.data(), bytes.size());
  StreamReaderPtr takeOver(StreamReader::CreateMemoryStreamReader(owned, bytes.size(), 1));
  CheckReader(takeOver.get(), bytes);  // freed by the reader: leak checkers see it

  StreamReaderPtr copy(StreamReader::CreateMemoryStreamReader(bytes));
  CheckReader(copy.get(), bytes);

  const auto path = std::filesystem::temp_directory_path() / "tarvik_stream_reader_test.bin";
  std::ofstream(path, std::ios::binary) << bytes;
  StreamReaderPtr file(StreamReader::CreateFileStreamReader(path.c_str()));
  CheckReader(file.get(), bytes);
  EXPECT_EQ(file->GetBuffer(), nullptr);
  file.reset();
  std::filesystem::remove(path);
}

TEST(StreamReader_Bad, NullInputs) {
  EXPECT_EQ(StreamReader::CreateMemoryStreamReader(nullptr, 5, 0), nullptr);
  StreamReaderPtr empty(StreamReader::CreateMemoryStreamReader(nullptr, 0, 0));
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->GetSize(), 0u);
  EXPECT_EQ(StreamReader::CreateFileStreamReader(nullptr), nullptr);
  EXPECT_EQ(StreamReader::CreateFileStreamReader("/nonexistent/tarvik"), nullptr);
}

}  // namespace
}  // namespace host
