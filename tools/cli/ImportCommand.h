// `annotationlayer import DB SOURCE`: every layer of a vector source that GDAL/OGR reads (GeoJSON,
// GeoPackage, Shapefile, KML, CSV with a WKT column, FlatGeobuf, ...) into the database, below the
// top root folder or the folder or layer given with --under, in one transaction (CSourceImporter).
// A progress bar shows on a terminal; a summary line (or JSON, which also names the new top
// layer) reports features, layers, seconds and what was skipped.
//
// With --tree the source is a KML or KMZ file read as a tree (CKmlTreeReader, CKmlTreeImporter):
// its folders, layers, placemarks, states, styles and fields, in document order. Icons packed in
// a KMZ are unpacked into the directory "DB-icons" beside the database, and the icon styles point
// there; a failed import removes what it unpacked.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_IMPORT_COMMAND_H
#define ANNOTATIONLAYER_CLI_IMPORT_COMMAND_H

#include "Command.h"

class CImportCommand : public ICommand {
 public:
  CImportCommand() = default;
  CImportCommand(const CImportCommand&) = delete;
  CImportCommand& operator=(const CImportCommand&) = delete;

  std::string Name() const override { return "import"; }
  std::string Summary() const override {
    return "import a vector source (any format GDAL/OGR reads) as layers and features";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;

 private:
  int RunTree(CCommandContext& context);
};

#endif  // ANNOTATIONLAYER_CLI_IMPORT_COMMAND_H
