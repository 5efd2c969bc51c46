// The spatial engine on a large database: the time of one traversal pass over a view holding
// 7 000 visible features five levels deep (root / folder / folder / layer / layer / feature),
// against a floor measured in the same run: the raw R*Tree query of the same rectangle returning
// the same uuids. The first pass meets the file's pages for the first time; later passes, each
// from an empty pool, alternate the model's own walk of the view with the default walk that a
// model without one gets (the extent walk, then one link read per feature). Then what one entity
// costs to build alone (a point, and a line of 20 vertices), the time from OnUpdateRange until the
// last 551 event for 1 000 new features with the creators' default pause, and the rate at which
// 7 000 new features get entities without it (as `render` runs the engine).
//
//   spatial_engine_bench [--features=N] [--default-walk]
//     N points in a grid 1000 wide (default 1 000 000); --default-walk: the first pass takes the
//     default walk
#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "AnnotationEntity.h"
#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "AnnotationSchema.h"
#include "AnnotationSpatialEngine.h"
#include "CacheDirScope.h"
#include "EngineProbes.h"
#include "EntityAssignPool.h"
#include "FeatureBatchImporter.h"
#include "IAnnotationLayerModule.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SqlStatement.h"
#include "SpatialiteDBDataModel.h"
#include "TempDir.h"
#include "TreeBuilder.h"

namespace {

constexpr int kColumns = 1000;
constexpr double kStep = 0.01;
constexpr double kOrigin = 100.0;

using Clock = std::chrono::steady_clock;

double MsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The rectangle around columns [c0, c0 + columns) and rows [r0, r0 + rows) of the grid.
EXTENT GridView(int c0, int r0, int columns, int rows) {
  return MakeExtent(kOrigin + (c0 - 0.5) * kStep, kOrigin + (r0 - 0.5) * kStep,
                    kOrigin + (c0 + columns - 0.5) * kStep, kOrigin + (r0 + rows - 0.5) * kStep);
}

// The raw R*Tree query of the rectangle on a plain connection: the uuids of the features whose
// index box lies inside it. Returns the best of `runs` timings.
double RawQuery(const std::string& path, const EXTENT& view, int runs,
                std::set<std::string>* uuids) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  const char* sql =
      "SELECT uuid FROM shape WHERE ROWID IN (SELECT pkid FROM idx_shape_geom WHERE "
      "xmin > ? AND xmax < ? AND ymin > ? AND ymax < ?)";
  double best = 1e300;
  for (int run = 0; run < runs; ++run) {
    uuids->clear();
    const Clock::time_point start = Clock::now();
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    sqlite3_bind_double(stmt, 1, view.min_x);
    sqlite3_bind_double(stmt, 2, view.max_x);
    sqlite3_bind_double(stmt, 3, view.min_y);
    sqlite3_bind_double(stmt, 4, view.max_y);
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      uuids->insert(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
    }
    sqlite3_finalize(stmt);
    best = std::min(best, MsSince(start));
  }
  sqlite3_close(db);
  return best;
}

// `count` lines of 20 vertices in a layer of their own, away from the grid; their uuids.
std::vector<std::string> ImportLines(CSpatialiteDBDataModel* model, const std::string& parent,
                                     int count) {
  CAnnotationGroup group("lines");
  for (int i = 0; i < count; ++i) {
    auto line = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_LINESTRING);
    CGeometryData part;
    for (int v = 0; v < 20; ++v) {
      part.PushBack(CVector3D(10 + (i % 100) * 0.1 + v * 0.001, 10 + i / 100 * 0.1, v));
    }
    line->AddPart(part);
    line->SetName("l" + std::to_string(i));
    group.AddFeature(std::move(line));
  }
  CFeatureBatchImporter importer(model, parent);
  importer.BeginImport();
  importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
  for (int k = 0; k < group.GetFeatureCount(); ++k) importer.InsertFeature(group.GetFeature(k));
  importer.EndImport();
  std::vector<std::string> uuids;
  CSqlStatement rows(model->GetConnection(),
                     "SELECT uuid FROM shape WHERE puuid = (SELECT uuid FROM layer WHERE name = "
                     "'lines')",
                     "");
  while (rows.StepRow()) uuids.push_back(rows.ColumnText(0, false));
  return uuids;
}

