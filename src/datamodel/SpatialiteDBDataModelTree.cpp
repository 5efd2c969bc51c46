// Sibling order of CSpatialiteDBDataModel: first/last lookups, the list walks, order rows and
// unlinking.
//
// Siblings form a doubly linked list in the order tables. The children of a layer (sub-layers and
// features mixed) keep each neighbour in two columns, `_layer_` for a layer neighbour and `_shape_`
// for a feature; readers take a non-empty `_layer_` column first. Writers fill only the column
// that fits and never clear the other, so a stale `_layer_` value wins over a fresh `_shape_`
// value; callers rely on that precedence as it is.
#include <sqlite3.h>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"
#include "ListCycleGuard.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "StatementCache.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {


const char* OrderTable(E_NODE_KIND kind) {
  switch (kind) {
    case NODE_KIND_FOLDER: return "folder_order";
    case NODE_KIND_LAYER: return "layer_order";
    case NODE_KIND_FEATURE: return "shape_order";
    default: return nullptr;
  }
}

}  // namespace

std::string CSpatialiteDBDataModel::GetTopRootUUID() {
  if (db_ == nullptr) return std::string();
  return QueryFirstText(std::string("SELECT uuid FROM folder WHERE") + " puuid = '' AND" +
                            " uuid != ''" + " Limit 1",
                        "[GetTopRootUUID]:");
}

std::string CSpatialiteDBDataModel::GetLastFolderChildUUID(const std::string& parentFolderUuid) {
  if (db_ == nullptr) return std::string();
  if (!IsSafeUUID(parentFolderUuid, "[GetLastFolderChildUUID]:")) return std::string();
  const std::string any = QueryFirstText(std::string("SELECT") + " uuid" + " FROM folder WHERE" +
                                             " puuid = '" + parentFolderUuid + "'" + " Limit 1",
                                         "[GetLastFolderChildUUID]:");
  return any.empty() ? any : QueryRightLastFolder(any);
}

std::string CSpatialiteDBDataModel::GetLastLayerChildUUID(const std::string& parentFolderUuid) {
  if (db_ == nullptr) return std::string();
  if (!IsSafeUUID(parentFolderUuid, "[GetLastLayerChildUUID]:")) return std::string();
  const std::string any = QueryFirstText(std::string("SELECT") + " uuid" + " FROM layer WHERE" +
                                             " folder_puuid = '" + parentFolderUuid + "'" +
                                             " Limit 1",
                                         "[GetLastLayerChildUUID]:");
  if (any.empty()) return any;
  bool isLayer = true;
  return QueryRightLastComposite(any, isLayer);
}

std::string CSpatialiteDBDataModel::GetLastChildUUID(const std::string& parentLayerUuid,
                                                     bool& isLayer) {
  isLayer = false;
  if (db_ == nullptr) return std::string();
  if (!IsSafeUUID(parentLayerUuid, "[GetLastChildUUID]:")) return std::string();
  std::string any = QueryFirstText(std::string("SELECT") + " uuid" + " FROM layer WHERE" +
                                       " layer_puuid = '" + parentLayerUuid + "'" + " Limit 1",
                                   "[GetLastChildUUID]:");
  isLayer = !any.empty();
  if (any.empty()) {
    any = QueryFirstText(std::string("SELECT") + " uuid" + " FROM shape WHERE" + " puuid = '" +
                             parentLayerUuid + "'" + " Limit 1",
                         "[GetLastChildUUID]:");
  }
  if (any.empty()) return any;
  return QueryRightLastComposite(any, isLayer);
}

// Run once per feature by the draw-order lookups: the uuid is bound where the other statements
// splice it, so that the prepared statement can be reused.
int CSpatialiteDBDataModel::QueryOrderNum(E_NODE_KIND kind, const std::string& uuid) {
  const char* table = OrderTable(kind);
  if (db_ == nullptr || table == nullptr) return -1;
  CCachedStatement stmt = statements_->Get(
      db_, std::string("SELECT") + " order_num" + " FROM " + table + " WHERE" + " uuid = ?",
      "[QueryOrderNum]:");
  if (!stmt) return -1;
  stmt->BindText(1, uuid, false);
  if (!stmt->StepRow() || stmt->ColumnIsNull(0)) return -1;
  return stmt->ColumnInt(0);
}

