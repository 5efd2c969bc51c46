// Kinds of stored geometry. All are three-dimensional (XYZ); the values are part of stored data.
// The underlying type is fixed so that any stored number is a valid value of the type.
#ifndef ZU_GEOMETRY_DATA_TYPE_H
#define ZU_GEOMETRY_DATA_TYPE_H

enum E_GEOMETRY_DATA_TYPE : int {
  GEOMETRY_DATA_TYPE_UNKNOWN = 0,
  GEOMETRY_DATA_TYPE_POINT = 1,
  GEOMETRY_DATA_TYPE_LINESTRING = 2,
  GEOMETRY_DATA_TYPE_POLYGON = 3,
  GEOMETRY_DATA_TYPE_MULTIPOINT = 4,
  GEOMETRY_DATA_TYPE_MULTILINESTRING = 5,
  GEOMETRY_DATA_TYPE_MULTIPOLYGON = 6,
};

#endif  // ZU_GEOMETRY_DATA_TYPE_H
