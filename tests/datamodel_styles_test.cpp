// CSpatialiteDBDataModel styles and enclosures: the feature-to-layer fallback, GIS layers sharing
// their style, the kept quirks of the enclosure statements, content of zero bytes and of several
// megabytes, and refused uuids.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <functional>
#include <list>
#include <string>
#include <vector>

#include "EnclosureOption.h"
#include "FeatureLabelStyle.h"
#include "FeatureOption.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "LayerOption.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

CFeatureStyleSet PenStyle(const QColor& color, double width) {
  CFeatureStyleSet set;
  auto* pen = new CFeaturePenStyle();
  pen->SetColor(color);
  pen->SetWidth(width);
  set.PushBack(pen);
  return set;
}

const CFeaturePenStyle* FirstPen(const CFeatureStyleSet& set) {
  for (int i = 0; i < set.GetCount(); ++i) {
    if (const auto* pen = dynamic_cast<const CFeaturePenStyle*>(set.At(i))) return pen;
  }
  return nullptr;
}

// The pen colour a query fills in, or "" when it finds no style.
template <typename Model>
std::string QueriedPen(Model& model, const std::string& uuid, bool isLayer) {
  CFeatureStyleSet set;
  if (!model.QueryStyle(&set, uuid, isLayer)) return std::string();
  const CFeaturePenStyle* pen = FirstPen(set);
  return pen != nullptr ? pen->GetColor().name().toStdString() : std::string("<no pen>");
}

class StyleModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    model_.Initialize("styles");
    ASSERT_TRUE(model_.Install(db_.Path()));
  }

  std::string AddLayer(E_LAYER_TYPE type) {
    CLayerOption layer;
    layer.SetParentUUID(db_.RootUUID(), false);
    layer.SetType(type);
    layer.SetName("layer");
    return model_.InsertLayer(layer) ? layer.GetUUID() : std::string();
  }

  std::string AddFeature(const std::string& parent) {
    CFeatureOption feature;
    feature.SetParentUUID(parent);
    feature.SetType(ANNOTATION_TYPE_LINE);
    feature.SetName("feature");
    return model_.InsertFeature(feature, nullptr) ? feature.GetUUID() : std::string();
  }

  std::string Scalar(const std::string& sql) { return QueryScalar(db_.Path(), sql); }
  int Count(const std::string& table, const std::string& puuid) {
    return std::stoi(Scalar("SELECT COUNT(*) FROM " + table + " WHERE puuid = '" + puuid + "'"));
  }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
};

}  // namespace

// --- Styles ---

TEST_F(StyleModelTest, FeatureWithoutItsOwnStyleShowsItsLayers) {
  const std::string layer = AddLayer(LAYER_TYPE_ANNOTATION);
  const std::string plain = AddFeature(layer);
  const std::string styled = AddFeature(layer);
  const std::string orphan = AddFeature("");

  EXPECT_EQ("", QueriedPen(model_, plain, false));
  const CFeatureStyleSet layerStyle = PenStyle(QColor(0x11, 0x22, 0x33), 3);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(layer, &layerStyle, 3));
  const CFeatureStyleSet ownStyle = PenStyle(QColor(0xaa, 0xbb, 0xcc), 1);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(styled, &ownStyle, 3));

  EXPECT_EQ("#112233", QueriedPen(model_, layer, true));
  EXPECT_EQ("#112233", QueriedPen(model_, plain, false));
  EXPECT_EQ("#aabbcc", QueriedPen(model_, styled, false));
  EXPECT_EQ("", QueriedPen(model_, orphan, false));
  EXPECT_EQ("", QueriedPen(model_, "no such node", false));
  // Asked as a layer, a feature uuid still falls back to its layer.
  EXPECT_EQ("#112233", QueriedPen(model_, plain, true));

  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryStyle(nullptr, plain, false));
  EXPECT_EQ(1u, capture.Lines().size());
}

