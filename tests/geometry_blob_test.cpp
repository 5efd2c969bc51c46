// Geometry blobs: writing parts by kind, reading them back, what SpatiaLite makes of empty and
// open input, blobs made by SpatiaLite's own SQL, and truncated, random, corrupted and foreign
// blobs.
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <spatialite/gaiageo.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "GeometryBlob.h"
#include "SpatialiteBlob.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "TempDir.h"

using AnnotationLayerInner::GaiaGeomCollPtr;
using AnnotationLayerInner::HasPlausibleCounts;
using AnnotationLayerInner::ParseSpatialiteBlob;
using AnnotationLayerNS::ConvertFeatureToWkbGeom;
using AnnotationLayerNS::ConvertGeomDataToWkbGeom;
using AnnotationLayerNS::ConvertWkbGeomToFeature;
using AnnotationLayerNS::ConvertWkbGeomToGeomData;
using Bytes = std::vector<unsigned char>;

namespace {

struct FreeDeleter {
  void operator()(unsigned char* p) const { free(p); }
};
using BlobPtr = std::unique_ptr<unsigned char, FreeDeleter>;

CGeometryData Part(std::initializer_list<CVector3D> vertices) {
  return CGeometryData(std::vector<CVector3D>(vertices));
}

// A closed square ring of side `side` at (x, y), height z.
CGeometryData Square(double x, double y, double side, double z) {
  return Part({{x, y, z}, {x + side, y, z}, {x + side, y + side, z}, {x, y + side, z}, {x, y, z}});
}

Bytes Write(const std::vector<CGeometryData>& parts, E_GEOMETRY_DATA_TYPE type) {
  int size = -1;
  BlobPtr blob(ConvertGeomDataToWkbGeom(size, parts, type));
  EXPECT_NE(nullptr, blob.get()) << "kind " << type;
  EXPECT_GT(size, 0);
  if (!blob || size <= 0) return Bytes();
  return Bytes(blob.get(), blob.get() + size);
}

std::vector<CGeometryData> Read(const Bytes& blob) {
  std::vector<CGeometryData> parts;
  EXPECT_TRUE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size())));
  return parts;
}

// Class, SRID and dimension model as SpatiaLite reads them.
struct BlobFacts {
  int classCode = -1;
  int srid = -1;
  int dims = -1;
};

BlobFacts Facts(const Bytes& blob) {
  BlobFacts facts;
  GaiaGeomCollPtr geom = ParseSpatialiteBlob(blob.data(), static_cast<int>(blob.size()));
  if (!geom) return facts;
  facts.classCode = gaiaGeometryType(geom.get());
  facts.srid = geom->Srid;
  facts.dims = geom->DimensionModel;
  return facts;
}

// A SpatiaLite connection for making blobs with SQL.
class SpatialiteSql {
 public:
  SpatialiteSql() { ok_ = handler_.OpenByCreate(dir_.File("sql.db")); }
  // The handler leaves closing to its owner.
  ~SpatialiteSql() { handler_.Close(); }
  bool IsOpen() const { return ok_; }
  // The blob that `expression` gives; empty when it gives none.
  Bytes Blob(const std::string& expression) {
    CSqlStatement stmt(handler_.GetDB(), "SELECT " + expression, "[test]:");
    if (!stmt.StepRow() || stmt.ColumnBlob(0) == nullptr) return Bytes();
    const auto* data = static_cast<const unsigned char*>(stmt.ColumnBlob(0));
    return Bytes(data, data + stmt.ColumnBytes(0));
  }

 private:
  CTempDir dir_;
  CSpatialiteHandler handler_;
  bool ok_ = false;
};

// Writes a little-endian int32 into a blob (the blobs made here are little-endian).
void Poke32(Bytes& blob, size_t offset, uint32_t value) {
  ASSERT_EQ(1, blob[1]) << "test blobs are little-endian";
  for (int i = 0; i < 4; ++i) blob[offset + i] = static_cast<unsigned char>(value >> (8 * i));
}

const std::vector<CGeometryData> kSentinel = {Part({{-1, -1, -1}})};

