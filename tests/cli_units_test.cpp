// The building blocks of the command-line tool on their own: argument parsing, the progress bar,
// the driver choice and the conversions between OGR and the host's feature types.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogr_feature.h>
#include <ogr_geometry.h>

#include <cstdio>
#include <limits>
#include <memory>

#include "AnnotationFeature.h"
#include "ArgumentParser.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "FieldConverter.h"
#include "GeometryConverter.h"
#include "ProgressBar.h"
#include "StyleConverter.h"
#include "VectorFormat.h"

namespace {

class GdalDrivers : public ::testing::Environment {
 public:
  void SetUp() override { GDALAllRegister(); }
};
const auto* const kGdal = ::testing::AddGlobalTestEnvironment(new GdalDrivers);

OGRGeometryUniquePtr FromWkt(const char* wkt) {
  OGRGeometry* geometry = nullptr;
  OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry);
  return OGRGeometryUniquePtr(geometry);
}

std::string ToWkt(const OGRGeometry& geometry) {
  OGRWktOptions options;
  options.variant = wkbVariantIso;
  return geometry.exportToWkt(options, nullptr);
}

// Reads back everything written to a temporary file.
std::string Contents(std::FILE* file) {
  std::fflush(file);
  std::rewind(file);
  std::string text;
  char buffer[256];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) text.append(buffer, n);
  return text;
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// ---- Argument parser ----

class ArgumentParserTest : public ::testing::Test {
 protected:
  ArgumentParserTest() : parser_("import", "imports") {
    parser_.AddPositional("DB", "database");
    parser_.AddPositional("SOURCE", "source");
    parser_.AddOption("under", "UUID", "parent");
    parser_.AddFlag("json", "json");
  }
  bool Parse(std::vector<std::string> words) { return parser_.Parse(words, &error_); }

  CArgumentParser parser_;
  std::string error_;
};

TEST_F(ArgumentParserTest, ReadsPositionalsOptionsAndFlags) {
  ASSERT_TRUE(Parse({"a.db", "--under", "u1", "b.json", "--json"}));
  EXPECT_EQ(parser_.Positional("DB"), "a.db");
  EXPECT_EQ(parser_.Positional("SOURCE"), "b.json");
  EXPECT_EQ(parser_.Value("under"), "u1");
  EXPECT_TRUE(parser_.Has("json"));
  EXPECT_FALSE(parser_.HelpRequested());
  EXPECT_EQ(parser_.Value("missing", "fallback"), "fallback");
  // Values may look like options; "--" ends the options.
  ASSERT_TRUE(Parse({"a.db", "b.json", "--under=-1,-2"}));
  EXPECT_EQ(parser_.Value("under"), "-1,-2");
  ASSERT_TRUE(Parse({"a.db", "--under", "-5", "b.json"}));
  EXPECT_EQ(parser_.Value("under"), "-5");
  ASSERT_TRUE(Parse({"--", "--odd.db", "-"}));
  EXPECT_EQ(parser_.Positional("DB"), "--odd.db");
  EXPECT_EQ(parser_.Positional("SOURCE"), "-");
}

TEST_F(ArgumentParserTest, RefusesMistakesWithOneLineReasons) {
  const struct {
    std::vector<std::string> words;
    const char* reason;
  } cases[] = {
      {{"a.db"}, "missing SOURCE"},
      {{"a.db", "b", "c"}, "unexpected argument 'c'"},
      {{"a.db", "b", "--bogus"}, "unknown option --bogus"},
      {{"a.db", "b", "-x"}, "unknown option -x"},
      {{"a.db", "b", "--under"}, "option --under needs a value (UUID)"},
      {{"a.db", "b", "--json=1"}, "option --json takes no value"},
      {{"a.db", "b", "--json", "--json"}, "option --json given twice"},
  };
  for (const auto& c : cases) {
    EXPECT_FALSE(Parse(c.words)) << c.reason;
    EXPECT_EQ(error_, c.reason);
    EXPECT_EQ(error_.find('\n'), std::string::npos);
  }
}

TEST_F(ArgumentParserTest, HelpWinsOverEverythingElse) {
  ASSERT_TRUE(Parse({"--bogus", "-h"}));
  EXPECT_TRUE(parser_.HelpRequested());
  const std::string help = parser_.HelpText();
  EXPECT_NE(help.find("usage: annotationlayer import DB SOURCE [options]"), std::string::npos);
  EXPECT_NE(help.find("--under UUID"), std::string::npos);
  EXPECT_NE(help.find("--help"), std::string::npos);
}