TEST_F(StyleModelTest, ModifyOrInsertWritesOneRowPerOwner) {
  const std::string layer = AddLayer(LAYER_TYPE_ANNOTATION);
  const std::string feature = AddFeature(layer);
  CFeatureStyleSet style = PenStyle(QColor(1, 2, 3), 2);
  auto* label = new CFeatureLabelStyle();
  label->SetFontName(Utf8ToLocal("宋体"));
  style.PushBack(label);

  ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &style, 3));
  EXPECT_EQ(1, Count("shape_style", feature));
  EXPECT_EQ(0, Count("layer_style", layer));
  EXPECT_EQ("3", Scalar("SELECT format FROM shape_style WHERE puuid = '" + feature + "'"));
  // Stored as UTF-8 text.
  EXPECT_NE(std::string::npos,
            Scalar("SELECT content FROM shape_style WHERE puuid = '" + feature + "'").find("宋体"));

  const CFeatureStyleSet changed = PenStyle(QColor(4, 5, 6), 7);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &changed, 9));
  EXPECT_EQ(1, Count("shape_style", feature));
  EXPECT_EQ("9", Scalar("SELECT format FROM shape_style WHERE puuid = '" + feature + "'"));
  CFeatureStyleSet read;
  ASSERT_TRUE(model_.QueryStyle(&read, feature, false));
  ASSERT_NE(nullptr, FirstPen(read));
  EXPECT_EQ("#040506", FirstPen(read)->GetColor().name().toStdString());
  EXPECT_EQ(7.0, FirstPen(read)->GetWidth());

  // The label style was read from the first write; the font survives the code page round trip.
  CFeatureStyleSet first;
  ASSERT_TRUE(model_.ModifyOrInsertStyle(layer, &style, 3));
  ASSERT_TRUE(model_.QueryStyle(&first, layer, true));
  const CFeatureLabelStyle* readLabel = nullptr;
  for (int i = 0; i < first.GetCount(); ++i) {
    if (auto* l = dynamic_cast<const CFeatureLabelStyle*>(first.At(i))) readLabel = l;
  }
  ASSERT_NE(nullptr, readLabel);
  EXPECT_EQ(Utf8ToLocal("宋体"), readLabel->GetFontName());
}

TEST_F(StyleModelTest, EmptyStyleSetsWriteNothing) {
  const std::string feature = AddFeature(AddLayer(LAYER_TYPE_ANNOTATION));
  CFeatureStyleSet empty;
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyOrInsertStyle(feature, &empty, 3));
  EXPECT_FALSE(model_.ModifyOrInsertStyle(feature, nullptr, 3));
  EXPECT_EQ(2u, capture.Lines().size());
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM shape_style"));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM layer_style"));
}

TEST_F(StyleModelTest, FeaturesOfGisLayersWriteTheirLayersStyle) {
  for (E_LAYER_TYPE type : {LAYER_TYPE_GIS_POINT, LAYER_TYPE_GIS_LINE, LAYER_TYPE_GIS_POLYGON}) {
    const std::string layer = AddLayer(type);
    const std::string first = AddFeature(layer);
    const std::string second = AddFeature(layer);
    const CFeatureStyleSet red = PenStyle(QColor(255, 0, 0), 1);
    ASSERT_TRUE(model_.ModifyOrInsertStyle(first, &red, 3)) << type;
    EXPECT_EQ(1, Count("layer_style", layer)) << type;
    EXPECT_EQ(0, Count("shape_style", first)) << type;
    const CFeatureStyleSet blue = PenStyle(QColor(0, 0, 255), 1);
    ASSERT_TRUE(model_.ModifyOrInsertStyle(second, &blue, 3)) << type;
    EXPECT_EQ(1, Count("layer_style", layer)) << type;
    // Every feature of the layer shows the last style written for any of them.
    EXPECT_EQ("#0000ff", QueriedPen(model_, first, false)) << type;
  }
}

TEST_F(StyleModelTest, FeatureOfAMissingLayerKeepsItsOwnStyleAndLogs) {
  const std::string feature = AddFeature("ghost layer");
  const CFeatureStyleSet style = PenStyle(QColor(9, 9, 9), 1);
  CZuLogCapture capture;
  ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &style, 3));
  EXPECT_TRUE(capture.Contains("[GetLayerUUIDForGisFeature]:"));
  EXPECT_EQ(1, Count("shape_style", feature));
}

namespace {

// Calls every uuid a layer, to see that the layer test is asked through the interface.
class EverythingIsALayerModel : public CSpatialiteDBDataModel {
 public:
  bool IsLayerUUID(const std::string&) override {
    ++calls;
    return true;
  }
  int calls = 0;
};

}  // namespace

TEST_F(StyleModelTest, LayerTestIsAskedThroughTheInterface) {
  const std::string feature = AddFeature(AddLayer(LAYER_TYPE_ANNOTATION));
  ASSERT_TRUE(model_.Uninstall());
  EverythingIsALayerModel model;
  ASSERT_TRUE(model.Install(db_.Path()));
  const CFeatureStyleSet style = PenStyle(QColor(7, 7, 7), 1);
  ASSERT_TRUE(model.ModifyOrInsertStyle(feature, &style, 3));
  EXPECT_EQ(1, model.calls);
  EXPECT_EQ(1, Count("layer_style", feature));
  EXPECT_EQ(0, Count("shape_style", feature));
}

