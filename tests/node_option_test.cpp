// Option records: the change-mask bit each setter adds (and when it adds none), the status word and
// its check states, the index array text (read and built, malformed and very long), and the
// enclosure's path rules.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "ChangeMask.h"
#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "IndexArray.h"
#include "LayerOption.h"

using namespace AnnotationLayerInner;
using Ids = std::vector<int64_t>;

namespace {

// One setter call on a fresh record and the mask it must leave.
template <typename Option>
struct MaskCase {
  const char* what;
  std::function<void(Option&)> call;
  int mask;
};

template <typename Option>
void ExpectMasks(const std::vector<MaskCase<Option>>& cases) {
  for (const MaskCase<Option>& c : cases) {
    Option option;
    c.call(option);
    EXPECT_EQ(c.mask, option.GetChangeMask()) << c.what;
  }
}

}  // namespace

TEST(NodeOptionTest, EachSetterAddsItsBitOnlyOnAChangeSaveTheAlwaysMarkedOnes) {
  ExpectMasks<CFolderOption>({
      {"same values", [](CFolderOption& f) {
         f.SetParentUUID(""), f.SetLeftUUID(""), f.SetRightUUID(""), f.SetName("");
         f.SetType(FOLDER_TYPE_UNKNOWN), f.SetOrderNum(-1);
       }, 0},
      {"parent", [](CFolderOption& f) { f.SetParentUUID("p"); }, 1},
      {"name after a NUL", [](CFolderOption& f) { f.SetName(std::string("\0x", 2)); }, 4},
      {"unchanged status", [](CFolderOption& f) { f.SetNodeExpand(false); }, 16},
      {"unchanged recycle", [](CFolderOption& f) { f.SetRecycle(false); }, 16},
      {"unchanged check", [](CFolderOption& f) { f.SetNodeCheckState(0); }, 16},
  });
  const EXTENT lastBoundDiffers{0, 0, 0, 1.5};
  ExpectMasks<CLayerOption>({
      {"same levels and extent", [](CLayerOption& l) {
         l.SetLevel(0, 21), l.SetNameLevel(0, 21), l.SetExtent(EXTENT{});
       }, 0},
      {"unchanged header", [](CLayerOption& l) { l.SetPropertyHeader(""); }, 256},
      {"extent", [&](CLayerOption& l) { l.SetExtent(lastBoundDiffers); }, 64},
      {"unchanged child count", [](CLayerOption& l) { l.SetChildNodeMaxCount(-1); }, 16},
      {"parent kind alone", [](CLayerOption& l) {
         l.SetParentUUID("p", true), l.SetChangeMask(0), l.SetParentUUID("p", false);
       }, 1},
  });
  ExpectMasks<CFeatureOption>({
      {"dates", [](CFeatureOption& s) { s.SetCreateDateTime("d"), s.SetModifyDateTime("d"); }, 0},
      {"parent and neighbours", [](CFeatureOption& s) {
         s.SetParentUUID("l"), s.SetLeftUUID("a", false), s.SetRightUUID("b", true);
       }, 3},
  });
  ExpectMasks<CEnclosureOption>({
      {"id and type",
       [](CEnclosureOption& e) { e.SetID(7), e.SetEnclosureType(ENCLOSURE_TYPE_LINK); }, 0},
      {"parent and description",
       [](CEnclosureOption& e) {
         e.SetParentUUID("s"), e.SetDescription("d"), e.SetDescription("d");
       },
       1 | 512},
      {"clear an empty path", [](CEnclosureOption& e) { e.ClearPath(); }, 1024},
  });

  CFolderOption folder;
  folder.SetName("n");
  EXPECT_FALSE(IsOrderChange(folder));
  folder.SetOrderNum(3);
  EXPECT_TRUE(IsOrderChange(folder));
  EXPECT_TRUE(IsOrderChange(1));
  EXPECT_FALSE(IsOrderChange(16 | 32 | 1024));
}

