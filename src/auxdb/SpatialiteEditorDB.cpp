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

CSpatialiteEditorDB::CSpatialiteEditorDB()
    : db_(nullptr),
      insertStatement_(std::make_unique<CSqlStatement>()),
      updateStatement_(std::make_unique<CSqlStatement>()) {}

CSpatialiteEditorDB::~CSpatialiteEditorDB() { ReleaseConnection(); }

bool CSpatialiteEditorDB::Open(const std::string& name, IAnnotationFeature* feature) {
  if (handler_) return true;
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
  handler_ = std::make_unique<CSpatialiteHandler>();
  const bool created = handler_->OpenByCreate(path);
  db_ = handler_->GetDB();
  if (!created || !CreateTable() || !handler_->AddGeometryColumn("keypoint", "geom", 1001)) {
    // A half-made scratch file serves nobody: it goes with the connection.
    ReleaseConnection();
    AnnotationLayerInner::RemoveCacheFile(path);
    return false;
  }
  path_ = path;
  BuildKeyPoint(feature);
  return true;
}

bool CSpatialiteEditorDB::IsOpened() const { return db_ != nullptr; }

bool CSpatialiteEditorDB::Close() {
  ReleaseConnection();
  if (!path_.empty()) AnnotationLayerInner::RemoveCacheFile(path_);
  path_.clear();
  return true;
}

void CSpatialiteEditorDB::ReleaseConnection() {
  insertStatement_->Finalize();
  updateStatement_->Finalize();
  if (handler_) handler_->Close();
  handler_.reset();
  db_ = nullptr;
}

bool CSpatialiteEditorDB::CreateTable() {
  return AnnotationLayerInner::ExecSql(db_,
                                       std::string("CREATE TABLE 'keypoint' (") +
                                           "'id' integer NOT NULL," + "'polygon_index' integer ," +
                                           "'kpt_index' integer ," + "PRIMARY KEY ('id')" + "); ",
                                       "[CreateTable]:");
}

void CSpatialiteEditorDB::BuildKeyPoint(IAnnotationFeature* feature) {
  if (feature == nullptr) return;
  handler_->Transaction();
  feature->TravelGeometryData(*this);
  handler_->Commit();
  // Single inserts are rare after the build; the statement is prepared again when needed.
  insertStatement_->Finalize();
}

void CSpatialiteEditorDB::ApplyGeometryData(IAnnotationFeature* feature, int partIndex,
                                            const CGeometryData& data) {
  for (int i = 0; i < data.GetSize(); ++i) InsertKeyPointInner(partIndex, i, data.At(i));
}

bool CSpatialiteEditorDB::InsertKeyPointInner(int polygonIndex, int kptIndex,
                                              const CVector3D& point) {
  if (db_ == nullptr) return false;
  if (insertStatement_->IsValid()) {
    insertStatement_->Reset();
  } else if (!insertStatement_->Prepare(
                 db_,
                 "INSERT INTO 'main'.'keypoint'('polygon_index', 'kpt_index', 'geom') "
                 "VALUES(?, ?, ?)",
                 "[InsertKeyPointInner_prepare]:")) {
    return false;
  }
  insertStatement_->BindInt(1, polygonIndex);
  insertStatement_->BindInt(2, kptIndex);
  BindPointBlob(insertStatement_->Get(), 3, point);
  if (insertStatement_->Step() != SQLITE_DONE) {
    ZuLogError(-1) << "[InsertKeyPointInner_Insert]:" << AnnotationLayerInner::ErrorMessage(db_);
    return false;
  }
  return true;
}

bool CSpatialiteEditorDB::QueryKeyPointPlace(int id, const std::string& tag, int& polygonIndex,
                                             int& kptIndex) const {
  CSqlStatement stmt(db_,
                     "SELECT polygon_index, kpt_index FROM keypoint WHERE id=" + std::to_string(id),
                     tag);
  if (!stmt.IsValid()) return false;
  if (stmt.Step() != SQLITE_ROW) {
    ZuLogError(-1) << tag << AnnotationLayerInner::ErrorMessage(db_);
    return false;
  }
  polygonIndex = stmt.ColumnInt(0);
  kptIndex = stmt.ColumnInt(1);
  return true;
}

int CSpatialiteEditorDB::InsertKeyPoint(int afterId, const CVector3D& point) {
  if (db_ == nullptr || afterId < 0) return -1;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(afterId, "[InsertKeyPoint_Query]:", polygonIndex, kptIndex)) return -1;
  handler_->Transaction();
  ModifyBatchOffsetKeyPoint(polygonIndex, kptIndex + 1);
  int id = -1;
  if (InsertKeyPointInner(polygonIndex, kptIndex + 1, point)) {
    id = static_cast<int>(sqlite3_last_insert_rowid(db_));
  }
  handler_->Commit();
  return id;
}

