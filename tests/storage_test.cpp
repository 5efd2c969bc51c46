// The SpatiaLite connection handler, its statement helpers and their code page conversion, the
// refusals of the annotation database's creation, and geometry blobs: parts by kind and back, what
// SpatiaLite makes of empty and open input, blobs made by SpatiaLite's SQL, and truncated,
// corrupted and foreign blobs.
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <spatialite/gaiageo.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationSchema.h"
#include "GeometryBlob.h"
#include "GeometryParts.h"
#include "SpatialiteBlob.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using namespace AnnotationLayerInner;

namespace {

// A plain SQLite file without SpatiaLite metadata.
bool MakePlainSqliteFile(const std::string& path) {
  sqlite3* db = nullptr;
  bool ok = sqlite3_open(path.c_str(), &db) == SQLITE_OK &&
            sqlite3_exec(db, "CREATE TABLE t(a INTEGER)", nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(db);
  return ok;
}

bool TableExists(sqlite3* db, const std::string& table) {
  CSqlStatement stmt(db, "SELECT COUNT(*) FROM sqlite_master WHERE name = '" + table + "'", "");
  return stmt.StepRow() && stmt.ColumnInt(0) == 1;
}

}  // namespace

// Foreign files and directories are refused by the data model's install (datamodel_tree_test).
TEST(SpatialiteHandlerTest, OpeningMetadataAndTransactions) {
  CTempDir dir;
  CSpatialiteHandler handler;
  CZuLogCapture capture;
  const std::string missing = dir.File("missing.db");
  EXPECT_FALSE(handler.OpenNoSpatial(missing, true));
  EXPECT_EQ(1, capture.Count("[CSpatialiteHandler] OpenNoSpatial Error! "));
  EXPECT_FALSE(FileExists(missing));
  EXPECT_FALSE(handler.Transaction());  // closed

  // Metadata is added only read-write.
  const std::string plain = dir.File("plain.db");
  ASSERT_TRUE(MakePlainSqliteFile(plain));
  const std::string before = ReadFileBytes(plain);
  EXPECT_FALSE(handler.Open(plain, true));
  EXPECT_EQ(nullptr, handler.GetDB());
  EXPECT_EQ(before, ReadFileBytes(plain));
  ASSERT_TRUE(handler.Open(plain, false));
  EXPECT_TRUE(TableExists(handler.GetDB(), "spatial_ref_sys"));
  EXPECT_TRUE(handler.Close());
  EXPECT_TRUE(handler.Close());  // closing a closed handler

  // Open tests the SpatiaLite cache, not the connection, so it opens anew over a plain one.
  ASSERT_TRUE(handler.OpenNoSpatial(plain, false));
  sqlite3* noSpatial = handler.GetDB();
  EXPECT_TRUE(handler.OpenNoSpatial(plain, false));
  EXPECT_EQ(noSpatial, handler.GetDB());
  ASSERT_TRUE(handler.Open(plain, false));
  EXPECT_NE(noSpatial, handler.GetDB());
  sqlite3_close(noSpatial);
  EXPECT_TRUE(handler.Open(plain, false));  // already open

  EXPECT_TRUE(handler.SetForeignKeys(false));
  EXPECT_TRUE(handler.SetSynchronous(false));
  ASSERT_TRUE(handler.Transaction());
  capture.Clear();
  EXPECT_FALSE(handler.Transaction());  // no nesting
  EXPECT_EQ(1, capture.Count("[Transaction]:cannot start a transaction within a transaction"));
  EXPECT_TRUE(handler.Commit());
  EXPECT_FALSE(handler.Commit());
  EXPECT_EQ(1, capture.Count("[Commit]:"));
  EXPECT_FALSE(handler.RollBack());
  EXPECT_EQ(1, capture.Count("[RollBack]:"));
  handler.Close();
}

TEST(SpatialiteHandlerTest, GeometryColumnsAndStatementHelpers) {
  EXPECT_EQ("", CSpatialiteHandler::ColumnText(nullptr, true));
  EXPECT_EQ("\xd7\xa2", CSpatialiteHandler::ColumnText("\xe6\xb3\xa8", true));
  // A lone lead byte, bytes that are not UTF-8, characters outside code page 936: never cut.
  EXPECT_EQ("a", LocalToUtf8("a\x81").substr(0, 1));
  EXPECT_NE(std::string::npos, Utf8ToLocal("\xff\xfe x").find(" x"));
  EXPECT_EQ("?", Utf8ToLocal("\xf0\x9f\x98\x80").substr(0, 1));
  CSpatialiteHandler::ResetStatement(nullptr);  // ignored
  CTempDir dir;
  CSpatialiteHandler handler;
  ASSERT_TRUE(handler.OpenByCreate(dir.File("g.db")));
  sqlite3* db = handler.GetDB();
  ASSERT_TRUE(ExecSql(db, "CREATE TABLE roads(id INTEGER PRIMARY KEY, name TEXT)", ""));
  EXPECT_FALSE(handler.AddGeometryColumn("roads", "", 1002));
  EXPECT_TRUE(handler.AddGeometryColumn("roads", "geom", 1002));
  EXPECT_EQ("1002 4326", QueryScalar(dir.File("g.db"), "SELECT geometry_type || ' ' || srid FROM "
                                                       "geometry_columns"));
  EXPECT_TRUE(TableExists(db, "idx_roads_geom"));
  EXPECT_TRUE(handler.OpenByCreate(dir.File("other.db")));  // already open: stays on g.db
  CZuLogCapture capture;
  EXPECT_FALSE(handler.AddGeometryColumn("roads", "geom", 1002));  // exists: false, silent
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_FALSE(handler.AddGeometryColumn("no_such_table", "geom", 1001));
  EXPECT_EQ(1, capture.Count("[CSpatialiteHandler] AddGeometryColumn Error! "));

  CSqlStatement insert(db, "INSERT INTO roads(name) VALUES(?)", "[Test]:");
  {
    std::string name = "\xd7\xa2\xbc\xc7";  // local code page
    insert.BindText(1, name, true);
    name.assign("overwritten");  // SQLite copied the bytes
  }
  ASSERT_TRUE(insert.StepDone());
  CSqlStatement select(db, "SELECT name, hex(name) FROM roads", "[Test]:");
  ASSERT_TRUE(select.StepRow());
  EXPECT_EQ("E6B3A8E8AEB0", select.ColumnText(1, false));  // stored as UTF-8
  EXPECT_EQ("\xd7\xa2\xbc\xc7", select.ColumnText(0, true));

  CSqlStatement wkt(db, "SELECT GeomFromText('POINT Z(1 2 3)', 4326)", "");
  ASSERT_TRUE(wkt.StepRow());
  EXPECT_EQ("POINT Z(1 2 3)",
            CSpatialiteHandler::BlobToWkt(static_cast<const unsigned char*>(wkt.ColumnBlob(0)),
                                          wkt.ColumnBytes(0)));
  const unsigned char garbage[] = {1, 2, 3, 4, 5};
  EXPECT_EQ("", CSpatialiteHandler::BlobToWkt(garbage, 5));
  EXPECT_EQ("", CSpatialiteHandler::BlobToWkt(nullptr, 5));
  select.Finalize();
  wkt.Finalize();
  insert.Finalize();
  handler.Close();
}

TEST(AnnotationSchemaTest, RefusesExistingFilesAndLeavesThemAlone) {
  CTempDir dir;
  const std::string path = dir.File("keep.txt");
  ASSERT_TRUE(WriteFileBytes(path, "precious"));
  CZuLogCapture capture;
  EXPECT_FALSE(AnnotationLayerNS::CreateAnnotationDatabase(path));
  EXPECT_EQ(1, capture.Count("[CreateAnnotationDatabase]:"));
  EXPECT_EQ("precious", ReadFileBytes(path));
  EXPECT_FALSE(AnnotationLayerNS::CreateAnnotationDatabase(""));
  EXPECT_FALSE(AnnotationLayerNS::CreateAnnotationDatabase(dir.File("no/such/dir.db")));
  EXPECT_FALSE(FileExists(dir.File("no")));
}

using AnnotationLayerNS::ConvertFeatureToWkbGeom;
using AnnotationLayerNS::ConvertGeomDataToWkbGeom;
using AnnotationLayerNS::ConvertWkbGeomToFeature;
using AnnotationLayerNS::ConvertWkbGeomToGeomData;
using Bytes = std::vector<unsigned char>;
using Parts = std::vector<CGeometryData>;

namespace {

Bytes Write(const Parts& parts, int kind) {
  int size = -1;
  std::unique_ptr<unsigned char, void (*)(void*)> blob(
      ConvertGeomDataToWkbGeom(size, parts, static_cast<E_GEOMETRY_DATA_TYPE>(kind)), free);
  EXPECT_NE(nullptr, blob.get()) << "kind " << kind;
  return blob ? Bytes(blob.get(), blob.get() + size) : Bytes();
}

Parts Read(const Bytes& blob) {
  Parts parts;
  EXPECT_TRUE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size())));
  return parts;
}

