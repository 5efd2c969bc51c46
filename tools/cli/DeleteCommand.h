// `annotationlayer delete DB UUID`: removes a folder or layer with everything below it: the node
// is taken out of its sibling list (CSiblingUnlinker) and CLayerBatchDeleter removes the rows,
// with a progress bar, all in one transaction that a failure rolls back. The top root folder
// cannot be deleted, and single features are refused (see DeleteCommand.cpp).
//
// An interrupt cancels the deleter at its next step and rolls everything back: exit 130, the
// database as it was.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_DELETE_COMMAND_H
#define ANNOTATIONLAYER_CLI_DELETE_COMMAND_H

#include "Command.h"

class CDeleteCommand : public ICommand {
 public:
  CDeleteCommand() = default;
  CDeleteCommand(const CDeleteCommand&) = delete;
  CDeleteCommand& operator=(const CDeleteCommand&) = delete;

  std::string Name() const override { return "delete"; }
  std::string Summary() const override {
    return "delete a folder or layer with everything below it";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_DELETE_COMMAND_H