TEST(ArgumentNumbers, ParsesWholeIntegersInRange) {
  int64_t value = 0;
  EXPECT_TRUE(CArgumentParser::ParseInteger("42", 0, 100, &value));
  EXPECT_EQ(value, 42);
  EXPECT_FALSE(CArgumentParser::ParseInteger("", 0, 100, &value));
  EXPECT_FALSE(CArgumentParser::ParseInteger("4x", 0, 100, &value));
  EXPECT_FALSE(CArgumentParser::ParseInteger("-1", 0, 100, &value));
  EXPECT_FALSE(CArgumentParser::ParseInteger("101", 0, 100, &value));
  EXPECT_FALSE(CArgumentParser::ParseInteger("99999999999999999999", 0, 100, &value));
}

TEST(ArgumentNumbers, ParsesListsOfFiniteNumbers) {
  std::vector<double> values;
  ASSERT_TRUE(CArgumentParser::ParseNumberList("-1.5,2,3e1,4", 4, &values));
  EXPECT_EQ(values, (std::vector<double>{-1.5, 2, 30, 4}));
  EXPECT_FALSE(CArgumentParser::ParseNumberList("1,2,3", 4, &values));
  EXPECT_FALSE(CArgumentParser::ParseNumberList("1,2,3,4,", 4, &values));
  EXPECT_FALSE(CArgumentParser::ParseNumberList("1,,3,4", 4, &values));
  EXPECT_FALSE(CArgumentParser::ParseNumberList("1,2,nan,4", 4, &values));
  EXPECT_FALSE(CArgumentParser::ParseNumberList("1,2,x,4", 4, &values));
}

// ---- Progress bar ----

TEST(ProgressBar, DrawsABarClearsItsLineAndKeepsQuietWhenDisabled) {
  std::unique_ptr<std::FILE, FileCloser> file(std::tmpfile());
  ASSERT_TRUE(file);
  {
    CProgressBar bar(file.get(), true);
    bar.Start("import", 4);
    bar.Advance();
    bar.Update(4);  // completion is always drawn, whatever the throttle says
    bar.Finish();
  }
  const std::string text = Contents(file.get());
  EXPECT_NE(text.find("\rimport [------------------------------]   0%  0/4"), std::string::npos)
      << "the empty bar at the start";
  EXPECT_NE(text.find("[##############################] 100%  4/4"), std::string::npos);
  EXPECT_EQ(text.substr(text.size() - 4), "\r\033[K");

  std::unique_ptr<std::FILE, FileCloser> counted(std::tmpfile());
  CProgressBar bar(counted.get(), true);
  bar.Start("rebuild", 0);
  EXPECT_NE(Contents(counted.get()).find("rebuild  0"), std::string::npos) << "no total";
  EXPECT_EQ(bar.Done(), 0);

  std::unique_ptr<std::FILE, FileCloser> quiet(std::tmpfile());
  {
    CProgressBar disabled(quiet.get(), false);
    disabled.Start("import", 10);
    disabled.Update(10);
  }
  EXPECT_EQ(Contents(quiet.get()), "");
}

// ---- Output formats ----

TEST(VectorFormat, ChoosesDriversByExtensionOrName) {
  std::string error;
  const struct {
    const char* path;
    const char* driver;
  } cases[] = {{"a.gpkg", "GPKG"},       {"dir/a.GeoJSON", "GeoJSON"}, {"a.json", "GeoJSON"},
               {"a.shp", "ESRI Shapefile"}, {"a.fgb", "FlatGeobuf"}, {"a.csv", "CSV"},
               {"a.kml", "LIBKML"},      {"a.sqlite", "SQLite"}};
  for (const auto& c : cases) {
    GDALDriver* driver = CVectorFormat::ForOutput(c.path, "", &error);
    ASSERT_NE(driver, nullptr) << c.path << ": " << error;
    EXPECT_EQ(CVectorFormat::Name(driver), c.driver) << c.path;
  }
  GDALDriver* named = CVectorFormat::ForOutput("out", "esri shapefile", &error);
  ASSERT_NE(named, nullptr);
  EXPECT_EQ(CVectorFormat::Name(named), "ESRI Shapefile");
}