// Microseconds per entity built on this thread, one after another (no creator pause).
double BuildCost(IAnnotationDBDataModel* model, const std::vector<std::string>& uuids) {
  int built = 0;
  const Clock::time_point start = Clock::now();
  for (const std::string& uuid : uuids) {
    CAnnotationEntity entity;
    built += entity.Build(model, uuid);
  }
  const double us = MsSince(start) * 1000 / std::max<size_t>(1, uuids.size());
  if (built != static_cast<int>(uuids.size())) std::fprintf(stderr, "some entities failed\n");
  return us;
}

// The model as the bench drives it: with `defaultWalk` a pass reads its features as a model
// without a walk of its own does (the extent walk, then one link read per feature).
class CBenchModel : public CSpatialiteDBDataModel {
 public:
  bool TravelFeatureLinksViaExtent(IFeatureLinkVisitor* visitor, const CGeometryData& ring,
                                   int limit) override {
    return defaultWalk ? IAnnotationDBDataModel::TravelFeatureLinksViaExtent(visitor, ring, limit)
                       : CSpatialiteDBDataModel::TravelFeatureLinksViaExtent(visitor, ring, limit);
  }
  std::atomic<bool> defaultWalk{false};
};

}  // namespace

int main(int argc, char** argv) {
  long features = 1000000;
  bool defaultWalkFirst = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--features=", 11) == 0) features = std::atol(argv[i] + 11);
    if (std::strcmp(argv[i], "--default-walk") == 0) defaultWalkFirst = true;
  }
  const int rows = static_cast<int>(std::max<long>(100, features / kColumns));
  features = static_cast<long>(rows) * kColumns;

  CCacheDirScope cacheDir;
  CLogWaiter log;  // keeps the log out of the output and tells when a pass ends
  CTempDir dir;
  const std::string path = dir.File("bench.db");
  std::string root;
  CBenchModel model;
  if (!AnnotationLayerNS::CreateAnnotationDatabase(path, &root) || !model.Install(path)) {
    std::fprintf(stderr, "cannot make the database\n");
    return 1;
  }
  model.GetNodeCacheCalculator()->WaitForFinished(-1);

  Clock::time_point start = Clock::now();
  CTreeBuilder tree(&model);
  const std::string outer = tree.AddFolder(root, "outer");
  const std::string inner = tree.AddFolder(outer, "inner");
  const std::string layer = tree.AddLayer(inner, "layer");
  SPointGrid grid;
  grid.columns = kColumns;
  grid.rows = rows;
  grid.x0 = kOrigin;
  grid.y0 = kOrigin;
  grid.step = kStep;
  if (!ImportPointGrid(&model, layer, "points", grid, 50000)) {
    std::fprintf(stderr, "import failed\n");
    return 1;
  }
  const std::vector<std::string> lines = ImportLines(&model, root, 2000);
  model.GetNodeCacheCalculator()->Refresh();
  model.GetNodeCacheCalculator()->WaitForFinished(-1);
  std::printf("database: %ld features in %.0f ms\n", features, MsSince(start));

  // 70 x 100 = 7 000 features in the middle of the grid.
  const EXTENT view = GridView(kColumns / 2 - 35, rows / 2 - 50, 70, 100);
  std::set<std::string> expected;
  const double floorMs = RawQuery(path, view, 5, &expected);
  std::printf("floor: raw R*Tree query, %zu uuids: %.2f ms\n", expected.size(), floorMs);

  // Where a pass spends its time: what the engine asks for each feature it accepts.
  CNodeCacheCalculator* calculator = model.GetNodeCacheCalculator();
  auto perFeature = [&](const char* what, auto call) {
    const Clock::time_point begin = Clock::now();
    for (const std::string& uuid : expected) call(uuid);
    std::printf("  %-36s %8.1f us per feature\n", what, MsSince(begin) * 1000 / expected.size());
  };
  std::printf("per-feature costs of the pass's questions:\n");
  perFeature("calculator GetEntityAttribute", [&](const std::string& u) {
    calculator->GetEntityAttribute(u);
  });
  perFeature("calculator GetEntityOrder", [&](const std::string& u) {
    calculator->GetEntityOrder(u);
  });
  perFeature("calculator GetVisibleEntityOrder", [&](const std::string& u) {
    CNodeOrder order;
    calculator->GetVisibleEntityOrder(u, &order);
  });
  perFeature("data model GetFeatureType", [&](const std::string& u) { model.GetFeatureType(u); });

  // An entity reads its geometry, style and base from the model.
  const std::vector<std::string> points(
      expected.begin(), std::next(expected.begin(), std::min<size_t>(2000, expected.size())));
  std::printf("entity build alone: %.1f us per point (aim <= 100), %.1f us per line of 20 "
              "vertices (aim <= 300)\n",
              BuildCost(&model, points), BuildCost(&model, lines));

  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  module->Start();
  auto* engine =
      static_cast<CAnnotationSpatialEngine*>(module->CreateSpatialEngine("bench", &model));
  engine->Start();
  // Each pass from an empty pool: a reset drops every record first.
  int passes = 0;
  double latencyMs = 0;
  auto runPass = [&](bool defaultWalk) {
    model.defaultWalk = defaultWalk;
    engine->ResetAll();
    engine->GetPool()->WaitForIdle(60000);
    const Clock::time_point begin = Clock::now();
    engine->OnUpdateRange(view);
    if (!log.WaitForCount("----> Travel End [bench]", ++passes, 600000)) {
      std::fprintf(stderr, "the pass did not end\n");
      std::exit(1);
    }
    latencyMs = MsSince(begin);
    // The pass's own time, from its end line: the wait above also holds the traversal thread's
    // idle sleep before the pass began.
    double ms = latencyMs;
    for (const std::string& line : log.Lines()) {
      const size_t at = line.find("----> Travel End [bench] <<<<< d=");
      if (at != std::string::npos) ms = std::atof(line.c_str() + line.find("d=", at) + 2);
    }
    return ms;
  };
  const double passMs = runPass(defaultWalkFirst);
  const double firstLatencyMs = latencyMs;
  int matching = 0;
  for (const std::string& uuid : expected) matching += engine->GetPool()->HasRecord(uuid);
  std::printf("first pass, %s walk: %d records, %d of the floor's uuids: %.0f ms (%.0f ms after "
              "OnUpdateRange)\n",
              defaultWalkFirst ? "default" : "the model's", engine->GetPool()->GetRecordCount(),
              matching, passMs, firstLatencyMs);
  std::printf("ratio pass / floor: %.1fx (aim: within 10x)\n", passMs / floorMs);
  double ownMs = 1e300, defaultMs = 1e300;
  for (int round = 0; round < 3; ++round) {
    defaultMs = std::min(defaultMs, runPass(true));
    ownMs = std::min(ownMs, runPass(false));
  }
  std::printf("later passes, best of three: the model's walk %.0f ms (%.1fx), the default walk "
              "%.0f ms (%.1fx)\n",
              ownMs, ownMs / floorMs, defaultMs, defaultMs / floorMs);

  // 1 000 features no entity has been made for: 10 x 100 elsewhere in the grid.
  CStateEventCounter events;
  engine->ResetAll();
  engine->GetPool()->WaitForIdle(60000);
  start = Clock::now();
  engine->OnUpdateRange(GridView(10, 0, 10, 100));
  const bool all = events.WaitForCount(551, 1000, 600000);
  const double createMs = MsSince(start);
  std::printf("entities: %d new in %.0f ms from OnUpdateRange to the last 551 event%s\n",
              events.Count(551), createMs, all ? "" : " (incomplete)");

  // The same without the creators' pause, as `render` runs the engine: 7 000 more features.
  engine->SetCreatorPause(0);
  engine->ResetAll();
  engine->GetPool()->WaitForIdle(60000);
  CStateEventCounter fast;
  start = Clock::now();
  engine->OnUpdateRange(GridView(100, 0, 70, 100));
  const bool allFast = fast.WaitForCount(551, 7000, 600000);
  const double fastMs = MsSince(start);
  std::printf("entities without pause: %d new in %.0f ms, %.0f features/s%s (aim >= 10 000)\n",
              fast.Count(551), fastMs, fast.Count(551) / (fastMs / 1000),
              allFast ? "" : " (incomplete)");
  DestroyAnnotationLayerModule();
  return 0;
}
