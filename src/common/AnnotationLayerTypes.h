// Enumerations and small value types shared across the module and its interfaces.
//
// Numeric values are stored in annotation databases and are part of the exported interface: never
// renumber them.
//
// Every enumeration has the fixed underlying type int, so that any number read back from a database
// is a valid value of its type (also one that has no enumerator).
#ifndef ANNOTATIONLAYER_TYPES_H
#define ANNOTATIONLAYER_TYPES_H

#include "GeometryDataType.h"

// Kind of a layer. 100 to 102 are GIS layers (features share the layer's style and carry no own
// style rows); every other value is a plain annotation layer.
enum E_LAYER_TYPE : int {
  LAYER_TYPE_UNKNOWN = -1,
  LAYER_TYPE_ANNOTATION = 0,
  LAYER_TYPE_GIS_POINT = 100,
  LAYER_TYPE_GIS_LINE = 101,
  LAYER_TYPE_GIS_POLYGON = 102,
};

// Kind of a feature. 0 and 300 are point kinds, 1 and 200 line kinds, 2 to 5 area kinds.
enum E_ANNOTATION_TYPE : int {
  ANNOTATION_TYPE_UNKNOWN = -1,
  ANNOTATION_TYPE_POINT = 0,
  ANNOTATION_TYPE_LINE = 1,
  ANNOTATION_TYPE_POLYGON = 2,
  ANNOTATION_TYPE_RECTANGLE = 3,
  ANNOTATION_TYPE_CIRCLE = 4,
  ANNOTATION_TYPE_ELLIPSE = 5,
  ANNOTATION_TYPE_GIS_POINT = 100,
  ANNOTATION_TYPE_GIS_LINE = 101,
  ANNOTATION_TYPE_GIS_POLYGON = 102,
  ANNOTATION_TYPE_ROUTE = 200,
  ANNOTATION_TYPE_LABEL = 300,
};

// Kind of a folder. -1 is the default of a record that was never filled.
enum E_FOLDER_TYPE : int {
  FOLDER_TYPE_UNKNOWN = -1,
  FOLDER_TYPE_NORMAL = 0,
  FOLDER_TYPE_ROOT = 1,     // the top root folder of a database
  FOLDER_TYPE_RECYCLE = 2,  // a folder that collects recycled nodes
};

// Kind of an enclosure (an attachment of a feature). A new enclosure record is a file (1).
enum E_ENCLOSURE_TYPE : int {
  ENCLOSURE_TYPE_UNKNOWN = 0,
  ENCLOSURE_TYPE_FILE = 1,
  ENCLOSURE_TYPE_IMAGE = 2,
  ENCLOSURE_TYPE_AUDIO = 3,
  ENCLOSURE_TYPE_VIDEO = 4,
  ENCLOSURE_TYPE_DOCUMENT = 5,
  ENCLOSURE_TYPE_LINK = 6,
};

// Type of a value in a field set.
enum E_FIELD_OFST_TYPE : int {
  FIELD_OFST_TYPE_NONE = 0,
  FIELD_OFST_TYPE_BOOL = 1,
  FIELD_OFST_TYPE_CHAR = 2,
  FIELD_OFST_TYPE_INT = 3,
  FIELD_OFST_TYPE_INT64 = 4,
  FIELD_OFST_TYPE_FLOAT = 5,
  FIELD_OFST_TYPE_DOUBLE = 6,
  FIELD_OFST_TYPE_TEXT = 7,
};

// The table a node lives in.
enum E_NODE_KIND : int {
  NODE_KIND_NONE = 0,
  NODE_KIND_FOLDER = 1,
  NODE_KIND_LAYER = 2,
  NODE_KIND_FEATURE = 3,
};

// A rectangle in degrees, in the order of the layer columns min_x, min_y, max_x, max_y.
struct EXTENT {
  double min_x = 0.0;
  double min_y = 0.0;
  double max_x = 0.0;
  double max_y = 0.0;
};

#endif  // ANNOTATIONLAYER_TYPES_H
