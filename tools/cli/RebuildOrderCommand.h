// `annotationlayer rebuild-order DB UUID [--recursive]`: renumbers the sibling order of a folder's
// or layer's children (and with --recursive of every list below) through CNodeOrderRebuilder,
// repairing lists with unassigned numbers.
//
// The rebuilder cannot be stopped mid-way, so it runs inside an outer transaction of the command:
// an interrupt is looked at when it returns and rolls its work back (exit 130).
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_REBUILD_ORDER_COMMAND_H
#define ANNOTATIONLAYER_CLI_REBUILD_ORDER_COMMAND_H

#include "Command.h"

class CRebuildOrderCommand : public ICommand {
 public:
  CRebuildOrderCommand() = default;
  CRebuildOrderCommand(const CRebuildOrderCommand&) = delete;
  CRebuildOrderCommand& operator=(const CRebuildOrderCommand&) = delete;

  std::string Name() const override { return "rebuild-order"; }
  std::string Summary() const override {
    return "renumber the sibling order below a folder or layer";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_REBUILD_ORDER_COMMAND_H