TEST(VectorFormat, ExplainsWhatItCannotChoose) {
  std::string error;
  EXPECT_EQ(CVectorFormat::ForOutput("out", "", &error), nullptr);
  EXPECT_NE(error.find("without an extension"), std::string::npos);
  EXPECT_EQ(CVectorFormat::ForOutput("a.d/out", "", &error), nullptr);
  EXPECT_EQ(CVectorFormat::ForOutput("a.nosuchext", "", &error), nullptr);
  EXPECT_NE(error.find("no GDAL driver writes '.nosuchext'"), std::string::npos);
  EXPECT_EQ(CVectorFormat::ForOutput("a.gpkg", "NoSuchDriver", &error), nullptr);
  EXPECT_NE(error.find("unknown format 'NoSuchDriver'"), std::string::npos);
  EXPECT_EQ(CVectorFormat::ForOutput("a.gpkg", "GTiff", &error), nullptr);
  EXPECT_NE(error.find("cannot write vector data"), std::string::npos);
}

// ---- Geometry ----

struct GeometryCase {
  const char* wkt;
  E_GEOMETRY_DATA_TYPE kind;
  std::vector<std::vector<CVector3D>> parts;
};

class GeometryIn : public ::testing::TestWithParam<GeometryCase> {};

TEST_P(GeometryIn, MapsToTheSixKindsWithZ) {
  const GeometryCase& c = GetParam();
  OGRGeometryUniquePtr geometry = FromWkt(c.wkt);
  ASSERT_TRUE(geometry) << c.wkt;
  CGeometryConverter converter;
  CAnnotationFeature feature;
  ASSERT_EQ(converter.ToFeature(geometry.get(), &feature), CGeometryConverter::RESULT_CONVERTED);
  EXPECT_EQ(feature.GetGeometryType(), c.kind);
  ASSERT_EQ(feature.GetPartCount(), static_cast<int>(c.parts.size()));
  for (size_t i = 0; i < c.parts.size(); ++i) {
    EXPECT_EQ(feature.GetPart(static_cast<int>(i)).Vertices(), c.parts[i]) << c.wkt << " part " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, GeometryIn,
    ::testing::Values(
        GeometryCase{"POINT (1 2)", GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 0}}}},
        GeometryCase{"POINT Z (1 2 3)", GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 3}}}},
        GeometryCase{"POINT M (1 2 9)", GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 0}}}},
        GeometryCase{"LINESTRING (0 0,1 1)", GEOMETRY_DATA_TYPE_LINESTRING, {{{0, 0, 0}, {1, 1, 0}}}},
        GeometryCase{"POLYGON Z ((0 0 1,1 0 1,1 1 1,0 0 1),(0.2 0.2 1,0.3 0.2 1,0.3 0.3 1,0.2 0.2 1))",
                     GEOMETRY_DATA_TYPE_POLYGON,
                     {{{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 0, 1}}}},
        GeometryCase{"MULTIPOINT (1 2,3 4)", GEOMETRY_DATA_TYPE_MULTIPOINT, {{{1, 2, 0}}, {{3, 4, 0}}}},
        GeometryCase{"MULTILINESTRING ((0 0,1 1),(2 2,3 3))", GEOMETRY_DATA_TYPE_MULTILINESTRING,
                     {{{0, 0, 0}, {1, 1, 0}}, {{2, 2, 0}, {3, 3, 0}}}},
        GeometryCase{"MULTIPOLYGON (((0 0,1 0,1 1,0 0)),((5 5,6 5,6 6,5 5)))",
                     GEOMETRY_DATA_TYPE_MULTIPOLYGON,
                     {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}},
                      {{5, 5, 0}, {6, 5, 0}, {6, 6, 0}, {5, 5, 0}}}},
        GeometryCase{"COMPOUNDCURVE ((0 0,1 0),(1 0,1 1))", GEOMETRY_DATA_TYPE_LINESTRING,
                     {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}}}));

TEST(GeometryConverter, CountsDroppedInteriorRings) {
  CGeometryConverter converter;
  CAnnotationFeature feature;
  OGRGeometryUniquePtr polygon =
      FromWkt("MULTIPOLYGON (((0 0,9 0,9 9,0 0),(1 1,2 1,2 2,1 1),(3 3,4 3,4 4,3 3)),((20 20,21 20,21 21,20 20)))");
  ASSERT_EQ(converter.ToFeature(polygon.get(), &feature), CGeometryConverter::RESULT_CONVERTED);
  EXPECT_EQ(converter.DroppedInteriorRings(), 2);
  EXPECT_EQ(feature.GetPartCount(), 2);
}

