// Reading nodes into option records and writing changed records back.
//
// A query fills a record from its node row, its order row and its status rows and clears the
// change mask. A modification runs only the statement groups whose change bits are set; a group
// that succeeds loses its bits, a failed group keeps them so that a later call retries it. The
// modify operations report only a missing uuid as failure.
#include <sqlite3.h>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::FormatDouble;
using AnnotationLayerInner::JoinIds;
using AnnotationLayerInner::Utf8ToLocal;

CFolderOption CSpatialiteDBDataModel::QueryFolderOption(const std::string& uuid) {
  if (db_ == nullptr) return CFolderOption();
  if (!IsSafeUUID(uuid, "[QueryFolderOption]:")) return CFolderOption();
  CSqlStatement stmt(db_, "SELECT * FROM folder WHERE" + std::string(" uuid = '") + uuid + "'",
                     "[QueryFolderOption]:");
  if (!stmt.IsValid()) return CFolderOption();
  CFolderOption option(uuid);
  if (stmt.StepRow()) {
    option.SetParentUUID(stmt.ColumnText(1, false));
    option.SetType(static_cast<E_FOLDER_TYPE>(stmt.ColumnInt(2)));
    option.SetName(stmt.ColumnText(3, true));
    option.SetIndexArrayString(stmt.ColumnText(4, false));
    std::string left, right;
    int orderNum = -1;
    if (QueryFolderOrder(uuid, left, right, orderNum)) {
      option.SetLeftUUID(left);
      option.SetRightUUID(right);
      option.SetOrderNum(orderNum);
    }
    FillFolderStatus(option);
  }
  option.SetChangeMask(0);
  return option;
}

CLayerOption CSpatialiteDBDataModel::QueryLayerOption(const std::string& uuid) {
  if (db_ == nullptr) return CLayerOption();
  if (!IsSafeUUID(uuid, "[QueryLayerOption]:")) return CLayerOption();
  CSqlStatement stmt(db_,
                     "SELECT * FROM layer WHERE" + std::string(" layer.uuid = '") + uuid + "'",
                     "[QueryLayerOption]:");
  if (!stmt.IsValid()) return CLayerOption();
  CLayerOption option(uuid);
  if (stmt.StepRow()) {
    const std::string layerParent = stmt.ColumnText(2, false);
    if (!layerParent.empty()) {
      option.SetParentUUID(layerParent, true);
    } else {
      option.SetParentUUID(stmt.ColumnText(1, false), false);
    }
    option.SetType(static_cast<E_LAYER_TYPE>(stmt.ColumnInt(3)));
    option.SetName(stmt.ColumnText(4, true));
    option.SetLevel(stmt.ColumnInt(5), stmt.ColumnInt(6));
    option.SetNameLevel(stmt.ColumnInt(7), stmt.ColumnInt(8));
    EXTENT extent;
    extent.min_x = stmt.ColumnDouble(9);
    extent.min_y = stmt.ColumnDouble(10);
    extent.max_x = stmt.ColumnDouble(11);
    extent.max_y = stmt.ColumnDouble(12);
    option.SetExtent(extent);
    option.SetWkt(stmt.ColumnText(13, false));
    option.SetPropertyHeader(stmt.ColumnText(14, true));
    option.SetIndexArrayString(stmt.ColumnText(15, false));
    std::string leftShape, leftLayer, rightShape, rightLayer;
    int orderNum = -1;
    if (QueryCompositeOrder(uuid, true, leftShape, leftLayer, rightShape, rightLayer, orderNum)) {
      option.SetLeftUUID(leftLayer.empty() ? leftShape : leftLayer, !leftLayer.empty());
      option.SetRightUUID(rightLayer.empty() ? rightShape : rightLayer, !rightLayer.empty());
      option.SetOrderNum(orderNum);
    }
    FillLayerStatus(option);
  }
  option.SetChangeMask(0);
  return option;
}

