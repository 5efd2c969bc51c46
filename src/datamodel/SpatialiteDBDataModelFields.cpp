// Attribute fields (shape_property), user data (layer_userdata, shape_userdata) and the layer's
// property header.
//
// Field rows belong to a node through their puuid and through the node's index array, which lists
// their ids ("p" for properties, "u" for user data). Reading goes through the index array, like
// every satellite read; writing keeps the index array in step by rewriting the node's index_id.
// Values are kept as text as FieldValueText.h describes.
#include <sqlite3.h>

#include <algorithm>

#include "FeatureOption.h"
#include "FieldList.h"
#include "FieldValueText.h"
#include "LayerHeaderList.h"
#include "LayerOption.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::FieldValueFromColumn;
using AnnotationLayerInner::FieldValueToColumn;
using AnnotationLayerInner::JoinIds;

// Where one kind of field rows lives.
struct CSpatialiteDBDataModel::FieldTable {
  const char* table;        // shape_property, layer_userdata or shape_userdata
  const char* nodeTable;    // shape or layer
  const char* typeColumn;   // field_type or data_type
  const char* nameColumn;   // field_name or key
  bool hasClass;            // shape_property has field_class
  char indexTag;            // 'p' or 'u'
  const char* tag;          // log tag
};

namespace {

const CSpatialiteDBDataModel::FieldTable kProperties = {
    "shape_property", "shape", "field_type", "field_name", true, 'p', "[FieldRows]:"};
const CSpatialiteDBDataModel::FieldTable kLayerUserData = {
    "layer_userdata", "layer", "data_type", "key", false, 'u', "[UserDataRows]:"};
const CSpatialiteDBDataModel::FieldTable kFeatureUserData = {
    "shape_userdata", "shape", "data_type", "key", false, 'u', "[UserDataRows]:"};

// The ids of one sub-array of an index text, read and written through the record of the node's
// kind so that the text keeps its canonical form.
std::vector<int64_t> IndexIds(const std::string& text, bool isLayer, char tag) {
  if (isLayer) {
    CLayerOption option;
    option.SetIndexArrayString(text);
    return tag == 'u' ? option.GetIndexUserdata() : option.GetIndexStatus();
  }
  CFeatureOption option;
  option.SetIndexArrayString(text);
  switch (tag) {
    case 'p': return option.GetIndexProperty();
    case 'u': return option.GetIndexUserdata();
    case 'e': return option.GetIndexEnclosure();
    default: return option.GetIndexStatus();
  }
}

std::string WithIndexIds(const std::string& text, bool isLayer, char tag,
                         const std::vector<int64_t>& ids) {
  if (isLayer) {
    CLayerOption option;
    option.SetIndexArray(IndexIds(text, true, 's'), tag == 'u' ? ids : IndexIds(text, true, 'u'));
    return option.GetIndexArrayString();
  }
  auto pick = [&](char which) { return which == tag ? ids : IndexIds(text, false, which); };
  CFeatureOption option;
  option.SetIndexArray(pick('s'), pick('p'), pick('u'), pick('e'));
  return option.GetIndexArrayString();
}

}  // namespace

const CSpatialiteDBDataModel::FieldTable* CSpatialiteDBDataModel::UserDataTable(
    const std::string& uuid) {
  switch (QueryNodeKind(uuid)) {
    case NODE_KIND_LAYER: return &kLayerUserData;
    case NODE_KIND_FEATURE: return &kFeatureUserData;
    default:
      ZuLogError(-1) << "[UserDataRows]:" << "no layer or feature " << uuid;
      return nullptr;
  }
}

bool CSpatialiteDBDataModel::ReadFieldRows(const FieldTable& table, const std::string& uuid,
                                           CZuFieldSetObject& fields) {
  fields.Cleanup();
  std::string indexText;
  if (!QueryTableIndexes(table.nodeTable, uuid, indexText)) return false;
  const std::vector<int64_t> ids =
      IndexIds(indexText, std::string(table.nodeTable) == "layer", table.indexTag);
  if (ids.empty()) return true;
  CSqlStatement stmt(db_,
                     std::string("SELECT ") + table.typeColumn + ", " + table.nameColumn +
                         ", value" + (table.hasClass ? ", field_class" : "") + " FROM " +
                         table.table + " WHERE id in(" + JoinIds(ids) + ") ORDER BY id",
                     table.tag);
  if (!stmt.IsValid()) return false;
  while (stmt.StepRow()) {
    const auto type = static_cast<E_FIELD_OFST_TYPE>(stmt.ColumnInt(0));
    fields.SetField(stmt.ColumnText(1, true), type, table.hasClass ? stmt.ColumnText(3, true) : "",
                    FieldValueFromColumn(type, stmt.ColumnText(2, false)));
  }
  fields.ResetChange();
  return true;
}

