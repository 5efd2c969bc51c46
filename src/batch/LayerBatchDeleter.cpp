#include "LayerBatchDeleter.h"

#include "LayerBatchDeleterImpl.h"

CLayerBatchDeleter::CLayerBatchDeleter(IAnnotationDBDataModel* model)
    : impl_(std::make_shared<CLayerBatchDeleterImpl>(model)) {}

CLayerBatchDeleter::~CLayerBatchDeleter() = default;

CLayerBatchDeleter::CLayerBatchDeleter(const CLayerBatchDeleter& other) = default;

CLayerBatchDeleter& CLayerBatchDeleter::operator=(const CLayerBatchDeleter& other) = default;

void CLayerBatchDeleter::BeginDelete(bool quietTopLevel, IDeleteProgress* progress) {
  if (impl_) impl_->BeginDelete(quietTopLevel, progress);
}

bool CLayerBatchDeleter::IsDeleting() const { return impl_ && impl_->IsDeleting(); }

bool CLayerBatchDeleter::BatchDeleteLayer(const std::string& layerUuid) {
  return impl_ && impl_->BatchDeleteLayer(layerUuid);
}

bool CLayerBatchDeleter::BatchDeleteFolder(const std::string& folderUuid) {
  return impl_ && impl_->BatchDeleteFolder(folderUuid);
}

void CLayerBatchDeleter::EndDelete() {
  if (impl_) impl_->EndDelete();
}
