// CSpatialiteDBDataModel geometry: storing and reading a feature's geometry, what SpatiaLite's SQL
// sees of it, the replacement of the row, bounding boxes, layer extents, and refused uuids.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <cfloat>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "FeatureOption.h"
#include "LayerOption.h"
#include "SpatialiteDBDataModel.h"
#include "SpatialiteHandler.h"
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
    layer_ = AddLayer(LAYER_TYPE_ANNOTATION);
    ASSERT_FALSE(layer_.empty());
  }

  std::string AddLayer(E_LAYER_TYPE type) {
    CLayerOption layer;
    layer.SetParentUUID(db_.RootUUID(), false);
    layer.SetType(type);
    layer.SetName("layer");
    return model_.InsertLayer(layer) ? layer.GetUUID() : std::string();
  }

  // A feature row without geometry under `parent`.
  std::string AddFeature(const std::string& parent, const std::string& name = "feature") {
    CFeatureOption feature;
    feature.SetParentUUID(parent);
    feature.SetType(ANNOTATION_TYPE_POLYGON);
    feature.SetName(name);
    return model_.InsertFeature(feature, nullptr) ? feature.GetUUID() : std::string();
  }

  std::string AddFeatureWith(const std::string& parent, E_GEOMETRY_DATA_TYPE kind,
                             const std::vector<CGeometryData>& parts) {
    const std::string uuid = AddFeature(parent);
    CAnnotationFeature geometry(kind);
    geometry.SetGeometryData(parts);
    EXPECT_TRUE(model_.ModifyGeometryData(uuid, &geometry));
    return uuid;
  }

  // The first column of `sql` on the model's own connection, as text.
  std::string Sql(const std::string& sql) {
    CSqlStatement stmt(model_.GetConnection(), sql, "[test]:");
    return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string("<no row>");
  }

  std::string Scalar(const std::string& sql) { return QueryScalar(db_.Path(), sql); }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  std::string layer_;
};

}  // namespace

// --- Storing and reading ---

TEST_F(GeometryModelTest, StoredGeometryReadsBack) {
  const std::vector<CGeometryData> points = {Part({{1, 2, 3}}), Part({{4, 5, 6}}),
                                             Part({{7, 8, 9}})};
  const std::string uuid = AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_MULTIPOINT, points);

  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTIPOINT, read.GetGeometryType());
  ASSERT_EQ(3, read.GetPartCount());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(points[static_cast<size_t>(i)], read.GetPart(i));

  const EXTENT box = model_.QueryBoundingBox(uuid);
  EXPECT_EQ(1.0, box.min_x);
  EXPECT_EQ(2.0, box.min_y);
  EXPECT_EQ(7.0, box.max_x);
  EXPECT_EQ(8.0, box.max_y);

  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, nullptr));
  EXPECT_EQ(1u, capture.Lines().size());
}

