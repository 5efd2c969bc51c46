#include "LayerOption.h"

#include "IndexArray.h"
#include "NodeStatus.h"

using namespace AnnotationLayerInner;

CLayerOption::CLayerOption() = default;

CLayerOption::CLayerOption(const std::string& uuid) : uuid_(uuid) {}

CLayerOption::CLayerOption(const CLayerOption& other) = default;

CLayerOption& CLayerOption::operator=(const CLayerOption& other) = default;

CLayerOption::~CLayerOption() = default;

void CLayerOption::SetUUID(const std::string& uuid) { uuid_ = uuid; }

void CLayerOption::SetParentUUID(const std::string& uuid, bool isLayerParent) {
  if (parentUuid_ == uuid && layerParent_ == isLayerParent) return;
  parentUuid_ = uuid;
  layerParent_ = isLayerParent;
  AddChangeMask(CHANGE_MASK_PARENT);
}

void CLayerOption::SetLeftUUID(const std::string& uuid, bool isLayer) {
  if (leftUuid_ == uuid && leftLayer_ == isLayer) return;
  leftUuid_ = uuid;
  leftLayer_ = isLayer;
  AddChangeMask(CHANGE_MASK_POSITION);
}

bool CLayerOption::IsLeftLayer() const { return leftUuid_.empty() ? true : leftLayer_; }

void CLayerOption::SetRightUUID(const std::string& uuid, bool isLayer) {
  if (rightUuid_ == uuid && rightLayer_ == isLayer) return;
  rightUuid_ = uuid;
  rightLayer_ = isLayer;
  AddChangeMask(CHANGE_MASK_POSITION);
}

bool CLayerOption::IsRightLayer() const { return rightUuid_.empty() ? true : rightLayer_; }

void CLayerOption::SetOrderNum(int orderNum) {
  if (orderNum_ == orderNum) return;
  orderNum_ = orderNum;
  AddChangeMask(CHANGE_MASK_POSITION);
}

void CLayerOption::SetName(const std::string& name) {
  if (name_ == name) return;
  name_ = name;
  AddChangeMask(CHANGE_MASK_NAME);
}

void CLayerOption::SetType(E_LAYER_TYPE type) {
  if (type_ == type) return;
  type_ = type;
  AddChangeMask(CHANGE_MASK_TYPE);
}

void CLayerOption::SetWkt(const std::string& wkt) {
  if (wkt_ == wkt) return;
  wkt_ = wkt;
  AddChangeMask(CHANGE_MASK_WKT);
}

void CLayerOption::SetPropertyHeader(const std::string& header) {
  propertyHeader_ = header;
  AddChangeMask(CHANGE_MASK_PROPERTY_HEADER);
}

void CLayerOption::SetLevel(int minLevel, int maxLevel) {
  if (minLevel_ == minLevel && maxLevel_ == maxLevel) return;
  minLevel_ = minLevel;
  maxLevel_ = maxLevel;
  AddChangeMask(CHANGE_MASK_LEVELS);
}

void CLayerOption::SetNameLevel(int minLevel, int maxLevel) {
  if (minNameLevel_ == minLevel && maxNameLevel_ == maxLevel) return;
  minNameLevel_ = minLevel;
  maxNameLevel_ = maxLevel;
  AddChangeMask(CHANGE_MASK_LEVELS);
}

void CLayerOption::SetExtent(const EXTENT& extent) {
  if (extent_.min_x == extent.min_x && extent_.min_y == extent.min_y &&
      extent_.max_x == extent.max_x && extent_.max_y == extent.max_y) {
    return;
  }
  extent_ = extent;
  AddChangeMask(CHANGE_MASK_EXTENT);
}

void CLayerOption::ChangeMask(int status) {
  status_ = status;
  AddChangeMask(CHANGE_MASK_STATUS);
}

int CLayerOption::GetNodeCheckState() const { return CheckStateOfStatus(status_); }

void CLayerOption::SetNodeCheckState(int checkState) {
  status_ = StatusWithCheckState(status_, checkState);
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CLayerOption::IsCheckedState() const { return GetNodeCheckState() == 2; }

bool CLayerOption::IsNodeExpand() const { return (status_ & NODE_STATUS_EXPANDED) != 0; }

void CLayerOption::SetNodeExpand(bool expand) {
  status_ = StatusWithBit(status_, NODE_STATUS_EXPANDED, expand);
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CLayerOption::IsRecycle() const { return (status_ & NODE_STATUS_RECYCLED) != 0; }

void CLayerOption::SetRecycle(bool recycle) {
  status_ = StatusWithBit(status_, NODE_STATUS_RECYCLED, recycle);
  AddChangeMask(CHANGE_MASK_STATUS);
}

void CLayerOption::SetChildNodeMaxCount(int count) {
  childNodeMaxCount_ = count;
  AddChangeMask(CHANGE_MASK_STATUS);
}

void CLayerOption::SetIndexArrayString(const std::string& text) { indexArray_ = text; }

void CLayerOption::SetIndexArray(const std::vector<int64_t>& statusIds,
                                 const std::vector<int64_t>& userdataIds) {
  ReplaceIndexArrayPart(indexArray_, kIndexTagStatus, statusIds);
  AppendIndexArrayPart(indexArray_, kIndexTagUserdata, userdataIds);
}

std::vector<int64_t> CLayerOption::GetIndexStatus() const {
  return ParseIndexArray(indexArray_, kIndexTagStatus);
}

std::vector<int64_t> CLayerOption::GetIndexUserdata() const {
  return ParseIndexArray(indexArray_, kIndexTagUserdata);
}
