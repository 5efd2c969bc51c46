#include "FolderOption.h"

#include "IndexArray.h"
#include "NodeStatus.h"

using namespace AnnotationLayerInner;

CFolderOption::CFolderOption() = default;

CFolderOption::CFolderOption(const std::string& uuid) : uuid_(uuid) {}

CFolderOption::CFolderOption(const CFolderOption& other) = default;

CFolderOption& CFolderOption::operator=(const CFolderOption& other) = default;

CFolderOption::~CFolderOption() = default;

void CFolderOption::SetUUID(const std::string& uuid) { uuid_ = uuid; }

void CFolderOption::SetParentUUID(const std::string& uuid) {
  if (parentUuid_ == uuid) return;
  parentUuid_ = uuid;
  AddChangeMask(CHANGE_MASK_PARENT);
}

void CFolderOption::SetLeftUUID(const std::string& uuid) {
  if (leftUuid_ == uuid) return;
  leftUuid_ = uuid;
  AddChangeMask(CHANGE_MASK_POSITION);
}

void CFolderOption::SetRightUUID(const std::string& uuid) {
  if (rightUuid_ == uuid) return;
  rightUuid_ = uuid;
  AddChangeMask(CHANGE_MASK_POSITION);
}

void CFolderOption::SetOrderNum(int orderNum) {
  if (orderNum_ == orderNum) return;
  orderNum_ = orderNum;
  AddChangeMask(CHANGE_MASK_POSITION);
}

void CFolderOption::SetName(const std::string& name) {
  if (name_ == name) return;
  name_ = name;
  AddChangeMask(CHANGE_MASK_NAME);
}

void CFolderOption::SetType(E_FOLDER_TYPE type) {
  if (type_ == type) return;
  type_ = type;
  AddChangeMask(CHANGE_MASK_TYPE);
}

void CFolderOption::ChangeMask(int status) {
  status_ = status;
  AddChangeMask(CHANGE_MASK_STATUS);
}

int CFolderOption::GetNodeCheckState() const { return CheckStateOfStatus(status_); }

void CFolderOption::SetNodeCheckState(int checkState) {
  status_ = StatusWithCheckState(status_, checkState);
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CFolderOption::IsCheckedState() const { return GetNodeCheckState() == 2; }

bool CFolderOption::IsNodeExpand() const { return (status_ & NODE_STATUS_EXPANDED) != 0; }

void CFolderOption::SetNodeExpand(bool expand) {
  status_ = StatusWithBit(status_, NODE_STATUS_EXPANDED, expand);
  AddChangeMask(CHANGE_MASK_STATUS);
}

bool CFolderOption::IsRecycle() const { return (status_ & NODE_STATUS_RECYCLED) != 0; }

void CFolderOption::SetRecycle(bool recycle) {
  status_ = StatusWithBit(status_, NODE_STATUS_RECYCLED, recycle);
  AddChangeMask(CHANGE_MASK_STATUS);
}

void CFolderOption::SetIndexArrayString(const std::string& text) { indexArray_ = text; }

void CFolderOption::SetIndexArray(const std::vector<int64_t>& statusIds) {
  ReplaceIndexArrayPart(indexArray_, kIndexTagStatus, statusIds);
}

std::vector<int64_t> CFolderOption::GetIndexStatus() const {
  return ParseIndexArray(indexArray_, kIndexTagStatus);
}
