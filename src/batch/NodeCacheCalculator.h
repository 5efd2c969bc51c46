// CNodeCacheCalculator keeps, for every folder and layer of one data model, its order number and
// its own display attribute, and answers for any node the attribute and order key inherited
// through its ancestors. A background pass (Refresh) walks the whole tree to fill the cache; the
// data model keeps it current with the Set* calls when it inserts or modifies folders and layers.
//
// A feature's answers differ from its layer's only by the feature's own check state and order
// number, and a pass asks for thousands of features below a handful of layers. So what a layer
// hands down to its features (the combined attribute and the order numbers of the chain down to
// the layer) is kept per layer, and dropped by every Set* call and by Refresh: a feature then costs
// one read of its own row, status and order (IAnnotationDBDataModel::QueryFeatureLink) and a map
// lookup.
//
// Ownership: the data model owns its calculator; the calculator borrows the model.
//
// Threading contract: the Set* calls and the readers may be called from any thread, also while a
// pass runs; every access to the cache holds the calculator's recursive lock for its duration, and
// the readers take it once per ancestor, so an answer may mix values from before and after a
// concurrent update. The pass runs on the calculator's own task thread and reads the model
// through its read operations. Destroying the calculator stops a running pass and waits for it.
#ifndef ANNOTATIONLAYER_NODE_CACHE_CALCULATOR_H
#define ANNOTATIONLAYER_NODE_CACHE_CALCULATOR_H

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectVisitor.h"
#include "NodeAttribute.h"
#include "NodeOrder.h"
#include "Task.h"

class CCriticalLock;

class ANNOTATIONLAYER_EXPORT CNodeCacheCalculator : public CTask,
                                                    public IAnnotationDBObjectVisitor {
 public:
  explicit CNodeCacheCalculator(IAnnotationDBDataModel* model);
  ~CNodeCacheCalculator() override;
  CNodeCacheCalculator(const CNodeCacheCalculator&) = delete;
  CNodeCacheCalculator& operator=(const CNodeCacheCalculator&) = delete;

  // Records a folder's order number and checked state (creating the entry when missing).
  void SetLChange(const CFolderOption& option);
  // The same for a layer, plus its levels: the level range is set from the levels and then again
  // from the name levels, so the cached level range holds the name levels and the cached name
  // range keeps its defaults. Kept so on purpose.
  void SetLChange(const CLayerOption& option);
  // Records a new order number (creating the entry when missing).
  void SetLOrderChange(const std::string& uuid, int order);
  // Changes the visible flag of an existing entry; unknown uuids are ignored.
  void SetLVisibleChange(const std::string& uuid, bool visible);
  // Changes the levels of an existing entry (with the same two SetLevel calls); unknown uuids are
  // ignored.
  void SetLLevelChange(const CLayerOption& option);
  // A folder or layer moved under another parent: what was kept for the layers below it is dropped.
  // (A move that also changes the sibling order reaches SetLChange, which drops it as well.)
  void SetLParentChange(const std::string& uuid);
  // Clears the cache and starts a background pass; refused, with a log line, while one runs.
  void Refresh();
  // True while a pass is inside the model's Travel.
  bool IsCalculating() const { return calculating_.load(std::memory_order_relaxed); }

  // The order numbers of the node's ancestors (root first, -1 where not cached) and its own.
  CNodeOrder GetEntityOrder(const std::string& uuid);
  // The node's ancestors' attributes combined with +=; invisible at once when the node itself is
  // unchecked, and cut at the first invisible ancestor.
  CNodeAttribute GetEntityAttribute(const std::string& uuid);
  // Both of the above with one walk of the node's ancestors, for callers that need the order only
  // of visible nodes (the spatial engine asks for both for every feature of a pass). Returns the
  // attribute; `order` receives the order key when the attribute is visible and is left untouched
  // otherwise. When `type` is given, it receives the feature's type as
  // IAnnotationDBDataModel::GetFeatureType gives it if the feature's row was read in the same go,
  // and is left untouched otherwise (the node is no feature, or the model cannot read a feature's
  // link in one go).
  CNodeAttribute GetVisibleEntityOrder(const std::string& uuid, CNodeOrder* order,
                                       E_ANNOTATION_TYPE* type = nullptr);
  // GetVisibleEntityOrder of a feature whose link the caller has read already (with its order
  // number when `order` is given); `type` always receives the link's type.
  CNodeAttribute GetVisibleLinkOrder(const IAnnotationDBDataModel::FeatureLink& link,
                                     CNodeOrder* order, E_ANNOTATION_TYPE* type = nullptr);
  // The number of cached folders and layers.
  int GetCacheCount() const;

 protected:
  void OnRunTask() override;
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                            const std::string& uuid, const CFolderOption& option) override;
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                           const std::string& uuid, const CLayerOption& option) override;

 private:
  struct Entry {
    int order = -1;
    CNodeAttribute attribute;
  };
  // What a layer hands down to its features: the attributes of its ancestors and itself combined
  // (cut at the first invisible one) and their order numbers, root first.
  struct Inherited {
    CNodeAttribute attribute;
    std::vector<int32_t> orders;
  };

  CNodeAttribute GetLAttribute(const std::string& uuid);
  int GetLOrder(const std::string& uuid) const;
  // What `parent`, a feature's parent as its row names it, hands down; from the kept copy when
  // there is one. Called without the lock held.
  Inherited InheritedFrom(const std::string& parent);
  // Drops every kept Inherited; called with the lock held by each change to the cache.
  void ForgetInherited();

  IAnnotationDBDataModel* model_;
  std::atomic<bool> calculating_{false};
  std::unique_ptr<CCriticalLock> lock_;
  std::map<std::string, Entry> cache_;
  // Guarded by lock_. The generation counts ForgetInherited calls, so that a value computed while
  // the cache changed is not kept.
  std::map<std::string, Inherited> inherited_;
  uint64_t generation_ = 0;
};

#endif  // ANNOTATIONLAYER_NODE_CACHE_CALCULATOR_H
