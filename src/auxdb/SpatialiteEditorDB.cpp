#include "SpatialiteEditorDB.h"

#include <sqlite3.h>

#include <utility>
#include <vector>

#include "AnnotationLayerNS.h"
#include "CacheFile.h"
#include "PointBlob.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "ZuLog.h"

using AnnotationLayerInner::BindPointBlob;
using AnnotationLayerInner::FormatDouble;
using AnnotationLayerInner::ReadFirstPoint;

namespace {

// The spatial index's containment test, shared by the extent, pick and closest-point queries:
// each point's single-precision box must lie strictly inside the rectangle.
std::string IndexBoxInside(double xmin, double ymin, double xmax, double ymax) {
  return "xmin > " + FormatDouble(xmin) + " AND " + "xmax < " + FormatDouble(xmax) + " AND " +
         "ymin > " + FormatDouble(ymin) + " AND " + "ymax < " + FormatDouble(ymax);
}

}  // namespace

CSpatialiteEditorDB::IKeyPointVisitor::~IKeyPointVisitor() = default;

// The database that a handle and all its copies share. The last handle to go releases the
// connection (leaving the file, as a destroyed handle always did).
struct CSpatialiteEditorDB::Connection {
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { Release(); }
  // Drops the connection and the cached statements, leaving the file where it is.
  void Release() {
    insertStatement.Finalize();
    updateStatement.Finalize();
    if (handler) handler->Close();
    handler.reset();
    db = nullptr;
  }

  std::string path;
  std::unique_ptr<CSpatialiteHandler> handler;  // exists only while open
  sqlite3* db = nullptr;                        // the handler's connection, cached
  CSqlStatement insertStatement;
  CSqlStatement updateStatement;
};

CSpatialiteEditorDB::CSpatialiteEditorDB() : connection_(std::make_shared<Connection>()) {}

CSpatialiteEditorDB::CSpatialiteEditorDB(const CSpatialiteEditorDB& other) = default;

CSpatialiteEditorDB& CSpatialiteEditorDB::operator=(const CSpatialiteEditorDB& other) = default;

CSpatialiteEditorDB::~CSpatialiteEditorDB() = default;

bool CSpatialiteEditorDB::Open(const std::string& name, IAnnotationFeature* feature) {
  if (connection_->handler) return true;
  if (!AnnotationLayerInner::IsPlainCacheName(name)) {
    ZuLogError(-1) << "[CSpatialiteEditorDB::Open]:" << "refused name '" << name
                   << "': not a plain file name";
    return false;
  }
  const std::string path = AnnotationLayerNS::GetDefaultCacheDir() + name + "_kpt.db";
  if (!AnnotationLayerInner::RemoveCacheFile(path)) {
    ZuLogError(-1) << "[CSpatialiteEditorDB::Open]:" << "cannot remove the old file " << path;
    return false;
  }
  connection_->handler = std::make_unique<CSpatialiteHandler>();
  const bool created = connection_->handler->OpenByCreate(path);
  connection_->db = connection_->handler->GetDB();
  if (!created || !CreateTable() ||
      !connection_->handler->AddGeometryColumn("keypoint", "geom", 1001)) {
    // A half-made scratch file serves nobody: it goes with the connection.
    connection_->Release();
    AnnotationLayerInner::RemoveCacheFile(path);
    return false;
  }
  connection_->path = path;
  BuildKeyPoint(feature);
  return true;
}

bool CSpatialiteEditorDB::IsOpened() const { return connection_->db != nullptr; }

bool CSpatialiteEditorDB::Close() {
  connection_->Release();
  if (!connection_->path.empty()) AnnotationLayerInner::RemoveCacheFile(connection_->path);
  connection_->path.clear();
  return true;
}

bool CSpatialiteEditorDB::CreateTable() {
  return AnnotationLayerInner::ExecSql(connection_->db,
                                       std::string("CREATE TABLE 'keypoint' (") +
                                           "'id' integer NOT NULL," + "'polygon_index' integer ," +
                                           "'kpt_index' integer ," + "PRIMARY KEY ('id')" + "); ",
                                       "[CreateTable]:");
}

void CSpatialiteEditorDB::BuildKeyPoint(IAnnotationFeature* feature) {
  if (feature == nullptr) return;
  connection_->handler->Transaction();
  feature->TravelGeometryData(*this);
  connection_->handler->Commit();
  // Single inserts are rare after the build; the statement is prepared again when needed.
  connection_->insertStatement.Finalize();
}

void CSpatialiteEditorDB::ApplyGeometryData(IAnnotationFeature* feature, int partIndex,
                                            const CGeometryData& data) {
  for (int i = 0; i < data.GetSize(); ++i) InsertKeyPointInner(partIndex, i, data.At(i));
}

