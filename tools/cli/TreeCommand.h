// `annotationlayer tree DB`: the folders and layers of a database (and with --features their
// features) in sibling order, indented by depth, each with its kind, name, check state, child
// count and uuid. --depth limits how far below the top root the listing goes.
//
// The listing streams: each node is printed as the model's walk reaches it, and a layer's
// features are never held together, so memory stays flat however many features a layer has.
// --json streams the same nested document that a Json::Value of the whole tree would print.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_TREE_COMMAND_H
#define ANNOTATIONLAYER_CLI_TREE_COMMAND_H

#include <cstdint>
#include <string>

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

  // What is printed of one node.
  struct Node {
    E_NODE_KIND kind = NODE_KIND_NONE;
    std::string uuid;
    std::string name;   // UTF-8
    std::string check;  // "unchecked", "partial", "checked"
    std::string type;   // empty for folders
    int children = 0;
    bool gisLayer = false;
  };

 private:
  // Prints `node`, `level` steps below the top root, and down to the depth limit everything below
  // it.
  void Show(IAnnotationDBDataModel* model, const Node& node, int level);

  CCommandContext* context_ = nullptr;
  int64_t maxDepth_ = -1;
  bool features_ = false;
  bool json_ = false;
};

#endif  // ANNOTATIONLAYER_CLI_TREE_COMMAND_H
