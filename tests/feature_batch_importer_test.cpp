// Importing groups and features in one transaction.
#include <gtest/gtest.h>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "FeatureOption.h"
#include "IAnnotationDBObjectObserver.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "ModelTest.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

class InsertRecorder : public IAnnotationDBObjectObserver {
 public:
  bool OnLayerInserted(IAnnotationDBDataModel*, const std::string& uuid,
                       const std::string& parent) override {
    layers.push_back(uuid + "<" + parent);
    return false;
  }
  bool OnFeatureInserted(IAnnotationDBDataModel*, const std::string& uuid,
                         const std::string& parent) override {
    features.push_back(uuid + "<" + parent);
    return false;
  }
  std::vector<std::string> layers, features;
};

class ImporterTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    folder_ = tree_.AddFolder(root_, "import here");
  }
  // A line feature of two vertices with two fields and a pen style, owned by `group`.
  IAnnotationFeature* AddLine(CAnnotationGroup& group, const std::string& name, double x) {
    auto feature = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_LINESTRING);
    CGeometryData part;
    part.PushBack(CVector3D(x, 1, 0));
    part.PushBack(CVector3D(x + 1, 2, 5));
    feature->AddPart(part);
    feature->SetFieldValue("title", QString::fromStdString(name));
    feature->SetFieldValue("lanes", 2);
    auto pen = std::make_unique<CFeaturePenStyle>();
    pen->SetWidth(3);
    feature->GetStyleSet()->PushBack(std::move(pen));
    return group.AddFeature(std::move(feature));
  }

  std::string folder_;
};

}  // namespace

TEST_F(ImporterTest, ImportsGroupsFeaturesAndPerLayerData) {
  CAnnotationGroup roads("roads");
  auto* minor = static_cast<CAnnotationGroup*>(
      roads.AddGroup(std::make_unique<CAnnotationGroup>("minor")));
  AddLine(roads, "A1", 10);
  AddLine(roads, "A2", 20);
  AddLine(*minor, "B1", 30);
  InsertRecorder recorder;
  model_.AddObserver(&recorder);
  CFeatureBatchImporter importer(&model_, folder_);
  importer.SetNameField("title");
  CZuLogCapture capture;
  ASSERT_TRUE(importer.BeginImport());
  EXPECT_TRUE(importer.IsImporting());
  EXPECT_EQ(1, capture.Count("[BeginImport] " + Utf8ToLocal("使用[") + "title" +
                             Utf8ToLocal("]作为导入名称的字段 批量导入开始 >>>>>")));
  ASSERT_TRUE(importer.InsertLayer(&roads, LAYER_TYPE_ANNOTATION));
  EXPECT_FALSE(importer.InsertLayer(&roads, LAYER_TYPE_ANNOTATION));  // once per group
  EXPECT_FALSE(importer.InsertLayer(nullptr, LAYER_TYPE_ANNOTATION));
  EXPECT_FALSE(importer.InsertFeature(nullptr));
  ASSERT_TRUE(importer.InsertLayer(minor, LAYER_TYPE_ANNOTATION));
  for (CAnnotationGroup* group : {&roads, minor}) {
    for (int i = 0; i < group->GetFeatureCount(); ++i) {
      ASSERT_TRUE(importer.InsertFeature(group->GetFeature(i)));
    }
  }
  ASSERT_TRUE(importer.EndImport());
  EXPECT_FALSE(importer.IsImporting());
  EXPECT_EQ(1, capture.Count("[EndImport] " + Utf8ToLocal("提交批量导入数据完成 ")));
  EXPECT_FALSE(model_.IsInTransaction());
  model_.RemoveObserver(&recorder);
  EXPECT_EQ(2u, recorder.layers.size());
  EXPECT_EQ(3u, recorder.features.size());

  const std::string roadsUuid = Scalar("SELECT uuid FROM layer WHERE name = 'roads'");
  const std::string minorUuid = Scalar("SELECT uuid FROM layer WHERE name = 'minor'");
  EXPECT_TRUE(model_.QueryLayerOption(minorUuid).IsLayerParent());
  // Features: named from the field, geometry stored, one status and two property rows each.
  const std::string a1 = Scalar("SELECT uuid FROM shape WHERE name = 'A1'");
  EXPECT_EQ("LINESTRING Z(10 1 0, 11 2 5)",
            Scalar("SELECT AsText(geom) FROM shape WHERE uuid = '" + a1 + "'"));
  EXPECT_EQ(ANNOTATION_TYPE_LINE, model_.GetFeatureType(a1));
  EXPECT_EQ(3, Count("SELECT COUNT(*) FROM shape_status"));
  EXPECT_EQ(6, Count("SELECT COUNT(*) FROM shape_property"));
  // Styles: each feature's own, and the layer's collected once.
  EXPECT_EQ(3, Count("SELECT COUNT(*) FROM shape_style WHERE format = 3"));
  EXPECT_EQ(2, Count("SELECT COUNT(*) FROM layer_style WHERE format = 3"));
  const CLayerOption roadsOption = model_.QueryLayerOption(roadsUuid);
  EXPECT_EQ("title,,7;lanes,,3;", roadsOption.GetPropertyHeader());
  EXPECT_EQ(21, roadsOption.GetExtent().max_x);
  // Order: the layer's children are [minor, A1, A2], in insertion order.
  bool isLayer = false;
  EXPECT_EQ(minorUuid, model_.QueryChildByOrder(roadsUuid, 0, isLayer));
  EXPECT_EQ(a1, model_.QueryChildByOrder(roadsUuid, 1, isLayer));
}