// Folder and layer share the three-state check; expanded and recycled survive check changes.
template <typename Option>
void ExpectThreeStateCheck() {
  Option option;
  option.ChangeMask(4 | 8);
  const struct {
    int set, state, status;
  } steps[] = {{2, 2, 1 | 4 | 8}, {1, 1, 1 | 2 | 4 | 8}, {7, 2, 1 | 4 | 8}, {-3, 2, 1 | 4 | 8},
               {0, 0, 4 | 8}};
  for (const auto& step : steps) {
    option.SetNodeCheckState(step.set);
    EXPECT_EQ(step.state, option.GetNodeCheckState()) << step.set;
    EXPECT_EQ(step.state == 2, option.IsCheckedState()) << step.set;
    EXPECT_EQ(step.status, option.GetStatusMask()) << step.set;
  }
  option.ChangeMask(2);  // bit 1 without bit 0 is no check at all
  EXPECT_EQ(0, option.GetNodeCheckState());
  option.ChangeMask(0);
  option.SetNodeExpand(true);
  option.SetRecycle(true);
  EXPECT_EQ(12, option.GetStatusMask());
  option.SetNodeExpand(false);
  EXPECT_EQ(8, option.GetStatusMask());
}

TEST(NodeOptionTest, CheckStates) {
  ExpectThreeStateCheck<CFolderOption>();
  ExpectThreeStateCheck<CLayerOption>();

  CFeatureOption feature;  // two states
  feature.ChangeMask(8);
  feature.SetNodeChecked(true);
  EXPECT_TRUE(feature.IsNodeChecked());
  EXPECT_EQ(9, feature.GetStatusMask());
  feature.SetNodeChecked(false);
  EXPECT_EQ(8, feature.GetStatusMask());
  feature.ChangeMask(3);
  EXPECT_TRUE(feature.IsNodeChecked());
}

TEST(NodeOptionTest, IndexArrayText) {
  CFeatureOption feature;
  feature.SetIndexArrayString("s:9");
  feature.SetIndexArray({}, {3}, {}, {});
  EXPECT_EQ("s:9;p:3", feature.GetIndexArrayString());
  feature.SetIndexArray({6}, {}, {}, {});
  EXPECT_EQ("s:6", feature.GetIndexArrayString()) << "status ids replace the whole text";
  CLayerOption layer;
  layer.SetIndexArray({11, 12}, {});
  layer.SetIndexArray({}, {30});
  EXPECT_EQ("s:11,12;u:30", layer.GetIndexArrayString());
}

// An enclosure has a local path or a url, never both; a layer's neighbour kinds are reported only
// with a neighbour.
TEST(NodeOptionTest, EnclosurePathsAndNeighbourKinds) {
  CEnclosureOption enclosure;
  EXPECT_FALSE(enclosure.IsPathValid());
  enclosure.SetLocalPath("/tmp/a.png");
  enclosure.SetUrl("");
  EXPECT_EQ("/tmp/a.png", enclosure.GetPath()) << "an empty url keeps the local path";
  enclosure.SetUrl("http://host/a.png");
  EXPECT_EQ("http://host/a.png", enclosure.GetPath());
  enclosure.SetLocalPath("/tmp/b.png");
  EXPECT_EQ("", enclosure.GetUrl());
  enclosure.ClearPath();
  EXPECT_FALSE(enclosure.IsPathValid());

  CLayerOption layer;
  layer.SetLeftUUID("left", false);
  EXPECT_FALSE(layer.IsLeftLayer());
  layer.SetLeftUUID("", false);
  layer.SetRightUUID("", false);
  EXPECT_TRUE(layer.IsLeftLayer());
  EXPECT_TRUE(layer.IsRightLayer());
}

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
      // Stream extraction: blanks and a sign are read, trailing junk is ignored.
      {"s:-3, 4 ,5x;p:1", 's', {-3, 4, 5}},
      // The first occurrence of the letter wins, even inside another part's junk ("1e5" holds an
      // 'e'), and the character after it is skipped unseen.
      {"s:1e5", 'e', {0}},
      // One past the 64-bit range does not read as a number.
      {"s:9223372036854775808,7", 's', {0, 7}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.ids, ParseIndexArray(c.text, c.tag)) << c.text;

  const Ids limits = {std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min()};
  EXPECT_EQ(limits, ParseIndexArray(IndexArrayPart('u', limits), 'u'));
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