void CSpatialiteEditorDB::ModifyBatchOffsetKeyPoint(int polygonIndex, int fromKptIndex) {
  CSqlStatement stmt(db_,
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
  if (db_ == nullptr) return false;
  if (updateStatement_->IsValid()) {
    updateStatement_->Reset();
  } else if (!updateStatement_->Prepare(db_, "UPDATE 'main'.'keypoint' SET 'kpt_index'=? WHERE id=?",
                                        "[ModifyKeyPointInner_prepare]:")) {
    return false;
  }
  updateStatement_->BindInt(1, kptIndex);
  updateStatement_->BindInt(2, id);
  if (updateStatement_->Step() != SQLITE_DONE) {
    // The tag names an insert although this is an update; log readers search for it as it is.
    ZuLogError(-1) << "[ModifyKeyPointInner_Insert]:" << AnnotationLayerInner::ErrorMessage(db_);
    return false;
  }
  return true;
}

bool CSpatialiteEditorDB::RemoveKeyPoint(int id) {
  if (db_ == nullptr || id < 0) return false;
  return AnnotationLayerInner::ExecSql(
      db_, "DELETE FROM 'main'.'keypoint' WHERE id=" + std::to_string(id), "[RemoveKeyPoint]:");
}

bool CSpatialiteEditorDB::ReviseKeyPoint(int id, const CVector3D& point) {
  if (db_ == nullptr || id < 0) return false;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(id, "[ReviseKeyPoint_Query]:", polygonIndex, kptIndex)) return false;
  // Removal and reinsertion succeed or fail together, so a failed move never loses the point.
  handler_->Transaction();
  const bool moved = RemoveKeyPoint(id) && InsertKeyPointInner(polygonIndex, kptIndex, point);
  if (moved) {
    handler_->Commit();
  } else {
    handler_->RollBack();
  }
  return moved;
}

void CSpatialiteEditorDB::TravelViaExtent(const EXTENT& extent, int limit,
                                          IKeyPointVisitor& visitor) {
  if (db_ == nullptr) return;
  std::string sql = "SELECT id, geom FROM keypoint WHERE MbrIntersects(geom, BuildMbr(" +
                    FormatDouble(extent.min_x) + "," + FormatDouble(extent.min_y) + "," +
                    FormatDouble(extent.max_x) + "," + FormatDouble(extent.max_y) + "))" +
                    "AND ROWID IN(SELECT pkid FROM idx_keypoint_geom WHERE " +
                    IndexBoxInside(extent.min_x, extent.min_y, extent.max_x, extent.max_y) + ")";
  if (limit > 0) sql += " limit " + std::to_string(limit);
  CSqlStatement stmt(db_, sql, "[EditorDB::TravelViaExtent]:");
  while (stmt.StepRow()) {
    CVector3D point;  // stays at the origin when the geometry cannot be read
    ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), point);
    if (visitor.VisitKeyPoint(stmt.ColumnInt(0), point)) break;
  }
}

int CSpatialiteEditorDB::QueryLastKeyPoint(const std::string& sql, CVector3D& out) const {
  // Both queries log their prepare failures under the picking tag.
  CSqlStatement stmt(db_, sql, "[QueryPickedKeyPoint_intersected]:");
  int id = -1;
  while (stmt.StepRow()) {
    id = stmt.ColumnInt(0);
    ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1), out);
  }
  return id;
}

int CSpatialiteEditorDB::QueryPickedKeyPoint(CVector3D& out, const CVector3D& pick,
                                             double tolerance) const {
  if (db_ == nullptr) return -1;
  return QueryLastKeyPoint(std::string("SELECT id,geom FROM keypoint WHERE ") +
                               "ROWID IN(SELECT pkid FROM idx_keypoint_geom WHERE " +
                               IndexBoxInside(pick.X() - tolerance, pick.Y() - tolerance,
                                              pick.X() + tolerance, pick.Y() + tolerance) +
                               ")",
                           out);
}

int CSpatialiteEditorDB::QueryClosestKeyPoint(CVector3D& out, const EXTENT& extent,
                                              const CVector3D& position) const {
  if (db_ == nullptr) return -1;
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
  if (db_ == nullptr) return false;
  int polygonIndex = 0;
  int kptIndex = 0;
  if (!QueryKeyPointPlace(id, "[QuerySiblingKeyPoint_Query]:", polygonIndex, kptIndex)) {
    return false;
  }
  std::string sql = std::string("SELECT geom FROM keypoint WHERE ") + "polygon_index=" +
                    std::to_string(polygonIndex) + " AND " + "kpt_index";
  sql += next ? "> " + std::to_string(kptIndex) + " ORDER BY kpt_index ASC LIMIT 1"
              : "< " + std::to_string(kptIndex) + " ORDER BY kpt_index DESC LIMIT 1";
  CSqlStatement stmt(db_, sql, "[QuerySiblingKeyPoint_Query]:");
  return stmt.StepRow() && ReadFirstPoint(stmt.ColumnBlob(0), stmt.ColumnBytes(0), out);
}

bool CSpatialiteEditorDB::CombineToData(IAnnotationFeature* feature) const {
  if (db_ == nullptr || feature == nullptr) return false;
  CSqlStatement stmt(db_, "SELECT polygon_index, geom FROM keypoint ORDER BY polygon_index, kpt_index",
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