TEST(GeometryConverter, RefusesEmptyAndUnsupportedGeometries) {
  CGeometryConverter converter;
  CAnnotationFeature feature;
  EXPECT_EQ(converter.ToFeature(nullptr, &feature), CGeometryConverter::RESULT_EMPTY);
  EXPECT_EQ(converter.ToFeature(FromWkt("POINT EMPTY").get(), &feature),
            CGeometryConverter::RESULT_EMPTY);
  EXPECT_EQ(converter.ToFeature(FromWkt("MULTIPOINT (EMPTY)").get(), &feature),
            CGeometryConverter::RESULT_EMPTY);
  EXPECT_EQ(converter.ToFeature(FromWkt("GEOMETRYCOLLECTION (POINT (1 2))").get(), &feature),
            CGeometryConverter::RESULT_UNSUPPORTED);
  EXPECT_EQ(converter.ToFeature(FromWkt("TIN (((0 0 0,0 1 0,1 1 0,0 0 0)))").get(), &feature),
            CGeometryConverter::RESULT_UNSUPPORTED);
  EXPECT_EQ(feature.GetPartCount(), 0);
  EXPECT_EQ(feature.GetGeometryType(), GEOMETRY_DATA_TYPE_UNKNOWN);
}

TEST(GeometryConverter, TransformsToWgs84) {
  OGRSpatialReference mercator;
  mercator.importFromEPSG(3857);
  CGeometryConverter converter;
  std::string error;
  ASSERT_TRUE(converter.SetSourceReference(&mercator, &error)) << error;
  EXPECT_TRUE(converter.IsTransforming());
  CAnnotationFeature feature;
  OGRGeometryUniquePtr point = FromWkt("POINT Z (1113194.9079327357 1118889.9748579597 7)");
  ASSERT_EQ(converter.ToFeature(point.get(), &feature), CGeometryConverter::RESULT_CONVERTED);
  const CVector3D& v = feature.GetPart(0).At(0);
  EXPECT_NEAR(v.X(), 10.0, 1e-9);
  EXPECT_NEAR(v.Y(), 10.0, 1e-9);
  EXPECT_NEAR(v.Z(), 7.0, 1e-9);

  OGRSpatialReference wgs84 = CGeometryConverter::Wgs84();
  ASSERT_TRUE(converter.SetSourceReference(&wgs84, &error));
  EXPECT_FALSE(converter.IsTransforming());
  ASSERT_TRUE(converter.SetSourceReference(nullptr, &error));
  EXPECT_FALSE(converter.IsTransforming());
}

// GDAL never returns from reprojecting such coordinates out of Web Mercator (found by fuzzing the
// GeoJSON import): they are refused before they get there, and ordinary ones still pass.
TEST(GeometryConverter, RefusesCoordinatesTooLargeToTransform) {
  OGRSpatialReference mercator;
  mercator.importFromEPSG(3857);
  CGeometryConverter converter;
  std::string error;
  ASSERT_TRUE(converter.SetSourceReference(&mercator, &error)) << error;
  CAnnotationFeature feature;
  for (const char* wkt : {"POINT (1e30 1e30)", "POINT (0 -1e18)",
                          "LINESTRING (0 0,1e18 0)", "POLYGON ((0 0,1e300 0,0 1,0 0))"}) {
    EXPECT_EQ(converter.ToFeature(FromWkt(wkt).get(), &feature),
              CGeometryConverter::RESULT_TRANSFORM_FAILED)
        << wkt;
  }
  OGRPoint infinite(std::numeric_limits<double>::infinity(), 0);
  EXPECT_EQ(converter.ToFeature(&infinite, &feature), CGeometryConverter::RESULT_TRANSFORM_FAILED);
  EXPECT_EQ(converter.ToFeature(FromWkt("POINT (20037508 -20037508)").get(), &feature),
            CGeometryConverter::RESULT_CONVERTED);

  // Without a transformation the coordinates are stored as they are.
  ASSERT_TRUE(converter.SetSourceReference(nullptr, &error));
  ASSERT_EQ(converter.ToFeature(FromWkt("POINT (1e30 1e30)").get(), &feature),
            CGeometryConverter::RESULT_CONVERTED);
  EXPECT_EQ(feature.GetPart(0).At(0).X(), 1e30);
}

