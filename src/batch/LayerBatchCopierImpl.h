// The implementation behind CLayerBatchCopier. Internal to the module.
//
// Threading contract: as CLayerBatchCopier.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_COPIER_IMPL_H
#define ANNOTATIONLAYER_LAYER_BATCH_COPIER_IMPL_H

#include <memory>
#include <string>

#include "CacheSizeScope.h"
#include "LayerBatchCopier.h"
#include "Stopwatch.h"

class CSpatialiteDBDataModel;

class CLayerBatchCopierImpl {
 public:
  explicit CLayerBatchCopierImpl(IAnnotationDBDataModel* model);
  ~CLayerBatchCopierImpl();
  CLayerBatchCopierImpl(const CLayerBatchCopierImpl&) = delete;
  CLayerBatchCopierImpl& operator=(const CLayerBatchCopierImpl&) = delete;

  bool BeginCopy(CLayerBatchCopier::ICopyProgress* progress);
  bool IsCopying() const { return copying_; }
  bool CopyNode(const std::string& sourceUuid, const std::string& targetParentUuid,
                std::string* copyUuid);
  bool EndCopy();
  bool DiscardCopy();

 private:
  CStopwatch stopwatch_;
  // A larger page cache from BeginCopy to EndCopy or DiscardCopy.
  std::unique_ptr<CCacheSizeScope> cache_;
  CSpatialiteDBDataModel* model_;
  bool copying_ = false;
  int copied_ = 0;
  CLayerBatchCopier::ICopyProgress* progress_ = nullptr;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_COPIER_IMPL_H
