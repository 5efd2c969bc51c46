#include "LayerBatchTransfer.h"

#include "LayerBatchTransferImpl.h"

CLayerBatchTransfer::CLayerBatchTransfer(IAnnotationDBDataModel* source,
                                         IAnnotationDBDataModel* target)
    : impl_(std::make_shared<CLayerBatchTransferImpl>(source, target)) {}

CLayerBatchTransfer::~CLayerBatchTransfer() = default;

CLayerBatchTransfer::CLayerBatchTransfer(const CLayerBatchTransfer& other) = default;

CLayerBatchTransfer& CLayerBatchTransfer::operator=(const CLayerBatchTransfer& other) = default;

bool CLayerBatchTransfer::Transfer(const std::string& sourceUuid,
                                   const std::string& targetParentUuid, bool deleteSource,
                                   std::string* copyUuid,
                                   CLayerBatchCopier::ICopyProgress* progress) {
  return impl_ && impl_->Transfer(sourceUuid, targetParentUuid, deleteSource, copyUuid, progress);
}
