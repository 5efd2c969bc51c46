// Walks over the tree, extent queries, counts and node kinds of CSpatialiteDBDataModel.
//
// A walk hands every node to the visitor with the path of its ancestors and its option record; the
// visitor's answer decides how the walk goes on (0 descend, 1 next sibling, 2 stop everything).
// Every walk returns the last answer it got, so 2 travels up through all levels.
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <unordered_set>

#include "AnnotationLayerNS.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "GeometryData.h"
#include "LayerOption.h"
#include "ListCycleGuard.h"
#include "NodeStatus.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "StatementCache.h"
#include "ZuLog.h"

using AnnotationLayerInner::FormatDouble;
using E_HANDLE_TYPE = IAnnotationDBObjectVisitor::E_HANDLE_TYPE;

namespace {

constexpr E_HANDLE_TYPE kContinue = IAnnotationDBObjectVisitor::HANDLE_TYPE_CONTINUE;
constexpr E_HANDLE_TYPE kSkip = IAnnotationDBObjectVisitor::HANDLE_TYPE_SKIP_CHILDREN;
constexpr E_HANDLE_TYPE kStop = IAnnotationDBObjectVisitor::HANDLE_TYPE_STOP;


const char* NodeTable(E_NODE_KIND kind) {
  switch (kind) {
    case NODE_KIND_FOLDER: return "folder";
    case NODE_KIND_LAYER: return "layer";
    case NODE_KIND_FEATURE: return "shape";
    default: return nullptr;
  }
}

std::string LimitText(int limit) { return std::to_string(limit < 0 ? -1 : limit); }

}  // namespace

std::string CSpatialiteDBDataModel::QueryFirstText(const std::string& sql, const std::string& tag) {
  CSqlStatement stmt(db_, sql, tag);
  return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string();
}

int64_t CSpatialiteDBDataModel::QueryFirstInt(const std::string& sql, const std::string& tag,
                                              int64_t fallback) {
  CSqlStatement stmt(db_, sql, tag);
  if (!stmt.StepRow() || stmt.ColumnIsNull(0)) return fallback;
  return stmt.ColumnInt64(0);
}

