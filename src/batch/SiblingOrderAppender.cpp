#include "SiblingOrderAppender.h"

#include "NodeCacheCalculator.h"

namespace {

const char kColumns[] =
    "('uuid', 'left_shape_uuid', 'left_layer_uuid', 'right_shape_uuid', 'right_layer_uuid', "
    "'order_num')";

std::string UpdateSql(const char* table) {
  return std::string("UPDATE 'main'.'") + table + "' SET" + " 'left_shape_uuid'=?," +
         " 'left_layer_uuid'=?," + " 'right_shape_uuid'=?," + " 'right_layer_uuid'=?," +
         " 'order_num'=?" + " WHERE" + " uuid = ?";
}

}  // namespace

void CSiblingOrderAppender::Bind(sqlite3* db, CNodeCacheCalculator* calculator) {
  Reset();
  db_ = db;
  calculator_ = calculator;
}

void CSiblingOrderAppender::Seed(const std::string& parent, const Record& record) {
  pending_[parent] = record;
}

bool CSiblingOrderAppender::Append(const std::string& parent, const std::string& child,
                                   bool isLayer) {
  auto it = pending_.find(parent);
  if (it == pending_.end()) {
    Record first;
    first.isLayer = isLayer;
    first.uuid = child;
    pending_[parent] = first;
    return true;
  }
  Record& last = it->second;
  last.right = child;
  last.rightIsLayer = isLayer;
  const bool written = Write(last);
  if (isLayer && calculator_ != nullptr) calculator_->SetLOrderChange(last.uuid, last.orderNum);
  Record next;
  next.orderNum = last.orderNum + 1;
  next.isLayer = isLayer;
  next.uuid = child;
  next.leftIsLayer = last.isLayer;
  next.left = last.uuid;
  last = next;
  return written;
}

bool CSiblingOrderAppender::Flush() {
  bool ok = true;
  for (const auto& entry : pending_) {
    const Record& record = entry.second;
    if (record.uuid.empty()) continue;
    ok = Write(record) && ok;
    if (calculator_ != nullptr) calculator_->SetLOrderChange(record.uuid, record.orderNum);
  }
  Reset();
  return ok;
}

void CSiblingOrderAppender::Reset() {
  pending_.clear();
  insertLayer_.Finalize();
  insertShape_.Finalize();
  updateLayer_.Finalize();
  updateShape_.Finalize();
}

bool CSiblingOrderAppender::Write(const Record& record) {
  CSqlStatement* stmt = nullptr;
  if (record.stored) {
    stmt = record.isLayer ? &updateLayer_ : &updateShape_;
    if (!stmt->IsValid()) {
      stmt->Prepare(db_, UpdateSql(record.isLayer ? "layer_order" : "shape_order"),
                    record.isLayer ? "[ModifyLayerOrder]:" : "[ModifyShapeOrder]:");
    }
  } else {
    stmt = record.isLayer ? &insertLayer_ : &insertShape_;
    if (!stmt->IsValid()) {
      stmt->Prepare(db_,
                    std::string("INSERT INTO 'main'.'") +
                        (record.isLayer ? "layer_order" : "shape_order") + "'" + kColumns +
                        " VALUES(?, ?, ?, ?, ?, ?)",
                    record.isLayer ? "[InsertLayerOrder]:" : "[InsertShapeOrder]:");
    }
  }
  if (!stmt->IsValid()) return false;
  const std::string none;
  // The update names the row last; the insert names it first.
  const int first = record.stored ? 1 : 2;
  stmt->BindText(first, record.leftIsLayer ? none : record.left, false);
  stmt->BindText(first + 1, record.leftIsLayer ? record.left : none, false);
  stmt->BindText(first + 2, record.rightIsLayer ? none : record.right, false);
  stmt->BindText(first + 3, record.rightIsLayer ? record.right : none, false);
  stmt->BindInt(first + 4, record.orderNum);
  stmt->BindText(record.stored ? 6 : 1, record.uuid, false);
  const bool done = stmt->StepDone();
  stmt->Reset();
  return done;
}
