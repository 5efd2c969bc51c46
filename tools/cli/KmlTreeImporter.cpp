#include "KmlTreeImporter.h"

#include "AnnotationGroup.h"
#include "ChildLister.h"
#include "FeatureBatchImporter.h"
#include "IAnnotationDBDataModel.h"
#include "ImportTransaction.h"
#include "InterruptFlag.h"
#include "LocalText.h"
#include "ModelTransaction.h"

namespace {

bool IsLayer(const CKmlTreeReader::Container& container, bool underLayer) {
  return underLayer || container.layerMark || container.HasPlacemarks();
}

std::vector<CKmlTreeReader::Container*> Containers(CKmlTreeReader::Container* container) {
  std::vector<CKmlTreeReader::Container*> found;
  for (CKmlTreeReader::Item& item : container->items) {
    if (item.container) found.push_back(item.container.get());
  }
  return found;
}

}  // namespace

CKmlTreeImporter::CKmlTreeImporter(IAnnotationDBDataModel* model, const CInterruptFlag* interrupt)
    : model_(model), interrupt_(interrupt) {}

bool CKmlTreeImporter::Interrupted() const {
  return interrupt_ != nullptr && interrupt_->IsSet();
}

CKmlTreeImporter::E_OUTCOME CKmlTreeImporter::Run(CKmlTreeReader::Container* document,
                                                  const std::string& parentUuid,
                                                  E_NODE_KIND parentKind,
                                                  const std::string& fallbackName, Summary* summary,
                                                  std::string* error) {
  *summary = Summary();
  summary_ = summary;
  std::vector<Container*> top;
  if (document->HasPlacemarks()) {
    if (document->name.empty()) document->name = fallbackName;
    top.push_back(document);
  } else {
    top = Containers(document);
  }
  if (top.empty()) {
    *error = "the document holds no placemark or folder to import";
    return OUTCOME_FAILED;
  }
  CModelTransaction transaction(model_);
  if (!transaction.IsOpen()) {
    *error = "the import could not start";
    return OUTCOME_FAILED;
  }
  if (!StoreUnder(parentUuid, parentKind, top)) {
    *error = error_;
    return Interrupted() ? OUTCOME_INTERRUPTED : OUTCOME_FAILED;
  }
  if (Interrupted()) return OUTCOME_INTERRUPTED;
  if (summary->features == 0) {
    *error = "the document gave no placemark with a geometry to import";
    return OUTCOME_FAILED;
  }
  if (!transaction.Commit()) {
    *error = "the import could not be committed";
    return OUTCOME_FAILED;
  }
  return OUTCOME_DONE;
}

bool CKmlTreeImporter::StoreUnder(const std::string& parent, E_NODE_KIND kind,
                                  const std::vector<Container*>& containers) {
  if (kind == NODE_KIND_LAYER) return ImportLayers(parent, kind, containers);
  std::vector<Container*> layers;
  for (Container* container : containers) {
    if (Interrupted()) return false;
    if (IsLayer(*container, false)) {
      layers.push_back(container);
      continue;
    }
    const std::string folder = AppendFolder(parent, *container);
    if (folder.empty()) {
      error_ = "the folder '" + container->name + "' could not be stored";
      return false;
    }
    ++summary_->folders;
    if (!StoreUnder(folder, NODE_KIND_FOLDER, Containers(container))) return false;
  }
  return ImportLayers(parent, kind, layers);
}

// Appends a folder after the parent's last folder, linked to it.
std::string CKmlTreeImporter::AppendFolder(const std::string& parent, const Container& container) {
  const std::string last = model_->GetLastFolderChildUUID(parent);
  CFolderOption option;
  option.SetParentUUID(parent);
  option.SetName(CLocalText::FromUtf8(container.name));
  option.SetType(FOLDER_TYPE_NORMAL);
  option.SetNodeCheckState(container.checkState);
  option.SetNodeExpand(container.open);
  option.SetLeftUUID(last);
  option.SetOrderNum(last.empty() ? 0 : model_->QueryOrderNum(NODE_KIND_FOLDER, last) + 1);
  if (!model_->InsertFolder(option)) return std::string();
  if (!last.empty()) {
    CFolderOption previous = model_->QueryFolderOption(last);
    previous.SetRightUUID(option.GetUUID());
    if (!model_->ModifyFolderOption(previous)) return std::string();
  }
  return option.GetUUID();
}

