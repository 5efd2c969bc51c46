// The node cache calculator on a database of 10 000 folders and layers: a full refresh, and the
// per-call cost of the inherited attribute and order of a feature five levels deep.
#include <benchmark/benchmark.h>

#include <memory>

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

}  // namespace

BENCHMARK_MAIN();