TEST_F(GeometryModelTest, SpatialiteSqlReadsWhatTheModelWrote) {
  const std::string closed = AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_POLYGON,
                                            {Square(116.5, 39.5, 0.25, 30)});
  const std::string open = AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_POLYGON,
                                          {Part({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}})});
  const std::string where = " FROM shape WHERE uuid = '";

  // On the model's own connection.
  EXPECT_EQ("POLYGON Z((116.5 39.5 30, 116.75 39.5 30, 116.75 39.75 30, 116.5 39.75 30, "
            "116.5 39.5 30))",
            Sql("SELECT AsText(geom)" + where + closed + "'"));
  EXPECT_EQ(116.5, std::stod(Sql("SELECT MbrMinX(geom)" + where + closed + "'")));
  EXPECT_EQ(39.75, std::stod(Sql("SELECT MbrMaxY(geom)" + where + closed + "'")));
  EXPECT_EQ("1", Sql("SELECT ST_IsValid(geom)" + where + closed + "'"));
  EXPECT_EQ("4326", Sql("SELECT SRID(geom)" + where + closed + "'"));
  EXPECT_EQ("XYZ", Sql("SELECT CoordDimension(geom)" + where + closed + "'"));
  EXPECT_EQ("POLYGON Z", Sql("SELECT GeometryType(geom)" + where + closed + "'"));
  // The open ring is stored open: SpatiaLite shows it so and does not call it valid.
  EXPECT_EQ("POLYGON Z((0 0 1, 1 0 2, 1 1 3))", Sql("SELECT AsText(geom)" + where + open + "'"));
  EXPECT_EQ("0", Sql("SELECT ST_IsValid(geom)" + where + open + "'"));
  // The spatial index holds the new row.
  EXPECT_EQ("116.5", Sql("SELECT xmin FROM idx_shape_geom WHERE pkid = (SELECT ROWID" + where +
                         closed + "')"));

  // From the file, on a connection of its own (closed after its statement is finalized).
  struct ClosingHandler {
    ~ClosingHandler() { handler.Close(); }
    CSpatialiteHandler handler;
  } other;
  ASSERT_TRUE(other.handler.Open(db_.Path(), true));
  CSqlStatement stmt(other.handler.GetDB(), "SELECT AsText(geom), ST_Area(geom)" + where + closed + "'",
                     "[test]:");
  ASSERT_TRUE(stmt.StepRow());
  EXPECT_EQ(0, stmt.ColumnText(0, false).find("POLYGON Z((116.5 39.5 30"));
  EXPECT_DOUBLE_EQ(0.0625, stmt.ColumnDouble(1));
}

TEST_F(GeometryModelTest, FeaturesWithoutGeometryReadAsNothing) {
  const std::string bare = AddFeature(layer_);
  CAnnotationFeature read(GEOMETRY_DATA_TYPE_LINESTRING);
  EXPECT_FALSE(model_.QueryGeometryData(bare, &read));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_LINESTRING, read.GetGeometryType());
  EXPECT_FALSE(model_.QueryGeometryData("no such feature", &read));
  const EXTENT box = model_.QueryBoundingBox(bare);
  EXPECT_EQ(0.0, box.min_x);
  EXPECT_EQ(0.0, box.max_y);

  // Storing nothing (no feature, no parts, an unknown kind) leaves the row with a NULL geometry.
  CAnnotationFeature empty(GEOMETRY_DATA_TYPE_POLYGON);
  CAnnotationFeature unknownKind(static_cast<E_GEOMETRY_DATA_TYPE>(9));
  unknownKind.AddPart(Square(0, 0, 1, 0));
  CAnnotationFeature onlyEmptyParts(GEOMETRY_DATA_TYPE_MULTIPOINT);
  onlyEmptyParts.AddPart(CGeometryData());
  for (IAnnotationFeature* nothing :
       std::vector<IAnnotationFeature*>{nullptr, &empty, &unknownKind, &onlyEmptyParts}) {
    const std::string uuid = AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_POINT, {Part({{1, 1, 1}})});
    EXPECT_TRUE(model_.ModifyGeometryData(uuid, nothing));
    EXPECT_EQ("null", Scalar("SELECT typeof(geom) FROM shape WHERE uuid = '" + uuid + "'"));
    EXPECT_FALSE(model_.QueryGeometryData(uuid, &read));
  }
}

