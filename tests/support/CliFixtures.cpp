#include "CliFixtures.h"

#include <gdal_priv.h>
#include <json/reader.h>
#include <ogrsf_frmts.h>
#include <sqlite3.h>

#include <memory>
#include <sstream>

#include "AnnotationFeature.h"
#include "FeatureOption.h"
#include "IAnnotationDBObjectVisitor.h"
#include "SpatialiteDBDataModel.h"
#include "TestDatabase.h"
#include "ZuFieldSetObject.h"

namespace {

class CUuidCollector : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>&,
                            const std::string& uuid, const CFolderOption&) override {
    uuids.push_back(uuid);
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>&,
                           const std::string& uuid, const CLayerOption&) override {
    uuids.push_back(uuid);
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    uuids.push_back(uuid);
    return HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return true; }
  std::vector<std::string> uuids;
};

class CFieldReader : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  void VisitField(const CZuFieldSetObject::__tagField& field) override {
    fields[field.key] = field.value;
  }
  std::map<std::string, QVariant> fields;
};

// Every test of the tool reads or writes files through GDAL's drivers.
class CGdalDrivers : public ::testing::Environment {
 public:
  void SetUp() override { GDALAllRegister(); }
};
const auto* const kGdal = ::testing::AddGlobalTestEnvironment(new CGdalDrivers);

}  // namespace

void CCliDatabaseTest::SetUp() {
  db_ = dir_.File("notes.db");
  const CProcessResult created = RunTool({"create", db_, "--json"});
  ASSERT_EQ(created.exitCode, 0) << created.err;
  root_ = ParseJson(created.out)["root"].asString();
  ASSERT_EQ(root_.size(), 32u);
}

std::string CCliDatabaseTest::ImportPoints(const std::string& name, int count,
                                           const std::vector<std::string>& extra) {
  const std::string source = dir_.File(name + ".geojson");
  if (!FileExists(source) && !WriteSource(source, "GeoJSON", {PointLayer(name, count)})) return "";
  std::vector<std::string> args{"import", db_, source};
  args.insert(args.end(), extra.begin(), extra.end());
  const CProcessResult result = RunTool(args);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return LayerUuid(db_, name);
}

std::string CCliDatabaseTest::Count(const std::string& table) {
  return QueryScalar(db_, "SELECT COUNT(*) FROM " + table);
}

CProcessResult RunTool(const std::vector<std::string>& args) {
  std::vector<std::string> argv{ANNOTATIONLAYER_CLI_PATH};
  argv.insert(argv.end(), args.begin(), args.end());
  CProcessRunner runner;
  runner.SetTimeoutSeconds(240);
  return runner.Run(argv);
}

void ExpectOneLineFailure(const CProcessResult& result, int code, const std::string& fragment) {
  EXPECT_FALSE(result.timedOut);
  EXPECT_EQ(result.exitCode, code) << result.err;
  EXPECT_EQ(LineCount(result.err), 1) << result.err;
  EXPECT_NE(result.err.find(fragment), std::string::npos) << result.err;
  EXPECT_EQ(result.out, "");
}

Json::Value ParseJson(const std::string& text) {
  Json::CharReaderBuilder builder;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors)) return Json::Value();
  return value;
}

int LineCount(const std::string& text) {
  int lines = 0;
  for (char c : text) lines += c == '\n' ? 1 : 0;
  return lines;
}

bool ExecSql(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  const bool ok = sqlite3_open(path.c_str(), &db) == SQLITE_OK &&
                  sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(db);
  return ok;
}