// Reading must fail and leave what the caller holds alone.
void ExpectUnreadable(const Bytes& blob, const std::string& what) {
  std::vector<CGeometryData> parts = kSentinel;
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size())))
      << what;
  EXPECT_EQ(kSentinel, parts) << what;
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
  EXPECT_FALSE(ConvertWkbGeomToFeature(&feature, blob.data(), static_cast<int>(blob.size())))
      << what;
  EXPECT_EQ(GEOMETRY_DATA_TYPE_POLYGON, feature.GetGeometryType()) << what;
  EXPECT_EQ(0, feature.GetPartCount()) << what;
}

}  // namespace

// --- Writing and reading back ---

TEST(GeometryBlobTest, PointKindStoresOneVertexPerPointAndReadsOnePartEach) {
  const std::vector<CGeometryData> parts = {Part({{1, 2, 3}}), Part({{4, 5, 6}}),
                                            Part({{7, 8, 9}})};
  const Bytes blob = Write(parts, GEOMETRY_DATA_TYPE_MULTIPOINT);
  const BlobFacts facts = Facts(blob);
  EXPECT_EQ(GAIA_MULTIPOINTZ, facts.classCode);
  EXPECT_EQ(4326, facts.srid);
  EXPECT_EQ(GAIA_XY_Z, facts.dims);
  EXPECT_EQ(parts, Read(blob));

  // The vertices of one part are points of their own as well.
  const Bytes run = Write({Part({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}})}, GEOMETRY_DATA_TYPE_MULTIPOINT);
  EXPECT_EQ(parts, Read(run));

  CAnnotationFeature feature;
  ASSERT_TRUE(ConvertWkbGeomToFeature(&feature, blob.data(), static_cast<int>(blob.size())));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTIPOINT, feature.GetGeometryType());
  ASSERT_EQ(3, feature.GetPartCount());
  EXPECT_EQ(parts[2], feature.GetPart(2));
}

TEST(GeometryBlobTest, LineKindsStoreOneLineStringPerPart) {
  const std::vector<CGeometryData> lines = {Part({{0, 0, 1}, {1, 1, 2}, {2, 0, 3}}),
                                            Part({{10, 10, 0}, {11, 12, -5}})};
  const Bytes multi = Write(lines, GEOMETRY_DATA_TYPE_MULTILINESTRING);
  EXPECT_EQ(GAIA_MULTILINESTRINGZ, Facts(multi).classCode);
  EXPECT_EQ(lines, Read(multi));

  const Bytes single = Write({lines[0]}, GEOMETRY_DATA_TYPE_LINESTRING);
  EXPECT_EQ(GAIA_LINESTRINGZ, Facts(single).classCode);
  EXPECT_EQ(std::vector<CGeometryData>{lines[0]}, Read(single));

  // Lines of one vertex are kept as they are.
  const Bytes stub = Write({Part({{5, 6, 7}})}, GEOMETRY_DATA_TYPE_LINESTRING);
  EXPECT_EQ(std::vector<CGeometryData>{Part({{5, 6, 7}})}, Read(stub));
}