E_HANDLE_TYPE CSpatialiteDBDataModel::Travel(IAnnotationDBObjectVisitor* visitor) {
  if (db_ == nullptr || visitor == nullptr) return kStop;
  const std::string top = QueryFirstText(std::string("SELECT uuid FROM folder WHERE") +
                                             " puuid = '' AND" + " uuid != ''" + " Limit 1",
                                         "[Travel]:");
  if (top.empty()) return kContinue;
  std::list<std::string> path;
  return TravelFolderList(visitor, top, path, "[Travel]:");
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelFolder(IAnnotationDBObjectVisitor* visitor,
                                                   const std::string& folderUuid) {
  if (db_ == nullptr || visitor == nullptr) return kStop;
  if (!IsSafeUUID(folderUuid, "[TravelFolder]:")) return kStop;
  std::list<std::string> path;
  QueryParentUUIDList(path, folderUuid);
  path.push_back(folderUuid);
  E_HANDLE_TYPE result = TravelFolderForFolderChildren(visitor, folderUuid, path);
  if (result != kStop) result = TravelFolderForLayerChildren(visitor, folderUuid, path);
  return result;
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelLayerChildren(IAnnotationDBObjectVisitor* visitor,
                                                          const std::string& layerUuid) {
  if (db_ == nullptr || visitor == nullptr) return kStop;
  if (!IsSafeUUID(layerUuid, "[TravelLayerChildren]:")) return kStop;
  std::list<std::string> path;
  QueryParentUUIDList(path, layerUuid);
  path.push_back(layerUuid);
  return TravelLayerForChildren(visitor, layerUuid, path);
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelFolderList(IAnnotationDBObjectVisitor* visitor,
                                                       const std::string& first,
                                                       std::list<std::string>& path,
                                                       const std::string& tag) {
  CSqlStatement right(db_,
                      std::string("SELECT") + " right_uuid" + " FROM folder_order WHERE" +
                          " folder_order.uuid = ?",
                      tag);
  if (!right.IsValid()) return kStop;
  E_HANDLE_TYPE result = kContinue;
  CListCycleGuard guard;
  std::string current = first;
  while (!current.empty()) {
    if (!guard.Step(current)) {
      ZuLogError(-1) << tag << "the sibling list of " << first << " runs in a cycle";
      break;
    }
    result = VisitFolder(visitor, current, path);
    if (result == kStop || visitor->IsAborted()) return kStop;
    right.BindText(1, current, false);
    current = right.StepRow() ? right.ColumnText(0, false) : std::string();
    right.Reset();
  }
  return result;
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelCompositeList(IAnnotationDBObjectVisitor* visitor,
                                                          const std::string& first, bool isLayer,
                                                          std::list<std::string>& path,
                                                          const std::string& tag) {
  const std::string columns = " right_shape_uuid,right_layer_uuid";
  CSqlStatement shapes(db_, std::string("SELECT") + columns + " FROM shape_order WHERE" +
                                " uuid = ?",
                       tag);
  CSqlStatement layers(db_, std::string("SELECT") + columns + " FROM layer_order WHERE" +
                                " uuid = ?",
                       tag);
  if (!shapes.IsValid() || !layers.IsValid()) return kStop;
  E_HANDLE_TYPE result = kContinue;
  CListCycleGuard guard;
  std::string current = first;
  while (!current.empty()) {
    if (!guard.Step(current)) {
      ZuLogError(-1) << tag << "the sibling list of " << first << " runs in a cycle";
      break;
    }
    result = isLayer ? VisitLayer(visitor, current, path) : VisitFeature(visitor, current, path);
    if (result == kStop || visitor->IsAborted()) return kStop;
    CSqlStatement& stmt = isLayer ? layers : shapes;
    stmt.BindText(1, current, false);
    std::string shapeNeighbour, layerNeighbour;
    if (stmt.StepRow()) {
      shapeNeighbour = stmt.ColumnText(0, false);
      layerNeighbour = stmt.ColumnText(1, false);
    }
    stmt.Reset();
    isLayer = !layerNeighbour.empty();
    current = isLayer ? layerNeighbour : shapeNeighbour;
  }
  return result;
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelFolderForFolderChildren(
    IAnnotationDBObjectVisitor* visitor, const std::string& uuid, std::list<std::string>& path) {
  if (db_ == nullptr) return kStop;
  const std::string any = QueryFirstText(
      "SELECT uuid FROM folder WHERE" + std::string(" puuid = '") + uuid + "'" + " Limit 1",
      "[TravelFolderForFolderChildren]:");
  if (any.empty()) return kContinue;
  return TravelFolderList(visitor, QueryLeftFirstFolder(any), path,
                          "[TravelFolderForFolderChildren]:");
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelFolderForLayerChildren(
    IAnnotationDBObjectVisitor* visitor, const std::string& uuid, std::list<std::string>& path) {
  if (db_ == nullptr) return kStop;
  const std::string any = QueryFirstText(
      "SELECT uuid FROM layer WHERE" + std::string(" folder_puuid = '") + uuid + "'" + " Limit 1",
      "[TravelFolderForLayerChildren]:");
  if (any.empty()) return kContinue;
  bool isLayer = true;
  const std::string first = QueryLeftFirstComposite(any, isLayer);
  return TravelCompositeList(visitor, first, isLayer, path, "[TravelFolderForLayerChildren]:");
}

E_HANDLE_TYPE CSpatialiteDBDataModel::TravelLayerForChildren(IAnnotationDBObjectVisitor* visitor,
                                                             const std::string& uuid,
                                                             std::list<std::string>& path) {
  if (db_ == nullptr) return kStop;
  // A GIS layer stores only the shape rows of its features, no order rows: its sibling list would
  // hold one feature. Its sub-layers are walked as a list, its features in the order they were
  // stored.
  const bool gis = AnnotationLayerNS::IsGISLayer(GetLayerType(uuid));
  bool isLayer = true;
  std::string any = QueryFirstText(
      "SELECT uuid FROM layer WHERE" + std::string(" layer_puuid = '") + uuid + "'" + " Limit 1",
      "[TravelLayerForChildren] Layer-Child:");
  if (any.empty() && !gis) {
    isLayer = false;
    any = QueryFirstText(
        "SELECT uuid FROM shape WHERE" + std::string(" puuid = '") + uuid + "'" + " Limit 1",
        "[TravelLayerForChildren] Feature-Child:");
  }
  E_HANDLE_TYPE result = kContinue;
  if (!any.empty()) {
    const std::string first = QueryLeftFirstComposite(any, isLayer);
    result = TravelCompositeList(visitor, first, isLayer, path, "[TravelLayerForChildren]:");
  }
  if (!gis || result == kStop) return result;
  CSqlStatement rows(db_, "SELECT uuid FROM shape WHERE puuid = ? ORDER BY ROWID",
                     "[TravelLayerForChildren] Feature-Child:");
  if (!rows.IsValid()) return kStop;
  rows.BindText(1, uuid, false);
  while (rows.StepRow()) {
    result = VisitFeature(visitor, rows.ColumnText(0, false), path);
    if (result == kStop || visitor->IsAborted()) return kStop;
  }
  return result;
}

namespace {

// A node that is its own ancestor exists only in a corrupted database; descending into it again
// would never end.
bool IsOnPath(const std::list<std::string>& path, const std::string& uuid) {
  if (std::find(path.begin(), path.end(), uuid) == path.end()) return false;
  ZuLogError(-1) << "[Travel]:" << uuid << " is its own ancestor";
  return true;
}

}  // namespace

E_HANDLE_TYPE CSpatialiteDBDataModel::VisitFolder(IAnnotationDBObjectVisitor* visitor,
                                                  const std::string& uuid,
                                                  std::list<std::string>& path) {
  if (IsOnPath(path, uuid)) return kSkip;
  const E_HANDLE_TYPE answer = visitor->ApplyFolder(this, path, uuid, QueryFolderOption(uuid));
  if (answer != kContinue) return answer;
  path.push_back(uuid);
  E_HANDLE_TYPE result = TravelFolderForFolderChildren(visitor, uuid, path);
  // A sub-folder walk that ended on 1 (its last folder was skipped) skips the layers as well.
  if (result != kSkip && result != kStop) {
    result = TravelFolderForLayerChildren(visitor, uuid, path);
  }
  path.pop_back();
  return result;
}

E_HANDLE_TYPE CSpatialiteDBDataModel::VisitLayer(IAnnotationDBObjectVisitor* visitor,
                                                 const std::string& uuid,
                                                 std::list<std::string>& path) {
  if (IsOnPath(path, uuid)) return kSkip;
  const E_HANDLE_TYPE answer = visitor->ApplyLayer(this, path, uuid, QueryLayerOption(uuid));
  if (answer != kContinue) return answer;
  path.push_back(uuid);
  const E_HANDLE_TYPE result = TravelLayerForChildren(visitor, uuid, path);
  path.pop_back();
  return result;
}

E_HANDLE_TYPE CSpatialiteDBDataModel::VisitFeature(IAnnotationDBObjectVisitor* visitor,
                                                   const std::string& uuid,
                                                   const std::list<std::string>& path) {
  if (visitor->IsOnlyUUID()) return visitor->ApplyFeature(this, path, uuid, CFeatureOption(uuid));
  return visitor->ApplyFeature(this, path, uuid, QueryFeatureOption(uuid));
}

bool CSpatialiteDBDataModel::TravelLayer(IAnnotationDBObjectVisitor* visitor,
                                         const std::string& layerUuid, int offset, int count) {
  if (db_ == nullptr || visitor == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[TravelLayer]:")) return false;
  CSqlStatement start(db_,
                      "SELECT ROWID FROM shape WHERE ROWID IN" +
                          std::string("(SELECT ROWID from shape WHERE puuid = '") + layerUuid +
                          "' limit " + std::to_string(offset) + ") order by ROWID desc limit 1",
                      "[TravelLayer-stage:For LastRowid]:");
  if (!start.IsValid()) return false;
  const int64_t firstRow = start.StepRow() ? start.ColumnInt64(0) : 0;
  start.Finalize();

  CSqlStatement page(db_,
                     "SELECT uuid FROM shape WHERE puuid = '" + layerUuid + "' and " + "rowid >=" +
                         std::to_string(firstRow) + " limit " + std::to_string(count),
                     "[TravelLayer-stage:Begin LastRowid]:");
  if (!page.IsValid()) return false;
  std::list<std::string> path;
  QueryParentUUIDList(path, layerUuid);
  path.push_back(layerUuid);
  while (page.StepRow()) {
    if (VisitFeature(visitor, page.ColumnText(0, false), path) == kStop) break;
  }
  return true;
}

bool CSpatialiteDBDataModel::VisitFeatureRows(IAnnotationDBObjectVisitor* visitor,
                                              const std::string& sql, const std::string& tag) {
  CSqlStatement rows(db_, sql, tag);
  if (!rows.IsValid()) return false;
  const bool wantPath = !visitor->IsOnlyUUID();
  while (rows.StepRow()) {
    const std::string uuid = rows.ColumnText(0, false);
    std::list<std::string> path;
    if (wantPath) QueryParentUUIDList(path, uuid);
    if (VisitFeature(visitor, uuid, path) == kStop || visitor->IsAborted()) break;
  }
  return true;
}

// The R*Tree prefilter keeps the features whose index box lies inside the rectangle; the rectangle
// form therefore finds the features within it (the polygon form below finds those meeting it).
bool CSpatialiteDBDataModel::TravelViaExtent(IAnnotationDBObjectVisitor* visitor,
                                             const EXTENT& extent, int limit) {
  if (db_ == nullptr || visitor == nullptr) return false;
  const std::string sql =
      "SELECT uuid FROM shape WHERE MbrIntersects(geom, BuildMbr(" + FormatDouble(extent.min_x) +
      ", " + FormatDouble(extent.min_y) + ", " + FormatDouble(extent.max_x) + ", " +
      FormatDouble(extent.max_y) + ")) " + "AND ROWID IN(SELECT pkid FROM idx_shape_geom WHERE" +
      " xmin >" + " " + FormatDouble(extent.min_x) + " AND" + " xmax <" + " " +
      FormatDouble(extent.max_x) + " AND" + " ymin >" + " " + FormatDouble(extent.min_y) +
      " AND" + " ymax <" + " " + FormatDouble(extent.max_y) + ")" + " limit" + " " +
      LimitText(limit);
  return VisitFeatureRows(visitor, sql, "[TravelViaExtent]:");
}

namespace {

// What the polygon walks take of a ring: its bounds and its coordinates as WKT text.
struct SRingText {
  double minX = 0, minY = 0, maxX = 0, maxY = 0;
  std::string coordinates;
};

bool ReadRing(const CGeometryData& ring, const char* tag, SRingText& text) {
  if (ring.GetSize() < 3) {
    ZuLogError(-1) << tag << "a polygon needs at least three vertices";
    return false;
  }
  text.minX = text.maxX = ring.At(0).X();
  text.minY = text.maxY = ring.At(0).Y();
  text.coordinates.clear();
  for (int i = 0; i < ring.GetSize(); ++i) {
    const CVector3D& v = ring.At(i);
    text.minX = std::min(text.minX, v.X());
    text.maxX = std::max(text.maxX, v.X());
    text.minY = std::min(text.minY, v.Y());
    text.maxY = std::max(text.maxY, v.Y());
    if (i > 0) text.coordinates += ", ";
    text.coordinates += FormatDouble(v.X()) + " " + FormatDouble(v.Y());
  }
  // WKT rings are closed; the caller's ring may leave that implicit.
  const CVector3D& first = ring.At(0);
  const CVector3D& last = ring.At(ring.GetSize() - 1);
  if (first.X() != last.X() || first.Y() != last.Y()) {
    text.coordinates += ", " + FormatDouble(first.X()) + " " + FormatDouble(first.Y());
  }
  return true;
}

// A bound as the text form of a statement gives it to SQLite: with 14 significant digits.
double AsSpliced(double value) {
  return std::strtod(FormatDouble(value).c_str(), nullptr);
}

}  // namespace

bool CSpatialiteDBDataModel::TravelViaExtent(IAnnotationDBObjectVisitor* visitor,
                                             const CGeometryData& ring, int limit) {
  if (db_ == nullptr || visitor == nullptr) return false;
  SRingText text;
  if (!ReadRing(ring, "[TravelViaExtent]:", text)) return false;
  const std::string sql =
      std::string("SELECT uuid FROM shape WHERE") + " " +
      "ROWID IN(SELECT pkid FROM idx_shape_geom WHERE" + " " + "(xmin <" + " " +
      FormatDouble(text.maxX) + " AND" + " xmax >" + " " + FormatDouble(text.minX) + ") AND (" +
      "ymin <" + " " + FormatDouble(text.maxY) + " AND" + " ymax >" + " " +
      FormatDouble(text.minY) + "))" + " AND MbrIntersects(GeomFromText('POLYGON((" +
      text.coordinates + "))'), geom)" + " limit" + " " + LimitText(limit);
  return VisitFeatureRows(visitor, sql, "[TravelViaExtent]:");
}

// The polygon walk above with each feature's link read in the same statement: a pass of the
// spatial engine wants the link of every feature of a view. The shape rows come first (a LEFT JOIN
// keeps its left table outside), so the rows keep the polygon walk's selection and order.
// Uuids are random, so a lookup by uuid touches an index page that no other feature of the view
// shares; at a million features those pages were most of a pass. The importer and the inserts
// write a feature's shape and order rows together, so in a file filled that way the order row has
// the shape row's row id: it is looked up there first, by row id and checked by uuid, and by uuid
// only when that misses (features of GIS layers have no order row and shift the pairing). The
// status row is joined by its id, taken from the usual index array ("s:<id>" at its start); the
// array is still parsed, and read as QueryFeatureLink reads it whenever it holds another status
// id or several.
bool CSpatialiteDBDataModel::TravelFeatureLinksViaExtent(IFeatureLinkVisitor* visitor,
                                                         const CGeometryData& ring, int limit) {
  if (db_ == nullptr || visitor == nullptr) return false;
  const char* tag = "[TravelFeatureLinksViaExtent]:";
  SRingText text;
  if (!ReadRing(ring, tag, text)) return false;
  const std::string statusId =
      "CASE WHEN substr(shape.index_id, 1, 2) = 's:' THEN CAST(substr(shape.index_id, 3) AS "
      "INTEGER) END";
  CSqlStatement rows(
      db_,
      "SELECT shape.uuid, shape.puuid, shape.index_id, shape.type, CASE WHEN paired.uuid IS NOT "
      "NULL THEN paired.order_num ELSE (SELECT order_num FROM shape_order WHERE uuid = "
      "shape.uuid) END, " +
          statusId +
          ", shape_status.value FROM shape LEFT JOIN shape_order AS paired ON paired.ROWID = "
          "shape.ROWID AND paired.uuid = shape.uuid LEFT JOIN shape_status ON shape_status.id = " +
          statusId +
          " AND shape_status.type = 1 WHERE shape.ROWID IN(SELECT pkid FROM idx_shape_geom WHERE "
          "(xmin < ? AND xmax > ?) AND (ymin < ? AND ymax > ?)) AND MbrIntersects(GeomFromText(?), "
          "shape.geom) LIMIT ?",
      tag);
  if (!rows.IsValid()) return false;
  rows.BindDouble(1, AsSpliced(text.maxX));
  rows.BindDouble(2, AsSpliced(text.minX));
  rows.BindDouble(3, AsSpliced(text.maxY));
  rows.BindDouble(4, AsSpliced(text.minY));
  rows.BindText(5, "POLYGON((" + text.coordinates + "))", false);
  rows.BindInt(6, limit < 0 ? -1 : limit);
  FeatureLink link;
  while (rows.StepRow()) {
    const std::string uuid = rows.ColumnText(0, false);
    link.parentUuid = rows.ColumnText(1, false);
    link.type = rows.ColumnIsNull(3) ? ANNOTATION_TYPE_UNKNOWN : rows.ColumnInt(3);
    link.orderNum = rows.ColumnIsNull(4) ? -1 : rows.ColumnInt(4);
    std::pair<int64_t, int64_t> joined(rows.ColumnInt64(5),
                                       rows.ColumnIsNull(6) ? 0 : rows.ColumnInt64(6));
    const FeatureLink* read = &link;
    if (!ReadFeatureChecked(rows.ColumnText(2, false), rows.ColumnIsNull(5) ? nullptr : &joined,
                            link.checked)) {
      read = nullptr;
    }
    if (visitor->ApplyFeatureLink(uuid, read) == kStop || visitor->IsAborted()) break;
  }
  return true;
}

bool CSpatialiteDBDataModel::TravelViaSQL(IAnnotationDBObjectVisitor* visitor, E_NODE_KIND kind,
                                          const std::string& condition) {
  const char* table = NodeTable(kind);
  if (db_ == nullptr || visitor == nullptr || table == nullptr) return false;
  const std::string sql = std::string("SELECT uuid FROM ") + table + " WHERE " + condition;
  CSqlStatement rows;
  if (!rows.Prepare(db_, sql, "[TravelViaSQL]:" + sql + " Error:")) return false;
  while (rows.StepRow()) {
    const std::string uuid = rows.ColumnText(0, false);
    std::list<std::string> path;
    QueryParentUUIDList(path, uuid);
    E_HANDLE_TYPE answer = kContinue;
    switch (kind) {
      case NODE_KIND_FOLDER:
        answer = visitor->ApplyFolder(this, path, uuid, QueryFolderOption(uuid));
        break;
      case NODE_KIND_LAYER:
        answer = visitor->ApplyLayer(this, path, uuid, QueryLayerOption(uuid));
        break;
      default:
        answer = VisitFeature(visitor, uuid, path);
        break;
    }
    if (answer == kStop || visitor->IsAborted()) break;
  }
  return true;
}

int CSpatialiteDBDataModel::CountChildren(const std::string& parentUuid, E_NODE_KIND parentKind) {
  if (db_ == nullptr) return -1;
  if (!IsSafeUUID(parentUuid, "[CountChildren]:")) return -1;
  auto count = [this](const char* table, const char* column, const std::string& uuid) {
    return QueryFirstInt(std::string("SELECT") + " COUNT(*)" + " FROM " + table + " WHERE" +
                             column + uuid + "'",
                         "[CountChildren]:", -1);
  };
  int64_t first = -1, second = -1;
  if (parentKind == NODE_KIND_FOLDER) {
    first = count("folder", " puuid = '", parentUuid);
    second = count("layer", " folder_puuid = '", parentUuid);
  } else if (parentKind == NODE_KIND_LAYER) {
    first = count("layer", " layer_puuid = '", parentUuid);
    second = count("shape", " puuid = '", parentUuid);
  }
  if (first < 0 || second < 0) return -1;
  return static_cast<int>(first + second);
}

int CSpatialiteDBDataModel::CountExtentFeature(const EXTENT& extent) {
  if (db_ == nullptr) return -1;
  const std::string sql =
      "SELECT COUNT(*) FROM shape WHERE MbrWithin(geom, BuildMbr(" + FormatDouble(extent.min_x) +
      ", " + FormatDouble(extent.min_y) + ", " + FormatDouble(extent.max_x) + ", " +
      FormatDouble(extent.max_y) + ")) " + "AND ROWID IN(SELECT pkid FROM idx_shape_geom WHERE" +
      " xmin >" + " " + FormatDouble(extent.min_x) + " AND" + " xmax <" + " " +
      FormatDouble(extent.max_x) + " AND" + " ymin >" + " " + FormatDouble(extent.min_y) +
      " AND" + " ymax <" + " " + FormatDouble(extent.max_y) + ")";
  return static_cast<int>(QueryFirstInt(sql, "[CountExtentFeature]:", -1));
}

E_NODE_KIND CSpatialiteDBDataModel::QueryNodeKind(const std::string& uuid) {
  if (db_ == nullptr) return NODE_KIND_NONE;
  for (E_NODE_KIND kind : {NODE_KIND_FOLDER, NODE_KIND_LAYER, NODE_KIND_FEATURE}) {
    if (IsExistNode(uuid, kind)) return kind;
  }
  return NODE_KIND_NONE;
}

bool CSpatialiteDBDataModel::IsExistNode(const std::string& uuid) {
  return QueryNodeKind(uuid) != NODE_KIND_NONE;
}

// One of the per-feature lookups: the uuid is bound rather than spliced so that the prepared
// statement can be reused.
bool CSpatialiteDBDataModel::IsExistNode(const std::string& uuid, E_NODE_KIND kind) {
  const char* table = NodeTable(kind);
  if (db_ == nullptr || table == nullptr) return false;
  const std::string tag = kind == NODE_KIND_FEATURE ? "[IsExistNode-Feature]:"
                          : kind == NODE_KIND_LAYER ? "[IsExistNode-Layer]:"
                                                    : "[IsExistNode-Folder]:";
  CCachedStatement stmt = statements_->Get(
      db_, std::string("SELECT COUNT(*) FROM ") + table + " WHERE" + " uuid = ?", tag);
  if (!stmt) return false;
  stmt->BindText(1, uuid, false);
  return stmt->StepRow() && stmt->ColumnInt(0) > 0;
}

bool CSpatialiteDBDataModel::IsFolderUUID(const std::string& uuid) {
  return IsExistNode(uuid, NODE_KIND_FOLDER);
}

bool CSpatialiteDBDataModel::IsLayerUUID(const std::string& uuid) {
  return IsExistNode(uuid, NODE_KIND_LAYER);
}

bool CSpatialiteDBDataModel::IsFeatureUUID(const std::string& uuid) {
  return IsExistNode(uuid, NODE_KIND_FEATURE);
}

E_FOLDER_TYPE CSpatialiteDBDataModel::GetFolderType(const std::string& uuid) {
  if (db_ == nullptr) return FOLDER_TYPE_UNKNOWN;
  if (!IsSafeUUID(uuid, "[GetFolderType]:")) return FOLDER_TYPE_UNKNOWN;
  return static_cast<E_FOLDER_TYPE>(QueryFirstInt(
      "SELECT type FROM folder WHERE uuid = '" + uuid + "'", "[GetFolderType]:", -1));
}

E_LAYER_TYPE CSpatialiteDBDataModel::GetLayerType(const std::string& uuid) {
  if (db_ == nullptr) return LAYER_TYPE_UNKNOWN;
  if (!IsSafeUUID(uuid, "[GetLayerType]:")) return LAYER_TYPE_UNKNOWN;
  return static_cast<E_LAYER_TYPE>(
      QueryFirstInt("SELECT type FROM layer WHERE uuid = '" + uuid + "'", "[GetLayerType]:", -1));
}

E_ANNOTATION_TYPE CSpatialiteDBDataModel::GetFeatureType(const std::string& uuid) {
  if (db_ == nullptr) return ANNOTATION_TYPE_UNKNOWN;
  CCachedStatement stmt =
      statements_->Get(db_, "SELECT type FROM shape WHERE uuid = ?", "[GetFeatureType]:");
  if (!stmt) return ANNOTATION_TYPE_UNKNOWN;
  stmt->BindText(1, uuid, false);
  if (!stmt->StepRow() || stmt->ColumnIsNull(0)) return ANNOTATION_TYPE_UNKNOWN;
  return static_cast<E_ANNOTATION_TYPE>(stmt->ColumnInt(0));
}

bool CSpatialiteDBDataModel::IsLayerExistFeature(const std::string& layerUuid) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[IsLayerExistFeature]:")) return false;
  return !QueryFirstText("SELECT uuid FROM shape WHERE puuid = '" + layerUuid + "' Limit 1",
                         "[IsLayerExistFeature]:")
              .empty();
}

bool CSpatialiteDBDataModel::IsLayerExistLayer(const std::string& layerUuid) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[IsLayerExistLayer]:")) return false;
  return !QueryFirstText("SELECT uuid FROM layer WHERE layer_puuid = '" + layerUuid + "' Limit 1",
                         "[IsLayerExistLayer]:")
              .empty();
}

bool CSpatialiteDBDataModel::QueryParentUUIDList(std::list<std::string>& ancestors,
                                                 const std::string& uuid) {
  ancestors.clear();
  if (db_ == nullptr) return false;
  E_NODE_KIND kind = QueryNodeKind(uuid);
  if (kind == NODE_KIND_NONE) return false;
  CCachedStatement featureParent =
      statements_->Get(db_, "SELECT puuid FROM shape WHERE uuid = ?", "[QueryParentUUIDList]:");
  CCachedStatement layerParent = statements_->Get(
      db_, "SELECT folder_puuid, layer_puuid FROM layer WHERE uuid = ?", "[QueryParentUUIDList]:");
  CCachedStatement folderParent =
      statements_->Get(db_, "SELECT puuid FROM folder WHERE uuid = ?", "[QueryParentUUIDList]:");
  if (!featureParent || !layerParent || !folderParent) return false;
  CSqlStatement& ofFeature = *featureParent;
  CSqlStatement& ofLayer = *layerParent;
  CSqlStatement& ofFolder = *folderParent;

  std::unordered_set<std::string> seen{uuid};
  std::string current = uuid;
  for (;;) {
    std::string parent;
    E_NODE_KIND parentKind = NODE_KIND_NONE;
    if (kind == NODE_KIND_FEATURE) {
      ofFeature.BindText(1, current, false);
      if (ofFeature.StepRow()) parent = ofFeature.ColumnText(0, false);
      ofFeature.Reset();
      parentKind = NODE_KIND_LAYER;
    } else if (kind == NODE_KIND_LAYER) {
      ofLayer.BindText(1, current, false);
      if (ofLayer.StepRow()) {
        const std::string layerParent = ofLayer.ColumnText(1, false);
        parent = layerParent.empty() ? ofLayer.ColumnText(0, false) : layerParent;
        parentKind = layerParent.empty() ? NODE_KIND_FOLDER : NODE_KIND_LAYER;
      }
      ofLayer.Reset();
    } else {
      ofFolder.BindText(1, current, false);
      if (ofFolder.StepRow()) parent = ofFolder.ColumnText(0, false);
      ofFolder.Reset();
      parentKind = NODE_KIND_FOLDER;
    }
    if (parent.empty()) return true;
    if (!seen.insert(parent).second) {
      ZuLogError(-1) << "[QueryParentUUIDList]:" << "the ancestors of " << uuid << " form a cycle";
      ancestors.clear();
      return false;
    }
    ancestors.push_front(parent);
    current = parent;
    kind = parentKind;
  }
}

bool CSpatialiteDBDataModel::QueryAncestorUUIDs(const std::string& uuid,
                                                std::list<std::string>& ancestors) {
  return QueryParentUUIDList(ancestors, uuid);
}

int CSpatialiteDBDataModel::GetNodeDepth(const std::string& uuid) {
  std::list<std::string> ancestors;
  if (!QueryParentUUIDList(ancestors, uuid)) return -1;
  return static_cast<int>(ancestors.size());
}

bool CSpatialiteDBDataModel::IsNodeVisible(const std::string& uuid) {
  if (db_ == nullptr) return false;
  std::string text;
  switch (QueryNodeKind(uuid)) {
    case NODE_KIND_FOLDER: {
      if (!QueryTableIndexes("folder", uuid, text)) return false;
      CFolderOption indexes(uuid);
      indexes.SetIndexArrayString(text);
      const int status = QueryFolderAttribute(indexes.GetIndexStatus());
      return status >= 0 && AnnotationLayerInner::CheckStateOfStatus(status) == 2;
    }
    case NODE_KIND_LAYER: {
      if (!QueryTableIndexes("layer", uuid, text)) return false;
      CLayerOption indexes(uuid);
      indexes.SetIndexArrayString(text);
      const int status = QueryLayerAttribute_Status(indexes.GetIndexStatus());
      return status >= 0 && AnnotationLayerInner::CheckStateOfStatus(status) == 2;
    }
    case NODE_KIND_FEATURE: {
      if (!QueryTableIndexes("shape", uuid, text)) return false;
      CFeatureOption indexes(uuid);
      indexes.SetIndexArrayString(text);
      const std::vector<int64_t> ids = indexes.GetIndexStatus();
      // Features of GIS layers have only their shape row: with no status of its own a feature is
      // checked, and its ancestors decide whether it shows.
      if (ids.empty()) return true;
      const int64_t status = QueryFirstInt("SELECT value FROM shape_status WHERE id in(" +
                                               AnnotationLayerInner::JoinIds(ids) + ")" +
                                               " AND type = 1",
                                           "[IsNodeVisible]:", 0);
      return (status & NODE_STATUS_CHECKED) != 0;
    }
    default:
      return false;
  }
}

// The calculator's per-feature read: the row, its order and its status by bound, prepared
// statements, where IsNodeVisible first asks each node table whether it holds the uuid.
bool CSpatialiteDBDataModel::QueryFeatureLink(const std::string& uuid, FeatureLink& link,
                                              bool withOrder) {
  if (db_ == nullptr) return false;
  CCachedStatement row = statements_->Get(
      db_,
      withOrder ? "SELECT shape.puuid, shape.index_id, shape.name, shape.type, "
                  "shape_order.order_num FROM shape LEFT JOIN shape_order ON shape_order.uuid = "
                  "shape.uuid WHERE shape.uuid = ?"
                : "SELECT puuid, index_id, name, type FROM shape WHERE uuid = ?",
      "[QueryFeatureLink]:");
  if (!row) return false;
  row->BindText(1, uuid, false);
  if (!row->StepRow()) return false;
  link.parentUuid = row->ColumnText(0, false);
  link.name = row->ColumnText(2, true);
  link.type = row->ColumnIsNull(3) ? ANNOTATION_TYPE_UNKNOWN : row->ColumnInt(3);
  link.orderNum = !withOrder || row->ColumnIsNull(4) ? -1 : row->ColumnInt(4);
  return ReadFeatureChecked(row->ColumnText(1, false), nullptr, link.checked);
}

bool CSpatialiteDBDataModel::ReadFeatureChecked(const std::string& indexText,
                                                const std::pair<int64_t, int64_t>* joined,
                                                bool& checked) {
  CFeatureOption indexes;
  indexes.SetIndexArrayString(indexText);
  const std::vector<int64_t> ids = indexes.GetIndexStatus();
  // As in IsNodeVisible: a feature without a status row of its own (in a GIS layer) is checked.
  int64_t status = NODE_STATUS_CHECKED;
  if (ids.size() == 1 && joined != nullptr && joined->first == ids.front()) {
    status = joined->second;
  } else if (ids.size() == 1) {
    CCachedStatement one = statements_->Get(
        db_, "SELECT value FROM shape_status WHERE id = ? AND type = 1", "[QueryFeatureLink]:");
    if (!one) return false;
    one->BindInt64(1, ids.front());
    status = one->StepRow() && !one->ColumnIsNull(0) ? one->ColumnInt64(0) : 0;
  } else if (!ids.empty()) {
    status = QueryFirstInt("SELECT value FROM shape_status WHERE id in(" +
                               AnnotationLayerInner::JoinIds(ids) + ")" + " AND type = 1",
                           "[IsNodeVisible]:", 0);
  }
  checked = (status & NODE_STATUS_CHECKED) != 0;
  return true;
}

// A node's own attribute: visible when its check state says so (folders and layers fully checked,
// features checked). A layer's levels come from QueryLayerAttribute_Exist, whose statement reads
// quoted column names and so yields 0 for every level; kept as it is.
CNodeAttribute CSpatialiteDBDataModel::QueryNodeAttribute(const std::string& uuid) {
  CNodeAttribute attribute;
  if (db_ == nullptr) {
    attribute.SetVisible(false);
    return attribute;
  }
  if (QueryNodeKind(uuid) == NODE_KIND_LAYER) {
    std::string ignoredIndexText;
    QueryLayerAttribute_Exist(uuid, attribute, ignoredIndexText);
  }
  attribute.SetVisible(IsNodeVisible(uuid));
  return attribute;
}

std::string CSpatialiteDBDataModel::QueryChildByOrder(const std::string& parentUuid, int index,
                                                      bool& isLayer) {
  isLayer = false;
  if (db_ == nullptr || index < 0) return std::string();
  const E_NODE_KIND kind = QueryNodeKind(parentUuid);
  // Collects children in sibling order until `index` is reached.
  class Finder : public IAnnotationDBObjectVisitor {
   public:
    explicit Finder(int target) : target_(target) {}
    E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>&,
                              const std::string& uuid, const CFolderOption&) override {
      return Take(uuid, false);
    }
    E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CLayerOption&) override {
      return Take(uuid, true);
    }
    E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                               const std::string& uuid, const CFeatureOption&) override {
      return Take(uuid, false);
    }
    bool IsOnlyUUID() override { return true; }
    std::string found;
    bool foundLayer = false;

   private:
    E_HANDLE_TYPE Take(const std::string& uuid, bool layer) {
      if (seen_++ < target_) return kSkip;
      found = uuid;
      foundLayer = layer;
      return kStop;
    }
    int target_;
    int seen_ = 0;
  } finder(index);

  std::list<std::string> path;
  if (kind == NODE_KIND_FOLDER) {
    if (TravelFolderForFolderChildren(&finder, parentUuid, path) != kStop) {
      TravelFolderForLayerChildren(&finder, parentUuid, path);
    }
  } else if (kind == NODE_KIND_LAYER) {
    TravelLayerForChildren(&finder, parentUuid, path);
  }
  isLayer = finder.foundLayer;
  return finder.found;
}
