// The spatial engine under load: on a database of many features, the host thread moves the view
// 200 times, excludes and includes features, refreshes, resets, updates features, stops and
// restarts the engine, while a second connection imports layers into the same file. The run must
// end with no deadlock, every entity either attached once by its feature's record or released,
// and nothing left behind after the engine stops.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <set>
#include <thread>

#include "AnnotationEntity.h"
#include "AnnotationRenderer.h"
#include "AnnotationSpatialEngine.h"
#include "CacheDirScope.h"
#include "EngineProbes.h"
#include "EntityAssignPool.h"
#include "EntityRecord.h"
#include "IAnnotationLayerModule.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"

namespace {

// Sanitizer builds run the same scenario on fewer features and smaller views.
#if ANNOTATIONLAYER_SANITIZED_BUILD
constexpr int kColumns = 100;
constexpr int kRows = 100;
constexpr int kViewCells = 8;
constexpr int kPaceEvery = 8;
#else
constexpr int kColumns = 400;
constexpr int kRows = 250;
constexpr int kViewCells = 12;
constexpr int kPaceEvery = 4;
#endif
constexpr int kMoves = 200;
constexpr double kStep = 0.01;
constexpr int kView = 9401;
constexpr int kWaitMs = 120000;
const char kPassBegin[] = "----> Travel Begin [stress]";

// The view over grid cells [c, c + cells) x [r, r + cells).
EXTENT CellView(int c, int r, int cells) {
  return MakeExtent((c - 0.5) * kStep, (r - 0.5) * kStep, (c + cells - 0.5) * kStep,
                    (r + cells - 0.5) * kStep);
}

std::vector<std::string> Column(sqlite3* db, const std::string& sql) {
  std::vector<std::string> values;
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    values.push_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
  }
  sqlite3_finalize(stmt);
  return values;
}

}  // namespace

