// Pieces of SQL text that the module splices into statements: id lists and numbers.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_SQL_TEXT_H
#define ANNOTATIONLAYER_SQL_TEXT_H

#include <cstdint>
#include <string>
#include <vector>

namespace AnnotationLayerInner {

// "1,2,3" for {1, 2, 3}; "" for an empty list.
std::string JoinIds(const std::vector<int64_t>& ids);

// A double as statements write it: 14 significant digits, stream formatting.
std::string FormatDouble(double value);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_SQL_TEXT_H
