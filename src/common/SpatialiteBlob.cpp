#include "SpatialiteBlob.h"

#include <sqlite3.h>
#include <spatialite/gaiageo.h>

#include <cstdint>

namespace AnnotationLayerInner {

void GaiaGeomCollDeleter::operator()(gaiaGeomCollStruct* geom) const {
  if (geom != nullptr) gaiaFreeGeomColl(geom);
}

namespace {

// The fixed frame of a full blob: start mark, endian byte, SRID, four doubles of the rectangle,
// MBR mark and class before the body; the end mark after it.
constexpr int kHeaderBytes = 43;
constexpr int kClassOffset = 39;
constexpr int kMbrMarkOffset = 38;
constexpr int kMinFullBlobBytes = kHeaderBytes + 2;  // a body of at least one byte, the end mark

// A class code split into its parts: 1..7 kind, 0..3 dimension model (XY, XYZ, XYM, XYZM), and
// whether the vertices after the first are stored as float deltas.
struct BlobClass {
  int kind = 0;
  int dims = 0;
  bool compressed = false;
};

bool SplitClass(int code, BlobClass& out) {
  if (code <= 0) return false;
  out.compressed = code >= 1000000;
  const int rest = out.compressed ? code - 1000000 : code;
  out.dims = rest / 1000;
  out.kind = rest % 1000;
  if (out.dims > 3 || out.kind < 1 || out.kind > 7) return false;
  // Only line strings and polygons have a compressed form.
  return !out.compressed || out.kind == 2 || out.kind == 3;
}

int64_t FullVertexBytes(int dims) { return dims == 0 ? 16 : (dims == 3 ? 32 : 24); }

// Bytes of a vertex after the first in a compressed line or ring: float deltas of x, y (and z),
// a full double for m.
int64_t CompressedVertexBytes(int dims) {
  switch (dims) {
    case 0: return 8;
    case 1: return 12;
    case 2: return 16;
    default: return 20;
  }
}

// Reads counts forward through a blob body; every step fails rather than pass the end mark.
class CountCursor {
 public:
  CountCursor(const unsigned char* blob, int size, int littleEndian)
      : blob_(blob), offset_(kHeaderBytes), end_(size - 1), littleEndian_(littleEndian),
        endianArch_(gaiaEndianArch()) {}

  bool Skip(int64_t bytes) {
    if (bytes < 0 || end_ - offset_ < bytes) return false;
    offset_ += bytes;
    return true;
  }

  // A count must be non-negative; gaia would take a negative one as an allocation size.
  bool ReadCount(int64_t& count) {
    if (end_ - offset_ < 4) return false;
    count = gaiaImport32(blob_ + offset_, littleEndian_, endianArch_);
    offset_ += 4;
    return count >= 0;
  }

  bool ReadClass(int& code) {
    if (end_ - offset_ < 4) return false;
    code = gaiaImport32(blob_ + offset_, littleEndian_, endianArch_);
    offset_ += 4;
    return true;
  }

  bool ReadEntityMark() {
    if (end_ - offset_ < 1 || blob_[offset_] != GAIA_MARK_ENTITY) return false;
    offset_ += 1;
    return true;
  }

 private:
  const unsigned char* blob_;
  int64_t offset_;
  int64_t end_;
  int littleEndian_;
  int endianArch_;
};

// A line string or one ring: its vertex count, then its vertices.
bool CheckVertexRun(CountCursor& cursor, const BlobClass& cls) {
  int64_t vertices = 0;
  if (!cursor.ReadCount(vertices)) return false;
  const int64_t full = FullVertexBytes(cls.dims);
  if (!cls.compressed || vertices <= 1) return cursor.Skip(vertices * full);
  return cursor.Skip(2 * full + (vertices - 2) * CompressedVertexBytes(cls.dims));
}

// One point, line string or polygon.
bool CheckElementary(CountCursor& cursor, const BlobClass& cls) {
  switch (cls.kind) {
    case 1: return cursor.Skip(FullVertexBytes(cls.dims));
    case 2: return CheckVertexRun(cursor, cls);
    case 3: {
      int64_t rings = 0;
      if (!cursor.ReadCount(rings)) return false;
      for (int64_t i = 0; i < rings; ++i) {
        if (!CheckVertexRun(cursor, cls)) return false;
      }
      return true;
    }
    default: return false;
  }
}

}  // namespace

bool HasPlausibleCounts(const unsigned char* blob, int size) {
  if (blob == nullptr || size < kMinFullBlobBytes) return true;
  if (blob[0] != GAIA_MARK_START || blob[kMbrMarkOffset] != GAIA_MARK_MBR ||
      blob[size - 1] != GAIA_MARK_END) {
    return true;
  }
  if (blob[1] != GAIA_LITTLE_ENDIAN && blob[1] != GAIA_BIG_ENDIAN) return true;

  const int littleEndian = blob[1] == GAIA_LITTLE_ENDIAN ? 1 : 0;
  const int code = gaiaImport32(blob + kClassOffset, littleEndian, gaiaEndianArch());
  BlobClass cls;
  if (!SplitClass(code, cls)) return false;
  CountCursor cursor(blob, size, littleEndian);
  if (cls.kind <= 3) return CheckElementary(cursor, cls);

  // Multi kinds and collections: a count, then entities each opened by a mark and a class. gaia
  // sizes an entity's vertices by the collection's dimension model, so an entity of another model
  // is refused rather than read past its allocation.
  int64_t entities = 0;
  if (!cursor.ReadCount(entities)) return false;
  for (int64_t i = 0; i < entities; ++i) {
    int entityCode = 0;
    BlobClass entity;
    if (!cursor.ReadEntityMark() || !cursor.ReadClass(entityCode) ||
        !SplitClass(entityCode, entity) || entity.kind > 3 || entity.dims != cls.dims ||
        !CheckElementary(cursor, entity)) {
      return false;
    }
  }
  return true;
}

GaiaGeomCollPtr ParseSpatialiteBlob(const unsigned char* blob, int size) {
  if (blob == nullptr || size < 1 || !HasPlausibleCounts(blob, size)) return nullptr;
  return GaiaGeomCollPtr(gaiaFromSpatiaLiteBlobWkb(blob, static_cast<unsigned int>(size)));
}

}  // namespace AnnotationLayerInner
