#include "FeatureRowCopier.h"

#include <sqlite3.h>

#include <algorithm>

#include "FeatureOption.h"
#include "NodeStatus.h"
#include "ZuLog.h"

namespace {

const char kTag[] = "[CopyNode]:";

}  // namespace

CFeatureRowCopier::CFeatureRowCopier(sqlite3* source, sqlite3* target)
    : source_(source), target_(target) {}

bool CFeatureRowCopier::Ready(CSqlStatement* stmt, sqlite3* db, const char* sql) {
  if (stmt->IsValid()) {
    stmt->Reset();
    return true;
  }
  return stmt->Prepare(db, sql, kTag);
}

bool CFeatureRowCopier::CopySatellites(const std::vector<int64_t>& ids, CSqlStatement* read,
                                       CSqlStatement* write, int columns,
                                       const std::string& copy, std::vector<int64_t>* copied) {
  std::vector<int64_t> sorted = ids;
  std::sort(sorted.begin(), sorted.end());
  for (int64_t id : sorted) {
    read->Reset();
    read->BindInt64(1, id);
    const int rc = read->Step();
    if (rc == SQLITE_DONE) continue;  // listed but gone: nothing to copy
    if (rc != SQLITE_ROW) {
      read->LogError();
      return false;
    }
    write->Reset();
    write->BindText(1, copy, false);
    for (int column = 0; column < columns; ++column) {
      sqlite3_bind_value(write->Get(), column + 2, sqlite3_column_value(read->Get(), column));
    }
    if (!write->StepDone()) return false;
    copied->push_back(sqlite3_last_insert_rowid(target_));
  }
  read->Reset();
  return true;
}

