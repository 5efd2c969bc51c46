// Safe entry into SpatiaLite's reader of geometry blobs, and ownership of the collections it
// returns. Internal to the module.
//
// gaiaFromSpatiaLiteBlobWkb checks each element count only against the bytes left, with int
// arithmetic, so a negative vertex or ring count passes and makes it allocate or write out of
// bounds (SpatiaLite 5.0.1 crashes on it). ParseSpatialiteBlob therefore first walks the element
// counts of a blob in SpatiaLite's own layout and hands the blob to gaia only when every count is
// non-negative and its elements fit before the end mark. Coordinates are never decoded here; all
// geometry building is gaia's.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_SPATIALITE_BLOB_H
#define ANNOTATIONLAYER_SPATIALITE_BLOB_H

#include <memory>

struct gaiaGeomCollStruct;

namespace AnnotationLayerInner {

struct GaiaGeomCollDeleter {
  void operator()(gaiaGeomCollStruct* geom) const;
};

// A gaia geometry collection released with gaiaFreeGeomColl.
using GaiaGeomCollPtr = std::unique_ptr<gaiaGeomCollStruct, GaiaGeomCollDeleter>;

// Whether the element counts of a blob in SpatiaLite's full layout (start mark, endian byte,
// SRID, rectangle, MBR mark, class, body, end mark) are all non-negative and fit. Blobs of any
// other form (too short, other marks, SpatiaLite's tiny points) are not judged here: true.
bool HasPlausibleCounts(const unsigned char* blob, int size);

// The collection read from a SpatiaLite geometry blob; null for a null or empty blob, for
// implausible counts and for anything gaiaFromSpatiaLiteBlobWkb rejects.
GaiaGeomCollPtr ParseSpatialiteBlob(const unsigned char* blob, int size);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_SPATIALITE_BLOB_H
