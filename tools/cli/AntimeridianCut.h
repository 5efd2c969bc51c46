// CAntimeridianCut cuts geometries that cross the antimeridian the way many world data sets store
// them (Natural Earth, and so world-atlas): as rings or lines that leap from +180 to -180 between
// two vertices, which a flat map draws as a stripe around the world. Polygons are made continuous
// and then cut by GDAL's own date-line wrapping; lines are cut at the leap.
//
// A leap is two consecutive vertices more than 180 degrees of longitude apart, away from the poles
// (Antarctica's ring runs along the edge of the map on purpose). A polygon that GDAL cannot cut
// into a valid one is left as it was.
//
// Threading contract: stateless; any thread.
#ifndef ANNOTATIONLAYER_CLI_ANTIMERIDIAN_CUT_H
#define ANNOTATIONLAYER_CLI_ANTIMERIDIAN_CUT_H

#include <ogr_geometry.h>

class CAntimeridianCut {
 public:
  // Whether the line leaps across the antimeridian between vertex i - 1 and i.
  static bool LeapsAt(const OGRSimpleCurve& line, int i);
  // The geometry (longitude/latitude) cut at the antimeridian: a multi polygon or multi line
  // string; null when it does not cross, or cannot be cut.
  static OGRGeometryUniquePtr Cut(const OGRGeometry& geometry);
};

#endif  // ANNOTATIONLAYER_CLI_ANTIMERIDIAN_CUT_H
