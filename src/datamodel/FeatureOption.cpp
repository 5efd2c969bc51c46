#include "FeatureOption.h"

#include "IndexArray.h"
#include "NodeStatus.h"

using namespace AnnotationLayerInner;

CFeatureOption::CFeatureOption() = default;

CFeatureOption::CFeatureOption(const std::string& uuid) : uuid_(uuid) {}

CFeatureOption::CFeatureOption(const CFeatureOption& other) = default;

CFeatureOption& CFeatureOption::operator=(const CFeatureOption& other) = default;

CFeatureOption::~CFeatureOption() = default;

void CFeatureOption::SetUUID(const std::string& uuid) { uuid_ = uuid; }

void CFeatureOption::SetParentUUID(const std::string& uuid) {
  if (parentUuid_ == uuid) return;
  parentUuid_ = uuid;
  AddChangeMask(CHANGE_MASK_PARENT);
}

void CFeatureOption::SetLeftUUID(const std::string& uuid, bool isLayer) {
  if (leftUuid_ == uuid && leftLayer_ == isLayer) return;
  leftUuid_ = uuid;
  leftLayer_ = isLayer;
  AddChangeMask(CHANGE_MASK_POSITION);
}

bool CFeatureOption::IsLeftLayer() const { return leftUuid_.empty() ? true : leftLayer_; }

void CFeatureOption::SetRightUUID(const std::string& uuid, bool isLayer) {
  if (rightUuid_ == uuid && rightLayer_ == isLayer) return;
  rightUuid_ = uuid;
  rightLayer_ = isLayer;
  AddChangeMask(CHANGE_MASK_POSITION);
}

bool CFeatureOption::IsRightLayer() const { return rightUuid_.empty() ? true : rightLayer_; }

void CFeatureOption::SetOrderNum(int orderNum) {
  if (orderNum_ == orderNum) return;
  orderNum_ = orderNum;
  AddChangeMask(CHANGE_MASK_POSITION);
}

void CFeatureOption::SetName(const std::string& name) {
  if (name_ == name) return;
  name_ = name;
  AddChangeMask(CHANGE_MASK_NAME);
}

void CFeatureOption::SetType(E_ANNOTATION_TYPE type) {
  if (type_ == type) return;
  type_ = type;
  AddChangeMask(CHANGE_MASK_TYPE);
}

void CFeatureOption::SetCreateDateTime(const std::string& time) { createTime_ = time; }

void CFeatureOption::SetModifyDateTime(const std::string& time) { modifyTime_ = time; }

void CFeatureOption::ChangeMask(int status) {
  status_ = status;
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CFeatureOption::IsNodeChecked() const { return (status_ & NODE_STATUS_CHECKED) != 0; }

void CFeatureOption::SetNodeChecked(bool checked) {
  status_ = StatusWithBit(status_, NODE_STATUS_CHECKED, checked);
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CFeatureOption::IsRecycle() const { return (status_ & NODE_STATUS_RECYCLED) != 0; }

void CFeatureOption::SetRecycle(bool recycle) {
  status_ = StatusWithBit(status_, NODE_STATUS_RECYCLED, recycle);
  AddChangeMask(CHANGE_MASK_STATUS);
}

void CFeatureOption::SetIndexArrayString(const std::string& text) { indexArray_ = text; }

void CFeatureOption::SetIndexArray(const std::vector<int64_t>& statusIds,
                                   const std::vector<int64_t>& propertyIds,
                                   const std::vector<int64_t>& userdataIds,
                                   const std::vector<int64_t>& enclosureIds) {
  ReplaceIndexArrayPart(indexArray_, kIndexTagStatus, statusIds);
  AppendIndexArrayPart(indexArray_, kIndexTagProperty, propertyIds);
  AppendIndexArrayPart(indexArray_, kIndexTagUserdata, userdataIds);
  AppendIndexArrayPart(indexArray_, kIndexTagEnclosure, enclosureIds);
}

std::vector<int64_t> CFeatureOption::GetIndexStatus() const {
  return ParseIndexArray(indexArray_, kIndexTagStatus);
}

std::vector<int64_t> CFeatureOption::GetIndexProperty() const {
  return ParseIndexArray(indexArray_, kIndexTagProperty);
}

std::vector<int64_t> CFeatureOption::GetIndexUserdata() const {
  return ParseIndexArray(indexArray_, kIndexTagUserdata);
}

std::vector<int64_t> CFeatureOption::GetIndexEnclosure() const {
  return ParseIndexArray(indexArray_, kIndexTagEnclosure);
}
