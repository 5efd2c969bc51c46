// The `annotationlayer` tool end to end: each subcommand run as a child process on real files in a
// temporary directory, checked by its exit code, its output and what the database holds after.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <filesystem>
#include <set>

#include "CliFixtures.h"
#include "TempDir.h"
#include "TestDatabase.h"

namespace {

using CliTest = CCliDatabaseTest;

TEST(CliHelpTest, ToolHelpListsEveryCommand) {
  const CProcessResult result = RunTool({"--help"});
  EXPECT_EQ(result.exitCode, 0);
  for (const char* command : {"create", "import", "export", "tree", "info", "query", "delete",
                              "copy", "rebuild-order", "render"}) {
    EXPECT_NE(result.out.find(std::string("\n  ") + command + " "), std::string::npos) << command;
    const CProcessResult help = RunTool({command, "--help"});
    EXPECT_EQ(help.exitCode, 0) << command;
    EXPECT_EQ(help.out.rfind(std::string("usage: annotationlayer ") + command, 0), 0u) << help.out;
    EXPECT_NE(help.out.find("--verbose"), std::string::npos);
    EXPECT_EQ(help.err, "");
  }
  EXPECT_EQ(RunTool({"help", "query"}).out, RunTool({"query", "--help"}).out);
  EXPECT_EQ(RunTool({"--version"}).exitCode, 0);
  EXPECT_EQ(RunTool({}).exitCode, 2);
}

TEST_F(CliTest, CreateMakesAnEmptyDatabase) {
  EXPECT_EQ(QueryScalar(db_, "SELECT uuid FROM folder WHERE type = 1"), root_);
  EXPECT_EQ(Count("layer"), "0");
  // Only WGS 84's reference systems, not the whole EPSG table: well under a megabyte.
  EXPECT_EQ(QueryScalar(db_, "SELECT COUNT(*) FROM spatial_ref_sys WHERE srid = 4326"), "1");
  EXPECT_LT(ReadFileBytes(db_).size(), 512u * 1024);
  const CProcessResult text = RunTool({"create", dir_.File("second.db")});
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_EQ(text.out.rfind("created " + dir_.File("second.db") + " (top root folder ", 0), 0u);
  const CProcessResult verbose = RunTool({"tree", db_, "--verbose"});
  EXPECT_NE(verbose.err.find("[info] module: "), std::string::npos) << "the module's log lines";
}

// Every refusal of every command: one line on standard error, the usage code for mistakes in the
// arguments, and no file written or changed; an export refuses when any file it would make exists
// (a format's side file, or that of a further layer a shapefile puts beside the first).
TEST_F(CliTest, FailuresAreOneLineAndWriteNothing) {
  const std::string layer = ImportPoints("pts", 2);
  ImportPoints("more", 2);
  const std::string feature = ChildUuids(db_, layer).front();
  const std::string source = dir_.File("pts.geojson");
  const std::string text = dir_.File("notes.txt");
  ASSERT_TRUE(WriteFileBytes(text, "this is not a database, nor vector data\n"));
  const std::string plainSqlite = dir_.File("plain.db");
  ASSERT_TRUE(WriteFileBytes(plainSqlite, ""));  // an empty file is an empty SQLite database
  const std::string existing = dir_.File("exists.gpkg");
  ASSERT_TRUE(WriteFileBytes(existing, "mine"));
  const std::string csv = dir_.File("sites.csv"), emptyCsv = dir_.File("empty.csv");
  ASSERT_TRUE(WriteFileBytes(csv, "name,lng,lat\nwell,100.5,30.25\n"));
  ASSERT_TRUE(WriteFileBytes(emptyCsv, "name,WKT\n"));
  for (const char* side : {"x.dbf", "c.prj", "more.shx"}) {
    ASSERT_TRUE(WriteFileBytes(dir_.File(side), "mine"));
  }
  const std::string before = ReadFileBytes(db_);
  const struct {
    std::vector<std::string> args;
    int code;
    std::string fragment;
  } cases[] = {
      {{"frobnicate"}, 2, "unknown command 'frobnicate'"},
      {{"tree"}, 2, "annotationlayer tree: missing DB"},
      {{"tree", "a.db", "--depth", "x"}, 2, "--depth"},
      {{"query", "a.db"}, 2, "--extent is required"},
      {{"copy", "a.db", "u"}, 2, "--to is required"},
      {{"create", db_}, 1, "exists already"},
      {{"create", dir_.File("missing/dir/a.db")}, 1, "cannot create"},
      {{"import", db_, source, "--under", feature}, 1, "--under must name a folder or a layer"},
      {{"import", db_, source, "--under", "x'; DROP TABLE shape; --"}, 2, "is not a node uuid"},
      {{"import", db_, source, "--layer-type", "cubes"}, 2, "--layer-type"},
      {{"import", db_, source, "--layer-type", "gis-line"}, 1,
       "a gis-line layer holds line geometries only"},
      {{"import", db_, csv}, 1, "no feature to import (1 skipped, 1 without geometry)"},
      {{"import", db_, emptyCsv}, 1, "the source gave no feature to import; nothing was imported"},
      {{"import", db_, csv, "--oo", "X_POSSIBLE_NAMES"}, 2, "--oo wants NAME=VALUE"},
      {{"import", db_, source, "--name-field", "nope"}, 1,
       "no layer of " + source + " has a field named 'nope'"},
      {{"import", db_, dir_.File("absent.geojson")}, 1, "absent.geojson: no such file"},
      {{"import", db_, text}, 1, "cannot read " + text + " as vector data"},
      {{"import", dir_.File("absent.db"), source}, 1, "absent.db: no such file"},
      {{"import", text, source}, 1, "is not an SQLite database"},
      {{"import", plainSqlite, source}, 1, "is not an annotation database"},
      {{"import", dir_.Path(), source}, 1, "is a directory"},
      {{"info", db_, std::string(32, '0')}, 1, "no folder, layer or feature has the uuid"},
      {{"info", db_, "a'b"}, 1, "'a'b' is not a node uuid"},
      {{"query", db_, "--extent", "1,2,3"}, 2, "four numbers"},
      {{"query", db_, "--extent", "5,5,1,1"}, 2, "MINX <= MAXX"},
      {{"query", db_, "--extent", "0,0,1,1", "--limit", "-3"}, 2, "--limit"},
      {{"delete", db_, root_}, 1, "top root folder cannot be deleted"},
      {{"delete", db_, feature}, 1, "takes a folder or a layer"},
      {{"export", db_, layer, existing}, 1, "exists already"},
      {{"export", db_, root_, dir_.File("two.geojson")}, 1, "holds one layer only"},
      {{"export", db_, layer, dir_.File("x.unknownext")}, 2, "no GDAL driver writes"},
      {{"export", db_, layer, dir_.File("x"), "--format", "Nope"}, 2, "unknown format 'Nope'"},
      {{"export", db_, layer, dir_.File("t.gpkg"), "--tree"}, 2, "--tree writes OUT.kml"},
      {{"export", db_, layer, dir_.File("t.kml"), "--tree", "--format", "KML"}, 2,
       "--format does not go with --tree"},
      {{"export", db_, feature, dir_.File("f.gpkg")}, 1, "is a feature"},
      {{"export", db_, layer, dir_.File("no/such/dir/a.gpkg")}, 1, "cannot create"},
      {{"export", db_, layer, dir_.File("x.shp")}, 1, "would overwrite " + dir_.File("x.dbf")},
      {{"export", db_, layer, dir_.File("c.csv")}, 1, "would overwrite " + dir_.File("c.prj")},
      {{"export", db_, root_, dir_.File("all.shp")}, 1, "would overwrite " + dir_.File("more.shx")},
      {{"rebuild-order", db_, feature}, 1, "a feature has no children"},
      {{"copy", db_, layer, "--to", layer}, 1, "own subtree"},
      {{"copy", db_, feature, "--to", root_}, 1, "a feature can only be copied under a layer"},
      {{"copy", db_, root_, "--to", layer}, 1, "a folder can only be copied under a folder"},
      {{"copy", db_, layer, "--to", feature}, 1, "not a feature"},
      {{"copy", db_, layer, "--to", "bad uuid"}, 1, "--to: 'bad uuid' is not a node uuid"},
  };
  for (const auto& c : cases) ExpectOneLineFailure(RunTool(c.args), c.code, c.fragment);
  EXPECT_EQ(ReadFileBytes(db_), before);
  EXPECT_EQ(ReadFileBytes(text), "this is not a database, nor vector data\n");
  for (const char* kept : {"exists.gpkg", "x.dbf", "c.prj", "more.shx"}) {
    EXPECT_EQ(ReadFileBytes(dir_.File(kept)), "mine") << kept;
  }
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir_.Path())) {
    files.insert(entry.path().filename().string());
  }
  EXPECT_EQ(files, (std::set<std::string>{"notes.db", "pts.geojson", "more.geojson", "notes.txt",
                                          "plain.db", "exists.gpkg", "sites.csv", "empty.csv",
                                          "x.dbf", "c.prj", "more.shx"}))
      << "nothing written, no staging left";
}

