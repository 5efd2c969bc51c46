// Copies and moves that lose nothing: GIS layers store only the shape row of each feature (no
// order, status, style or property rows), and the tree walk, the node cache, copying and deleting
// must still take every feature as the layer's child; a copy that fails on any row is undone whole
// and a move then keeps its original.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "LayerBatchTransfer.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

namespace {

constexpr int kFeatures = 5;

// Collects the features a walk hands out.
class FeatureCollector : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    uuids.push_back(uuid);
    return HANDLE_TYPE_CONTINUE;
  }
  std::vector<std::string> uuids;
};

class LosslessCopyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    ASSERT_TRUE(model_.Install(db_.Path()));
    folder_ = CTreeBuilder(&model_).AddFolder(db_.RootUUID(), "gis");
    target_ = CTreeBuilder(&model_).AddFolder(db_.RootUUID(), "target");
    CAnnotationGroup group("places");
    for (int i = 0; i < kFeatures; ++i) {
      auto feature = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_POINT);
      CGeometryData part;
      part.PushBack(CVector3D(10 + i, 50, 0));
      feature->AddPart(part);
      feature->SetName("p" + std::to_string(i));
      group.AddFeature(std::move(feature));
    }
    CFeatureBatchImporter importer(&model_, folder_);
    ASSERT_TRUE(importer.BeginImport());
    ASSERT_TRUE(importer.InsertLayer(&group, LAYER_TYPE_GIS_POINT));
    for (int i = 0; i < kFeatures; ++i) ASSERT_TRUE(importer.InsertFeature(group.GetFeature(i)));
    ASSERT_TRUE(importer.EndImport());
    layer_ = model_.GetLastLayerChildUUID(folder_);
    ASSERT_EQ(LAYER_TYPE_GIS_POINT, model_.GetLayerType(layer_));
    CNodeCacheCalculator* calculator = model_.GetNodeCacheCalculator();
    calculator->Refresh();
    ASSERT_TRUE(calculator->WaitForFinished(10000));
  }

  std::vector<std::string> Features(const std::string& layer) {
    FeatureCollector collector;
    model_.TravelLayerChildren(&collector, layer);
    return collector.uuids;
  }
  int Rows(const std::string& sql) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(model_.GetConnection(), sql.c_str(), -1, &stmt, nullptr);
    const int count = sqlite3_step(stmt) == SQLITE_ROW ? sqlite3_column_int(stmt, 0) : -1;
    sqlite3_finalize(stmt);
    return count;
  }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  std::string folder_, target_, layer_;
};

}  // namespace

TEST_F(LosslessCopyTest, EveryFeatureIsWalkedCountedCopiedMovedAndDeleted) {
  ASSERT_EQ(0, Rows("SELECT COUNT(*) FROM shape_order"));  // as GIS layers store them
  const std::vector<std::string> features = Features(layer_);
  ASSERT_EQ(static_cast<size_t>(kFeatures), features.size());
  EXPECT_EQ(kFeatures, model_.CountChildren(layer_, NODE_KIND_LAYER));
  for (const std::string& uuid : features) {
    EXPECT_TRUE(model_.GetNodeCacheCalculator()->GetEntityAttribute(uuid).IsVisible()) << uuid;
  }
  // A copy, a move and a deletion take every feature.
  CLayerBatchCopier copier(&model_);
  ASSERT_TRUE(copier.BeginCopy(nullptr));
  std::string copy;
  ASSERT_TRUE(copier.CopyNode(layer_, target_, &copy));
  ASSERT_TRUE(copier.EndCopy());
  const std::vector<std::string> copies = Features(copy);
  ASSERT_EQ(static_cast<size_t>(kFeatures), copies.size());
  EXPECT_EQ(kFeatures, Rows("SELECT COUNT(*) FROM shape WHERE puuid = '" + copy + "'"));
  // The originals had no status of their own, which counts as checked: so do the copies.
  ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
  EXPECT_TRUE(model_.GetNodeCacheCalculator()->GetEntityAttribute(copies[0]).IsVisible());

  CLayerBatchTransfer transfer(&model_, &model_);
  std::string moved;
  ASSERT_TRUE(transfer.Transfer(layer_, target_, true, &moved));
  EXPECT_EQ(static_cast<size_t>(kFeatures), Features(moved).size());
  EXPECT_EQ(0, Rows("SELECT COUNT(*) FROM shape WHERE puuid = '" + layer_ + "'"));

  CLayerBatchDeleter deleter(&model_);
  deleter.BeginDelete(false, nullptr);
  ASSERT_TRUE(deleter.BatchDeleteLayer(moved));
  deleter.EndDelete();
  EXPECT_EQ(0, Rows("SELECT COUNT(*) FROM shape WHERE puuid = '" + moved + "'"));
  EXPECT_EQ(kFeatures, Rows("SELECT COUNT(*) FROM shape"));  // the copy's
  // The layer's check state still rules its features.
  CLayerOption option = model_.QueryLayerOption(copy);
  option.SetNodeCheckState(0);
  ASSERT_TRUE(model_.ModifyLayerOption(option));
  EXPECT_FALSE(model_.GetNodeCacheCalculator()->GetEntityAttribute(copies[0]).IsVisible());
}

TEST_F(LosslessCopyTest, ACopyFailingOnAnyRowIsUndoneWholeAndAMoveKeepsItsOriginal) {
  std::vector<std::string> layers;
  ASSERT_TRUE(ImportPointGrid(&model_, folder_, "styled", SPointGrid{3, 1}, 50, &layers));
  CLayerBatchCopier copier(&model_);
  ASSERT_TRUE(copier.BeginCopy(nullptr));
  ASSERT_TRUE(copier.CopyNode(layers[0], target_));
  // From now on no geometry can be written (the trigger goes with a rollback, so it is made again).
  const auto noRoom = [this] {
    return sqlite3_exec(model_.GetConnection(),
                        "CREATE TEMP TRIGGER IF NOT EXISTS no_room BEFORE UPDATE OF geom ON shape "
                        "BEGIN SELECT RAISE(ABORT, 'no room'); END",
                        nullptr, nullptr, nullptr);
  };
  ASSERT_EQ(SQLITE_OK, noRoom());
  CZuLogCapture log;
  EXPECT_FALSE(copier.CopyNode(layers[0], target_));
  EXPECT_GE(log.Count("[CopyNode]:"), 1);
  EXPECT_FALSE(copier.IsCopying());  // the first copy went with the failed one
  EXPECT_TRUE(model_.GetLastLayerChildUUID(target_).empty());

  ASSERT_EQ(SQLITE_OK, noRoom());
  CLayerBatchTransfer transfer(&model_, &model_);
  EXPECT_FALSE(transfer.Transfer(layers[0], target_, true));
  EXPECT_TRUE(model_.GetLastLayerChildUUID(target_).empty());
  EXPECT_EQ(3, model_.CountChildren(layers[0], NODE_KIND_LAYER));
  EXPECT_EQ(3, Rows("SELECT COUNT(*) FROM shape WHERE puuid = '" + layers[0] +
                    "' AND geom IS NOT NULL"));
}
