// The text form of a layer's field header (the column `property_header`): one entry per field,
// "key,class,type;" with the type as a decimal E_FIELD_OFST_TYPE and nothing between entries,
// e.g. "name,,7;height,m,6;".
//
// The format has no escapes: a key or class holding ',' or ';' cannot be written so that it reads
// back the same. Such fields are written anyway (as the stored format always was) and the reader
// then skips or splits them as the text dictates.
//
// Thread safety: both functions take the field set's lock while they work on it.
#ifndef ANNOTATIONLAYER_LAYER_HEADER_LIST_H
#define ANNOTATIONLAYER_LAYER_HEADER_LIST_H

#include <string>

#include "ZuFieldSetObject.h"

namespace AnnotationLayerInner {

// The header text of every field that is not removed and has a key; empty for an empty set.
std::string LayerHeaderListToString(const CZuFieldSetObject& fields);

// Reads a header text back into `fields`, entry by entry in order, with SetField: each field gets
// its key, class and type, an invalid value, and the changed state (call ResetChange to treat the
// fields as loaded). A missing ';' after the last entry is accepted and empty entries are passed
// over. An entry without exactly two ',', with an empty key, or whose type is not a decimal number
// from 0 to 7 is skipped; the result is then false and one warning is logged with the count.
bool LayerHeaderListFromString(const std::string& text, CZuFieldSetObject& fields);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_LAYER_HEADER_LIST_H
