// Styles and enclosures of CSpatialiteDBDataModel.
//
// A style is the JSON text of a CFeatureStyleSet (StyleJson.h) in `layer_style` or `shape_style`,
// one row per owner. A feature without its own style shows its layer's, and the features of a GIS
// layer share the layer's style: writing a style for one of them writes the layer's row.
//
// Enclosures are rows of `shape_enclosure`, found through the "e" part of the feature's index
// array; their content is a blob written and read on its own. Writing an enclosure record does not
// touch the feature's index array, and a new record does not learn its row id (see
// ModifyOrInsertEnclosure); callers that need it read "SELECT max(id) FROM shape_enclosure".
#include <sqlite3.h>

#include "AnnotationLayerNS.h"
#include "EnclosureOption.h"
#include "FeatureStyleSet.h"
#include "IndexArray.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "StyleJson.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::JoinIds;

namespace {

const char* StyleTable(bool isLayer) { return isLayer ? "layer_style" : "shape_style"; }

// Binds the columns that the enclosure update and insert share, in their order.
void BindEnclosure(CSqlStatement& stmt, const CEnclosureOption& option) {
  stmt.BindText(1, option.GetParentUUID(), false);
  stmt.BindInt(2, option.GetEnclosureType());
  stmt.BindText(3, option.GetDescription(), true);
  stmt.BindText(4, option.GetLocalPath(), true);
  stmt.BindText(5, option.GetUrl(), true);
}

}  // namespace

// --- Styles ---

bool CSpatialiteDBDataModel::QueryStyleInner(CFeatureStyleSet* styles, const std::string& uuid,
                                             bool isLayer) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[QueryStyleInner]:")) return false;
  CSqlStatement stmt(db_,
                     std::string("SELECT content") + " FROM " + StyleTable(isLayer) + " WHERE" +
                         " puuid = '" + uuid + "'",
                     "[QueryStyleInner]:");
  if (!stmt.IsValid() || !stmt.StepRow()) return false;
  // A row counts as found even when its text does not parse; FromJsonStyle logs that.
  AnnotationLayerNS::FromJsonStyle(styles, stmt.ColumnText(0, true));
  return true;
}

std::string CSpatialiteDBDataModel::QueryFeatureParent(const std::string& featureUuid) {
  if (db_ == nullptr) return std::string();
  if (!IsSafeUUID(featureUuid, "[QueryFeatureParent]:")) return std::string();
  return QueryFirstText("SELECT puuid FROM shape WHERE" + std::string(" uuid = '") + featureUuid +
                            "'",
                        "[QueryFeatureParent]:");
}

bool CSpatialiteDBDataModel::QueryStyle(CFeatureStyleSet* styles, const std::string& uuid,
                                        bool isLayer) {
  if (db_ == nullptr) return false;
  if (styles == nullptr) {
    ZuLogWarn << "[QueryStyle]:" << "no style set to fill for " << uuid;
    return false;
  }
  if (!IsSafeUUID(uuid, "[QueryStyle]:")) return false;
  if (QueryStyleInner(styles, uuid, isLayer)) return true;
  // A feature without a style of its own shows its layer's.
  const std::string parent = QueryFeatureParent(uuid);
  if (parent.empty()) return false;
  return QueryStyleInner(styles, parent, true);
}

std::string CSpatialiteDBDataModel::GetLayerUUIDForGisFeature(const std::string& featureUuid) {
  const std::string parent = QueryFeatureParent(featureUuid);
  if (parent.empty()) return std::string();
  if (!IsSafeUUID(parent, "[GetLayerUUIDForGisFeature]:")) return std::string();
  CSqlStatement stmt(db_,
                     "SELECT type FROM layer WHERE" + std::string(" uuid = '") + parent + "'",
                     "[GetLayerUUIDForGisFeature]:");
  if (!stmt.IsValid()) return std::string();
  if (stmt.Step() != SQLITE_ROW) {
    stmt.LogError();
    return std::string();
  }
  return AnnotationLayerNS::IsGISLayer(static_cast<E_LAYER_TYPE>(stmt.ColumnInt(0)))
             ? parent
             : std::string();
}

