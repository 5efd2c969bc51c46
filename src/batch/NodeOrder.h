// A node's composite draw-order key: the order numbers of its ancestors from the root down and
// then its own. A value type.
//
// The comparisons are deliberately not lexicographic, and maps keyed by CNodeOrder rely on them as
// they are: over the common prefix of the two keys, a < b when at some position a's number is
// greater than b's, and a > b when at some position it is smaller (numbers compared unsigned, so
// -1, an uncached node, sorts above every real number). Both may hold at once ([1, 5] and [2, 3]);
// a key never compares less than a key that extends it. a == b needs equal lengths and elements.
//
// Threading contract: a plain value; no internal synchronisation.
#ifndef ANNOTATIONLAYER_NODE_ORDER_H
#define ANNOTATIONLAYER_NODE_ORDER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AnnotationLayerExport.h"

class ANNOTATIONLAYER_EXPORT CNodeOrder {
 public:
  CNodeOrder() = default;
  explicit CNodeOrder(std::vector<int32_t> numbers) : numbers_(std::move(numbers)) {}
  CNodeOrder(const CNodeOrder& other) = default;
  CNodeOrder& operator=(const CNodeOrder& other) = default;
  ~CNodeOrder() = default;

  void PushBack(int32_t number) { numbers_.push_back(number); }
  int GetCount() const { return static_cast<int>(numbers_.size()); }
  // Requires 0 <= index < GetCount().
  int32_t At(int index) const { return numbers_[static_cast<size_t>(index)]; }
  const std::vector<int32_t>& Numbers() const { return numbers_; }

  bool operator<(const CNodeOrder& other) const;
  bool operator>(const CNodeOrder& other) const;
  bool operator==(const CNodeOrder& other) const;

 private:
  std::vector<int32_t> numbers_;
};

#endif  // ANNOTATIONLAYER_NODE_ORDER_H
