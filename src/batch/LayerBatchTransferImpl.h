// The implementation behind CLayerBatchTransfer. Internal to the module.
//
// Threading contract: as CLayerBatchTransfer.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_IMPL_H
#define ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_IMPL_H

#include <string>

#include "LayerBatchTransfer.h"

class CSpatialiteDBDataModel;

class CLayerBatchTransferImpl {
 public:
  CLayerBatchTransferImpl(IAnnotationDBDataModel* source, IAnnotationDBDataModel* target);
  CLayerBatchTransferImpl(const CLayerBatchTransferImpl&) = delete;
  CLayerBatchTransferImpl& operator=(const CLayerBatchTransferImpl&) = delete;

  bool Transfer(const std::string& sourceUuid, const std::string& targetParentUuid,
                bool deleteSource, std::string* copyUuid,
                CLayerBatchCopier::ICopyProgress* progress);

 private:
  CSpatialiteDBDataModel* source_;
  CSpatialiteDBDataModel* target_;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_IMPL_H
