// Classification and mapping of the module's enumerations, and the view-extent test.
#include "AnnotationLayerNS.h"

namespace AnnotationLayerNS {

bool IsGISLayer(E_LAYER_TYPE type) { return type >= 100 && type < 103; }

E_GEOMETRY_DATA_TYPE MappingGeomType(E_ANNOTATION_TYPE type) {
  switch (static_cast<int>(type)) {
    case 0: return GEOMETRY_DATA_TYPE_POINT;
    case 1: return GEOMETRY_DATA_TYPE_LINESTRING;
    case 100: return GEOMETRY_DATA_TYPE_MULTIPOINT;
    case 101: return GEOMETRY_DATA_TYPE_MULTILINESTRING;
    case 102: return GEOMETRY_DATA_TYPE_MULTIPOLYGON;
    case 200: return GEOMETRY_DATA_TYPE_LINESTRING;
    case 300: return GEOMETRY_DATA_TYPE_POINT;
    default: return GEOMETRY_DATA_TYPE_POLYGON;
  }
}

E_ANNOTATION_TYPE MappingAnnotationType(E_GEOMETRY_DATA_TYPE type) {
  switch (static_cast<int>(type)) {
    case 1: return ANNOTATION_TYPE_POINT;
    case 2: return ANNOTATION_TYPE_LINE;
    case 4: return ANNOTATION_TYPE_GIS_POINT;
    case 5: return ANNOTATION_TYPE_GIS_LINE;
    case 6: return ANNOTATION_TYPE_GIS_POLYGON;
    default: return ANNOTATION_TYPE_POLYGON;
  }
}

// Qt's QVariant::Type numbers, spelled out so that the table reads like the stored data.
E_FIELD_OFST_TYPE MappingFieldType(int qtVariantType) {
  switch (qtVariantType) {
    case 1: return FIELD_OFST_TYPE_BOOL;     // Bool
    case 2: return FIELD_OFST_TYPE_INT;      // Int
    case 4: return FIELD_OFST_TYPE_INT64;    // LongLong
    case 6: return FIELD_OFST_TYPE_DOUBLE;   // Double
    case 7: return FIELD_OFST_TYPE_CHAR;     // Char
    case 10: return FIELD_OFST_TYPE_TEXT;    // String
    default: return FIELD_OFST_TYPE_NONE;
  }
}

int MappingQtVariantType(E_FIELD_OFST_TYPE type) {
  switch (type) {
    case FIELD_OFST_TYPE_BOOL: return 1;
    case FIELD_OFST_TYPE_CHAR: return 2;
    case FIELD_OFST_TYPE_INT: return 2;
    case FIELD_OFST_TYPE_INT64: return 4;
    case FIELD_OFST_TYPE_FLOAT: return 6;
    case FIELD_OFST_TYPE_DOUBLE: return 6;
    case FIELD_OFST_TYPE_TEXT: return 10;
    default: return 0;
  }
}

bool IsNeedUpdateRange(const EXTENT& cur, const EXTENT& nxt) {
  if (nxt.min_x > cur.min_x && cur.max_x > nxt.max_x && nxt.min_y > cur.min_y &&
      cur.max_y > nxt.max_y) {
    return true;
  }
  if (nxt.min_x <= cur.min_x && cur.min_x <= nxt.max_x) return false;
  if (nxt.min_x <= cur.max_x && cur.max_x <= nxt.max_x) return false;
  if (nxt.min_y <= cur.min_y && cur.min_y <= nxt.max_y) return false;
  return !(cur.max_y == nxt.max_y);
}

CGeometryData ExtentRing(const EXTENT& extent) {
  CGeometryData ring;
  ring.PushBack(CVector3D(extent.min_x, extent.min_y, 0));
  ring.PushBack(CVector3D(extent.max_x, extent.min_y, 0));
  ring.PushBack(CVector3D(extent.max_x, extent.max_y, 0));
  ring.PushBack(CVector3D(extent.min_x, extent.max_y, 0));
  return ring;
}

}  // namespace AnnotationLayerNS
