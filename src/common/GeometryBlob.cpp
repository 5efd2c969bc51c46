#include "GeometryBlob.h"

#include <sqlite3.h>
#include <spatialite/gaiageo.h>

#include <climits>
#include <cstdint>

#include "IAnnotationFeature.h"
#include "SpatialiteBlob.h"

using AnnotationLayerInner::GaiaGeomCollPtr;

namespace {

constexpr int kSrid = 4326;

// The blob class code of a geometry kind: 1..6 give POINT Z (1001) .. MULTIPOLYGON Z (1006).
int ClassCode(E_GEOMETRY_DATA_TYPE type) {
  const int kind = static_cast<int>(type);
  return kind >= 1 && kind <= 6 ? 1000 + kind : 0;
}

// gaia counts blob bytes in an int. A vertex costs at most 29 bytes (a point of a multi point:
// entity mark, class, x, y, z) and a part at most 13 more; anything that could pass INT_MAX is
// refused before gaia is asked.
bool FitsInBlob(const std::vector<const CGeometryData*>& parts) {
  int64_t bytes = 64;
  for (const CGeometryData* part : parts) bytes += 13 + 29 * static_cast<int64_t>(part->GetSize());
  return bytes < INT_MAX;
}

void CopyVertices(const CGeometryData& part, double* coords) {
  for (int i = 0; i < part.GetSize(); ++i) {
    const CVector3D& v = part.At(i);
    gaiaSetPointXYZ(coords, i, v.X(), v.Y(), v.Z());
  }
}

unsigned char* BuildBlob(int& size, const std::vector<const CGeometryData*>& parts,
                         E_GEOMETRY_DATA_TYPE type) {
  size = 0;
  if (parts.empty() || !FitsInBlob(parts)) return nullptr;
  GaiaGeomCollPtr geom(gaiaAllocGeomColl());
  if (!geom) return nullptr;
  // The dimension model must be set before anything is added: gaia sizes new lines and rings by it.
  geom->DimensionModel = GAIA_XY_Z;
  geom->DeclaredType = ClassCode(type);
  geom->Srid = kSrid;

  for (const CGeometryData* part : parts) {
    const int vertices = part->GetSize();
    if (vertices == 0) continue;
    switch (static_cast<int>(type)) {
      case GEOMETRY_DATA_TYPE_POINT:
      case GEOMETRY_DATA_TYPE_MULTIPOINT:
        for (int i = 0; i < vertices; ++i) {
          const CVector3D& v = part->At(i);
          gaiaAddPointToGeomCollXYZ(geom.get(), v.X(), v.Y(), v.Z());
        }
        break;
      case GEOMETRY_DATA_TYPE_LINESTRING:
      case GEOMETRY_DATA_TYPE_MULTILINESTRING: {
        gaiaLinestringPtr line = gaiaAddLinestringToGeomColl(geom.get(), vertices);
        if (line == nullptr) return nullptr;
        CopyVertices(*part, line->Coords);
        break;
      }
      case GEOMETRY_DATA_TYPE_POLYGON:
      case GEOMETRY_DATA_TYPE_MULTIPOLYGON: {
        gaiaPolygonPtr polygon = gaiaAddPolygonToGeomColl(geom.get(), vertices, 0);
        if (polygon == nullptr) return nullptr;
        CopyVertices(*part, polygon->Exterior->Coords);
        break;
      }
      default:
        break;
    }
  }

  unsigned char* blob = nullptr;
  gaiaToSpatiaLiteBlobWkb(geom.get(), &blob, &size);
  if (blob == nullptr) size = 0;  // an empty collection serialises to nothing
  return blob;
}

// One part from the vertices of a line string or ring, whatever its dimension model.
CGeometryData ReadCoords(const double* coords, int vertices, int dims) {
  CGeometryData part;
  for (int i = 0; i < vertices; ++i) {
    double x = 0.0, y = 0.0, z = 0.0, m = 0.0;
    switch (dims) {
      case GAIA_XY_Z: gaiaGetPointXYZ(coords, i, &x, &y, &z); break;
      case GAIA_XY_M: gaiaGetPointXYM(coords, i, &x, &y, &m); break;
      case GAIA_XY_Z_M: gaiaGetPointXYZM(coords, i, &x, &y, &z, &m); break;
      default: gaiaGetPoint(coords, i, &x, &y); break;
    }
    part.PushBack(CVector3D(x, y, z));
  }
  return part;
}

// The parts of a blob and the class gaia reports for it; false when the blob cannot be read.
bool ReadBlob(const unsigned char* blob, int size, std::vector<CGeometryData>& parts,
              int& classCode) {
  GaiaGeomCollPtr geom = AnnotationLayerInner::ParseSpatialiteBlob(blob, size);
  if (!geom) return false;
  classCode = gaiaGeometryType(geom.get());
  switch (classCode) {
    case GAIA_POINTZ:
    case GAIA_MULTIPOINTZ:
      for (gaiaPointPtr point = geom->FirstPoint; point != nullptr; point = point->Next) {
        parts.emplace_back(std::vector<CVector3D>{CVector3D(point->X, point->Y, point->Z)});
      }
      break;
    case GAIA_LINESTRINGZ:
    case GAIA_MULTILINESTRINGZ:
      for (gaiaLinestringPtr line = geom->FirstLinestring; line != nullptr; line = line->Next) {
        parts.push_back(ReadCoords(line->Coords, line->Points, line->DimensionModel));
      }
      break;
    case GAIA_POLYGONZ:
    case GAIA_MULTIPOLYGONZ:
      for (gaiaPolygonPtr polygon = geom->FirstPolygon; polygon != nullptr;
           polygon = polygon->Next) {
        const gaiaRingPtr ring = polygon->Exterior;
        if (ring == nullptr) continue;
        parts.push_back(ReadCoords(ring->Coords, ring->Points, ring->DimensionModel));
      }
      break;
    default:
      break;
  }
  return true;
}

E_GEOMETRY_DATA_TYPE KindOfClass(int classCode) {
  return classCode >= GAIA_POINTZ && classCode <= GAIA_MULTIPOLYGONZ
             ? static_cast<E_GEOMETRY_DATA_TYPE>(classCode - 1000)
             : GEOMETRY_DATA_TYPE_UNKNOWN;
}

}  // namespace