bool CSpatialiteDBDataModel::QueryFolderOrder(const std::string& uuid, std::string& left,
                                              std::string& right, int& orderNum) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[QueryFolderOrder]:")) return false;
  CSqlStatement stmt(db_,
                     std::string("SELECT") + " left_uuid, right_uuid, order_num" +
                         " FROM folder_order WHERE" + " folder_order.uuid = '" + uuid + "'",
                     "[QueryFolderOrder]:");
  if (!stmt.StepRow()) return false;
  left = stmt.ColumnText(0, false);
  right = stmt.ColumnText(1, false);
  orderNum = stmt.ColumnInt(2);
  return true;
}

bool CSpatialiteDBDataModel::QueryCompositeOrder(const std::string& uuid, bool isLayer,
                                                 std::string& leftShape, std::string& leftLayer,
                                                 std::string& rightShape, std::string& rightLayer,
                                                 int& orderNum) {
  if (db_ == nullptr) return false;
  if (!IsSafeUUID(uuid, "[QueryCompositeOrder]:")) return false;
  CSqlStatement stmt(db_,
                     std::string("SELECT") +
                         " left_shape_uuid, left_layer_uuid, right_shape_uuid, right_layer_uuid,"
                         " order_num" +
                         " FROM " + (isLayer ? "layer_order" : "shape_order") + " WHERE" +
                         " uuid = '" + uuid + "'",
                     "[QueryCompositeOrder]:");
  if (!stmt.StepRow()) return false;
  leftShape = stmt.ColumnText(0, false);
  leftLayer = stmt.ColumnText(1, false);
  rightShape = stmt.ColumnText(2, false);
  rightLayer = stmt.ColumnText(3, false);
  orderNum = stmt.ColumnInt(4);
  return true;
}

std::string CSpatialiteDBDataModel::QueryLeftFirstFolder(const std::string& start) {
  return WalkFolderList(start,
                        std::string("SELECT") + " left_uuid" + " FROM folder_order WHERE" +
                            " folder_order.uuid = ?",
                        "[QueryLeftFirstFolder]:");
}

std::string CSpatialiteDBDataModel::QueryRightLastFolder(const std::string& start) {
  return WalkFolderList(start,
                        std::string("SELECT") + " right_uuid" + " FROM folder_order WHERE" +
                            " folder_order.uuid = ?",
                        "[QueryRightLastFolder]:");
}

std::string CSpatialiteDBDataModel::WalkFolderList(const std::string& start,
                                                   const std::string& sql,
                                                   const std::string& tag) {
  CSqlStatement stmt(db_, sql, tag);
  if (!stmt.IsValid()) return start;
  // A well-formed list ends in ''; one corrupted into a cycle is cut once the guard notices it.
  CListCycleGuard guard;
  guard.Step(start);
  std::string current = start;
  for (;;) {
    stmt.BindText(1, current, false);
    std::string next;
    if (stmt.StepRow()) next = stmt.ColumnText(0, false);
    if (next.empty()) return current;
    if (!guard.Step(next)) {
      ZuLogError(-1) << tag << "the sibling list of " << start << " runs in a cycle";
      return current;
    }
    current = next;
    stmt.Reset();
  }
}

std::string CSpatialiteDBDataModel::QueryLeftFirstComposite(const std::string& start,
                                                            bool& isLayer) {
  return WalkCompositeList(start, isLayer, " left_shape_uuid,left_layer_uuid",
                           "[QueryLeftFirstComposite]:");
}

std::string CSpatialiteDBDataModel::QueryRightLastComposite(const std::string& start,
                                                            bool& isLayer) {
  return WalkCompositeList(start, isLayer, " right_shape_uuid,right_layer_uuid",
                           "[QueryRightLastComposite]:");
}

