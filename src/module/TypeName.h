// The plain class name of a type as the host's object creator expects it: the demangled run-time
// type name without a leading "class " (which some compilers put there).
#ifndef ANNOTATIONLAYER_TYPE_NAME_H
#define ANNOTATIONLAYER_TYPE_NAME_H

#include <string>
#include <typeinfo>

namespace AnnotationLayerInner {

std::string PlainClassName(const std::type_info& type);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_TYPE_NAME_H
