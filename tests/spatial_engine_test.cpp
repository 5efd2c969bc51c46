// The runtime spatial engine: passes driven by the view extent, the per-pass limit, inherited
// visibility and draw order, exclusion, reset and refresh, stop and restart, its events and logs.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <memory>

#include "AnnotationEntity.h"
#include "AnnotationFeature.h"
#include "AnnotationRenderer.h"
#include "AnnotationSpatialEngine.h"
#include "CacheDirScope.h"
#include "EngineProbes.h"
#include "EntityAssignPool.h"
#include "EntityRecord.h"
#include "FeatureBatchImporter.h"
#include "IAnnotationLayerModule.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "Task.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "TreeBuilder.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

constexpr int kView = 9201;
constexpr int kOtherView = 9202;
const char kPassEnd[] = "----> Travel End [test]";

// A model whose engine sees no node cache calculator.
class CalculatorlessModel : public CSpatialiteDBDataModel {
 public:
  CNodeCacheCalculator* GetNodeCacheCalculator() override { return nullptr; }
};

class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override { SetUpWith(std::make_unique<CSpatialiteDBDataModel>()); }
  void SetUpWith(std::unique_ptr<CSpatialiteDBDataModel> model) {
    model_ = std::move(model);
    ASSERT_TRUE(db_.IsValid());
    ASSERT_TRUE(model_->Install(db_.Path()));
    calculator_ = model_->CSpatialiteDBDataModel::GetNodeCacheCalculator();
    ASSERT_TRUE(calculator_->WaitForFinished(10000));
    folder_ = CTreeBuilder(model_.get()).AddFolder(db_.RootUUID(), "f");
    module_ = GetOrCreateAnnotationLayerModule();
    ASSERT_TRUE(module_->Start());
    scene_ = CAnnotationRenderer::GetInstance()->GetScene(kView);
    scene_->Clear();
    CAnnotationRenderer::GetInstance()->GetScene(kOtherView)->Clear();
    log_.reset(new CLogWaiter);
    IAnnotationSpatialEngine* engine = module_->CreateSpatialEngine("test", model_.get());
    ASSERT_NE(nullptr, engine);
    engine_ = static_cast<CAnnotationSpatialEngine*>(engine);
    engine_->SetAttachParam(kView);
    engine_->SetCreatorPause(0);
    engine_->SetListener(&listener_);
  }
  void TearDown() override {
    DestroyAnnotationLayerModule();  // stops and deletes the engine
    log_.reset();
  }

  // Imports columns x rows points at (0.5 + i, 0.5 + j) as one new layer below the folder and
  // returns their uuids in sibling order.
  std::vector<std::string> Populate(int columns, int rows, double x0 = 0.5) {
    std::vector<std::string> layers;
    EXPECT_TRUE(ImportPointGrid(model_.get(), folder_, "points", SPointGrid{columns, rows, x0, 0.5},
                                columns * rows, &layers));
    layer_ = layers.at(0);
    std::vector<std::string> features;
    bool isLayer = false;
    for (int i = 0; i < columns * rows; ++i) {
      features.push_back(model_->QueryChildByOrder(layer_, i, isLayer));
    }
    calculator_->Refresh();
    EXPECT_TRUE(calculator_->WaitForFinished(10000));
    return features;
  }
  // Populate(4, 3), started, one pass over the whole grid with its twelve entities made.
  std::vector<std::string> ShowGrid() {
    const std::vector<std::string> features = Populate(4, 3);
    EXPECT_TRUE(engine_->Start());
    engine_->OnUpdateRange(MakeExtent(0, 0, 4, 3));
    EXPECT_TRUE(WaitEntities(12));
    EXPECT_TRUE(WaitPasses(1));
    return features;
  }
  void HideLayer() {
    CLayerOption option = model_->QueryLayerOption(layer_);
    option.SetNodeCheckState(0);
    ASSERT_TRUE(model_->ModifyLayerOption(option));
  }
  bool WaitPasses(int count) { return log_->WaitForCount(kPassEnd, count); }
  bool WaitEntities(int count) { return events_.WaitForCount(551, count); }

  CCacheDirScope cacheDir_;
  CTestDatabase db_;
  std::unique_ptr<CSpatialiteDBDataModel> model_;
  CNodeCacheCalculator* calculator_ = nullptr;
  std::string folder_, layer_;
  IAnnotationLayerModule* module_ = nullptr;
  CAnnotationSpatialEngine* engine_ = nullptr;
  CAnnotationScene* scene_ = nullptr;
  CStateEventCounter events_;
  CListenerProbe listener_;
  std::unique_ptr<CLogWaiter> log_;
};

