#include "SpatialiteHandler.h"

#include <sqlite3.h>
#include <spatialite.h>
#include <spatialite/gaiageo.h>

#include <cstdlib>

#include "SpatialiteBlob.h"
#include "TextConversion.h"
#include "SqlStatement.h"
#include "ZuLog.h"

using AnnotationLayerInner::LocalToUtf8;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

// Runs "SELECT <SpatiaLite function>(...)". SpatiaLite reports most failures of these functions as
// a 0 result rather than an SQL error, so both count as failure; either is logged as `errorText`
// followed by SQLite's error text (or a note of the 0 result).
bool ExecSpatialFunction(sqlite3* db, const std::string& sql, const char* errorText) {
  int result = -1;
  auto firstColumn = [](void* out, int columns, char** values, char**) -> int {
    if (columns > 0 && values[0] != nullptr) *static_cast<int*>(out) = std::atoi(values[0]);
    return 0;
  };
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), firstColumn, &result, &error) != SQLITE_OK) {
    ZuLogError(-1) << errorText << (error != nullptr ? error : AnnotationLayerInner::ErrorMessage(db));
    sqlite3_free(error);
    return false;
  }
  if (result == 0) {
    ZuLogError(-1) << errorText << sql << " returned 0";
    return false;
  }
  return true;
}

bool ExecQuiet(sqlite3* db, const std::string& sql) {
  return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace

CSpatialiteHandler::CSpatialiteHandler() : db_(nullptr), cache_(nullptr) {}

CSpatialiteHandler::~CSpatialiteHandler() = default;

bool CSpatialiteHandler::Open(const std::string& path, bool readOnly) {
  // Tested on the cache, not the connection: a plain connection opened by OpenNoSpatial is not
  // taken as open here and is replaced by a second one. Kept as designed.
  if (cache_ != nullptr) return true;
  return OpenWithFlags(path, readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE, true,
                       "[CSpatialiteHandler] Open Error! ");
}

bool CSpatialiteHandler::OpenNoSpatial(const std::string& path, bool readOnly) {
  if (db_ != nullptr) return true;
  return OpenWithFlags(path, readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE, false,
                       "[CSpatialiteHandler] OpenNoSpatial Error! ");
}

bool CSpatialiteHandler::OpenByCreate(const std::string& path) {
  if (cache_ != nullptr) return true;
  return OpenWithFlags(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, true,
                       "[CSpatialiteHandler] OpenByCreate Error! ");
}

bool CSpatialiteHandler::OpenWithFlags(const std::string& path, int flags, bool spatial,
                                       const char* errorText) {
  if (path.empty()) {
    ZuLogError(-1) << errorText << "empty path";
    return false;
  }
  const std::string utf8Path = LocalToUtf8(path);
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(utf8Path.c_str(), &db, flags, nullptr) != SQLITE_OK) {
    ZuLogError(-1) << errorText << (db != nullptr ? AnnotationLayerInner::ErrorMessage(db) : "out of memory");
    sqlite3_close(db);
    db_ = nullptr;
    return false;
  }
  db_ = db;
  if (!spatial) return true;
  cache_ = spatialite_alloc_connection();
  spatialite_init_ex(db_, cache_, 0);
  if (!InitSpatialMetadata()) {
    Close();
    return false;
  }
  return true;
}

bool CSpatialiteHandler::Close() {
  if (db_ == nullptr) return true;
  // With statements still unfinalized, sqlite3_close would fail and leak the connection; the v2
  // form closes it as soon as the last of them is finalized.
  sqlite3_close_v2(db_);
  if (cache_ != nullptr) {
    spatialite_cleanup_ex(cache_);
    spatialite_shutdown();
  }
  db_ = nullptr;
  cache_ = nullptr;
  return true;
}

bool CSpatialiteHandler::InitSpatialMetadata() {
  if (db_ == nullptr) return false;
  if (ExecQuiet(db_, "SELECT COUNT(*) FROM spatial_ref_sys")) return true;
  return ExecSpatialFunction(db_, "SELECT InitSpatialMetadata(1)",
                    "[CSpatialiteHandler] InitSpatialMetadata Error! ");
}

