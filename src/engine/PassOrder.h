// CPassOrder ranks the features of one traversal pass by their draw-order keys, ascending by
// CNodeOrder::operator< as that operator is, and keeps the feature met first when a key that
// compares neither less nor greater than one already ranked arrives.
//
// CNodeOrder's comparison is deliberately not a strict weak order (two keys can each be less than
// the other), which a std::map may not be given: its rebalancing trusts the comparison and can
// break its own links when answers contradict each other. The ranking here is a binary insertion
// into an array of indices, which ends and stays intact whatever the answers are, and gives the
// same order as a map wherever the comparison is consistent.
//
// Threading contract: none; one thread (the traversal thread) owns a ranking.
#ifndef ANNOTATIONLAYER_PASS_ORDER_H
#define ANNOTATIONLAYER_PASS_ORDER_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "NodeOrder.h"

class CPassOrder {
 public:
  CPassOrder() = default;
  CPassOrder(const CPassOrder&) = delete;
  CPassOrder& operator=(const CPassOrder&) = delete;

  // Ranks `uuid` under `key`; false, leaving the ranking as it was, when a key that counts as
  // equal is ranked already.
  bool Insert(const CNodeOrder& key, const std::string& uuid);
  bool Empty() const { return ranks_.empty(); }
  int Size() const { return static_cast<int>(ranks_.size()); }
  void Clear();

  // Calls visit(key, uuid) for every ranked feature, ascending.
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (uint32_t index : ranks_) visit(entries_[index].first, entries_[index].second);
  }

 private:
  std::vector<std::pair<CNodeOrder, std::string>> entries_;  // in arrival order
  std::vector<uint32_t> ranks_;                              // indices into entries_, ascending
};

#endif  // ANNOTATIONLAYER_PASS_ORDER_H