bool CSpatialiteEditorDB::InsertKeyPointInner(int polygonIndex, int kptIndex,
                                              const CVector3D& point) {
  if (connection_->db == nullptr) return false;
  if (connection_->insertStatement.IsValid()) {
    connection_->insertStatement.Reset();
  } else if (!connection_->insertStatement.Prepare(
                 connection_->db,
                 "INSERT INTO 'main'.'keypoint'('polygon_index', 'kpt_index', 'geom') "
                 "VALUES(?, ?, ?)",
                 "[InsertKeyPointInner_prepare]:")) {
    return false;
  }
  connection_->insertStatement.BindInt(1, polygonIndex);
  connection_->insertStatement.BindInt(2, kptIndex);
  BindPointBlob(connection_->insertStatement.Get(), 3, point);
  if (connection_->insertStatement.Step() != SQLITE_DONE) {
    ZuLogError(-1) << "[InsertKeyPointInner_Insert]:"
                   << AnnotationLayerInner::ErrorMessage(connection_->db);
    return false;
  }
  return true;
}

bool CSpatialiteEditorDB::QueryKeyPointPlace(int id, const std::string& tag, int& polygonIndex,
                                             int& kptIndex) const {
  CSqlStatement stmt(connection_->db,
                     "SELECT polygon_index, kpt_index FROM keypoint WHERE id=" + std::to_string(id),
                     tag);
  if (!stmt.IsValid()) return false;
  if (stmt.Step() != SQLITE_ROW) {
    ZuLogError(-1) << tag << AnnotationLayerInner::ErrorMessage(connection_->db);
    return false;
  }
  polygonIndex = stmt.ColumnInt(0);
  kptIndex = stmt.ColumnInt(1);
  return true;
}

int CSpatialiteEditorDB::InsertKeyPoint(int afterId, const CVector3D& point) {
  if (connection_->db == nullptr || afterId < 0) return -1;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(afterId, "[InsertKeyPoint_Query]:", polygonIndex, kptIndex)) return -1;
  connection_->handler->Transaction();
  ModifyBatchOffsetKeyPoint(polygonIndex, kptIndex + 1);
  int id = -1;
  if (InsertKeyPointInner(polygonIndex, kptIndex + 1, point)) {
    id = static_cast<int>(sqlite3_last_insert_rowid(connection_->db));
  }
  connection_->handler->Commit();
  return id;
}

void CSpatialiteEditorDB::ModifyBatchOffsetKeyPoint(int polygonIndex, int fromKptIndex) {
  CSqlStatement stmt(connection_->db,
                     std::string("SELECT id, kpt_index FROM keypoint WHERE ") + "polygon_index=" +
                         std::to_string(polygonIndex) + " AND " + "kpt_index >= " +
                         std::to_string(fromKptIndex),
                     "[ModifyBatchOffsetKeyPoint_Query]:");
  if (!stmt.IsValid()) return;
  // Read every row before the first update, so the scan never meets a row it has changed.
  std::vector<std::pair<int, int>> shifts;
  while (stmt.StepRow()) shifts.emplace_back(stmt.ColumnInt(0), stmt.ColumnInt(1) + 1);
  stmt.Finalize();
  for (const auto& shift : shifts) ModifyKeyPointInner(shift.first, shift.second);
}

bool CSpatialiteEditorDB::ModifyKeyPointInner(int id, int kptIndex) {
  if (connection_->db == nullptr) return false;
  if (connection_->updateStatement.IsValid()) {
    connection_->updateStatement.Reset();
  } else if (!connection_->updateStatement.Prepare(
                 connection_->db, "UPDATE 'main'.'keypoint' SET 'kpt_index'=? WHERE id=?",
                 "[ModifyKeyPointInner_prepare]:")) {
    return false;
  }
  connection_->updateStatement.BindInt(1, kptIndex);
  connection_->updateStatement.BindInt(2, id);
  if (connection_->updateStatement.Step() != SQLITE_DONE) {
    // The tag names an insert although this is an update; log readers search for it as it is.
    ZuLogError(-1) << "[ModifyKeyPointInner_Insert]:"
                   << AnnotationLayerInner::ErrorMessage(connection_->db);
    return false;
  }
  return true;
}

bool CSpatialiteEditorDB::RemoveKeyPoint(int id) {
  if (connection_->db == nullptr || id < 0) return false;
  return AnnotationLayerInner::ExecSql(
      connection_->db, "DELETE FROM 'main'.'keypoint' WHERE id=" + std::to_string(id),
      "[RemoveKeyPoint]:");
}

bool CSpatialiteEditorDB::ReviseKeyPoint(int id, const CVector3D& point) {
  if (connection_->db == nullptr || id < 0) return false;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(id, "[ReviseKeyPoint_Query]:", polygonIndex, kptIndex)) return false;
  // Removal and reinsertion succeed or fail together, so a failed move never loses the point.
  connection_->handler->Transaction();
  const bool moved = RemoveKeyPoint(id) && InsertKeyPointInner(polygonIndex, kptIndex, point);
  if (moved) {
    connection_->handler->Commit();
  } else {
    connection_->handler->RollBack();
  }
  return moved;
}

