#include "SampleAtlas.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <memory>
#include <vector>

#include "AntimeridianCut.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "SourceImporter.h"

namespace {

const char* const kFills[] = {"#f6e3b4", "#cfe3c1", "#f4c7b8", "#d7d3ec", "#f9efc7", "#c9e2e8"};
const char kCountryStyle[] = "PEN(c:#6b6b6b,w:0.6px);LABEL(f:\"DejaVu Sans\",s:8pt,c:#333333)";
const char kCoastStyle[] = "PEN(c:#2b6cb0,w:1.2px)";
const char kCentreStyle[] = "PEN(c:#c53030,w:1px)";
const char kGraticuleStyle[] = "PEN(c:#8a97a6,w:0.8px,id:\"ogr-pen-2\")";

struct DatasetCloser {
  void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};
using DatasetPtr = std::unique_ptr<GDALDataset, DatasetCloser>;

// Appends a folder to the end of `parent`'s folders, linked to its left sibling.
std::string AppendFolder(IAnnotationDBDataModel* model, const std::string& parent,
                         const std::string& name) {
  const std::string last = model->GetLastFolderChildUUID(parent);
  CFolderOption option;
  option.SetParentUUID(parent);
  option.SetName(name);
  option.SetType(FOLDER_TYPE_NORMAL);
  option.SetNodeCheckState(2);
  option.SetNodeExpand(true);
  option.SetLeftUUID(last);
  option.SetOrderNum(last.empty() ? 0 : model->QueryOrderNum(NODE_KIND_FOLDER, last) + 1);
  if (!model->InsertFolder(option)) return std::string();
  if (!last.empty()) {
    CFolderOption previous = model->QueryFolderOption(last);
    previous.SetRightUUID(option.GetUUID());
    if (!model->ModifyFolderOption(previous)) return std::string();
  }
  return option.GetUUID();
}

// An in-memory dataset of one WGS 84 layer with `fields`.
DatasetPtr MemoryLayer(const char* name, OGRwkbGeometryType type,
                       const std::vector<std::pair<const char*, OGRFieldType>>& fields,
                       OGRLayer** layer) {
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("Memory");
  if (driver == nullptr) return nullptr;
  DatasetPtr dataset(driver->Create("", 0, 0, 0, GDT_Unknown, nullptr));
  if (!dataset) return nullptr;
  OGRSpatialReference wgs84;
  wgs84.SetWellKnownGeogCS("WGS84");
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  *layer = dataset->CreateLayer(name, &wgs84, type, nullptr);
  if (*layer == nullptr) return nullptr;
  for (const auto& field : fields) {
    OGRFieldDefn definition(field.first, field.second);
    if ((*layer)->CreateField(&definition) != OGRERR_NONE) return nullptr;
  }
  return dataset;
}

bool AddFeature(OGRLayer* layer, std::unique_ptr<OGRGeometry> geometry, const char* style,
                const std::vector<std::pair<const char*, std::string>>& texts) {
  OGRFeature feature(layer->GetLayerDefn());
  feature.SetGeometryDirectly(geometry.release());
  feature.SetStyleString(style);
  for (const auto& text : texts) feature.SetField(text.first, text.second.c_str());
  return layer->CreateFeature(&feature) == OGRERR_NONE;
}

// The outer ring of every polygon of `geometry`, as line strings.
std::vector<std::unique_ptr<OGRLineString>> OuterRings(const OGRGeometry* geometry) {
  std::vector<std::unique_ptr<OGRLineString>> rings;
  auto addPolygon = [&](const OGRPolygon* polygon) {
    if (polygon->getExteriorRing() != nullptr) {
      rings.push_back(std::make_unique<OGRLineString>(*polygon->getExteriorRing()));
    }
  };
  switch (wkbFlatten(geometry->getGeometryType())) {
    case wkbPolygon: addPolygon(geometry->toPolygon()); break;
    case wkbMultiPolygon:
      for (const OGRPolygon* polygon : *geometry->toMultiPolygon()) addPolygon(polygon);
      break;
    default: break;
  }
  return rings;
}

// Meridians and parallels every 30 degrees, with a vertex every 5 degrees so that they follow any
// projection a viewer may use.
bool FillGraticule(OGRLayer* layer) {
  for (int lon = -180; lon <= 180; lon += 30) {
    auto line = std::make_unique<OGRLineString>();
    for (int lat = -80; lat <= 80; lat += 5) line->addPoint(lon, lat);
    if (!AddFeature(layer, std::move(line), kGraticuleStyle,
                    {{"kind", "meridian"}, {"degrees", std::to_string(lon)}})) {
      return false;
    }
  }
  for (int lat = -60; lat <= 60; lat += 30) {
    auto line = std::make_unique<OGRLineString>();
    for (int lon = -180; lon <= 180; lon += 5) line->addPoint(lon, lat);
    if (!AddFeature(layer, std::move(line), kGraticuleStyle,
                    {{"kind", "parallel"}, {"degrees", std::to_string(lat)}})) {
      return false;
    }
  }
  return true;
}

// Imports the one layer of `dataset` below `parent`; the new layer's uuid, or "".
std::string Import(IAnnotationDBDataModel* model, GDALDataset* dataset, const std::string& parent,
                   int64_t* features, std::string* error) {
  CSourceImporter importer(model, nullptr, nullptr);
  CSourceImporter::Options options;
  options.parentUuid = parent;
  CSourceImporter::Summary summary;
  if (importer.Run(dataset, options, &summary, error) != CSourceImporter::OUTCOME_DONE) {
    return std::string();
  }
  *features += summary.features;
  return model->GetLastLayerChildUUID(parent);
}

}  // namespace

