// CFeatureBrushStyle: how areas are filled (colours, fill pattern, pattern angle and scale).
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ZU_FEATURE_BRUSH_STYLE_H
#define ZU_FEATURE_BRUSH_STYLE_H

#include <QColor>

#include "FeatureStyle.h"
#include "FeatureStyleTypes.h"
#include "ZuExport.h"

class ZU_EXPORT CFeatureBrushStyle : public CFeatureStyle {
 public:
  // A solid white fill over a transparent background, unrotated, at scale 1.
  CFeatureBrushStyle();
  CFeatureBrushStyle(const CFeatureBrushStyle&) = default;
  CFeatureBrushStyle& operator=(const CFeatureBrushStyle&) = default;
  ~CFeatureBrushStyle() override;

  std::unique_ptr<CFeatureStyle> Clone() const override;

  const QColor& GetForegroundColor() const { return foreground_; }
  void SetForegroundColor(const QColor& color) { foreground_ = color; }
  const QColor& GetBackgroundColor() const { return background_; }
  void SetBackgroundColor(const QColor& color) { background_ = color; }
  E_OGR_BRUSH GetIdentify() const { return identify_; }
  void SetIdentify(E_OGR_BRUSH identify) { identify_ = identify; }
  // Rotation of the fill pattern in degrees.
  double GetAngle() const { return angle_; }
  void SetAngle(double angle) { angle_ = angle; }
  double GetScale() const { return scale_; }
  void SetScale(double scale) { scale_ = scale; }

 private:
  QColor foreground_;
  QColor background_;
  E_OGR_BRUSH identify_ = OGR_BRUSH_SOLID;
  double angle_ = 0.0;
  double scale_ = 1.0;
};

#endif  // ZU_FEATURE_BRUSH_STYLE_H
