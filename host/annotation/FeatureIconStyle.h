// CFeatureIconStyle: the symbol drawn at a point (image location, rotation, scale).
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ZU_FEATURE_ICON_STYLE_H
#define ZU_FEATURE_ICON_STYLE_H

#include <string>

#include "FeatureStyle.h"
#include "ZuExport.h"

class ZU_EXPORT CFeatureIconStyle : public CFeatureStyle {
 public:
  // No image, unrotated, at scale 1.
  CFeatureIconStyle();
  CFeatureIconStyle(const CFeatureIconStyle&) = default;
  CFeatureIconStyle& operator=(const CFeatureIconStyle&) = default;
  ~CFeatureIconStyle() override;

  std::unique_ptr<CFeatureStyle> Clone() const override;

  // A file path or URL, in the local code page.
  const std::string& GetIconUrl() const { return iconUrl_; }
  void SetIconUrl(const std::string& url) { iconUrl_ = url; }
  // Rotation in degrees.
  double GetAngle() const { return angle_; }
  void SetAngle(double angle) { angle_ = angle; }
  float GetIconScale() const { return iconScale_; }
  void SetIconScale(float scale) { iconScale_ = scale; }

 private:
  std::string iconUrl_;
  double angle_ = 0.0;
  float iconScale_ = 1.0f;
};

#endif  // ZU_FEATURE_ICON_STYLE_H