bool CFeatureRowCopier::CopyRows(const std::string& uuid, const std::string& copy,
                                 const std::string& parent, Original* original) {
  if (!Ready(&readShape_, source_, "SELECT name, type, index_id, geom FROM shape WHERE uuid = ?") ||
      !Ready(&readStatus_, source_, "SELECT type, value FROM shape_status WHERE id = ?") ||
      !Ready(&readProperty_, source_,
             "SELECT field_type, field_class, field_name, value FROM shape_property WHERE id = ?") ||
      !Ready(&readUserData_, source_,
             "SELECT data_type, key, value FROM shape_userdata WHERE id = ?") ||
      !Ready(&readStyle_, source_, "SELECT format, content FROM shape_style WHERE puuid = ?") ||
      !Ready(&writeStatus_, target_,
             "INSERT INTO 'main'.'shape_status'('puuid', 'type', 'value', 'data') "
             "VALUES(?, 1, ?, NULL)") ||
      !Ready(&writeProperty_, target_,
             "INSERT INTO 'main'.'shape_property'('puuid', 'field_type', 'field_class', "
             "'field_name', 'value') VALUES (?, ?, ?, ?, ?)") ||
      !Ready(&writeUserData_, target_,
             "INSERT INTO 'main'.'shape_userdata'('puuid', 'data_type', 'key', 'value') "
             "VALUES (?, ?, ?, ?)") ||
      !Ready(&writeStyle_, target_,
             "INSERT INTO 'main'.'shape_style' ('puuid', 'format', 'content') VALUES (?, ?, ?)") ||
      !Ready(&writeShape_, target_,
             "INSERT INTO 'main'.'shape'('uuid', 'puuid', 'type', 'name', 'index_id') "
             "VALUES(?, ?, ?, ?, ?)") ||
      !Ready(&writeGeometry_, target_, "UPDATE 'main'.'shape' SET 'geom'=? WHERE uuid = ?")) {
    return false;
  }

  readShape_.BindText(1, uuid, false);
  const int rc = readShape_.Step();
  if (rc != SQLITE_ROW) {
    if (rc == SQLITE_DONE) {
      ZuLogError(-1) << kTag << "no feature " << uuid;
    } else {
      readShape_.LogError();
    }
    return false;
  }
  CFeatureOption indexes;
  indexes.SetIndexArrayString(readShape_.ColumnText(2, false));
  original->localName = readShape_.ColumnText(0, true);
  original->hasEnclosures = !indexes.GetIndexEnclosure().empty();

  // The status word as the model reads it: type-1 rows in id order, the last one counting.
  const std::vector<int64_t> statusIds = indexes.GetIndexStatus();
  CFeatureOption status;
  if (statusIds.empty()) status.ChangeMask(NODE_STATUS_CHECKED);
  std::vector<int64_t> sorted = statusIds;
  std::sort(sorted.begin(), sorted.end());
  for (int64_t id : sorted) {
    readStatus_.Reset();
    readStatus_.BindInt64(1, id);
    if (readStatus_.StepRow() && readStatus_.ColumnInt(0) == 1) {
      status.ChangeMask(readStatus_.ColumnInt(1));
    }
  }
  readStatus_.Reset();
  writeStatus_.BindText(1, copy, false);
  writeStatus_.BindInt(2, status.GetStatusMask());
  if (!writeStatus_.StepDone()) return false;
  const std::vector<int64_t> newStatus{sqlite3_last_insert_rowid(target_)};

  std::vector<int64_t> newProperty, newUserData;
  if (!CopySatellites(indexes.GetIndexProperty(), &readProperty_, &writeProperty_, 4, copy,
                      &newProperty) ||
      !CopySatellites(indexes.GetIndexUserdata(), &readUserData_, &writeUserData_, 3, copy,
                      &newUserData)) {
    return false;
  }

  readStyle_.BindText(1, uuid, false);
  const int styleRc = readStyle_.Step();
  if (styleRc == SQLITE_ROW) {
    writeStyle_.BindText(1, copy, false);
    writeStyle_.BindInt(2, readStyle_.ColumnInt(0));
    sqlite3_bind_value(writeStyle_.Get(), 3, sqlite3_column_value(readStyle_.Get(), 1));
    if (!writeStyle_.StepDone()) return false;
  } else if (styleRc != SQLITE_DONE) {
    readStyle_.LogError();
    return false;
  }
  readStyle_.Reset();

  CFeatureOption written;
  written.SetIndexArray(newStatus, newProperty, newUserData, {});
  writeShape_.BindText(1, copy, false);
  writeShape_.BindText(2, parent, false);
  sqlite3_bind_value(writeShape_.Get(), 3, sqlite3_column_value(readShape_.Get(), 1));
  sqlite3_bind_value(writeShape_.Get(), 4, sqlite3_column_value(readShape_.Get(), 0));
  writeShape_.BindText(5, written.GetIndexArrayString(), false);
  bool done = writeShape_.StepDone();
  // The geometry goes in as an update of the new row, as every geometry write of the module does.
  if (done && readShape_.ColumnBlob(3) != nullptr) {
    sqlite3_bind_value(writeGeometry_.Get(), 1, sqlite3_column_value(readShape_.Get(), 3));
    writeGeometry_.BindText(2, copy, false);
    done = writeGeometry_.StepDone();
  }
  readShape_.Reset();
  return done;
}

bool CFeatureRowCopier::InsertOrder(const std::string& copy, const std::string& left,
                                    bool leftIsLayer, int order) {
  if (!Ready(&writeOrder_, target_,
             "INSERT INTO 'main'.'shape_order'('uuid', 'left_shape_uuid', 'left_layer_uuid', "
             "'right_shape_uuid', 'right_layer_uuid', 'order_num') VALUES(?, ?, ?, '', '', ?)")) {
    return false;
  }
  const std::string none;
  writeOrder_.BindText(1, copy, false);
  writeOrder_.BindText(2, leftIsLayer ? none : left, false);
  writeOrder_.BindText(3, leftIsLayer ? left : none, false);
  writeOrder_.BindInt(4, order);
  return writeOrder_.StepDone();
}

bool CFeatureRowCopier::LinkRight(const std::string& feature, const std::string& right,
                                  bool rightIsLayer) {
  if (!Ready(&linkRight_, target_,
             "UPDATE 'main'.'shape_order' SET 'right_shape_uuid'=?, 'right_layer_uuid'=? WHERE "
             "uuid = ?")) {
    return false;
  }
  const std::string none;
  linkRight_.BindText(1, rightIsLayer ? none : right, false);
  linkRight_.BindText(2, rightIsLayer ? right : none, false);
  linkRight_.BindText(3, feature, false);
  return linkRight_.StepDone();
}
