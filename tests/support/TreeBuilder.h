// Builds annotation trees through the data model the way hosts append nodes: each new node is
// linked after its parent's current last child, and that child's right neighbour is updated.
#ifndef ANNOTATIONLAYER_TEST_TREE_BUILDER_H
#define ANNOTATIONLAYER_TEST_TREE_BUILDER_H

#include <string>

#include "IAnnotationDBDataModel.h"

class CTreeBuilder {
 public:
  explicit CTreeBuilder(IAnnotationDBDataModel* model) : model_(model) {}

  // Each returns the new node's uuid, or "" when the insert failed.
  std::string AddFolder(const std::string& parentFolder, const std::string& name);
  std::string AddLayer(const std::string& parentFolder, const std::string& name, int type = 0);
  std::string AddChildLayer(const std::string& parentLayer, const std::string& name);
  std::string AddFeature(const std::string& parentLayer, const std::string& name, int type = 0);

 private:
  // Points the right neighbour of `last` (a layer when `lastIsLayer`) at `uuid`.
  void LinkAfter(const std::string& last, bool lastIsLayer, const std::string& uuid,
                 bool uuidIsLayer);

  IAnnotationDBDataModel* model_;
};

#endif  // ANNOTATIONLAYER_TEST_TREE_BUILDER_H