// The class SpatiaLite reports for a blob; -1 when it cannot be read.
int ClassOf(const Bytes& blob) {
  auto geom = ParseSpatialiteBlob(blob.data(), static_cast<int>(blob.size()));
  return geom ? gaiaGeometryType(geom.get()) : -1;
}

// Writes a little-endian int32 (the blobs made here are little-endian).
void Poke32(Bytes& blob, size_t offset, uint32_t value) {
  for (int i = 0; i < 4; ++i) blob[offset + i] = static_cast<unsigned char>(value >> (8 * i));
}

const Parts kHeld = {Part({{-1, -1, -1}})};

// Reading fails and leaves the caller's parts and feature alone.
void ExpectUnreadable(const Bytes& blob, const std::string& what) {
  Parts parts = kHeld;
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size())))
      << what;
  EXPECT_EQ(kHeld, parts) << what;
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
  EXPECT_FALSE(ConvertWkbGeomToFeature(&feature, blob.data(), static_cast<int>(blob.size())))
      << what;
  EXPECT_EQ(GEOMETRY_DATA_TYPE_POLYGON, feature.GetGeometryType()) << what;
}

// A SpatiaLite connection that makes blobs with SQL.
class SpatialiteSql {
 public:
  SpatialiteSql() { open_ = handler_.OpenByCreate(dir_.File("sql.db")); }
  ~SpatialiteSql() { handler_.Close(); }
  bool IsOpen() const { return open_; }
  Bytes Blob(const std::string& expression) {
    CSqlStatement stmt(handler_.GetDB(), "SELECT " + expression, "[test]:");
    if (!stmt.StepRow() || stmt.ColumnBlob(0) == nullptr) return Bytes();
    const auto* data = static_cast<const unsigned char*>(stmt.ColumnBlob(0));
    return Bytes(data, data + stmt.ColumnBytes(0));
  }

