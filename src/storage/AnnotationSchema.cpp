#include "AnnotationSchema.h"

#include <sqlite3.h>
// After sqlite3.h: SpatiaLite's header uses its types.
#include <spatialite.h>

#include <cstdio>
#include <sys/stat.h>

#include "AnnotationLayerNS.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "TextConversion.h"
#include "ZuLog.h"

namespace AnnotationLayerInner {
// The text of annotation_schema.sql, compiled into the library.
extern const char* const kAnnotationSchemaSql;
}  // namespace AnnotationLayerInner

namespace AnnotationLayerNS {
namespace {

const char kTag[] = "[CreateAnnotationDatabase]:";

// The root folder is checked (1) and expanded (4).
constexpr int kRootStatus = 1 | 4;

bool InsertRootFolder(sqlite3* db, const std::string& uuid) {
  CSqlStatement order(db,
                      "INSERT INTO 'main'.'folder_order'( 'uuid', 'left_uuid', 'right_uuid', "
                      "'order_num') VALUES( ?, '', '', 0)",
                      kTag);
  if (!order.IsValid()) return false;
  order.BindText(1, uuid, false);
  if (!order.StepDone()) return false;

  CSqlStatement status(db,
                       "INSERT INTO 'main'.'folder_status'( 'puuid', 'type', 'value', 'data') "
                       "VALUES( ?, 1, ?, NULL)",
                       kTag);
  if (!status.IsValid()) return false;
  status.BindText(1, uuid, false);
  status.BindInt(2, kRootStatus);
  if (!status.StepDone()) return false;
  const std::string indexText = "s:" + std::to_string(sqlite3_last_insert_rowid(db));

  CSqlStatement folder(db,
                       "INSERT INTO 'main'.'folder'( 'uuid', 'puuid', 'type', 'name', 'index_id') "
                       "VALUES(?,?,?,?,?)",
                       kTag);
  if (!folder.IsValid()) return false;
  folder.BindText(1, uuid, false);
  folder.BindText(2, "", false);
  folder.BindInt(3, FOLDER_TYPE_ROOT);
  folder.BindText(4, "Root", false);
  folder.BindText(5, indexText, false);
  return folder.StepDone();
}

// A new file gets only the reference systems an annotation database uses (WGS 84 and its UTM
// zones, a few hundred kilobytes), not the whole EPSG table (several megabytes) that the handler
// writes into a file without metadata. Made on a connection of its own before the handler opens
// the file, which then finds the metadata present. Files made by other programs, with the whole
// table, open as before.
bool InitWgs84Metadata(const std::string& fsPath) {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(fsPath.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK) {
    ZuLogError(-1) << kTag << (db != nullptr ? AnnotationLayerInner::ErrorMessage(db) : "out of memory");
    sqlite3_close(db);
    return false;
  }
  void* cache = spatialite_alloc_connection();
  spatialite_init_ex(db, cache, 0);
  bool ok = false;
  {
    CSqlStatement init(db, "SELECT InitSpatialMetadata(1, 'WGS84')", kTag);
    ok = init.StepRow() && init.ColumnInt(0) == 1;
  }
  if (!ok) ZuLogError(-1) << kTag << "the spatial metadata could not be made";
  sqlite3_close(db);
  spatialite_cleanup_ex(cache);
  return ok;
}

bool CreateTables(sqlite3* db) {
  char* error = nullptr;
  if (sqlite3_exec(db, AnnotationLayerInner::kAnnotationSchemaSql, nullptr, nullptr, &error) !=
      SQLITE_OK) {
    ZuLogError(-1) << kTag << (error != nullptr ? error : AnnotationLayerInner::ErrorMessage(db));
    sqlite3_free(error);
    return false;
  }
  // AddGeometryColumn reports failure as a 0 result, not as an SQL error: check the outcome.
  CSqlStatement check(db,
                      "SELECT COUNT(*) FROM geometry_columns WHERE f_table_name = 'shape' AND "
                      "f_geometry_column = 'geom' AND spatial_index_enabled = 1",
                      kTag);
  if (!check.IsValid() || !check.StepRow() || check.ColumnInt(0) != 1) {
    ZuLogError(-1) << kTag << "the geometry column shape.geom could not be created";
    return false;
  }
  return true;
}

}  // namespace

bool CreateAnnotationDatabase(const std::string& path, std::string* rootUuid) {
  if (path.empty()) {
    ZuLogError(-1) << kTag << "empty path";
    return false;
  }
  const std::string fsPath = AnnotationLayerInner::LocalToUtf8(path);
  struct stat info;
  if (stat(fsPath.c_str(), &info) == 0) {
    ZuLogError(-1) << kTag << "file exists: " << path;
    return false;
  }

  CSpatialiteHandler handler;
  if (!InitWgs84Metadata(fsPath) || !handler.OpenByCreate(path)) {
    std::remove(fsPath.c_str());
    return false;
  }
  sqlite3* db = handler.GetDB();
  const std::string uuid = ZuGenerateUUID();
  bool ok = handler.Transaction();
  ok = ok && CreateTables(db) && InsertRootFolder(db, uuid);
  ok = ok ? handler.Commit() : (handler.RollBack(), false);
  handler.Close();
  if (!ok) {
    std::remove(fsPath.c_str());
    return false;
  }
  if (rootUuid != nullptr) *rootUuid = uuid;
  return true;
}

}  // namespace AnnotationLayerNS
