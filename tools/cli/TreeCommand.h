// `annotationlayer tree DB`: the folders and layers of a database (and with --features their
// features) in sibling order, indented by depth, each with its kind, name, check state, child
// count and uuid. --depth limits how far below the top root the listing goes.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_TREE_COMMAND_H
#define ANNOTATIONLAYER_CLI_TREE_COMMAND_H

#include <json/value.h>

#include <cstdint>

#include "AnnotationLayerTypes.h"
#include "Command.h"

class IAnnotationDBDataModel;

class CTreeCommand : public ICommand {
 public:
  CTreeCommand() = default;
  CTreeCommand(const CTreeCommand&) = delete;
  CTreeCommand& operator=(const CTreeCommand&) = delete;

  std::string Name() const override { return "tree"; }
  std::string Summary() const override {
    return "show the tree of folders and layers in sibling order";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;

 private:
  // Adds the children of `node` (a JSON node with "kind" and "uuid") down to the depth limit.
  void Expand(IAnnotationDBDataModel* model, Json::Value* node, E_NODE_KIND kind, int depth);
  void PrintText(CCommandContext& context, const Json::Value& node, int depth) const;

  int64_t maxDepth_ = -1;
  bool features_ = false;
};

#endif  // ANNOTATIONLAYER_CLI_TREE_COMMAND_H
