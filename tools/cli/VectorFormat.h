// CVectorFormat chooses the GDAL/OGR driver that writes an export: the one named with --format
// (GDAL's short name, any case), or else the one whose file extensions include the output's. When
// several drivers claim an extension, the common formats win (GPKG, GeoJSON, ESRI Shapefile,
// FlatGeobuf, CSV, KML, ...).
//
// It also knows the few layer creation options an export always needs, such as writing a CSV
// layer's geometry as WKT so that it can be imported again.
//
// Threading contract: stateless; GDAL's drivers must be registered (CGdalEnvironment).
#ifndef ANNOTATIONLAYER_CLI_VECTOR_FORMAT_H
#define ANNOTATIONLAYER_CLI_VECTOR_FORMAT_H

#include <string>
#include <vector>

class GDALDriver;

class CVectorFormat {
 public:
  CVectorFormat() = delete;

  // A vector driver that can create datasets, or null with a one-line reason.
  static GDALDriver* ForOutput(const std::string& path, const std::string& formatName,
                               std::string* error);
  // KEY=VALUE layer creation options for layers of `driver`.
  static std::vector<std::string> LayerOptions(const GDALDriver* driver);
  // The short name of the driver.
  static std::string Name(const GDALDriver* driver);
};

#endif  // ANNOTATIONLAYER_CLI_VECTOR_FORMAT_H
