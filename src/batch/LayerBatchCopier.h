// CLayerBatchCopier copies folders, layers and features, with everything below them and all their
// rows, to another place in the same annotation database, inside one transaction from BeginCopy to
// EndCopy (or DiscardCopy). Each copy becomes the last child of its new parent and every copied
// node gets a new uuid.
//
//   CLayerBatchCopier copier(model);
//   copier.BeginCopy(&progress);
//   std::string copy;
//   copier.CopyNode(layerUuid, targetFolderUuid, &copy);
//   copier.EndCopy();
//
// A folder goes under a folder, a layer under a folder or a layer, a feature under a layer; a
// node cannot be copied into its own subtree (such a CopyNode fails and changes nothing). A
// CopyNode that fails on any row of its subtree, or is cancelled, rolls back everything copied
// since BeginCopy and leaves the copier idle: no partial copy is ever committed.
//
// The class is a handle: copies share one implementation, which lives as long as any handle; a
// copy still in progress when the last handle goes is discarded.
//
// Threading contract: one copier is used from one thread; it writes on the model's connection, so
// nothing else may write through that model meanwhile. Progress callbacks run on that thread.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_COPIER_H
#define ANNOTATIONLAYER_LAYER_BATCH_COPIER_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;
class CLayerBatchCopierImpl;

class ANNOTATIONLAYER_EXPORT CLayerBatchCopier {
 public:
  class ANNOTATIONLAYER_EXPORT ICopyProgress {
   public:
    virtual ~ICopyProgress() = default;
    // A node was copied; `copied` nodes so far. Returns true to cancel: everything copied since
    // BeginCopy is then rolled back and the copier is idle again.
    virtual bool OnNodeCopied(const std::string& name, int copied) = 0;
  };

  // The model must stay open while the copier is used.
  explicit CLayerBatchCopier(IAnnotationDBDataModel* model);
  ~CLayerBatchCopier();
  CLayerBatchCopier(const CLayerBatchCopier& other);
  CLayerBatchCopier& operator=(const CLayerBatchCopier& other);

  // Opens the transaction; `progress` is not owned and may be null.
  bool BeginCopy(ICopyProgress* progress);
  bool IsCopying() const;
  // Copies `sourceUuid` under `targetParentUuid`; the copy's uuid goes to `copyUuid` when given.
  bool CopyNode(const std::string& sourceUuid, const std::string& targetParentUuid,
                std::string* copyUuid = nullptr);
  bool EndCopy();
  bool DiscardCopy();

 private:
  std::shared_ptr<CLayerBatchCopierImpl> impl_;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_COPIER_H