TEST(GeometryConverter, BuildsOgrGeometriesWithZ) {
  auto build = [](E_GEOMETRY_DATA_TYPE kind, std::vector<std::vector<CVector3D>> parts) {
    CAnnotationFeature feature(kind);
    for (auto& part : parts) feature.AddPart(CGeometryData(part));
    OGRGeometryUniquePtr geometry = CGeometryConverter::ToOgr(feature);
    return geometry ? ToWkt(*geometry) : std::string("null");
  };
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 0}}}), "POINT Z (1 2 0)");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_LINESTRING, {{{0, 0, 1}, {1, 1, 2}}}),
            "LINESTRING Z (0 0 1,1 1 2)");
  // A ring stored open comes out closed.
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_POLYGON, {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}}),
            "POLYGON Z ((0 0 0,1 0 0,1 1 0,0 0 0))");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_MULTIPOINT, {{{1, 2, 3}}, {{4, 5, 6}}}),
            "MULTIPOINT Z ((1 2 3),(4 5 6))");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_MULTILINESTRING, {{{0, 0, 0}, {1, 1, 0}}}),
            "MULTILINESTRING Z ((0 0 0,1 1 0))");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_MULTIPOLYGON, {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}}}),
            "MULTIPOLYGON Z (((0 0 0,1 0 0,1 1 0,0 0 0)))");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_POINT, {}), "null");
  EXPECT_EQ(build(GEOMETRY_DATA_TYPE_UNKNOWN, {{{1, 2, 3}}}), "null");
}

TEST(GeometryConverter, ChoosesLayerTypesAndPromotesToThem) {
  using Kinds = std::set<E_GEOMETRY_DATA_TYPE>;
  EXPECT_EQ(CGeometryConverter::LayerType(Kinds{GEOMETRY_DATA_TYPE_POINT}), wkbPoint25D);
  EXPECT_EQ(CGeometryConverter::LayerType(
                Kinds{GEOMETRY_DATA_TYPE_POLYGON, GEOMETRY_DATA_TYPE_MULTIPOLYGON}),
            wkbMultiPolygon25D);
  EXPECT_EQ(CGeometryConverter::LayerType(Kinds{GEOMETRY_DATA_TYPE_MULTILINESTRING}),
            wkbMultiLineString25D);
  EXPECT_EQ(CGeometryConverter::LayerType(
                Kinds{GEOMETRY_DATA_TYPE_POINT, GEOMETRY_DATA_TYPE_LINESTRING}),
            wkbUnknown);
  EXPECT_EQ(CGeometryConverter::LayerType(Kinds{}), wkbUnknown);

  OGRGeometryUniquePtr promoted =
      CGeometryConverter::FitToLayerType(FromWkt("POINT Z (1 2 3)"), wkbMultiPoint25D);
  EXPECT_EQ(ToWkt(*promoted), "MULTIPOINT Z ((1 2 3))");
  OGRGeometryUniquePtr kept =
      CGeometryConverter::FitToLayerType(FromWkt("LINESTRING (0 0,1 1)"), wkbMultiPolygon25D);
  EXPECT_EQ(ToWkt(*kept), "LINESTRING (0 0,1 1)");
}

// ---- Fields ----

// Setting values back is checked by the export round trips (cli_test, cli_interop_test).
TEST(FieldConverter, GivesTypedValues) {
  OGRFeatureDefn* definition = new OGRFeatureDefn("t");
  definition->Reference();
  const struct {
    const char* name;
    OGRFieldType type;
    OGRFieldSubType subType;
  } columns[] = {{"i", OFTInteger, OFSTNone},   {"b", OFTInteger, OFSTBoolean},
                 {"l", OFTInteger64, OFSTNone}, {"r", OFTReal, OFSTNone},
                 {"s", OFTString, OFSTNone},    {"d", OFTDate, OFSTNone},
                 {"t", OFTDateTime, OFSTNone},  {"n", OFTString, OFSTNone},
                 {"il", OFTIntegerList, OFSTNone}};
  for (const auto& column : columns) {
    OGRFieldDefn field(column.name, column.type);
    field.SetSubType(column.subType);
    definition->AddFieldDefn(&field);
  }
  {
    OGRFeature feature(definition);
    feature.SetField(0, 7);
    feature.SetField(1, 1);
    feature.SetField(2, static_cast<GIntBig>(12345678901LL));
    feature.SetField(3, 2.5);
    feature.SetField(4, "\xE5\x8C\x97\xE4\xBA\xAC");  // UTF-8
    feature.SetField(5, 2024, 2, 29);
    feature.SetField(6, 2024, 2, 29, 13, 5, 9.5f, 100);
    feature.SetFieldNull(7);
    const int list[] = {1, 2, 3};
    feature.SetField(8, 3, list);

    EXPECT_EQ(CFieldConverter::ToVariant(feature, 0), QVariant(7));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 1), QVariant(true));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 2), QVariant(qlonglong(12345678901LL)));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 3), QVariant(2.5));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 4), QVariant(QString::fromUtf8("\xE5\x8C\x97\xE4\xBA\xAC")));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 5), QVariant(QString("2024-02-29")));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 6), QVariant(QString("2024-02-29T13:05:09.500Z")));
    EXPECT_FALSE(CFieldConverter::ToVariant(feature, 7).isValid());
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 8), QVariant(QString("(3:1,2,3)")));

  }
  definition->Release();
}

