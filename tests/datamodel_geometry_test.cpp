// CSpatialiteDBDataModel geometry: storing and reading a feature's geometry, what SpatiaLite's SQL
// sees of it, the replacement of the row, bounding boxes, layer extents and refused uuids.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <functional>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "FeatureOption.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

CGeometryData Part(std::initializer_list<CVector3D> vertices) {
  return CGeometryData(std::vector<CVector3D>(vertices));
}

CGeometryData Square(double x, double y, double side, double z) {
  return Part({{x, y, z}, {x + side, y, z}, {x + side, y + side, z}, {x, y + side, z}, {x, y, z}});
}

class GeometryModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    model_.Initialize("geometry");
    ASSERT_TRUE(model_.Install(db_.Path()));
    // Let the calculator's first pass finish, so that its log lines stay out of the checks.
    ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
    layer_ = AddLayer();
  }

  std::string AddLayer() {
    CLayerOption layer;
    layer.SetParentUUID(db_.RootUUID(), false);
    layer.SetName("layer");
    EXPECT_TRUE(model_.InsertLayer(layer));
    return layer.GetUUID();
  }

  // A feature row under `parent`; with parts, its geometry is stored too.
  std::string AddFeature(const std::string& parent, int kind = 0,
                         const std::vector<CGeometryData>& parts = {},
                         const std::string& name = "feature") {
    CFeatureOption option;
    option.SetParentUUID(parent);
    option.SetType(ANNOTATION_TYPE_POLYGON);
    option.SetName(name);
    EXPECT_TRUE(model_.InsertFeature(option, nullptr));
    if (!parts.empty()) {
      CAnnotationFeature geometry(static_cast<E_GEOMETRY_DATA_TYPE>(kind));
      geometry.SetGeometryData(parts);
      EXPECT_TRUE(model_.ModifyGeometryData(option.GetUUID(), &geometry));
    }
    return option.GetUUID();
  }

  // The first column of `sql` as text, on the model's own connection (SpatiaLite loaded).
  std::string Sql(const std::string& sql) {
    CSqlStatement stmt(model_.GetConnection(), sql, "[test]:");
    return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string("<no row>");
  }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  std::string layer_;
};

}  // namespace

TEST_F(GeometryModelTest, StoredGeometryReadsBackWithItsBox) {
  const std::vector<CGeometryData> points = {Part({{1, 2, 3}}), Part({{4, 5, 6}}),
                                             Part({{7, 8, 9}})};
  const std::string uuid = AddFeature(layer_, GEOMETRY_DATA_TYPE_MULTIPOINT, points);
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTIPOINT, read.GetGeometryType());
  ASSERT_EQ(3, read.GetPartCount());
  EXPECT_EQ(points[2], read.GetPart(2));
  const EXTENT box = model_.QueryBoundingBox(uuid);
  EXPECT_EQ((std::vector<double>{1, 2, 7, 8}),
            (std::vector<double>{box.min_x, box.min_y, box.max_x, box.max_y}));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, nullptr));
  EXPECT_EQ(1u, capture.Lines().size());
}

TEST_F(GeometryModelTest, SpatialiteSqlReadsWhatTheModelWrote) {
  const std::string closed = AddFeature(layer_, 3, {Square(116.5, 39.5, 0.25, 30)});
  const std::string open = AddFeature(layer_, 3, {Part({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}})});
  const std::string of = " FROM shape WHERE uuid = '";
  EXPECT_EQ("POLYGON Z((116.5 39.5 30, 116.75 39.5 30, 116.75 39.75 30, 116.5 39.75 30, "
            "116.5 39.5 30))",
            Sql("SELECT AsText(geom)" + of + closed + "'"));
  EXPECT_EQ("1 4326 XYZ POLYGON Z",
            Sql("SELECT ST_IsValid(geom) || ' ' || SRID(geom) || ' ' || CoordDimension(geom) || "
                "' ' || GeometryType(geom)" + of + closed + "'"));
  EXPECT_EQ("116.5", Sql("SELECT xmin FROM idx_shape_geom WHERE pkid = (SELECT ROWID" + of +
                         closed + "')"));
  // The open ring is stored open; SpatiaLite reads it but does not call it valid.
  EXPECT_EQ("POLYGON Z((0 0 1, 1 0 2, 1 1 3)) 0",
            Sql("SELECT AsText(geom) || ' ' || ST_IsValid(geom)" + of + open + "'"));
}

