// The `annotationlayer` tool on real data from end to end: GIS layers listed, measured and
// renumbered like other layers, KML styles kept feature by feature, and what `render` says it
// drew. Each runs the built tool as a child process on the bundled world atlas or on files
// written here.
#include <gtest/gtest.h>
#include <json/writer.h>

#include <cmath>
#include <set>

#include "AnnotationFeature.h"
#include "CliFixtures.h"
#include "SpatialiteDBDataModel.h"
#include "TempDir.h"
#include "TestDatabase.h"

namespace {

const std::string kAtlas =
    std::string(ANNOTATIONLAYER_SOURCE_DIR) + "/data/world-atlas/countries-110m.json";

// Two shared styles, one inline style, one feature without any.
const char kStyledKml[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<kml xmlns="http://www.opengis.net/kml/2.2"><Document>
<Style id="blue"><LineStyle><color>ffff0000</color><width>3</width></LineStyle></Style>
<Style id="green"><LineStyle><color>ff006400</color></LineStyle><PolyStyle><color>ff00ff00</color></PolyStyle></Style>
<Folder><name>roads</name>
<Placemark><name>blue</name><styleUrl>#blue</styleUrl><LineString><coordinates>0,0 1,1</coordinates></LineString></Placemark>
<Placemark><name>red</name><Style><LineStyle><color>ff0000ff</color></LineStyle></Style><LineString><coordinates>1,0 2,1</coordinates></LineString></Placemark>
<Placemark><name>plain</name><LineString><coordinates>2,0 3,1</coordinates></LineString></Placemark>
<Placemark><name>park</name><styleUrl>#green</styleUrl><Polygon><outerBoundaryIs><LinearRing><coordinates>0,2 1,2 1,3 0,2</coordinates></LinearRing></outerBoundaryIs></Polygon></Placemark>
</Folder></Document></kml>
)";

class CliJourneysTest : public CCliDatabaseTest {
 protected:
  Json::Value Json(std::vector<std::string> args) {
    args.push_back("--json");
    const CProcessResult result = RunTool(args);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return ParseJson(result.out);
  }