TEST_F(GeometryModelTest, CorruptStoredBlobsAreUnreadableNotFatal) {
  const std::string uuid =
      AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_LINESTRING, {Part({{0, 0, 0}, {5, 5, 5}})});
  // SpatiaLite's own triggers would hand the blob to gaia; a damaged file has no such guard.
  sqlite3* db = model_.GetConnection();
  CSqlStatement triggers(db,
                         "SELECT name FROM sqlite_master WHERE type = 'trigger' AND "
                         "tbl_name = 'shape'",
                         "[test]:");
  std::vector<std::string> names;
  while (triggers.StepRow()) names.push_back(triggers.ColumnText(0, false));
  triggers.Finalize();
  for (const std::string& name : names) ASSERT_TRUE(ExecSql(db, "DROP TRIGGER " + name, "[test]:"));
  // The vertex count (bytes 43..46) becomes -1.
  std::vector<unsigned char> blob;
  {
    CSqlStatement read(db, "SELECT geom FROM shape WHERE uuid = '" + uuid + "'", "[test]:");
    ASSERT_TRUE(read.StepRow());
    const auto* bytes = static_cast<const unsigned char*>(read.ColumnBlob(0));
    blob.assign(bytes, bytes + read.ColumnBytes(0));
  }
  ASSERT_GT(blob.size(), 47u);
  for (size_t i = 43; i < 47; ++i) blob[i] = 0xFF;
  CSqlStatement write(db, "UPDATE shape SET geom = ? WHERE uuid = '" + uuid + "'", "[test]:");
  write.BindBlob(1, blob.data(), static_cast<int>(blob.size()));
  ASSERT_TRUE(write.StepDone());
  write.Finalize();
  ASSERT_EQ("blob", Scalar("SELECT typeof(geom) FROM shape WHERE uuid = '" + uuid + "'"));

  CZuLogCapture capture;
  CAnnotationFeature read;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(0, read.GetPartCount());
  EXPECT_TRUE(capture.Contains("[QueryGeometryData]:"));
  const EXTENT box = model_.QueryBoundingBox(uuid);
  EXPECT_EQ(0.0, box.min_x);
  EXPECT_EQ(0.0, box.max_x);
  EXPECT_TRUE(model_.DirtyLayerBoundingBox(layer_));
}

// --- Replacing the row ---

TEST_F(GeometryModelTest, ModifyReplacesTheRowAndKeepsItsNodeData) {
  const std::string name = Utf8ToLocal("北京 标注");
  const std::string uuid = AddFeature(layer_, name);
  AddFeature(layer_);  // a later row, so that the replacement cannot reuse the highest row id
  const std::string where = " FROM shape WHERE uuid = '" + uuid + "'";
  sqlite3* db = model_.GetConnection();
  ASSERT_TRUE(ExecSql(db,
                      "UPDATE shape SET createtime = '2000-01-01 00:00:00.000', "
                      "modifytime = '2000-01-02 00:00:00.000', index_id = 's:77;e:5'" +
                          std::string(" WHERE uuid = '") + uuid + "'",
                      "[test]:"));
  const std::string rowBefore = Scalar("SELECT ROWID" + where);
  const std::string orderBefore = Scalar("SELECT COUNT(*) FROM shape_order WHERE uuid = '" +
                                         uuid + "'");
  const std::string statusBefore = Scalar("SELECT COUNT(*) FROM shape_status WHERE puuid = '" +
                                          uuid + "'");

  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_LINESTRING);
  geometry.AddPart(Part({{1, 1, 1}, {2, 2, 2}}));
  ASSERT_TRUE(model_.ModifyGeometryData(uuid, &geometry));

  EXPECT_NE(rowBefore, Scalar("SELECT ROWID" + where));
  EXPECT_EQ(layer_, Scalar("SELECT puuid" + where));
  EXPECT_EQ(std::to_string(ANNOTATION_TYPE_POLYGON), Scalar("SELECT type" + where));
  EXPECT_EQ("北京 标注", Scalar("SELECT name" + where));
  EXPECT_EQ("s:77;e:5", Scalar("SELECT index_id" + where));
  // The times are the column defaults of the new row.
  EXPECT_NE("2000-01-01 00:00:00.000", Scalar("SELECT createtime" + where));
  EXPECT_NE("2000-01-02 00:00:00.000", Scalar("SELECT modifytime" + where));
  EXPECT_EQ(Scalar("SELECT strftime('%Y', 'now')"), Scalar("SELECT substr(createtime, 1, 4)" +
                                                            where));
  EXPECT_EQ(orderBefore, Scalar("SELECT COUNT(*) FROM shape_order WHERE uuid = '" + uuid + "'"));
  EXPECT_EQ(statusBefore,
            Scalar("SELECT COUNT(*) FROM shape_status WHERE puuid = '" + uuid + "'"));
  EXPECT_EQ("1", Scalar("SELECT COUNT(*)" + where));
  // Replacing again works on the new row.
  geometry.ClearParts();
  geometry.AddPart(Part({{3, 3, 3}, {4, 4, 4}}));
  ASSERT_TRUE(model_.ModifyGeometryData(uuid, &geometry));
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(geometry.GetPart(0), read.GetPart(0));
}