TEST(GeometryBlobTest, AreaKindsStoreTheRingAsGiven) {
  const std::vector<CGeometryData> rings = {Square(0, 0, 1, 5), Square(10, 10, 2, 6)};
  const Bytes multi = Write(rings, GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  EXPECT_EQ(GAIA_MULTIPOLYGONZ, Facts(multi).classCode);
  EXPECT_EQ(rings, Read(multi));

  // No closing vertex is added to an open ring.
  const CGeometryData open = Part({{0, 0, 1}, {1, 0, 2}, {1, 1, 3}});
  const Bytes polygon = Write({open}, GEOMETRY_DATA_TYPE_POLYGON);
  EXPECT_EQ(GAIA_POLYGONZ, Facts(polygon).classCode);
  EXPECT_EQ(std::vector<CGeometryData>{open}, Read(polygon));
}

TEST(GeometryBlobTest, StoredClassFollowsTheContentNotTheKind) {
  // A multi kind with a single part is stored (and read back) as the single class.
  const Bytes onePoint = Write({Part({{1, 2, 3}})}, GEOMETRY_DATA_TYPE_MULTIPOINT);
  EXPECT_EQ(GAIA_POINTZ, Facts(onePoint).classCode);
  const Bytes oneLine = Write({Part({{1, 2, 3}, {4, 5, 6}})}, GEOMETRY_DATA_TYPE_MULTILINESTRING);
  EXPECT_EQ(GAIA_LINESTRINGZ, Facts(oneLine).classCode);
  const Bytes oneArea = Write({Square(0, 0, 1, 0)}, GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  EXPECT_EQ(GAIA_POLYGONZ, Facts(oneArea).classCode);
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  ASSERT_TRUE(ConvertWkbGeomToFeature(&feature, oneArea.data(), static_cast<int>(oneArea.size())));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_POLYGON, feature.GetGeometryType());

  // A single kind with several parts becomes the multi class.
  const Bytes points = Write({Part({{1, 2, 3}, {4, 5, 6}})}, GEOMETRY_DATA_TYPE_POINT);
  EXPECT_EQ(GAIA_MULTIPOINTZ, Facts(points).classCode);
  const Bytes areas = Write({Square(0, 0, 1, 0), Square(5, 5, 1, 0)}, GEOMETRY_DATA_TYPE_POLYGON);
  EXPECT_EQ(GAIA_MULTIPOLYGONZ, Facts(areas).classCode);
}

TEST(GeometryBlobTest, FeatureUsesItsOwnKindAndPartsAndReadingAppends) {
  CAnnotationFeature source(GEOMETRY_DATA_TYPE_MULTILINESTRING);
  source.AddPart(Part({{0, 0, 0}, {1, 1, 1}}));
  source.AddPart(Part({}));
  source.AddPart(Part({{2, 2, 2}, {3, 3, 3}}));
  int size = 0;
  BlobPtr blob(ConvertFeatureToWkbGeom(size, &source));
  ASSERT_NE(nullptr, blob.get());

  CAnnotationFeature target(GEOMETRY_DATA_TYPE_POINT);
  target.AddPart(Part({{9, 9, 9}}));
  ASSERT_TRUE(ConvertWkbGeomToFeature(&target, blob.get(), size));
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTILINESTRING, target.GetGeometryType());
  // The empty part added nothing; what the feature held stays in front.
  ASSERT_EQ(3, target.GetPartCount());
  EXPECT_EQ(Part({{9, 9, 9}}), target.GetPart(0));
  EXPECT_EQ(source.GetPart(0), target.GetPart(1));
  EXPECT_EQ(source.GetPart(2), target.GetPart(2));

  std::vector<CGeometryData> parts = {Part({{7, 7, 7}})};
  ASSERT_TRUE(ConvertWkbGeomToGeomData(parts, blob.get(), size));
  EXPECT_EQ(3u, parts.size());
  EXPECT_EQ(Part({{7, 7, 7}}), parts[0]);

  EXPECT_FALSE(ConvertWkbGeomToFeature(nullptr, blob.get(), size));
}

TEST(GeometryBlobTest, LargeGeometryRoundTrips) {
  CGeometryData line;
  for (int i = 0; i < 200000; ++i) line.PushBack(CVector3D(i * 1e-4, -i * 1e-4, i));
  const Bytes blob = Write({line}, GEOMETRY_DATA_TYPE_LINESTRING);
  const std::vector<CGeometryData> back = Read(blob);
  ASSERT_EQ(1u, back.size());
  EXPECT_EQ(line, back[0]);
}

// --- Nothing to store ---

TEST(GeometryBlobTest, NothingToStoreGivesNullAndSizeZero) {
  struct Case {
    std::vector<CGeometryData> parts;
    int kind;
    const char* what;
  };
  const std::vector<Case> cases = {
      {{}, GEOMETRY_DATA_TYPE_POINT, "no parts"},
      {{Part({}), Part({})}, GEOMETRY_DATA_TYPE_POLYGON, "only empty parts"},
      {{Part({})}, GEOMETRY_DATA_TYPE_MULTIPOINT, "one empty part"},
      {{Part({{1, 2, 3}})}, 0, "kind 0"},
      {{Part({{1, 2, 3}})}, 7, "kind 7"},
      {{Part({{1, 2, 3}})}, -3, "negative kind"},
      {{Square(0, 0, 1, 1)}, 1006, "a class code as kind"},
  };
  for (const Case& c : cases) {
    int size = 12345;
    BlobPtr blob(ConvertGeomDataToWkbGeom(size, c.parts, static_cast<E_GEOMETRY_DATA_TYPE>(c.kind)));
    EXPECT_EQ(nullptr, blob.get()) << c.what;
    EXPECT_EQ(0, size) << c.what;
  }

  int size = 12345;
  EXPECT_EQ(nullptr, ConvertFeatureToWkbGeom(size, nullptr));
  EXPECT_EQ(0, size);
  CAnnotationFeature empty(GEOMETRY_DATA_TYPE_POLYGON);
  size = 12345;
  EXPECT_EQ(nullptr, ConvertFeatureToWkbGeom(size, &empty));
  EXPECT_EQ(0, size);
}

