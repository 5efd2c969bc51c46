#include "FeatureStyleSet.h"

#include <utility>

CFeatureStyleSet::CFeatureStyleSet() = default;

CFeatureStyleSet::CFeatureStyleSet(const CFeatureStyleSet& other) {
  styles_.reserve(other.styles_.size());
  for (const auto& style : other.styles_) styles_.push_back(style->Clone());
}

CFeatureStyleSet& CFeatureStyleSet::operator=(const CFeatureStyleSet& other) {
  if (this != &other) {
    CFeatureStyleSet copy(other);
    styles_ = std::move(copy.styles_);
  }
  return *this;
}

CFeatureStyleSet::CFeatureStyleSet(CFeatureStyleSet&& other) noexcept = default;

CFeatureStyleSet& CFeatureStyleSet::operator=(CFeatureStyleSet&& other) noexcept = default;

CFeatureStyleSet::~CFeatureStyleSet() = default;

void CFeatureStyleSet::PushBack(CFeatureStyle* style) {
  PushBack(std::unique_ptr<CFeatureStyle>(style));
}

void CFeatureStyleSet::PushBack(std::unique_ptr<CFeatureStyle> style) {
  if (style) styles_.push_back(std::move(style));
}

int CFeatureStyleSet::GetCount() const { return static_cast<int>(styles_.size()); }

bool CFeatureStyleSet::IsEmpty() const { return styles_.empty(); }

CFeatureStyle* CFeatureStyleSet::At(int index) {
  if (index < 0 || index >= GetCount()) return nullptr;
  return styles_[static_cast<size_t>(index)].get();
}

const CFeatureStyle* CFeatureStyleSet::At(int index) const {
  if (index < 0 || index >= GetCount()) return nullptr;
  return styles_[static_cast<size_t>(index)].get();
}

void CFeatureStyleSet::Clear() { styles_.clear(); }