TEST_F(GeometryModelTest, ModifyOfAMissingFeatureWarnsAndDeletesNothing) {
  AddFeature(layer_);
  const std::string before = Scalar("SELECT COUNT(*) FROM shape");
  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_POINT);
  geometry.AddPart(Part({{1, 2, 3}}));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyGeometryData("missing", &geometry));
  EXPECT_FALSE(model_.ModifyGeometryData("", &geometry));
  EXPECT_EQ(2, capture.Count("[CSpatialiteDBDataModel::ModifyGeometryData]: " +
                             Utf8ToLocal("UUID为空")));
  EXPECT_EQ(2u, capture.Lines().size());
  EXPECT_EQ(before, Scalar("SELECT COUNT(*) FROM shape"));
}

// --- Layer extents ---

TEST_F(GeometryModelTest, DirtyLayerBoundingBoxWritesTheUnionOfItsFeatures) {
  AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_POLYGON, {Square(116.25, 39.5, 0.5, 10)});
  AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_LINESTRING, {Part({{117, 40, 0}, {118.125, 41, 0}})});
  const std::string other = AddLayer(LAYER_TYPE_ANNOTATION);
  AddFeatureWith(other, GEOMETRY_DATA_TYPE_POINT, {Part({{-50, -50, 0}})});

  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  const std::string where = " FROM layer WHERE uuid = '" + layer_ + "'";
  EXPECT_EQ(116.25, std::stod(Scalar("SELECT min_x" + where)));
  EXPECT_EQ(39.5, std::stod(Scalar("SELECT min_y" + where)));
  EXPECT_EQ(118.125, std::stod(Scalar("SELECT max_x" + where)));
  EXPECT_EQ(41.0, std::stod(Scalar("SELECT max_y" + where)));

  // A feature without geometry counts with the all-zero box.
  AddFeature(layer_);
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  EXPECT_EQ(0.0, std::stod(Scalar("SELECT min_x" + where)));
  EXPECT_EQ(0.0, std::stod(Scalar("SELECT min_y" + where)));
  EXPECT_EQ(118.125, std::stod(Scalar("SELECT max_x" + where)));
}

TEST_F(GeometryModelTest, DirtyLayerBoundingBoxOfAnEmptyLayerIsHugeAndInverted) {
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  const std::string where = " FROM layer WHERE uuid = '" + layer_ + "'";
  EXPECT_EQ("real", Scalar("SELECT typeof(min_x)" + where));
  // DBL_MAX written with 14 significant digits.
  EXPECT_EQ(1.7976931348623e+308, std::stod(Scalar("SELECT min_x" + where)));
  EXPECT_EQ(1.7976931348623e+308, std::stod(Scalar("SELECT min_y" + where)));
  EXPECT_EQ(-1.7976931348623e+308, std::stod(Scalar("SELECT max_x" + where)));
  EXPECT_EQ(-1.7976931348623e+308, std::stod(Scalar("SELECT max_y" + where)));
  // A layer that does not exist is updated nowhere, which is no failure.
  EXPECT_TRUE(model_.DirtyLayerBoundingBox("no such layer"));
}

