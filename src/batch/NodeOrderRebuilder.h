// CNodeOrderRebuilder renumbers sibling order numbers: it walks sibling lists from their head
// along the right links and writes consecutive numbers, optionally through the whole subtree. It
// repairs lists whose rows carry the unassigned number -1 and keeps the model's node cache
// calculator told of every folder's and layer's new number.
//
// A list is renumbered only when one of its members carries -1; with `recursive` the walk goes
// on into every child list, renumbering each that needs it.
//
// The class is a handle: copies share one implementation, which lives as long as any handle.
//
// Threading contract: one rebuilder is used from one thread; it writes on the data model's
// connection inside one transaction. Progress callbacks run on the calling thread.
#ifndef ANNOTATIONLAYER_NODE_ORDER_REBUILDER_H
#define ANNOTATIONLAYER_NODE_ORDER_REBUILDER_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;
class CNodeOrderRebuilderImpl;

class ANNOTATIONLAYER_EXPORT CNodeOrderRebuilder {
 public:
  class ANNOTATIONLAYER_EXPORT IRebuildProgress {
   public:
    virtual ~IRebuildProgress() = default;
    virtual void OnBegin(IAnnotationDBDataModel* model, bool recursive) = 0;
    // Once per visited node; `count` is the number of nodes visited so far, this one included.
    virtual void OnNode(const std::string& uuid, int count) = 0;
    virtual void OnEnd(IAnnotationDBDataModel* model) = 0;
  };

  // The model must stay open while the rebuilder is used.
  explicit CNodeOrderRebuilder(IAnnotationDBDataModel* model);
  ~CNodeOrderRebuilder();
  CNodeOrderRebuilder(const CNodeOrderRebuilder& other);
  CNodeOrderRebuilder& operator=(const CNodeOrderRebuilder& other);

  // Renumbers the children of a folder or layer (and below, when recursive). False without an
  // open model or while a rebuild runs; statement failures are logged and the rebuild goes on.
  // `progress` is not owned and may be null.
  bool RebuildNodeOrderNum(const std::string& uuid, bool recursive, IRebuildProgress* progress);
  bool IsRebuilding() const;

 private:
  std::shared_ptr<CNodeOrderRebuilderImpl> impl_;
};

#endif  // ANNOTATIONLAYER_NODE_ORDER_REBUILDER_H
