#include "VectorFormat.h"

#include <gdal_priv.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace {

// Preferred drivers for extensions that several drivers claim, best first. LIBKML before KML:
// the plain KML writer drops polygon fills.
const char* const kPreferred[] = {"GPKG",    "GeoJSON", "ESRI Shapefile", "FlatGeobuf", "CSV",
                                  "LIBKML",  "KML",     "SQLite",         "GML",        "GPX",
                                  "GeoJSONSeq", "MapInfo File", "DXF"};

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool CanCreateVector(GDALDriver* driver) {
  return driver->GetMetadataItem(GDAL_DCAP_VECTOR) != nullptr &&
         driver->GetMetadataItem(GDAL_DCAP_CREATE) != nullptr;
}

int Rank(const GDALDriver* driver) {
  const std::string name = CVectorFormat::Name(driver);
  for (size_t i = 0; i < sizeof kPreferred / sizeof kPreferred[0]; ++i) {
    if (name == kPreferred[i]) return static_cast<int>(i);
  }
  return static_cast<int>(sizeof kPreferred / sizeof kPreferred[0]);
}

}  // namespace

std::string CVectorFormat::Name(const GDALDriver* driver) {
  const char* name = const_cast<GDALDriver*>(driver)->GetDescription();
  return name != nullptr ? name : "";
}

GDALDriver* CVectorFormat::ForOutput(const std::string& path, const std::string& formatName,
                                     std::string* error) {
  GDALDriverManager* manager = GetGDALDriverManager();
  if (!formatName.empty()) {
    for (int i = 0; i < manager->GetDriverCount(); ++i) {
      GDALDriver* driver = manager->GetDriver(i);
      if (Lower(Name(driver)) != Lower(formatName)) continue;
      if (!CanCreateVector(driver)) {
        *error = "format " + Name(driver) + " cannot write vector data";
        return nullptr;
      }
      return driver;
    }
    *error = "unknown format '" + formatName + "' (give a GDAL vector driver name, e.g. GPKG)";
    return nullptr;
  }

  const size_t slash = path.find_last_of('/');
  const size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    *error = "cannot tell the format of '" + path + "' without an extension; give --format";
    return nullptr;
  }
  const std::string extension = Lower(path.substr(dot + 1));
  GDALDriver* best = nullptr;
  for (int i = 0; i < manager->GetDriverCount(); ++i) {
    GDALDriver* driver = manager->GetDriver(i);
    if (!CanCreateVector(driver)) continue;
    const char* extensions = driver->GetMetadataItem(GDAL_DMD_EXTENSIONS);
    if (extensions == nullptr) extensions = driver->GetMetadataItem(GDAL_DMD_EXTENSION);
    if (extensions == nullptr) continue;
    std::istringstream words(Lower(extensions));
    std::string word;
    bool matches = false;
    while (words >> word) matches = matches || word == extension;
    if (matches && (best == nullptr || Rank(driver) < Rank(best))) best = driver;
  }
  if (best == nullptr) {
    *error = "no GDAL driver writes '." + extension + "' files; give --format";
  }
  return best;
}

std::vector<std::string> CVectorFormat::LayerOptions(const GDALDriver* driver) {
  const std::string name = Name(driver);
  // WKT keeps the geometry, and the .csvt file the column types, for a later import.
  if (name == "CSV") return {"GEOMETRY=AS_WKT", "CREATE_CSVT=YES"};
  return {};
}
