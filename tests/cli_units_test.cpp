// The building blocks of the command-line tool on their own: argument parsing, the driver choice
// and the conversions between OGR and the host's feature types.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogr_feature.h>
#include <ogr_geometry.h>

#include <limits>
#include <memory>

#include "AnnotationFeature.h"
#include "ArgumentParser.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "FieldConverter.h"
#include "GeometryConverter.h"
#include "StyleConverter.h"
#include "VectorFormat.h"

namespace {

OGRGeometryUniquePtr FromWkt(const char* wkt) {
  OGRGeometry* geometry = nullptr;
  OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry);
  return OGRGeometryUniquePtr(geometry);
}

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
  // Help wins over every mistake.
  ASSERT_TRUE(Parse({"--bogus", "-h"}));
  EXPECT_TRUE(parser_.HelpRequested());
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
  }
}

TEST(ArgumentNumbers, IntegersInRangeAndListsOfFiniteNumbers) {
  int64_t value = 0;
  EXPECT_TRUE(CArgumentParser::ParseInteger("42", 0, 100, &value));
  EXPECT_EQ(value, 42);
  for (const char* bad : {"", "4x", "-1", "101", "99999999999999999999"}) {
    EXPECT_FALSE(CArgumentParser::ParseInteger(bad, 0, 100, &value)) << bad;
  }
  std::vector<double> values;
  ASSERT_TRUE(CArgumentParser::ParseNumberList("-1.5,2,3e1,4", 4, &values));
  EXPECT_EQ(values, (std::vector<double>{-1.5, 2, 30, 4}));
  for (const char* bad : {"1,2,3", "1,2,3,4,", "1,,3,4", "1,2,nan,4", "1,2,x,4"}) {
    EXPECT_FALSE(CArgumentParser::ParseNumberList(bad, 4, &values)) << bad;
  }
}

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
  // The tool's own tests see the other refusals; a raster driver is refused here.
  EXPECT_EQ(CVectorFormat::ForOutput("a.gpkg", "GTiff", &error), nullptr);
  EXPECT_NE(error.find("cannot write vector data"), std::string::npos);
  EXPECT_EQ(CVectorFormat::ForOutput("a.d/out", "", &error), nullptr);
}

// The plain and multi forms of each kind come through the tool's imports (cli_test,
// cli_interop_test); here the forms those sources do not hold, and the refused ones.
TEST(GeometryConverter, MapsFormsToKindsOrRefusesThem) {
  using R = CGeometryConverter;
  const struct {
    const char* wkt;
    CGeometryConverter::E_RESULT result;
    E_GEOMETRY_DATA_TYPE kind;
    std::vector<std::vector<CVector3D>> parts;
  } cases[] = {
      {"POINT Z (1 2 3)", R::RESULT_CONVERTED, GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 3}}}},
      {"POINT M (1 2 9)", R::RESULT_CONVERTED, GEOMETRY_DATA_TYPE_POINT, {{{1, 2, 0}}}},
      {"POLYGON Z ((0 0 1,1 0 1,1 1 1,0 0 1),(0.2 0.2 1,0.3 0.2 1,0.3 0.3 1,0.2 0.2 1))",
       R::RESULT_CONVERTED, GEOMETRY_DATA_TYPE_POLYGON,
       {{{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 0, 1}}}},
      {"COMPOUNDCURVE ((0 0,1 0),(1 0,1 1))", R::RESULT_CONVERTED, GEOMETRY_DATA_TYPE_LINESTRING,
       {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}}},
      {"POINT EMPTY", R::RESULT_EMPTY, GEOMETRY_DATA_TYPE_UNKNOWN, {}},
      {"MULTIPOINT (EMPTY)", R::RESULT_EMPTY, GEOMETRY_DATA_TYPE_UNKNOWN, {}},
      {"GEOMETRYCOLLECTION (POINT (1 2))", R::RESULT_UNSUPPORTED, GEOMETRY_DATA_TYPE_UNKNOWN, {}},
      {"TIN (((0 0 0,0 1 0,1 1 0,0 0 0)))", R::RESULT_UNSUPPORTED, GEOMETRY_DATA_TYPE_UNKNOWN, {}},
  };
  CGeometryConverter converter;
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
  EXPECT_EQ(converter.ToFeature(nullptr, &feature), R::RESULT_EMPTY);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.wkt);
    ASSERT_EQ(converter.ToFeature(FromWkt(c.wkt).get(), &feature), c.result);
    EXPECT_EQ(feature.GetGeometryType(), c.kind);
    ASSERT_EQ(feature.GetPartCount(), static_cast<int>(c.parts.size()));
    for (size_t i = 0; i < c.parts.size(); ++i) {
      EXPECT_EQ(feature.GetPart(static_cast<int>(i)).Vertices(), c.parts[i]) << "part " << i;
    }
  }
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

  // GDAL never returns from reprojecting such coordinates out of Web Mercator (found by fuzzing
  // the GeoJSON import): they are refused before they get there, and ordinary ones still pass.
  ASSERT_TRUE(converter.SetSourceReference(&mercator, &error)) << error;
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
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 4),
              QVariant(QString::fromUtf8("\xE5\x8C\x97\xE4\xBA\xAC")));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 5), QVariant(QString("2024-02-29")));
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 6),
              QVariant(QString("2024-02-29T13:05:09.500Z")));
    EXPECT_FALSE(CFieldConverter::ToVariant(feature, 7).isValid());
    EXPECT_EQ(CFieldConverter::ToVariant(feature, 8), QVariant(QString("(3:1,2,3)")));
  }
  definition->Release();
}

TEST(StyleConverter, ReadsWritesAndRoundTripsEveryKindAndUnit) {
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

  // Units survive a round trip; a bare number is in millimetres; what is no style gives none.
  const char* const units[] = {"PEN(w:2g,c:#010203,id:\"ogr-pen-0\")",
                               "PEN(w:1.5mm,id:\"ogr-pen-3\")",
                               "PEN(w:0.2in,c:#ffffff,id:\"ogr-pen-1\")",
                               "BRUSH(id:\"ogr-brush-1\",fc:#0a0b0c)",
                               "LABEL(s:9cm,c:#000000,un:1,st:1)"};
  for (const char* text : units) {
    CFeatureStyleSet set;
    ASSERT_EQ(CStyleConverter::FromStyleString(text, &set), 1) << text;
    const std::string written = CStyleConverter::ToStyleString(set);
    CFeatureStyleSet again;
    ASSERT_EQ(CStyleConverter::FromStyleString(written, &again), 1) << written;
    EXPECT_EQ(CStyleConverter::ToStyleString(again), written) << text;
  }
  CFeatureStyleSet bare;
  ASSERT_EQ(CStyleConverter::FromStyleString("PEN(w:2)", &bare), 1);
  EXPECT_EQ(dynamic_cast<const CFeaturePenStyle*>(bare.At(0))->GetUnit(), GCS_UNIT_MILLIMETER);
  EXPECT_EQ(CStyleConverter::ToStyleString(bare), "PEN(w:2mm,c:#000000,id:\"ogr-pen-0\")");
  CFeatureStyleSet none;
  for (const char* text : {"", "not a style", "@layerstyle"}) {
    EXPECT_EQ(CStyleConverter::FromStyleString(text, &none), 0) << text;
  }
  EXPECT_EQ(CStyleConverter::ToStyleString(none), "");
}

}  // namespace
