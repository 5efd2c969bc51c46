// CChildLister lists the direct children of one folder or layer in sibling order: for a folder its
// folders and then its layers, for a layer its layers and features as they stand in the list.
//
// Commands walk the tree one level at a time through it rather than with one deep Travel, so
// that they decide themselves how deep to go: the model's walks pass a "skip children" answer up
// to the parent level, where it also skips the parent's layers.
//
// Threading contract: one thread; the model must not be written during a listing.
#ifndef ANNOTATIONLAYER_CLI_CHILD_LISTER_H
#define ANNOTATIONLAYER_CLI_CHILD_LISTER_H

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "IAnnotationDBObjectVisitor.h"
#include "LayerOption.h"

class CChildLister : public IAnnotationDBObjectVisitor {
 public:
  struct Child {
    E_NODE_KIND kind = NODE_KIND_NONE;
    std::string uuid;
    // Only the record of the child's kind is filled; a feature's only when asked for.
    CFolderOption folder;
    CLayerOption layer;
    CFeatureOption feature;
  };

  // Numbers of nodes below a node, the node itself not included.
  struct Counts {
    int64_t folders = 0;
    int64_t layers = 0;
    int64_t features = 0;
    int64_t Total() const { return folders + layers + features; }
  };

  // `features`: list features too; `featureRecords`: read each feature's record (otherwise only
  // its uuid is known, which is much cheaper).
  CChildLister(bool features, bool featureRecords);
  CChildLister(const CChildLister&) = delete;
  CChildLister& operator=(const CChildLister&) = delete;

  // Lists the children of `parentUuid`, a folder or a layer. False for another kind.
  bool List(IAnnotationDBDataModel* model, const std::string& parentUuid, E_NODE_KIND parentKind,
            std::vector<Child>* children);

  // Counts what lies below `uuid`, a folder or layer, without stepping through features.
  static Counts CountBelow(IAnnotationDBDataModel* model, const std::string& uuid,
                           E_NODE_KIND kind);

  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                            const std::string& uuid, const CFolderOption& option) override;
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                           const std::string& uuid, const CLayerOption& option) override;
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                             const std::string& uuid, const CFeatureOption& option) override;
  bool IsOnlyUUID() override { return !featureRecords_; }

 private:
  bool features_;
  bool featureRecords_;
  std::vector<Child>* children_ = nullptr;
};

#endif  // ANNOTATIONLAYER_CLI_CHILD_LISTER_H
