#include "LayerBatchDeleterImpl.h"

#include <sqlite3.h>

#include "FeatureOption.h"
#include "IAnnotationDBObjectNotifier.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::JoinIds;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

constexpr int kFeatureBatchSize = 6000;

void Append(std::vector<int64_t>& to, const std::vector<int64_t>& ids) {
  to.insert(to.end(), ids.begin(), ids.end());
}

}  // namespace

CLayerBatchDeleterImpl::CLayerBatchDeleterImpl(IAnnotationDBDataModel* model)
    : model_(dynamic_cast<CSpatialiteDBDataModel*>(model)) {
  if (model_ != nullptr && model_->IsInstalled()) {
    db_ = model_->GetConnection();
    handler_ = model_->GetHandler();
    if (db_ == nullptr || handler_ == nullptr) {
      ZuLogError(-1) << "[CLayerBatchDeleter] " << Utf8ToLocal("建立不成功");
    }
  } else {
    ZuLogError(-1) << "[CLayerBatchDeleter] " << Utf8ToLocal("DBDataModel未建立");
  }
}

void CLayerBatchDeleterImpl::BeginDelete(bool quietTopLevel,
                                         CLayerBatchDeleter::IDeleteProgress* progress) {
  deleting_ = true;
  progress_ = progress;
  quietTopLevel_ = quietTopLevel;
  stopwatch_.Restart();
  if (model_ != nullptr) model_->BeginTransaction();
  cache_.reset(new CCacheSizeScope(db_, CCacheSizeScope::kBatchKibibytes));
}

void CLayerBatchDeleterImpl::EndDelete() {
  if (model_ != nullptr) model_->CommitTransaction();
  cache_.reset();
  deleting_ = false;
  progress_ = nullptr;
  ZuLOG << "EndDelete: " << stopwatch_.ElapsedMs();
}

bool CLayerBatchDeleterImpl::BatchDeleteLayer(const std::string& uuid) {
  if (model_ == nullptr || db_ == nullptr) return false;
  const bool result = DeleteLayer(uuid, true);
  if (CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator()) calculator->Refresh();
  return result;
}

bool CLayerBatchDeleterImpl::BatchDeleteFolder(const std::string& uuid) {
  if (model_ == nullptr || db_ == nullptr) return false;
  const bool result = DeleteFolder(uuid, true);
  if (CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator()) calculator->Refresh();
  return result;
}

std::vector<std::string> CLayerBatchDeleterImpl::QueryUuids(const std::string& sql,
                                                            const char* tag, bool* ok) {
  std::vector<std::string> uuids;
  CSqlStatement stmt(db_, sql, tag);
  *ok = stmt.IsValid();
  while (stmt.StepRow()) uuids.push_back(stmt.ColumnText(0, false));
  return uuids;
}

std::string CLayerBatchDeleterImpl::QueryText(const std::string& sql, const char* tag,
                                              bool toLocal) {
  CSqlStatement stmt(db_, sql, tag);
  return stmt.StepRow() ? stmt.ColumnText(0, toLocal) : std::string();
}

namespace {

// Marks a node as being deleted for the scope of its recursive call.
class ActiveNode {
 public:
  ActiveNode(std::unordered_set<std::string>& active, const std::string& uuid)
      : active_(active), uuid_(uuid), entered_(active.insert(uuid).second) {}
  ~ActiveNode() {
    if (entered_) active_.erase(uuid_);
  }
  ActiveNode(const ActiveNode&) = delete;
  ActiveNode& operator=(const ActiveNode&) = delete;
  bool Entered() const { return entered_; }

 private:
  std::unordered_set<std::string>& active_;
  std::string uuid_;
  bool entered_;
};

}  // namespace

