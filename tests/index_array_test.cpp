// Reading and building index array texts, including malformed and very long ones.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "IndexArray.h"

using namespace AnnotationLayerInner;
using Ids = std::vector<int64_t>;

TEST(IndexArrayTest, ReadsWellFormedAndMalformedTexts) {
  const struct {
    const char* text;
    char tag;
    Ids ids;
  } cases[] = {
      {"s:101;p:7,8,9;u:40;e:3", 'p', {7, 8, 9}},
      {"s:1,2;u:5", 'p', {}},
      // An empty number text reads as 0, a tag at the very end too.
      {"s", 's', {0}},
      {"s:1,,2", 's', {1, 0, 2}},
      {"s:abc;u:5", 'u', {5}},
      // Stream extraction: blanks and a sign are read, trailing junk is ignored.
      {"s:-3, 4 ,5x;p:1", 's', {-3, 4, 5}},
      // The character after the tag is skipped unseen, whatever it is.
      {"s12", 's', {2}},
      // The first occurrence of the letter wins, even inside another part's junk ("1e5" holds an
      // 'e'); of a repeated tag only the first part is read.
      {"s:1e5", 'e', {0}},
      {"s:9;p:1;p:3", 'p', {1}},
      // One past the 64-bit range does not read as a number.
      {"s:9223372036854775808,7", 's', {0, 7}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.ids, ParseIndexArray(c.text, c.tag)) << c.text;

  const int64_t big = std::numeric_limits<int64_t>::max();
  const int64_t small = std::numeric_limits<int64_t>::min();
  const std::string text = IndexArrayPart('u', {big, small, 0});
  EXPECT_EQ("u:9223372036854775807,-9223372036854775808,0", text);
  EXPECT_EQ((Ids{big, small, 0}), ParseIndexArray(text, 'u'));
}

TEST(IndexArrayTest, BuildingPartsAndVeryLongTexts) {
  EXPECT_EQ("", IndexArrayPart('s', {}));
  std::string text = "p:1";
  ReplaceIndexArrayPart(text, 's', {});
  EXPECT_EQ("p:1", text);
  std::string empty;
  AppendIndexArrayPart(empty, 'e', {4});
  EXPECT_EQ("e:4", empty) << "no leading separator";

  Ids ids;
  for (int64_t i = 0; i < 100000; ++i) ids.push_back(i * 7919);
  ReplaceIndexArrayPart(text, 's', ids);
  AppendIndexArrayPart(text, 'u', {});
  AppendIndexArrayPart(text, 'u', {1, 2});
  EXPECT_EQ(ids, ParseIndexArray(text, 's'));
  EXPECT_EQ((Ids{1, 2}), ParseIndexArray(text, 'u'));
  // A huge run of digits is one unreadable number; many separators are many zeros.
  EXPECT_EQ(Ids{0}, ParseIndexArray("s:" + std::string(200000, '9'), 's'));
  EXPECT_EQ(Ids(50001, 0), ParseIndexArray("s:" + std::string(50000, ','), 's'));
}
