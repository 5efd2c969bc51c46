// The tool's tree exchange: export --tree then import --tree gives the same tree back, GDAL reads
// what is written, and bad KML or KMZ leaves the database as it was.
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <memory>

#include "AnnotationFeature.h"
#include "AnnotationLayerNS.h"
#include "CliFixtures.h"
#include "FeatureFieldSet.h"
#include "FeatureIconStyle.h"
#include "FeatureOption.h"
#include "FeatureStyleSet.h"
#include "FolderOption.h"
#include "KmzArchive.h"
#include "LayerOption.h"
#include "SpatialiteDBDataModel.h"
#include "StyleConverter.h"
#include "StyleJson.h"
#include "TreeBuilder.h"
#include "ZuFieldSetObject.h"

namespace {

std::string Num(double value) {
  return QString::number(value, 'g', 17).toStdString();
}

template <typename Option>
std::string States(const char* kind, const Option& o) {
  return std::string(kind) + " " + o.GetName() + " check=" + std::to_string(o.GetNodeCheckState()) +
         " open=" + std::to_string(o.IsNodeExpand());
}

// Every node below a node as one line of its properties, in sibling order, depth first. Icon
// styles show the icon file's bytes instead of its path, which an import of a KMZ changes.
void Flatten(IAnnotationDBDataModel* m, const std::string& path, const std::string& uuid, int depth,
             std::vector<std::string>* lines) {
  std::string line = std::to_string(depth) + " ";
  const E_NODE_KIND kind = m->QueryNodeKind(uuid);
  if (kind != NODE_KIND_FEATURE) {
    line += kind == NODE_KIND_FOLDER ? States("folder", m->QueryFolderOption(uuid))
                                     : States("layer", m->QueryLayerOption(uuid));
  } else {
    CAnnotationFeature geometry;
    m->QueryGeometryData(uuid, &geometry);
    line += "feature " + m->QueryFeatureOption(uuid).GetName() +
            " checked=" + std::to_string(m->QueryFeatureOption(uuid).IsNodeChecked()) +
            " kind=" + std::to_string(geometry.GetGeometryType()) + " geometry=";
    for (int p = 0; p < geometry.GetPartCount(); ++p) {
      for (const CVector3D& v : geometry.GetPart(p).Vertices()) {
        line += Num(v.X()) + "," + Num(v.Y()) + "," + Num(v.Z()) + " ";
      }
      line += "| ";
    }
    CZuFieldSetObject fields;
    m->QueryField(uuid, fields);
    struct : CZuFieldSetObject::IFieldDataVisitor {
      void VisitField(const CZuFieldSetObject::__tagField& f) override {
        text += f.key + ":" + std::to_string(f.type) + "=" + f.value.toString().toStdString() + " ";
      }
      std::string text;
    } list;
    fields.TravelField(list);
    CFeatureStyleSet styles;
    m->QueryStyle(&styles, uuid, false);
    for (int i = 0; i < styles.GetCount(); ++i) {
      if (auto icon = dynamic_cast<CFeatureIconStyle*>(styles.At(i))) {
        icon->SetIconUrl(ReadFileBytes(icon->GetIconUrl()));
      }
    }
    line += " fields=" + list.text + " style=" + AnnotationLayerNS::ToJsonStyle(&styles);
  }
  lines->push_back(line);
  if (kind == NODE_KIND_FEATURE) return;
  for (const std::string& child : ChildUuids(path, uuid)) Flatten(m, path, child, depth + 1, lines);
}

std::vector<std::string> Lines(const std::string& path, const std::string& uuid) {
  std::vector<std::string> lines;
  CSpatialiteDBDataModel reader;
  reader.Initialize("kml-reader");
  EXPECT_TRUE(reader.Install(path));
  Flatten(&reader, path, uuid, 0, &lines);
  reader.Uninstall();
  return lines;
}

class KmlTreeTest : public CCliDatabaseTest {
 protected:
  // Survey (partly checked, open) > Archive (unchecked, empty folder), Wells (layer: a styled
  // point, the sub-layer Zones with a styled multipolygon, a hidden 2D line), Spare (empty layer).
  std::string BuildSource() {
    icon_ = dir_.File("pin.png");
    EXPECT_TRUE(WriteFileBytes(icon_, std::string("\x89PNG pin bytes", 14)));
    model_.Initialize("kml-test");
    EXPECT_TRUE(model_.Install(db_));
    CTreeBuilder tree(&model_);
    const std::string survey = tree.AddFolder(root_, "Survey");
    const std::string archive = tree.AddFolder(survey, "Archive");
    const std::string wells = tree.AddLayer(survey, "Wells");
    AddFeature(wells, "W-1", true, GEOMETRY_DATA_TYPE_POINT, {{{116.39, 39.91, 45.5}}});
    AddFeature(tree.AddChildLayer(wells, "Zones"), "Z-1", true, GEOMETRY_DATA_TYPE_MULTIPOLYGON,
               {{{1, 1, 0}, {2, 1, 0}, {2, 2, 0}, {1, 1, 0}},
                {{5, 5, 0}, {6, 5, 0}, {6, 6.25, 0}, {5, 5, 0}}});
    AddFeature(wells, "Track", false, GEOMETRY_DATA_TYPE_LINESTRING,
               {{{0.1, 0.2, 0}, {0.3, 0.4, 0}}});
    tree.AddLayer(survey, "Spare");
    SetStates(model_.QueryFolderOption(survey), &IAnnotationDBDataModel::ModifyFolderOption, 1,
              true);
    SetStates(model_.QueryFolderOption(archive), &IAnnotationDBDataModel::ModifyFolderOption, 0,
              false);
    SetStates(model_.QueryLayerOption(wells), &IAnnotationDBDataModel::ModifyLayerOption, 1, true);
    model_.Uninstall();  // the tool opens the file next
    return survey;
  }