bool CLayerBatchDeleterImpl::DeleteLayer(const std::string& uuid, bool topLevel) {
  if (!AnnotationLayerInner::IsSafeSqlText(uuid)) {
    ZuLogError(-1) << "[__BatchDeleteLayer_1]:" << "refused uuid " << uuid;
    return false;
  }
  ActiveNode active(active_, uuid);
  if (!active.Entered()) {
    ZuLogError(-1) << "[__BatchDeleteLayer_1]:" << uuid << " is its own descendant";
    return false;
  }
  // Deepest layers first. The children are collected before any of them is deleted.
  bool ok = false;
  const std::vector<std::string> children = QueryUuids(
      "SELECT uuid FROM layer WHERE" + std::string(" layer_puuid = '") + uuid + "'",
      "[__BatchDeleteLayer_1]:", &ok);
  if (!ok) return false;
  for (const std::string& child : children) {
    if (!deleting_) break;
    if (DeleteLayer(child, false)) NotifyLayerDeleted(child, uuid);
  }

  CSqlStatement count(db_, "SELECT COUNT(*) FROM shape WHERE" + std::string(" puuid = '") + uuid +
                               "'",
                      "[CountShapeChildren]:");
  const int featureCount = count.StepRow() ? count.ColumnInt(0) : 0;
  const std::string name = QueryText(
      "SELECT name FROM layer WHERE" + std::string(" layer.uuid = '") + uuid + "'",
      "[QueryLayerName]:", true);

  CSqlStatement features(db_,
                         "SELECT uuid, index_id FROM shape WHERE" + std::string(" puuid = '") +
                             uuid + "'",
                         "[__BatchDeleteLayer_2]:");
  if (!features.IsValid()) return false;
  FeatureBatch batch;
  int handled = 0;
  auto flush = [&]() {
    if (batch.count == 0) return true;
    batch.uuids.pop_back();  // the trailing comma
    const bool done = DeleteFeatureBatch(batch);
    batch = FeatureBatch();
    if (done && progress_ != nullptr &&
        progress_->OnDeleteFeatures(name, handled, featureCount)) {
      deleting_ = false;
    }
    return done;
  };
  while (deleting_ && features.StepRow()) {
    batch.uuids += "'" + features.ColumnText(0, false) + "',";
    CFeatureOption indexes;
    indexes.SetIndexArrayString(features.ColumnText(1, false));
    Append(batch.status, indexes.GetIndexStatus());
    Append(batch.property, indexes.GetIndexProperty());
    Append(batch.userdata, indexes.GetIndexUserdata());
    Append(batch.enclosure, indexes.GetIndexEnclosure());
    ++batch.count;
    ++handled;
    if (batch.count == kFeatureBatchSize && !flush()) return false;
  }
  features.Finalize();
  if (!flush()) return false;

  // A cancelled deletion keeps the layer, so that no feature is left without its layer.
  if (!deleting_) return false;
  if (progress_ != nullptr && (!topLevel || !quietTopLevel_) && progress_->OnDeleteLayer(name)) {
    deleting_ = false;
    return false;
  }

  std::string parent;
  if (topLevel && !quietTopLevel_) {
    CSqlStatement parents(db_,
                          "SELECT folder_puuid,layer_puuid FROM layer WHERE" +
                              std::string(" uuid = '") + uuid + "'",
                          "[QueryLayerParentUUID]:");
    if (parents.StepRow()) {
      parent = parents.ColumnText(1, false);
      if (parent.empty()) parent = parents.ColumnText(0, false);
    }
  }
  if (!DeleteLayerRows(uuid)) return false;
  if (topLevel && !quietTopLevel_) NotifyLayerDeleted(uuid, parent);
  return true;
}

bool CLayerBatchDeleterImpl::DeleteFolder(const std::string& uuid, bool topLevel) {
  if (!AnnotationLayerInner::IsSafeSqlText(uuid)) {
    ZuLogError(-1) << "[__BatchDeleteFolder_1]:" << "refused uuid " << uuid;
    return false;
  }
  ActiveNode active(active_, uuid);
  if (!active.Entered()) {
    ZuLogError(-1) << "[__BatchDeleteFolder_1]:" << uuid << " is its own descendant";
    return false;
  }
  bool ok = false;
  const std::vector<std::string> folders = QueryUuids(
      "SELECT uuid FROM folder WHERE" + std::string(" puuid = '") + uuid + "'",
      "[__BatchDeleteFolder_1]:", &ok);
  if (!ok) return false;
  for (const std::string& child : folders) {
    if (!deleting_) break;
    if (DeleteFolder(child, false)) NotifyFolderDeleted(child, uuid);
  }
  const std::vector<std::string> layers = QueryUuids(
      "SELECT uuid FROM layer WHERE" + std::string(" folder_puuid = '") + uuid + "'",
      "[__BatchDeleteFolder_2]:", &ok);
  if (!ok) return false;
  for (const std::string& layer : layers) {
    if (!deleting_) break;
    if (DeleteLayer(layer, false)) NotifyLayerDeleted(layer, uuid);
  }

  const std::string name = QueryText(
      "SELECT name FROM folder WHERE" + std::string(" folder.uuid = '") + uuid + "'",
      "[QueryFolderName]:", true);
  // A cancelled deletion keeps the folder, so that no child is left without its parent.
  if (!deleting_) return false;
  if (progress_ != nullptr && (!topLevel || !quietTopLevel_) && progress_->OnDeleteFolder(name)) {
    deleting_ = false;
    return false;
  }

  std::string parent;
  if (topLevel && !quietTopLevel_) {
    parent = QueryText("SELECT puuid FROM folder WHERE" + std::string(" uuid = '") + uuid + "'",
                       "[QueryFolderParentUUID]:", false);
  }
  if (!DeleteFolderRows(uuid)) return false;
  if (topLevel && !quietTopLevel_) NotifyFolderDeleted(uuid, parent);
  return true;
}