  // The tree's node named `name` (depth first), or null.
  static Json::Value Find(const Json::Value& node, const std::string& name) {
    if (node["name"].asString() == name) return node;
    for (const Json::Value& child : node["nodes"]) {
      const Json::Value found = Find(child, name);
      if (!found.isNull()) return found;
    }
    return Json::Value();
  }
};

void ExpectExtent(const Json::Value& extent, const std::vector<double>& expected) {
  ASSERT_EQ(extent.size(), 4u) << extent;
  for (Json::ArrayIndex i = 0; i < 4; ++i) EXPECT_NEAR(extent[i].asDouble(), expected[i], 1e-5);
}

// Every kind of GIS layer: its features listed and counted, each checked without a status row;
// its extent read from the geometry; renumbering says there is nothing to do. Then the U.S. states
// as a GIS layer, moved out of the layer the import made for the file (a copy, then a deletion of
// the original), and drawn.
TEST_F(CliJourneysTest, GisLayersAreListedMeasuredMovedAndDrawn) {
  const struct {
    const char* type;
    OGRwkbGeometryType kind;
    std::vector<std::string> wkts;
    std::vector<double> extent;
  } kCases[] = {
      {"gis-point", wkbPoint, {"POINT (10 20)", "POINT (-5 1)", "POINT (3 40)"}, {-5, 1, 10, 40}},
      {"gis-line", wkbLineString, {"LINESTRING (0 0,4 5)", "LINESTRING (-7 2,1 -3)"},
       {-7, -3, 4, 5}},
      {"gis-polygon", wkbPolygon, {"POLYGON ((100 10,120 10,120 30,100 10))"}, {100, 10, 120, 30}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.type);
    SourceLayer layer{c.type, c.kind, 4326, {}, {}};
    for (const std::string& wkt : c.wkts) layer.rows.push_back({wkt});
    const std::string source = dir_.File(std::string(c.type) + ".geojson");
    ASSERT_TRUE(WriteSource(source, "GeoJSON", {layer}));
    const CProcessResult imported = RunTool({"import", db_, source, "--layer-type", c.type});
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
    const std::string uuid = LayerUuid(db_, c.type);

    const Json::Value node = Find(Json({"tree", db_, "--features"}), c.type);
    EXPECT_EQ(node["children"].asUInt(), c.wkts.size());
    ASSERT_EQ(node["nodes"].size(), c.wkts.size()) << node;
    for (const Json::Value& feature : node["nodes"]) EXPECT_EQ(feature["check"], "checked");
    ExpectExtent(Json({"info", db_, uuid})["extent"], c.extent);

    const CProcessResult renumbered = RunTool({"rebuild-order", db_, uuid});
    EXPECT_EQ(renumbered.exitCode, 0) << renumbered.err;
    EXPECT_NE(renumbered.out.find("nothing to renumber"), std::string::npos) << renumbered.out;
  }
  ExpectExtent(Json({"info", db_, root_})["extent"], {-7, -3, 120, 40});

  const std::string states =
      std::string(ANNOTATIONLAYER_SOURCE_DIR) + "/data/us-atlas/states-10m.json";
  ASSERT_EQ(RunTool({"import", db_, states, "--layer-type", "gis-polygon"}).exitCode, 0);
  const Json::Value copied = Json({"copy", db_, LayerUuid(db_, "states"), "--to", root_});
  EXPECT_EQ(copied["nodes"].asInt(), 57);
  ASSERT_EQ(RunTool({"delete", db_, LayerUuid(db_, "states-10m")}).exitCode, 0);
  const Json::Value moved = Find(Json({"tree", db_, "--features"}), "states");
  EXPECT_EQ(moved["uuid"].asString(), copied["copy"].asString());
  EXPECT_EQ(moved["nodes"].size(), 56u);
  const Json::Value drawn = Json({"render", db_, "--extent", "-180,15,-60,75", "--size", "600x300",
                                  "-o", dir_.File("us.png")});
  EXPECT_EQ(drawn["drawn"].asInt(), 53) << "all but American Samoa, Guam and the Northern Marianas";
}

// The world atlas: every country listed, the extent that of the world's land, Fiji and eastern
// Russia (whose rings the file has leaping from +180 to -180) cut at the antimeridian so that no
// part draws a stripe around the world, and a view cut by the per-pass limit saying how much of
// it was left out; a .jpg is a JPEG.
TEST_F(CliJourneysTest, TheWorldAtlasIsListedMeasuredCutAndDrawn) {
  ASSERT_EQ(RunTool({"import", db_, kAtlas}).exitCode, 0);
  const Json::Value countries = Find(Json({"tree", db_, "--features"}), "countries");
  EXPECT_EQ(countries["children"].asInt(), 177);
  EXPECT_EQ(countries["nodes"].size(), 177u);
  ExpectExtent(Json({"info", db_, LayerUuid(db_, "countries-110m")})["extent"],
               {-180, -85.609038, 180, 83.64513});
  CSpatialiteDBDataModel model;
  model.Initialize("reader");
  ASSERT_TRUE(model.Install(db_));
  for (const char* name : {"Fiji", "Russia"}) {
    SCOPED_TRACE(name);
    CAnnotationFeature shape;
    const std::string uuid =
        QueryScalar(db_, std::string("SELECT uuid FROM shape WHERE name = '") + name + "'");
    ASSERT_TRUE(model.QueryGeometryData(uuid, &shape));
    EXPECT_GT(shape.GetPartCount(), 1);
    for (int p = 0; p < shape.GetPartCount(); ++p) {
      const CGeometryData& part = shape.GetPart(p);
      for (int i = 1; i < part.GetSize(); ++i) {
        ASSERT_LE(std::fabs(part.At(i).X() - part.At(i - 1).X()), 180) << "part " << p;
      }
    }
  }
  model.Uninstall();
  const std::string jpg = dir_.File("world.jpg");
  const Json::Value drawn = Json({"render", db_, "--extent", "-180,-90,180,90", "--size",
                                  "256x128", "--max-features", "10", "-o", jpg});
  EXPECT_TRUE(drawn["cut"].asBool()) << drawn;
  EXPECT_EQ(drawn["in_view"].asInt(), 178) << "177 countries and the land";
  EXPECT_EQ(ReadFileBytes(jpg).substr(0, 3), "\xFF\xD8\xFF");
}

// KML's shared, inline and missing styles: each feature drawn as its source says, the unstyled
// one with the default rather than its neighbour's colours.
TEST_F(CliJourneysTest, KmlStylesStayWithTheirFeatures) {
  const std::string kml = dir_.File("styled.kml");
  ASSERT_TRUE(WriteFileBytes(kml, kStyledKml));
  const CProcessResult imported = RunTool({"import", db_, kml, "--name-field", "Name"});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  const Json::Value tree = Json({"tree", db_, "--features"});
  const struct {
    const char* feature;
    const char* style;
    const char* key;
    const char* colour;
  } kCases[] = {
      {"blue", "pen", "c", "#0000ff"},   // a shared style through styleUrl
      {"red", "pen", "c", "#ff0000"},    // a style of its own
      {"plain", "pen", "c", "#000000"},  // none: the host's default
      {"park", "brush", "fc", "#00ff00"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.feature);
    const Json::Value style =
        Json({"info", db_, Find(tree, c.feature)["uuid"].asString()})["style"];
    EXPECT_EQ(style[c.style][c.key].asString(), c.colour) << style;
  }
  EXPECT_TRUE(
      Json({"info", db_, Find(tree, "plain")["uuid"].asString()})["style"]["brush"].isNull());
  // The park's fill survives the way out to KML (GDAL's plain KML writer would drop it).
  const std::string out = dir_.File("out.kml");
  const CProcessResult exported =
      RunTool({"export", db_, Find(tree, "roads")["uuid"].asString(), out});
  ASSERT_EQ(exported.exitCode, 0) << exported.err;
  EXPECT_NE(ReadFileBytes(out).find("<color>ff00ff00</color>"), std::string::npos);
}

}  // namespace