// An imported GeoJSON file: typed fields in source order, names from --name-field, Z; and `info`
// on each kind of node.
TEST_F(CliTest, ImportBringsTypedFieldsAndInfoDescribesEachNode) {
  const std::string source = dir_.File("cities.geojson");
  ASSERT_TRUE(WriteSource(source, "GeoJSON", {PointLayer("cities", 25)}));
  const CProcessResult result = RunTool({"import", db_, source, "--name-field", "name"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out.rfind("imported 25 features into 1 layer in ", 0), 0u) << result.out;
  EXPECT_NE(result.out.find("(reading "), std::string::npos);
  EXPECT_EQ(result.err, "") << "no progress bar when standard error is not a terminal";

  const std::string layer = LayerUuid(db_, "cities");
  ASSERT_FALSE(layer.empty());
  const std::vector<StoredFeature> features = ReadLayer(db_, layer);
  ASSERT_EQ(features.size(), 25u);
  const StoredFeature& third = features[3];
  EXPECT_EQ(third.name, "p3");
  EXPECT_EQ(third.kind, GEOMETRY_DATA_TYPE_POINT);
  ASSERT_EQ(third.parts.size(), 1u);
  EXPECT_EQ(third.parts[0], (std::vector<CVector3D>{CVector3D(100.03, 30, 0)}));
  EXPECT_EQ(third.fields.at("name"), QVariant(QString("p3")));
  EXPECT_EQ(third.fields.at("pop"), QVariant(30));
  EXPECT_EQ(third.fields.at("area"), QVariant(3.5));
  EXPECT_EQ(third.fields.at("big"), QVariant(qlonglong(10000000003LL)));
  EXPECT_EQ(third.fields.at("flag"), QVariant(false));
  // The layer's field header lists the fields in source order with their types.
  EXPECT_EQ(QueryScalar(db_, "SELECT property_header FROM layer WHERE uuid = '" + layer + "'"),
            "name,,7;pop,,3;area,,6;big,,4;flag,,1;");

  const std::string feature = ChildUuids(db_, layer)[1];
  const Json::Value root = ParseJson(RunTool({"info", db_, root_, "--json"}).out);
  EXPECT_EQ(root["kind"].asString(), "folder");
  EXPECT_EQ(root["type"].asString(), "root");
  EXPECT_EQ(root["children"].asInt(), 1);
  EXPECT_DOUBLE_EQ(root["extent"][0].asDouble(), 100.0);
  EXPECT_DOUBLE_EQ(root["extent"][2].asDouble(), 100.24);

  const Json::Value info = ParseJson(RunTool({"info", db_, layer, "--json"}).out);
  EXPECT_EQ(info["kind"].asString(), "layer");
  EXPECT_EQ(info["name"].asString(), "cities");
  EXPECT_EQ(info["parent"].asString(), root_);
  EXPECT_EQ(info["children"].asInt(), 25);
  ASSERT_EQ(info["fields"].size(), 5u);
  EXPECT_EQ(info["fields"][3]["key"].asString(), "big");
  EXPECT_EQ(info["fields"][3]["type"].asString(), "int64");
  EXPECT_DOUBLE_EQ(info["extent"][1].asDouble(), 30.0);

  const Json::Value one = ParseJson(RunTool({"info", db_, feature, "--json"}).out);
  EXPECT_EQ(one["kind"].asString(), "feature");
  EXPECT_EQ(one["name"].asString(), "p1");
  EXPECT_EQ(one["parent"].asString(), layer);
  EXPECT_EQ(one["geometry"]["kind"].asString(), "point");
  EXPECT_EQ(one["geometry"]["vertices"].asInt(), 1);
  EXPECT_DOUBLE_EQ(one["extent"][0].asDouble(), 100.01);
  EXPECT_EQ(one["fields"][1]["value"].asInt(), 10);
  EXPECT_EQ(one["fields"][4]["value"].asBool(), false);

  const CProcessResult text = RunTool({"info", db_, feature});
  EXPECT_NE(text.out.find("kind: feature\nuuid: " + feature + "\nname: p1\n"), std::string::npos)
      << text.out;
  EXPECT_NE(text.out.find("  big (int64) = 10000000001\n"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("extent: 100.01 30 100.01 30\n"), std::string::npos) << text.out;
}

// What an import skips is counted, in JSON and in text: features without geometry, of a kind the
// layer cannot hold and, from a Web Mercator file with a point at 1e30 that once hung the import
// inside GDAL for good (a seed of the fuzz corpus), coordinates too large to transform. A point and
// a line cannot share a shapefile: the failed export removes the files it half wrote.
TEST_F(CliTest, ImportCountsWhatItSkippedAndAFailedExportRemovesItsFiles) {
  SourceLayer layer;
  layer.name = "mixed";
  layer.fields = {{"name", OFTString}};
  layer.rows = {{"POINT (1 2)", {"a"}},
                {"", {"no geometry"}},
                {"GEOMETRYCOLLECTION (POINT (1 2))", {"collection"}},
                {"POLYGON ((0 0,4 0,4 4,0 0),(1 1,2 1,2 2,1 1))", {"holed"}},
                {"LINESTRING Z (0 0 5,1 1 6)", {"line"}}};
  const std::string source = dir_.File("mixed.gpkg");
  ASSERT_TRUE(WriteSource(source, "GPKG", {layer}));
  const CProcessResult result = RunTool({"import", db_, source, "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const Json::Value summary = ParseJson(result.out);
  EXPECT_EQ(summary["features"].asInt(), 3);
  EXPECT_EQ(summary["layers"].asInt(), 1);
  EXPECT_EQ(summary["skipped"]["without_geometry"].asInt(), 1);
  EXPECT_EQ(summary["skipped"]["unsupported_kind"].asInt(), 1);
  EXPECT_EQ(summary["dropped_interior_rings"].asInt(), 1);
  EXPECT_EQ(summary["parent"].asString(), root_);
  EXPECT_EQ(summary["layer"].asString(), LayerUuid(db_, "mixed"));
  for (const char* key : {"seconds", "read_seconds", "convert_seconds", "write_seconds"}) {
    EXPECT_TRUE(summary[key].isDouble()) << key;
  }
  const std::vector<StoredFeature> features = ReadLayer(db_, LayerUuid(db_, "mixed"));
  ASSERT_EQ(features.size(), 3u);
  EXPECT_EQ(features[1].kind, GEOMETRY_DATA_TYPE_POLYGON);
  EXPECT_EQ(features[1].parts.size(), 1u) << "the exterior ring only";
  EXPECT_EQ(features[2].parts[0][1], CVector3D(1, 1, 6));

  const CProcessResult text = RunTool({"import", db_, source});
  EXPECT_NE(text.out.find("; skipped 2 (1 without geometry, 1 of an unsupported kind, 0 not "
                          "transformable); dropped 1 interior rings"),
            std::string::npos)
      << text.out;
  const std::string corpus = std::string(ANNOTATIONLAYER_SOURCE_DIR) +
                             "/fuzz/corpus/fuzz_geojson_import/with_crs.geojson";
  const Json::Value huge = ParseJson(RunTool({"import", db_, corpus, "--json"}).out);
  EXPECT_EQ(huge["features"].asInt(), 1);
  EXPECT_EQ(huge["skipped"]["not_transformable"].asInt(), 1);
  EXPECT_EQ(Count("shape"), "7");

  const std::string shp = dir_.File("mixed.shp");
  ExpectOneLineFailure(RunTool({"export", db_, LayerUuid(db_, "mixed"), shp}), 1, "was removed");
  EXPECT_FALSE(FileExists(shp));
  EXPECT_FALSE(FileExists(dir_.File("mixed.dbf")));
}

TEST_F(CliTest, ImportCarriesOgrStylesIntoTheStyleTables) {
  SourceLayer styled;
  styled.name = "styled";
  styled.fields = {{"OGR_STYLE", OFTString}};
  styled.rows = {{"LINESTRING (0 0,1 1)", {"PEN(c:#FF0000,w:2px);LABEL(f:\"Arial\",s:12pt)"}},
                 {"POINT (1 1)", {""}}};
  const std::string source = dir_.File("styled.geojson");
  ASSERT_TRUE(WriteSource(source, "GeoJSON", {styled}));
  const CProcessResult result = RunTool({"import", db_, source, "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(ParseJson(result.out)["styled"].asInt(), 1);

  const std::vector<std::string> features = ChildUuids(db_, LayerUuid(db_, "styled"));
  ASSERT_EQ(features.size(), 2u);
  const Json::Value info = ParseJson(RunTool({"info", db_, features[0], "--json"}).out);
  EXPECT_EQ(info["style"]["pen"]["c"].asString(), "#ff0000");
  EXPECT_EQ(info["style"]["pen"]["w"].asDouble(), 2.0);
  EXPECT_EQ(info["style"]["pen"]["u"].asInt(), 1) << "pixels";
  EXPECT_EQ(info["style"]["label"]["f"].asString(), "Arial");
  EXPECT_EQ(info["style"]["label"]["s"].asDouble(), 12.0);
  // The layer takes the first style of each kind; the unstyled feature shows the layer's.
  const Json::Value plain = ParseJson(RunTool({"info", db_, features[1], "--json"}).out);
  EXPECT_EQ(plain["style"]["pen"]["c"].asString(), "#ff0000");
  EXPECT_EQ(Count("shape_style"), "1");
  EXPECT_EQ(Count("layer_style"), "1");
}

// A folder goes out as one layer per annotation layer, names made unique; OGR reads the
// attributes and Z, and an import of the file gives the same features back.
TEST_F(CliTest, ExportWritesALayerPerLayerThatImportsBackTheSame) {
  SourceLayer roads;
  roads.name = "roads";
  roads.rows = {{"LINESTRING (0 0,1 1)", {}}};
  const std::string town = dir_.File("town.gpkg");
  ASSERT_TRUE(WriteSource(town, "GPKG", {roads, PointLayer("shops", 3)}));
  ASSERT_EQ(RunTool({"import", db_, town}).exitCode, 0);
  ImportPoints("shops", 2);  // a second layer of the same name
  SourceLayer areas;
  areas.name = "areas";
  areas.fields = {{"name", OFTString}, {"rank", OFTInteger64}, {"share", OFTReal}};
  areas.rows = {{"POLYGON Z ((0 0 1,1 0 1,1 1 1,0 0 1))", {"one", "1", "0.25"}},
                {"MULTIPOLYGON (((5 5,6 5,6 6,5 5)),((7 7,8 7,8 8,7 7)))", {"two", "", "0.5"}},
                {"POLYGON ((10 10,11 10,11 11,10 10))", {"three", "3", ""}}};
  ASSERT_TRUE(WriteSource(dir_.File("areas.gpkg"), "GPKG", {areas}));
  ASSERT_EQ(RunTool({"import", db_, dir_.File("areas.gpkg"), "--name-field", "name"}).exitCode, 0);

  const std::string out = dir_.File("all.gpkg");
  const CProcessResult result = RunTool({"export", db_, root_, out});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out.rfind("exported 9 features in 4 layers to " + out + " (GPKG)", 0), 0u)
      << result.out;
  {
    GDALDatasetUniquePtr dataset(GDALDataset::Open(out.c_str(), GDAL_OF_VECTOR));
    ASSERT_TRUE(dataset);
    ASSERT_EQ(dataset->GetLayerCount(), 4) << "the group layer 'town' holds no features of its own";
    EXPECT_STREQ(dataset->GetLayer(0)->GetName(), "roads");
    EXPECT_STREQ(dataset->GetLayer(1)->GetName(), "shops");
    EXPECT_STREQ(dataset->GetLayer(2)->GetName(), "shops_2");
    EXPECT_EQ(dataset->GetLayer(2)->GetFeatureCount(), 2);
    OGRLayer* layer = dataset->GetLayer(3);
    EXPECT_STREQ(layer->GetName(), "areas");
    EXPECT_EQ(layer->GetGeomType(), wkbMultiPolygon25D);
    OGRFeatureUniquePtr first(layer->GetNextFeature());
    EXPECT_EQ(first->GetFieldAsDouble("share"), 0.25);
    EXPECT_EQ(first->GetGeometryRef()->exportToWkt(), "MULTIPOLYGON (((0 0 1,1 0 1,1 1 1,0 0 1)))");
    OGRFeatureUniquePtr second(layer->GetNextFeature());
    EXPECT_TRUE(second->IsFieldNull(second->GetFieldIndex("rank")));
  }
  const Json::Value summary = ParseJson(RunTool({"export", db_, LayerUuid(db_, "areas"),
                                                 dir_.File("areas"), "--format", "FlatGeobuf",
                                                 "--json"}).out);
  EXPECT_EQ(summary["format"].asString(), "FlatGeobuf");
  EXPECT_EQ(summary["layers"].asInt(), 1);
  EXPECT_EQ(summary["features"].asInt(), 3);

  const std::string copyDb = dir_.File("copy.db");
  ASSERT_EQ(RunTool({"create", copyDb}).exitCode, 0);
  ASSERT_EQ(RunTool({"import", copyDb, out, "--name-field", "name"}).exitCode, 0);
  const std::vector<StoredFeature> original = ReadLayer(db_, LayerUuid(db_, "areas"));
  const std::vector<StoredFeature> again = ReadLayer(copyDb, LayerUuid(copyDb, "areas"));
  ASSERT_EQ(again.size(), original.size());
  for (size_t i = 0; i < original.size(); ++i) {
    EXPECT_TRUE(again[i] == original[i]) << Describe(original[i]) << "\n" << Describe(again[i]);
  }
}

// `tree` in text and JSON, to a depth, with or without features. Names pass through the module's
// local code page and come out as UTF-8 again.
TEST_F(CliTest, TreeShowsKindsNamesChecksAndCountsInSiblingOrder) {
  const std::string a = ImportPoints("alpha", 3);
  const std::string b = ImportPoints("beta", 1);
  const CProcessResult text = RunTool({"tree", db_});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  EXPECT_EQ(text.out, "folder \"Root\" [checked] 2 children  " + root_ + "\n" +
                          "  layer \"alpha\" [checked] 3 children  " + a + "\n" +
                          "  layer \"beta\" [checked] 1 child  " + b + "\n");

  const Json::Value tree = ParseJson(RunTool({"tree", db_, "--json", "--features"}).out);
  EXPECT_EQ(tree["uuid"].asString(), root_);
  ASSERT_EQ(tree["nodes"].size(), 2u);
  const Json::Value& alpha = tree["nodes"][0];
  EXPECT_EQ(alpha["kind"].asString(), "layer");
  EXPECT_EQ(alpha["type"].asString(), "annotation");
  ASSERT_EQ(alpha["nodes"].size(), 3u);
  EXPECT_EQ(alpha["nodes"][2]["kind"].asString(), "feature");
  EXPECT_EQ(alpha["nodes"][2]["type"].asString(), "point");
  EXPECT_EQ(alpha["nodes"][2]["check"].asString(), "checked");

  const Json::Value shallow = ParseJson(RunTool({"tree", db_, "--json", "--depth", "0"}).out);
  EXPECT_EQ(shallow["children"].asInt(), 2);
  EXPECT_FALSE(shallow.isMember("nodes"));
  const CProcessResult features = RunTool({"tree", db_, "--features", "--depth", "1"});
  EXPECT_EQ(LineCount(features.out), 3) << "layers at depth 1, their features below the limit";

  SourceLayer layer;
  layer.name = "\xE5\x9F\x8E\xE5\xB8\x82";  // 城市
  layer.fields = {{"\xE5\x90\x8D\xE7\xA7\xB0", OFTString}};  // 名称
  layer.rows = {{"POINT (116.4 39.9)", {"\xE5\x8C\x97\xE4\xBA\xAC"}}};  // 北京
  const std::string source = dir_.File("cities.geojson");
  ASSERT_TRUE(WriteSource(source, "GeoJSON", {layer}));
  const CProcessResult imported =
      RunTool({"import", db_, source, "--name-field", "\xE5\x90\x8D\xE7\xA7\xB0"});
  ASSERT_EQ(imported.exitCode, 0) << imported.err;
  const Json::Value chinese =
      ParseJson(RunTool({"tree", db_, "--features", "--json"}).out)["nodes"][2];
  EXPECT_EQ(chinese["name"].asString(), "\xE5\x9F\x8E\xE5\xB8\x82");
  EXPECT_EQ(chinese["nodes"][0]["name"].asString(), "\xE5\x8C\x97\xE4\xBA\xAC");
  const Json::Value info =
      ParseJson(RunTool({"info", db_, chinese["nodes"][0]["uuid"].asString(), "--json"}).out);
  EXPECT_EQ(info["fields"][0]["key"].asString(), "\xE5\x90\x8D\xE7\xA7\xB0");
  EXPECT_EQ(info["fields"][0]["value"].asString(), "\xE5\x8C\x97\xE4\xBA\xAC");
}

// Deleting takes everything below the node along, and the node leaves its sibling list: walks see
// its neighbours joined, whether they are layers or features and wherever it stood.
TEST_F(CliTest, DeleteRemovesSubtreesAndKeepsSiblingListsWhole) {
  const std::string a = ImportPoints("a", 1), b = ImportPoints("b", 40), c = ImportPoints("c", 1);
  const CProcessResult result = RunTool({"delete", db_, b, "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const Json::Value summary = ParseJson(result.out);
  EXPECT_EQ(summary["kind"].asString(), "layer");
  EXPECT_EQ(summary["features"].asInt(), 40);
  EXPECT_EQ(Count("shape") + "/" + Count("shape_property"), "2/10");
  EXPECT_EQ(ChildUuids(db_, root_), (std::vector<std::string>{a, c}));
  ASSERT_EQ(RunTool({"delete", db_, a}).exitCode, 0);
  EXPECT_EQ(ChildUuids(db_, root_), (std::vector<std::string>{c}));

  // Layer c: its feature, the layer s, the group layer town (a multi-layer import: x and y), then
  // a copied feature.
  const std::string feature = ChildUuids(db_, c).front();
  const std::string s = ImportPoints("s", 1, {"--under", c});
  const std::string town = dir_.File("town.gpkg");
  ASSERT_TRUE(WriteSource(town, "GPKG", {PointLayer("x", 2), PointLayer("y", 3)}));
  const CProcessResult imported = RunTool({"import", db_, town, "--under", c});
  EXPECT_EQ(imported.out.rfind("imported 5 features into 3 layers", 0), 0u) << imported.out;
  const std::string group = LayerUuid(db_, "town");
  EXPECT_EQ(ChildUuids(db_, group),
            (std::vector<std::string>{LayerUuid(db_, "x"), LayerUuid(db_, "y")}));
  const CProcessResult copied = RunTool({"copy", db_, feature, "--to", c});
  ASSERT_EQ(copied.exitCode, 0) << copied.err;
  const std::string copy = copied.out.substr(0, 32);
  EXPECT_EQ(ChildUuids(db_, c), (std::vector<std::string>{feature, s, group, copy}));

  const CProcessResult deleted = RunTool({"delete", db_, group});  // between a layer and a feature
  ASSERT_EQ(deleted.exitCode, 0) << deleted.err;
  EXPECT_EQ(deleted.out.rfind("deleted layer ", 0), 0u);
  EXPECT_NE(deleted.out.find("(5 features)"), std::string::npos) << deleted.out;
  EXPECT_EQ(Count("layer"), "2");
  EXPECT_EQ(ChildUuids(db_, c), (std::vector<std::string>{feature, s, copy}));
  ASSERT_EQ(RunTool({"delete", db_, s}).exitCode, 0);  // between two features
  EXPECT_EQ(RunTool({"tree", db_, "--features"}).out,
            "folder \"Root\" [checked] 1 child  " + root_ + "\n" +
                "  layer \"c\" [checked] 2 children  " + c + "\n" +
                "    feature \"p0\" [checked] point  " + feature + "\n" +
                "    feature \"p0\" [checked] point  " + copy + "\n");
}

// A copy of a layer holds the same features and goes last under its target; a copy into the
// node's own subtree is refused. Renumbering then mends broken lists: the root's alone, or every
// list below it.
TEST_F(CliTest, CopyDuplicatesSubtreesAndRebuildOrderRenumbersBrokenLists) {
  const std::string layer = ImportPoints("pts", 4);
  const std::string sub = ImportPoints("sub", 2, {"--name-field", "name"});
  const CProcessResult result = RunTool({"copy", db_, sub, "--to", layer, "--json"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const Json::Value summary = ParseJson(result.out);
  const std::string copy = summary["copy"].asString();
  EXPECT_EQ(summary["source"].asString(), sub);
  EXPECT_EQ(ChildUuids(db_, layer).back(), copy);
  const std::vector<StoredFeature> original = ReadLayer(db_, sub), copied = ReadLayer(db_, copy);
  ASSERT_EQ(copied.size(), original.size());
  for (size_t i = 0; i < original.size(); ++i) EXPECT_TRUE(copied[i] == original[i]);
  const CProcessResult one = RunTool({"copy", db_, ChildUuids(db_, sub).front(), "--to", layer});
  ASSERT_EQ(one.exitCode, 0) << one.err;
  EXPECT_EQ(one.out.size(), 33u) << "the copy's uuid and a newline";
  ExpectOneLineFailure(RunTool({"copy", db_, layer, "--to", copy}), 1, "own subtree");

  ASSERT_TRUE(ExecSql(db_, "UPDATE shape_order SET order_num = -1"));
  const CProcessResult flat = RunTool({"rebuild-order", db_, root_});
  ASSERT_EQ(flat.exitCode, 0) << flat.err;
  EXPECT_EQ(QueryScalar(db_, "SELECT COUNT(*) FROM shape_order WHERE order_num = -1"), "9")
      << "without --recursive only the root's list is renumbered";
  const CProcessResult deep = RunTool({"rebuild-order", db_, root_, "--recursive", "--json"});
  ASSERT_EQ(deep.exitCode, 0) << deep.err;
  EXPECT_TRUE(ParseJson(deep.out)["recursive"].asBool());
  EXPECT_EQ(QueryScalar(db_, "SELECT COUNT(*) FROM shape_order WHERE order_num = -1"), "0");
  const std::vector<std::string> children = ChildUuids(db_, layer);
  ASSERT_EQ(children.size(), 6u);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(QueryScalar(db_, "SELECT order_num FROM shape_order WHERE uuid = '" + children[i] +
                                   "'"),
              std::to_string(i));
  }
}

}  // namespace