 private:
  CTempDir dir_;
  CSpatialiteHandler handler_;
  bool open_ = false;
};

}  // namespace

TEST(GeometryBlobTest, PartsAndFeaturesRoundTripByKindAsXyzWgs84) {
  const Parts lines = {Part({{0, 0, 1}, {1, 1, 2}}), Part({{10, 10, 0}, {11, 12, -5}})};
  const Bytes blob = Write(lines, 5);
  auto geom = ParseSpatialiteBlob(blob.data(), static_cast<int>(blob.size()));
  ASSERT_TRUE(geom);
  EXPECT_EQ(GAIA_MULTILINESTRINGZ, gaiaGeometryType(geom.get()));
  EXPECT_EQ(4326, geom->Srid);
  EXPECT_EQ(lines, Read(blob));
  // Every vertex of a point part is a point of its own; a polygon gets no closing vertex.
  EXPECT_EQ((Parts{Part({{1, 2, 3}}), Part({{4, 5, 6}})}),
            Read(Write({Part({{1, 2, 3}, {4, 5, 6}})}, 4)));
  const Parts open = {Part({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}})};
  EXPECT_EQ(open, Read(Write(open, 3)));
  // The stored class follows the content, not the kind: a multi kind with one part comes back as
  // the single kind, and the other way round.
  EXPECT_EQ(GAIA_POINTZ, ClassOf(Write({Part({{1, 2, 3}})}, 4)));
  EXPECT_EQ(GAIA_MULTIPOLYGONZ, ClassOf(Write({Square(0, 0, 1, 0), Square(5, 5, 1, 0)}, 3)));

  // A feature is written by its kind without its empty parts, and read back appended.
  CAnnotationFeature source(GEOMETRY_DATA_TYPE_MULTILINESTRING);
  source.AddPart(Part({{0, 0, 0}, {1, 1, 1}}));
  source.AddPart(Part({}));
  source.AddPart(Part({{2, 2, 2}, {3, 3, 3}}));
  int size = 0;
  std::unique_ptr<unsigned char, void (*)(void*)> written(
      ConvertFeatureToWkbGeom(size, &source), free);
  ASSERT_NE(nullptr, written.get());
  CAnnotationFeature target(GEOMETRY_DATA_TYPE_POINT);
  target.AddPart(Part({{9, 9, 9}}));
  ASSERT_TRUE(ConvertWkbGeomToFeature(&target, written.get(), size));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTILINESTRING, target.GetGeometryType());
  ASSERT_EQ(3, target.GetPartCount());
  EXPECT_EQ(Part({{9, 9, 9}}), target.GetPart(0));
  EXPECT_EQ(source.GetPart(2), target.GetPart(2));
  EXPECT_FALSE(ConvertWkbGeomToFeature(nullptr, written.get(), size));
}

