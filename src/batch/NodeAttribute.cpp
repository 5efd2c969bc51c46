#include "NodeAttribute.h"

#include <algorithm>

CNodeAttribute& CNodeAttribute::operator+=(const CNodeAttribute& other) {
  visible_ = visible_ && other.visible_;
  minLevel_ = std::max(minLevel_, other.minLevel_);
  maxLevel_ = std::min(maxLevel_, other.maxLevel_);
  minNameLevel_ = std::max(minNameLevel_, other.minNameLevel_);
  maxNameLevel_ = std::min(maxNameLevel_, other.maxNameLevel_);
  zValue_ = other.zValue_;
  return *this;
}
