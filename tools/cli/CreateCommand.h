// `annotationlayer create DB`: a new, empty annotation database (the schema, the spatial index and
// the top root folder). An existing file is never touched.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_CREATE_COMMAND_H
#define ANNOTATIONLAYER_CLI_CREATE_COMMAND_H

#include "Command.h"

class CCreateCommand : public ICommand {
 public:
  CCreateCommand() = default;
  CCreateCommand(const CCreateCommand&) = delete;
  CCreateCommand& operator=(const CCreateCommand&) = delete;

  std::string Name() const override { return "create"; }
  std::string Summary() const override { return "create a new, empty annotation database"; }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_CREATE_COMMAND_H
