#include "FeatureFieldSet.h"

#include "AnnotationLayerNS.h"
#include "ZuLog.h"

namespace AnnotationLayerNS {
namespace {

class CFeatureFiller : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  explicit CFeatureFiller(IAnnotationFeature* feature) : feature_(feature) {}

  void VisitField(const CZuFieldSetObject::__tagField& field) override {
    if (field.state == CZuFieldSetObject::FIELD_STATE_REMOVED || field.key.empty()) return;
    feature_->SetFieldValue(field.key, field.value);
  }

 private:
  IAnnotationFeature* feature_;
};

}  // namespace

bool FillFieldSetFromFeature(CZuFieldSetObject& fieldSet, const IAnnotationFeature* feature) {
  if (feature == nullptr) {
    ZuLogError(-1) << "[FillFieldSetFromFeature]: no feature";
    return false;
  }
  for (int i = 0; i < feature->GetFieldCount(); ++i) {
    const std::string key = feature->GetFieldKey(i);
    if (key.empty()) continue;
    const QVariant value = feature->GetFieldValue(i);
    fieldSet.SetFieldValue(key, MappingFieldType(static_cast<int>(value.type())), value);
  }
  return true;
}

bool FillFeatureFromFieldSet(IAnnotationFeature* feature, const CZuFieldSetObject& fieldSet) {
  if (feature == nullptr) {
    ZuLogError(-1) << "[FillFeatureFromFieldSet]: no feature";
    return false;
  }
  CFeatureFiller filler(feature);
  fieldSet.TravelField(filler);
  return true;
}

}  // namespace AnnotationLayerNS
