// Geometry and bounding boxes of CSpatialiteDBDataModel.
//
// A feature's geometry lives in `shape.geom` as a SpatiaLite blob (GeometryBlob.h). Replacing it
// deletes the feature's row and inserts a new one: the row gets a new row id (and so a new entry
// in the spatial index), `createtime` and `modifytime` fall back to their column defaults, and the
// order, status and other rows keyed by the uuid stay as they are. Nothing wraps the two
// statements, so an insert that fails leaves the feature without a row.
#include <sqlite3.h>
#include <spatialite/gaiageo.h>

#include <algorithm>
#include <cfloat>
#include <cstdlib>

#include "FeatureOption.h"
#include "GeometryBlob.h"
#include "SpatialiteBlob.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::FormatDouble;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

const char kModifyGeometryTag[] = "[CSpatialiteDBDataModel::ModifyGeometryData]: ";

// Grows `box` to hold the point (x, y).
void ExtendBox(EXTENT& box, double x, double y) {
  box.min_x = std::min(box.min_x, x);
  box.min_y = std::min(box.min_y, y);
  box.max_x = std::max(box.max_x, x);
  box.max_y = std::max(box.max_y, y);
}

}  // namespace

bool CSpatialiteDBDataModel::QueryGeometryData(const std::string& uuid,
                                               IAnnotationFeature* feature) {
  if (db_ == nullptr) return false;
  if (feature == nullptr) {
    ZuLogWarn << "[QueryGeometryData]:" << "no feature to fill for " << uuid;
    return false;
  }
  if (!IsSafeUUID(uuid, "[QueryGeometryData]:")) return false;
  CSqlStatement stmt(db_, "SELECT geom FROM shape WHERE uuid='" + uuid + "'",
                     "[QueryGeometryData]:");
  if (!stmt.IsValid() || !stmt.StepRow()) return false;
  const auto* blob = static_cast<const unsigned char*>(stmt.ColumnBlob(0));
  const int size = stmt.ColumnBytes(0);
  if (blob == nullptr) return false;  // a feature stored without geometry
  if (!AnnotationLayerNS::ConvertWkbGeomToFeature(feature, blob, size)) {
    ZuLogWarn << "[QueryGeometryData]:" << "unreadable geometry of " << uuid;
    return false;
  }
  return true;
}

EXTENT CSpatialiteDBDataModel::QueryBoundingBox(const std::string& uuid) {
  EXTENT extent;
  if (db_ == nullptr) return extent;
  if (!IsSafeUUID(uuid, "[QueryBoundingBox]:")) return extent;
  CSqlStatement stmt(db_, "SELECT geom FROM shape WHERE uuid='" + uuid + "'",
                     "[QueryBoundingBox]:");
  if (!stmt.IsValid() || !stmt.StepRow()) return extent;
  AnnotationLayerInner::GaiaGeomCollPtr geom = AnnotationLayerInner::ParseSpatialiteBlob(
      static_cast<const unsigned char*>(stmt.ColumnBlob(0)), stmt.ColumnBytes(0));
  if (!geom) return extent;
  // The rectangle stored in the blob's header.
  extent.min_x = geom->MinX;
  extent.min_y = geom->MinY;
  extent.max_x = geom->MaxX;
  extent.max_y = geom->MaxY;
  return extent;
}

bool CSpatialiteDBDataModel::ModifyGeometryData(const std::string& uuid,
                                                IAnnotationFeature* feature) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, kModifyGeometryTag)) return false;

  // What the replacement row keeps of the old one.
  CFeatureOption kept;
  {
    CSqlStatement stmt(db_,
                       "SELECT puuid, type, name, index_id FROM shape WHERE uuid = '" + uuid + "'",
                       "[ModifyGeometryData_Query]:");
    if (!stmt.IsValid()) return false;
    const int rc = stmt.Step();
    if (rc == SQLITE_ROW) {
      kept.SetUUID(uuid);
      kept.SetParentUUID(stmt.ColumnText(0, false));
      kept.SetType(static_cast<E_ANNOTATION_TYPE>(stmt.ColumnInt(1)));
      kept.SetName(stmt.ColumnText(2, true));
      kept.SetIndexArrayString(stmt.ColumnText(3, false));
    } else if (rc != SQLITE_DONE) {
      stmt.LogError();
      return false;
    }
  }
  if (kept.GetUUID().empty()) {
    ZuLogWarn << kModifyGeometryTag << Utf8ToLocal("UUID为空");
    return false;
  }

  if (!ExecSql(db_, "DELETE FROM 'main'.'shape' WHERE uuid = '" + uuid + "'",
               "[ModifyGeometryData_Delete]:")) {
    return false;
  }

  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'shape'(") +
                         " 'uuid', 'puuid', 'type', 'name', 'index_id', 'geom') VALUES( " +
                         " ?, ?, ?, ?, ?, ?)",
                     "[ModifyGeometryData_Insert]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, kept.GetUUID(), false);
  stmt.BindText(2, kept.GetParentUUID(), false);
  stmt.BindInt(3, kept.GetType());
  stmt.BindText(4, kept.GetName(), true);
  stmt.BindText(5, kept.GetIndexArrayString(), false);
  // SQLite owns the blob from here on, also when the bind fails; a null blob binds NULL.
  int size = 0;
  unsigned char* blob = AnnotationLayerNS::ConvertFeatureToWkbGeom(size, feature);
  sqlite3_bind_blob(stmt.Get(), 6, blob, size, free);
  if (stmt.Step() != SQLITE_DONE) {
    ZuLogError(-1) << "[ModifyGeometryData_Insert] Failed " << uuid << " " << AnnotationLayerInner::ErrorMessage(db_);
    return false;
  }
  return true;
}

bool CSpatialiteDBDataModel::DirtyLayerBoundingBox(const std::string& layerUuid) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[DirtyLayerBoundingBox_Query]:")) return false;

  // An empty box is inverted as far as doubles go; a layer without features keeps it.
  EXTENT box;
  box.min_x = box.min_y = DBL_MAX;
  box.max_x = box.max_y = -DBL_MAX;
  {
    CSqlStatement stmt(db_, "SELECT uuid FROM shape WHERE puuid='" + layerUuid + "'",
                       "[DirtyLayerBoundingBox_Query]:");
    if (!stmt.IsValid()) return false;
    int rc = SQLITE_ROW;
    while ((rc = stmt.Step()) == SQLITE_ROW) {
      // Through the interface, so that a derived model's boxes count.
      const EXTENT extent = QueryBoundingBox(stmt.ColumnText(0, false));
      ExtendBox(box, extent.min_x, extent.min_y);
      ExtendBox(box, extent.max_x, extent.max_y);
    }
    if (rc != SQLITE_DONE) {
      stmt.LogError();
      return false;
    }
  }

  return ExecSql(db_,
                 std::string("UPDATE 'main'.'layer' SET") + " 'min_x'=" + FormatDouble(box.min_x) +
                     "," + " 'min_y'=" + FormatDouble(box.min_y) + "," +
                     " 'max_x'=" + FormatDouble(box.max_x) + "," +
                     " 'max_y'=" + FormatDouble(box.max_y) + " WHERE" + " uuid = '" + layerUuid +
                     "'",
                 "[DirtyLayerBoundingBox_Update]:");
}