CFeatureOption CSpatialiteDBDataModel::QueryFeatureOption(const std::string& uuid) {
  if (db_ == nullptr) return CFeatureOption();
  if (!IsSafeUUID(uuid, "[QueryFeatureOption]:")) return CFeatureOption();
  CSqlStatement stmt(db_,
                     std::string("SELECT") + " puuid, type, name, createtime, modifytime, index_id" +
                         " FROM shape WHERE" + " uuid = '" + uuid + "'",
                     "[QueryFeatureOption]:");
  if (!stmt.IsValid()) return CFeatureOption();
  CFeatureOption option(uuid);
  if (stmt.StepRow()) {
    option.SetParentUUID(stmt.ColumnText(0, false));
    option.SetType(static_cast<E_ANNOTATION_TYPE>(stmt.ColumnInt(1)));
    option.SetName(stmt.ColumnText(2, true));
    option.SetCreateDateTime(stmt.ColumnText(3, false));
    option.SetModifyDateTime(stmt.ColumnText(4, false));
    option.SetIndexArrayString(stmt.ColumnText(5, false));
    std::string leftShape, leftLayer, rightShape, rightLayer;
    int orderNum = -1;
    if (QueryCompositeOrder(uuid, false, leftShape, leftLayer, rightShape, rightLayer,
                            orderNum)) {
      option.SetLeftUUID(leftLayer.empty() ? leftShape : leftLayer, !leftLayer.empty());
      option.SetRightUUID(rightLayer.empty() ? rightShape : rightLayer, !rightLayer.empty());
      option.SetOrderNum(orderNum);
    }
    FillFeatureStatus(option);
  }
  option.SetChangeMask(0);
  return option;
}

CFeatureOption CSpatialiteDBDataModel::QueryFeatureBase(const std::string& uuid) {
  if (db_ == nullptr) return CFeatureOption();
  if (!IsSafeUUID(uuid, "[QueryFeatureBase]:")) return CFeatureOption();
  CSqlStatement stmt(db_, "SELECT type, name FROM shape WHERE" + std::string(" uuid = '") + uuid +
                              "'",
                     "[QueryFeatureBase]:");
  if (!stmt.IsValid()) return CFeatureOption();
  CFeatureOption option(uuid);
  if (stmt.StepRow()) {
    option.SetName(stmt.ColumnText(1, true));
    option.SetType(static_cast<E_ANNOTATION_TYPE>(stmt.ColumnInt(0)));
  }
  option.SetChangeMask(0);
  return option;
}

namespace {

// Runs "SELECT type, value, data FROM <table> WHERE id in(...)" over a node's status rows and
// hands each row's type, value and whether the value is NULL to `apply`.
template <typename Apply>
void ForEachStatusRow(sqlite3* db, const char* table, const std::vector<int64_t>& ids,
                      const std::string& tag, Apply apply) {
  if (ids.empty()) return;
  CSqlStatement stmt(db,
                     std::string("SELECT type, value, data FROM ") + table + " WHERE id in(" +
                         JoinIds(ids) + ")",
                     tag);
  while (stmt.StepRow()) apply(stmt.ColumnInt(0), stmt.ColumnInt(1), stmt.ColumnIsNull(1));
}

}  // namespace

void CSpatialiteDBDataModel::FillFolderStatus(CFolderOption& option) {
  ForEachStatusRow(db_, "folder_status", option.GetIndexStatus(), "[FillFolderStatus]:",
                   [&option](int type, int value, bool) {
                     if (type == 1) option.ChangeMask(value);
                   });
}

void CSpatialiteDBDataModel::FillLayerStatus(CLayerOption& option) {
  ForEachStatusRow(db_, "layer_status", option.GetIndexStatus(), "[FillLayerStatus]:",
                   [&option](int type, int value, bool isNull) {
                     if (type == 1) option.ChangeMask(value);
                     if (type == 2) option.SetChildNodeMaxCount(isNull ? -1 : value);
                   });
}