std::string CSpatialiteDBDataModel::WalkCompositeList(const std::string& start, bool& isLayer,
                                                      const char* columns,
                                                      const std::string& tag) {
  CSqlStatement layers(db_, std::string("SELECT") + columns + " FROM layer_order WHERE" +
                                " uuid = ?",
                       tag);
  CSqlStatement shapes(db_, std::string("SELECT") + columns + " FROM shape_order WHERE" +
                                " uuid = ?",
                       tag);
  if (!layers.IsValid() || !shapes.IsValid()) return start;
  CListCycleGuard guard;
  guard.Step(start);
  std::string current = start;
  for (;;) {
    CSqlStatement& stmt = isLayer ? layers : shapes;
    stmt.BindText(1, current, false);
    std::string shapeNeighbour, layerNeighbour;
    if (stmt.StepRow()) {
      shapeNeighbour = stmt.ColumnText(0, false);
      layerNeighbour = stmt.ColumnText(1, false);
    }
    layers.Reset();
    shapes.Reset();
    const bool nextIsLayer = !layerNeighbour.empty();
    const std::string& next = nextIsLayer ? layerNeighbour : shapeNeighbour;
    if (next.empty()) return current;
    if (!guard.Step(next)) {
      ZuLogError(-1) << tag << "the sibling list of " << start << " runs in a cycle";
      return current;
    }
    current = next;
    isLayer = nextIsLayer;
  }
}

bool CSpatialiteDBDataModel::InsertFolderOrder(const std::string& uuid,
                                               const CFolderOption& option) {
  if (db_ == nullptr) return false;
  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'folder_order'(") +
                         " 'uuid', 'left_uuid', 'right_uuid', 'order_num') VALUES(" +
                         " ?, ?, ?, ?)",
                     "[InsertFolderOrder]:");
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, uuid, false);
  stmt.BindText(2, option.GetLeftUUID(), false);
  stmt.BindText(3, option.GetRightUUID(), false);
  stmt.BindInt(4, option.GetOrderNum());
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::InsertLayerOrder(const std::string& uuid,
                                              const CLayerOption& option) {
  return InsertCompositeOrder("layer_order", uuid, option.GetLeftUUID(), option.IsLeftLayer(),
                              option.GetRightUUID(), option.IsRightLayer(), option.GetOrderNum(),
                              "[InsertLayerOrder]:");
}

bool CSpatialiteDBDataModel::InsertFeatureOrder(const std::string& uuid,
                                                const CFeatureOption& option) {
  return InsertCompositeOrder("shape_order", uuid, option.GetLeftUUID(), option.IsLeftLayer(),
                              option.GetRightUUID(), option.IsRightLayer(), option.GetOrderNum(),
                              "[InsertFeatureOrder]:");
}

bool CSpatialiteDBDataModel::InsertCompositeOrder(const char* table, const std::string& uuid,
                                                  const std::string& left, bool leftIsLayer,
                                                  const std::string& right, bool rightIsLayer,
                                                  int orderNum, const std::string& tag) {
  if (db_ == nullptr) return false;
  const std::string leftColumn = leftIsLayer ? "left_layer_uuid" : "left_shape_uuid";
  const std::string rightColumn = rightIsLayer ? "right_layer_uuid" : "right_shape_uuid";
  CSqlStatement stmt(db_,
                     std::string("INSERT INTO 'main'.'") + table + "'(" + " 'uuid', '" +
                         leftColumn + "', '" + rightColumn + "', 'order_num') VALUES( " +
                         " ?, ?, ?, ?)",
                     tag);
  if (!stmt.IsValid()) return false;
  stmt.BindText(1, uuid, false);
  stmt.BindText(2, left, false);
  stmt.BindText(3, right, false);
  stmt.BindInt(4, orderNum);
  return stmt.StepDone();
}

bool CSpatialiteDBDataModel::ModifyFolderOrder(const std::string& uuid,
                                               const CFolderOption& option) {
  return ExecSql(db_,
                 std::string("UPDATE 'main'.'folder_order' SET") + " 'left_uuid'='" +
                     option.GetLeftUUID() + "'," + " 'right_uuid'='" + option.GetRightUUID() +
                     "'," + " 'order_num'=" + std::to_string(option.GetOrderNum()) + " WHERE" +
                     " uuid = '" + uuid + "'",
                 "[ModifyFolderOrder]:");
}

bool CSpatialiteDBDataModel::ModifyLayerOrder(const std::string& uuid,
                                              const CLayerOption& option) {
  return ModifyCompositeOrder("layer_order", uuid, option.GetLeftUUID(), option.IsLeftLayer(),
                              option.GetRightUUID(), option.IsRightLayer(), option.GetOrderNum(),
                              "[ModifyLayerOrder]:");
}

bool CSpatialiteDBDataModel::ModifyFeatureOrder(const std::string& uuid,
                                                const CFeatureOption& option) {
  return ModifyCompositeOrder("shape_order", uuid, option.GetLeftUUID(), option.IsLeftLayer(),
                              option.GetRightUUID(), option.IsRightLayer(), option.GetOrderNum(),
                              "[ModifyFeatureOrder]:");
}

