// Option records: defaults, change-mask bits added by each setter, the status word and its check
// state, copying, and the enclosure's path rules.
#include <gtest/gtest.h>

#include "ChangeMask.h"
#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"

TEST(ChangeMaskTest, BitOperations) {
  CChangeMask mask;
  EXPECT_EQ(0, mask.GetChangeMask());
  EXPECT_FALSE(mask.IsChanged());
  mask.AddChangeMask(4 | 64);
  mask.AddChangeMask(4);
  EXPECT_EQ(68, mask.GetChangeMask());
  EXPECT_TRUE(mask.IsChanged());
  EXPECT_TRUE(mask.IsChanged(64 | 1));
  EXPECT_FALSE(mask.IsChanged(1 | 2 | 128));
  mask.RemoveChangeMask(64 | 1);
  EXPECT_EQ(4, mask.GetChangeMask());
  mask.SetChangeMask(1024);
  EXPECT_EQ(1024, mask.GetChangeMask());
  mask.SetChangeMask(0);
  EXPECT_FALSE(mask.IsChanged());
}

TEST(ChangeMaskTest, OrderChangeIsParentOrPosition) {
  EXPECT_FALSE(IsOrderChange(0));
  EXPECT_TRUE(IsOrderChange(1));
  EXPECT_TRUE(IsOrderChange(2));
  EXPECT_FALSE(IsOrderChange(4));
  EXPECT_FALSE(IsOrderChange(16 | 32 | 1024));
  EXPECT_TRUE(IsOrderChange(2 | 16));

  CFolderOption folder;
  EXPECT_FALSE(IsOrderChange(folder));
  folder.SetName("n");
  EXPECT_FALSE(IsOrderChange(folder));
  folder.SetOrderNum(3);
  EXPECT_TRUE(IsOrderChange(folder));
}

TEST(FolderOptionTest, Defaults) {
  const CFolderOption folder;
  EXPECT_EQ(0, folder.GetChangeMask());
  EXPECT_EQ("", folder.GetUUID());
  EXPECT_EQ("", folder.GetParentUUID());
  EXPECT_EQ("", folder.GetLeftUUID());
  EXPECT_EQ("", folder.GetRightUUID());
  EXPECT_EQ("", folder.GetName());
  EXPECT_EQ(-1, folder.GetType());
  EXPECT_EQ(0, folder.GetStatusMask());
  EXPECT_EQ(-1, folder.GetOrderNum());
  EXPECT_EQ("", folder.GetIndexArrayString());
  EXPECT_EQ("abc", CFolderOption("abc").GetUUID());
  EXPECT_EQ(0, CFolderOption("abc").GetChangeMask());
}

