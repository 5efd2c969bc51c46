#include "GeometryConverter.h"

#include <cmath>

#include "AntimeridianCut.h"
#include "GeometryData.h"
#include "IAnnotationFeature.h"
#include "Vector3D.h"

namespace {

CGeometryData PartOfCurve(const OGRSimpleCurve& curve) {
  CGeometryData part;
  const int count = curve.getNumPoints();
  for (int i = 0; i < count; ++i) {
    // getZ gives 0 for a curve without Z, which is exactly the promotion wanted.
    part.PushBack(CVector3D(curve.getX(i), curve.getY(i), curve.getZ(i)));
  }
  return part;
}

CGeometryData PartOfPoint(const OGRPoint& point) {
  CGeometryData part;
  part.PushBack(CVector3D(point.getX(), point.getY(), point.getZ()));
  return part;
}

// Families of kinds: a layer can hold the single and multi forms of one family.
int Family(E_GEOMETRY_DATA_TYPE kind) {
  switch (kind) {
    case GEOMETRY_DATA_TYPE_POINT:
    case GEOMETRY_DATA_TYPE_MULTIPOINT: return 1;
    case GEOMETRY_DATA_TYPE_LINESTRING:
    case GEOMETRY_DATA_TYPE_MULTILINESTRING: return 2;
    case GEOMETRY_DATA_TYPE_POLYGON:
    case GEOMETRY_DATA_TYPE_MULTIPOLYGON: return 3;
    default: return 0;
  }
}

bool IsMulti(E_GEOMETRY_DATA_TYPE kind) {
  return kind == GEOMETRY_DATA_TYPE_MULTIPOINT || kind == GEOMETRY_DATA_TYPE_MULTILINESTRING ||
         kind == GEOMETRY_DATA_TYPE_MULTIPOLYGON;
}

std::unique_ptr<OGRLineString> LineOf(const CGeometryData& part) {
  auto line = std::make_unique<OGRLineString>();
  for (const CVector3D& v : part.Vertices()) line->addPoint(v.X(), v.Y(), v.Z());
  return line;
}

std::unique_ptr<OGRPolygon> PolygonOf(const CGeometryData& part) {
  auto ring = std::make_unique<OGRLinearRing>();
  for (const CVector3D& v : part.Vertices()) ring->addPoint(v.X(), v.Y(), v.Z());
  ring->closeRings();  // a ring stored open is closed here, before OGR checks it
  auto polygon = std::make_unique<OGRPolygon>();
  polygon->addRingDirectly(ring.release());
  return polygon;
}

// GDAL's reprojection out of Web Mercator wraps the longitude back into range one turn at a time:
// a coordinate of 1e17 takes seconds, one of 1e18 or more (or an infinite one) never returns, and
// no interrupt reaches it there. No reference system has coordinates anywhere near this bound.
constexpr double kLargestTransformableCoordinate = 1e12;

bool IsTransformable(const OGRGeometry& geometry) {
  OGREnvelope envelope;
  geometry.getEnvelope(&envelope);
  for (double value : {envelope.MinX, envelope.MaxX, envelope.MinY, envelope.MaxY}) {
    if (!(std::fabs(value) <= kLargestTransformableCoordinate)) return false;
  }
  return true;
}

}  // namespace

CGeometryConverter::CGeometryConverter() = default;
CGeometryConverter::~CGeometryConverter() = default;

OGRSpatialReference CGeometryConverter::Wgs84() {
  OGRSpatialReference wgs84;
  wgs84.SetWellKnownGeogCS("WGS84");
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return wgs84;
}

bool CGeometryConverter::SetSourceReference(const OGRSpatialReference* source,
                                            std::string* error) {
  transform_.reset();
  if (source == nullptr) return true;
  OGRSpatialReference from(*source);
  from.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  OGRSpatialReference to = Wgs84();
  if (from.IsSame(&to)) return true;
  transform_.reset(OGRCreateCoordinateTransformation(&from, &to));
  if (!transform_) {
    const char* name = source->GetName();
    *error = std::string("no transformation from ") + (name != nullptr ? name : "the source's") +
             " reference system to WGS 84";
    return false;
  }
  return true;
}

