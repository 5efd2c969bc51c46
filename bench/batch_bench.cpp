// Batch tools against floors measured in the same run.
//
//   batch_bench [features] [--points-only]   (default 200000)
//
// --points-only runs only the importer of points against its floor, leaving out the lines and the
// deleter's floor, which deletes half the features one by one: the way to measure the importer at
// a million features in minutes.
//
// Importer: points with five attribute fields and a style each, and then lines of 20 vertices,
// imported through CFeatureBatchImporter, against a minimal writer of the same rows with the same
// prepared statements, all values computed in advance, in one transaction. SpatiaLite's row-by-row
// R*Tree triggers dominate the floor, so the ratio shows the importer's own overhead.
// Deleter: a layer deleted by BatchDeleteLayer against the same layer deleted feature by feature.
// Copier: a layer copied to another folder, against the importer writing the same features.
#include <sqlite3.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "AnnotationLayerNS.h"
#include "AnnotationSchema.h"
#include "FeatureBatchImporter.h"
#include "FeaturePenStyle.h"
#include "FolderOption.h"
#include "FeatureStyleSet.h"
#include "GeometryBlob.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "Stopwatch.h"
#include "StyleJson.h"
#include "TempDir.h"
#include "ZuLog.h"

namespace {

long PeakMemoryKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// A feature of the benchmark: a point, or a line of 20 vertices, five fields, a pen.
std::unique_ptr<CAnnotationFeature> MakeFeature(int i, bool line) {
  auto feature = std::make_unique<CAnnotationFeature>(line ? GEOMETRY_DATA_TYPE_LINESTRING
                                                           : GEOMETRY_DATA_TYPE_POINT);
  CGeometryData part;
  const double x = (i % 3600) * 0.1 - 180, y = (i / 3600 % 1700) * 0.1 - 85;
  for (int v = 0; v < (line ? 20 : 1); ++v) part.PushBack(CVector3D(x + v * 0.001, y, v));
  feature->AddPart(part);
  feature->SetFieldValue("name", QString("feature %1").arg(i));
  feature->SetFieldValue("rank", i % 7);
  feature->SetFieldValue("height", i * 0.5);
  feature->SetFieldValue("visible", i % 2 == 0);
  feature->SetFieldValue("code", qlonglong(i) * 1000);
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetWidth(2);
  feature->GetStyleSet()->PushBack(std::move(pen));
  return feature;
}

struct Database {
  CTempDir dir;
  std::string path;
  std::string root;
  CSpatialiteDBDataModel model;
  explicit Database(const std::string& name) : path(dir.File(name)) {
    AnnotationLayerNS::CreateAnnotationDatabase(path, &root);
    model.Install(path);
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
  }
};

double ImportThroughImporter(Database& db, int count, bool line) {
  CAnnotationGroup group("bench");
  CFeatureBatchImporter importer(&db.model, db.root);
  CStopwatch watch;
  importer.BeginImport();
  importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
  for (int i = 0; i < count; ++i) {
    std::unique_ptr<CAnnotationFeature> feature = MakeFeature(i, line);
    feature->SetGroup(&group);
    importer.InsertFeature(feature.get());
  }
  importer.EndImport();
  return watch.ElapsedMs();
}

// The same rows with values prepared beforehand: uuids, field texts, style JSON and blobs.
double ImportFloor(Database& db, int count, bool line) {
  struct Row {
    std::string uuid, json;
    std::vector<std::string> values;
    unsigned char* blob;
    int size;
  };
  const char* names[] = {"name", "rank", "height", "visible", "code"};
  const int types[] = {7, 3, 6, 1, 4};
  std::vector<Row> rows(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    std::unique_ptr<CAnnotationFeature> feature = MakeFeature(i, line);
    Row& row = rows[static_cast<size_t>(i)];
    row.uuid = AnnotationLayerNS::ZuGenerateUUID();
    row.json = AnnotationLayerNS::ToJsonStyle(feature->GetStyleSet());
    for (int f = 0; f < 5; ++f) row.values.push_back(feature->GetFieldValue(f).toString().toStdString());
    row.blob = AnnotationLayerNS::ConvertFeatureToWkbGeom(row.size, feature.get());
  }
  sqlite3* conn = db.model.GetConnection();
  CStopwatch watch;
  sqlite3_exec(conn, "BEGIN", nullptr, nullptr, nullptr);
  const std::string layer = AnnotationLayerNS::ZuGenerateUUID();
  sqlite3_exec(conn, ("INSERT INTO layer(uuid, folder_puuid, name) VALUES('" + layer + "', '" +
                      db.root + "', 'floor')").c_str(),
               nullptr, nullptr, nullptr);
  CSqlStatement status(conn, "INSERT INTO 'main'.'shape_status'('puuid', 'type', 'value', 'data') VALUES(?, 1, ?, NULL)", "");
  CSqlStatement property(conn, "INSERT INTO 'main'.'shape_property'('puuid', 'field_type', 'field_class', 'field_name', 'value') VALUES (?, ?, ?, ?, ?)", "");
  CSqlStatement style(conn, "INSERT INTO 'main'.'shape_style' ('puuid', 'format', 'content') VALUES (?, ?, ?)", "");
  CSqlStatement shape(conn, "INSERT INTO 'main'.'shape'('uuid', 'puuid', 'type', 'name', 'index_id', 'geom') VALUES(?, ?, ?, ?, ?, ?)", "");
  CSqlStatement order(conn, "INSERT INTO 'main'.'shape_order'('uuid', 'left_shape_uuid', 'left_layer_uuid', 'right_shape_uuid', 'right_layer_uuid', 'order_num') VALUES(?, ?, ?, ?, ?, ?)", "");
  for (int i = 0; i < count; ++i) {
    Row& row = rows[static_cast<size_t>(i)];
    status.BindText(1, row.uuid, false);
    status.BindInt(2, 1);
    status.StepDone();
    status.Reset();
    std::string index = "s:" + std::to_string(sqlite3_last_insert_rowid(conn)) + ";p:";
    for (int f = 0; f < 5; ++f) {
      property.BindText(1, row.uuid, false);
      property.BindInt(2, types[f]);
      property.BindText(3, "", false);
      property.BindText(4, names[f], false);
      property.BindText(5, row.values[static_cast<size_t>(f)], false);
      property.StepDone();
      property.Reset();
      index += (f ? "," : "") + std::to_string(sqlite3_last_insert_rowid(conn));
    }
    style.BindText(1, row.uuid, false);
    style.BindInt(2, 3);
    style.BindText(3, row.json, false);
    style.StepDone();
    style.Reset();
    shape.BindText(1, row.uuid, false);
    shape.BindText(2, layer, false);
    shape.BindInt(3, line ? 1 : 0);
    shape.BindText(4, row.values[0], false);
    shape.BindText(5, index, false);
    sqlite3_bind_blob(shape.Get(), 6, row.blob, row.size, free);
    shape.StepDone();
    shape.Reset();
    order.BindText(1, row.uuid, false);
    order.BindText(2, i > 0 ? rows[static_cast<size_t>(i - 1)].uuid : "", false);
    order.BindText(3, "", false);
    order.BindText(4, i + 1 < count ? rows[static_cast<size_t>(i + 1)].uuid : "", false);
    order.BindText(5, "", false);
    order.BindInt(6, i);
    order.StepDone();
    order.Reset();
  }
  sqlite3_exec(conn, "COMMIT", nullptr, nullptr, nullptr);
  return watch.ElapsedMs();
}

std::string LayerNamed(Database& db, const std::string& name) {
  CSqlStatement stmt(db.model.GetConnection(), "SELECT uuid FROM layer WHERE name = '" + name + "'", "");
  return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string();
}

void BenchImport(int count, bool line) {
  const char* kind = line ? "lines of 20 vertices" : "points";
  Database floorDb("floor.db");
  const double floorMs = ImportFloor(floorDb, count, line);
  Database importDb("import.db");
  const long memoryBefore = PeakMemoryKb();
  const double importMs = ImportThroughImporter(importDb, count, line);
  std::printf("import %d %s: importer %.0f ms (%.0f features/s), floor %.0f ms, ratio %.2f, "
              "peak memory %ld kB (+%ld kB during the import)\n",
              count, kind, importMs, count / (importMs / 1000), floorMs, importMs / floorMs,
              PeakMemoryKb(), PeakMemoryKb() - memoryBefore);
}

void BenchDeleteAndCopy(int count) {
  Database db("delete.db");
  const double importMs = ImportThroughImporter(db, count, false);
  const std::string layer = LayerNamed(db, "bench");
  CFolderOption target;
  target.SetParentUUID(db.root);
  target.SetName("target");
  db.model.InsertFolder(target);

  CStopwatch copyWatch;
  CLayerBatchCopier copier(&db.model);
  copier.BeginCopy(nullptr);
  copier.CopyNode(layer, target.GetUUID());
  copier.EndCopy();
  const double copyMs = copyWatch.ElapsedMs();
  std::printf("copy %d features: %.0f ms (%.0f features/s); the importer wrote them at %.0f "
              "features/s: ratio %.2f (aim >= 0.8)\n",
              count, copyMs, count / (copyMs / 1000), count / (importMs / 1000),
              importMs / copyMs);

  CStopwatch batchWatch;
  CLayerBatchDeleter deleter(&db.model);
  deleter.BeginDelete(true, nullptr);
  deleter.BatchDeleteLayer(layer);
  deleter.EndDelete();
  const double batchMs = batchWatch.ElapsedMs();

  // The copy, deleted one feature at a time in one transaction.
  std::vector<std::string> features;
  {
    CSqlStatement rows(db.model.GetConnection(),
                       "SELECT uuid FROM shape WHERE puuid IN (SELECT uuid FROM layer)", "");
    while (rows.StepRow()) features.push_back(rows.ColumnText(0, false));
  }
  CStopwatch singleWatch;
  db.model.BeginTransaction();
  for (const std::string& uuid : features) db.model.DeleteFeature(uuid);
  db.model.CommitTransaction();
  const double singleMs = singleWatch.ElapsedMs();
  std::printf("delete %d features: batch deleter %.0f ms, one by one %.0f ms, ratio %.2f "
              "(aim >= 10)\n",
              count, batchMs, singleMs, singleMs / batchMs);
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 200000;
  const bool pointsOnly = argc > 2 && std::string(argv[2]) == "--points-only";
  CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());
  BenchImport(count, false);
  if (pointsOnly) return 0;
  BenchImport(count, true);
  BenchDeleteAndCopy(count / 2);
  return 0;
}
