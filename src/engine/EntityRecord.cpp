#include "EntityRecord.h"

#include "AnnotationEntity.h"

CEntityRecord::CEntityRecord(const std::string& uuid) : uuid_(uuid) {}

CNodeAttribute CEntityRecord::GetAttribute() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return attribute_;
}

void CEntityRecord::SetAttribute(const CNodeAttribute& attribute) {
  std::lock_guard<std::mutex> guard(mutex_);
  attribute_ = attribute;
}

void CEntityRecord::SetZValue(int z) {
  std::lock_guard<std::mutex> guard(mutex_);
  attribute_.SetZValue(z);
}

E_ANNOTATION_TYPE CEntityRecord::GetFeatureType() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return featureType_;
}

void CEntityRecord::SetFeatureType(E_ANNOTATION_TYPE type) {
  std::lock_guard<std::mutex> guard(mutex_);
  featureType_ = type;
}

std::shared_ptr<CAnnotationEntity> CEntityRecord::GetEntity() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return entity_;
}

bool CEntityRecord::HasEntity() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return entity_ != nullptr;
}

bool CEntityRecord::InstallEntity(const std::shared_ptr<CAnnotationEntity>& entity) {
  std::lock_guard<std::mutex> guard(mutex_);
  if (removed_ || entity_ != nullptr || entity == nullptr) return false;
  entity_ = entity;
  return true;
}

std::shared_ptr<CAnnotationEntity> CEntityRecord::Remove() {
  std::lock_guard<std::mutex> guard(mutex_);
  removed_ = true;
  return std::move(entity_);
}

bool CEntityRecord::IsRemoved() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return removed_;
}
