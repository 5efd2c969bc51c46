#include "AntimeridianCut.h"

#include <cpl_error.h>
#include <ogr_spatialref.h>

#include <cmath>
#include <memory>

namespace {

bool Leaps(const OGRSimpleCurve& line) {
  for (int i = 1; i < line.getNumPoints(); ++i) {
    if (CAntimeridianCut::LeapsAt(line, i)) return true;
  }
  return false;
}

// Moves the western vertices of every leaping ring by 360 degrees, so that the ring is continuous
// (east of 180 where it crossed); false when no ring leapt.
bool Unwrap(OGRPolygon* polygon) {
  bool leapt = false;
  for (OGRLinearRing* ring : *polygon) {
    if (!Leaps(*ring)) continue;
    leapt = true;
    for (int i = 0; i < ring->getNumPoints(); ++i) {
      if (ring->getX(i) >= 0) continue;
      if (ring->Is3D()) {
        ring->setPoint(i, ring->getX(i) + 360, ring->getY(i), ring->getZ(i));
      } else {
        ring->setPoint(i, ring->getX(i) + 360, ring->getY(i));
      }
    }
  }
  return leapt;
}

OGRGeometryUniquePtr CutPolygons(const OGRGeometry& geometry) {
  OGRGeometryUniquePtr copy(geometry.clone());
  bool leapt = false;
  if (wkbFlatten(copy->getGeometryType()) == wkbPolygon) {
    leapt = Unwrap(copy->toPolygon());
  } else {
    for (OGRPolygon* polygon : *copy->toMultiPolygon()) leapt = Unwrap(polygon) || leapt;
  }
  if (!leapt) return nullptr;
  // GDAL cuts at the date line as part of a transformation: the identity one does.
  OGRSpatialReference wgs84;
  wgs84.SetWellKnownGeogCS("WGS84");
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::unique_ptr<OGRCoordinateTransformation> identity(
      OGRCreateCoordinateTransformation(&wgs84, &wgs84));
  if (!identity) return nullptr;
  const char* const options[] = {"WRAPDATELINE=YES", nullptr};
  CPLPushErrorHandler(CPLQuietErrorHandler);
  OGRGeometryUniquePtr cut(OGRGeometryFactory::transformWithOptions(
      copy.get(), identity.get(), const_cast<char**>(options)));
  const bool valid = cut && cut->IsValid();
  CPLPopErrorHandler();
  if (!valid) return nullptr;
  return OGRGeometryUniquePtr(OGRGeometryFactory::forceToMultiPolygon(cut.release()));
}

// Adds the pieces of `line` between its leaps to `pieces`.
void AddPieces(const OGRSimpleCurve& line, OGRMultiLineString* pieces) {
  auto piece = std::make_unique<OGRLineString>();
  for (int i = 0; i < line.getNumPoints(); ++i) {
    if (i > 0 && CAntimeridianCut::LeapsAt(line, i)) {
      if (piece->getNumPoints() > 1) pieces->addGeometryDirectly(piece.release());
      piece = std::make_unique<OGRLineString>();
    }
    OGRPoint point;
    line.getPoint(i, &point);
    piece->addPoint(&point);
  }
  if (piece->getNumPoints() > 1) pieces->addGeometryDirectly(piece.release());
}

OGRGeometryUniquePtr CutLines(const OGRGeometry& geometry) {
  bool leapt = false;
  auto pieces = std::make_unique<OGRMultiLineString>();
  auto add = [&](const OGRLineString& line) {
    leapt = Leaps(line) || leapt;
    AddPieces(line, pieces.get());
  };
  if (wkbFlatten(geometry.getGeometryType()) == wkbLineString) {
    add(*geometry.toLineString());
  } else {
    for (const OGRLineString* line : *geometry.toMultiLineString()) add(*line);
  }
  if (!leapt) return nullptr;
  return OGRGeometryUniquePtr(pieces.release());
}

}  // namespace

bool CAntimeridianCut::LeapsAt(const OGRSimpleCurve& line, int i) {
  const bool polar = std::fabs(line.getY(i)) > 89.9 && std::fabs(line.getY(i - 1)) > 89.9;
  return !polar && std::fabs(line.getX(i) - line.getX(i - 1)) > 180;
}

OGRGeometryUniquePtr CAntimeridianCut::Cut(const OGRGeometry& geometry) {
  switch (wkbFlatten(geometry.getGeometryType())) {
    case wkbPolygon:
    case wkbMultiPolygon: return CutPolygons(geometry);
    case wkbLineString:
    case wkbMultiLineString: return CutLines(geometry);
    default: return nullptr;
  }
}
