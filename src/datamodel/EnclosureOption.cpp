#include "EnclosureOption.h"

CEnclosureOption::CEnclosureOption() = default;

CEnclosureOption::CEnclosureOption(int id, E_ENCLOSURE_TYPE type) : id_(id), type_(type) {}

CEnclosureOption::CEnclosureOption(const CEnclosureOption& other) = default;

CEnclosureOption& CEnclosureOption::operator=(const CEnclosureOption& other) = default;

CEnclosureOption::~CEnclosureOption() = default;

void CEnclosureOption::SetID(int id) { id_ = id; }

void CEnclosureOption::SetEnclosureType(E_ENCLOSURE_TYPE type) { type_ = type; }

void CEnclosureOption::SetParentUUID(const std::string& uuid) {
  if (parentUuid_ == uuid) return;
  parentUuid_ = uuid;
  AddChangeMask(CHANGE_MASK_PARENT);
}

void CEnclosureOption::SetDescription(const std::string& description) {
  if (description_ == description) return;
  description_ = description;
  AddChangeMask(CHANGE_MASK_DESCRIPTION);
}

void CEnclosureOption::SetLocalPath(const std::string& path) {
  if (path.empty() || (localPath_ == path && url_.empty())) return;
  localPath_ = path;
  url_.clear();
  AddChangeMask(CHANGE_MASK_PATH);
}

void CEnclosureOption::SetUrl(const std::string& url) {
  if (url.empty() || (url_ == url && localPath_.empty())) return;
  url_ = url;
  localPath_.clear();
  AddChangeMask(CHANGE_MASK_PATH);
}

void CEnclosureOption::ClearPath() {
  localPath_.clear();
  url_.clear();
  AddChangeMask(CHANGE_MASK_PATH);
}

bool CEnclosureOption::IsPathValid() const { return !localPath_.empty() || !url_.empty(); }

const std::string& CEnclosureOption::GetPath() const {
  return localPath_.empty() ? url_ : localPath_;
}
