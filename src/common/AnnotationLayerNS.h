// Identifiers, type mappings and small tools shared by every subsystem of the module.
//
// All functions are stateless except ZuGenerateUUID, which keeps one process-wide counter; all are
// safe to call from any thread.
#ifndef ANNOTATIONLAYER_NS_H
#define ANNOTATIONLAYER_NS_H

#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "GeometryData.h"

namespace AnnotationLayerNS {

// A new node identifier: the MD5 (32 lowercase hex digits) of the time in microseconds since
// 1601, the machine id, the thread id and a process-wide counter, written one after the other.
ANNOTATIONLAYER_EXPORT std::string ZuGenerateUUID();

// True for the GIS layer kinds 100, 101 and 102.
ANNOTATIONLAYER_EXPORT bool IsGISLayer(E_LAYER_TYPE type);

// Annotation kind to geometry kind and back. The two are not inverse: 200 and 300 map to plain
// line and point geometry and come back as 1 and 0.
ANNOTATIONLAYER_EXPORT E_GEOMETRY_DATA_TYPE MappingGeomType(E_ANNOTATION_TYPE type);
ANNOTATIONLAYER_EXPORT E_ANNOTATION_TYPE MappingAnnotationType(E_GEOMETRY_DATA_TYPE type);

// Qt variant type id (QVariant::Type) to field type and back. Characters travel as Int and floats
// as Double, so CHAR comes back as INT and FLOAT as DOUBLE.
ANNOTATIONLAYER_EXPORT E_FIELD_OFST_TYPE MappingFieldType(int qtVariantType);
ANNOTATIONLAYER_EXPORT int MappingQtVariantType(E_FIELD_OFST_TYPE type);

// Whether the drawn entities must be recomputed when the view moves from `cur` to `nxt`. Callers
// treat an identical extent as unchanged before asking. The last step compares the two max_y
// values with each other rather than against nxt's y interval; the engine relies on that.
ANNOTATIONLAYER_EXPORT bool IsNeedUpdateRange(const EXTENT& cur, const EXTENT& nxt);

// The extent's four corners, counter-clockwise from (min x, min y), z 0: the ring to hand to the
// polygon form of the extent walk, which finds every feature whose box meets the extent.
ANNOTATIONLAYER_EXPORT CGeometryData ExtentRing(const EXTENT& extent);

// The core library's data directory + "layer_cache/". Nothing is created here.
ANNOTATIONLAYER_EXPORT std::string GetDefaultCacheDir();

// Console tool: gives table.column of an existing database a generic geometry column (SRID 4326)
// and its spatial index, printing its progress to standard output.
ANNOTATIONLAYER_EXPORT bool BuildDBAsSpatialite(const std::string& table, const std::string& column,
                                                const std::string& dbPath);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_NS_H
