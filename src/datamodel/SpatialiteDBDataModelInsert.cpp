// Insertion and deletion of folders, layers and features.
//
// A new node is written as its order row, then its status rows (whose row ids make up the node's
// index array), then the node row. A failed order or status row is recorded in the record's result
// marks and logged as a warning, and the insert goes on; only a failed node row fails the insert.
// Nothing is rolled back here: callers that need atomicity wrap the calls in a transaction.
#include <sqlite3.h>

#include <cstdlib>

#include "AnnotationLayerNS.h"
#include "FeatureFieldSet.h"
#include "FeatureOption.h"
#include "FieldList.h"
#include "FieldValueText.h"
#include "FolderOption.h"
#include "GeometryBlob.h"
#include "LayerBatchDeleter.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "StatementCache.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::JoinIds;

namespace {

// The style format number written with the style of a feature inserted with its object, the
// same as the batch importer's.
constexpr int kFeatureStyleFormat = 3;

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

// The opening shared by every node insert: a uuid when the record has none, the result marks
// reset, then the order row and the status rows. A failure of either is marked and warned about
// and the insert goes on. Returns the ids of the status rows written.
template <typename Option, typename InsertOrder, typename InsertStatus>
std::vector<int64_t> WriteOrderAndStatus(Option& option, InsertOrder insertOrder,
                                         InsertStatus insertStatus, const char* orderWarning,
                                         const char* statusWarning) {
  if (option.GetUUID().empty()) option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  option.SetResult(0);
  if (!insertOrder()) {
    option.SetResult(option.GetResult() | kMarkOrderFailed);
    ZuLogWarn << orderWarning << option.GetUUID();
  }
  std::vector<int64_t> statusIds;
  insertStatus(statusIds);
  if (statusIds.empty()) {
    option.SetResult(option.GetResult() | kMarkStatusFailed);
    ZuLogWarn << statusWarning << option.GetUUID();
  }
  return statusIds;
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
  const std::vector<int64_t> statusIds = WriteOrderAndStatus(
      option, [&] { return InsertFolderOrder(option.GetUUID(), option); },
      [&](std::vector<int64_t>& ids) { InsertFolderStatus(option, ids); },
      "[InsertFolderOrder] Failed ", "[InsertFolderStatus] Failed ");
  const std::string& uuid = option.GetUUID();
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
  const std::vector<int64_t> statusIds = WriteOrderAndStatus(
      option, [&] { return InsertLayerOrder(option.GetUUID(), option); },
      [&](std::vector<int64_t>& ids) { InsertLayerStatus(option, ids); },
      "[InsertLayerOrder] Failed ", "[InsertLayerStatus] Failed ");
  const std::string& uuid = option.GetUUID();
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
  std::vector<int64_t> statusIds = WriteOrderAndStatus(
      option, [&] { return InsertFeatureOrder(option.GetUUID(), option); },
      [&](std::vector<int64_t>& ids) { InsertFeatureStatus(option, ids); },
      "[InsertFeatureOrder] Failed ", "[InsertFeatureStatus] Failed ");
  const std::string& uuid = option.GetUUID();
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

// Read once per feature by the visibility lookups, so the prepared statement is reused.
bool CSpatialiteDBDataModel::QueryTableIndexes(const char* table, const std::string& uuid,
                                               std::string& indexText) {
  if (db_ == nullptr) return false;
  CCachedStatement stmt = statements_->Get(
      db_, std::string("SELECT index_id") + " FROM " + table + " WHERE" + " uuid = ?",
      "[QueryTableIndexes]:");
  if (!stmt) return false;
  stmt->BindText(1, uuid, false);
  if (!stmt->StepRow()) {
    ZuLogWarn << "[QueryTableIndexes]:" << "no " << table << " " << uuid;
    return false;
  }
  indexText = stmt->ColumnText(0, false);
  return true;
}

// Folders and layers go with their whole subtree through the batch deleter, which also rebuilds
// the node cache afterwards.
//
// A folder's deletion is done once the deleter's transaction is committed: it reports true then,
// whatever the deleter met on the way (each failure is logged there). The pass the deleter started
// ran inside the transaction, so the cache is rebuilt once more from the committed tree; Refresh
// refuses to start while a pass runs, hence the bounded wait for the deleter's pass first.
bool CSpatialiteDBDataModel::DeleteFolder(const std::string& uuid) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[DeleteFolder]:")) return false;
  std::string indexText;
  if (!QueryTableIndexes("folder", uuid, indexText)) return false;
  UnlinkFolder(uuid);
  CLayerBatchDeleter deleter(this);
  deleter.BeginDelete(false, nullptr);
  deleter.BatchDeleteFolder(uuid);
  deleter.EndDelete();
  if (calculator_) {
    constexpr int kPassWaitMs = 10000;
    calculator_->WaitForFinished(kPassWaitMs);
    calculator_->Refresh();
  }
  return true;
}

bool CSpatialiteDBDataModel::DeleteLayer(const std::string& uuid) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[DeleteLayer]:")) return false;
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
  if (!IsSafeUUID(uuid, "[DeleteFeature]:")) return false;
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

// A feature given with its object: its style row, one shape_property row per attribute field
// (their ids join the index array), then the node row with the geometry blob.
bool CSpatialiteDBDataModel::InsertFeatureWithData(CFeatureOption& option,
                                                   std::vector<int64_t>& statusIds,
                                                   IAnnotationFeature* feature) {
  const std::string& uuid = option.GetUUID();
  InsertStyle(uuid, feature->GetStyleSet(), kFeatureStyleFormat);

  std::vector<int64_t> propertyIds;
  CZuFieldSetObject fields;
  AnnotationLayerNS::FillFieldSetFromFeature(fields, feature);
  CSqlStatement insert(db_,
                       "INSERT INTO 'main'.'shape_property'('puuid', 'field_type', 'field_class', "
                       "'field_name', 'value') VALUES (?, ?, ?, ?, ?)",
                       "[InsertFeature] Property:");
  for (const CZuFieldSetObject::__tagField& field : AnnotationLayerInner::CollectFields(fields)) {
    if (field.key.empty() || !insert.IsValid()) continue;
    insert.BindText(1, uuid, false);
    insert.BindInt(2, field.type);
    insert.BindText(3, field.fieldClass, true);
    insert.BindText(4, field.key, true);
    insert.BindText(5, AnnotationLayerInner::FieldValueToColumn(field.type, field.value), false);
    if (insert.StepDone()) propertyIds.push_back(sqlite3_last_insert_rowid(db_));
    insert.Reset();
  }
  option.SetIndexArray(statusIds, propertyIds, {}, {});

  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'shape'(") +
                         " 'uuid', 'puuid', 'type', 'name', 'index_id', 'geom') VALUES( " +
                         " ?, ?, ?, ?, ?, ?)",
                     "[InsertFeature] WithData:");
  if (!stmt.IsValid()) {
    option.SetResult(-1);
    return false;
  }
  stmt.BindText(1, uuid, false);
  stmt.BindText(2, option.GetParentUUID(), false);
  stmt.BindInt(3, option.GetType());
  stmt.BindText(4, option.GetName(), true);
  stmt.BindText(5, option.GetIndexArrayString(), false);
  int size = 0;
  unsigned char* blob = AnnotationLayerNS::ConvertFeatureToWkbGeom(size, feature);
  if (blob != nullptr) {
    sqlite3_bind_blob(stmt.Get(), 6, blob, size, free);  // SQLite releases the blob
  } else {
    stmt.BindNull(6);
  }
  if (stmt.Step() != SQLITE_DONE) {
    ZuLogError(-1) << "[InsertFeature] Failed-Geom:" << uuid << " " << AnnotationLayerInner::ErrorMessage(db_);
    option.SetResult(-1);
    return false;
  }
  return true;
}
