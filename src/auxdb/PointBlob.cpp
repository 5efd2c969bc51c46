#include "PointBlob.h"

#include <sqlite3.h>

#include <cstdlib>
#include <vector>

#include "GeometryBlob.h"

namespace AnnotationLayerInner {

int BindPointBlob(sqlite3_stmt* statement, int index, const CVector3D& point) {
  int size = 0;
  unsigned char* blob = AnnotationLayerNS::ConvertGeomDataToWkbGeom(
      size, std::vector<CGeometryData>{CGeometryData({point})}, GEOMETRY_DATA_TYPE_POINT);
  // SQLite takes the blob over even when binding fails; a null blob binds NULL.
  return sqlite3_bind_blob(statement, index, blob, size, free);
}

bool ReadFirstPoint(const void* blob, int size, CVector3D& out) {
  std::vector<CGeometryData> parts;
  if (!AnnotationLayerNS::ConvertWkbGeomToGeomData(parts, static_cast<const unsigned char*>(blob),
                                                   size)) {
    return false;
  }
  for (const CGeometryData& part : parts) {
    if (part.GetSize() > 0) {
      out = part.At(0);
      return true;
    }
  }
  return false;
}

}  // namespace AnnotationLayerInner