bool CSpatialiteDBDataModel::ModifyCompositeOrder(const char* table, const std::string& uuid,
                                                  const std::string& left, bool leftIsLayer,
                                                  const std::string& right, bool rightIsLayer,
                                                  int orderNum, const std::string& tag) {
  return ExecSql(db_,
                 std::string("UPDATE 'main'.'") + table + "' SET" + " '" +
                     (leftIsLayer ? "left_layer_uuid" : "left_shape_uuid") + "'='" + left +
                     "'," + " '" + (rightIsLayer ? "right_layer_uuid" : "right_shape_uuid") +
                     "'='" + right + "'," + " 'order_num'=" + std::to_string(orderNum) +
                     " WHERE" + " uuid = '" + uuid + "'",
                 tag);
}

void CSpatialiteDBDataModel::UnlinkFolder(const std::string& uuid) {
  std::string left, right;
  int orderNum = 0;
  if (!QueryFolderOrder(uuid, left, right, orderNum)) return;
  if (!left.empty()) {
    std::string leftLeft, ignored;
    int leftNum = 0;
    if (QueryFolderOrder(left, leftLeft, ignored, leftNum)) {
      CFolderOption update(left);
      update.SetLeftUUID(leftLeft);
      update.SetRightUUID(right);
      update.SetOrderNum(leftNum);
      ModifyFolderOrder(left, update);
    }
  }
  if (!right.empty()) {
    std::string rightRight, ignored;
    int rightNum = 0;
    if (QueryFolderOrder(right, ignored, rightRight, rightNum)) {
      CFolderOption update(right);
      update.SetLeftUUID(left);
      update.SetRightUUID(rightRight);
      update.SetOrderNum(rightNum);
      ModifyFolderOrder(right, update);
    }
  }
}

void CSpatialiteDBDataModel::UnlinkComposite(const std::string& uuid, bool isLayer) {
  std::string leftShape, leftLayer, rightShape, rightLayer;
  int orderNum = 0;
  if (!QueryCompositeOrder(uuid, isLayer, leftShape, leftLayer, rightShape, rightLayer,
                           orderNum)) {
    return;
  }
  const bool leftIsLayer = !leftLayer.empty();
  const std::string left = leftIsLayer ? leftLayer : leftShape;
  const bool rightIsLayer = !rightLayer.empty();
  const std::string right = rightIsLayer ? rightLayer : rightShape;

  // Rewrites a neighbour's order row through the option of its kind, so that the written columns
  // follow the option's neighbour flags.
  auto rewrite = [this](const std::string& node, bool nodeIsLayer, const std::string& newLeft,
                        bool newLeftIsLayer, const std::string& newRight, bool newRightIsLayer,
                        int num) {
    if (nodeIsLayer) {
      CLayerOption update(node);
      update.SetLeftUUID(newLeft, newLeftIsLayer);
      update.SetRightUUID(newRight, newRightIsLayer);
      update.SetOrderNum(num);
      ModifyLayerOrder(node, update);
    } else {
      CFeatureOption update(node);
      update.SetLeftUUID(newLeft, newLeftIsLayer);
      update.SetRightUUID(newRight, newRightIsLayer);
      update.SetOrderNum(num);
      ModifyFeatureOrder(node, update);
    }
  };

  if (!left.empty()) {
    std::string llShape, llLayer, lrShape, lrLayer;
    int num = 0;
    if (QueryCompositeOrder(left, leftIsLayer, llShape, llLayer, lrShape, lrLayer, num)) {
      const bool leftLeftIsLayer = !llLayer.empty();
      rewrite(left, leftIsLayer, leftLeftIsLayer ? llLayer : llShape, leftLeftIsLayer, right,
              rightIsLayer, num);
    }
  }
  if (!right.empty()) {
    std::string rlShape, rlLayer, rrShape, rrLayer;
    int num = 0;
    if (QueryCompositeOrder(right, rightIsLayer, rlShape, rlLayer, rrShape, rrLayer, num)) {
      const bool rightRightIsLayer = !rrLayer.empty();
      rewrite(right, rightIsLayer, left, leftIsLayer, rightRightIsLayer ? rrLayer : rrShape,
              rightRightIsLayer, num);
    }
  }
}