// --- Blobs from elsewhere ---

TEST(GeometryBlobTest, BlobsMadeBySpatialiteSqlReadByTheirClass) {
  SpatialiteSql sql;
  ASSERT_TRUE(sql.IsOpen());

  // A polygon with a hole reads as its exterior ring only.
  Bytes blob = sql.Blob(
      "GeomFromText('POLYGON Z((0 0 1, 4 0 1, 4 4 1, 0 4 1, 0 0 1), (1 1 1, 2 1 1, 2 2 1, 1 1 1))',"
      " 4326)");
  EXPECT_EQ(std::vector<CGeometryData>{Square(0, 0, 4, 1)}, Read(blob));

  // Another SRID is read all the same.
  blob = sql.Blob("GeomFromText('POINT Z(1 2 3)', 3857)");
  EXPECT_EQ(std::vector<CGeometryData>{Part({{1, 2, 3}})}, Read(blob));

  // Compressed geometries are SpatiaLite's too.
  blob = sql.Blob("CompressGeometry(GeomFromText('LINESTRING Z(0 0 0, 1 1 1, 2 2 2, 3 3 3)', 4326))");
  EXPECT_EQ(std::vector<CGeometryData>{Part({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}})},
            Read(blob));
  blob = sql.Blob(
      "CompressGeometry(GeomFromText('MULTIPOLYGON Z(((0 0 0, 1 0 0, 1 1 0, 0 0 0)),"
      " ((5 5 1, 6 5 1, 6 6 1, 5 5 1)))', 4326))");
  EXPECT_EQ(2u, Read(blob).size());

  // Classes without Z, with M, or mixed read as nothing, and reading still succeeds.
  for (const char* expression :
       {"GeomFromText('POINT(1 2)', 3857)", "GeomFromText('LINESTRING(0 0, 1 1)', 4326)",
        "GeomFromText('POINT ZM(1 2 3 4)', 4326)", "GeomFromText('LINESTRING M(0 0 1, 1 1 2)', 4326)",
        "GeomFromText('GEOMETRYCOLLECTION Z(POINT Z(1 2 3), LINESTRING Z(0 0 0, 1 1 1))', 4326)"}) {
    blob = sql.Blob(expression);
    ASSERT_FALSE(blob.empty()) << expression;
    std::vector<CGeometryData> parts = kSentinel;
    EXPECT_TRUE(ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size())))
        << expression;
    EXPECT_EQ(kSentinel, parts) << expression;
    CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
    EXPECT_TRUE(ConvertWkbGeomToFeature(&feature, blob.data(), static_cast<int>(blob.size())))
        << expression;
    EXPECT_EQ(GEOMETRY_DATA_TYPE_UNKNOWN, feature.GetGeometryType()) << expression;
    EXPECT_EQ(0, feature.GetPartCount()) << expression;
  }

  // Plain WKB is not a SpatiaLite blob.
  blob = sql.Blob("AsBinary(GeomFromText('POINT Z(1 2 3)', 4326))");
  ASSERT_FALSE(blob.empty());
  ExpectUnreadable(blob, "plain WKB");
}