// A model whose passes may take the default walk: the extent walk, then one link read a feature.
struct SwitchableWalkModel : CSpatialiteDBDataModel {
  bool TravelFeatureLinksViaExtent(IFeatureLinkVisitor* visitor, const CGeometryData& ring,
                                   int limit) override {
    return defaultWalk ? IAnnotationDBDataModel::TravelFeatureLinksViaExtent(visitor, ring, limit)
                       : CSpatialiteDBDataModel::TravelFeatureLinksViaExtent(visitor, ring, limit);
  }
  std::atomic<bool> defaultWalk{false};
};

class CalculatorlessEngineTest : public EngineTest {
 protected:
  void SetUp() override { SetUpWith(std::make_unique<CalculatorlessModel>()); }
};

class LinkWalkEngineTest : public EngineTest {
 protected:
  void SetUp() override { SetUpWith(std::make_unique<SwitchableWalkModel>()); }
};

}  // namespace

TEST_F(EngineTest, InitialisationAndCallsBeforeStart) {
  CAnnotationSpatialEngine engine;
  EXPECT_FALSE(engine.Initialize("x", nullptr));
  EXPECT_FALSE(engine.Start());  // no model
  engine.SetCreatorPause(-5);
  EXPECT_EQ(0, engine.GetCreatorPause());
  ASSERT_TRUE(engine.Initialize("named", model_.get()));
  EXPECT_NE(engine_->GetID(), engine.GetID());
  engine.SetKeyedList(4, {{1, "a"}});
  engine.SetKeyedList(4, {{3, "c"}});  // replaces
  EXPECT_EQ((std::vector<std::pair<int, std::string>>{{3, "c"}}), engine.GetKeyedList(4));
  EXPECT_TRUE(engine.GetKeyedList(5).empty());
  // Nothing to do before Start.
  engine.SetListener(&listener_);
  engine.ResetAll();
  engine.Refresh();
  engine.UpdateFeature("x");
  engine.ReattachAll();
  engine.OnUpdateRange(MakeExtent(0, 0, 4, 3));
  EXPECT_EQ(0, engine.GetRange().max_x);
  EXPECT_EQ(0, listener_.resets);
  EXPECT_TRUE(listener_.ranges.empty());
  EXPECT_TRUE(engine.Stop());
  ASSERT_TRUE(engine.Uninitialize());
  EXPECT_EQ(-1, engine.GetID());
  EXPECT_EQ(nullptr, engine.GetDataModel());
}