TEST(GeometryBlobTest, NothingToStoreGivesNullAndSizeZero) {
  const struct {
    Parts parts;
    int kind;
  } cases[] = {{{Part({}), Part({})}, 3},  // gaia writes no blob for an empty collection
               {{Part({{1, 2, 3}})}, 7}};
  for (const auto& c : cases) {
    int size = 12345;
    unsigned char* blob =
        ConvertGeomDataToWkbGeom(size, c.parts, static_cast<E_GEOMETRY_DATA_TYPE>(c.kind));
    EXPECT_EQ(nullptr, blob) << c.kind;
    EXPECT_EQ(0, size) << c.kind;
    free(blob);
  }
  int size = 12345;
  EXPECT_EQ(nullptr, ConvertFeatureToWkbGeom(size, nullptr));
  EXPECT_EQ(0, size);
}

TEST(GeometryBlobTest, BlobsOfSpatialiteSqlReadByTheirClass) {
  SpatialiteSql sql;
  ASSERT_TRUE(sql.IsOpen());
  // A hole is dropped; another SRID is read all the same; compressed forms are SpatiaLite's too.
  EXPECT_EQ(Parts{Square(0, 0, 4, 1)},
            Read(sql.Blob("GeomFromText('POLYGON Z((0 0 1, 4 0 1, 4 4 1, 0 4 1, 0 0 1),"
                          " (1 1 1, 2 1 1, 2 2 1, 1 1 1))', 4326)")));
  EXPECT_EQ(Parts{Part({{1, 2, 3}})}, Read(sql.Blob("GeomFromText('POINT Z(1 2 3)', 3857)")));
  EXPECT_EQ(Parts{Part({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}})},
            Read(sql.Blob("CompressGeometry(GeomFromText('LINESTRING Z(0 0 0, 1 1 1, 2 2 2)'))")));

  // Without Z, with M, or mixed: read as nothing, successfully, and the feature's kind becomes 0.
  for (const char* wkt : {"POINT(1 2)", "POINT ZM(1 2 3 4)", "LINESTRING M(0 0 1, 1 1 2)",
                          "GEOMETRYCOLLECTION Z(POINT Z(1 2 3), LINESTRING Z(0 0 0, 1 1 1))"}) {
    const Bytes blob = sql.Blob("GeomFromText('" + std::string(wkt) + "', 3857)");
    Parts parts = kHeld;
    EXPECT_TRUE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size()))) << wkt;
    EXPECT_EQ(kHeld, parts) << wkt;
    CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
    EXPECT_TRUE(ConvertWkbGeomToFeature(&feature, blob.data(), static_cast<int>(blob.size())));
    EXPECT_EQ(GEOMETRY_DATA_TYPE_UNKNOWN, feature.GetGeometryType()) << wkt;
  }

  // Every form SpatiaLite writes passes the count check, compressed or not.
  for (const char* wkt : {"LINESTRING(0 0, 1 1, 2 0)",
                          "POLYGON M((0 0 0, 4 0 0, 4 4 0, 0 0 0), (1 1 0, 2 1 0, 2 2 0, 1 1 0))",
                          "MULTIPOINT M(1 2 3, 4 5 6)",
                          "MULTILINESTRING ZM((0 0 0 0, 1 1 1 1), (2 2 2 2, 3 3 3 3))"}) {
    for (const std::string& form : {std::string("GeomFromText('%')"),
                                    std::string("CompressGeometry(GeomFromText('%'))")}) {
      std::string expression = form;
      expression.replace(expression.find('%'), 1, wkt);
      EXPECT_NE(-1, ClassOf(sql.Blob(expression))) << expression;
    }
  }

  ExpectUnreadable(sql.Blob("AsBinary(GeomFromText('POINT Z(1 2 3)', 4326))"), "plain WKB");
}

