// CFeatureStyle is the polymorphic base of the styles a feature or layer is drawn with (pen,
// brush, icon, label). Style sets hold styles through this base and tell them apart by their
// dynamic type; Clone gives a deep copy of the concrete style.
//
// Thread safety: styles are plain values; callers synchronise access to one object themselves.
#ifndef ZU_FEATURE_STYLE_H
#define ZU_FEATURE_STYLE_H

#include <memory>

#include "ZuExport.h"

class ZU_EXPORT CFeatureStyle {
 public:
  virtual ~CFeatureStyle();

  virtual std::unique_ptr<CFeatureStyle> Clone() const = 0;

 protected:
  // Only the concrete styles copy, so that no style is sliced through the base.
  CFeatureStyle() = default;
  CFeatureStyle(const CFeatureStyle&) = default;
  CFeatureStyle& operator=(const CFeatureStyle&) = default;
};

#endif  // ZU_FEATURE_STYLE_H