// ---- Styles ----

TEST(StyleConverter, ReadsPenBrushLabelAndSymbol) {
  CFeatureStyleSet styles;
  EXPECT_EQ(CStyleConverter::FromStyleString(
                "PEN(c:#FF0000,w:3pt,id:\"mapinfo-pen-2,ogr-pen-5\");"
                "BRUSH(fc:#00FF0080,bc:#0000FF,id:\"ogr-brush-4\",a:30,s:2);"
                "LABEL(f:\"Arial\",s:14px,t:\"x\",a:45,c:#112233,b:#445566,o:#778899,bo:1,it:1);"
                "SYMBOL(id:\"pin.png\",a:90,s:1.5)",
                &styles),
            4);
  ASSERT_EQ(styles.GetCount(), 4);
  const auto* pen = dynamic_cast<const CFeaturePenStyle*>(styles.At(0));
  ASSERT_NE(pen, nullptr);
  EXPECT_EQ(pen->GetIdentify(), OGR_PEN_DOT) << "the first OGR id of the list";
  EXPECT_EQ(pen->GetUnit(), GCS_UNIT_POINT);
  // Every value read shows when written back; the alpha, the text and the MapInfo id do not.
  EXPECT_EQ(CStyleConverter::ToStyleString(styles),
            "PEN(w:3pt,c:#ff0000,id:\"ogr-pen-5\");"
            "BRUSH(id:\"ogr-brush-4\",fc:#00ff00,bc:#0000ff,a:30,s:2);"
            "SYMBOL(id:\"pin.png\",a:90,s:1.5);"
            "LABEL(s:14px,f:\"Arial\",a:45,c:#112233,b:#445566,o:#778899,bo:1,it:1)");
}

TEST(StyleConverter, KeepsUnitsAndRoundTrips) {
  const char* const styles[] = {"PEN(w:2g,c:#010203,id:\"ogr-pen-0\")",
                                "PEN(w:1.5mm,id:\"ogr-pen-3\")",
                                "PEN(w:0.2in,c:#ffffff,id:\"ogr-pen-1\")",
                                "BRUSH(id:\"ogr-brush-1\",fc:#0a0b0c)",
                                "LABEL(s:9cm,c:#000000,un:1,st:1)"};
  for (const char* text : styles) {
    CFeatureStyleSet set;
    ASSERT_EQ(CStyleConverter::FromStyleString(text, &set), 1) << text;
    const std::string written = CStyleConverter::ToStyleString(set);
    CFeatureStyleSet again;
    ASSERT_EQ(CStyleConverter::FromStyleString(written, &again), 1) << written;
    EXPECT_EQ(CStyleConverter::ToStyleString(again), written) << text;
  }
  CFeatureStyleSet bare;
  ASSERT_EQ(CStyleConverter::FromStyleString("PEN(w:2)", &bare), 1);
  EXPECT_EQ(dynamic_cast<const CFeaturePenStyle*>(bare.At(0))->GetUnit(), GCS_UNIT_MILLIMETER)
      << "a bare number is in millimetres";
  EXPECT_EQ(CStyleConverter::ToStyleString(bare), "PEN(w:2mm,c:#000000,id:\"ogr-pen-0\")");
}

TEST(StyleConverter, IgnoresWhatItDoesNotKnow) {
  CFeatureStyleSet styles;
  EXPECT_EQ(CStyleConverter::FromStyleString("", &styles), 0);
  EXPECT_EQ(CStyleConverter::FromStyleString("not a style", &styles), 0);
  EXPECT_EQ(CStyleConverter::FromStyleString("@layerstyle", &styles), 0);
  EXPECT_EQ(styles.GetCount(), 0);
  EXPECT_EQ(CStyleConverter::ToStyleString(styles), "");
}

}  // namespace