// --- Enclosures ---

namespace {

class EnclosureModelTest : public StyleModelTest {
 protected:
  void SetUp() override {
    StyleModelTest::SetUp();
    feature_ = AddFeature(AddLayer(LAYER_TYPE_ANNOTATION));
    ASSERT_FALSE(feature_.empty());
  }

  // Inserts a record and returns its row id (which the record itself does not learn).
  int Insert(const std::string& description, const std::string& path, const std::string& url,
             E_ENCLOSURE_TYPE type = ENCLOSURE_TYPE_IMAGE) {
    CEnclosureOption option;
    option.SetParentUUID(feature_);
    option.SetEnclosureType(type);
    option.SetDescription(description);
    option.SetLocalPath(path);
    option.SetUrl(url);
    EXPECT_TRUE(model_.ModifyOrInsertEnclosure(option));
    return std::stoi(Scalar("SELECT max(id) FROM shape_enclosure"));
  }

  void SetIndexText(const std::string& text) {
    ASSERT_TRUE(ExecSql(model_.GetConnection(),
                        "UPDATE shape SET index_id = '" + text + "' WHERE uuid = '" + feature_ +
                            "'",
                        "[test]:"));
  }

  std::string feature_;
};

}  // namespace

TEST_F(EnclosureModelTest, InsertLeavesTheRecordsIdAndClearsItsMask) {
  CEnclosureOption option;
  option.SetParentUUID(feature_);
  option.SetDescription(Utf8ToLocal("现场照片"));
  option.SetLocalPath(Utf8ToLocal("D:/照片/1.jpg"));
  option.SetEnclosureType(ENCLOSURE_TYPE_IMAGE);
  ASSERT_NE(0, option.GetChangeMask());
  ASSERT_EQ(-1, option.GetID());
  ASSERT_TRUE(model_.ModifyOrInsertEnclosure(option));
  EXPECT_EQ(-1, option.GetID());
  EXPECT_EQ(0, option.GetChangeMask());

  const std::string id = Scalar("SELECT max(id) FROM shape_enclosure");
  const std::string where = " FROM shape_enclosure WHERE id = " + id;
  EXPECT_EQ(feature_, Scalar("SELECT puuid" + where));
  EXPECT_EQ(std::to_string(ENCLOSURE_TYPE_IMAGE), Scalar("SELECT type" + where));
  EXPECT_EQ("现场照片", Scalar("SELECT description" + where));
  EXPECT_EQ("D:/照片/1.jpg", Scalar("SELECT local_path" + where));
  EXPECT_EQ("", Scalar("SELECT url" + where));

  // An id of 0 inserts as well and stays 0.
  CEnclosureOption zero(0, ENCLOSURE_TYPE_FILE);
  zero.SetParentUUID(feature_);
  ASSERT_TRUE(model_.ModifyOrInsertEnclosure(zero));
  EXPECT_EQ(0, zero.GetID());
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM shape_enclosure"));
  // The feature's index array is not touched.
  EXPECT_EQ(Scalar("SELECT index_id FROM shape WHERE uuid = '" + feature_ + "'").find("e:"),
            std::string::npos);
}

TEST_F(EnclosureModelTest, UpdateOfAStoredRecordFailsAtPrepare) {
  const int id = Insert("before", "C:/a.txt", "");
  CEnclosureOption option(id, ENCLOSURE_TYPE_VIDEO);
  option.SetParentUUID(feature_);
  option.SetDescription("after");
  const int mask = option.GetChangeMask();
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyOrInsertEnclosure(option));
  ASSERT_EQ(1u, capture.Lines().size());
  EXPECT_EQ(0u, capture.Lines()[0].find("[ModifyOrInsertEnclosure]:"));
  EXPECT_NE(std::string::npos, capture.Lines()[0].find("syntax error"));
  EXPECT_EQ(mask, option.GetChangeMask());
  EXPECT_EQ("before",
            Scalar("SELECT description FROM shape_enclosure WHERE id = " + std::to_string(id)));
}

