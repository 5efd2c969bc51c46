// One-point geometry blobs of the auxiliary databases: a CVector3D as a POINT Z blob (SRID 4326)
// and back, through the module's geometry blob conversion.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_POINT_BLOB_H
#define ANNOTATIONLAYER_POINT_BLOB_H

#include "Vector3D.h"

struct sqlite3_stmt;

namespace AnnotationLayerInner {

// Binds `point` as a POINT Z blob, handing SQLite the blob with free() as its destructor. Returns
// the SQLite result code.
int BindPointBlob(sqlite3_stmt* statement, int index, const CVector3D& point);

// The first vertex of a geometry blob; false, with `out` untouched, when the blob cannot be read or
// holds no vertex.
bool ReadFirstPoint(const void* blob, int size, CVector3D& out);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_POINT_BLOB_H
