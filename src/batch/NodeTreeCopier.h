// Copies a folder, layer or feature with everything below it from one data model into another (or
// into the same one), under a given parent, as that parent's last child. Every copied node gets a
// new uuid; its status, style, attribute fields, user data, enclosures (with their content) and
// geometry are copied, and the copies keep the sibling order of the originals. Used by the layer
// batch copier and the layer batch transfer. Internal to the module.
//
// A folder goes under a folder, a layer under a folder or a layer, a feature under a layer; a node
// is never copied into its own subtree.
//
// Threading contract: used from one thread, inside a transaction of the target model that the
// caller holds.
#ifndef ANNOTATIONLAYER_NODE_TREE_COPIER_H
#define ANNOTATIONLAYER_NODE_TREE_COPIER_H

#include <functional>
#include <memory>
#include <string>

#include "AnnotationLayerTypes.h"

class CFeatureRowCopier;
class CSpatialiteDBDataModel;

class CNodeTreeCopier {
 public:
  // Told of every copied node (its name and the number copied so far); returns true to cancel.
  using Progress = std::function<bool(const std::string& name, int copied)>;

  CNodeTreeCopier(CSpatialiteDBDataModel* source, CSpatialiteDBDataModel* target);
  ~CNodeTreeCopier();
  CNodeTreeCopier(const CNodeTreeCopier&) = delete;
  CNodeTreeCopier& operator=(const CNodeTreeCopier&) = delete;

  void SetProgress(Progress progress) { progress_ = std::move(progress); }
  // Copies `sourceUuid` under `targetParent`; the copy's uuid goes to `copyUuid`. False when the
  // placement is not allowed, any row of the subtree (node, order link, style, field, user data,
  // geometry, enclosure) could not be read or written, or the progress cancelled; what was
  // written before stays in the caller's transaction, for the caller to roll back.
  bool Copy(const std::string& sourceUuid, const std::string& targetParent, std::string* copyUuid);
  int GetCopiedCount() const { return copied_; }
  bool IsCancelled() const { return cancelled_; }
  // Whether Copy wrote anything to the target (a refused placement writes nothing).
  bool HasWritten() const { return written_; }

  // The folders, layers and features of the subtree at `uuid`, the node itself included.
  struct SubtreeCount {
    int folders = 0, layers = 0, features = 0;
    bool operator==(const SubtreeCount& o) const {
      return folders == o.folders && layers == o.layers && features == o.features;
    }
  };
  static SubtreeCount CountSubtree(CSpatialiteDBDataModel* model, const std::string& uuid);

 private:
  // Each copies one node below `parent` after `left` (a layer when `leftIsLayer`) with order
  // number `order`, then its subtree; the new uuid is returned, "" on failure.
  std::string CopyFolder(const std::string& uuid, const std::string& parent,
                         const std::string& left, int order);
  std::string CopyLayer(const std::string& uuid, const std::string& parent, bool parentIsLayer,
                        const std::string& left, bool leftIsLayer, int order);
  std::string CopyFeature(const std::string& uuid, const std::string& parent,
                          const std::string& left, bool leftIsLayer, int order);
  bool CopyChildrenOfFolder(const std::string& uuid, const std::string& copy);
  bool CopyChildrenOfLayer(const std::string& uuid, const std::string& copy);
  // Points the right neighbour of `node` at `right` in the target.
  // These return false on a failed statement; a node with nothing to copy is a success.
  bool LinkRight(E_NODE_KIND kind, const std::string& node, const std::string& right,
                 bool rightIsLayer);
  bool CopyStyle(const std::string& uuid, const std::string& copy, bool isLayer);
  bool CopyFields(const std::string& uuid, const std::string& copy, bool userData);
  bool CopyGeometry(const std::string& uuid, const std::string& copy);
  bool CopyEnclosures(const std::string& uuid, const std::string& copy);
  bool Counted(const std::string& name);

  CSpatialiteDBDataModel* source_;
  CSpatialiteDBDataModel* target_;
  Progress progress_;
  std::unique_ptr<CFeatureRowCopier> rows_;  // made at the first feature
  int copied_ = 0;
  bool cancelled_ = false;
  bool written_ = false;
};

#endif  // ANNOTATIONLAYER_NODE_TREE_COPIER_H