TEST(FolderOptionTest, SettersAddTheirBitOnlyOnChange) {
  CFolderOption folder;
  folder.SetParentUUID("");
  folder.SetLeftUUID("");
  folder.SetRightUUID("");
  folder.SetName("");
  folder.SetType(FOLDER_TYPE_UNKNOWN);
  folder.SetOrderNum(-1);
  EXPECT_EQ(0, folder.GetChangeMask()) << "same values must not mark anything";

  folder.SetParentUUID("p");
  EXPECT_EQ(1, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetLeftUUID("l");
  EXPECT_EQ(2, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetRightUUID("r");
  EXPECT_EQ(2, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetOrderNum(5);
  EXPECT_EQ(2, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetName("name");
  EXPECT_EQ(4, folder.GetChangeMask());
  folder.SetName("name");
  folder.SetName(std::string("name\0x", 6));  // differs in length only after a NUL
  EXPECT_EQ(std::string("name\0x", 6), folder.GetName());
  folder.SetChangeMask(0);
  folder.SetType(FOLDER_TYPE_ROOT);
  EXPECT_EQ(8, folder.GetChangeMask());

  folder.SetChangeMask(0);
  folder.SetUUID("u");
  folder.SetIndexArrayString("s:1");
  folder.SetIndexArray({2});
  EXPECT_EQ(0, folder.GetChangeMask());
  EXPECT_EQ("s:2", folder.GetIndexArrayString());
  EXPECT_EQ("u", folder.GetUUID());
}

TEST(FolderOptionTest, StatusSettersAlwaysMarkStatus) {
  CFolderOption folder;
  folder.ChangeMask(0);
  EXPECT_EQ(16, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetNodeExpand(false);
  EXPECT_EQ(16, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetRecycle(false);
  EXPECT_EQ(16, folder.GetChangeMask());
  folder.SetChangeMask(0);
  folder.SetNodeCheckState(0);
  EXPECT_EQ(16, folder.GetChangeMask());
}

// Folder and layer share the three-state check; the table is checked on both.
template <typename Option>
void ExpectThreeStateCheck() {
  Option option;
  option.ChangeMask(4 | 8);  // expanded and recycled must survive check changes
  EXPECT_EQ(0, option.GetNodeCheckState());
  EXPECT_FALSE(option.IsCheckedState());

  option.SetNodeCheckState(2);
  EXPECT_EQ(2, option.GetNodeCheckState());
  EXPECT_TRUE(option.IsCheckedState());
  EXPECT_EQ(1 | 4 | 8, option.GetStatusMask());

  option.SetNodeCheckState(1);
  EXPECT_EQ(1, option.GetNodeCheckState());
  EXPECT_FALSE(option.IsCheckedState());
  EXPECT_EQ(1 | 2 | 4 | 8, option.GetStatusMask());

  option.SetNodeCheckState(7);
  EXPECT_EQ(2, option.GetNodeCheckState());
  EXPECT_EQ(1 | 4 | 8, option.GetStatusMask());

  option.SetNodeCheckState(-3);
  EXPECT_EQ(2, option.GetNodeCheckState());

  option.SetNodeCheckState(0);
  EXPECT_EQ(0, option.GetNodeCheckState());
  EXPECT_EQ(4 | 8, option.GetStatusMask());

  // Bit 1 without bit 0 is no check at all.
  option.ChangeMask(2);
  EXPECT_EQ(0, option.GetNodeCheckState());

  option.ChangeMask(0);
  option.SetNodeExpand(true);
  EXPECT_TRUE(option.IsNodeExpand());
  EXPECT_FALSE(option.IsRecycle());
  EXPECT_EQ(4, option.GetStatusMask());
  option.SetRecycle(true);
  EXPECT_TRUE(option.IsRecycle());
  EXPECT_EQ(12, option.GetStatusMask());
  option.SetNodeExpand(false);
  EXPECT_FALSE(option.IsNodeExpand());
  EXPECT_EQ(8, option.GetStatusMask());
}

TEST(FolderOptionTest, CheckStates) { ExpectThreeStateCheck<CFolderOption>(); }

TEST(LayerOptionTest, CheckStates) { ExpectThreeStateCheck<CLayerOption>(); }

TEST(FolderOptionTest, CopiesCarryMaskAndStatus) {
  CFolderOption folder("f");
  folder.SetName("a");
  folder.SetNodeCheckState(1);
  folder.SetIndexArray({4, 5});
  const CFolderOption copy(folder);
  EXPECT_EQ(4 | 16, copy.GetChangeMask());
  EXPECT_EQ(3, copy.GetStatusMask());
  EXPECT_EQ("s:4,5", copy.GetIndexArrayString());
  EXPECT_EQ("f", copy.GetUUID());
  CFolderOption assigned;
  assigned = folder;
  EXPECT_EQ(folder.GetChangeMask(), assigned.GetChangeMask());
  EXPECT_EQ("a", assigned.GetName());
}

TEST(LayerOptionTest, Defaults) {
  const CLayerOption layer;
  EXPECT_EQ(0, layer.GetChangeMask());
  EXPECT_EQ(-1, layer.GetType());
  EXPECT_EQ(-1, layer.GetOrderNum());
  EXPECT_EQ(0, layer.GetMinLevel());
  EXPECT_EQ(21, layer.GetMaxLevel());
  EXPECT_EQ(0, layer.GetMinNameLevel());
  EXPECT_EQ(21, layer.GetMaxNameLevel());
  EXPECT_EQ(0.0, layer.GetExtent().min_x);
  EXPECT_EQ(0.0, layer.GetExtent().min_y);
  EXPECT_EQ(0.0, layer.GetExtent().max_x);
  EXPECT_EQ(0.0, layer.GetExtent().max_y);
  EXPECT_TRUE(layer.IsLeftLayer());
  EXPECT_TRUE(layer.IsRightLayer());
  EXPECT_FALSE(layer.IsLayerParent());
  EXPECT_EQ(-1, layer.GetChildNodeMaxCount());
  EXPECT_EQ(0, layer.GetStatusMask());
  EXPECT_EQ("", layer.GetWkt());
  EXPECT_EQ("", layer.GetPropertyHeader());
  EXPECT_EQ("", layer.GetIndexArrayString());
  EXPECT_EQ("id", CLayerOption("id").GetUUID());
}

TEST(LayerOptionTest, SettersAddTheirBit) {
  CLayerOption layer;
  layer.SetName("x");
  layer.SetName("x");
  EXPECT_EQ(4, layer.GetChangeMask());

  layer.SetChangeMask(0);
  layer.SetPropertyHeader("");
  EXPECT_EQ(256, layer.GetChangeMask()) << "the header is marked even when unchanged";

  layer.SetChangeMask(0);
  layer.SetLevel(0, 21);
  layer.SetNameLevel(0, 21);
  EXPECT_EQ(0, layer.GetChangeMask());
  layer.SetLevel(3, 21);
  EXPECT_EQ(32, layer.GetChangeMask());
  EXPECT_EQ(3, layer.GetMinLevel());
  layer.SetChangeMask(0);
  layer.SetNameLevel(0, 18);
  EXPECT_EQ(32, layer.GetChangeMask());
  EXPECT_EQ(18, layer.GetMaxNameLevel());
  EXPECT_EQ(21, layer.GetMaxLevel()) << "name levels are separate from levels";

  layer.SetChangeMask(0);
  EXPECT_EQ(0, layer.GetChangeMask());
  layer.SetExtent(EXTENT{});
  EXPECT_EQ(0, layer.GetChangeMask());
  EXTENT extent;
  extent.max_y = 1.5;  // only the last of the four differs
  layer.SetExtent(extent);
  EXPECT_EQ(64, layer.GetChangeMask());
  EXPECT_EQ(1.5, layer.GetExtent().max_y);

  layer.SetChangeMask(0);
  layer.SetWkt("POLYGON((0 0,1 0,1 1,0 0))");
  EXPECT_EQ(128, layer.GetChangeMask());
  layer.SetChangeMask(0);
  layer.SetWkt("POLYGON((0 0,1 0,1 1,0 0))");
  EXPECT_EQ(0, layer.GetChangeMask());

  layer.SetChildNodeMaxCount(-1);
  EXPECT_EQ(16, layer.GetChangeMask()) << "the child count is marked even when unchanged";
  layer.SetChildNodeMaxCount(50);
  EXPECT_EQ(50, layer.GetChildNodeMaxCount());

  layer.SetChangeMask(0);
  layer.SetType(LAYER_TYPE_GIS_LINE);
  EXPECT_EQ(8, layer.GetChangeMask());
  EXPECT_EQ(LAYER_TYPE_GIS_LINE, layer.GetType());
}

TEST(LayerOptionTest, ParentAndNeighbourKinds) {
  CLayerOption layer;
  layer.SetParentUUID("parent", true);
  EXPECT_EQ(1, layer.GetChangeMask());
  EXPECT_TRUE(layer.IsLayerParent());
  layer.SetChangeMask(0);
  layer.SetParentUUID("parent", false);  // same uuid, other kind: a real change
  EXPECT_EQ(1, layer.GetChangeMask());
  EXPECT_FALSE(layer.IsLayerParent());
  layer.SetChangeMask(0);
  layer.SetParentUUID("parent", false);
  EXPECT_EQ(0, layer.GetChangeMask());

  layer.SetLeftUUID("left", false);
  EXPECT_EQ(2, layer.GetChangeMask());
  EXPECT_FALSE(layer.IsLeftLayer());
  EXPECT_TRUE(layer.IsRightLayer());
  layer.SetRightUUID("right", false);
  EXPECT_FALSE(layer.IsRightLayer());

  // Without a neighbour the stored kind is not reported.
  layer.SetLeftUUID("", false);
  EXPECT_EQ("", layer.GetLeftUUID());
  EXPECT_TRUE(layer.IsLeftLayer());
  layer.SetRightUUID("", false);
  EXPECT_TRUE(layer.IsRightLayer());
}

TEST(FeatureOptionTest, DefaultsAndSetters) {
  CFeatureOption feature;
  EXPECT_EQ(-1, feature.GetType());
  EXPECT_EQ(-1, feature.GetOrderNum());
  EXPECT_EQ(0, feature.GetStatusMask());
  EXPECT_TRUE(feature.IsLeftLayer());
  EXPECT_TRUE(feature.IsRightLayer());
  EXPECT_EQ("", feature.GetCreateDateTime());
  EXPECT_EQ("", feature.GetModifyDateTime());

  feature.SetCreateDateTime("2024-01-02 03:04:05");
  feature.SetModifyDateTime("2024-01-02 03:04:06");
  EXPECT_EQ(0, feature.GetChangeMask());
  EXPECT_EQ("2024-01-02 03:04:05", feature.GetCreateDateTime());

  feature.SetParentUUID("layer");
  EXPECT_EQ(1, feature.GetChangeMask());
  feature.SetLeftUUID("l", false);
  feature.SetRightUUID("r", true);
  EXPECT_EQ(3, feature.GetChangeMask());
  EXPECT_FALSE(feature.IsLeftLayer());
  EXPECT_TRUE(feature.IsRightLayer());
  feature.SetType(ANNOTATION_TYPE_ROUTE);
  feature.SetName("n");
  EXPECT_EQ(1 | 2 | 4 | 8, feature.GetChangeMask());
  EXPECT_EQ(ANNOTATION_TYPE_ROUTE, feature.GetType());
}

TEST(FeatureOptionTest, TwoStateCheck) {
  CFeatureOption feature;
  feature.ChangeMask(8);
  feature.SetChangeMask(0);
  feature.SetNodeChecked(true);
  EXPECT_EQ(16, feature.GetChangeMask());
  EXPECT_TRUE(feature.IsNodeChecked());
  EXPECT_TRUE(feature.IsRecycle());
  EXPECT_EQ(9, feature.GetStatusMask());
  feature.SetNodeChecked(false);
  EXPECT_FALSE(feature.IsNodeChecked());
  EXPECT_EQ(8, feature.GetStatusMask());
  feature.SetRecycle(false);
  EXPECT_EQ(0, feature.GetStatusMask());
  feature.ChangeMask(3);
  EXPECT_TRUE(feature.IsNodeChecked());
}

TEST(FeatureOptionTest, IndexArrayBuilding) {
  CFeatureOption fresh;
  fresh.SetIndexArray({1, 2}, {}, {5}, {});
  EXPECT_EQ("s:1,2;u:5", fresh.GetIndexArrayString());
  EXPECT_EQ(std::vector<int64_t>{5}, fresh.GetIndexUserdata());
  EXPECT_TRUE(fresh.GetIndexProperty().empty());
  EXPECT_EQ((std::vector<int64_t>{1, 2}), fresh.GetIndexStatus());

  CFeatureOption propertyOnly;
  propertyOnly.SetIndexArray({}, {3}, {}, {});
  EXPECT_EQ("p:3", propertyOnly.GetIndexArrayString());

  CFeatureOption kept;
  kept.SetIndexArrayString("s:9");
  kept.SetIndexArray({}, {3}, {}, {});
  EXPECT_EQ("s:9;p:3", kept.GetIndexArrayString());

  CFeatureOption all;
  all.SetIndexArray({101}, {7, 8, 9}, {40}, {3});
  EXPECT_EQ("s:101;p:7,8,9;u:40;e:3", all.GetIndexArrayString());
  EXPECT_EQ(std::vector<int64_t>{101}, all.GetIndexStatus());
  EXPECT_EQ((std::vector<int64_t>{7, 8, 9}), all.GetIndexProperty());
  EXPECT_EQ(std::vector<int64_t>{40}, all.GetIndexUserdata());
  EXPECT_EQ(std::vector<int64_t>{3}, all.GetIndexEnclosure());

  // Status ids replace the whole text, the older parts included.
  all.SetIndexArray({6}, {}, {}, {});
  EXPECT_EQ("s:6", all.GetIndexArrayString());

  // Nothing given: the text stays, it is never cleared here.
  all.SetIndexArray({}, {}, {}, {});
  EXPECT_EQ("s:6", all.GetIndexArrayString());
}

TEST(LayerOptionTest, IndexArrayHasStatusAndUserdata) {
  CLayerOption layer;
  layer.SetIndexArray({11, 12}, {});
  EXPECT_EQ("s:11,12", layer.GetIndexArrayString());
  layer.SetIndexArray({}, {30});
  EXPECT_EQ("s:11,12;u:30", layer.GetIndexArrayString());
  EXPECT_EQ((std::vector<int64_t>{11, 12}), layer.GetIndexStatus());
  EXPECT_EQ(std::vector<int64_t>{30}, layer.GetIndexUserdata());
  EXPECT_EQ(0, layer.GetChangeMask());

  CFolderOption folder;
  EXPECT_TRUE(folder.GetIndexStatus().empty());
  folder.SetIndexArray({});
  EXPECT_EQ("", folder.GetIndexArrayString());
}

TEST(EnclosureOptionTest, DefaultsAndPlainSetters) {
  CEnclosureOption enclosure;
  EXPECT_EQ(-1, enclosure.GetID());
  EXPECT_EQ(1, enclosure.GetEnclosureType());
  EXPECT_EQ("", enclosure.GetParentUUID());
  EXPECT_FALSE(enclosure.IsPathValid());
  EXPECT_EQ("", enclosure.GetPath());

  const CEnclosureOption typed(42, ENCLOSURE_TYPE_IMAGE);
  EXPECT_EQ(42, typed.GetID());
  EXPECT_EQ(ENCLOSURE_TYPE_IMAGE, typed.GetEnclosureType());
  EXPECT_EQ(0, typed.GetChangeMask());

  enclosure.SetID(7);
  enclosure.SetEnclosureType(ENCLOSURE_TYPE_LINK);
  EXPECT_EQ(0, enclosure.GetChangeMask());
  enclosure.SetParentUUID("feature");
  EXPECT_EQ(1, enclosure.GetChangeMask());
  enclosure.SetDescription("d");
  enclosure.SetDescription("d");
  EXPECT_EQ(1 | 512, enclosure.GetChangeMask());

  const CEnclosureOption copy = enclosure;
  EXPECT_EQ(1 | 512, copy.GetChangeMask());
  EXPECT_EQ(7, copy.GetID());
  EXPECT_EQ("d", copy.GetDescription());
}

TEST(EnclosureOptionTest, LocalPathAndUrlExcludeEachOther) {
  CEnclosureOption enclosure;
  enclosure.SetLocalPath("");
  EXPECT_EQ(0, enclosure.GetChangeMask());

  enclosure.SetLocalPath("/tmp/a.png");
  EXPECT_EQ(1024, enclosure.GetChangeMask());
  EXPECT_TRUE(enclosure.IsPathValid());
  EXPECT_EQ("/tmp/a.png", enclosure.GetPath());

  enclosure.SetChangeMask(0);
  enclosure.SetUrl("");
  EXPECT_EQ("/tmp/a.png", enclosure.GetLocalPath()) << "an empty url keeps the local path";
  EXPECT_EQ(0, enclosure.GetChangeMask());

  enclosure.SetUrl("http://host/a.png");
  EXPECT_EQ("", enclosure.GetLocalPath());
  EXPECT_EQ("http://host/a.png", enclosure.GetUrl());
  EXPECT_EQ("http://host/a.png", enclosure.GetPath());
  EXPECT_EQ(1024, enclosure.GetChangeMask());

  enclosure.SetLocalPath("/tmp/b.png");
  EXPECT_EQ("", enclosure.GetUrl());
  EXPECT_EQ("/tmp/b.png", enclosure.GetPath());

  enclosure.SetChangeMask(0);
  enclosure.ClearPath();
  EXPECT_EQ(1024, enclosure.GetChangeMask());
  EXPECT_FALSE(enclosure.IsPathValid());
  enclosure.SetChangeMask(0);
  enclosure.ClearPath();
  EXPECT_EQ(1024, enclosure.GetChangeMask()) << "clearing is marked even when already clear";
}
