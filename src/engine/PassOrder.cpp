#include "PassOrder.h"

bool CPassOrder::Insert(const CNodeOrder& key, const std::string& uuid) {
  // The first ranked key that is not less than `key`.
  size_t low = 0;
  size_t high = ranks_.size();
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    if (entries_[ranks_[middle]].first < key) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  if (low < ranks_.size() && !(key < entries_[ranks_[low]].first)) return false;
  entries_.emplace_back(key, uuid);
  ranks_.insert(ranks_.begin() + static_cast<std::ptrdiff_t>(low),
                static_cast<uint32_t>(entries_.size() - 1));
  return true;
}

void CPassOrder::Clear() {
  entries_.clear();
  ranks_.clear();
}
