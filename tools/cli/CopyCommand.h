// `annotationlayer copy DB UUID --to UUID`: copies a folder, layer or feature with everything
// below it under another folder or layer of the same database (through CLayerBatchCopier, in one
// transaction, with a progress bar) and prints the copy's uuid. A folder goes under a folder, a
// layer under a folder or a layer, a feature under a layer, and never into its own subtree.
//
// An interrupt cancels the copy, which rolls everything back.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_COPY_COMMAND_H
#define ANNOTATIONLAYER_CLI_COPY_COMMAND_H

#include "Command.h"

class CCopyCommand : public ICommand {
 public:
  CCopyCommand() = default;
  CCopyCommand(const CCopyCommand&) = delete;
  CCopyCommand& operator=(const CCopyCommand&) = delete;

  std::string Name() const override { return "copy"; }
  std::string Summary() const override {
    return "copy a folder, layer or feature with everything below it under another node";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_COPY_COMMAND_H
