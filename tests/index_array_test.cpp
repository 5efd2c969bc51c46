// Reading and building index array texts, including malformed and very long ones.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "FeatureOption.h"
#include "IndexArray.h"

using AnnotationLayerInner::AppendIndexArrayPart;
using AnnotationLayerInner::IndexArrayPart;
using AnnotationLayerInner::ParseIndexArray;
using AnnotationLayerInner::ReplaceIndexArrayPart;
using Ids = std::vector<int64_t>;

TEST(IndexArrayTest, ReadsWellFormedTexts) {
  const std::string text = "s:101;p:7,8,9;u:40;e:3";
  EXPECT_EQ(Ids{101}, ParseIndexArray(text, 's'));
  EXPECT_EQ((Ids{7, 8, 9}), ParseIndexArray(text, 'p'));
  EXPECT_EQ(Ids{40}, ParseIndexArray(text, 'u'));
  EXPECT_EQ(Ids{3}, ParseIndexArray(text, 'e'));
  EXPECT_TRUE(ParseIndexArray("", 's').empty());
  EXPECT_TRUE(ParseIndexArray("s:1,2;u:5", 'p').empty());
  EXPECT_TRUE(ParseIndexArray("s:1,2;u:5", 'e').empty());
}

TEST(IndexArrayTest, MalformedTextsGiveDefinedValues) {
  EXPECT_EQ(Ids{0}, ParseIndexArray("s:", 's')) << "an empty number text reads as 0";
  EXPECT_EQ(Ids{0}, ParseIndexArray("s", 's')) << "a tag at the very end";
  EXPECT_EQ(Ids{0}, ParseIndexArray("s:;u:5", 's'));
  EXPECT_EQ((Ids{1, 0, 2}), ParseIndexArray("s:1,,2", 's'));
  EXPECT_EQ((Ids{1, 0}), ParseIndexArray("s:1,", 's'));
  EXPECT_TRUE(ParseIndexArray("x:9", 's').empty());
  EXPECT_EQ(Ids{0}, ParseIndexArray("s:abc;u:5", 's'));
  EXPECT_EQ(Ids{5}, ParseIndexArray("s:abc;u:5", 'u'));
  // Stream extraction: blanks and a sign are read, trailing junk is ignored.
  EXPECT_EQ((Ids{-3, 4, 5}), ParseIndexArray("s:-3, 4 ,5x;p:1", 's'));
  EXPECT_EQ((Ids{12}), ParseIndexArray("s:+12", 's'));
  // The character after the tag is skipped unseen, whatever it is.
  EXPECT_EQ((Ids{12}), ParseIndexArray("s=12", 's'));
  EXPECT_EQ((Ids{2}), ParseIndexArray("s12", 's'));
  // The first occurrence of the letter wins, even inside another part's junk: "1e5" holds an 'e'.
  EXPECT_EQ((Ids{0}), ParseIndexArray("s:1e5", 'e'));
  EXPECT_EQ((Ids{1}), ParseIndexArray("s:1e5", 's'));
  // A repeated tag: only its first part is read.
  EXPECT_EQ((Ids{1}), ParseIndexArray("s:9;p:1;p:3", 'p'));
}

TEST(IndexArrayTest, NumbersUseTheFull64BitRange) {
  const int64_t big = std::numeric_limits<int64_t>::max();
  const int64_t small = std::numeric_limits<int64_t>::min();
  const std::string text = IndexArrayPart('u', {big, small, 0});
  EXPECT_EQ("u:9223372036854775807,-9223372036854775808,0", text);
  EXPECT_EQ((Ids{big, small, 0}), ParseIndexArray(text, 'u'));
  // One past the range does not read as a number.
  EXPECT_EQ((Ids{0, 7}), ParseIndexArray("s:9223372036854775808,7", 's'));
  EXPECT_EQ((Ids{0}), ParseIndexArray("s:-99999999999999999999", 's'));
}

TEST(IndexArrayTest, VeryLongTexts) {
  Ids ids;
  for (int64_t i = 0; i < 100000; ++i) ids.push_back(i * 7919);
  std::string text;
  ReplaceIndexArrayPart(text, 's', ids);
  AppendIndexArrayPart(text, 'u', {1, 2});
  EXPECT_EQ(ids, ParseIndexArray(text, 's'));
  EXPECT_EQ((Ids{1, 2}), ParseIndexArray(text, 'u'));

  // A huge run of digits without separators is one unreadable number, not a crash.
  const std::string digits = "s:" + std::string(200000, '9');
  EXPECT_EQ(Ids{0}, ParseIndexArray(digits, 's'));
  // As are many separators.
  const std::string commas = "s:" + std::string(50000, ',');
  EXPECT_EQ(Ids(50001, 0), ParseIndexArray(commas, 's'));
}

TEST(IndexArrayTest, BuildingParts) {
  EXPECT_EQ("", IndexArrayPart('s', {}));
  EXPECT_EQ("p:7,8,9", IndexArrayPart('p', {7, 8, 9}));

  std::string text = "p:1";
  ReplaceIndexArrayPart(text, 's', {});
  EXPECT_EQ("p:1", text);
  ReplaceIndexArrayPart(text, 's', {2});
  EXPECT_EQ("s:2", text);
  AppendIndexArrayPart(text, 'u', {});
  EXPECT_EQ("s:2", text);
  AppendIndexArrayPart(text, 'u', {3});
  EXPECT_EQ("s:2;u:3", text);

  std::string empty;
  AppendIndexArrayPart(empty, 'e', {4});
  EXPECT_EQ("e:4", empty) << "no leading separator";
}

TEST(IndexArrayTest, RecordReadsWhatWasStored) {
  CFeatureOption feature;
  feature.SetIndexArrayString("s:abc;u:5");
  EXPECT_EQ(Ids{0}, feature.GetIndexStatus());
  EXPECT_EQ(Ids{5}, feature.GetIndexUserdata());
  EXPECT_TRUE(feature.GetIndexProperty().empty());
  EXPECT_TRUE(feature.GetIndexEnclosure().empty());
}
