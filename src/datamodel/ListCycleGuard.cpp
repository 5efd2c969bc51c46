#include "ListCycleGuard.h"

bool CListCycleGuard::Step(const std::string& uuid) {
  if (mark_.empty()) {
    mark_ = uuid;
    return true;
  }
  if (uuid == mark_) return false;
  if (++stepsSinceMark_ == power_) {
    mark_ = uuid;
    stepsSinceMark_ = 0;
    power_ *= 2;
  }
  return true;
}
