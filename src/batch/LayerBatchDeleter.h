// CLayerBatchDeleter removes whole folder and layer subtrees, with every feature and every
// dependent row, in one transaction from BeginDelete to EndDelete. Features go in batches of 6000
// per set of statements; a caller-supplied IDeleteProgress hears of the progress and can cancel.
//
//   CLayerBatchDeleter deleter(model);
//   deleter.BeginDelete(false, &progress);
//   deleter.BatchDeleteFolder(folderUuid);
//   deleter.EndDelete();
//
// The class is a handle: copies share one implementation, which lives as long as any handle.
// A handle whose model is not an open SpatiaLite data model fails every call.
//
// Threading contract: one deleter is used from one thread; it writes on the data model's
// connection, so nothing else may write through that model meanwhile. Progress callbacks run on
// the calling thread, inside the loops.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_DELETER_H
#define ANNOTATIONLAYER_LAYER_BATCH_DELETER_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;
class CLayerBatchDeleterImpl;

class ANNOTATIONLAYER_EXPORT CLayerBatchDeleter {
 public:
  // Each operation returns true to cancel the deletion.
  class ANNOTATIONLAYER_EXPORT IDeleteProgress {
   public:
    virtual ~IDeleteProgress() = default;
    // A layer is about to be deleted.
    virtual bool OnDeleteLayer(const std::string& layerName) = 0;
    // A folder is about to be deleted.
    virtual bool OnDeleteFolder(const std::string& folderName) = 0;
    // `handled` of the layer's `total` features are gone.
    virtual bool OnDeleteFeatures(const std::string& layerName, int handled, int total) = 0;
  };

  // The model must stay open while the deleter is used.
  explicit CLayerBatchDeleter(IAnnotationDBDataModel* model);
  ~CLayerBatchDeleter();
  CLayerBatchDeleter(const CLayerBatchDeleter& other);
  CLayerBatchDeleter& operator=(const CLayerBatchDeleter& other);

  // Opens the transaction. With `quietTopLevel` the node passed to BatchDelete* is neither
  // announced to the progress object nor reported to the model's observers. `progress` is not
  // owned and may be null.
  void BeginDelete(bool quietTopLevel, IDeleteProgress* progress);
  bool IsDeleting() const;
  // Deletes the subtree and then rebuilds the model's node cache. False on a failed statement or
  // a cancel; what was deleted before stays and is committed by EndDelete.
  bool BatchDeleteLayer(const std::string& layerUuid);
  bool BatchDeleteFolder(const std::string& folderUuid);
  // Commits the transaction.
  void EndDelete();

 private:
  std::shared_ptr<CLayerBatchDeleterImpl> impl_;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_DELETER_H