  // A checked feature gets fields and all four kinds of style, a hidden one a plain pen.
  void AddFeature(const std::string& layer, const std::string& name, bool checked,
                  E_GEOMETRY_DATA_TYPE kind, const std::vector<std::vector<CVector3D>>& parts) {
    CAnnotationFeature feature(kind);
    for (const auto& part : parts) feature.AddPart(CGeometryData(part));
    if (checked) {
      feature.SetFieldValue("description", QString("a <b>well</b> & more"));
      feature.SetFieldValue("depth", 120.5);
      feature.SetFieldValue("count", 7);
      feature.SetFieldValue("big", qlonglong(9007199254740993LL));
      feature.SetFieldValue("ok", true);
    }
    const std::string style = "PEN(c:#C80A14,w:2px);BRUSH(fc:#0080FF);SYMBOL(id:\"" + icon_ +
                              "\",a:30,s:1.5);LABEL(c:#010203,s:18pt)";
    CStyleConverter::FromStyleString(checked ? style : "PEN(c:#000000,w:1px)",
                                     feature.GetStyleSet());
    const std::string uuid = CTreeBuilder(&model_).AddFeature(
        layer, name, AnnotationLayerNS::MappingAnnotationType(kind));
    CZuFieldSetObject fields;
    AnnotationLayerNS::FillFieldSetFromFeature(fields, &feature);
    CFeatureOption option = model_.QueryFeatureOption(uuid);
    option.SetNodeChecked(checked);
    ASSERT_TRUE(model_.ModifyGeometryData(uuid, &feature) &&
                model_.ModifyOrInsertField(uuid, fields) &&
                model_.ModifyOrInsertStyle(uuid, feature.GetStyleSet(), 3) &&
                model_.ModifyFeatureOption(option));
  }

  template <typename Option>
  void SetStates(Option option, bool (IAnnotationDBDataModel::*modify)(Option&), int check,
                 bool open) {
    option.SetNodeCheckState(check);
    option.SetNodeExpand(open);
    ASSERT_TRUE((model_.*modify)(option));
  }

  CSpatialiteDBDataModel model_;
  std::string icon_;
};

}  // namespace

