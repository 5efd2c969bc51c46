// Copying attribute fields between a field set and a host feature object.
//
// Thread safety: the field set's lock is taken while it is read or written; the feature must not
// be used by another thread meanwhile.
#ifndef ANNOTATIONLAYER_FEATURE_FIELD_SET_H
#define ANNOTATIONLAYER_FEATURE_FIELD_SET_H

#include "AnnotationLayerExport.h"
#include "IAnnotationFeature.h"
#include "ZuFieldSetObject.h"

namespace AnnotationLayerNS {

// Sets every feature field that has a key into `fieldSet` with SetFieldValue, the type mapped
// from the value's Qt type (MappingFieldType). Fields already in the set keep their type and
// class. False, with an error logged, for a null feature.
ANNOTATIONLAYER_EXPORT bool FillFieldSetFromFeature(CZuFieldSetObject& fieldSet,
                                                    const IAnnotationFeature* feature);

// Sets every field of `fieldSet` that is not removed and has a key into the feature, value
// unchanged, in the set's order. False, with an error logged, for a null feature.
ANNOTATIONLAYER_EXPORT bool FillFeatureFromFieldSet(IAnnotationFeature* feature,
                                                    const CZuFieldSetObject& fieldSet);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_FEATURE_FIELD_SET_H
