#include "FeaturePenStyle.h"

CFeaturePenStyle::CFeaturePenStyle() : color_(Qt::black) {}

CFeaturePenStyle::~CFeaturePenStyle() = default;

std::unique_ptr<CFeatureStyle> CFeaturePenStyle::Clone() const {
  return std::make_unique<CFeaturePenStyle>(*this);
}
