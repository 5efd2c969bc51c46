#include "NodeOrderRebuilderImpl.h"

#include <sqlite3.h>

#include <unordered_set>

#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlText.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

// This project's schema carries folder_uuid and layer_uuid as generated copies of folder_puuid and
// layer_puuid; files made by other programs may not. Probed without a log line: their absence is
// no fault.
bool HasParentAliasColumns(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  const int rc = sqlite3_prepare_v2(db, "SELECT folder_uuid, layer_uuid FROM layer LIMIT 0", -1,
                                    &stmt, nullptr);
  sqlite3_finalize(stmt);
  return rc == SQLITE_OK;
}

}  // namespace

CNodeOrderRebuilderImpl::CNodeOrderRebuilderImpl(IAnnotationDBDataModel* model)
    : model_(dynamic_cast<CSpatialiteDBDataModel*>(model)) {
  // The construction failures are logged with the importer's texts.
  if (model_ != nullptr && model_->IsInstalled()) {
    db_ = model_->GetConnection();
    if (db_ == nullptr) ZuLogError(-1) << "[CFeatureBatchImporter] " << Utf8ToLocal("建立不成功");
    if (db_ != nullptr && !HasParentAliasColumns(db_)) {
      folderParentColumn_ = "folder_puuid";
      layerParentColumn_ = "layer_puuid";
    }
  } else {
    ZuLogError(-1) << "[CFeatureBatchImporter] " << Utf8ToLocal("DBDataModel未建立");
  }
}

bool CNodeOrderRebuilderImpl::RebuildNodeOrderNum(const std::string& uuid, bool recursive,
                                                  CNodeOrderRebuilder::IRebuildProgress* progress) {
  if (model_ == nullptr || db_ == nullptr || rebuilding_) return false;
  if (!AnnotationLayerInner::IsSafeSqlText(uuid)) {
    ZuLogError(-1) << "[RebuildNodeOrderNum]:" << "refused uuid " << uuid;
    return false;
  }
  rebuilding_ = true;
  progress_ = progress;
  visited_ = 0;
  if (progress_ != nullptr) progress_->OnBegin(model_, recursive);
  stopwatch_.Restart();
  model_->BeginTransaction();

  active_.clear();
  if (model_->IsLayerUUID(uuid)) {
    const bool unassigned = LayerHasUnassignedChild(uuid);
    if (unassigned || recursive) RebuildLayer(uuid, unassigned, recursive);
  } else if (model_->IsFolderUUID(uuid)) {
    const bool unassigned = FolderHasUnassignedChild(uuid);
    if (unassigned || recursive) RebuildFolder(uuid, unassigned, recursive);
  }

  folderUpdate_.Finalize();
  layerUpdate_.Finalize();
  featureUpdate_.Finalize();
  model_->CommitTransaction();
  if (progress_ != nullptr) progress_->OnEnd(model_);
  progress_ = nullptr;
  rebuilding_ = false;
  ZuLOG << "[RebuildNodeOrderNum] " << Utf8ToLocal("提交批量节点Num顺序更新完成 ")
        << stopwatch_.ElapsedMs() << " ms <<<<<";
  return true;
}

bool CNodeOrderRebuilderImpl::FolderHasUnassignedChild(const std::string& uuid) {
  return !FirstChild(std::string("SELECT folder.uuid FROM folder") + " INNER JOIN folder_order" +
                         " ON folder.uuid = folder_order.uuid" +
                         " AND folder_order.order_num = " + "-1" + " WHERE folder.puuid = '" +
                         uuid + "' Limit 1",
                     "[RebuildFolderChildOrderNum]:")
              .empty() ||
         !FirstChild(std::string("SELECT layer.uuid FROM layer") + " INNER JOIN layer_order" +
                         " ON layer.uuid = layer_order.uuid" + " AND layer_order.order_num = " +
                         "-1" + " WHERE layer." + folderParentColumn_ + " = '" + uuid + "' Limit 1",
                     "[RebuildFolderForLayerChild]:")
              .empty();
}

bool CNodeOrderRebuilderImpl::LayerHasUnassignedChild(const std::string& uuid) {
  return !FirstChild(std::string("SELECT layer.uuid FROM layer") + " INNER JOIN layer_order" +
                         " ON layer.uuid = layer_order.uuid" + " AND layer_order.order_num = " +
                         "-1" + " WHERE layer." + layerParentColumn_ + " = '" + uuid + "' Limit 1",
                     "[RebuildLayerChildOrderNum] Layer-Child:")
              .empty() ||
         !FirstChild(std::string("SELECT shape.uuid FROM shape") + " INNER JOIN shape_order" +
                         " ON shape.uuid = shape_order.uuid" + " AND shape_order.order_num = " +
                         "-1" + " WHERE shape.puuid = '" + uuid + "' Limit 1",
                     "[RebuildLayerChildOrderNum] Feature-Child:")
              .empty();
}