TEST(GeometryBlobTest, NullEmptyAndTruncatedBlobsAreUnreadable) {
  const Bytes blob = Write({Square(0, 0, 1, 0), Square(3, 3, 1, 1)}, 6);
  ExpectUnreadable(Bytes(), "empty");
  Parts parts = kHeld;
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, nullptr, 100));
  for (size_t length = 1; length < blob.size(); ++length) {
    Bytes cut(blob.begin(), blob.begin() + static_cast<long>(length));
    ExpectUnreadable(cut, "cut at " + std::to_string(length));
    cut.back() = GAIA_MARK_END;  // closed again: gaia alone would read part of it
    ExpectUnreadable(cut, "cut and closed at " + std::to_string(length));
  }
}

TEST(GeometryBlobTest, CountsThatWouldMisleadGaiaAreRefused) {
  // Line: vertex count at 43. Polygon: ring count at 43, first ring's vertex count at 47.
  const Bytes line = Write({Part({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}})}, 2);
  const Bytes polygon = Write({Square(0, 0, 1, 0)}, 3);
  const Bytes multi = Write({Part({{0, 0, 0}, {1, 1, 1}}), Part({{2, 2, 2}, {3, 3, 3}})}, 5);
  const struct {
    const Bytes& blob;
    size_t offset;
    uint32_t value;
    const char* what;
  } cases[] = {
      {line, 43, 0xFFFFFFFFu, "negative vertex count (gaia crashes on it)"},
      {line, 43, 0x0AAAAAABu, "vertex count whose size overflows an int"},
      {line, 43, 4, "one vertex more than stored"},
      {polygon, 43, 0xFFFFFFFFu, "negative ring count"},
      {polygon, 43, 0x7FFFFFFFu, "huge ring count"},
      {polygon, 47, 0xFFFFFFF0u, "negative ring vertex count"},
      {multi, 39, GAIA_MULTILINESTRING, "entities of another dimension model (gaia overflows)"},
      {multi, 48, GAIA_LINESTRINGZM, "an entity of another dimension model"},
      {multi, 39, 1234, "unknown class"},
  };
  for (const auto& c : cases) {
    Bytes bad = c.blob;
    Poke32(bad, c.offset, c.value);
    ExpectUnreadable(bad, c.what);
  }
  Bytes noMark = multi;
  noMark[47] = 0;
  ExpectUnreadable(noMark, "entity without its mark");
  // Fewer vertices than stored is consistent: the rest of the body is ignored.
  Bytes shorter = polygon;
  Poke32(shorter, 47, 2);
  EXPECT_EQ(Parts{Part({{0, 0, 0}, {1, 0, 0}})}, Read(shorter));
}
