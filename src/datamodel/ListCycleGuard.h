// CListCycleGuard notices that a walk along a sibling list has come back to a node it met before,
// in constant memory (Brent's method): walking a list of a million siblings costs no more memory
// than walking one of ten. A well-formed list ends in '' and never trips the guard. A list
// corrupted into a cycle trips it at the latest about twice the cycle's length after the walk
// enters the cycle, so the walk may meet some nodes of the cycle a second time before it stops.
//
// Thread safety: a plain value; one guard per walk.
#ifndef ANNOTATIONLAYER_LIST_CYCLE_GUARD_H
#define ANNOTATIONLAYER_LIST_CYCLE_GUARD_H

#include <cstdint>
#include <string>

class CListCycleGuard {
 public:
  CListCycleGuard() = default;

  // Records that the walk reached `uuid` (never empty). Returns false when the walk has come round
  // a cycle and should stop.
  bool Step(const std::string& uuid);

 private:
  // The node the walk is compared against; it moves ahead to the current node whenever the
  // number of steps since it last moved reaches the next power of two.
  std::string mark_;
  uint64_t stepsSinceMark_ = 0;
  uint64_t power_ = 1;
};

#endif  // ANNOTATIONLAYER_LIST_CYCLE_GUARD_H
