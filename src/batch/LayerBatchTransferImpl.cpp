#include "LayerBatchTransferImpl.h"

#include "NodeCacheCalculator.h"
#include "NodeTreeCopier.h"
#include "SpatialiteDBDataModel.h"
#include "Stopwatch.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

CLayerBatchTransferImpl::CLayerBatchTransferImpl(IAnnotationDBDataModel* source,
                                                 IAnnotationDBDataModel* target)
    : source_(dynamic_cast<CSpatialiteDBDataModel*>(source)),
      target_(dynamic_cast<CSpatialiteDBDataModel*>(target)) {
  if (source_ == nullptr || target_ == nullptr || !source_->IsInstalled() ||
      !target_->IsInstalled()) {
    ZuLogError(-1) << "[CLayerBatchTransfer] " << Utf8ToLocal("DBDataModel未建立");
  }
}

bool CLayerBatchTransferImpl::Transfer(const std::string& sourceUuid,
                                       const std::string& targetParentUuid, bool deleteSource,
                                       std::string* copyUuid,
                                       CLayerBatchCopier::ICopyProgress* progress) {
  if (source_ == nullptr || target_ == nullptr || !source_->IsInstalled() ||
      !target_->IsInstalled()) {
    return false;
  }
  CStopwatch stopwatch;
  const E_NODE_KIND kind = source_->QueryNodeKind(sourceUuid);
  if (!target_->BeginTransaction()) return false;
  CNodeTreeCopier copier(source_, target_);
  copier.SetProgress([progress](const std::string& name, int copied) {
    return progress != nullptr && progress->OnNodeCopied(name, copied);
  });
  std::string copy;
  if (!copier.Copy(sourceUuid, targetParentUuid, &copy)) {
    target_->RollBackTransaction();
    return false;
  }
  if (!target_->CommitTransaction()) {
    ZuLogError(-1) << "[Transfer] " << Utf8ToLocal("提交事务失败");
    return false;
  }
  if (copyUuid != nullptr) *copyUuid = copy;

  bool deleted = true;
  if (deleteSource) {
    // The original goes only when the committed copy holds all of it.
    const CNodeTreeCopier::SubtreeCount original = CNodeTreeCopier::CountSubtree(source_, sourceUuid);
    const CNodeTreeCopier::SubtreeCount copied = CNodeTreeCopier::CountSubtree(target_, copy);
    if (!(original == copied)) {
      ZuLogError(-1) << "[Transfer] the copy of " << sourceUuid << " is incomplete ("
                     << copied.folders << "/" << original.folders << " folders, " << copied.layers
                     << "/" << original.layers << " layers, " << copied.features << "/"
                     << original.features << " features); the original stays";
      deleted = false;
    } else {
      switch (kind) {
        case NODE_KIND_FOLDER: deleted = source_->DeleteFolder(sourceUuid); break;
        case NODE_KIND_LAYER: deleted = source_->DeleteLayer(sourceUuid); break;
        default: deleted = source_->DeleteFeature(sourceUuid); break;
      }
      if (!deleted) ZuLogError(-1) << "[Transfer] the original " << sourceUuid << " stays";
    }
  }
  // Deleting a folder or layer of the same model has rebuilt its node cache already.
  const bool refreshedByDelete =
      deleted && deleteSource && source_ == target_ && kind != NODE_KIND_FEATURE;
  if (!refreshedByDelete) {
    if (CNodeCacheCalculator* calculator = target_->GetNodeCacheCalculator()) {
      calculator->Refresh();
    }
  }
  ZuLOG << "[Transfer] " << copier.GetCopiedCount() << " nodes " << stopwatch.ElapsedMs()
        << " ms <<<<<";
  return deleted;
}
