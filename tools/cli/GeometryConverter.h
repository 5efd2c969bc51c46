// CGeometryConverter moves geometries between OGR and the module's feature geometry (a kind from
// E_GEOMETRY_DATA_TYPE and a list of parts of CVector3D vertices).
//
// Into the module: points, line strings and polygons and their multi forms map to the six kinds,
// one part per point, line string or polygon; a polygon keeps its exterior ring only (interior
// rings are counted as dropped); curves are first linearised by OGR; vertices without Z get
// Z = 0; coordinates are transformed to WGS 84 longitude/latitude when the source has another
// reference system; a geometry that needs transforming and has a coordinate beyond ±1e12 (or an
// infinite one) counts as not transformable, as GDAL would never finish with it. Other kinds
// (collections, surfaces, TINs) and empty geometries are refused, and the caller counts them.
//
// Out of the module: always with Z; a polygon's ring is closed if it was stored open. A layer's
// OGR type is chosen from the kinds of its features, and single geometries are promoted to the
// multi type of their layer.
//
// Threading contract: none; one thread uses a converter.
#ifndef ANNOTATIONLAYER_CLI_GEOMETRY_CONVERTER_H
#define ANNOTATIONLAYER_CLI_GEOMETRY_CONVERTER_H

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include <ogr_geometry.h>
#include <ogr_spatialref.h>

#include "AnnotationLayerTypes.h"
#include "GeometryDataType.h"

class IAnnotationFeature;

class CGeometryConverter {
 public:
  enum E_RESULT {
    RESULT_CONVERTED = 0,
    RESULT_EMPTY = 1,             // no geometry, or one without vertices
    RESULT_UNSUPPORTED = 2,       // a kind with no counterpart among the six
    RESULT_TRANSFORM_FAILED = 3,  // the coordinates could not be brought to WGS 84
  };

  CGeometryConverter();
  ~CGeometryConverter();
  CGeometryConverter(const CGeometryConverter&) = delete;
  CGeometryConverter& operator=(const CGeometryConverter&) = delete;

  // Prepares for geometries in `source` (null: taken as WGS 84 already). False with a reason when
  // no transformation to WGS 84 can be made.
  bool SetSourceReference(const OGRSpatialReference* source, std::string* error);
  bool IsTransforming() const { return transform_ != nullptr; }

  // Replaces the feature's kind and parts. `geometry` may be null (RESULT_EMPTY).
  E_RESULT ToFeature(const OGRGeometry* geometry, IAnnotationFeature* feature);
  // Interior rings left out since the converter was made.
  int64_t DroppedInteriorRings() const { return droppedRings_; }

  // The feature's geometry as OGR builds it; null when it has no vertices or no known kind.
  static OGRGeometryUniquePtr ToOgr(const IAnnotationFeature& feature);
  // The OGR layer type for features of `kinds`: the 3D single or multi type when all share one
  // family (points, lines or areas), otherwise wkbUnknown.
  static OGRwkbGeometryType LayerType(const std::set<E_GEOMETRY_DATA_TYPE>& kinds);
  // Promotes a single geometry to the multi type of its layer; anything else is returned as is.
  static OGRGeometryUniquePtr FitToLayerType(OGRGeometryUniquePtr geometry,
                                             OGRwkbGeometryType layerType);
  // The family a GIS layer of `type` holds ("point", "line" or "polygon", single or multi); null
  // for the other layer types, which hold any kind.
  static const char* GisFamilyName(E_LAYER_TYPE type);
  // Whether a feature of `kind` belongs in a layer of `type`.
  static bool FitsLayerType(E_GEOMETRY_DATA_TYPE kind, E_LAYER_TYPE type);
  // WGS 84 longitude/latitude, the reference system of every annotation database.
  static OGRSpatialReference Wgs84();

 private:
  E_RESULT FillParts(const OGRGeometry& geometry, IAnnotationFeature* feature);

  std::unique_ptr<OGRCoordinateTransformation> transform_;
  int64_t droppedRings_ = 0;
};

#endif  // ANNOTATIONLAYER_CLI_GEOMETRY_CONVERTER_H