void CSpatialiteEditorDB::TravelViaExtent(const EXTENT& extent, int limit,
                                          IKeyPointVisitor& visitor) {
  if (connection_->db == nullptr) return;
  std::string sql = "SELECT id, geom FROM keypoint WHERE MbrIntersects(geom, BuildMbr(" +
                    FormatDouble(extent.min_x) + "," + FormatDouble(extent.min_y) + "," +
                    FormatDouble(extent.max_x) + "," + FormatDouble(extent.max_y) + "))" +
                    "AND ROWID IN(SELECT pkid FROM idx_keypoint_geom WHERE " +
                    IndexBoxInside(extent.min_x, extent.min_y, extent.max_x, extent.max_y) + ")";
  if (limit > 0) sql += " limit " + std::to_string(limit);
  CSqlStatement stmt(connection_->db, sql, "[EditorDB::TravelViaExtent]:");
  while (stmt.StepRow()) {
    CVector3D point;  // stays at the origin when the geometry cannot be read
    ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), point);
    if (visitor.VisitKeyPoint(stmt.ColumnInt(0), point)) break;
  }
}

int CSpatialiteEditorDB::QueryLastKeyPoint(const std::string& sql, CVector3D& out) const {
  // Both queries log their prepare failures under the picking tag.
  CSqlStatement stmt(connection_->db, sql, "[QueryPickedKeyPoint_intersected]:");
  int id = -1;
  while (stmt.StepRow()) {
    id = stmt.ColumnInt(0);
    ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), out);
  }
  return id;
}

int CSpatialiteEditorDB::QueryPickedKeyPoint(CVector3D& out, const CVector3D& pick,
                                             double tolerance) const {
  if (connection_->db == nullptr) return -1;
  return QueryLastKeyPoint(std::string("SELECT id,geom FROM keypoint WHERE ") +
                               "ROWID IN(SELECT pkid FROM idx_keypoint_geom WHERE " +
                               IndexBoxInside(pick.X() - tolerance, pick.Y() - tolerance,
                                              pick.X() + tolerance, pick.Y() + tolerance) +
                               ")",
                           out);
}

int CSpatialiteEditorDB::QueryClosestKeyPoint(CVector3D& out, const EXTENT& extent,
                                              const CVector3D& position) const {
  if (connection_->db == nullptr) return -1;
  // The order and the limit sit inside the index subquery: at most one row comes back, the one
  // whose index box corner is nearest.
  return QueryLastKeyPoint(std::string("SELECT id,geom FROM keypoint WHERE ") +
                               "ROWID IN(SELECT pkid FROM idx_keypoint_geom WHERE " +
                               IndexBoxInside(extent.min_x, extent.min_y, extent.max_x,
                                              extent.max_y) +
                               " " + "ORDER BY Distance(MakePoint(xmin, ymin), MakePoint(" +
                               FormatDouble(position.X()) + "," + FormatDouble(position.Y()) +
                               ")) ASC LIMIT 1)",
                           out);
}

bool CSpatialiteEditorDB::QuerySiblingKeyPoint(CVector3D& out, int id, bool next) const {
  if (connection_->db == nullptr) return false;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(id, "[QuerySiblingKeyPoint_Query]:", polygonIndex, kptIndex)) {
    return false;
  }
  std::string sql = std::string("SELECT geom FROM keypoint WHERE ") + "polygon_index=" +
                    std::to_string(polygonIndex) + " AND " + "kpt_index";
  sql += next ? "> " + std::to_string(kptIndex) + " ORDER BY kpt_index ASC LIMIT 1"
              : "< " + std::to_string(kptIndex) + " ORDER BY kpt_index DESC LIMIT 1";
  CSqlStatement stmt(connection_->db, sql, "[QuerySiblingKeyPoint_Query]:");
  return stmt.StepRow() && ReadFirstPoint(stmt.ColumnBlob(0), stmt.ColumnBytes(0), out);
}

bool CSpatialiteEditorDB::CombineToData(IAnnotationFeature* feature) const {
  if (connection_->db == nullptr || feature == nullptr) return false;
  CSqlStatement stmt(connection_->db,
                     "SELECT polygon_index, geom FROM keypoint ORDER BY polygon_index, kpt_index",
                     "[CombineToData_Query]:");
  if (!stmt.IsValid()) return false;
  std::vector<CGeometryData> parts;
  CGeometryData current;
  bool started = false;
  int currentIndex = 0;
  int rc = SQLITE_ROW;
  while ((rc = stmt.Step()) == SQLITE_ROW) {
    const int polygonIndex = stmt.ColumnInt(0);
    if (!started || polygonIndex != currentIndex) {
      if (current.GetSize() > 0) parts.push_back(std::move(current));
      current = CGeometryData();
      currentIndex = polygonIndex;
      started = true;
    }
    // A row whose geometry cannot be read adds no vertex rather than a made-up one.
    CVector3D point;
    if (ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), point)) current.PushBack(point);
  }
  if (rc != SQLITE_DONE) {
    // Half the points would silently cut the feature: it keeps its geometry instead.
    stmt.LogError();
    return false;
  }
  if (current.GetSize() > 0) parts.push_back(std::move(current));
  feature->SetGeometryData(parts);
  return true;
}
