// The seal cache's hash map: growth, block allocation, removal.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarvik/obj_map.h"

namespace tarvik {
namespace {

using Map = ObjMap<host::ByteString, const int*>;

Map::Assoc* Insert(Map& map, const std::string& key, const int* value) {
  uint32_t hash = 0;
  EXPECT_EQ(map.Lookup(key, hash), nullptr);
  Map::Assoc* a = map.NewAssoc(key, hash);
  if (a) a->value = value;
  return a;
}

TEST(ObjMap_Keys, ExactCaseSensitiveAndEmptyWithTheHashGivenEvenWhenEmpty) {
  Map map;
  uint32_t hash = 0;
  EXPECT_EQ(map.Lookup(host::ByteString("k"), hash), nullptr);
  EXPECT_EQ(hash, host::HashKey(host::ByteString("k")));
  EXPECT_FALSE(map.HasBuckets());
  EXPECT_EQ(map.GetBucketCount(), 17u);
  int a = 1, b = 2, c = 3;
  Insert(map, "/Doc_0/Signs/Sign_0/SignedValue.dat", &a);
  Insert(map, "/doc_0/signs/sign_0/signedvalue.dat", &b);
  Insert(map, "", &c);
  EXPECT_EQ(map.Lookup(host::ByteString("/Doc_0/Signs/Sign_0/SignedValue.dat"), hash)->value, &a);
  EXPECT_EQ(map.Lookup(host::ByteString("/doc_0/signs/sign_0/signedvalue.dat"), hash)->value, &b);
  EXPECT_EQ(map.Lookup(host::ByteString(""), hash)->value, &c);
  EXPECT_EQ(map.GetCount(), 3);
}

TEST(ObjMap_Growth, SeventeenEntriesThenOneMoreGivesTwentyFive) {
  Map map;
  std::vector<int> values(40);
  for (int i = 0; i < 17; ++i) Insert(map, "key" + std::to_string(i), &values[i]);
  EXPECT_EQ(map.GetBucketCount(), 17u);
  Insert(map, "key17", &values[17]);
  EXPECT_EQ(map.GetBucketCount(), 25u);
  for (int i = 18; i < 40; ++i) Insert(map, "key" + std::to_string(i), &values[i]);
  EXPECT_EQ(map.GetBucketCount(), 55u);  // 17 -> 25 -> 37 -> 55
  for (int i = 0; i < 40; ++i) {
    uint32_t hash;
    Map::Assoc* a = map.Lookup(host::ByteString("key" + std::to_string(i)), hash);
    ASSERT_NE(a, nullptr) << i;
    EXPECT_EQ(a->value, &values[i]);
    EXPECT_EQ(a->hash, hash);
  }
  int visited = 0;
  map.ForEach([&](const Map::Assoc&) { ++visited; });
  EXPECT_EQ(visited, 40);
}

TEST(ObjMap_Blocks, HandedOutInAddressOrderAndReused) {
  Map map;
  std::vector<Map::Assoc*> got;
  for (int i = 0; i < 10; ++i) got.push_back(Insert(map, std::to_string(i), nullptr));
  for (int i = 1; i < 10; ++i) EXPECT_EQ(got[i], got[i - 1] + 1);  // one block, in order
  map.RemoveKey(host::ByteString("4"));
  EXPECT_EQ(map.GetCount(), 9);
  EXPECT_EQ(Insert(map, "again", nullptr), got[4]);  // the freed one comes back first
  Map::Assoc* eleventh = Insert(map, "eleventh", nullptr);
  EXPECT_TRUE(eleventh < got[0] || eleventh > got[9]);  // a second block
}

TEST(ObjMap_Remove, LastEntryFreesEverythingAndMissingKeyIsNoOp) {
  Map map;
  int v = 7;
  map.RemoveKey(host::ByteString("absent"));  // no buckets yet
  Insert(map, "a", &v);
  Insert(map, "b", &v);
  map.RemoveKey(host::ByteString("zzz"));
  EXPECT_EQ(map.GetCount(), 2);
  map.RemoveKey(host::ByteString("a"));
  EXPECT_TRUE(map.HasBuckets());
  map.RemoveKey(host::ByteString("b"));
  EXPECT_EQ(map.GetCount(), 0);
  EXPECT_FALSE(map.HasBuckets());
  ASSERT_NE(Insert(map, "c", &v), nullptr);  // allocates again
  EXPECT_TRUE(map.HasBuckets());
  EXPECT_EQ(map.GetBucketCount(), 17u);
}

}  // namespace
}  // namespace tarvik
