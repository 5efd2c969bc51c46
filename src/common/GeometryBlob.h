// Conversion between a feature's geometry (a kind and a list of parts, each part an ordered list
// of CVector3D vertices) and the SpatiaLite geometry blob kept in `shape.geom`: always with Z
// (dimension model XYZ) and SRID 4326.
//
// Writing, by kind: the point kinds (1, 4) add every vertex of every part as its own point; the
// line kinds (2, 5) add one line string per part; the area kinds (3, 6) add one polygon per part
// whose exterior ring takes the part's vertices as they are (no interior ring, and no closing
// vertex is added). A part without vertices adds nothing, and a kind outside 1..6 adds nothing for
// any part. The collection is declared with the kind's class code 1001..1006.
//
// What SpatiaLite makes of that, and callers should expect:
// - The class stored in the blob follows the content, not the declaration: SpatiaLite compares the
//   declared type only with its two-dimensional multi codes, never with 1004..1006. So a point
//   kind with several vertices is stored as MULTIPOINT Z, and a multi kind with a single part as
//   POINT Z, LINESTRING Z or POLYGON Z; reading such a blob back gives the kind of the stored class.
// - A collection with nothing in it (every part empty, or a kind outside 1..6) serialises to no
//   blob at all: the result is null with size 0, just as for no parts.
// - An open ring is stored and read back unchanged (SQL AsText shows it open; ST_IsValid does not
//   accept it), and so are rings and lines of one or two vertices.
//
// Reading, by the class gaiaGeometryType reports: 1001 and 1004 give one part per point holding
// that vertex, 1002 and 1005 one part per line string, 1003 and 1006 one part per polygon with its
// exterior ring only. Any other class (a two-dimensional or measured geometry, a mixed collection)
// gives no part and still succeeds. The SRID is not checked. Parts are appended to what the caller
// already holds. A blob that cannot be read (see SpatialiteBlob.h) gives false and leaves the
// caller's data unchanged.
//
// Thread safety: stateless; safe from any thread as long as the arguments are not shared.
#ifndef ANNOTATIONLAYER_GEOMETRY_BLOB_H
#define ANNOTATIONLAYER_GEOMETRY_BLOB_H

#include <vector>

#include "AnnotationLayerExport.h"
#include "GeometryData.h"
#include "GeometryDataType.h"

class IAnnotationFeature;

namespace AnnotationLayerNS {

// The blob of the feature's own kind and parts; null (size 0) for a null feature or when there is
// nothing to store. The blob is SpatiaLite's allocation: release it with free().
ANNOTATIONLAYER_EXPORT unsigned char* ConvertFeatureToWkbGeom(int& size,
                                                              IAnnotationFeature* feature);

// The blob of `parts` as geometry kind `type`; null (size 0) when there is nothing to store.
// Release the blob with free().
ANNOTATIONLAYER_EXPORT unsigned char* ConvertGeomDataToWkbGeom(
    int& size, const std::vector<CGeometryData>& parts, E_GEOMETRY_DATA_TYPE type);

// Sets the feature's kind from the blob's class (1001..1006 give 1..6, any other class 0) and
// appends its parts. False for a null feature and for a blob that cannot be read.
ANNOTATIONLAYER_EXPORT bool ConvertWkbGeomToFeature(IAnnotationFeature* feature,
                                                    const unsigned char* blob, int size);

// Appends the blob's parts to `parts`. False for a null blob, a size below 1 and a blob that
// cannot be read.
ANNOTATIONLAYER_EXPORT bool ConvertWkbGeomToGeomData(std::vector<CGeometryData>& parts,
                                                     const unsigned char* blob, int size);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_GEOMETRY_BLOB_H
