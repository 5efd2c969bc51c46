#include "ChangeMask.h"

bool IsOrderChange(int changeMask) {
  return (changeMask & (CHANGE_MASK_PARENT | CHANGE_MASK_POSITION)) != 0;
}

bool IsOrderChange(const CChangeMask& mask) { return IsOrderChange(mask.GetChangeMask()); }
