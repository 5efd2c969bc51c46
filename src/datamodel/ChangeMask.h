// CChangeMask records which groups of fields of a node record were set since the record was
// loaded, so that the data model writes back only those groups. Every option record derives from
// it. The bit values are stored nowhere but are part of the exported interface.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_CHANGE_MASK_H
#define ANNOTATIONLAYER_CHANGE_MASK_H

#include "AnnotationLayerExport.h"

// One bit per group of record fields.
enum E_CHANGE_MASK_BIT : int {
  CHANGE_MASK_PARENT = 1,
  CHANGE_MASK_POSITION = 2,  // left or right neighbour, order number
  CHANGE_MASK_NAME = 4,
  CHANGE_MASK_TYPE = 8,
  CHANGE_MASK_STATUS = 16,  // status word, child node max count
  CHANGE_MASK_LEVELS = 32,
  CHANGE_MASK_EXTENT = 64,
  CHANGE_MASK_WKT = 128,
  CHANGE_MASK_PROPERTY_HEADER = 256,
  CHANGE_MASK_DESCRIPTION = 512,
  CHANGE_MASK_PATH = 1024,
};

class ANNOTATIONLAYER_EXPORT CChangeMask {
 public:
  CChangeMask() = default;

  void SetChangeMask(int mask) { mask_ = mask; }
  void AddChangeMask(int bits) { mask_ |= bits; }
  void RemoveChangeMask(int bits) { mask_ &= ~bits; }
  int GetChangeMask() const { return mask_; }
  // True when any bit is set.
  bool IsChanged() const { return mask_ != 0; }
  // True when any of `bits` is set.
  bool IsChanged(int bits) const { return (mask_ & bits) != 0; }

 private:
  int mask_ = 0;
};

// True when the node moved: a new parent, or new neighbours or order number.
ANNOTATIONLAYER_EXPORT bool IsOrderChange(int changeMask);
ANNOTATIONLAYER_EXPORT bool IsOrderChange(const CChangeMask& mask);

#endif  // ANNOTATIONLAYER_CHANGE_MASK_H
