// CFeatureStyleSet owns the styles of one feature or layer, in the order they were added. It
// normally holds at most one style of each kind; readers take the first of a kind.
//
// Copying is deep: a copy owns clones of every style. Styles handed to PushBack become owned by
// the set and are deleted with it or by Clear.
//
// Thread safety: none; callers synchronise access to one set themselves.
#ifndef ZU_FEATURE_STYLE_SET_H
#define ZU_FEATURE_STYLE_SET_H

#include <memory>
#include <vector>

#include "FeatureStyle.h"
#include "ZuExport.h"

class ZU_EXPORT CFeatureStyleSet {
 public:
  CFeatureStyleSet();
  CFeatureStyleSet(const CFeatureStyleSet& other);
  CFeatureStyleSet& operator=(const CFeatureStyleSet& other);
  CFeatureStyleSet(CFeatureStyleSet&& other) noexcept;
  CFeatureStyleSet& operator=(CFeatureStyleSet&& other) noexcept;
  ~CFeatureStyleSet();

  // Takes ownership of `style`; null is ignored.
  void PushBack(CFeatureStyle* style);
  void PushBack(std::unique_ptr<CFeatureStyle> style);

  int GetCount() const;
  bool IsEmpty() const;
  // The style at `index`, or null when `index` is out of range. The set keeps ownership.
  CFeatureStyle* At(int index);
  const CFeatureStyle* At(int index) const;
  // Deletes every style.
  void Clear();

 private:
  std::vector<std::unique_ptr<CFeatureStyle>> styles_;
};

#endif  // ZU_FEATURE_STYLE_SET_H
