// The node cache calculator on a database of 10 000 folders and layers: a full refresh, and the
// per-call cost of the inherited attribute and order of a feature five levels deep.
#include <benchmark/benchmark.h>

#include <list>
#include <memory>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "FeatureOption.h"
#include "SqlStatement.h"

#include "AnnotationSchema.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "TempDir.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

namespace {

// Built once for all benchmarks: 100 folders of 99 layers each under the root, and one feature
// under root / folder / folder / layer / layer.
struct BenchDatabase {
  CTempDir dir;
  CSpatialiteDBDataModel model;
  std::string deepFeature;

  BenchDatabase() {
    // Keep the pass's log lines out of the benchmark output.
    CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());
    std::string root;
    const std::string path = dir.File("bench.db");
    if (!AnnotationLayerNS::CreateAnnotationDatabase(path, &root) || !model.Install(path)) return;
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
    CTreeBuilder tree(&model);
    model.BeginTransaction();
    std::string lastFolder;
    for (int f = 0; f < 100; ++f) {
      lastFolder = tree.AddFolder(root, "folder" + std::to_string(f));
      for (int l = 0; l < 99; ++l) tree.AddLayer(lastFolder, "layer" + std::to_string(l));
    }
    const std::string inner = tree.AddFolder(lastFolder, "inner");
    const std::string layer = tree.AddLayer(inner, "deep");
    const std::string sub = tree.AddChildLayer(layer, "deeper");
    deepFeature = tree.AddFeature(sub, "feature");
    model.CommitTransaction();
  }
};

BenchDatabase& Database() {
  static BenchDatabase* database = new BenchDatabase;
  return *database;
}

void BM_FullRefresh(benchmark::State& state) {
  CNodeCacheCalculator* calculator = Database().model.GetNodeCacheCalculator();
  for (auto _ : state) {
    calculator->Refresh();
    calculator->WaitForFinished(-1);
  }
  state.counters["cached"] = calculator->GetCacheCount();
}
BENCHMARK(BM_FullRefresh)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_GetEntityAttribute(benchmark::State& state) {
  BenchDatabase& db = Database();
  CNodeCacheCalculator* calculator = db.model.GetNodeCacheCalculator();
  calculator->Refresh();
  calculator->WaitForFinished(-1);
  for (auto _ : state) benchmark::DoNotOptimize(calculator->GetEntityAttribute(db.deepFeature));
}
BENCHMARK(BM_GetEntityAttribute)->Unit(benchmark::kMicrosecond);

void BM_GetEntityOrder(benchmark::State& state) {
  BenchDatabase& db = Database();
  CNodeCacheCalculator* calculator = db.model.GetNodeCacheCalculator();
  for (auto _ : state) benchmark::DoNotOptimize(calculator->GetEntityOrder(db.deepFeature));
  state.counters["depth"] = calculator->GetEntityOrder(db.deepFeature).GetCount();
}
BENCHMARK(BM_GetEntityOrder)->Unit(benchmark::kMicrosecond);

// The per-feature lookups of the background passes, on 100 000 features: each call picks the
// next feature of the list so that SQLite's cache does not see one row only.
struct LookupDatabase {
  CTempDir dir;
  CSpatialiteDBDataModel model;
  std::vector<std::string> features;

  LookupDatabase() {
    std::string root;
    const std::string path = dir.File("lookup.db");
    if (!AnnotationLayerNS::CreateAnnotationDatabase(path, &root) || !model.Install(path)) return;
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
    CTreeBuilder tree(&model);
    const std::string folder = tree.AddFolder(tree.AddFolder(root, "a"), "b");
    const std::string layer = tree.AddChildLayer(tree.AddLayer(folder, "c"), "d");
    CAnnotationGroup group("features");
    CFeatureBatchImporter importer(&model, layer);
    importer.BeginImport();
    for (int i = 0; i < 100000; ++i) {
      CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
      CGeometryData part;
      part.PushBack(CVector3D(i % 360 - 180, i % 170 - 85, 0));
      feature.AddPart(part);
      importer.InsertFeature(&feature);
    }
    importer.EndImport();
    CSqlStatement rows(model.GetConnection(), "SELECT uuid FROM shape", "");
    while (rows.StepRow()) features.push_back(rows.ColumnText(0, false));
    model.GetNodeCacheCalculator()->Refresh();
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
  }
};

LookupDatabase& Lookups() {
  static LookupDatabase* database = new LookupDatabase;
  return *database;
}

template <typename Call>
void RunLookup(benchmark::State& state, Call call) {
  LookupDatabase& db = Lookups();
  size_t next = 0;
  for (auto _ : state) {
    call(db.model, db.features[next]);
    next = (next + 7919) % db.features.size();
  }
}

void BM_LookupAncestors(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    std::list<std::string> ancestors;
    benchmark::DoNotOptimize(model.QueryAncestorUUIDs(uuid, ancestors));
  });
}
BENCHMARK(BM_LookupAncestors)->Unit(benchmark::kMicrosecond);

void BM_LookupVisibility(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    benchmark::DoNotOptimize(model.IsNodeVisible(uuid));
  });
}
BENCHMARK(BM_LookupVisibility)->Unit(benchmark::kMicrosecond);

void BM_LookupOrderNum(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    benchmark::DoNotOptimize(model.QueryOrderNum(NODE_KIND_FEATURE, uuid));
  });
}
BENCHMARK(BM_LookupOrderNum)->Unit(benchmark::kMicrosecond);

void BM_LookupFeatureType(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    benchmark::DoNotOptimize(model.GetFeatureType(uuid));
  });
}
BENCHMARK(BM_LookupFeatureType)->Unit(benchmark::kMicrosecond);

void BM_LookupExists(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    benchmark::DoNotOptimize(model.IsExistNode(uuid, NODE_KIND_FEATURE));
  });
}
BENCHMARK(BM_LookupExists)->Unit(benchmark::kMicrosecond);

void BM_LookupFeatureOption(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    benchmark::DoNotOptimize(model.QueryFeatureOption(uuid));
  });
}
BENCHMARK(BM_LookupFeatureOption)->Unit(benchmark::kMicrosecond);

void BM_LookupEntityAttributeAndOrder(benchmark::State& state) {
  RunLookup(state, [](CSpatialiteDBDataModel& model, const std::string& uuid) {
    CNodeCacheCalculator* calculator = model.GetNodeCacheCalculator();
    benchmark::DoNotOptimize(calculator->GetEntityAttribute(uuid));
    benchmark::DoNotOptimize(calculator->GetEntityOrder(uuid));
  });
}
BENCHMARK(BM_LookupEntityAttributeAndOrder)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