TEST(GeometryBlobTest, EveryFormSpatialiteWritesPassesTheCountCheck) {
  SpatialiteSql sql;
  ASSERT_TRUE(sql.IsOpen());
  const std::vector<std::string> wkts = {
      "POINT(1 2)", "POINT Z(1 2 3)", "POINT M(1 2 3)", "POINT ZM(1 2 3 4)",
      "LINESTRING(0 0, 1 1, 2 0)", "LINESTRING Z(0 0 0, 1 1 1, 2 0 2)",
      "LINESTRING M(0 0 0, 1 1 1, 2 0 2)", "LINESTRING ZM(0 0 0 0, 1 1 1 1, 2 0 2 2)",
      "POLYGON((0 0, 4 0, 4 4, 0 0), (1 1, 2 1, 2 2, 1 1))",
      "POLYGON Z((0 0 0, 4 0 0, 4 4 0, 0 0 0), (1 1 0, 2 1 0, 2 2 0, 1 1 0))",
      "POLYGON ZM((0 0 0 0, 4 0 0 0, 4 4 0 0, 0 0 0 0))", "MULTIPOINT M(1 2 3, 4 5 6)",
      "MULTILINESTRING ZM((0 0 0 0, 1 1 1 1), (2 2 2 2, 3 3 3 3, 4 4 4 4))",
      "MULTIPOLYGON(((0 0, 1 0, 1 1, 0 0)), ((5 5, 6 5, 6 6, 5 5)))",
      "GEOMETRYCOLLECTION Z(POINT Z(1 2 3), POLYGON Z((0 0 0, 1 0 0, 1 1 0, 0 0 0)))"};
  for (const std::string& wkt : wkts) {
    for (const std::string& form : {std::string("%"), std::string("CompressGeometry(%)")}) {
      std::string expression = form;
      expression.replace(expression.find('%'), 1, "GeomFromText('" + wkt + "', 4326)");
      const Bytes blob = sql.Blob(expression);
      ASSERT_FALSE(blob.empty()) << expression;
      EXPECT_TRUE(HasPlausibleCounts(blob.data(), static_cast<int>(blob.size()))) << expression;
      EXPECT_TRUE(ParseSpatialiteBlob(blob.data(), static_cast<int>(blob.size())) != nullptr)
          << expression;
    }
  }
}

// --- Bad blobs ---

TEST(GeometryBlobTest, NullEmptyAndTruncatedBlobsAreUnreadable) {
  const Bytes blob =
      Write({Square(0, 0, 1, 0), Square(3, 3, 1, 1)}, GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  std::vector<CGeometryData> parts = kSentinel;
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, nullptr, 100));
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, blob.data(), 0));
  EXPECT_FALSE(ConvertWkbGeomToGeomData(parts, blob.data(), -5));
  EXPECT_EQ(kSentinel, parts);
  CAnnotationFeature feature;
  EXPECT_FALSE(ConvertWkbGeomToFeature(&feature, nullptr, 0));

  for (size_t length = 1; length < blob.size(); ++length) {
    ExpectUnreadable(Bytes(blob.begin(), blob.begin() + length), "cut");
    // Cut, but closed with an end mark again: the counts no longer fit.
    Bytes closed(blob.begin(), blob.begin() + length);
    closed.back() = GAIA_MARK_END;
    ExpectUnreadable(closed, "cut and closed");
  }
}

TEST(GeometryBlobTest, NegativeAndOversizedCountsAreRefusedBeforeSpatialite) {
  // Offsets in a single line string: class at 39, vertex count at 43.
  Bytes line = Write({Part({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}})}, GEOMETRY_DATA_TYPE_LINESTRING);
  for (uint32_t count : {0xFFFFFFFFu, 0x80000000u, 0xFFFFFFF0u, 0x7FFFFFFFu, 0x0AAAAAABu, 4u}) {
    Bytes bad = line;
    Poke32(bad, 43, count);
    ExpectUnreadable(bad, "line vertex count " + std::to_string(count));
  }

  // A polygon: ring count at 43, the exterior ring's vertex count at 47.
  Bytes polygon = Write({Square(0, 0, 1, 0)}, GEOMETRY_DATA_TYPE_POLYGON);
  for (uint32_t count : {0xFFFFFFFFu, 0x7FFFFFFFu, 0x80000001u, 2u}) {
    Bytes bad = polygon;
    Poke32(bad, 43, count);
    ExpectUnreadable(bad, "ring count " + std::to_string(count));
  }
  for (uint32_t count : {0xFFFFFFFFu, 0x7FFFFFFFu, 6u}) {
    Bytes bad = polygon;
    Poke32(bad, 47, count);
    ExpectUnreadable(bad, "ring vertex count " + std::to_string(count));
  }
  // Fewer vertices than stored is consistent: the rest of the body is ignored.
  Bytes shorter = polygon;
  Poke32(shorter, 47, 2);
  EXPECT_EQ(std::vector<CGeometryData>{Part({{0, 0, 0}, {1, 0, 0}})}, Read(shorter));

  // A multi line string whose entity claims another dimension model than the collection: gaia
  // would write its vertices past the allocation sized for the collection's model.
  Bytes multi = Write({Part({{0, 0, 0}, {1, 1, 1}}), Part({{2, 2, 2}, {3, 3, 3}})},
                      GEOMETRY_DATA_TYPE_MULTILINESTRING);
  Bytes bad = multi;
  Poke32(bad, 39, GAIA_MULTILINESTRING);  // the collection XY, its entities still XYZ
  ExpectUnreadable(bad, "entity of another dimension model");
  bad = multi;
  Poke32(bad, 48, GAIA_LINESTRINGZM);  // the first entity's class, after the count and its mark
  ExpectUnreadable(bad, "entity of a measured model");
  bad = multi;
  bad[47] = 0x00;  // the first entity's mark
  ExpectUnreadable(bad, "missing entity mark");
  bad = multi;
  Poke32(bad, 39, 1234);
  ExpectUnreadable(bad, "unknown class");
}

