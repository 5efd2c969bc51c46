// Insertion and deletion of folders, layers and features.
//
// A new node is written as its order row, then its status rows (whose row ids make up the node's
// index array), then the node row. A failed order or status row is recorded in the record's result
// marks and logged as a warning, and the insert goes on; only a failed node row fails the insert.
// Nothing is rolled back here: callers that need atomicity wrap the calls in a transaction.
#include <sqlite3.h>

#include "AnnotationLayerNS.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerBatchDeleter.h"
#include "LayerOption.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::JoinIds;

namespace {

// Result marks of an insert.
constexpr int kMarkOrderFailed = 2;
constexpr int kMarkStatusFailed = 16;

// Inserts one status row and collects its id. `type` < 0 means the statement carries type 1 as a
// constant; otherwise it is bound as parameter 2.
bool InsertStatusRow(sqlite3* db, const std::string& sql, const std::string& uuid, int type,
                     int value, const std::string& tag, std::vector<int64_t>& ids) {
  CSqlStatement stmt(db, sql, tag);
  if (!stmt.IsValid()) return false;
  int index = 1;
  stmt.BindText(index++, uuid, false);
  if (type >= 0) stmt.BindInt(index++, type);
  stmt.BindInt(index, value);
  if (!stmt.StepDone()) return false;
  ids.push_back(static_cast<int64_t>(sqlite3_last_insert_rowid(db)));
  return true;
}

}  // namespace

bool CSpatialiteDBDataModel::InsertFolderStatus(const CFolderOption& option,
                                                std::vector<int64_t>& ids) {
  return InsertStatusRow(db_,
                         std::string("INSERT INTO 'main'.'folder_status'(") +
                             " 'puuid', 'type', 'value', 'data') VALUES( " + " ?, 1, ?, NULL)",
                         option.GetUUID(), -1, option.GetStatusMask(), "[InsertFolderStatus]:",
                         ids);
}

bool CSpatialiteDBDataModel::InsertLayerStatus(const CLayerOption& option,
                                               std::vector<int64_t>& ids) {
  const std::string sql = std::string("INSERT INTO 'main'.'layer_status'(") +
                          " 'puuid', 'type', 'value', 'data') VALUES( " + " ?, ?, ?, NULL)";
  const bool status = InsertStatusRow(db_, sql, option.GetUUID(), 1, option.GetStatusMask(),
                                      "[InsertLayerStatus] type=1:", ids);
  const bool maxCount = InsertStatusRow(db_, sql, option.GetUUID(), 2,
                                        option.GetChildNodeMaxCount(),
                                        "[InsertLayerStatus] type=2:", ids);
  return status && maxCount;
}

bool CSpatialiteDBDataModel::InsertFeatureStatus(const CFeatureOption& option,
                                                 std::vector<int64_t>& ids) {
  return InsertStatusRow(db_,
                         std::string("INSERT INTO 'main'.'shape_status'(") +
                             " 'puuid', 'type', 'value', 'data') VALUES( " + " ?, 1, ?, NULL)",
                         option.GetUUID(), -1, option.GetStatusMask(), "[InsertFeatureStatus]:",
                         ids);
}

bool CSpatialiteDBDataModel::InsertFolder(CFolderOption& option) {
  if (db_ == nullptr) return false;
  if (option.GetUUID().empty()) option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  const std::string& uuid = option.GetUUID();
  option.SetResult(0);

  if (!InsertFolderOrder(uuid, option)) {
    option.SetResult(option.GetResult() | kMarkOrderFailed);
    ZuLogWarn << "[InsertFolderOrder] Failed " << uuid;
  }
  std::vector<int64_t> statusIds;
  InsertFolderStatus(option, statusIds);
  if (statusIds.empty()) {
    option.SetResult(option.GetResult() | kMarkStatusFailed);
    ZuLogWarn << "[InsertFolderStatus] Failed " << uuid;
  }
  option.SetIndexArray(statusIds);

  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'folder'(") +
                         " 'uuid', 'puuid', 'type', 'name', 'index_id') VALUES(" + "?,?,?,?,?)",
                     "[InsertFolder]:");
  bool ok = stmt.IsValid();
  if (ok) {
    stmt.BindText(1, uuid, false);
    stmt.BindText(2, option.GetParentUUID(), false);
    stmt.BindInt(3, option.GetType());
    stmt.BindText(4, option.GetName(), true);
    stmt.BindText(5, option.GetIndexArrayString(), false);
    ok = stmt.Step() == SQLITE_DONE;
    if (!ok) stmt.LogError(uuid + " ");
  }
  if (!ok) {
    option.SetResult(-1);
    return false;
  }
  NotifyFolderChanged(option);
  return true;
}

