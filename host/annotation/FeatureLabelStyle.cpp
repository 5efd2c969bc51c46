#include "FeatureLabelStyle.h"

CFeatureLabelStyle::CFeatureLabelStyle() : foreground_(Qt::black), background_(Qt::transparent) {}

CFeatureLabelStyle::~CFeatureLabelStyle() = default;

std::unique_ptr<CFeatureStyle> CFeatureLabelStyle::Clone() const {
  return std::make_unique<CFeatureLabelStyle>(*this);
}
