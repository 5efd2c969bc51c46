// Geometry parts written out in tests: a part from its vertices, and a closed square ring.
#ifndef ANNOTATIONLAYER_TEST_GEOMETRY_PARTS_H
#define ANNOTATIONLAYER_TEST_GEOMETRY_PARTS_H

#include <initializer_list>
#include <vector>

#include "GeometryData.h"

inline CGeometryData Part(std::initializer_list<CVector3D> vertices) {
  return CGeometryData(std::vector<CVector3D>(vertices));
}

// The square with its lower left corner at (x, y), at height z, closed by its first vertex.
inline CGeometryData Square(double x, double y, double side, double z) {
  return Part({{x, y, z}, {x + side, y, z}, {x + side, y + side, z}, {x, y + side, z}, {x, y, z}});
}

#endif  // ANNOTATIONLAYER_TEST_GEOMETRY_PARTS_H