void CSpatialiteDBDataModel::FillFeatureStatus(CFeatureOption& option) {
  ForEachStatusRow(db_, "shape_status", option.GetIndexStatus(), "[FillFeatureStatus]:",
                   [&option](int type, int value, bool) {
                     if (type == 1) option.ChangeMask(value);
                   });
}

int CSpatialiteDBDataModel::QueryFolderAttribute(const std::vector<int64_t>& statusIds) {
  if (db_ == nullptr || statusIds.empty()) return -1;
  return static_cast<int>(QueryFirstInt("SELECT value, data FROM folder_status WHERE id in(" +
                                            JoinIds(statusIds) + ")" + " AND type = 1",
                                        "[QueryFolderAttribute]:", -1));
}

// The column names stand in single quotes, which SQLite reads in a result list as text constants:
// the levels come back as those words, read as the integer 0, and the index text as 'index_id'.
// The statement is kept as it is; callers see levels 0..0 from it.
bool CSpatialiteDBDataModel::QueryLayerAttribute_Exist(const std::string& uuid,
                                                       CNodeAttribute& attribute,
                                                       std::string& indexText) {
  if (db_ == nullptr) return false;
  CSqlStatement stmt(db_,
                     "SELECT 'min_level', 'max_level', 'min_name_level', 'max_name_level', "
                     "'index_id' FROM layer WHERE" +
                         std::string(" layer.uuid = '") + uuid + "'",
                     "[QueryLayerAttribute_Exist]:");
  if (!stmt.StepRow()) return false;
  attribute.SetLevel(static_cast<char>(stmt.ColumnInt(0)), static_cast<char>(stmt.ColumnInt(1)));
  attribute.SetNameLevel(static_cast<char>(stmt.ColumnInt(2)),
                         static_cast<char>(stmt.ColumnInt(3)));
  indexText = stmt.ColumnText(4, false);
  return true;
}

int CSpatialiteDBDataModel::QueryLayerAttribute_Status(const std::vector<int64_t>& statusIds) {
  if (db_ == nullptr || statusIds.empty()) return -1;
  return static_cast<int>(QueryFirstInt("SELECT value, data FROM layer_status WHERE id in(" +
                                            JoinIds(statusIds) + ")" + " AND type = 1",
                                        "[QueryLayerAttribute_Status]:", -1));
}

namespace {

// Runs `helper` when any of `bits` is set and clears them when it succeeds.
template <typename Record, typename Helper>
void RunGroup(Record& option, int bits, Helper helper) {
  if (!option.IsChanged(bits)) return;
  if (helper()) option.RemoveChangeMask(bits);
}

constexpr int kFolderBaseBits = CHANGE_MASK_PARENT | CHANGE_MASK_NAME | CHANGE_MASK_TYPE;
constexpr int kLayerBaseBits = CHANGE_MASK_PARENT | CHANGE_MASK_NAME | CHANGE_MASK_TYPE |
                               CHANGE_MASK_LEVELS | CHANGE_MASK_EXTENT |
                               CHANGE_MASK_PROPERTY_HEADER;

}  // namespace

bool CSpatialiteDBDataModel::ModifyFolderOption(CFolderOption& option) {
  if (option.GetUUID().empty()) {
    ZuLogWarn << "[CSpatialiteDBDataModel::ModifyFolderOption]: " << Utf8ToLocal("UUID为空");
    return false;
  }
  for (const std::string* text : {&option.GetUUID(), &option.GetParentUUID(), &option.GetLeftUUID(),
                                   &option.GetRightUUID()}) {
    if (!IsSafeUUID(*text, "[CSpatialiteDBDataModel::ModifyFolderOption]: ")) return false;
  }
  const bool tellCalculator = option.IsChanged(CHANGE_MASK_POSITION | CHANGE_MASK_STATUS);
  const bool moved = option.IsChanged(CHANGE_MASK_PARENT);
  RunGroup(option, kFolderBaseBits, [&] { return ModifyFolderBase(option); });
  RunGroup(option, CHANGE_MASK_POSITION,
           [&] { return ModifyFolderOrder(option.GetUUID(), option); });
  RunGroup(option, CHANGE_MASK_STATUS, [&] { return ModifyFolderStatus(option); });
  if (tellCalculator) NotifyFolderChanged(option);
  if (moved && calculator_) calculator_->SetLParentChange(option.GetUUID());
  return true;
}