CGeometryConverter::E_RESULT CGeometryConverter::ToFeature(const OGRGeometry* geometry,
                                                           IAnnotationFeature* feature) {
  feature->ClearParts();
  feature->SetGeometryType(GEOMETRY_DATA_TYPE_UNKNOWN);
  if (geometry == nullptr || geometry->IsEmpty()) return RESULT_EMPTY;

  // Curves become their linear forms; a transformation needs a copy to work on.
  OGRGeometryUniquePtr owned;
  const OGRGeometry* source = geometry;
  if (OGR_GT_IsNonLinear(geometry->getGeometryType())) {
    owned.reset(geometry->getLinearGeometry());
    if (!owned) return RESULT_UNSUPPORTED;
    source = owned.get();
  }
  if (transform_) {
    if (!IsTransformable(*source)) return RESULT_TRANSFORM_FAILED;
    if (!owned) owned.reset(geometry->clone());
    if (owned->transform(transform_.get()) != OGRERR_NONE) return RESULT_TRANSFORM_FAILED;
    source = owned.get();
  }
  // In longitude/latitude now: a shape that leaps across the antimeridian is cut there.
  if (OGRGeometryUniquePtr cut = CAntimeridianCut::Cut(*source)) {
    owned = std::move(cut);
    source = owned.get();
  }
  const E_RESULT result = FillParts(*source, feature);
  if (result == RESULT_CONVERTED && feature->GetPartCount() == 0) return RESULT_EMPTY;
  return result;
}

CGeometryConverter::E_RESULT CGeometryConverter::FillParts(const OGRGeometry& geometry,
                                                           IAnnotationFeature* feature) {
  switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbPoint:
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_POINT);
      feature->AddPart(PartOfPoint(*geometry.toPoint()));
      return RESULT_CONVERTED;
    case wkbLineString:
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_LINESTRING);
      feature->AddPart(PartOfCurve(*geometry.toLineString()));
      return RESULT_CONVERTED;
    case wkbPolygon:
    case wkbTriangle: {
      const OGRPolygon* polygon = geometry.toPolygon();
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_POLYGON);
      if (polygon->getExteriorRing() != nullptr) {
        feature->AddPart(PartOfCurve(*polygon->getExteriorRing()));
      }
      droppedRings_ += polygon->getNumInteriorRings();
      return RESULT_CONVERTED;
    }
    case wkbMultiPoint:
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_MULTIPOINT);
      for (const OGRPoint* point : *geometry.toMultiPoint()) {
        if (!point->IsEmpty()) feature->AddPart(PartOfPoint(*point));
      }
      return RESULT_CONVERTED;
    case wkbMultiLineString:
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_MULTILINESTRING);
      for (const OGRLineString* line : *geometry.toMultiLineString()) {
        if (!line->IsEmpty()) feature->AddPart(PartOfCurve(*line));
      }
      return RESULT_CONVERTED;
    case wkbMultiPolygon:
      feature->SetGeometryType(GEOMETRY_DATA_TYPE_MULTIPOLYGON);
      for (const OGRPolygon* polygon : *geometry.toMultiPolygon()) {
        if (polygon->IsEmpty() || polygon->getExteriorRing() == nullptr) continue;
        feature->AddPart(PartOfCurve(*polygon->getExteriorRing()));
        droppedRings_ += polygon->getNumInteriorRings();
      }
      return RESULT_CONVERTED;
    default:
      return RESULT_UNSUPPORTED;
  }
}

const char* CGeometryConverter::GisFamilyName(E_LAYER_TYPE type) {
  switch (type) {
    case LAYER_TYPE_GIS_POINT: return "point";
    case LAYER_TYPE_GIS_LINE: return "line";
    case LAYER_TYPE_GIS_POLYGON: return "polygon";
    default: return nullptr;
  }
}

