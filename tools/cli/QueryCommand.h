// `annotationlayer query DB --extent minx,miny,maxx,maxy`: the features whose geometry meets a
// rectangle (in degrees), found through the module's spatial query on the R*Tree index; each
// with its uuid, kind, layer and name.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_QUERY_COMMAND_H
#define ANNOTATIONLAYER_CLI_QUERY_COMMAND_H

#include "Command.h"

class CQueryCommand : public ICommand {
 public:
  CQueryCommand() = default;
  CQueryCommand(const CQueryCommand&) = delete;
  CQueryCommand& operator=(const CQueryCommand&) = delete;

  std::string Name() const override { return "query"; }
  std::string Summary() const override { return "list the features that meet a rectangle"; }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_QUERY_COMMAND_H