TEST_F(EngineTest, RangesStartPassesAndAreLogged) {
  Populate(4, 3);
  ASSERT_TRUE(engine_->Start());
  EXPECT_TRUE(engine_->Start());
  EXPECT_EQ(1, log_->Count(Utf8ToLocal("[CAnnotationSpatialEngine] Start引擎 [test]")));
  const EXTENT range = MakeExtent(0, 0, 4, 3);
  engine_->OnUpdateRange(range);
  ASSERT_TRUE(WaitPasses(1));
  ASSERT_TRUE(WaitEntities(12));
  EXPECT_EQ(12, scene_->GetCount());
  EXPECT_EQ(1, log_->Count("----> Travel Begin [test]>>>>>0, 0, 4, 3"));
  EXPECT_EQ(1, log_->Count("----> Travel End [test] <<<<< d="));
  EXPECT_EQ(1, log_->Count("ms size=12"));
  EXPECT_EQ(0, log_->Count(Utf8ToLocal("优先考虑更小的范围")));
  engine_->OnUpdateRange(range);  // the same range: no pass
  EXPECT_EQ(1u, listener_.ranges.size());

  // A view strictly inside the current one cuts the running pass; it is also the fence: had the
  // repeat started a pass, three would have begun.
  engine_->OnUpdateRange(MakeExtent(0.1, 0.1, 3.9, 2.9));
  EXPECT_EQ(1, log_->Count(Utf8ToLocal("[SpatialEngine::OnUpdateRange] 优先考虑更小的范围 [test]")));
  ASSERT_TRUE(WaitPasses(2));
  EXPECT_EQ(1, log_->Count("----> Travel Begin [test]>>>>>0.1, 0.1, 3.9, 2.9"));
  EXPECT_EQ(2, log_->Count("----> Travel Begin [test]"));
  EXPECT_EQ(2u, listener_.ranges.size());
  EXPECT_EQ(2.9, engine_->GetRange().max_y);
  ASSERT_TRUE(engine_->Stop());
  EXPECT_TRUE(engine_->Stop());  // logged once
  EXPECT_EQ(1, log_->Count(Utf8ToLocal("[CAnnotationSpatialEngine] Stop引擎 [test]")));
}

TEST_F(EngineTest, EqualOrderKeysKeepTheFeatureMetFirst) {
  const std::vector<std::string> features = Populate(4, 3);
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(model_->GetConnection(),
                                    ("UPDATE shape_order SET order_num = 0 WHERE uuid = '" +
                                     features[5] + "'").c_str(),
                                    nullptr, nullptr, nullptr));
  ASSERT_TRUE(engine_->Start());
  engine_->OnUpdateRange(MakeExtent(0, 0, 4, 3));
  ASSERT_TRUE(WaitPasses(1));
  EXPECT_EQ(1, log_->Count("ms size=11"));
  EXPECT_EQ(12, engine_->GetPool()->GetRecordCount());  // both recorded, one ranked
}

TEST_F(EngineTest, EntitiesAreAnnouncedOnceAndDrawValuesFollowTheOrderKeys) {
  const std::vector<std::string> features = ShowGrid();
  std::vector<std::string> announced = events_.Values(551);
  std::sort(announced.begin(), announced.end());
  std::vector<std::string> expected = features;
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(expected, announced);
  for (int sender : events_.Senders(551)) EXPECT_EQ(engine_->GetID(), sender);
  // Entities made while the first pass still ranked took their values from it; the next pass
  // gives every existing entity its draw value and announces that, and makes no entity.
  events_.Clear();
  engine_->OnUpdateRange(MakeExtent(0, 0, 4, 3.5));
  ASSERT_TRUE(WaitPasses(2));
  ASSERT_EQ(std::vector<std::string>{"12"}, events_.Values(552));
  EXPECT_EQ(std::vector<int>{engine_->GetID()}, events_.Senders(552));
  // A larger order number compares less, so it comes first and gets the larger value.
  for (int i = 0; i < 12; ++i) {
    CSceneDrawable drawable;
    ASSERT_TRUE(scene_->GetDrawable(features[static_cast<size_t>(i)], &drawable));
    EXPECT_EQ(i + 1, drawable.display.zValue) << "feature " << i;
  }
  EXPECT_EQ(12, engine_->GetPool()->FindRecord(features[11])->GetAttribute().GetZValue());
  ASSERT_TRUE(engine_->Stop());
  EXPECT_EQ(0, events_.Count(551));
}