bool CSpatialiteDBDataModel::ModifyLayerOption(CLayerOption& option) {
  if (option.GetUUID().empty()) {
    ZuLogWarn << "[CSpatialiteDBDataModel::ModifyLayerOption]: " << Utf8ToLocal("UUID为空");
    return false;
  }
  for (const std::string* text : {&option.GetUUID(), &option.GetParentUUID(), &option.GetLeftUUID(),
                                   &option.GetRightUUID()}) {
    if (!IsSafeUUID(*text, "[CSpatialiteDBDataModel::ModifyLayerOption]: ")) return false;
  }
  const bool tellCalculator =
      option.IsChanged(CHANGE_MASK_POSITION | CHANGE_MASK_STATUS | CHANGE_MASK_LEVELS);
  const bool moved = option.IsChanged(CHANGE_MASK_PARENT);
  RunGroup(option, kLayerBaseBits, [&] { return ModifyLayerBase(option); });
  RunGroup(option, CHANGE_MASK_WKT, [&] { return ModifyLayerWkt(option); });
  RunGroup(option, CHANGE_MASK_POSITION,
           [&] { return ModifyLayerOrder(option.GetUUID(), option); });
  RunGroup(option, CHANGE_MASK_STATUS, [&] { return ModifyLayerStatus(option); });
  if (tellCalculator) NotifyLayerChanged(option);
  if (moved && calculator_) calculator_->SetLParentChange(option.GetUUID());
  return true;
}

bool CSpatialiteDBDataModel::ModifyFeatureOption(CFeatureOption& option) {
  if (option.GetUUID().empty()) {
    ZuLogWarn << "[CSpatialiteDBDataModel::ModifyFeatureOption]: " << Utf8ToLocal("UUID为空");
    return false;
  }
  for (const std::string* text : {&option.GetUUID(), &option.GetParentUUID(), &option.GetLeftUUID(),
                                   &option.GetRightUUID()}) {
    if (!IsSafeUUID(*text, "[CSpatialiteDBDataModel::ModifyFeatureOption]: ")) return false;
  }
  RunGroup(option, kFolderBaseBits, [&] { return ModifyFeatureBase(option); });
  RunGroup(option, CHANGE_MASK_POSITION,
           [&] { return ModifyFeatureOrder(option.GetUUID(), option); });
  RunGroup(option, CHANGE_MASK_STATUS, [&] { return ModifyFeatureStatus(option); });
  return true;
}