bool CSpatialiteHandler::AddGeometryColumn(const std::string& table, const std::string& column,
                                           int typeCode) {
  if (db_ == nullptr || table.empty() || column.empty()) return false;
  if (ExecQuiet(db_, "SELECT " + column + " FROM " + table)) return false;
  if (ExecQuiet(db_, "SELECT COUNT(*)  FROM idx_" + table + "_" + column)) return false;
  if (!ExecSpatialFunction(db_,
                  "SELECT AddGeometryColumn('" + table + "', '" + column + "', 4326, '" +
                      GeometryTypeName(typeCode) + "', 1)",
                  "[CSpatialiteHandler] AddGeometryColumn Error! ")) {
    return false;
  }
  return ExecSpatialFunction(db_, "SELECT CreateSpatialIndex('" + table + "', '" + column + "')",
                    "[CSpatialiteHandler] CreateSpatialIndex Error! ");
}

bool CSpatialiteHandler::SetForeignKeys(bool on) {
  return sqlite3_exec(db_, on ? "PRAGMA foreign_keys = ON" : "PRAGMA foreign_keys = OFF", nullptr,
                      nullptr, nullptr) == SQLITE_OK;
}

bool CSpatialiteHandler::SetSynchronous(bool on) {
  return sqlite3_exec(db_, on ? "PRAGMA synchronous = ON" : "PRAGMA synchronous = OFF", nullptr,
                      nullptr, nullptr) == SQLITE_OK;
}

namespace {

bool RunTransactionStatement(sqlite3* db, const char* sql, const char* tag) {
  if (db == nullptr) return false;
  char* error = nullptr;
  int rc = sqlite3_exec(db, sql, nullptr, nullptr, &error);
  if (rc != SQLITE_OK) ZuLogError(-1) << tag << AnnotationLayerInner::ErrorMessage(db);
  sqlite3_free(error);
  return rc == SQLITE_OK;
}

}  // namespace

bool CSpatialiteHandler::Transaction() { return RunTransactionStatement(db_, "BEGIN", "[Transaction]:"); }

bool CSpatialiteHandler::Commit() { return RunTransactionStatement(db_, "COMMIT", "[Commit]:"); }

bool CSpatialiteHandler::RollBack() {
  return RunTransactionStatement(db_, "ROLLBACK", "[RollBack]:");
}

int CSpatialiteHandler::BindText(sqlite3_stmt* statement, int index, const std::string& text,
                                 bool toUtf8) {
  if (toUtf8) {
    const std::string utf8 = LocalToUtf8(text);
    return sqlite3_bind_text(statement, index, utf8.data(), static_cast<int>(utf8.size()),
                             SQLITE_TRANSIENT);
  }
  return sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()),
                           SQLITE_TRANSIENT);
}

void CSpatialiteHandler::ResetStatement(sqlite3_stmt* statement) {
  if (statement == nullptr) return;
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
}

std::string CSpatialiteHandler::ColumnText(const char* text, bool toLocal) {
  if (text == nullptr) return std::string();
  return toLocal ? Utf8ToLocal(text) : std::string(text);
}

std::string CSpatialiteHandler::BlobToWkt(const unsigned char* blob, int size) {
  if (blob == nullptr || size < 1) return std::string();
  // Through the checked reader: gaia's own crashes on some corrupt blobs.
  AnnotationLayerInner::GaiaGeomCollPtr geometry =
      AnnotationLayerInner::ParseSpatialiteBlob(blob, size);
  if (!geometry) return std::string();
  std::string wkt;
  gaiaOutBuffer buffer;
  gaiaOutBufferInitialize(&buffer);
  gaiaOutWkt(&buffer, geometry.get());
  if (buffer.Error == 0 && buffer.Buffer != nullptr) wkt.assign(buffer.Buffer);
  gaiaOutBufferReset(&buffer);
  return wkt;
}

std::string CSpatialiteHandler::GeometryTypeName(int typeCode) {
  switch (typeCode) {
    case 1001: return "POINTZ";
    case 1002: return "LINESTRINGZ";
    case 1003: return "POLYGONZ";
    case 1004: return "MULTIPOINTZ";
    case 1005: return "MULTILINESTRINGZ";
    case 1006: return "MULTIPOLYGONZ";
    case 1007: return "GEOMETRYCOLLECTIONZ";
    default: return "GEOMETRY";
  }
}