bool CSpatialiteDBDataModel::InsertLayer(CLayerOption& option) {
  if (db_ == nullptr) return false;
  if (option.GetUUID().empty()) option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  const std::string& uuid = option.GetUUID();
  option.SetResult(0);

  if (!InsertLayerOrder(uuid, option)) {
    option.SetResult(option.GetResult() | kMarkOrderFailed);
    ZuLogWarn << "[InsertLayerOrder] Failed " << uuid;
  }
  std::vector<int64_t> statusIds;
  InsertLayerStatus(option, statusIds);
  if (statusIds.empty()) {
    option.SetResult(option.GetResult() | kMarkStatusFailed);
    ZuLogWarn << "[InsertLayerStatus] Failed " << uuid;
  }
  option.SetIndexArray(statusIds, std::vector<int64_t>());

  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'layer'(") +
                         " 'uuid', 'folder_puuid', 'layer_puuid', 'type', 'name'," +
                         " 'min_level', 'max_level', 'min_name_level', 'max_name_level'," +
                         " 'min_x', 'min_y', 'max_x', 'max_y', 'wkt', 'property_header', "
                         "'index_id') VALUES(" +
                         " ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     "[InsertLayer]:");
  bool ok = stmt.IsValid();
  if (ok) {
    const EXTENT& extent = option.GetExtent();
    stmt.BindText(1, uuid, false);
    stmt.BindText(2, option.IsLayerParent() ? std::string() : option.GetParentUUID(), false);
    stmt.BindText(3, option.IsLayerParent() ? option.GetParentUUID() : std::string(), false);
    stmt.BindInt(4, option.GetType());
    stmt.BindText(5, option.GetName(), true);
    stmt.BindInt(6, option.GetMinLevel());
    stmt.BindInt(7, option.GetMaxLevel());
    stmt.BindInt(8, option.GetMinNameLevel());
    stmt.BindInt(9, option.GetMaxNameLevel());
    stmt.BindDouble(10, extent.min_x);
    stmt.BindDouble(11, extent.min_y);
    stmt.BindDouble(12, extent.max_x);
    stmt.BindDouble(13, extent.max_y);
    stmt.BindText(14, option.GetWkt(), false);
    stmt.BindText(15, option.GetPropertyHeader(), true);
    stmt.BindText(16, option.GetIndexArrayString(), false);
    ok = stmt.Step() == SQLITE_DONE;
    if (!ok) stmt.LogError(uuid + " ");
  }
  if (!ok) {
    option.SetResult(-1);
    return false;
  }
  NotifyLayerChanged(option);
  return true;
}

bool CSpatialiteDBDataModel::InsertFeature(CFeatureOption& option, IAnnotationFeature* feature) {
  if (db_ == nullptr) return false;
  if (option.GetUUID().empty()) option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  const std::string& uuid = option.GetUUID();
  option.SetResult(0);

  if (!InsertFeatureOrder(uuid, option)) {
    option.SetResult(option.GetResult() | kMarkOrderFailed);
    ZuLogWarn << "[InsertFeatureOrder] Failed " << uuid;
  }
  std::vector<int64_t> statusIds;
  InsertFeatureStatus(option, statusIds);
  if (statusIds.empty()) {
    option.SetResult(option.GetResult() | kMarkStatusFailed);
    ZuLogWarn << "[InsertFeatureStatus] Failed " << uuid;
  }
  if (feature != nullptr) return InsertFeatureWithData(option, statusIds, feature);

  option.SetIndexArray(statusIds, {}, {}, {});
  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'shape'(") +
                         " 'uuid', 'puuid', 'type', 'name', 'index_id') VALUES( " +
                         " ?, ?, ?, ?, ?)",
                     "[InsertFeature] Failed ");
  bool ok = stmt.IsValid();
  if (ok) {
    stmt.BindText(1, uuid, false);
    stmt.BindText(2, option.GetParentUUID(), false);
    stmt.BindInt(3, option.GetType());
    stmt.BindText(4, option.GetName(), true);
    stmt.BindText(5, option.GetIndexArrayString(), false);
    ok = stmt.Step() == SQLITE_DONE;
    if (!ok) stmt.LogError(uuid + " ");
  }
  if (!ok) option.SetResult(-1);
  return ok;
}

bool CSpatialiteDBDataModel::QueryTableIndexes(const char* table, const std::string& uuid,
                                               std::string& indexText) {
  if (db_ == nullptr) return false;
  CSqlStatement stmt(db_,
                     std::string("SELECT index_id") + " FROM " + table + " WHERE" + " uuid = '" +
                         uuid + "'",
                     "[QueryTableIndexes]:");
  if (!stmt.IsValid()) return false;
  if (!stmt.StepRow()) {
    ZuLogWarn << "[QueryTableIndexes]:" << "no " << table << " " << uuid;
    return false;
  }
  indexText = stmt.ColumnText(0, false);
  return true;
}

// Folders and layers go with their whole subtree through the batch deleter, which also rebuilds
// the node cache afterwards.
bool CSpatialiteDBDataModel::DeleteFolder(const std::string& uuid) {
  if (db_ == nullptr) return false;
  std::string indexText;
  if (!QueryTableIndexes("folder", uuid, indexText)) return false;
  UnlinkFolder(uuid);
  CLayerBatchDeleter deleter(this);
  deleter.BeginDelete(false, nullptr);
  const bool removed = deleter.BatchDeleteFolder(uuid);
  deleter.EndDelete();
  return removed;
}

bool CSpatialiteDBDataModel::DeleteLayer(const std::string& uuid) {
  if (db_ == nullptr) return false;
  std::string indexText;
  if (!QueryTableIndexes("layer", uuid, indexText)) return false;
  UnlinkComposite(uuid, true);
  CLayerBatchDeleter deleter(this);
  deleter.BeginDelete(false, nullptr);
  const bool removed = deleter.BatchDeleteLayer(uuid);
  deleter.EndDelete();
  return removed;
}

bool CSpatialiteDBDataModel::DeleteFeature(const std::string& uuid) {
  if (db_ == nullptr) return false;
  std::string indexText;
  if (!QueryTableIndexes("shape", uuid, indexText)) return false;
  UnlinkComposite(uuid, false);

  CFeatureOption indexes(uuid);
  indexes.SetIndexArrayString(indexText);
  const struct {
    const char* table;
    std::vector<int64_t> ids;
  } satellites[] = {{"shape_status", indexes.GetIndexStatus()},
                    {"shape_property", indexes.GetIndexProperty()},
                    {"shape_userdata", indexes.GetIndexUserdata()},
                    {"shape_enclosure", indexes.GetIndexEnclosure()}};
  for (const auto& satellite : satellites) {
    if (satellite.ids.empty()) continue;
    ExecSql(db_,
            std::string("DELETE FROM 'main'.'") + satellite.table + "' WHERE id in(" +
                JoinIds(satellite.ids) + ")",
            "[DeleteFeature]:");
  }
  // Style rows are keyed by the owner alone; they go with the feature too.
  ExecSql(db_, "DELETE FROM 'main'.'shape_style' WHERE puuid = '" + uuid + "'",
          "[DeleteFeature]:");
  ExecSql(db_, "DELETE FROM 'main'.'shape_order' WHERE uuid = '" + uuid + "'",
          "[DeleteFeature]:");
  return ExecSql(db_, "DELETE FROM 'main'.'shape' WHERE uuid = '" + uuid + "'",
                 "[DeleteFeature]:");
}
