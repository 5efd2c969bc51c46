#include "SiblingUnlinker.h"

#include "FeatureOption.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "LayerOption.h"

namespace {

// One write of one side of a layer's or feature's links; the record chooses the column by the
// kind it is given (an empty link always goes to the layer column).
template <typename Option>
bool WriteSide(Option& option, bool rightSide, const std::string& target, bool targetIsLayer,
               bool (IAnnotationDBDataModel::*modify)(Option&), IAnnotationDBDataModel* model) {
  const std::string& current = rightSide ? option.GetRightUUID() : option.GetLeftUUID();
  const bool currentIsLayer = rightSide ? option.IsRightLayer() : option.IsLeftLayer();
  if (current == target && currentIsLayer == targetIsLayer) return true;
  if (rightSide) {
    option.SetRightUUID(target, targetIsLayer);
  } else {
    option.SetLeftUUID(target, targetIsLayer);
  }
  return (model->*modify)(option);
}

}  // namespace

CSiblingUnlinker::CSiblingUnlinker(IAnnotationDBDataModel* model) : model_(model) {}

bool CSiblingUnlinker::Relink(const std::string& uuid, bool isLayer, bool rightSide,
                              const std::string& target, bool targetIsLayer) {
  // Clearing first empties the layer column, which would otherwise keep the removed layer.
  const bool clearFirst = target.empty() || !targetIsLayer;
  if (isLayer) {
    CLayerOption option = model_->QueryLayerOption(uuid);
    if (option.GetUUID().empty()) return false;
    if (clearFirst && !WriteSide(option, rightSide, std::string(), true,
                                 &IAnnotationDBDataModel::ModifyLayerOption, model_)) {
      return false;
    }
    return target.empty() || WriteSide(option, rightSide, target, targetIsLayer,
                                       &IAnnotationDBDataModel::ModifyLayerOption, model_);
  }
  CFeatureOption option = model_->QueryFeatureOption(uuid);
  if (option.GetUUID().empty()) return false;
  if (clearFirst && !WriteSide(option, rightSide, std::string(), true,
                               &IAnnotationDBDataModel::ModifyFeatureOption, model_)) {
    return false;
  }
  return target.empty() || WriteSide(option, rightSide, target, targetIsLayer,
                                     &IAnnotationDBDataModel::ModifyFeatureOption, model_);
}

bool CSiblingUnlinker::Unlink(const std::string& uuid, E_NODE_KIND kind) {
  if (kind == NODE_KIND_FOLDER) {
    const CFolderOption self = model_->QueryFolderOption(uuid);
    const std::string left = self.GetLeftUUID(), right = self.GetRightUUID();
    if (!left.empty()) {
      CFolderOption option = model_->QueryFolderOption(left);
      option.SetRightUUID(right);
      if (!model_->ModifyFolderOption(option)) return false;
    }
    if (!right.empty()) {
      CFolderOption option = model_->QueryFolderOption(right);
      option.SetLeftUUID(left);
      if (!model_->ModifyFolderOption(option)) return false;
    }
    return true;
  }
  if (kind != NODE_KIND_LAYER) return false;
  const CLayerOption self = model_->QueryLayerOption(uuid);
  const std::string left = self.GetLeftUUID(), right = self.GetRightUUID();
  const bool leftIsLayer = self.IsLeftLayer(), rightIsLayer = self.IsRightLayer();
  if (!left.empty() && !Relink(left, leftIsLayer, true, right, rightIsLayer)) return false;
  if (!right.empty() && !Relink(right, rightIsLayer, false, left, leftIsLayer)) return false;
  return true;
}
