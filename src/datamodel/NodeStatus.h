// The status word of a folder, layer or feature record and the tree view check state kept in it.
// The bit values are stored in the status tables.
//
// Check states use Qt's numbers: 0 unchecked, 1 partially checked, 2 checked. Bit 0 says a check
// is present; bit 1 with it makes the check partial.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_NODE_STATUS_H
#define ANNOTATIONLAYER_NODE_STATUS_H

enum E_NODE_STATUS_BIT : int {
  NODE_STATUS_CHECKED = 1,
  NODE_STATUS_PARTIALLY_CHECKED = 2,  // meaningful only together with NODE_STATUS_CHECKED
  NODE_STATUS_EXPANDED = 4,
  NODE_STATUS_RECYCLED = 8,
};

namespace AnnotationLayerInner {

inline int CheckStateOfStatus(int status) {
  if ((status & NODE_STATUS_CHECKED) == 0) return 0;
  return (status & NODE_STATUS_PARTIALLY_CHECKED) != 0 ? 1 : 2;
}

// 0 clears the check, 1 makes it partial, any other value makes it a full check.
inline int StatusWithCheckState(int status, int checkState) {
  const int checkBits = NODE_STATUS_CHECKED | NODE_STATUS_PARTIALLY_CHECKED;
  if (checkState == 0) return status & ~checkBits;
  if (checkState == 1) return status | checkBits;
  return (status | NODE_STATUS_CHECKED) & ~NODE_STATUS_PARTIALLY_CHECKED;
}

inline int StatusWithBit(int status, int bit, bool on) { return on ? (status | bit) : (status & ~bit); }

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_NODE_STATUS_H