bool CSpatialiteDBDataModel::ModifyFolderBase(const CFolderOption& option) {
  CSqlStatement stmt(db_,
                     std::string("UPDATE 'main'.'folder' SET") + " 'puuid'=?, 'type'=?, 'name'=?" +
                         " WHERE" + " uuid = '" + option.GetUUID() + "'",
                     "[ModifyFolderBase]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, option.GetParentUUID(), false);
  stmt.BindInt(2, option.GetType());
  stmt.BindText(3, option.GetName(), true);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::ModifyFolderStatus(const CFolderOption& option) {
  const std::vector<int64_t> ids = option.GetIndexStatus();
  if (ids.empty()) {
    ZuLogError(-1) << "[CSpatialiteDBDataModel::ModifyFolderStatus] " << Utf8ToLocal("index_id为空");
    return false;
  }
  return ExecSql(db_,
                 "UPDATE 'main'.'folder_status' SET 'value'=" +
                     std::to_string(option.GetStatusMask()) + " WHERE" + " id in(" +
                     JoinIds(ids) + ")" + " AND type = 1",
                 "[ModifyFolderStatus]:");
}

bool CSpatialiteDBDataModel::ModifyLayerBase(const CLayerOption& option) {
  const EXTENT& extent = option.GetExtent();
  CSqlStatement stmt(
      db_,
      std::string("UPDATE 'main'.'layer' SET") + " '" +
          (option.IsLayerParent() ? "layer_puuid" : "folder_puuid") + "'='" +
          option.GetParentUUID() + "'," + " 'type'=" + std::to_string(option.GetType()) + "," +
          " 'name'=?," + " 'min_level'=" + std::to_string(option.GetMinLevel()) + "," +
          " 'max_level'=" + std::to_string(option.GetMaxLevel()) + "," + " 'min_name_level'=" +
          std::to_string(option.GetMinNameLevel()) + "," + " 'max_name_level'=" +
          std::to_string(option.GetMaxNameLevel()) + "," + " 'min_x'=" +
          FormatDouble(extent.min_x) + "," + " 'min_y'=" + FormatDouble(extent.min_y) + "," +
          " 'max_x'=" + FormatDouble(extent.max_x) + "," + " 'max_y'=" +
          FormatDouble(extent.max_y) + "," + " 'property_header'= ?" + " WHERE" + " uuid = '" +
          option.GetUUID() + "'",
      "[ModifyLayerBase]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, option.GetName(), true);
  stmt.BindText(2, option.GetPropertyHeader(), true);
  return stmt.StepDone();
}

// The statement carries a comma before WHERE, which SQLite rejects: the outline text is never
// written and bit 128 stays set. Kept as it is by design.
bool CSpatialiteDBDataModel::ModifyLayerWkt(const CLayerOption& option) {
  return ExecSql(db_,
                 std::string("UPDATE 'main'.'layer' SET") + " 'wkt'='" + option.GetWkt() + "'," +
                     " WHERE" + " uuid = '" + option.GetUUID() + "'",
                 "[ModifyLayerWkt]:");
}

bool CSpatialiteDBDataModel::ModifyLayerStatus(const CLayerOption& option) {
  const std::vector<int64_t> ids = option.GetIndexStatus();
  if (ids.empty()) {
    ZuLogError(-1) << "[CSpatialiteDBDataModel::ModifyLayerStatus] " << Utf8ToLocal("index_id为空");
    return false;
  }
  const std::string where = " WHERE" + std::string(" id in(") + JoinIds(ids) + ")";
  const bool status = ExecSql(db_,
                              "UPDATE 'main'.'layer_status' SET 'value'=" +
                                  std::to_string(option.GetStatusMask()) + where + " AND type = 1",
                              "[ModifyLayerStatus] type=1:");
  const bool maxCount = ExecSql(db_,
                                "UPDATE 'main'.'layer_status' SET 'value'=" +
                                    std::to_string(option.GetChildNodeMaxCount()) + where +
                                    " AND type = 2",
                                "[ModifyLayerStatus] type=2:");
  return status && maxCount;
}

bool CSpatialiteDBDataModel::ModifyFeatureBase(const CFeatureOption& option) {
  CSqlStatement stmt(db_,
                     std::string("UPDATE 'main'.'shape' SET") + " 'puuid'='" +
                         option.GetParentUUID() + "'," + " 'type'=" +
                         std::to_string(option.GetType()) + "," + " 'name'=?" + " WHERE" +
                         " uuid = '" + option.GetUUID() + "'",
                     "[ModifyFeatureBase]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, option.GetName(), true);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::ModifyFeatureStatus(const CFeatureOption& option) {
  const std::vector<int64_t> ids = option.GetIndexStatus();
  if (ids.empty()) {
    // The folder's text, by design: existing log filters look for it.
    ZuLogError(-1) << "[CSpatialiteDBDataModel::ModifyFolderStatus] " << Utf8ToLocal("index_id为空");
    return false;
  }
  return ExecSql(db_,
                 "UPDATE 'main'.'shape_status' SET 'value'=" +
                     std::to_string(option.GetStatusMask()) + " WHERE" + " id in(" +
                     JoinIds(ids) + ")" + " AND type = 1",
                 "[ModifyFeatureStatus]:");
}
