#include "SpatialiteNameDB.h"

#include <sqlite3.h>

#include <utility>

#include "AnnotationLayerNS.h"
#include "CacheFile.h"
#include "PointBlob.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "ZuLog.h"

using AnnotationLayerInner::FormatDouble;
using AnnotationLayerInner::IsSafeSqlText;
using AnnotationLayerInner::ReadFirstPoint;

namespace {

// Uuids go between single quotes unescaped; one that could end the literal is refused.
bool IsUsableUuid(const std::string& uuid, const char* tag) {
  if (IsSafeSqlText(uuid)) return true;
  ZuLogError(-1) << tag << "refused uuid '" << uuid << "': it holds a quote or a NUL byte";
  return false;
}

}  // namespace

CSpatialiteNameDB::INameVisitor::~INameVisitor() = default;

// The database that a handle and all its copies share; the last handle to go closes it.
struct CSpatialiteNameDB::Connection {
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  // Without Close nothing is kept: closing the connection rolls the open transaction back.
  ~Connection() {
    if (handler) handler->Close();
  }

  std::unique_ptr<CSpatialiteHandler> handler;  // exists only while open
  sqlite3* db = nullptr;                        // the handler's connection, cached
};

CSpatialiteNameDB::CSpatialiteNameDB() : connection_(std::make_shared<Connection>()) {}

CSpatialiteNameDB::CSpatialiteNameDB(const CSpatialiteNameDB& other) = default;

CSpatialiteNameDB& CSpatialiteNameDB::operator=(const CSpatialiteNameDB& other) = default;

CSpatialiteNameDB::~CSpatialiteNameDB() = default;

bool CSpatialiteNameDB::Open(const std::string& name) {
  if (connection_->handler) return true;
  if (!AnnotationLayerInner::IsPlainCacheName(name)) {
    ZuLogError(-1) << "[CSpatialiteNameDB::Open]:" << "refused name '" << name
                   << "': not a plain file name";
    return false;
  }
  const std::string path = AnnotationLayerNS::GetDefaultCacheDir() + "name_cluster_" + name + ".db";
  if (!AnnotationLayerInner::RemoveCacheFile(path)) {
    ZuLogError(-1) << "[CSpatialiteNameDB::Open]:" << "cannot remove the old file " << path;
    return false;
  }
  auto handler = std::make_unique<CSpatialiteHandler>();
  if (!handler->OpenByCreate(path)) {
    handler->Close();
    return false;
  }
  connection_->handler = std::move(handler);
  connection_->db = connection_->handler->GetDB();
  if (!CreateTable() || !connection_->handler->AddGeometryColumn("name", "geom", 1001)) {
    connection_->handler->Close();
    connection_->handler.reset();
    connection_->db = nullptr;
    return false;
  }
  connection_->handler->Transaction();
  return true;
}

bool CSpatialiteNameDB::IsOpened() const { return connection_->handler != nullptr; }

bool CSpatialiteNameDB::Close() {
  if (!connection_->handler) return true;
  connection_->handler->Commit();
  connection_->handler->Close();
  connection_->handler.reset();
  connection_->db = nullptr;
  return true;
}

bool CSpatialiteNameDB::CreateTable() {
  return AnnotationLayerInner::ExecSql(connection_->db,
                                       std::string("CREATE TABLE 'name' (") +
                                           "'uuid' varchar(32) NOT NULL," + "'name' varchar(32)," +
                                           "'data' varchar(128)," + "'style' text(65535)," +
                                           "PRIMARY KEY ('uuid')" + "); ",
                                       "[CreateTable]:");
}

