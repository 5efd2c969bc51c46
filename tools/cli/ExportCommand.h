// `annotationlayer export DB UUID OUT`: a folder or layer with everything below it written to a
// file in any format that GDAL/OGR writes (CSubtreeExporter), the driver chosen from OUT's
// extension or --format. OUT must not exist, nor any other file the export writes (a format's side
// files, further layers' files): the export is written beside OUT and moved into place at the end
// (COutputStaging), or refused with nothing written. A failed or interrupted export removes what
// it wrote.
//
// With --tree, OUT.kml or OUT.kmz gets the subtree as nested KML folders (CKmlTreeWriter): its
// order, states, styles and fields, and in a KMZ the icon files it uses.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_EXPORT_COMMAND_H
#define ANNOTATIONLAYER_CLI_EXPORT_COMMAND_H

#include "Command.h"

class CExportCommand : public ICommand {
 public:
  CExportCommand() = default;
  CExportCommand(const CExportCommand&) = delete;
  CExportCommand& operator=(const CExportCommand&) = delete;

  std::string Name() const override { return "export"; }
  std::string Summary() const override {
    return "export a folder or layer subtree to a file (any format GDAL/OGR writes)";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;

 private:
  int RunTree(CCommandContext& context, const std::string& out);
};

#endif  // ANNOTATIONLAYER_CLI_EXPORT_COMMAND_H
