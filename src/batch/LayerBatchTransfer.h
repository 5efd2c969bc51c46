// CLayerBatchTransfer moves or copies a folder, layer or feature with its whole subtree from one
// data model into another (or within one): the copy is written in one transaction of the target
// model and becomes the last child of its new parent; then, when asked, the original is deleted
// from the source in a transaction of its own, and only when the committed copy holds as many
// folders, layers and features as the original. A failed deletion or an incomplete copy leaves
// both and fails (no data is lost); a failed copy leaves the target as it was and the source
// untouched.
//
// The class is a handle: copies share one implementation, which lives as long as any handle.
//
// Threading contract: used from one thread; nothing else may write through either model
// meanwhile.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_H
#define ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"
#include "LayerBatchCopier.h"

class IAnnotationDBDataModel;
class CLayerBatchTransferImpl;

class ANNOTATIONLAYER_EXPORT CLayerBatchTransfer {
 public:
  // Both models must stay open while the transfer is used; they may be the same model.
  CLayerBatchTransfer(IAnnotationDBDataModel* source, IAnnotationDBDataModel* target);
  ~CLayerBatchTransfer();
  CLayerBatchTransfer(const CLayerBatchTransfer& other);
  CLayerBatchTransfer& operator=(const CLayerBatchTransfer& other);

  // Copies `sourceUuid` under `targetParentUuid` (deleting the original when `deleteSource`);
  // the copy's uuid goes to `copyUuid` when given. `progress` is not owned and may be null.
  bool Transfer(const std::string& sourceUuid, const std::string& targetParentUuid,
                bool deleteSource, std::string* copyUuid = nullptr,
                CLayerBatchCopier::ICopyProgress* progress = nullptr);

 private:
  std::shared_ptr<CLayerBatchTransferImpl> impl_;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_TRANSFER_H