// Exported as KML and as KMZ (its icon packed and unpacked beside the new database), the tree comes
// back node by node: names, order, check and expand states, geometries, fields and styles. GDAL's
// KML and LIBKML drivers read every placemark of the KML with its geometry; xmllint finds the
// document well-formed.
TEST_F(KmlTreeTest, RoundTripKeepsTheTreeAndGdalReadsIt) {
  const std::string survey = BuildSource();
  const std::vector<std::string> source = Lines(db_, survey);
  ASSERT_EQ(source.size(), 8u);
  EXPECT_EQ(source[0], "0 folder Survey check=1 open=1");
  for (const char* suffix : {".kml", ".kmz"}) {
    const std::string out = dir_.File(std::string("survey") + suffix);
    const std::string copy = dir_.File(std::string("copy") + suffix + ".db");
    ASSERT_EQ(RunTool({"export", db_, survey, out, "--tree"}).exitCode, 0);
    ASSERT_EQ(RunTool({"create", copy}).exitCode, 0);
    const CProcessResult imported = RunTool({"import", copy, out, "--tree", "--json"});
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
    const Json::Value summary = ParseJson(imported.out);
    EXPECT_EQ(summary["features"].asInt(), 3);
    EXPECT_EQ(summary["icons"].asInt(), std::string(suffix) == ".kmz" ? 1 : 0);
    const std::vector<std::string> top = ChildUuids(copy, summary["parent"].asString());
    ASSERT_EQ(top.size(), 1u);
    const std::vector<std::string> back = Lines(copy, top[0]);
    ASSERT_EQ(back.size(), source.size()) << suffix;
    for (size_t i = 0; i < source.size(); ++i) EXPECT_EQ(back[i], source[i]) << suffix;
  }
  const std::string out = dir_.File("survey.kml");
  const std::vector<std::string> expected = {
      "LINESTRING (0.1 0.2 0,0.3 0.4 0)",
      "MULTIPOLYGON (((1 1 0,2 1 0,2 2 0,1 1 0)),((5 5 0,6 5 0,6.0 6.25 0,5 5 0)))",
      "POINT (116.39 39.91 45.5)"};
  for (const char* driver : {"KML", "LIBKML"}) {
    const char* const drivers[] = {driver, nullptr};
    GDALDatasetUniquePtr dataset(GDALDataset::Open(out.c_str(), GDAL_OF_VECTOR, drivers));
    ASSERT_TRUE(dataset) << driver;
    std::vector<std::string> read;
    for (OGRLayer* layer : dataset->GetLayers()) {
      for (const auto& feature : *layer) read.push_back(feature->GetGeometryRef()->exportToWkt());
    }
    std::sort(read.begin(), read.end());
    EXPECT_EQ(read, expected) << driver;
  }
  EXPECT_EQ(CProcessRunner().Run({"/usr/bin/xmllint", "--noout", out}).exitCode, 0);
}

// Each bad input fails with a reason and leaves the database, and the icon directory, as it was.
TEST_F(KmlTreeTest, BadInputLeavesTheDatabaseAsItWas) {
  BuildSource();
  const std::string bomb = dir_.File("bomb.png");
  ASSERT_TRUE(WriteFileBytes(bomb, std::string(8 << 20, ' ')));
  const std::string point = "<Point><coordinates>1,2</coordinates></Point>";
  auto placemark = [&point](const std::string& style) {
    return "<Placemark><styleUrl>" + style + "</styleUrl>" + point + "</Placemark>";
  };
  const std::string styles =
      "<Style id='a'><IconStyle><Icon><href>files/a.png</href></Icon>"
      "</IconStyle></Style><Style id='b'><IconStyle><Icon><href>files/b.png"
      "</href></Icon></IconStyle></Style>";
  std::string deep;
  for (int i = 0; i < 300; ++i) deep = "<Folder>" + deep + "</Folder>";
  const struct {
    const char* file;
    std::string kml;
    const char* reason;
  } cases[] = {
      {"deep.kml", "<kml>" + deep + "</kml>", "folders are nested deeper than 200"},
      {"malformed.kml", "<kml><Document><Placemark></Document></kml>", "not well-formed XML"},
      {"nowhere.kml", "<kml><Document>" + placemark("#gone") + "</Document></kml>",
       "styleUrl '#gone' names no Style"},
      {"model.kml", "<kml><Placemark><Model/></Placemark></kml>", "<Model> is not supported"},
      {"gpx.kml", "<gpx/>", "not <kml>"},
      {"bomb.kmz",
       "<kml><Document>" + styles + placemark("#a") + placemark("#b") + "</Document></kml>",
       "'files/b.png' unpacks to 8388608 bytes"},
  };
  const std::string before = RunTool({"tree", db_, "--features", "--json"}).out;
  for (const auto& bad : cases) {
    SCOPED_TRACE(bad.file);
    const std::string path = dir_.File(bad.file);
    std::string error;
    ASSERT_TRUE(std::string(bad.file).find(".kmz") == std::string::npos
                    ? WriteFileBytes(path, bad.kml)
                    : CKmzArchive::Write(path, QByteArray::fromStdString(bad.kml),
                                         {{"files/a.png", icon_}, {"files/b.png", bomb}}, &error));
    const CProcessResult result = RunTool({"import", db_, path, "--tree"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find(bad.reason), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("nothing was imported"), std::string::npos) << result.err;
  }
  // Nothing deletes, so a half-done import of any case would still show here.
  EXPECT_EQ(RunTool({"tree", db_, "--features", "--json"}).out, before);
  EXPECT_FALSE(FileExists(db_ + "-icons"));
}