bool CSpatialiteDBDataModel::WriteFieldRows(const FieldTable& table, const std::string& uuid,
                                            CZuFieldSetObject& fields) {
  if (!IsSafeUUID(uuid, table.tag)) return false;
  std::string indexText;
  if (!QueryTableIndexes(table.nodeTable, uuid, indexText)) return false;
  const bool isLayer = std::string(table.nodeTable) == "layer";
  std::vector<int64_t> ids = IndexIds(indexText, isLayer, table.indexTag);

  // The node's existing rows by name, so that a changed field updates its row.
  std::vector<std::pair<std::string, int64_t>> existing;
  if (!ids.empty()) {
    CSqlStatement rows(db_,
                       std::string("SELECT id, ") + table.nameColumn + " FROM " + table.table +
                           " WHERE id in(" + JoinIds(ids) + ")",
                       table.tag);
    while (rows.StepRow()) existing.emplace_back(rows.ColumnText(1, true), rows.ColumnInt64(0));
  }
  auto rowOf = [&existing](const std::string& key) -> int64_t {
    for (const auto& row : existing) {
      if (row.first == key) return row.second;
    }
    return -1;
  };

  const std::string classColumn = table.hasClass ? ", 'field_class'" : "";
  CSqlStatement insert(db_,
                       std::string("INSERT INTO 'main'.'") + table.table + "'( 'puuid', '" +
                           table.typeColumn + "', '" + table.nameColumn + "', 'value'" +
                           classColumn + ") VALUES( ?, ?, ?, ?" + (table.hasClass ? ", ?" : "") +
                           ")",
                       table.tag);
  CSqlStatement update(db_,
                       std::string("UPDATE 'main'.'") + table.table + "' SET '" +
                           table.typeColumn + "'=?, 'value'=?" +
                           (table.hasClass ? ", 'field_class'=?" : "") + " WHERE id = ?",
                       table.tag);
  CSqlStatement remove(db_, std::string("DELETE FROM 'main'.'") + table.table + "' WHERE id = ?",
                       table.tag);
  if (!insert.IsValid() || !update.IsValid() || !remove.IsValid()) return false;

  // Copied out first: the set's lock is held while its visitor runs.
  std::vector<CZuFieldSetObject::__tagField> changes = AnnotationLayerInner::CollectFields(fields);
  changes.erase(std::remove_if(changes.begin(), changes.end(),
                               [](const CZuFieldSetObject::__tagField& field) {
                                 return field.state == CZuFieldSetObject::FIELD_STATE_UNCHANGED;
                               }),
                changes.end());

  bool ok = true;
  for (const CZuFieldSetObject::__tagField& field : changes) {
    const int64_t row = rowOf(field.key);
    if (field.state == CZuFieldSetObject::FIELD_STATE_REMOVED) {
      if (row < 0) continue;
      remove.BindInt64(1, row);
      ok = remove.StepDone() && ok;
      remove.Reset();
      ids.erase(std::remove(ids.begin(), ids.end(), row), ids.end());
      continue;
    }
    const std::string value = FieldValueToColumn(field.type, field.value);
    if (row >= 0) {
      update.BindInt(1, field.type);
      update.BindText(2, value, false);
      int next = 3;
      if (table.hasClass) update.BindText(next++, field.fieldClass, true);
      update.BindInt64(next, row);
      ok = update.StepDone() && ok;
      update.Reset();
      continue;
    }
    insert.BindText(1, uuid, false);
    insert.BindInt(2, field.type);
    insert.BindText(3, field.key, true);
    insert.BindText(4, value, false);
    if (table.hasClass) insert.BindText(5, field.fieldClass, true);
    if (insert.StepDone()) {
      const int64_t id = sqlite3_last_insert_rowid(db_);
      ids.push_back(id);
      existing.emplace_back(field.key, id);
    } else {
      ok = false;
    }
    insert.Reset();
  }
  if (!UpdateIndexText(table.nodeTable, uuid, WithIndexIds(indexText, isLayer, table.indexTag, ids),
                       table.tag)) {
    ok = false;
  }
  if (ok) fields.ResetChange();
  return ok;
}