TEST_F(EngineTest, ExclusionReleasesTheEntityAndIsRemembered) {
  const std::vector<std::string> features = ShowGrid();
  // A host that refreshes every feature it hears of: by then the feature is excluded, so the
  // refresh cannot give it an entity that no later pass would release.
  listener_.onRemoved = [this](const std::string& uuid) { engine_->UpdateFeature(uuid); };
  EXPECT_TRUE(engine_->SetFeatureExcluded(features[0], true));
  EXPECT_TRUE(engine_->IsFeatureExcluded(features[0]));
  EXPECT_FALSE(scene_->Contains(features[0]));
  EXPECT_EQ(std::vector<std::string>{features[0]}, listener_.removed);
  engine_->Refresh();  // later passes skip it
  ASSERT_TRUE(WaitEntities(12 + 11));
  ASSERT_TRUE(WaitPasses(2));
  EXPECT_EQ(11, scene_->GetCount());
  EXPECT_FALSE(engine_->GetPool()->HasRecord(features[0]));

  EXPECT_TRUE(engine_->SetFeatureExcluded(features[0], false));
  EXPECT_FALSE(engine_->IsFeatureExcluded(features[0]));
  engine_->Refresh();
  ASSERT_TRUE(WaitEntities(12 + 11 + 12));
  EXPECT_TRUE(scene_->Contains(features[0]));
  EXPECT_EQ(1u, listener_.removed.size());
}

TEST_F(EngineTest, RefreshKeepsTheViewResetForgetsItAndReattachMoves) {
  ShowGrid();
  int64_t newestBefore = 0;
  for (const std::string& key : scene_->GetKeys()) {
    newestBefore = std::max(newestBefore, scene_->GetOwner(key));
  }
  engine_->Refresh();
  EXPECT_EQ(0, scene_->GetCount());  // detached at once
  EXPECT_EQ(1, listener_.resets);
  EXPECT_EQ(4, engine_->GetRange().max_x);
  ASSERT_TRUE(WaitEntities(24));
  ASSERT_TRUE(WaitPasses(2));
  EXPECT_EQ(12, scene_->GetCount());
  for (const std::string& key : scene_->GetKeys()) EXPECT_GT(scene_->GetOwner(key), newestBefore);
  EXPECT_EQ(1u, listener_.ranges.size());  // no range change was reported

  engine_->ResetAll();
  EXPECT_EQ(0, engine_->GetRange().max_x);
  EXPECT_EQ(0, scene_->GetCount());
  EXPECT_EQ(2, listener_.resets);
  EXPECT_EQ(0, engine_->GetPool()->GetRecordCount());
  engine_->OnUpdateRange(MakeExtent(0, 0, 2, 3));
  ASSERT_TRUE(WaitPasses(3));
  ASSERT_TRUE(WaitEntities(24 + 6));
  EXPECT_EQ(3, log_->Count("----> Travel Begin [test]"));
  EXPECT_EQ(6, scene_->GetCount());

  engine_->SetAttachParam(kOtherView);
  engine_->ReattachAll();
  EXPECT_EQ(0, scene_->GetCount());
  EXPECT_EQ(6, CAnnotationRenderer::GetInstance()->GetScene(kOtherView)->GetCount());
}

TEST_F(EngineTest, StopAndStartMakeNineNewThreadsAndANewPool) {
  const int liveBefore = CAnnotationEntity::GetLiveCount();
  ShowGrid();
  const int firstPool = engine_->GetPool()->GetID();
  ASSERT_TRUE(engine_->Stop());
  EXPECT_TRUE(engine_->GetTasks().empty());
  EXPECT_EQ(nullptr, engine_->GetPool());
  EXPECT_EQ(0, scene_->GetCount());
  EXPECT_EQ(liveBefore, CAnnotationEntity::GetLiveCount());
  EXPECT_EQ(1, listener_.resets);

  ASSERT_TRUE(engine_->Start());
  const std::vector<const CTask*> tasks = engine_->GetTasks();
  ASSERT_EQ(9u, tasks.size());
  for (const CTask* task : tasks) EXPECT_TRUE(task->IsRunning());
  ASSERT_NE(nullptr, engine_->GetPool());
  EXPECT_TRUE(engine_->GetPool()->IsRunning());
  EXPECT_NE(firstPool, engine_->GetPool()->GetID());
  EXPECT_EQ(0, engine_->GetRange().max_x);  // the view is reported again after a start
  engine_->OnUpdateRange(MakeExtent(0, 0, 4, 3));
  ASSERT_TRUE(WaitEntities(24));
  EXPECT_EQ(12, scene_->GetCount());
}