TEST_F(ImporterTest, GisLayersGetShapeRowsOnlyAndStrayFeaturesGoToTheRoot) {
  const std::string layer = tree_.AddLayer(folder_, "gis", LAYER_TYPE_GIS_POINT);
  CAnnotationGroup never("never inserted");
  AddLine(never, "stray", 0);
  CFeatureBatchImporter importer(&model_, layer);
  ASSERT_TRUE(importer.BeginImport());
  ASSERT_TRUE(importer.InsertFeature(never.GetFeature(0)));
  ASSERT_TRUE(importer.EndImport());
  EXPECT_EQ(layer, Scalar("SELECT puuid FROM shape"));
  EXPECT_EQ("", Scalar("SELECT index_id FROM shape"));
  for (const char* table : {"shape_status", "shape_property", "shape_style", "shape_order"}) {
    EXPECT_EQ(0, Count(std::string("SELECT COUNT(*) FROM ") + table)) << table;
  }
}

TEST_F(ImporterTest, NamePrecedence) {
  CAnnotationGroup group("g");
  auto own = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_POINT);
  own->SetName("own name");
  own->SetFieldValue("name", QString("field name"));
  group.AddFeature(std::move(own));
  auto fallback = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_POINT);
  fallback->SetFieldValue("name", QString("field name"));
  group.AddFeature(std::move(fallback));
  CFeatureBatchImporter importer(&model_, folder_);
  importer.SetNameField("title");  // present on neither feature
  ASSERT_TRUE(importer.BeginImport());
  ASSERT_TRUE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
  ASSERT_TRUE(importer.InsertFeature(group.GetFeature(0)));
  ASSERT_TRUE(importer.InsertFeature(group.GetFeature(1)));
  ASSERT_TRUE(importer.EndImport());
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM shape WHERE name = 'own name'"));
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM shape WHERE name = 'field name'"));
}

TEST_F(ImporterTest, DiscardLeavesTheDatabaseAsItWasAndRefusedSetups) {
  CZuLogCapture capture;
  CFeatureBatchImporter noRoot(&model_, "");
  EXPECT_FALSE(noRoot.BeginImport());
  EXPECT_EQ(1, capture.Count("[BeginImport] " + Utf8ToLocal("未设置指定的Folder/Layer作为根节点")));
  CSpatialiteDBDataModel closed;
  CFeatureBatchImporter unusable(&closed, folder_);
  EXPECT_EQ(1, capture.Count("[CFeatureBatchImporter] " + Utf8ToLocal("DBDataModel未建立")));
  EXPECT_FALSE(unusable.BeginImport());
  EXPECT_FALSE(unusable.InsertFeature(nullptr));

  CAnnotationGroup group("g");
  AddLine(group, "x", 0);
  {
    CFeatureBatchImporter importer(&model_, folder_);
    ASSERT_TRUE(importer.BeginImport());
    ASSERT_TRUE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
    ASSERT_TRUE(importer.InsertFeature(group.GetFeature(0)));
    EXPECT_TRUE(importer.DiscardImport());
    EXPECT_EQ(1, capture.Count("[DiscardImport] " + Utf8ToLocal("回滚批量导入数据完成 ")));
  }
  {
    // The last handle of an import still in progress discards it.
    CFeatureBatchImporter importer(&model_, folder_);
    ASSERT_TRUE(importer.BeginImport());
    ASSERT_TRUE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
  }
  EXPECT_FALSE(model_.IsInTransaction());
  for (const char* table : {"layer", "layer_status", "layer_order", "shape", "shape_status",
                            "shape_property", "shape_style", "shape_order"}) {
    EXPECT_EQ(0, Count(std::string("SELECT COUNT(*) FROM ") + table)) << table;
  }
  EXPECT_EQ(2, Count("SELECT COUNT(*) FROM folder"));
}
