// CFeaturePenStyle: how lines and outlines are drawn (colour, width in a unit, line pattern).
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ZU_FEATURE_PEN_STYLE_H
#define ZU_FEATURE_PEN_STYLE_H

#include <QColor>

#include "FeatureStyle.h"
#include "FeatureStyleTypes.h"
#include "ZuExport.h"

class ZU_EXPORT CFeaturePenStyle : public CFeatureStyle {
 public:
  // A solid black line one pixel wide.
  CFeaturePenStyle();
  CFeaturePenStyle(const CFeaturePenStyle&) = default;
  CFeaturePenStyle& operator=(const CFeaturePenStyle&) = default;
  ~CFeaturePenStyle() override;

  std::unique_ptr<CFeatureStyle> Clone() const override;

  const QColor& GetColor() const { return color_; }
  void SetColor(const QColor& color) { color_ = color; }
  double GetWidth() const { return width_; }
  void SetWidth(double width) { width_ = width; }
  E_GCS_UNIT GetUnit() const { return unit_; }
  void SetUnit(E_GCS_UNIT unit) { unit_ = unit; }
  E_OGR_PEN GetIdentify() const { return identify_; }
  void SetIdentify(E_OGR_PEN identify) { identify_ = identify; }

 private:
  QColor color_;
  double width_ = 1.0;
  E_GCS_UNIT unit_ = GCS_UNIT_PIXEL;
  E_OGR_PEN identify_ = OGR_PEN_SOLID;
};

#endif  // ZU_FEATURE_PEN_STYLE_H
