// Geometry and bounding boxes of CSpatialiteDBDataModel (not built yet: failure values).
#include "SpatialiteDBDataModel.h"

bool CSpatialiteDBDataModel::QueryGeometryData(const std::string&, IAnnotationFeature*) {
  return false;
}
EXTENT CSpatialiteDBDataModel::QueryBoundingBox(const std::string&) { return EXTENT(); }
bool CSpatialiteDBDataModel::ModifyGeometryData(const std::string&, IAnnotationFeature*) {
  return false;
}
bool CSpatialiteDBDataModel::DirtyLayerBoundingBox(const std::string&) { return false; }