TEST_F(EnclosureModelTest, QueryReadsTheRowsOfTheIndexArray) {
  const int path = Insert(Utf8ToLocal("说明"), Utf8ToLocal("D:/文件.doc"), "",
                          ENCLOSURE_TYPE_DOCUMENT);
  const int url = Insert("web", "", "http://example.com/a.png", ENCLOSURE_TYPE_IMAGE);
  const int both = Insert("both", "", "http://example.com/b.mp4", ENCLOSURE_TYPE_VIDEO);
  ASSERT_TRUE(ExecSql(model_.GetConnection(),
                      "UPDATE shape_enclosure SET local_path = 'E:/b.mp4' WHERE id = " +
                          std::to_string(both),
                      "[test]:"));
  const int unlisted = Insert("unlisted", "F:/x", "");

  std::list<CEnclosureOption> list;
  EXPECT_TRUE(model_.QueryEnclosure(feature_, list));
  EXPECT_TRUE(list.empty()) << "no e part in the index array yet";

  SetIndexText("s:1;e:" + std::to_string(path) + "," + std::to_string(url) + "," +
               std::to_string(both) + ",999");
  ASSERT_TRUE(model_.QueryEnclosure(feature_, list));
  ASSERT_EQ(3u, list.size());
  std::vector<CEnclosureOption> rows(list.begin(), list.end());
  EXPECT_EQ(path, rows[0].GetID());
  EXPECT_EQ(ENCLOSURE_TYPE_DOCUMENT, rows[0].GetEnclosureType());
  EXPECT_EQ(feature_, rows[0].GetParentUUID());
  EXPECT_EQ(Utf8ToLocal("说明"), rows[0].GetDescription());
  EXPECT_EQ(Utf8ToLocal("D:/文件.doc"), rows[0].GetLocalPath());
  EXPECT_EQ("", rows[0].GetUrl());
  EXPECT_EQ(0, rows[0].GetChangeMask());
  EXPECT_EQ("http://example.com/a.png", rows[1].GetUrl());
  // A row holding both comes back with the url only.
  EXPECT_EQ("http://example.com/b.mp4", rows[2].GetUrl());
  EXPECT_EQ("", rows[2].GetLocalPath());
  for (const CEnclosureOption& row : rows) EXPECT_NE(unlisted, row.GetID());

  // Results are appended.
  ASSERT_TRUE(model_.QueryEnclosure(feature_, list));
  EXPECT_EQ(6u, list.size());

  CZuLogCapture capture;
  std::list<CEnclosureOption> none;
  EXPECT_FALSE(model_.QueryEnclosure("no such feature", none));
  EXPECT_TRUE(capture.Contains("[QueryTableIndexes]:"));
  EXPECT_TRUE(none.empty());
}

TEST_F(EnclosureModelTest, ContentOfZeroBytesAndOfSeveralMegabytes) {
  const int id = Insert("data", "C:/data.bin", "");
  const std::string where = " FROM shape_enclosure WHERE id = " + std::to_string(id);
  EXPECT_TRUE(model_.QueryEnclosureData(id).empty());
  EXPECT_EQ("null", Scalar("SELECT typeof(content)" + where));

  std::vector<unsigned char> big(6 * 1024 * 1024 + 7);
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<unsigned char>((i * 131) ^ (i >> 9));
  ASSERT_TRUE(model_.ModifyEnclosureData(id, big.data(), static_cast<int>(big.size())));
  EXPECT_EQ(std::to_string(big.size()), Scalar("SELECT length(content)" + where));
  EXPECT_EQ(big, model_.QueryEnclosureData(id));

  const unsigned char nothing[1] = {0};
  ASSERT_TRUE(model_.ModifyEnclosureData(id, nothing, 0));
  EXPECT_EQ("blob", Scalar("SELECT typeof(content)" + where));
  EXPECT_EQ("0", Scalar("SELECT length(content)" + where));
  EXPECT_TRUE(model_.QueryEnclosureData(id).empty());

  ASSERT_TRUE(model_.ModifyEnclosureData(id, nullptr, 0));
  EXPECT_EQ("null", Scalar("SELECT typeof(content)" + where));

  // Counts that cannot describe the bytes are refused and change nothing.
  ASSERT_TRUE(model_.ModifyEnclosureData(id, big.data(), 10));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyEnclosureData(id, big.data(), -1));
  EXPECT_FALSE(model_.ModifyEnclosureData(id, nullptr, 10));
  EXPECT_EQ(2, capture.Count("[ModifyEnclosureData]:"));
  EXPECT_EQ(std::vector<unsigned char>(big.begin(), big.begin() + 10),
            model_.QueryEnclosureData(id));
  EXPECT_TRUE(model_.QueryEnclosureData(id + 1000).empty());
}

