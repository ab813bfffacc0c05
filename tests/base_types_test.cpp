// Value types and helpers of the host base: strings, hashing, matrices,
// memory blocks, streams.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <utility>
#include <vector>

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
  EXPECT_TRUE(nul.GetLength() == 3 && nul.Compare(std::string_view("a\0c", 3)) && HashKey(nul) != HashKey(ByteString("a")));
  // Typical cache keys differ in a few digits; they must not pile up.
  constexpr unsigned kBuckets = 17;
  int counts[kBuckets] = {};
  for (int i = 0; i < 170; ++i)
    ++counts[HashKey(ByteString("/Doc_0/Signs/Sign_" + std::to_string(i) + "/SignedValue.dat")) % kBuckets];
  EXPECT_LE(*std::max_element(counts, counts + kBuckets), 25);
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
  EXPECT_TRUE(absent.IsNull() && !empty.IsNull() && !absent.c_str() && empty.c_str() && absent != empty);
  EXPECT_EQ(WideString(static_cast<const char32_t*>(nullptr)), absent);

  const WideString text = WideString::FromUtf8("中文 seal 😀");
  EXPECT_EQ(std::make_pair(text.view(), text.ToUtf8()), std::make_pair(std::u32string_view(U"中文 seal 😀"), std::string("中文 seal 😀")));

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
  GRect r(0, 0, 10, 20), flipped(10, 20, 0, 0);
  Matrix(0, 1, -1, 0, 0, 0).TransformRect(r);  // 90 degrees: x' = -y, y' = x
  Matrix().TransformRect(flipped);
  EXPECT_EQ(std::make_pair(r, flipped), std::make_pair(GRect(-20, 0, 0, 10), GRect(0, 0, 10, 20)));
  EXPECT_EQ(std::make_pair(Matrix(3, 4, 0, 2, 0, 0).XUnit(), Matrix(3, 4, 0, 2, 0, 0).YUnit()),
            std::make_pair(5.0f, 2.0f));
}

TEST(Memory_Functions, FailSafelyAndAppendIgnoresNullAndNonPositive) {
  size_t out = 0;
  EXPECT_EQ(std::make_tuple(AllocMemory(0), CheckedMul(SIZE_MAX / 2, 3, out), CheckedMul(1000, 1000, out), out),
            std::make_tuple(nullptr, false, true, size_t{1000000}));
  BinaryBuf buf;
  for (auto [bytes, n] : {std::pair{"abc", 3}, {nullptr, 5}, {"x", 0}, {"x", -1}, {"de", 2}}) buf.AppendBuf(bytes, n);
  ASSERT_EQ(buf.GetSize(), 5);
  EXPECT_EQ(std::memcmp(buf.GetBuffer(), "abcde", 5), 0);
}

// Ten bytes "0123456789": ReadBlock leaves the position; reads stop at the end.
void CheckReader(StreamReader* r) {
  ASSERT_NE(r, nullptr);
  char buf[8] = {};
  const std::vector<uint64_t> got = {r->GetSize(), r->ReadBlock(buf, 2, 3), r->GetPosition(), r->ReadBlock(buf, 8, 8),
                                     r->ReadBlock(buf, 10, 8), r->ReadBlock(buf, UINT64_MAX, 8), r->SetPosition(4),
                                     r->Read(buf, 8), r->GetPosition(), r->SetPosition(11), r->GetPosition()};
  EXPECT_EQ(got, std::vector<uint64_t>({10, 3, 0, 2, 0, 0, 1, 6, 10, 0, 10}));
  EXPECT_EQ(std::string(buf, 6), "456789");
}

TEST(StreamReader_Kinds, MemoryAndFileReadAlike) {
  const std::string bytes = "0123456789";
  StreamReaderPtr inPlace(StreamReader::CreateMemoryStreamReader(
      reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), 0));
  CheckReader(inPlace.get());
  EXPECT_EQ(inPlace->GetBuffer(), reinterpret_cast<const uint8_t*>(bytes.data()));

  auto* owned = static_cast<uint8_t*>(AllocMemory(bytes.size()));
  std::memcpy(owned, bytes.data(), bytes.size());
  StreamReaderPtr takeOver(StreamReader::CreateMemoryStreamReader(owned, bytes.size(), 1));
  CheckReader(takeOver.get());  // freed by the reader: leak checkers see it

  const auto path = std::filesystem::temp_directory_path() / "tarvik_stream_reader_test.bin";
  std::ofstream(path, std::ios::binary) << bytes;
  StreamReaderPtr file(StreamReader::CreateFileStreamReader(path.c_str()));
  CheckReader(file.get());
  EXPECT_EQ(file->GetBuffer(), nullptr);
  file.reset();
  std::filesystem::remove(path);
}

TEST(StreamReader_Bad, NullInputs) {
  StreamReaderPtr empty(StreamReader::CreateMemoryStreamReader(nullptr, 0, 0));
  EXPECT_TRUE(empty && empty->GetSize() == 0);
  EXPECT_FALSE(StreamReader::CreateMemoryStreamReader(nullptr, 5, 0) || StreamReader::CreateFileStreamReader(nullptr) ||
               StreamReader::CreateFileStreamReader("/nonexistent/tarvik"));
}

}  // namespace
}  // namespace host