void CSpatialiteNameDB::TravelViaExtent(const EXTENT& extent, int limit, INameVisitor& visitor) {
  if (connection_->db == nullptr) return;
  const std::string xmin = FormatDouble(extent.min_x);
  const std::string ymin = FormatDouble(extent.min_y);
  const std::string xmax = FormatDouble(extent.max_x);
  const std::string ymax = FormatDouble(extent.max_y);
  // The ring lists the four corners without closing it again, as the query always has.
  const std::string ring = "GeomFromText('POLYGON((" + xmin + " " + ymin + "," + xmin + " " + ymax +
                           "," + xmax + " " + ymax + "," + xmax + " " + ymin + "))')";
  // A ring that SpatiaLite's reader rejects becomes NULL, and MbrIntersects(NULL, geom) is -1,
  // which counts as true: the query would return every label the index lets through. Such an extent
  // visits nothing instead.
  {
    CSqlStatement check(connection_->db, "SELECT " + ring + " IS NOT NULL",
                        "[CSpatialiteNameDB::TravelViaExtent]:");
    if (!check.IsValid()) return;
    if (!check.StepRow() || check.ColumnInt(0) == 0) {
      ZuLogError(-1) << "[CSpatialiteNameDB::TravelViaExtent]:" << "the extent ring is rejected: "
                     << ring;
      return;
    }
  }
  std::string sql = std::string("SELECT uuid, geom FROM name WHERE ") +
                    "ROWID IN(SELECT pkid FROM idx_name_geom WHERE " + "(xmin < " + xmax +
                    " AND " + "xmax > " + xmin + ") AND (" + "ymin < " + ymax + " AND " +
                    "ymax > " + ymin + "))" + " AND MbrIntersects(" + ring + ", geom)";
  if (limit > 0) sql += " limit " + std::to_string(limit);
  CSqlStatement stmt(connection_->db, sql, "[CSpatialiteNameDB::TravelViaExtent]:");
  while (stmt.StepRow()) {
    CNameRecorder record;
    record.uuid = stmt.ColumnText(0, false);
    ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), record.position);
    if (visitor.VisitName(record)) break;
  }
}

bool CSpatialiteNameDB::InsertName(const CNameRecorder& record) {
  if (connection_->db == nullptr) return false;
  if (!IsUsableUuid(record.uuid, "[InsertName]:")) return false;
  CSqlStatement stmt(connection_->db,
                     std::string("INSERT INTO 'main'.'name'(") +
                         " 'uuid', 'name', 'data', 'style', 'geom') VALUES( " + " ?, ?, ?, ?, ?)",
                     "[InsertName]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, record.uuid, false);
  stmt.BindText(2, record.name, true);
  stmt.BindText(3, record.data, true);
  stmt.BindText(4, record.style, false);
  AnnotationLayerInner::BindPointBlob(stmt.Get(), 5, record.position);
  return stmt.StepDone();
}

bool CSpatialiteNameDB::ModifyName(const CNameRecorder& record) {
  return DeleteName(record.uuid) && InsertName(record);
}

bool CSpatialiteNameDB::DeleteName(const std::string& uuid) {
  if (connection_->db == nullptr) return false;
  if (!IsUsableUuid(uuid, "[DeleteName]:")) return false;
  return AnnotationLayerInner::ExecSql(
      connection_->db, "DELETE FROM 'main'.'name' WHERE uuid = '" + uuid + "'", "[DeleteName]:");
}

bool CSpatialiteNameDB::DeleteAll() {
  if (connection_->db == nullptr) return false;
  return AnnotationLayerInner::ExecSql(connection_->db, "DELETE FROM 'main'.'name'",
                                       "[DeleteAll]:");
}

bool CSpatialiteNameDB::IsExistName(const std::string& uuid) const {
  if (connection_->db == nullptr) return false;
  // The data model's feature test logs under the same tag.
  if (!IsUsableUuid(uuid, "[IsExistNode-Feature]:")) return false;
  CSqlStatement stmt(connection_->db,
                     std::string("SELECT COUNT(*) FROM name WHERE") + " uuid = '" + uuid + "'",
                     "[IsExistNode-Feature]:");
  return stmt.StepRow() && stmt.ColumnInt(0) > 0;
}

CNameRecorder CSpatialiteNameDB::QueryNameRecorder(const std::string& uuid) {
  if (connection_->db == nullptr) return CNameRecorder();
  if (!IsUsableUuid(uuid, "[QueryNameRecorder]:")) return CNameRecorder();
  CSqlStatement stmt(connection_->db,
                     std::string("SELECT") + " name, data, style, geom" + " FROM name WHERE" +
                         " uuid = '" + uuid + "'",
                     "[QueryNameRecorder]:");
  if (!stmt.IsValid()) return CNameRecorder();
  CNameRecorder record;
  record.uuid = uuid;
  const int rc = stmt.Step();
  if (rc == SQLITE_ROW) {
    record.name = stmt.ColumnText(0, true);
    record.data = stmt.ColumnText(1, true);
    record.style = stmt.ColumnText(2, true);
    ReadFirstPoint(stmt.ColumnBlob(3), stmt.ColumnBytes(3), record.position);
  } else if (rc != SQLITE_DONE) {
    stmt.LogError();
    return CNameRecorder();
  }
  return record;
}