TEST_F(EnclosureModelTest, DeleteRemovesTheRowOnly) {
  const int keep = Insert("keep", "C:/k", "");
  const int drop = Insert("drop", "C:/d", "");
  SetIndexText("e:" + std::to_string(keep) + "," + std::to_string(drop));
  ASSERT_TRUE(model_.DeleteEnclosure(drop));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM shape_enclosure WHERE id = " + std::to_string(drop)));
  EXPECT_EQ("1", Scalar("SELECT COUNT(*) FROM shape_enclosure WHERE id = " + std::to_string(keep)));
  EXPECT_EQ("e:" + std::to_string(keep) + "," + std::to_string(drop),
            Scalar("SELECT index_id FROM shape WHERE uuid = '" + feature_ + "'"));
  std::list<CEnclosureOption> list;
  ASSERT_TRUE(model_.QueryEnclosure(feature_, list));
  ASSERT_EQ(1u, list.size());
  EXPECT_EQ(keep, list.front().GetID());
  EXPECT_TRUE(model_.DeleteEnclosure(drop));
}

// --- Refused input and a closed model ---

TEST_F(StyleModelTest, UuidsWithQuotesAreRefusedBeforeAnySql) {
  const std::string layer = AddLayer(LAYER_TYPE_ANNOTATION);
  const CFeatureStyleSet style = PenStyle(QColor(1, 1, 1), 1);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(layer, &style, 3));
  const std::string injected = "x' OR '1'='1";

  struct Case {
    const char* tag;
    std::function<bool()> call;
  };
  const std::vector<Case> cases = {
      {"[QueryStyle]:",
       [&] {
         CFeatureStyleSet set;
         return model_.QueryStyle(&set, injected, true);
       }},
      {"[ModifyOrInsertStyle]:", [&] { return model_.ModifyOrInsertStyle(injected, &style, 3); }},
      {"[ModifyOrInsertStyle]:",
       [&] { return model_.ModifyOrInsertStyle(std::string("a\0b", 3), &style, 3); }},
      {"[QueryEnclosure]:",
       [&] {
         std::list<CEnclosureOption> list;
         return model_.QueryEnclosure(injected, list);
       }},
  };
  for (const Case& c : cases) {
    CZuLogCapture capture;
    EXPECT_FALSE(c.call()) << c.tag;
    ASSERT_EQ(1u, capture.Lines().size()) << c.tag;
    EXPECT_EQ(0u, capture.Lines()[0].find(c.tag)) << capture.Lines()[0];
  }
  EXPECT_EQ("1", Scalar("SELECT COUNT(*) FROM layer_style"));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM shape_style"));
}

TEST_F(StyleModelTest, AStoredParentWithAQuoteIsNotSpliced) {
  // Bound parameters store any text, so a feature can carry such a parent.
  const std::string feature = AddFeature("bad' parent");
  const CFeatureStyleSet style = PenStyle(QColor(2, 2, 2), 1);
  {
    CZuLogCapture capture;
    ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &style, 3));
    EXPECT_EQ(1, capture.Count("[GetLayerUUIDForGisFeature]:"));
    EXPECT_EQ(1u, capture.Lines().size());
  }
  EXPECT_EQ(1, Count("shape_style", feature));
  const std::string other = AddFeature("bad' parent");
  CZuLogCapture capture;
  CFeatureStyleSet read;
  EXPECT_FALSE(model_.QueryStyle(&read, other, false));
  EXPECT_EQ(1, capture.Count("[QueryStyleInner]:"));
  EXPECT_EQ(1u, capture.Lines().size());
}

TEST(StyleModelClosedTest, EveryOperationFailsWhileNotInstalled) {
  CSpatialiteDBDataModel model;
  CFeatureStyleSet set = PenStyle(QColor(1, 2, 3), 1);
  CEnclosureOption option;
  std::list<CEnclosureOption> list;
  const unsigned char bytes[4] = {1, 2, 3, 4};
  CZuLogCapture capture;
  EXPECT_FALSE(model.QueryStyle(&set, "a", true));
  EXPECT_FALSE(model.ModifyOrInsertStyle("a", &set, 3));
  EXPECT_FALSE(model.QueryEnclosure("a", list));
  EXPECT_TRUE(model.QueryEnclosureData(1).empty());
  EXPECT_FALSE(model.ModifyOrInsertEnclosure(option));
  EXPECT_FALSE(model.ModifyEnclosureData(1, bytes, 4));
  EXPECT_FALSE(model.DeleteEnclosure(1));
  EXPECT_EQ(1, set.GetCount());
  EXPECT_TRUE(capture.Lines().empty());
}
