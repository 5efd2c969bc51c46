// Interoperability of the tool with GDAL/OGR: a database made by `create` and `import` opens in
// GDAL (ogrinfo lists the `shape` layer with the right count and extent, and the geometries read
// back through OGR equal the source's), and `import` of an `export` gives back the same features
// for the common formats.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>

#include "CliFixtures.h"
#include "TestDatabase.h"

namespace {

std::string IsoWkt(const OGRGeometry& geometry) {
  OGRWktOptions options;
  options.variant = wkbVariantIso;
  options.precision = 17;
  return geometry.exportToWkt(options, nullptr);
}

// The source's geometries as the database keeps them: with Z (0 where the source had none).
std::vector<std::string> ExpectedWkts(const SourceLayer& layer) {
  std::vector<std::string> wkts;
  for (const SourceRow& row : layer.rows) {
    OGRGeometry* raw = nullptr;
    OGRGeometryFactory::createFromWkt(row.wkt.c_str(), nullptr, &raw);
    OGRGeometryUniquePtr geometry(raw);
    geometry->set3D(TRUE);
    wkts.push_back(IsoWkt(*geometry));
  }
  return wkts;
}

SourceLayer Shapes() {
  SourceLayer layer;
  layer.name = "shapes";
  layer.fields = {{"label", OFTString}};
  layer.rows = {{"POINT (116.391 39.907)", {"point"}},
                {"LINESTRING Z (116.30 39.90 12.5,116.35 39.95 20,116.40 39.91 7)", {"line"}},
                {"POLYGON ((116.2 39.8,116.6 39.8,116.6 40.1,116.2 39.8))", {"polygon"}},
                {"MULTIPOINT ((115.9 39.5),(116.9 40.4))", {"points"}},
                {"MULTILINESTRING ((116 40,116.1 40.1),(116.2 40.2,116.3 40.3))", {"lines"}},
                {"MULTIPOLYGON (((116 39,117 39,117 40,116 39)),((118 41,119 41,119 42,118 41)))",
                 {"polygons"}}};
  return layer;
}

using InteropTest = CCliDatabaseTest;

// GDAL opens the database: ogrinfo lists the `shape` layer with its count and extent, and the
// geometries read back through OGR equal the source's, with Z and in WGS 84.
TEST_F(InteropTest, OgrListsAndReadsBackTheShapeLayer) {
  const SourceLayer shapes = Shapes();
  const std::string source = dir_.File("shapes.gpkg");
  ASSERT_TRUE(WriteSource(source, "GPKG", {shapes}));
  ASSERT_EQ(RunTool({"import", db_, source}).exitCode, 0);

  CProcessRunner runner;
  runner.SetTimeoutSeconds(120);
  const CProcessResult summary = runner.Run({"/usr/bin/ogrinfo", "-ro", "-so", db_, "shape"});
  ASSERT_EQ(summary.exitCode, 0) << summary.err;
  EXPECT_NE(summary.out.find("Feature Count: 6\n"), std::string::npos) << summary.out;
  EXPECT_NE(summary.out.find("WGS 84"), std::string::npos);
  const size_t at = summary.out.find("Extent: (");
  ASSERT_NE(at, std::string::npos) << summary.out;
  double minX = 0, minY = 0, maxX = 0, maxY = 0;
  ASSERT_EQ(std::sscanf(summary.out.c_str() + at, "Extent: (%lf, %lf) - (%lf, %lf)", &minX, &minY,
                        &maxX, &maxY),
            4);
  // The extent comes from the R*Tree, whose boxes are single precision and rounded outwards.
  EXPECT_NEAR(minX, 115.9, 1e-4);
  EXPECT_NEAR(minY, 39.0, 1e-4);
  EXPECT_NEAR(maxX, 119.0, 1e-4);
  EXPECT_NEAR(maxY, 42.0, 1e-4);

  GDALDatasetUniquePtr dataset(GDALDataset::Open(db_.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
  ASSERT_TRUE(dataset);
  OGRLayer* layer = dataset->GetLayerByName("shape");
  ASSERT_NE(layer, nullptr);
  const std::vector<std::string> expected = ExpectedWkts(shapes);
  size_t i = 0;
  for (const OGRFeatureUniquePtr& feature : *layer) {
    ASSERT_LT(i, expected.size());
    const OGRGeometry* geometry = feature->GetGeometryRef();
    ASSERT_NE(geometry, nullptr);
    EXPECT_EQ(IsoWkt(*geometry), expected[i]) << shapes.rows[i].values[0];
    EXPECT_EQ(geometry->getSpatialReference()->GetEPSGGeogCS(), 4326);
    ++i;
  }
  EXPECT_EQ(i, expected.size());
}

struct RoundTripCase {
  const char* extension;
  bool boolsAsIntegers;  // the format has no boolean type
};

class RoundTrip : public CCliDatabaseTest, public ::testing::WithParamInterface<RoundTripCase> {};

TEST_P(RoundTrip, ImportOfAnExportGivesBackTheSameFeatures) {
  const std::string first = db_, second = dir_.File("second.db");
  ASSERT_EQ(RunTool({"create", second}).exitCode, 0);
  SourceLayer points = PointLayer("points", 40);
  for (size_t i = 0; i < points.rows.size(); ++i) {
    points.rows[i].wkt = "POINT Z (" + std::to_string(100 + i * 0.5) + " " +
                         std::to_string(30 - i * 0.25) + " " + std::to_string(i * 3) + ")";
  }
  points.rows[3].values[1] = "";  // a null integer
  const std::string source = dir_.File("points.gpkg");
  ASSERT_TRUE(WriteSource(source, "GPKG", {points}));
  ASSERT_EQ(RunTool({"import", first, source, "--name-field", "name"}).exitCode, 0);

  const std::string out = dir_.File(std::string("out.") + GetParam().extension);
  const CProcessResult exported = RunTool({"export", first, LayerUuid(first, "points"), out});
  ASSERT_EQ(exported.exitCode, 0) << exported.err;
  const CProcessResult imported = RunTool({"import", second, out, "--name-field", "name"});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  EXPECT_EQ(imported.out.rfind("imported 40 features into 1 layer", 0), 0u) << imported.out;

  const std::vector<StoredFeature> original = ReadLayer(first, LayerUuid(first, "points"));
  std::vector<StoredFeature> again =
      ReadLayer(second, QueryScalar(second, "SELECT uuid FROM layer"));
  ASSERT_EQ(original.size(), 40u);
  ASSERT_EQ(again.size(), original.size());
  // FlatGeobuf writes features in the order of its spatial index: compare by name.
  auto byName = [](const StoredFeature& a, const StoredFeature& b) { return a.name < b.name; };
  std::vector<StoredFeature> sortedOriginal = original;
  std::sort(sortedOriginal.begin(), sortedOriginal.end(), byName);
  std::sort(again.begin(), again.end(), byName);
  for (size_t i = 0; i < original.size(); ++i) {
    StoredFeature expected = sortedOriginal[i];
    if (GetParam().boolsAsIntegers)
      expected.fields["flag"] = QVariant(expected.fields["flag"].toInt());
    EXPECT_TRUE(again[i] == expected) << Describe(expected) << "\n" << Describe(again[i]);
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip,
                         ::testing::Values(RoundTripCase{"gpkg", false},
                                           RoundTripCase{"geojson", false},
                                           RoundTripCase{"fgb", false},
                                           RoundTripCase{"csv", false},
                                           RoundTripCase{"shp", true}),
                         [](const ::testing::TestParamInfo<RoundTripCase>& info) {
                           return std::string(info.param.extension);
                         });

}  // namespace
