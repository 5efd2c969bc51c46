#include "ChildLister.h"

#include "IAnnotationDBDataModel.h"

CChildLister::CChildLister(bool features, bool featureRecords)
    : features_(features), featureRecords_(features && featureRecords) {}

bool CChildLister::List(IAnnotationDBDataModel* model, const std::string& parentUuid,
                        E_NODE_KIND parentKind, std::vector<Child>* children) {
  children->clear();
  children_ = children;
  if (parentKind == NODE_KIND_FOLDER) {
    model->TravelFolder(this, parentUuid);
  } else if (parentKind == NODE_KIND_LAYER) {
    // Without features and without sub-layers there is nothing to list: skip the walk, which
    // would step through every feature.
    if (features_ || model->IsLayerExistLayer(parentUuid)) {
      model->TravelLayerChildren(this, parentUuid);
    }
  } else {
    children_ = nullptr;
    return false;
  }
  children_ = nullptr;
  return true;
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CChildLister::ApplyFolder(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string& uuid,
    const CFolderOption& option) {
  Child child;
  child.kind = NODE_KIND_FOLDER;
  child.uuid = uuid;
  child.folder = option;
  children_->push_back(child);
  return HANDLE_TYPE_SKIP_CHILDREN;
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CChildLister::ApplyLayer(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string& uuid,
    const CLayerOption& option) {
  Child child;
  child.kind = NODE_KIND_LAYER;
  child.uuid = uuid;
  child.layer = option;
  children_->push_back(child);
  return HANDLE_TYPE_SKIP_CHILDREN;
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CChildLister::ApplyFeature(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string& uuid,
    const CFeatureOption& option) {
  if (!features_) return HANDLE_TYPE_SKIP_CHILDREN;
  Child child;
  child.kind = NODE_KIND_FEATURE;
  child.uuid = uuid;
  if (featureRecords_) child.feature = option;
  children_->push_back(child);
  return HANDLE_TYPE_SKIP_CHILDREN;
}

CChildLister::Counts CChildLister::CountBelow(IAnnotationDBDataModel* model,
                                              const std::string& uuid, E_NODE_KIND kind) {
  Counts counts;
  CChildLister lister(false, false);
  std::vector<Child> children;
  if (!lister.List(model, uuid, kind, &children)) return counts;
  int64_t subLayers = 0;
  for (const Child& child : children) {
    if (child.kind == NODE_KIND_FOLDER) ++counts.folders;
    if (child.kind == NODE_KIND_LAYER) {
      ++counts.layers;
      ++subLayers;
    }
    const Counts below = CountBelow(model, child.uuid, child.kind);
    counts.folders += below.folders;
    counts.layers += below.layers;
    counts.features += below.features;
  }
  if (kind == NODE_KIND_LAYER) {
    // A layer's children are its sub-layers and its features.
    const int all = model->CountChildren(uuid, NODE_KIND_LAYER);
    if (all > subLayers) counts.features += all - subLayers;
  }
  return counts;
}