TEST(GeometryBlobTest, CorruptedBlobsNeverCrashAndFailWithoutSideEffects) {
  const std::vector<Bytes> blobs = {
      Write({Part({{1, 2, 3}}), Part({{4, 5, 6}})}, GEOMETRY_DATA_TYPE_MULTIPOINT),
      Write({Part({{0, 0, 0}, {1, 1, 1}}), Part({{2, 2, 2}, {3, 3, 3}, {4, 4, 4}})},
            GEOMETRY_DATA_TYPE_MULTILINESTRING),
      Write({Square(0, 0, 1, 0), Square(3, 3, 1, 1)}, GEOMETRY_DATA_TYPE_MULTIPOLYGON),
      Write({Square(0, 0, 1, 0)}, GEOMETRY_DATA_TYPE_POLYGON)};
  const uint32_t values[] = {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, 0xAAAAAAABu, 0x10000000u,
                             1000u,       0u,          1u,          1002u,       1000003u};
  int readable = 0;
  int unreadable = 0;
  auto attempt = [&](const Bytes& bad) {
    std::vector<CGeometryData> parts = kSentinel;
    if (ConvertWkbGeomToGeomData(parts, bad.data(), static_cast<int>(bad.size()))) {
      ++readable;
      EXPECT_EQ(kSentinel[0], parts[0]);  // appended behind what was there
    } else {
      ++unreadable;
      EXPECT_EQ(kSentinel, parts);
    }
  };
  for (const Bytes& blob : blobs) {
    for (size_t offset = 39; offset + 4 < blob.size(); ++offset) {
      for (uint32_t value : values) {
        Bytes bad = blob;
        Poke32(bad, offset, value);
        attempt(bad);
      }
    }
    for (size_t offset = 0; offset < blob.size(); ++offset) {
      for (int bit = 0; bit < 8; ++bit) {
        Bytes bad = blob;
        bad[offset] ^= static_cast<unsigned char>(1u << bit);
        attempt(bad);
      }
    }
  }
  // Both outcomes occur: coordinates can be garbled harmlessly, structure cannot.
  EXPECT_GT(readable, 0);
  EXPECT_GT(unreadable, 0);
}

TEST(GeometryBlobTest, RandomBytesNeverCrash) {
  std::mt19937 random(20240607);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<int> length(1, 300);
  int unreadable = 0;
  const int rounds = 20000;
  for (int i = 0; i < rounds; ++i) {
    Bytes blob(static_cast<size_t>(length(random)));
    for (unsigned char& b : blob) b = static_cast<unsigned char>(byte(random));
    // Half of them get SpatiaLite's frame so that the body is looked at.
    if (i % 2 == 0 && blob.size() >= 45) {
      blob[0] = GAIA_MARK_START;
      blob[1] = GAIA_LITTLE_ENDIAN;
      blob[38] = GAIA_MARK_MBR;
      blob.back() = GAIA_MARK_END;
      Poke32(blob, 39, 1001 + static_cast<uint32_t>(i / 2 % 6));
    }
    std::vector<CGeometryData> parts = kSentinel;
    if (!ConvertWkbGeomToGeomData(parts, blob.data(), static_cast<int>(blob.size()))) {
      ++unreadable;
      EXPECT_EQ(kSentinel, parts);
    }
  }
  EXPECT_GT(unreadable, rounds / 2);
}