TEST_F(EngineTest, UpdateFeatureRebuildsItsEntityOrReleasesAGoneFeature) {
  const std::vector<std::string> features = ShowGrid();
  CAnnotationFeature moved(GEOMETRY_DATA_TYPE_POINT);
  moved.AddPart(CGeometryData(std::vector<CVector3D>{{2.25, 1.25, 0}}));
  ASSERT_TRUE(model_->ModifyGeometryData(features[0], &moved));
  engine_->UpdateFeature(features[0]);
  CSceneDrawable drawable;
  ASSERT_TRUE(scene_->GetDrawable(features[0], &drawable));
  EXPECT_EQ(2.25, drawable.parts[0].At(0).X());
  EXPECT_EQ(std::vector<std::string>{features[0]}, listener_.changed);
  EXPECT_EQ(12, events_.Count(551));  // rebuilt, not new

  ASSERT_TRUE(model_->DeleteFeature(features[1]));
  engine_->UpdateFeature(features[1]);
  EXPECT_FALSE(scene_->Contains(features[1]));
  EXPECT_FALSE(engine_->GetPool()->HasRecord(features[1]));
  engine_->SetFeatureExcluded(features[2], true);
  engine_->UpdateFeature(features[2]);  // an excluded feature is left alone
  EXPECT_FALSE(scene_->Contains(features[2]));
  EXPECT_EQ(1u, listener_.changed.size());

  // Its layer unchecked, a feature's drawable is hidden by the update at once, and keeps its
  // draw value.
  ASSERT_TRUE(scene_->GetDrawable(features[3], &drawable));
  const int z = drawable.display.zValue;
  HideLayer();
  engine_->UpdateFeature(features[3]);
  ASSERT_TRUE(scene_->GetDrawable(features[3], &drawable));
  EXPECT_FALSE(drawable.display.visible);
  EXPECT_EQ(z, drawable.display.zValue);
}

TEST_F(EngineTest, AResetWhileAPassBeginsCutsThatPass) {
  Populate(4, 3);
  log_->HoldAt("----> Travel Begin [test]");  // the pass has taken its change and range by then
  ASSERT_TRUE(engine_->Start());
  engine_->OnUpdateRange(MakeExtent(0, 0, 4, 3));
  ASSERT_TRUE(log_->WaitForCount("----> Travel Begin [test]", 1));
  engine_->ResetAll();
  log_->Release();
  ASSERT_TRUE(WaitPasses(1));
  EXPECT_EQ(1, log_->Count("ms size=0"));
  EXPECT_EQ(0, engine_->GetPool()->GetRecordCount());
  EXPECT_EQ(0, engine_->GetPendingCount());
  EXPECT_EQ(0, events_.Count(552));  // a pass that updated nothing is not announced
}

TEST_F(EngineTest, TheModelMayBeInstalledAgainUnderAStartedEngine) {
  ShowGrid();
  // Uninstall deletes the calculator the first pass used; the next pass takes the new one. The
  // freed block stays taken meanwhile, so that the new calculator cannot land at the old address
  // and a stale pointer reads freed memory in any build.
  ASSERT_TRUE(model_->Uninstall());
  std::unique_ptr<char[]> freedBlock(new char[sizeof(CNodeCacheCalculator)]());
  ASSERT_TRUE(model_->Install(db_.Path()));
  calculator_ = model_->GetNodeCacheCalculator();
  ASSERT_TRUE(calculator_->WaitForFinished(10000));
  HideLayer();
  engine_->Refresh();
  ASSERT_TRUE(WaitPasses(2));
  EXPECT_EQ(0, engine_->GetPool()->GetRecordCount());  // the new calculator hides the layer
}