bool CGeometryConverter::FitsLayerType(E_GEOMETRY_DATA_TYPE kind, E_LAYER_TYPE type) {
  switch (type) {
    case LAYER_TYPE_GIS_POINT: return Family(kind) == 1;
    case LAYER_TYPE_GIS_LINE: return Family(kind) == 2;
    case LAYER_TYPE_GIS_POLYGON: return Family(kind) == 3;
    default: return true;
  }
}

OGRGeometryUniquePtr CGeometryConverter::ToOgr(const IAnnotationFeature& feature) {
  std::vector<const CGeometryData*> parts;
  for (int i = 0; i < feature.GetPartCount(); ++i) {
    if (feature.GetPart(i).GetSize() > 0) parts.push_back(&feature.GetPart(i));
  }
  if (parts.empty()) return nullptr;
  const E_GEOMETRY_DATA_TYPE kind = feature.GetGeometryType();

  switch (Family(kind)) {
    case 1: {
      std::vector<CVector3D> vertices;
      for (const CGeometryData* part : parts) {
        vertices.insert(vertices.end(), part->Vertices().begin(), part->Vertices().end());
      }
      if (!IsMulti(kind) && vertices.size() == 1) {
        const CVector3D& v = vertices.front();
        return OGRGeometryUniquePtr(new OGRPoint(v.X(), v.Y(), v.Z()));
      }
      auto multi = std::make_unique<OGRMultiPoint>();
      for (const CVector3D& v : vertices) multi->addGeometryDirectly(new OGRPoint(v.X(), v.Y(), v.Z()));
      return OGRGeometryUniquePtr(multi.release());
    }
    case 2: {
      if (!IsMulti(kind) && parts.size() == 1) return OGRGeometryUniquePtr(LineOf(*parts[0]).release());
      auto multi = std::make_unique<OGRMultiLineString>();
      for (const CGeometryData* part : parts) multi->addGeometryDirectly(LineOf(*part).release());
      return OGRGeometryUniquePtr(multi.release());
    }
    case 3: {
      if (!IsMulti(kind) && parts.size() == 1) {
        return OGRGeometryUniquePtr(PolygonOf(*parts[0]).release());
      }
      auto multi = std::make_unique<OGRMultiPolygon>();
      for (const CGeometryData* part : parts) multi->addGeometryDirectly(PolygonOf(*part).release());
      return OGRGeometryUniquePtr(multi.release());
    }
    default:
      return nullptr;
  }
}

OGRwkbGeometryType CGeometryConverter::LayerType(const std::set<E_GEOMETRY_DATA_TYPE>& kinds) {
  int family = -1;
  bool multi = false;
  for (E_GEOMETRY_DATA_TYPE kind : kinds) {
    const int f = Family(kind);
    if (f == 0 || (family != -1 && family != f)) return wkbUnknown;
    family = f;
    multi = multi || IsMulti(kind);
  }
  switch (family) {
    case 1: return multi ? wkbMultiPoint25D : wkbPoint25D;
    case 2: return multi ? wkbMultiLineString25D : wkbLineString25D;
    case 3: return multi ? wkbMultiPolygon25D : wkbPolygon25D;
    default: return wkbUnknown;
  }
}

OGRGeometryUniquePtr CGeometryConverter::FitToLayerType(OGRGeometryUniquePtr geometry,
                                                        OGRwkbGeometryType layerType) {
  if (!geometry) return geometry;
  const OGRwkbGeometryType have = wkbFlatten(geometry->getGeometryType());
  const OGRwkbGeometryType want = wkbFlatten(layerType);
  OGRGeometry* (*promote)(OGRGeometry*) = nullptr;
  if (want == wkbMultiPoint && have == wkbPoint) promote = OGRGeometryFactory::forceToMultiPoint;
  if (want == wkbMultiLineString && have == wkbLineString) {
    promote = OGRGeometryFactory::forceToMultiLineString;
  }
  if (want == wkbMultiPolygon && have == wkbPolygon) {
    promote = OGRGeometryFactory::forceToMultiPolygon;
  }
  if (promote == nullptr) return geometry;
  // The factory takes the geometry and hands back its replacement.
  return OGRGeometryUniquePtr(promote(geometry.release()));
}