namespace {

// Boxes from elsewhere, to see that the layer extent asks through the interface.
class FixedBoxModel : public CSpatialiteDBDataModel {
 public:
  EXTENT QueryBoundingBox(const std::string&) override {
    ++calls;
    EXTENT box;
    box.min_x = -3;
    box.min_y = -2;
    box.max_x = 5;
    box.max_y = 7;
    return box;
  }
  int calls = 0;
};

}  // namespace

TEST_F(GeometryModelTest, DirtyLayerBoundingBoxAsksThroughTheInterface) {
  AddFeature(layer_);
  AddFeature(layer_);
  ASSERT_TRUE(model_.Uninstall());
  FixedBoxModel fixed;
  ASSERT_TRUE(fixed.Install(db_.Path()));
  ASSERT_TRUE(fixed.DirtyLayerBoundingBox(layer_));
  EXPECT_EQ(2, fixed.calls);
  EXPECT_EQ(-3.0, std::stod(Scalar("SELECT min_x FROM layer WHERE uuid = '" + layer_ + "'")));
  EXPECT_EQ(7.0, std::stod(Scalar("SELECT max_y FROM layer WHERE uuid = '" + layer_ + "'")));
}

// --- Refused input ---

TEST_F(GeometryModelTest, UuidsWithQuotesAreRefusedBeforeAnySql) {
  const std::string uuid =
      AddFeatureWith(layer_, GEOMETRY_DATA_TYPE_POINT, {Part({{10, 20, 30}})});
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer_));
  const std::string shapes = Scalar("SELECT COUNT(*) FROM shape");
  const std::string extent = Scalar("SELECT min_x FROM layer WHERE uuid = '" + layer_ + "'");
  const std::string injected = "x' OR '1'='1";
  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_POINT);
  geometry.AddPart(Part({{1, 1, 1}}));

  struct Case {
    const char* tag;
    std::function<bool()> call;
  };
  const std::vector<Case> cases = {
      {"[QueryGeometryData]:", [&] { return model_.QueryGeometryData(injected, &geometry); }},
      {"[QueryBoundingBox]:",
       [&] { return model_.QueryBoundingBox(injected).max_x != 0.0; }},
      {"[CSpatialiteDBDataModel::ModifyGeometryData]: ",
       [&] { return model_.ModifyGeometryData(injected, &geometry); }},
      {"[CSpatialiteDBDataModel::ModifyGeometryData]: ",
       [&] { return model_.ModifyGeometryData(uuid + "'--", &geometry); }},
      {"[DirtyLayerBoundingBox_Query]:", [&] { return model_.DirtyLayerBoundingBox(injected); }},
      {"[DirtyLayerBoundingBox_Query]:",
       [&] { return model_.DirtyLayerBoundingBox(std::string("x\0y", 3)); }},
  };
  for (const Case& c : cases) {
    CZuLogCapture capture;
    EXPECT_FALSE(c.call()) << c.tag;
    ASSERT_EQ(1u, capture.Lines().size()) << c.tag;
    EXPECT_EQ(0u, capture.Lines()[0].find(c.tag)) << capture.Lines()[0];
  }
  EXPECT_EQ(shapes, Scalar("SELECT COUNT(*) FROM shape"));
  EXPECT_EQ(extent, Scalar("SELECT min_x FROM layer WHERE uuid = '" + layer_ + "'"));
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(Part({{10, 20, 30}}), read.GetPart(0));
}

TEST(GeometryModelClosedTest, EveryOperationFailsWhileNotInstalled) {
  CSpatialiteDBDataModel model;
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
  feature.AddPart(Part({{1, 2, 3}}));
  CZuLogCapture capture;
  EXPECT_FALSE(model.QueryGeometryData("a", &feature));
  EXPECT_EQ(0.0, model.QueryBoundingBox("a").max_x);
  EXPECT_FALSE(model.ModifyGeometryData("a", &feature));
  EXPECT_FALSE(model.DirtyLayerBoundingBox("a"));
  EXPECT_EQ(1, feature.GetPartCount());
  EXPECT_TRUE(capture.Lines().empty());
}