namespace AnnotationLayerNS {

unsigned char* ConvertFeatureToWkbGeom(int& size, IAnnotationFeature* feature) {
  size = 0;
  if (feature == nullptr) return nullptr;
  std::vector<const CGeometryData*> parts;
  const int count = feature->GetPartCount();
  for (int i = 0; i < count; ++i) parts.push_back(&feature->GetPart(i));
  return BuildBlob(size, parts, feature->GetGeometryType());
}

unsigned char* ConvertGeomDataToWkbGeom(int& size, const std::vector<CGeometryData>& parts,
                                        E_GEOMETRY_DATA_TYPE type) {
  std::vector<const CGeometryData*> views;
  views.reserve(parts.size());
  for (const CGeometryData& part : parts) views.push_back(&part);
  return BuildBlob(size, views, type);
}

bool ConvertWkbGeomToFeature(IAnnotationFeature* feature, const unsigned char* blob, int size) {
  if (feature == nullptr) return false;
  std::vector<CGeometryData> parts;
  int classCode = 0;
  if (!ReadBlob(blob, size, parts, classCode)) return false;
  feature->SetGeometryType(KindOfClass(classCode));
  for (const CGeometryData& part : parts) feature->AddPart(part);
  return true;
}

bool ConvertWkbGeomToGeomData(std::vector<CGeometryData>& parts, const unsigned char* blob,
                              int size) {
  std::vector<CGeometryData> read;
  int classCode = 0;
  if (!ReadBlob(blob, size, read, classCode)) return false;
  parts.insert(parts.end(), read.begin(), read.end());
  return true;
}

}  // namespace AnnotationLayerNS