// What `query --extent` lists is what meets the rectangle, edges included, as `ogrinfo -spat`
// gives it: not a line whose box meets the rectangle while the line itself passes it by.
TEST_F(CliJourneysTest, QueryListsWhatMeetsTheRectangleEdgesIncluded) {
  const std::string source = dir_.File("near.geojson");
  const auto feature = [](const char* name, const char* geometry) {
    return std::string(R"({"type":"Feature","properties":{"name":")") + name +
           R"("},"geometry":)" + geometry + "}";
  };
  ASSERT_TRUE(WriteFileBytes(
      source,
      R"({"type":"FeatureCollection","features":[)" +
          feature("edge", R"({"type":"Point","coordinates":[4,2]})") + "," +
          feature("inside", R"({"type":"Point","coordinates":[1,1]})") + "," +
          feature("outside", R"({"type":"Point","coordinates":[5,1]})") + "," +
          feature("passing", R"({"type":"LineString","coordinates":[[3.5,3.5],[5,2.9]]})") + "," +
          feature("crossing", R"({"type":"LineString","coordinates":[[2,2],[9,9]]})") + "]}"));
  ASSERT_EQ(RunTool({"import", db_, source}).exitCode, 0);
  std::set<std::string> names;
  for (const Json::Value& found : Json({"query", db_, "--extent", "0,0,4,3"})) {
    names.insert(found["name"].asString());
    EXPECT_EQ(found["layer"].asString(), LayerUuid(db_, "near"));
  }
  EXPECT_EQ(names, (std::set<std::string>{"crossing", "edge", "inside"}));
  const CProcessResult limited = RunTool({"query", db_, "--extent", "0,0,4,3", "--limit", "2"});
  EXPECT_EQ(LineCount(limited.out), 2) << limited.out;
  EXPECT_EQ(RunTool({"query", db_, "--extent", "-10,-10,-5,-5"}).out, "");
}
