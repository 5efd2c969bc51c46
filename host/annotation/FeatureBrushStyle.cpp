#include "FeatureBrushStyle.h"

CFeatureBrushStyle::CFeatureBrushStyle() : foreground_(Qt::white), background_(Qt::transparent) {}

CFeatureBrushStyle::~CFeatureBrushStyle() = default;

std::unique_ptr<CFeatureStyle> CFeatureBrushStyle::Clone() const {
  return std::make_unique<CFeatureBrushStyle>(*this);
}