bool CSampleAtlas::Build(IAnnotationDBDataModel* model, const std::string& path,
                         Contents* contents, std::string* error) {
  *contents = Contents();
  GDALAllRegister();
  DatasetPtr source(static_cast<GDALDataset*>(
      GDALOpenEx(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr)));
  OGRLayer* countries = source ? source->GetLayerByName("countries") : nullptr;
  OGRLayer* land = source ? source->GetLayerByName("land") : nullptr;
  if (countries == nullptr || land == nullptr) {
    *error = path + " is not world-atlas's countries TopoJSON (layers countries and land)";
    return false;
  }

  OGRLayer *countryLayer = nullptr, *centreLayer = nullptr, *coastLayer = nullptr,
           *graticuleLayer = nullptr;
  DatasetPtr countryData = MemoryLayer(
      "Countries", wkbMultiPolygon,
      {{"name", OFTString}, {"iso_n3", OFTString}, {"area_deg2", OFTReal}}, &countryLayer);
  DatasetPtr centreData = MemoryLayer("Country centres", wkbPoint,
                                      {{"country", OFTString}, {"iso_n3", OFTString}},
                                      &centreLayer);
  DatasetPtr coastData = MemoryLayer("Coastline", wkbLineString,
                                     {{"ring", OFTInteger}, {"vertices", OFTInteger}}, &coastLayer);
  DatasetPtr graticuleData = MemoryLayer(
      "Graticule", wkbLineString, {{"kind", OFTString}, {"degrees", OFTInteger}}, &graticuleLayer);
  if (!countryData || !centreData || !coastData || !graticuleData) {
    *error = "GDAL's Memory driver made no dataset";
    return false;
  }

  int index = 0;
  for (auto& country : *countries) {
    if (country->GetGeometryRef() == nullptr || country->GetGeometryRef()->IsEmpty()) continue;
    // Cut as the import would cut it, so that its area and centre are those of what is drawn.
    const OGRGeometryUniquePtr cut = CAntimeridianCut::Cut(*country->GetGeometryRef());
    const OGRGeometry* shape = cut ? cut.get() : country->GetGeometryRef();
    const std::string name = country->GetFieldAsString("name");
    const std::string id = country->GetFieldAsString("id");
    const double area = OGR_G_Area(OGRGeometry::ToHandle(const_cast<OGRGeometry*>(shape)));
    const std::string style =
        std::string("BRUSH(fc:") + kFills[index++ % 6] + ");" + kCountryStyle;
    if (!AddFeature(countryLayer, std::unique_ptr<OGRGeometry>(shape->clone()), style.c_str(),
                    {{"name", name}, {"iso_n3", id}, {"area_deg2", std::to_string(area)}})) {
      *error = "cannot copy the country " + name;
      return false;
    }
    std::unique_ptr<OGRGeometry> centre(OGRGeometry::FromHandle(
        OGR_G_PointOnSurface(OGRGeometry::ToHandle(const_cast<OGRGeometry*>(shape)))));
    if (centre && !centre->IsEmpty() &&
        !AddFeature(centreLayer, std::move(centre), kCentreStyle,
                    {{"country", name}, {"iso_n3", id}})) {
      *error = "cannot place the centre of " + name;
      return false;
    }
  }
  int ring = 0;
  for (auto& feature : *land) {
    if (feature->GetGeometryRef() == nullptr) continue;
    // A coastline that leaps across the antimeridian is cut there into two lines.
    std::vector<std::unique_ptr<OGRLineString>> lines;
    for (auto& outline : OuterRings(feature->GetGeometryRef())) {
      OGRGeometryUniquePtr cut = CAntimeridianCut::Cut(*outline);
      if (!cut) {
        lines.push_back(std::move(outline));
        continue;
      }
      for (const OGRLineString* piece : *cut->toMultiLineString()) {
        lines.push_back(std::make_unique<OGRLineString>(*piece));
      }
    }
    for (auto& line : lines) {
      const int vertices = line->getNumPoints();
      if (!AddFeature(coastLayer, std::move(line), kCoastStyle,
                      {{"ring", std::to_string(ring++)}, {"vertices", std::to_string(vertices)}})) {
        *error = "cannot add a coastline";
        return false;
      }
    }
  }
  if (!FillGraticule(graticuleLayer)) {
    *error = "cannot add the graticule";
    return false;
  }

  // Folders first. Later siblings rank higher in the engine's draw order, so the order is that of
  // a map's layers from the bottom: countries, then coasts, then places.
  const std::string root = model->GetTopRootUUID();
  contents->atlasFolder = AppendFolder(model, root, "World atlas");
  const std::string political = AppendFolder(model, contents->atlasFolder, "Political");
  const std::string physical = AppendFolder(model, contents->atlasFolder, "Physical");
  const std::string places = AppendFolder(model, contents->atlasFolder, "Places");
  if (contents->atlasFolder.empty() || places.empty() || physical.empty() || political.empty()) {
    *error = "cannot make the sample's folders";
    return false;
  }
  int64_t* count = &contents->features;
  contents->centresLayer = Import(model, centreData.get(), places, count, error);
  if (contents->centresLayer.empty()) return false;
  contents->coastlineLayer = Import(model, coastData.get(), physical, count, error);
  if (contents->coastlineLayer.empty()) return false;
  contents->countriesLayer = Import(model, countryData.get(), political, count, error);
  if (contents->countriesLayer.empty()) return false;
  contents->graticuleLayer = Import(model, graticuleData.get(), contents->atlasFolder, count, error);
  return !contents->graticuleLayer.empty();
}
