// The SpatiaLite connection handler, its statement helpers, the code page conversions, pieces of
// SQL text and the creation of a new annotation database.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <cfloat>

#include "AnnotationSchema.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "SqlText.h"
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

TEST(TextAndSqlTextTest, Cp936QuotesAndNumbers) {
  const std::string utf8 = "\xe6\xb3\xa8\xe8\xae\xb0 layer";  // "注记 layer"
  EXPECT_EQ("\xd7\xa2\xbc\xc7 layer", Utf8ToLocal(utf8));
  EXPECT_EQ(utf8, LocalToUtf8(Utf8ToLocal(utf8)));
  // A lone lead byte, bytes that are not UTF-8, characters outside code page 936: never cut.
  EXPECT_EQ("a", LocalToUtf8("a\x81").substr(0, 1));
  EXPECT_NE(std::string::npos, Utf8ToLocal("\xff\xfe x").find(" x"));
  EXPECT_EQ("?", Utf8ToLocal("\xf0\x9f\x98\x80").substr(0, 1));

  EXPECT_TRUE(IsSafeSqlText("double \" quote; -- and comment \xe4\xb8\xad"));
  EXPECT_FALSE(IsSafeSqlText("x' OR '1'='1"));
  EXPECT_FALSE(IsSafeSqlText(std::string("abc\0def", 7)));
  EXPECT_EQ("-1.7976931348623e+308", FormatDouble(-DBL_MAX));
  EXPECT_EQ("116.39128456789", FormatDouble(116.391284567891234));
}

// Foreign files and directories are refused by the data model's install (datamodel_lifecycle_test).
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

TEST(AnnotationSchemaTest, NewDatabaseHasTablesIndexAndRoot) {
  CTestDatabase db;
  ASSERT_TRUE(db.IsValid());
  EXPECT_EQ("17", QueryScalar(db.Path(), "SELECT COUNT(*) FROM sqlite_master WHERE name IN "
                                         "('folder', 'layer', 'shape', 'folder_order', "
                                         "'layer_order', 'shape_order', 'folder_status', "
                                         "'layer_status', 'shape_status', 'layer_style', "
                                         "'shape_style', 'layer_userdata', 'shape_userdata', "
                                         "'shape_property', 'shape_enclosure', "
                                         "'idx_shape_geom', 'spatial_ref_sys')"));
  EXPECT_EQ("3 4326", QueryScalar(db.Path(), "SELECT coord_dimension || ' ' || srid FROM "
                                             "geometry_columns WHERE f_table_name = 'shape' AND "
                                             "f_geometry_column = 'geom'"));
  // The top root, with its order and status rows.
  EXPECT_EQ("s:" + QueryScalar(db.Path(), "SELECT id FROM folder_status WHERE puuid = '" +
                                              db.RootUUID() + "' AND type = 1"),
            QueryScalar(db.Path(), "SELECT index_id FROM folder"));
  EXPECT_EQ("1", QueryScalar(db.Path(), "SELECT COUNT(*) FROM folder_order WHERE uuid = '" +
                                            db.RootUUID() + "' AND left_uuid = '' AND "
                                            "right_uuid = ''"));

  sqlite3* conn = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(db.Path().c_str(), &conn));
  ASSERT_TRUE(ExecSql(conn, "INSERT INTO layer(uuid, folder_puuid) VALUES('L', 'F')", ""));
  CSqlStatement all(conn, "SELECT * FROM layer", "");
  ASSERT_TRUE(all.StepRow());
  const char* expected[] = {"uuid", "folder_puuid", "layer_puuid", "type", "name",
                            "min_level", "max_level", "min_name_level", "max_name_level",
                            "min_x", "min_y", "max_x", "max_y", "wkt", "property_header",
                            "index_id"};
  for (int i = 0; i < 16; ++i) EXPECT_STREQ(expected[i], sqlite3_column_name(all.Get(), i)) << i;
  all.Finalize();
  // The order rebuilder's column names read the parent columns.
  CSqlStatement alias(conn, "SELECT layer.uuid FROM layer WHERE layer.folder_uuid = 'F'", "");
  ASSERT_TRUE(alias.StepRow());
  alias.Finalize();
  sqlite3_close(conn);
}

TEST(AnnotationSchemaTest, RefusesExistingFilesAndLeavesThemAlone) {
  CTempDir dir;
  const std::string path = dir.File("keep.txt");
  ASSERT_TRUE(WriteFileBytes(path, "precious"));
  CZuLogCapture capture;
  EXPECT_FALSE(AnnotationLayerNS::CreateAnnotationDatabase(path));
  EXPECT_EQ(1, capture.Count("[CreateAnnotationDatabase]:"));
  EXPECT_EQ("precious", ReadFileBytes(path));
  EXPECT_FALSE(AnnotationLayerNS::CreateAnnotationDatabase(dir.File("no/such/dir.db")));
  EXPECT_FALSE(FileExists(dir.File("no")));
}