std::string CNodeOrderRebuilderImpl::FirstChild(const std::string& sql, const char* tag) {
  CSqlStatement stmt(db_, sql, tag);
  return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string();
}

void CNodeOrderRebuilderImpl::VisitNode(const std::string& uuid) {
  ++visited_;
  if (progress_ != nullptr) progress_->OnNode(uuid, visited_);
}

void CNodeOrderRebuilderImpl::RebuildFolder(const std::string& uuid, bool renumber,
                                            bool recursive) {
  if (!active_.insert(uuid).second) {
    ZuLogError(-1) << "[RebuildFolderChildOrderNum]:" << uuid << " is its own descendant";
    return;
  }
  WalkFolderChildren(uuid, renumber, recursive);
  WalkFolderLayers(uuid, renumber, recursive);
  active_.erase(uuid);
}

void CNodeOrderRebuilderImpl::RebuildLayer(const std::string& uuid, bool renumber,
                                           bool recursive) {
  if (!active_.insert(uuid).second) {
    ZuLogError(-1) << "[RebuildLayerChildOrderNum]:" << uuid << " is its own descendant";
    return;
  }
  WalkLayerChildren(uuid, renumber, recursive);
  active_.erase(uuid);
}

// The calculator is told the counter after its increment, one more than the number written to
// the row; the offset is deliberate and kept.
void CNodeOrderRebuilderImpl::WalkFolderChildren(const std::string& uuid, bool renumber,
                                                 bool recursive) {
  const std::string any = FirstChild(std::string("SELECT") + " uuid" + " FROM folder WHERE" +
                                         " puuid = '" + uuid + "'" + " Limit 1",
                                     "[RebuildFolderChildOrderNum]:");
  if (any.empty()) return;
  const std::string head = model_->QueryLeftFirstFolder(any);
  CSqlStatement rightOf(db_,
                        std::string("SELECT") + " right_uuid" + " FROM folder_order WHERE" +
                            " folder_order.uuid = ?",
                        "[RebuildFolderChildOrderNum]:");
  if (!rightOf.IsValid()) return;
  CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator();
  std::unordered_set<std::string> seen;
  std::string left, node = head;
  int counter = 0;
  while (!node.empty() && seen.insert(node).second) {
    rightOf.BindText(1, node, false);
    const std::string right = rightOf.StepRow() ? rightOf.ColumnText(0, false) : std::string();
    rightOf.Reset();
    if (renumber) {
      WriteFolderRow(node, left, right, counter);
      ++counter;
      if (calculator != nullptr) calculator->SetLOrderChange(node, counter);
    }
    if (recursive) RebuildFolder(node, FolderHasUnassignedChild(node), true);
    VisitNode(node);
    left = node;
    node = right;
  }
}

void CNodeOrderRebuilderImpl::WalkFolderLayers(const std::string& uuid, bool renumber,
                                               bool recursive) {
  const std::string any = FirstChild(std::string("SELECT") + " uuid" + " FROM layer WHERE" +
                                         " folder_puuid = '" + uuid + "'" + " Limit 1",
                                     "[RebuildFolderForLayerChild]:");
  if (any.empty()) return;
  bool isLayer = true;
  const std::string head = model_->QueryLeftFirstComposite(any, isLayer);
  CSqlStatement rightOf(db_,
                        std::string("SELECT") + " right_layer_uuid" + " FROM layer_order WHERE" +
                            " uuid = ?",
                        "[RebuildFolderForLayerChild]:");
  if (!rightOf.IsValid()) return;
  CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator();
  std::unordered_set<std::string> seen;
  std::string left, node = head;
  int counter = 0;
  while (!node.empty() && seen.insert(node).second) {
    rightOf.BindText(1, node, false);
    const std::string right = rightOf.StepRow() ? rightOf.ColumnText(0, false) : std::string();
    rightOf.Reset();
    if (renumber) {
      WriteCompositeRow(true, node, left, true, right, true, counter);
      ++counter;
      if (calculator != nullptr) calculator->SetLOrderChange(node, counter);
    }
    if (recursive) RebuildLayer(node, LayerHasUnassignedChild(node), true);
    VisitNode(node);
    left = node;
    node = right;
  }
}

