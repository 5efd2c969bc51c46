// Pieces of SQL text that the module splices into statements: id lists, numbers and quoted
// identifiers.
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

// Whether `text` may be spliced between single quotes as it is: it holds no quote that could end
// the literal early and no NUL byte that would cut the statement short. Identifiers are spliced
// without escaping, so callers refuse any text that fails this test before building a statement.
bool IsSafeSqlText(const std::string& text);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_SQL_TEXT_H
