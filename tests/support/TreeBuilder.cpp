#include "TreeBuilder.h"

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"

std::string CTreeBuilder::AddFolder(const std::string& parentFolder, const std::string& name) {
  const std::string last = model_->GetLastFolderChildUUID(parentFolder);
  CFolderOption option;
  option.SetParentUUID(parentFolder);
  option.SetName(name);
  option.SetType(FOLDER_TYPE_NORMAL);
  option.SetNodeCheckState(2);
  option.SetLeftUUID(last);
  option.SetOrderNum(last.empty() ? 0 : model_->QueryOrderNum(NODE_KIND_FOLDER, last) + 1);
  if (!model_->InsertFolder(option)) return std::string();
  if (!last.empty()) {
    CFolderOption previous = model_->QueryFolderOption(last);
    previous.SetRightUUID(option.GetUUID());
    model_->ModifyFolderOption(previous);
  }
  return option.GetUUID();
}

std::string CTreeBuilder::AddLayer(const std::string& parentFolder, const std::string& name,
                                   int type) {
  const std::string last = model_->GetLastLayerChildUUID(parentFolder);
  CLayerOption option;
  option.SetParentUUID(parentFolder, false);
  option.SetName(name);
  option.SetType(static_cast<E_LAYER_TYPE>(type));
  option.SetNodeCheckState(2);
  option.SetLeftUUID(last, true);
  option.SetOrderNum(last.empty() ? 0 : model_->QueryOrderNum(NODE_KIND_LAYER, last) + 1);
  if (!model_->InsertLayer(option)) return std::string();
  if (!last.empty()) LinkAfter(last, true, option.GetUUID(), true);
  return option.GetUUID();
}

std::string CTreeBuilder::AddChildLayer(const std::string& parentLayer, const std::string& name) {
  bool lastIsLayer = false;
  const std::string last = model_->GetLastChildUUID(parentLayer, lastIsLayer);
  CLayerOption option;
  option.SetParentUUID(parentLayer, true);
  option.SetName(name);
  option.SetType(LAYER_TYPE_ANNOTATION);
  option.SetNodeCheckState(2);
  option.SetLeftUUID(last, lastIsLayer);
  const E_NODE_KIND lastKind = lastIsLayer ? NODE_KIND_LAYER : NODE_KIND_FEATURE;
  option.SetOrderNum(last.empty() ? 0 : model_->QueryOrderNum(lastKind, last) + 1);
  if (!model_->InsertLayer(option)) return std::string();
  if (!last.empty()) LinkAfter(last, lastIsLayer, option.GetUUID(), true);
  return option.GetUUID();
}

std::string CTreeBuilder::AddFeature(const std::string& parentLayer, const std::string& name,
                                     int type) {
  bool lastIsLayer = false;
  const std::string last = model_->GetLastChildUUID(parentLayer, lastIsLayer);
  CFeatureOption option;
  option.SetParentUUID(parentLayer);
  option.SetName(name);
  option.SetType(static_cast<E_ANNOTATION_TYPE>(type));
  option.SetNodeChecked(true);
  option.SetLeftUUID(last, lastIsLayer);
  const E_NODE_KIND lastKind = lastIsLayer ? NODE_KIND_LAYER : NODE_KIND_FEATURE;
  option.SetOrderNum(last.empty() ? 0 : model_->QueryOrderNum(lastKind, last) + 1);
  if (!model_->InsertFeature(option, nullptr)) return std::string();
  if (!last.empty()) LinkAfter(last, lastIsLayer, option.GetUUID(), false);
  return option.GetUUID();
}

void CTreeBuilder::LinkAfter(const std::string& last, bool lastIsLayer, const std::string& uuid,
                             bool uuidIsLayer) {
  if (lastIsLayer) {
    CLayerOption previous = model_->QueryLayerOption(last);
    previous.SetRightUUID(uuid, uuidIsLayer);
    model_->ModifyLayerOption(previous);
  } else {
    CFeatureOption previous = model_->QueryFeatureOption(last);
    previous.SetRightUUID(uuid, uuidIsLayer);
    model_->ModifyFeatureOption(previous);
  }
}
