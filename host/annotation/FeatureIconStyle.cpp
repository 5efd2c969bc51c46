#include "FeatureIconStyle.h"

CFeatureIconStyle::CFeatureIconStyle() = default;

CFeatureIconStyle::~CFeatureIconStyle() = default;

std::unique_ptr<CFeatureStyle> CFeatureIconStyle::Clone() const {
  return std::make_unique<CFeatureIconStyle>(*this);
}
