// Geometry blobs from the database: into parts, into a feature, and into WKT.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "AnnotationFeature.h"
#include "GeometryBlob.h"
#include "SpatialiteHandler.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const int length = static_cast<int>(size);
  std::vector<CGeometryData> parts;
  if (AnnotationLayerNS::ConvertWkbGeomToGeomData(parts, data, length)) {
    int written = 0;
    unsigned char* blob =
        AnnotationLayerNS::ConvertGeomDataToWkbGeom(written, parts, GEOMETRY_DATA_TYPE_POLYGON);
    free(blob);
  }
  CAnnotationFeature feature;
  AnnotationLayerNS::ConvertWkbGeomToFeature(&feature, data, length);
  CSpatialiteHandler::BlobToWkt(data, length);
  return 0;
}