TEST_F(GeometryModelTest, NothingStoredReadsAsNothing) {
  CAnnotationFeature read(GEOMETRY_DATA_TYPE_LINESTRING);
  EXPECT_FALSE(model_.QueryGeometryData(AddFeature(layer_), &read));
  EXPECT_FALSE(model_.QueryGeometryData("no such feature", &read));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_LINESTRING, read.GetGeometryType());
  EXPECT_EQ(0.0, model_.QueryBoundingBox(AddFeature(layer_)).max_x);
  // No feature, only empty parts or an unknown kind store a NULL geometry.
  CAnnotationFeature emptyParts(GEOMETRY_DATA_TYPE_MULTIPOINT);
  emptyParts.AddPart(CGeometryData());
  CAnnotationFeature unknownKind(static_cast<E_GEOMETRY_DATA_TYPE>(9));
  unknownKind.AddPart(Square(0, 0, 1, 0));
  for (IAnnotationFeature* nothing :
       std::vector<IAnnotationFeature*>{nullptr, &emptyParts, &unknownKind}) {
    const std::string uuid = AddFeature(layer_, 1, {Part({{1, 1, 1}})});
    EXPECT_TRUE(model_.ModifyGeometryData(uuid, nothing));
    EXPECT_EQ("null", Sql("SELECT typeof(geom) FROM shape WHERE uuid = '" + uuid + "'"));
  }
}

TEST_F(GeometryModelTest, CorruptStoredBlobIsUnreadableNotFatal) {
  const std::string uuid = AddFeature(layer_, 2, {Part({{0, 0, 0}, {5, 5, 5}})});
  // A damaged file has no SpatiaLite triggers in the way (they would hand the blob to gaia).
  sqlite3* db = model_.GetConnection();
  std::vector<std::string> triggers;
  std::vector<unsigned char> blob;
  {
    CSqlStatement list(db, "SELECT name FROM sqlite_master WHERE type = 'trigger'", "[test]:");
    while (list.StepRow()) triggers.push_back(list.ColumnText(0, false));
    CSqlStatement read(db, "SELECT geom FROM shape WHERE uuid = '" + uuid + "'", "[test]:");
    ASSERT_TRUE(read.StepRow());
    const auto* bytes = static_cast<const unsigned char*>(read.ColumnBlob(0));
    blob.assign(bytes, bytes + read.ColumnBytes(0));
  }
  for (const std::string& trigger : triggers) ExecSql(db, "DROP TRIGGER " + trigger, "[test]:");
  ASSERT_GT(blob.size(), 47u);
  for (size_t i = 43; i < 47; ++i) blob[i] = 0xFF;  // the vertex count becomes -1
  {
    CSqlStatement write(db, "UPDATE shape SET geom = ? WHERE uuid = '" + uuid + "'", "[test]:");
    write.BindBlob(1, blob.data(), static_cast<int>(blob.size()));
    ASSERT_TRUE(write.StepDone());
  }
  CZuLogCapture capture;
  CAnnotationFeature read;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(0, read.GetPartCount());
  EXPECT_TRUE(capture.Contains("[QueryGeometryData]:"));
  EXPECT_EQ(0.0, model_.QueryBoundingBox(uuid).max_x);
  EXPECT_TRUE(model_.DirtyLayerBoundingBox(layer_));
}