bool CSpatialiteDBDataModel::UpdateIndexText(const char* nodeTable, const std::string& uuid,
                                             const std::string& indexText,
                                             const std::string& tag) {
  CSqlStatement stmt(db_,
                     std::string("UPDATE 'main'.'") + nodeTable + "' SET" +
                         " 'index_id'=? WHERE uuid = '" + uuid + "'",
                     tag);
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, indexText, false);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::WriteFieldRowsAtomically(const FieldTable& table,
                                                      const std::string& uuid,
                                                      CZuFieldSetObject& fields) {
  if (!BeginTransaction()) return false;
  if (WriteFieldRows(table, uuid, fields)) return CommitTransaction();
  RollBackTransaction();
  return false;
}

bool CSpatialiteDBDataModel::QueryField(const std::string& featureUuid,
                                        CZuFieldSetObject& fields) {
  if (db_ == nullptr) return false;
  return ReadFieldRows(kProperties, featureUuid, fields);
}

bool CSpatialiteDBDataModel::ModifyOrInsertField(const std::string& featureUuid,
                                                 CZuFieldSetObject& fields) {
  if (db_ == nullptr) return false;
  return WriteFieldRowsAtomically(kProperties, featureUuid, fields);
}

bool CSpatialiteDBDataModel::RemoveField(const std::string& featureUuid, const std::string& key) {
  if (db_ == nullptr) return false;
  CZuFieldSetObject fields;
  CZuFieldSetObject::__tagField field;
  if (!ReadFieldRows(kProperties, featureUuid, fields) || !fields.GetField(field, key)) {
    return false;
  }
  fields.RemoveField(key);
  return WriteFieldRowsAtomically(kProperties, featureUuid, fields);
}

bool CSpatialiteDBDataModel::QueryUserData(const std::string& uuid, CZuFieldSetObject& data) {
  if (db_ == nullptr) return false;
  const FieldTable* table = UserDataTable(uuid);
  return table != nullptr && ReadFieldRows(*table, uuid, data);
}

bool CSpatialiteDBDataModel::ModifyOrInsertUserData(const std::string& uuid,
                                                    CZuFieldSetObject& data) {
  if (db_ == nullptr) return false;
  const FieldTable* table = UserDataTable(uuid);
  return table != nullptr && WriteFieldRowsAtomically(*table, uuid, data);
}

bool CSpatialiteDBDataModel::RemoveUserData(const std::string& uuid, const std::string& key) {
  if (db_ == nullptr) return false;
  const FieldTable* table = UserDataTable(uuid);
  if (table == nullptr) return false;
  CZuFieldSetObject data;
  CZuFieldSetObject::__tagField field;
  if (!ReadFieldRows(*table, uuid, data) || !data.GetField(field, key)) return false;
  data.RemoveField(key);
  return WriteFieldRowsAtomically(*table, uuid, data);
}

bool CSpatialiteDBDataModel::QueryLayerHeaderList(const std::string& layerUuid,
                                                  CZuFieldSetObject& headers) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[QueryLayerHeaderList]:")) return false;
  CSqlStatement stmt(db_,
                     std::string("SELECT") + " property_header" + " FROM layer WHERE" +
                         " uuid = '" + layerUuid + "'",
                     "[QueryLayerHeaderList]:");
  if (!stmt.StepRow()) return false;
  headers.Cleanup();
  AnnotationLayerInner::LayerHeaderListFromString(stmt.ColumnText(0, true), headers);
  return true;
}

bool CSpatialiteDBDataModel::ModifyLayerHeaderList(const std::string& layerUuid,
                                                   CZuFieldSetObject& headers) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(layerUuid, "[ModifyLayerHeaderList]:")) return false;
  if (!IsLayerUUID(layerUuid)) {
    ZuLogError(-1) << "[ModifyLayerHeaderList]:" << "no layer " << layerUuid;
    return false;
  }
  CSqlStatement stmt(db_,
                     std::string("UPDATE 'main'.'layer' SET") + " 'property_header'=?" +
                         " WHERE" + " uuid = '" + layerUuid + "'",
                     "[ModifyLayerHeaderList]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, AnnotationLayerInner::LayerHeaderListToString(headers), true);
  return stmt.StepDone();
}
