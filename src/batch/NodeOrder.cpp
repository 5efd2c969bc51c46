#include "NodeOrder.h"

#include <algorithm>

bool CNodeOrder::operator<(const CNodeOrder& other) const {
  const size_t n = std::min(numbers_.size(), other.numbers_.size());
  bool less = false;
  for (size_t i = 0; i < n; ++i) {
    if (static_cast<uint32_t>(numbers_[i]) > static_cast<uint32_t>(other.numbers_[i])) less = true;
  }
  return less;
}

bool CNodeOrder::operator>(const CNodeOrder& other) const {
  const size_t n = std::min(numbers_.size(), other.numbers_.size());
  bool greater = false;
  for (size_t i = 0; i < n; ++i) {
    if (static_cast<uint32_t>(numbers_[i]) < static_cast<uint32_t>(other.numbers_[i])) {
      greater = true;
    }
  }
  return greater;
}

bool CNodeOrder::operator==(const CNodeOrder& other) const { return numbers_ == other.numbers_; }
