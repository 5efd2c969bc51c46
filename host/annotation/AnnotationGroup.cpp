#include "AnnotationGroup.h"

#include <utility>

CAnnotationGroup::CAnnotationGroup() = default;

CAnnotationGroup::CAnnotationGroup(const std::string& name) : name_(name) {}

CAnnotationGroup::~CAnnotationGroup() = default;

std::string CAnnotationGroup::GetName() const { return name_; }

void CAnnotationGroup::SetName(const std::string& name) { name_ = name; }

IAnnotationGroup* CAnnotationGroup::GetParentGroup() const { return parent_; }

void CAnnotationGroup::SetParentGroup(IAnnotationGroup* parent) { parent_ = parent; }

int CAnnotationGroup::GetFeatureCount() const { return static_cast<int>(features_.size()); }

IAnnotationFeature* CAnnotationGroup::GetFeature(int index) const {
  if (index < 0 || index >= GetFeatureCount()) return nullptr;
  return features_[static_cast<size_t>(index)].get();
}

IAnnotationFeature* CAnnotationGroup::AddFeature(std::unique_ptr<IAnnotationFeature> feature) {
  if (!feature) return nullptr;
  feature->SetGroup(this);
  features_.push_back(std::move(feature));
  return features_.back().get();
}

int CAnnotationGroup::GetGroupCount() const { return static_cast<int>(groups_.size()); }

IAnnotationGroup* CAnnotationGroup::GetGroup(int index) const {
  if (index < 0 || index >= GetGroupCount()) return nullptr;
  return groups_[static_cast<size_t>(index)].get();
}

IAnnotationGroup* CAnnotationGroup::AddGroup(std::unique_ptr<IAnnotationGroup> group) {
  if (!group) return nullptr;
  group->SetParentGroup(this);
  groups_.push_back(std::move(group));
  return groups_.back().get();
}

void CAnnotationGroup::Clear() {
  features_.clear();
  groups_.clear();
}