bool WriteSource(const std::string& path, const std::string& driverName,
                 const std::vector<SourceLayer>& layers) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(driverName.c_str());
  if (driver == nullptr) return false;
  GDALDatasetUniquePtr dataset(driver->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
  if (!dataset) return false;
  for (const SourceLayer& source : layers) {
    OGRSpatialReference srs;
    srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    if (source.epsg != 0) srs.importFromEPSG(source.epsg);
    OGRLayer* layer = dataset->CreateLayer(source.name.c_str(), source.epsg != 0 ? &srs : nullptr,
                                           source.type, nullptr);
    if (layer == nullptr) return false;
    for (const SourceField& field : source.fields) {
      OGRFieldDefn definition(field.name.c_str(), field.type);
      definition.SetSubType(field.subType);
      if (layer->CreateField(&definition) != OGRERR_NONE) return false;
    }
    for (const SourceRow& row : source.rows) {
      OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
      for (size_t i = 0; i < row.values.size(); ++i) {
        if (!row.values[i].empty()) feature->SetField(static_cast<int>(i), row.values[i].c_str());
      }
      if (!row.wkt.empty()) {
        OGRGeometry* geometry = nullptr;
        if (OGRGeometryFactory::createFromWkt(row.wkt.c_str(), nullptr, &geometry) !=
            OGRERR_NONE) {
          return false;
        }
        feature->SetGeometryDirectly(geometry);
      }
      if (layer->CreateFeature(feature.get()) != OGRERR_NONE) return false;
    }
  }
  return true;
}

SourceLayer PointLayer(const std::string& name, int count) {
  SourceLayer layer;
  layer.name = name;
  layer.type = wkbPoint;
  layer.fields = {{"name", OFTString},
                  {"pop", OFTInteger},
                  {"area", OFTReal},
                  {"big", OFTInteger64},
                  {"flag", OFTInteger, OFSTBoolean}};
  for (int i = 0; i < count; ++i) {
    SourceRow row;
    const double x = 100 + (i % 100) * 0.01, y = 30 + (i / 100) * 0.01;
    std::ostringstream wkt;
    wkt.precision(17);
    wkt << "POINT (" << x << " " << y << ")";
    row.wkt = wkt.str();
    row.values = {"p" + std::to_string(i), std::to_string(i * 10), std::to_string(i + 0.5),
                  std::to_string(10000000000LL + i), i % 2 == 0 ? "1" : "0"};
    layer.rows.push_back(row);
  }
  return layer;
}

bool StoredFeature::operator==(const StoredFeature& other) const {
  return name == other.name && kind == other.kind && parts == other.parts &&
         fields == other.fields;
}

std::string Describe(const StoredFeature& feature) {
  std::ostringstream text;
  text << feature.name << " kind " << feature.kind << ":";
  for (const auto& part : feature.parts) {
    for (const CVector3D& v : part) text << " " << v.X() << "," << v.Y() << "," << v.Z();
    text << ";";
  }
  for (const auto& field : feature.fields) {
    text << " " << field.first << "(" << field.second.typeName()
         << ")=" << field.second.toString().toStdString();
  }
  return text.str();
}

std::vector<StoredFeature> ReadLayer(const std::string& path, const std::string& layerUuid) {
  std::vector<StoredFeature> features;
  CSpatialiteDBDataModel model;
  model.Initialize("reader");
  if (!model.Install(path)) return features;
  CUuidCollector collector;
  model.TravelLayer(&collector, layerUuid, 0, -1);
  for (const std::string& uuid : collector.uuids) {
    StoredFeature stored;
    stored.name = model.QueryFeatureOption(uuid).GetName();
    CAnnotationFeature geometry;
    model.QueryGeometryData(uuid, &geometry);
    stored.kind = geometry.GetGeometryType();
    for (int i = 0; i < geometry.GetPartCount(); ++i) {
      stored.parts.push_back(geometry.GetPart(i).Vertices());
    }
    CZuFieldSetObject fields;
    model.QueryField(uuid, fields);
    CFieldReader reader;
    fields.TravelField(reader);
    stored.fields = reader.fields;
    features.push_back(stored);
  }
  model.Uninstall();
  return features;
}

std::string LayerUuid(const std::string& path, const std::string& name) {
  return QueryScalar(path, "SELECT uuid FROM layer WHERE name = '" + name + "' ORDER BY rowid");
}

std::vector<std::string> ChildUuids(const std::string& path, const std::string& parentUuid) {
  CSpatialiteDBDataModel model;
  model.Initialize("reader");
  if (!model.Install(path)) return {};
  CUuidCollector collector;
  if (model.IsFolderUUID(parentUuid)) {
    model.TravelFolder(&collector, parentUuid);
  } else {
    model.TravelLayerChildren(&collector, parentUuid);
  }
  model.Uninstall();
  return collector.uuids;
}
