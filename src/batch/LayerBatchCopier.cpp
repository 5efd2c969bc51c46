#include "LayerBatchCopier.h"

#include "LayerBatchCopierImpl.h"

CLayerBatchCopier::CLayerBatchCopier(IAnnotationDBDataModel* model)
    : impl_(std::make_shared<CLayerBatchCopierImpl>(model)) {}

CLayerBatchCopier::~CLayerBatchCopier() = default;

CLayerBatchCopier::CLayerBatchCopier(const CLayerBatchCopier& other) = default;

CLayerBatchCopier& CLayerBatchCopier::operator=(const CLayerBatchCopier& other) = default;

bool CLayerBatchCopier::BeginCopy(ICopyProgress* progress) {
  return impl_ && impl_->BeginCopy(progress);
}

bool CLayerBatchCopier::IsCopying() const { return impl_ && impl_->IsCopying(); }

bool CLayerBatchCopier::CopyNode(const std::string& sourceUuid,
                                 const std::string& targetParentUuid, std::string* copyUuid) {
  return impl_ && impl_->CopyNode(sourceUuid, targetParentUuid, copyUuid);
}

bool CLayerBatchCopier::EndCopy() { return impl_ && impl_->EndCopy(); }

bool CLayerBatchCopier::DiscardCopy() { return impl_ && impl_->DiscardCopy(); }
