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
#include <string>

#include "AnnotationLayerTypes.h"

class CSpatialiteDBDataModel;

class CNodeTreeCopier {
 public:
  // Told of every copied node (its name and the number copied so far); returns true to cancel.
  using Progress = std::function<bool(const std::string& name, int copied)>;

  CNodeTreeCopier(CSpatialiteDBDataModel* source, CSpatialiteDBDataModel* target);
  CNodeTreeCopier(const CNodeTreeCopier&) = delete;
  CNodeTreeCopier& operator=(const CNodeTreeCopier&) = delete;

  void SetProgress(Progress progress) { progress_ = std::move(progress); }
  // Copies `sourceUuid` under `targetParent`; the copy's uuid goes to `copyUuid`. False when the
  // placement is not allowed, a node row could not be written, or the progress cancelled; what
  // was copied before stays in the caller's transaction.
  bool Copy(const std::string& sourceUuid, const std::string& targetParent, std::string* copyUuid);
  int GetCopiedCount() const { return copied_; }
  bool IsCancelled() const { return cancelled_; }

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
  void LinkRight(E_NODE_KIND kind, const std::string& node, const std::string& right,
                 bool rightIsLayer);
  void CopyStyle(const std::string& uuid, const std::string& copy, bool isLayer);
  void CopyFields(const std::string& uuid, const std::string& copy, bool userData);
  void CopyGeometry(const std::string& uuid, const std::string& copy);
  void CopyEnclosures(const std::string& uuid, const std::string& copy);
  bool Counted(const std::string& name);

  CSpatialiteDBDataModel* source_;
  CSpatialiteDBDataModel* target_;
  Progress progress_;
  int copied_ = 0;
  bool cancelled_ = false;
};

#endif  // ANNOTATIONLAYER_NODE_TREE_COPIER_H