void CNodeOrderRebuilderImpl::WalkLayerChildren(const std::string& uuid, bool renumber,
                                                bool recursive) {
  bool isLayer = true;
  std::string any = FirstChild(std::string("SELECT") + " uuid" + " FROM layer WHERE" +
                                   " layer_puuid = '" + uuid + "'" + " Limit 1",
                               "[RebuildLayerChildOrderNum] Layer-Child:");
  if (any.empty()) {
    isLayer = false;
    any = FirstChild(std::string("SELECT") + " uuid" + " FROM shape WHERE" + " puuid = '" + uuid +
                         "'" + " Limit 1",
                     "[RebuildLayerChildOrderNum] Feature-Child:");
  }
  if (any.empty()) return;
  const std::string head = model_->QueryLeftFirstComposite(any, isLayer);
  const std::string columns = " right_shape_uuid,right_layer_uuid";
  CSqlStatement shapes(db_, std::string("SELECT") + columns + " FROM shape_order WHERE" +
                                " uuid = ?",
                       "[RebuildLayerChildOrderNum]:");
  CSqlStatement layers(db_, std::string("SELECT") + columns + " FROM layer_order WHERE" +
                                " uuid = ?",
                       "[RebuildLayerChildOrderNum]:");
  if (!shapes.IsValid() || !layers.IsValid()) return;
  CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator();
  std::unordered_set<std::string> seen;
  std::string left, node = head;
  bool leftIsLayer = true;
  int counter = 0;
  while (!node.empty() && seen.insert(node).second) {
    CSqlStatement& rightOf = isLayer ? layers : shapes;
    rightOf.BindText(1, node, false);
    std::string rightShape, rightLayer;
    if (rightOf.StepRow()) {
      rightShape = rightOf.ColumnText(0, false);
      rightLayer = rightOf.ColumnText(1, false);
    }
    rightOf.Reset();
    // The layer column wins, as in every walk of a mixed list.
    const bool rightIsLayer = !rightLayer.empty();
    const std::string right = rightIsLayer ? rightLayer : rightShape;
    if (renumber) {
      WriteCompositeRow(isLayer, node, left, leftIsLayer, right, rightIsLayer, counter);
      ++counter;
      if (isLayer && calculator != nullptr) calculator->SetLOrderChange(node, counter);
    }
    if (recursive && isLayer) RebuildLayer(node, LayerHasUnassignedChild(node), true);
    VisitNode(node);
    left = node;
    leftIsLayer = isLayer;
    node = right;
    isLayer = rightIsLayer;
  }
}

void CNodeOrderRebuilderImpl::WriteFolderRow(const std::string& uuid, const std::string& left,
                                             const std::string& right, int order) {
  if (!folderUpdate_.IsValid() &&
      !folderUpdate_.Prepare(db_,
                             std::string("UPDATE 'main'.'folder_order' SET") + " 'left_uuid'=?," +
                                 " 'right_uuid'=?," + " 'order_num'=?" + " WHERE" + " uuid = ?",
                             "[ModifyFolderOrder]:")) {
    return;
  }
  folderUpdate_.BindText(1, left, false);
  folderUpdate_.BindText(2, right, false);
  folderUpdate_.BindInt(3, order);
  folderUpdate_.BindText(4, uuid, false);
  folderUpdate_.StepDone();
  folderUpdate_.Reset();
}

// The layer column of each pair comes before the shape column here; the importer's update lists
// them the other way round. Both orders are kept as they are.
void CNodeOrderRebuilderImpl::WriteCompositeRow(bool isLayer, const std::string& uuid,
                                                const std::string& left, bool leftIsLayer,
                                                const std::string& right, bool rightIsLayer,
                                                int order) {
  CSqlStatement& stmt = isLayer ? layerUpdate_ : featureUpdate_;
  if (!stmt.IsValid() &&
      !stmt.Prepare(db_,
                    std::string("UPDATE 'main'.'") + (isLayer ? "layer_order" : "shape_order") +
                        "' SET" + " 'left_layer_uuid'=?," + " 'left_shape_uuid'=?," +
                        " 'right_layer_uuid'=?," + " 'right_shape_uuid'=?," + " 'order_num'=?" +
                        " WHERE" + " uuid = ?",
                    isLayer ? "[ModifyLayerOrder]:" : "[ModifyFeatureOrder]:")) {
    return;
  }
  stmt.BindText(1, leftIsLayer ? left : std::string(), false);
  stmt.BindText(2, leftIsLayer ? std::string() : left, false);
  stmt.BindText(3, rightIsLayer ? right : std::string(), false);
  stmt.BindText(4, rightIsLayer ? std::string() : right, false);
  stmt.BindInt(5, order);
  stmt.BindText(6, uuid, false);
  stmt.StepDone();
  stmt.Reset();
}