TEST_F(GeometryModelTest, ModifyReplacesTheRowAndKeepsItsNodeData) {
  const std::string uuid = AddFeature(layer_, 0, {}, Utf8ToLocal("北京 标注"));
  AddFeature(layer_);  // a later row, so that the replacement cannot reuse the highest row id
  const std::string of = " FROM shape WHERE uuid = '" + uuid + "'";
  ASSERT_TRUE(ExecSql(model_.GetConnection(),
                      "UPDATE shape SET createtime = '2000-01-01', modifytime = '2000-01-02', "
                      "index_id = 's:77;e:5'" + std::string(" WHERE uuid = '") + uuid + "'",
                      "[test]:"));
  const std::string before = Sql("SELECT ROWID" + of);
  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_LINESTRING);
  geometry.AddPart(Part({{1, 1, 1}, {2, 2, 2}}));
  ASSERT_TRUE(model_.ModifyGeometryData(uuid, &geometry));
  EXPECT_NE(before, Sql("SELECT ROWID" + of));
  EXPECT_EQ(layer_ + "|2|北京 标注|s:77;e:5",
            Sql("SELECT puuid || '|' || type || '|' || name || '|' || index_id" + of));
  // The times are the column defaults of the new row; order and status rows stay.
  EXPECT_EQ(Sql("SELECT strftime('%Y', 'now')"), Sql("SELECT substr(modifytime, 1, 4)" + of));
  EXPECT_EQ("11", Sql("SELECT (SELECT COUNT(*) FROM shape_order WHERE uuid = '" + uuid +
                      "') || (SELECT COUNT(*) FROM shape_status WHERE puuid = '" + uuid + "')"));
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(geometry.GetPart(0), read.GetPart(0));

  // A missing feature warns and deletes nothing.
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyGeometryData("missing", &geometry));
  EXPECT_FALSE(model_.ModifyGeometryData("", &geometry));
  EXPECT_EQ(2, capture.Count("[CSpatialiteDBDataModel::ModifyGeometryData]: " +
                             Utf8ToLocal("UUID为空")));
  EXPECT_EQ(2u, capture.Lines().size());
  EXPECT_EQ("2", Sql("SELECT COUNT(*) FROM shape"));
}

TEST_F(GeometryModelTest, DirtyLayerBoundingBoxWritesTheUnionOfItsFeatures) {
  const std::string box = "SELECT min_x || ' ' || min_y || ' ' || max_x || ' ' || max_y FROM "
                          "layer WHERE uuid = '" + layer_ + "'";
  // Without features: DBL_MAX written with 14 significant digits, inverted.
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  EXPECT_EQ("real", Sql("SELECT typeof(min_x) FROM layer WHERE uuid = '" + layer_ + "'"));
  EXPECT_EQ("1.7976931348623e+308 1.7976931348623e+308 -1.7976931348623e+308 "
            "-1.7976931348623e+308",
            Sql(box));
  AddFeature(layer_, 3, {Square(116.25, 39.5, 0.5, 10)});
  AddFeature(layer_, 2, {Part({{117, 40, 0}, {118.125, 41, 0}})});
  AddFeature(AddLayer(), 1, {Part({{-50, -50, 0}})});
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  EXPECT_EQ("116.25 39.5 118.125 41.0", Sql(box));
  // A feature without geometry counts with the all-zero box.
  AddFeature(layer_);
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  EXPECT_EQ("0.0 0.0 118.125 41.0", Sql(box));
  // A layer that does not exist is updated nowhere, which is no failure.
  EXPECT_TRUE(model_.DirtyLayerBoundingBox("no such layer"));
}

TEST_F(GeometryModelTest, UuidsWithQuotesAreRefusedBeforeAnySql) {
  const std::string uuid = AddFeature(layer_, 1, {Part({{10, 20, 30}})});
  const std::string injected = uuid + "' OR '1'='1";
  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_POINT);
  geometry.AddPart(Part({{1, 1, 1}}));
  const struct {
    const char* tag;
    std::function<bool()> call;
  } cases[] = {
      {"[QueryGeometryData]:", [&] { return model_.QueryGeometryData(injected, &geometry); }},
      {"[QueryBoundingBox]:", [&] { return model_.QueryBoundingBox(injected).max_x != 0.0; }},
      {"[CSpatialiteDBDataModel::ModifyGeometryData]: ",
       [&] { return model_.ModifyGeometryData(injected, &geometry); }},
      {"[DirtyLayerBoundingBox_Query]:",
       [&] { return model_.DirtyLayerBoundingBox(std::string("x\0y", 3)); }},
  };
  for (const auto& c : cases) {
    CZuLogCapture capture;
    EXPECT_FALSE(c.call()) << c.tag;
    ASSERT_EQ(1u, capture.Lines().size()) << c.tag;
    EXPECT_EQ(0u, capture.Lines()[0].find(c.tag)) << capture.Lines()[0];
  }
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(Part({{10, 20, 30}}), read.GetPart(0));
}
