// Enumerations of the feature styles. The numbers are stored in style JSON; never renumber them.
// Pen and brush ids follow the OGR feature style ids ("ogr-pen-<n>", "ogr-brush-<n>") and units
// follow the order of OGR's style units, so that styles exchange with GDAL/OGR data unchanged.
#ifndef ZU_FEATURE_STYLE_TYPES_H
#define ZU_FEATURE_STYLE_TYPES_H

// Unit of a pen width or a label size. 0 is what a style read from an empty value gets.
enum E_GCS_UNIT : int {
  GCS_UNIT_GROUND = 0,  // metres on the ground: the size scales with the map
  GCS_UNIT_PIXEL = 1,
  GCS_UNIT_POINT = 2,  // 1/72 inch
  GCS_UNIT_MILLIMETER = 3,
  GCS_UNIT_CENTIMETER = 4,
  GCS_UNIT_INCH = 5,
};

// Line pattern of a pen.
enum E_OGR_PEN : int {
  OGR_PEN_SOLID = 0,
  OGR_PEN_NULL = 1,  // no line drawn
  OGR_PEN_DASH = 2,
  OGR_PEN_SHORT_DASH = 3,
  OGR_PEN_LONG_DASH = 4,
  OGR_PEN_DOT = 5,
  OGR_PEN_DASH_DOT = 6,
  OGR_PEN_DASH_DOT_DOT = 7,
  OGR_PEN_ALTERNATE = 8,  // every other pixel
};

// Fill pattern of a brush. Hatches use the foreground colour over the background colour.
enum E_OGR_BRUSH : int {
  OGR_BRUSH_SOLID = 0,
  OGR_BRUSH_NULL = 1,  // no fill
  OGR_BRUSH_HORIZONTAL = 2,
  OGR_BRUSH_VERTICAL = 3,
  OGR_BRUSH_FDIAGONAL = 4,  // hatch at 45 degrees
  OGR_BRUSH_BDIAGONAL = 5,  // hatch at -45 degrees
  OGR_BRUSH_CROSS = 6,
  OGR_BRUSH_DIAGCROSS = 7,
};

#endif  // ZU_FEATURE_STYLE_TYPES_H