bool CKmlTreeImporter::InsertLayer(CFeatureBatchImporter* importer, Container* container,
                                   std::unique_ptr<CAnnotationGroup> group,
                                   CAnnotationGroup* parent,
                                   std::vector<std::unique_ptr<CAnnotationGroup>>* tops) {
  CAnnotationGroup* self = group.get();
  if (parent != nullptr) {
    parent->AddGroup(std::move(group));
  } else {
    tops->push_back(std::move(group));
  }
  if (!importer->InsertLayer(self, LAYER_TYPE_ANNOTATION)) {
    error_ = "the layer '" + container->name + "' could not be stored";
    return false;
  }
  ++summary_->layers;
  // Sub-layers and features in document order, which the importer keeps as sibling order.
  for (CKmlTreeReader::Item& item : container->items) {
    if (Interrupted()) return false;
    if (item.container) {
      auto child = std::make_unique<CAnnotationGroup>(CLocalText::FromUtf8(item.container->name));
      if (!InsertLayer(importer, item.container.get(), std::move(child), self, tops)) return false;
      continue;
    }
    IAnnotationFeature* feature = self->AddFeature(std::move(item.feature));
    if (!importer->InsertFeature(feature)) {
      error_ = "the placemark '" + CLocalText::ToUtf8(feature->GetName()) + "' of '" +
               container->name + "' could not be stored";
      return false;
    }
    ++summary_->features;
  }
  return true;
}

bool CKmlTreeImporter::ImportLayers(const std::string& parent, E_NODE_KIND kind,
                                    const std::vector<Container*>& layers) {
  if (layers.empty()) return true;
  CFeatureBatchImporter importer(model_, parent);
  if (!importer.BeginImport()) {
    error_ = "the import could not start";
    return false;
  }
  CImportTransaction transaction(&importer);
  std::vector<std::unique_ptr<CAnnotationGroup>> tops;
  for (Container* layer : layers) {
    auto group = std::make_unique<CAnnotationGroup>(CLocalText::FromUtf8(layer->name));
    if (!InsertLayer(&importer, layer, std::move(group), nullptr, &tops)) return false;
  }
  if (!transaction.Commit()) {
    error_ = "the layers could not be written";
    return false;
  }
  // The new layers are the parent's last ones, in the order they were inserted.
  CChildLister lister(false, false);
  std::vector<CChildLister::Child> children;
  lister.List(model_, parent, kind, &children);
  std::vector<std::string> uuids;
  for (const CChildLister::Child& child : children) {
    if (child.kind == NODE_KIND_LAYER) uuids.push_back(child.uuid);
  }
  if (uuids.size() < layers.size()) {
    error_ = "the stored layers could not be found again";
    return false;
  }
  const size_t first = uuids.size() - layers.size();
  for (size_t i = 0; i < layers.size(); ++i) {
    if (!ApplyStates(*layers[i], uuids[first + i])) return false;
  }
  return true;
}

// The batch importer stores every node checked and with the default expand state; the document's
// states are set afterwards, in the same transaction.
bool CKmlTreeImporter::ApplyStates(const Container& container, const std::string& uuid) {
  CLayerOption layer = model_->QueryLayerOption(uuid);
  if (layer.GetNodeCheckState() != container.checkState || layer.IsNodeExpand() != container.open) {
    layer.SetNodeCheckState(container.checkState);
    layer.SetNodeExpand(container.open);
    if (!model_->ModifyLayerOption(layer)) {
      error_ = "the states of layer '" + container.name + "' could not be stored";
      return false;
    }
  }
  CChildLister lister(true, false);
  std::vector<CChildLister::Child> children;
  lister.List(model_, uuid, NODE_KIND_LAYER, &children);
  if (children.size() != container.items.size()) {
    error_ = "layer '" + container.name + "' was not stored as read";
    return false;
  }
  for (size_t i = 0; i < children.size(); ++i) {
    const CKmlTreeReader::Item& item = container.items[i];
    if (item.container) {
      if (!ApplyStates(*item.container, children[i].uuid)) return false;
    } else if (!item.visible) {
      CFeatureOption feature = model_->QueryFeatureOption(children[i].uuid);
      feature.SetNodeChecked(false);
      if (!model_->ModifyFeatureOption(feature)) {
        error_ = "the visibility of a placemark of '" + container.name + "' could not be stored";
        return false;
      }
    }
  }
  return true;
}
