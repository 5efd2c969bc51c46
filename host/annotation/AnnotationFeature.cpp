#include "AnnotationFeature.h"

#include <algorithm>

CAnnotationFeature::CAnnotationFeature() = default;

CAnnotationFeature::CAnnotationFeature(E_GEOMETRY_DATA_TYPE type) : type_(type) {}

CAnnotationFeature::~CAnnotationFeature() = default;

E_GEOMETRY_DATA_TYPE CAnnotationFeature::GetGeometryType() const { return type_; }

void CAnnotationFeature::SetGeometryType(E_GEOMETRY_DATA_TYPE type) { type_ = type; }

int CAnnotationFeature::GetPartCount() const { return static_cast<int>(parts_.size()); }

const CGeometryData& CAnnotationFeature::GetPart(int index) const {
  static const CGeometryData kEmpty;
  if (index < 0 || index >= GetPartCount()) return kEmpty;
  return parts_[static_cast<size_t>(index)];
}

void CAnnotationFeature::AddPart(const CGeometryData& part) { parts_.push_back(part); }

void CAnnotationFeature::ClearParts() { parts_.clear(); }

void CAnnotationFeature::SetGeometryData(const std::vector<CGeometryData>& parts) {
  parts_ = parts;
}

void CAnnotationFeature::TravelGeometryData(IGeometryDataVisitor& visitor) {
  for (int i = 0; i < GetPartCount(); ++i) {
    visitor.ApplyGeometryData(this, i, parts_[static_cast<size_t>(i)]);
  }
}

bool CAnnotationFeature::GetExtent(CVector3D& min, CVector3D& max) const {
  bool any = false;
  CVector3D low;
  CVector3D high;
  for (const CGeometryData& part : parts_) {
    for (const CVector3D& v : part.Vertices()) {
      if (!any) {
        low = high = v;
        any = true;
        continue;
      }
      low = CVector3D(std::min(low.X(), v.X()), std::min(low.Y(), v.Y()), std::min(low.Z(), v.Z()));
      high =
          CVector3D(std::max(high.X(), v.X()), std::max(high.Y(), v.Y()), std::max(high.Z(), v.Z()));
    }
  }
  if (any) {
    min = low;
    max = high;
  }
  return any;
}

std::string CAnnotationFeature::GetName() const { return name_; }

void CAnnotationFeature::SetName(const std::string& name) { name_ = name; }

int CAnnotationFeature::GetFieldCount() const { return static_cast<int>(fields_.size()); }

std::string CAnnotationFeature::GetFieldKey(int index) const {
  if (index < 0 || index >= GetFieldCount()) return std::string();
  return fields_[static_cast<size_t>(index)].first;
}

QVariant CAnnotationFeature::GetFieldValue(int index) const {
  if (index < 0 || index >= GetFieldCount()) return QVariant();
  return fields_[static_cast<size_t>(index)].second;
}

int CAnnotationFeature::FindField(const std::string& key) const {
  for (int i = 0; i < GetFieldCount(); ++i) {
    if (fields_[static_cast<size_t>(i)].first == key) return i;
  }
  return -1;
}

void CAnnotationFeature::SetFieldValue(const std::string& key, const QVariant& value) {
  const int index = FindField(key);
  if (index >= 0) {
    fields_[static_cast<size_t>(index)].second = value;
  } else {
    fields_.emplace_back(key, value);
  }
}

void CAnnotationFeature::ClearFields() { fields_.clear(); }

CFeatureStyleSet* CAnnotationFeature::GetStyleSet() { return &styles_; }

const CFeatureStyleSet* CAnnotationFeature::GetStyleSet() const { return &styles_; }

IAnnotationGroup* CAnnotationFeature::GetGroup() const { return group_; }

void CAnnotationFeature::SetGroup(IAnnotationGroup* group) { group_ = group; }
