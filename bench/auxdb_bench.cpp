// The key-point editor database on a feature of 100 000 vertices (ten parts of 10 000 on a grid of
// 0.001 degree): building it, picking the vertex under the cursor, the closest vertex, and extent
// traversal of about 1000 vertices with and without a limit.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>

#include "AnnotationFeature.h"
#include "CacheDirScope.h"
#include "SpatialiteEditorDB.h"
#include "ZuLog.h"

namespace {

constexpr int kColumns = 400;
constexpr int kRows = 250;  // kColumns * kRows = 100 000 vertices
constexpr int kParts = 10;
constexpr double kStep = 0.001;
constexpr double kOriginX = 116.0;
constexpr double kOriginY = 39.0;

CVector3D GridPoint(int column, int row) {
  return CVector3D(kOriginX + column * kStep, kOriginY + row * kStep, 50.0);
}

// Rows of the grid are dealt out to the parts in bands.
void FillGrid(CAnnotationFeature& feature) {
  feature.SetGeometryType(GEOMETRY_DATA_TYPE_MULTILINESTRING);
  const int rowsPerPart = kRows / kParts;
  for (int part = 0; part < kParts; ++part) {
    CGeometryData data;
    for (int row = part * rowsPerPart; row < (part + 1) * rowsPerPart; ++row) {
      for (int column = 0; column < kColumns; ++column) data.PushBack(GridPoint(column, row));
    }
    feature.AddPart(data);
  }
}

// Built once for all benchmarks.
struct BenchEditor {
  CCacheDirScope cache;
  CAnnotationFeature feature;
  CSpatialiteEditorDB db;
  bool opened = false;

  BenchEditor() {
    CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());
    FillGrid(feature);
    opened = db.Open("bench", &feature);
  }
  ~BenchEditor() { db.Close(); }
};

BenchEditor& Editor() {
  static BenchEditor editor;
  return editor;
}

class CCountingVisitor : public CSpatialiteEditorDB::IKeyPointVisitor {
 public:
  bool VisitKeyPoint(int, const CVector3D&) override {
    ++count;
    return false;
  }
  int64_t count = 0;
};

void BM_OpenFromFeature(benchmark::State& state) {
  CCacheDirScope cache;
  CAnnotationFeature feature;
  FillGrid(feature);
  for (auto _ : state) {
    CSpatialiteEditorDB db;
    if (!db.Open("build", &feature)) state.SkipWithError("open failed");
    db.Close();
  }
  state.counters["vertices"] = kColumns * kRows;
}
BENCHMARK(BM_OpenFromFeature)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_PickKeyPoint(benchmark::State& state) {
  BenchEditor& editor = Editor();
  if (!editor.opened) state.SkipWithError("open failed");
  std::mt19937 random(7);
  std::uniform_int_distribution<int> column(0, kColumns - 1);
  std::uniform_int_distribution<int> row(0, kRows - 1);
  int64_t found = 0;
  for (auto _ : state) {
    CVector3D out;
    const int id = editor.db.QueryPickedKeyPoint(out, GridPoint(column(random), row(random)),
                                                 kStep * 0.4);
    found += id >= 0 ? 1 : 0;
    benchmark::DoNotOptimize(id);
  }
  state.counters["found"] = benchmark::Counter(static_cast<double>(found) / state.iterations());
}
BENCHMARK(BM_PickKeyPoint)->Unit(benchmark::kMicrosecond);

void BM_ClosestKeyPoint(benchmark::State& state) {
  BenchEditor& editor = Editor();
  if (!editor.opened) state.SkipWithError("open failed");
  std::mt19937 random(11);
  std::uniform_int_distribution<int> column(5, kColumns - 6);
  std::uniform_int_distribution<int> row(5, kRows - 6);
  for (auto _ : state) {
    const CVector3D centre = GridPoint(column(random), row(random));
    EXTENT extent;
    extent.min_x = centre.X() - 5 * kStep;
    extent.min_y = centre.Y() - 5 * kStep;
    extent.max_x = centre.X() + 5 * kStep;
    extent.max_y = centre.Y() + 5 * kStep;
    CVector3D out;
    benchmark::DoNotOptimize(editor.db.QueryClosestKeyPoint(out, extent, centre));
  }
}
BENCHMARK(BM_ClosestKeyPoint)->Unit(benchmark::kMicrosecond);

// Extents of 40 x 25 grid cells (about 1000 vertices) at random places; the argument is the limit.
void BM_TravelViaExtent(benchmark::State& state) {
  BenchEditor& editor = Editor();
  if (!editor.opened) state.SkipWithError("open failed");
  const int limit = static_cast<int>(state.range(0));
  std::mt19937 random(13);
  std::uniform_int_distribution<int> column(0, kColumns - 41);
  std::uniform_int_distribution<int> row(0, kRows - 26);
  int64_t visited = 0;
  for (auto _ : state) {
    const CVector3D corner = GridPoint(column(random), row(random));
    EXTENT extent;
    extent.min_x = corner.X() - kStep / 2;
    extent.min_y = corner.Y() - kStep / 2;
    extent.max_x = corner.X() + 40 * kStep - kStep / 2;
    extent.max_y = corner.Y() + 25 * kStep - kStep / 2;
    CCountingVisitor visitor;
    editor.db.TravelViaExtent(extent, limit, visitor);
    visited += visitor.count;
  }
  state.counters["visited"] = benchmark::Counter(static_cast<double>(visited) / state.iterations());
  state.counters["points/s"] =
      benchmark::Counter(static_cast<double>(visited), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TravelViaExtent)->Arg(0)->Arg(100)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
