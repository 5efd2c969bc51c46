// `annotationlayer delete DB UUID`: removes a folder or layer with everything below it (through
// CLayerBatchDeleter, in one transaction, with a progress bar) or a single feature. The top root
// folder cannot be deleted.
//
// An interrupt ends the process without a commit; SQLite rolls the transaction back when the file
// is next opened, so the database keeps its state from before the command.
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
    return "delete a folder or layer with everything below it, or one feature";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_DELETE_COMMAND_H
