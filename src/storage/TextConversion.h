// Conversions between the local code page (code page 936, GBK) and UTF-8.
//
// The module keeps user text (names, headers, field values, paths) in the local code page and
// stores it in SQLite as UTF-8. Identifiers, WKT and index arrays are ASCII and are not converted.
//
// Invalid input never fails: bytes that do not decode become U+FFFD on the way to UTF-8, and
// characters the local code page cannot hold become '?' on the way back.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_TEXT_CONVERSION_H
#define ANNOTATIONLAYER_TEXT_CONVERSION_H

#include <string>


namespace AnnotationLayerInner {

std::string LocalToUtf8(const std::string& local);
std::string Utf8ToLocal(const std::string& utf8);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_TEXT_CONVERSION_H