TEST_F(CalculatorlessEngineTest, EverythingIsVisibleWithDrawValueZero) {
  Populate(4, 1);
  Populate(4, 1, 10.5);
  HideLayer();
  ASSERT_TRUE(engine_->Start());
  engine_->OnUpdateRange(MakeExtent(0, 0, 20, 3));
  ASSERT_TRUE(WaitEntities(8));
  ASSERT_TRUE(WaitPasses(1));
  EXPECT_EQ(1, log_->Count("ms size=0"));  // nothing is ranked
  events_.Clear();
  engine_->OnUpdateRange(MakeExtent(0, 0, 20, 4));
  ASSERT_TRUE(WaitPasses(2));
  EXPECT_EQ(1, events_.Count(552));  // every entity took its draw value at once
  EXPECT_EQ(8, scene_->GetCount());
  for (const std::string& key : scene_->GetKeys()) {
    CSceneDrawable drawable;
    ASSERT_TRUE(scene_->GetDrawable(key, &drawable));
    EXPECT_EQ(0, drawable.display.zValue);
    EXPECT_TRUE(drawable.display.visible);
  }
}

// Features checked, unchecked, with two status ids, with the order row at another feature's row
// id, hidden by their layer, in a GIS layer (no status or order rows): both walks rank them alike.
TEST_F(LinkWalkEngineTest, TheModelsWalkAcceptsAndRanksAsTheDefaultWalk) {
  Populate(2, 1, 5.5);
  HideLayer();
  const std::vector<std::string> grid = Populate(4, 3);
  CTreeBuilder tree(model_.get());
  CFeatureBatchImporter importer(model_.get(), tree.AddLayer(folder_, "gis", LAYER_TYPE_GIS_POINT));
  ASSERT_TRUE(importer.BeginImport());
  for (double x : {8.5, 9.5}) {
    CAnnotationFeature point(GEOMETRY_DATA_TYPE_POINT);
    point.AddPart(CGeometryData({CVector3D(x, 0.5, 0)}));
    ASSERT_TRUE(importer.InsertFeature(&point));
  }
  ASSERT_TRUE(importer.EndImport());
  const std::string edit = "UPDATE shape_status SET value = 0 WHERE id = (SELECT MAX(id) FROM "
                           "shape_status); UPDATE shape SET index_id = index_id || ',' || substr("
                           "index_id, 3) WHERE uuid = '" + grid[1] + "'; UPDATE shape_order SET "
                           "ROWID = (SELECT MAX(ROWID) FROM shape) WHERE uuid = '" + grid[2] + "'";
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(model_->GetConnection(), edit.c_str(), nullptr, nullptr, 0));
  std::vector<std::string> all;
  for (CSqlStatement rows(model_->GetConnection(), "SELECT uuid FROM shape", ""); rows.StepRow();)
    all.push_back(rows.ColumnText(0, false));
  ASSERT_TRUE(engine_->Start());
  auto pass = [&](bool defaultWalk, int number) {
    static_cast<SwitchableWalkModel*>(model_.get())->defaultWalk = defaultWalk;
    engine_->ResetAll();
    engine_->OnUpdateRange(MakeExtent(0, 0, 10, 3));
    EXPECT_TRUE(WaitPasses(number));
    std::vector<int> z;  // -1: no record
    for (const std::string& uuid : all) {
      std::shared_ptr<CEntityRecord> record = engine_->GetPool()->FindRecord(uuid);
      z.push_back(record ? record->GetAttribute().GetZValue() : -1);
    }
    return z;
  };
  const std::vector<int> own = pass(false, 1);
  EXPECT_EQ(13, all.size() - std::count(own.begin(), own.end(), -1));
  EXPECT_EQ(own, pass(true, 2));
}