bool CLayerBatchDeleterImpl::DeleteWhereIn(const char* table, const char* column,
                                           const std::string& list, const char* tag) {
  if (list.empty()) return true;
  return ExecSql(db_,
                 std::string("DELETE FROM 'main'.'") + table + "' WHERE " + column + " in (" +
                     list + ")",
                 tag);
}

bool CLayerBatchDeleterImpl::DeleteFeatureBatch(const FeatureBatch& batch) {
  return DeleteWhereIn("shape_style", "puuid", batch.uuids, "[BatchDeleteStyle]:") &&
         DeleteWhereIn("shape_order", "uuid", batch.uuids, "[BatchDeleteOrder]:") &&
         DeleteWhereIn("shape_property", "id", JoinIds(batch.property), "[BatchDeleteProperty]:") &&
         DeleteWhereIn("shape_userdata", "id", JoinIds(batch.userdata), "[BatchDeleteUserData]:") &&
         DeleteWhereIn("shape_status", "id", JoinIds(batch.status), "[BatchDeleteStatus]:") &&
         DeleteWhereIn("shape_enclosure", "id", JoinIds(batch.enclosure),
                       "[BatchDeleteEnclosure]:") &&
         DeleteWhereIn("shape", "uuid", batch.uuids, "[BatchDeleteShape]:");
}

bool CLayerBatchDeleterImpl::DeleteLayerRows(const std::string& uuid) {
  CLayerOption indexes;
  indexes.SetIndexArrayString(QueryText(
      "SELECT index_id FROM layer WHERE" + std::string(" uuid = '") + uuid + "'",
      "[QueryTableIndexes]:", false));
  const std::string quoted = "'" + uuid + "'";
  return DeleteWhereIn("layer_style", "puuid", quoted, "[BatchDeleteStyle]:") &&
         DeleteWhereIn("layer_order", "uuid", quoted, "[BatchDeleteOrder]:") &&
         DeleteWhereIn("layer_userdata", "id", JoinIds(indexes.GetIndexUserdata()),
                       "[BatchDeleteUserData]:") &&
         DeleteWhereIn("layer_status", "id", JoinIds(indexes.GetIndexStatus()),
                       "[BatchDeleteStatus]:") &&
         DeleteWhereIn("layer", "uuid", quoted, "[BatchDeleteLayerInner]:");
}

bool CLayerBatchDeleterImpl::DeleteFolderRows(const std::string& uuid) {
  CLayerOption indexes;
  indexes.SetIndexArrayString(QueryText(
      "SELECT index_id FROM folder WHERE" + std::string(" uuid = '") + uuid + "'",
      "[QueryTableIndexes]:", false));
  const std::string quoted = "'" + uuid + "'";
  return DeleteWhereIn("folder_order", "uuid", quoted, "[BatchDeleteOrder]:") &&
         DeleteWhereIn("folder_status", "id", JoinIds(indexes.GetIndexStatus()),
                       "[BatchDeleteStatus]:") &&
         DeleteWhereIn("folder", "uuid", quoted, "[BatchDeleteFolderInner]:");
}

void CLayerBatchDeleterImpl::NotifyLayerDeleted(const std::string& uuid,
                                                const std::string& parent) {
  if (IAnnotationDBObjectNotifier* notifier = model_->GetNotifier()) {
    notifier->OnLayerDeleted(model_, uuid, parent);
  }
}

void CLayerBatchDeleterImpl::NotifyFolderDeleted(const std::string& uuid,
                                                 const std::string& parent) {
  if (IAnnotationDBObjectNotifier* notifier = model_->GetNotifier()) {
    notifier->OnFolderDeleted(model_, uuid, parent);
  }
}