bool CSpatialiteDBDataModel::IsExistStyle(const std::string& uuid, bool isLayer) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[IsExistStyle]:")) return false;
  return QueryFirstInt(std::string("SELECT COUNT(*) FROM ") + StyleTable(isLayer) +
                           " WHERE puuid = '" + uuid + "'",
                       "[IsExistStyle]:", 0) > 0;
}

bool CSpatialiteDBDataModel::ModifyStyleInner(const std::string& uuid, bool isLayer,
                                              const std::string& json, int format) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[ModifyStyleInner]:")) return false;
  CSqlStatement stmt(db_,
                     std::string("UPDATE 'main'.'") + StyleTable(isLayer) + "' SET" +
                         " content=?," + " format=" + std::to_string(format) + " WHERE" +
                         " puuid = '" + uuid + "'",
                     "[ModifyStyleInner]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, json, true);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::InsertStyleInner(const std::string& uuid, bool isLayer,
                                              const std::string& json, int format) {
  if (db_ == nullptr) return false;
  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'") + StyleTable(isLayer) + "' (" +
                         " 'puuid', 'format', 'content') VALUES (" + " ?, ?, ?)",
                     "[InsertStyleInner]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, uuid, false);
  stmt.BindInt(2, format);
  stmt.BindText(3, json, true);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::InsertStyle(const std::string& featureUuid,
                                         const CFeatureStyleSet* styles, int format) {
  const std::string json = AnnotationLayerNS::ToJsonStyle(styles);
  if (json.empty()) return true;
  if (InsertStyleInner(featureUuid, false, json, format)) return true;
  ZuLogWarn << "[InsertStyle] Failed " << featureUuid;
  return false;
}

bool CSpatialiteDBDataModel::ModifyOrInsertStyle(const std::string& uuid,
                                                 const CFeatureStyleSet* styles, int format) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[ModifyOrInsertStyle]:")) return false;
  const std::string json = AnnotationLayerNS::ToJsonStyle(styles);
  if (json.empty()) {
    ZuLogWarn << "[ModifyOrInsertStyle]:" << "no style to write for " << uuid;
    return false;
  }
  std::string target = uuid;
  bool isLayer = IsLayerUUID(uuid);
  if (!isLayer) {
    const std::string layer = GetLayerUUIDForGisFeature(uuid);
    if (!layer.empty()) {
      target = layer;
      isLayer = true;
    }
  }
  if (IsExistStyle(target, isLayer)) return ModifyStyleInner(target, isLayer, json, format);
  return InsertStyleInner(target, isLayer, json, format);
}

// --- Enclosures ---

bool CSpatialiteDBDataModel::QueryEnclosure(const std::string& featureUuid,
                                            std::list<CEnclosureOption>& enclosures) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(featureUuid, "[QueryEnclosure]:")) return false;
  std::string indexText;
  if (!QueryTableIndexes("shape", featureUuid, indexText)) return false;
  const std::vector<int64_t> ids =
      AnnotationLayerInner::ParseIndexArray(indexText, AnnotationLayerInner::kIndexTagEnclosure);
  if (ids.empty()) return true;

  CSqlStatement stmt(db_,
                     "SELECT id, type, description, local_path, url FROM shape_enclosure WHERE "
                     "id in(" +
                         JoinIds(ids) + ")",
                     "[QueryEnclosure]:");
  if (!stmt.IsValid()) return false;
  int rc = SQLITE_ROW;
  while ((rc = stmt.Step()) == SQLITE_ROW) {
    CEnclosureOption option(stmt.ColumnInt(0), static_cast<E_ENCLOSURE_TYPE>(stmt.ColumnInt(1)));
    option.SetParentUUID(featureUuid);
    option.SetDescription(stmt.ColumnText(2, true));
    option.SetLocalPath(stmt.ColumnText(3, true));
    // A url empties the local path, so a row holding both comes back with the url only.
    option.SetUrl(stmt.ColumnText(4, true));
    option.SetChangeMask(0);  // as loaded
    enclosures.push_back(option);
  }
  if (rc != SQLITE_DONE) {
    stmt.LogError();
    return false;
  }
  return true;
}

