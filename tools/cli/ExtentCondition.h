// CExtentCondition writes the SQL conditions on `shape` with which the tool finds features by
// extent itself (through IAnnotationDBDataModel::TravelViaSQL), where it wants closed comparisons:
// the spatial index's boxes are rounded outwards, so a closed comparison keeps every candidate,
// edges included.
//
// Threading contract: stateless; any thread.
#ifndef ANNOTATIONLAYER_CLI_EXTENT_CONDITION_H
#define ANNOTATIONLAYER_CLI_EXTENT_CONDITION_H

#include <string>

#include "AnnotationLayerTypes.h"

class CExtentCondition {
 public:
  // The features whose index box meets the extent.
  static std::string IndexBoxMeets(const EXTENT& extent);
  // The features whose geometry meets the extent (GEOS decides, after the index).
  static std::string GeometryMeets(const EXTENT& extent);
};

#endif  // ANNOTATIONLAYER_CLI_EXTENT_CONDITION_H
