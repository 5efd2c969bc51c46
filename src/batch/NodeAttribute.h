// A node's effective display attribute: visibility, level ranges for the node and its name, and a
// z value. A value type; the node cache calculator combines a node's own attribute with those of
// its ancestors through operator+=.
//
// Threading contract: a plain value; no internal synchronisation.
#ifndef ANNOTATIONLAYER_NODE_ATTRIBUTE_H
#define ANNOTATIONLAYER_NODE_ATTRIBUTE_H

#include "AnnotationLayerExport.h"

class ANNOTATIONLAYER_EXPORT CNodeAttribute {
 public:
  CNodeAttribute() = default;

  void SetVisible(bool visible) { visible_ = visible; }
  bool IsVisible() const { return visible_; }
  void SetLevel(char minLevel, char maxLevel) {
    minLevel_ = static_cast<signed char>(minLevel);
    maxLevel_ = static_cast<signed char>(maxLevel);
  }
  char GetMinLevel() const { return static_cast<char>(minLevel_); }
  char GetMaxLevel() const { return static_cast<char>(maxLevel_); }
  void SetNameLevel(char minLevel, char maxLevel) {
    minNameLevel_ = static_cast<signed char>(minLevel);
    maxNameLevel_ = static_cast<signed char>(maxLevel);
  }
  char GetMinNameLevel() const { return static_cast<char>(minNameLevel_); }
  char GetMaxNameLevel() const { return static_cast<char>(maxNameLevel_); }
  void SetZValue(int z) { zValue_ = z; }
  int GetZValue() const { return zValue_; }

  // Combines `other` into this accumulator: visibility is and-ed, the level ranges are intersected
  // (an empty intersection is kept as it is), and the z value is replaced by other's.
  CNodeAttribute& operator+=(const CNodeAttribute& other);

 private:
  bool visible_ = true;
  signed char minLevel_ = 0;
  signed char maxLevel_ = 21;
  signed char minNameLevel_ = 0;
  signed char maxNameLevel_ = 21;
  int zValue_ = 0;
};

#endif  // ANNOTATIONLAYER_NODE_ATTRIBUTE_H