std::vector<unsigned char> CSpatialiteDBDataModel::QueryEnclosureData(int id) {
  std::vector<unsigned char> bytes;
  if (db_ == nullptr) return bytes;
  CSqlStatement stmt(db_,
                     std::string("SELECT") + " content" + " FROM shape_enclosure WHERE" + " id =" +
                         std::to_string(id),
                     "[QueryEnclosureData]:");
  if (!stmt.IsValid() || !stmt.StepRow()) return bytes;
  const auto* data = static_cast<const unsigned char*>(stmt.ColumnBlob(0));
  const int count = stmt.ColumnBytes(0);
  if (data != nullptr && count > 0) bytes.assign(data, data + count);
  return bytes;
}

bool CSpatialiteDBDataModel::ModifyOrInsertEnclosure(CEnclosureOption& option) {
  if (db_ == nullptr) return false;
  const std::string tag = "[ModifyOrInsertEnclosure]:";
  if (option.GetID() > 0) {
    // The comma before WHERE makes SQLite refuse this statement at prepare, so an existing record
    // is never updated; the statement is kept as it is.
    CSqlStatement stmt(db_,
                       std::string("UPDATE 'main'.'shape_enclosure' SET") + " 'puuid'=?," +
                           " 'type'=?," + " 'description'=?," + " 'local_path'=?," +
                           " 'url'=?," + " WHERE" + " id = " + std::to_string(option.GetID()),
                       tag);
    if (!stmt.IsValid()) return false;
    BindEnclosure(stmt, option);
    if (!stmt.StepDone()) return false;
  } else {
    CSqlStatement stmt(db_,
                       std::string("INSERT INTO 'main'.'shape_enclosure' (") +
                           " 'puuid', 'type', 'description', 'local_path', 'url') VALUES (" +
                           " ?, ?, ?, ?, ?)",
                       tag);
    if (!stmt.IsValid()) return false;
    BindEnclosure(stmt, option);
    if (!stmt.StepDone()) return false;
    // The new id is taken only on SQLITE_DONE, which an aggregate never returns before its row:
    // the record keeps the id it had. Callers depend on that.
    CSqlStatement maxId(db_, "SELECT max(id) FROM shape_enclosure;", tag);
    if (maxId.IsValid() && maxId.Step() == SQLITE_DONE) option.SetID(maxId.ColumnInt(0));
  }
  option.SetChangeMask(0);
  return true;
}

bool CSpatialiteDBDataModel::ModifyEnclosureData(int id, const unsigned char* bytes, int count) {
  if (db_ == nullptr) return false;
  const std::string tag = "[ModifyEnclosureData]:";
  if (count < 0 || (bytes == nullptr && count > 0)) {
    ZuLogWarn << tag << "no content of " << count << " bytes for enclosure " << id;
    return false;
  }
  CSqlStatement stmt(db_,
                     "UPDATE 'main'.'shape_enclosure' SET content=? WHERE id = " +
                         std::to_string(id),
                     tag);
  if (!stmt.IsValid()) return false;
  // Not copied: the caller keeps the bytes alive until the step is done.
  sqlite3_bind_blob(stmt.Get(), 1, bytes, count, SQLITE_STATIC);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::DeleteEnclosure(int id) {
  if (db_ == nullptr) return false;
  return ExecSql(db_,
                 std::string("DELETE FROM 'main'.'shape_enclosure'") + " WHERE" + " id = " +
                     std::to_string(id),
                 "[DeleteEnclosure]:");
}
