#include "LayerBatchCopierImpl.h"

#include "NodeCacheCalculator.h"
#include "NodeTreeCopier.h"
#include "SpatialiteDBDataModel.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

CLayerBatchCopierImpl::CLayerBatchCopierImpl(IAnnotationDBDataModel* model)
    : model_(dynamic_cast<CSpatialiteDBDataModel*>(model)) {
  if (model_ == nullptr || !model_->IsInstalled()) {
    ZuLogError(-1) << "[CLayerBatchCopier] " << Utf8ToLocal("DBDataModel未建立");
  }
}

CLayerBatchCopierImpl::~CLayerBatchCopierImpl() {
  if (copying_) DiscardCopy();
}

bool CLayerBatchCopierImpl::BeginCopy(CLayerBatchCopier::ICopyProgress* progress) {
  if (model_ == nullptr || !model_->IsInstalled() || copying_) return false;
  if (!model_->BeginTransaction()) {
    ZuLogError(-1) << "[BeginCopy] " << Utf8ToLocal("启动事务失败");
    return false;
  }
  cache_.reset(new CCacheSizeScope(model_->GetConnection(), CCacheSizeScope::kBatchKibibytes));
  progress_ = progress;
  copied_ = 0;
  copying_ = true;
  stopwatch_.Restart();
  ZuLOG << "[BeginCopy] " << Utf8ToLocal("批量复制开始") << " >>>>>";
  return true;
}

bool CLayerBatchCopierImpl::CopyNode(const std::string& sourceUuid,
                                     const std::string& targetParentUuid, std::string* copyUuid) {
  if (!copying_) return false;
  CNodeTreeCopier copier(model_, model_);
  CLayerBatchCopier::ICopyProgress* progress = progress_;
  const int before = copied_;
  copier.SetProgress([progress, before](const std::string& name, int copied) {
    return progress != nullptr && progress->OnNodeCopied(name, before + copied);
  });
  const bool copied = copier.Copy(sourceUuid, targetParentUuid, copyUuid);
  copied_ += copier.GetCopiedCount();
  // A cancelled copy, and one that failed after writing part of its subtree, is undone whole,
  // with everything copied since BeginCopy: no half-copied subtree is ever committed. A refused
  // placement wrote nothing and leaves the copier as it was.
  if (copier.IsCancelled() || (!copied && copier.HasWritten())) DiscardCopy();
  return copied;
}

bool CLayerBatchCopierImpl::EndCopy() {
  if (!copying_) return false;
  copying_ = false;
  progress_ = nullptr;
  const bool committed = model_->CommitTransaction();
  cache_.reset();
  if (!committed) ZuLogError(-1) << "[EndCopy] " << Utf8ToLocal("提交事务失败");
  // New folders and layers get their cached attributes and order from a fresh pass.
  if (CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator()) calculator->Refresh();
  ZuLOG << "[EndCopy] " << Utf8ToLocal("提交批量复制完成 ") << stopwatch_.ElapsedMs()
        << " ms <<<<<";
  return committed;
}

bool CLayerBatchCopierImpl::DiscardCopy() {
  if (!copying_) return false;
  copying_ = false;
  progress_ = nullptr;
  const bool rolledBack = model_->RollBackTransaction();
  cache_.reset();
  if (!rolledBack) ZuLogError(-1) << "[DiscardCopy] " << Utf8ToLocal("回滚事务失败");
  if (CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator()) calculator->Refresh();
  ZuLOG << "[DiscardCopy] " << Utf8ToLocal("回滚批量复制完成 ") << stopwatch_.ElapsedMs()
        << " ms <<<<<";
  return rolledBack;
}