TEST(SpatialEngineStressTest, HostOperationsAndAForeignImportWhileTheEngineRuns) {
  CCacheDirScope cacheDir;
  CTestDatabase db;
  ASSERT_TRUE(db.IsValid());
  CSpatialiteDBDataModel model;
  ASSERT_TRUE(model.Install(db.Path()));
  ASSERT_TRUE(model.GetNodeCacheCalculator()->WaitForFinished(10000));
  const std::string folder = CTreeBuilder(&model).AddFolder(db.RootUUID(), "f");
  ASSERT_TRUE(ImportPointGrid(&model, folder, "grid", SPointGrid{kColumns, kRows, 0, 0, kStep}));
  model.GetNodeCacheCalculator()->Refresh();
  ASSERT_TRUE(model.GetNodeCacheCalculator()->WaitForFinished(60000));
  // Row-major grid order: cell (i, j) is feature j * kColumns + i.
  const std::vector<std::string> features =
      Column(model.GetConnection(), "SELECT uuid FROM shape ORDER BY ROWID");
  ASSERT_EQ(static_cast<size_t>(kColumns * kRows), features.size());
  auto featureAt = [&](int i, int j) { return features[static_cast<size_t>(j * kColumns + i)]; };

  CLogWaiter log;
  CStateEventCounter events;
  CListenerProbe listener;
  CAnnotationScene* scene = CAnnotationRenderer::GetInstance()->GetScene(kView);
  scene->Clear();
  const int liveBefore = CAnnotationEntity::GetLiveCount();
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  auto* engine =
      static_cast<CAnnotationSpatialEngine*>(module->CreateSpatialEngine("stress", &model));
  ASSERT_NE(nullptr, engine);
  engine->SetAttachParam(kView);
  engine->SetListener(&listener);
  ASSERT_TRUE(engine->Start());

  // A second connection imports small layers into the area the view moves over; its transactions
  // make the engine's reads wait for them.
  bool imported = true;
  std::thread importer([&] {
    CSpatialiteDBDataModel other;
    if (!other.Install(db.Path())) {
      imported = false;
      return;
    }
    // The engine's threads keep reading; a loaded machine can hold the writer off for longer
    // than SpatiaLite's few seconds.
    sqlite3_busy_timeout(other.GetConnection(), 60000);
    for (int k = 0; k < 3; ++k) {
      const SPointGrid late{10, 5, (20 * k + 0.25) * kStep, (10 * k + 0.25) * kStep, kStep};
      imported = ImportPointGrid(&other, folder, "late" + std::to_string(k), late) && imported;
    }
    other.GetNodeCacheCalculator()->WaitForFinished(kWaitMs);
  });

  std::string excluded;
  for (int move = 0; move < kMoves; ++move) {
    const int c = (move * 7) % (kColumns - kViewCells);
    const int r = (move * 13) % (kRows - kViewCells);
    const int begun = log.Count(kPassBegin);
    engine->OnUpdateRange(CellView(c, r, kViewCells));
    if (move % kPaceEvery == 0) {
      // Let the traversal thread take this view before the next one replaces it.
      ASSERT_TRUE(log.WaitForCount(kPassBegin, begun + 1, kWaitMs)) << "move " << move;
    }
    switch (move % 10) {
      case 3:
        excluded = featureAt(c + 1, r + 1);
        engine->SetFeatureExcluded(excluded, true);
        break;
      case 8:
        engine->SetFeatureExcluded(excluded, false);
        break;
      case 5:
        engine->UpdateFeature(featureAt(c + 2, r + 2));
        engine->UpdateFeature("not-a-feature");
        break;
      default:
        break;
    }
    if (move % 25 == 12) engine->Refresh();
    if (move % 40 == 20) engine->ResetAll();
    if (move % 30 == 29) engine->ReattachAll();
    if (move % 50 == 49) {
      ASSERT_TRUE(engine->Stop());
      EXPECT_EQ(0, scene->GetCount());
      ASSERT_TRUE(engine->Start());
    }
  }
  importer.join();
  EXPECT_TRUE(imported);
  engine->SetFeatureExcluded(excluded, false);

  // A last view, after a reset: every visible feature in it gets one entity, attached once by
  // the entity its record holds, and nothing else is on screen.
  engine->ResetAll();
  ASSERT_TRUE(engine->GetPool()->WaitForIdle(kWaitMs));
  events.Clear();
  const EXTENT last = CellView(0, 0, kViewCells);
  engine->OnUpdateRange(last);
  const std::vector<std::string> inView = Column(
      model.GetConnection(),
      "SELECT uuid FROM shape WHERE ROWID IN (SELECT pkid FROM idx_shape_geom WHERE xmin > " +
          std::to_string(last.min_x) + " AND xmax < " + std::to_string(last.max_x) +
          " AND ymin > " + std::to_string(last.min_y) + " AND ymax < " +
          std::to_string(last.max_y) + ")");
  const std::set<std::string> expected(inView.begin(), inView.end());
  ASSERT_GE(expected.size(), static_cast<size_t>(kViewCells * kViewCells));
  ASSERT_TRUE(events.WaitForValues(551, expected, kWaitMs));
  ASSERT_TRUE(log.WaitForCount("----> Travel End [stress]", 1, kWaitMs));
  EXPECT_EQ(expected.size(), static_cast<size_t>(scene->GetCount()));
  for (const std::string& uuid : expected) {
    std::shared_ptr<CEntityRecord> record = engine->GetPool()->FindRecord(uuid);
    ASSERT_TRUE(record) << uuid;
    std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
    ASSERT_TRUE(entity) << uuid;
    EXPECT_EQ(entity->GetID(), scene->GetOwner(uuid));
    EXPECT_TRUE(entity->IsAttached());
  }

  ASSERT_TRUE(engine->Stop());
  EXPECT_EQ(0, scene->GetCount());
  EXPECT_EQ(liveBefore, CAnnotationEntity::GetLiveCount());
  const CAnnotationScene::Statistics statistics = scene->GetStatistics();
  EXPECT_EQ(statistics.attached, statistics.detached);
  EXPECT_GT(events.Count(551), 0);
  EXPECT_GT(listener.resets, 0);
  DestroyAnnotationLayerModule();
}
