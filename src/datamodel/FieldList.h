// The fields of a field set as a plain list, in set order (removed fields included), for code that
// must not run while the set's lock is held, e.g. statements that write the fields.
//
// Thread safety: takes the set's lock for the copy only.
#ifndef ANNOTATIONLAYER_FIELD_LIST_H
#define ANNOTATIONLAYER_FIELD_LIST_H

#include <vector>

#include "ZuFieldSetObject.h"

namespace AnnotationLayerInner {

std::vector<CZuFieldSetObject::__tagField> CollectFields(const CZuFieldSetObject& fields);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_FIELD_LIST_H
