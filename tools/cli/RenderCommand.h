// `annotationlayer render DB --extent ... -o view.png`: draws what the host would show of the
// database in a view of that extent. A spatial engine of the module is started on the database
// and told the extent; once the entities of every visible feature inside it are built
// (CViewRenderer), the view's scene is drawn into a PNG with each feature's pen, brush, icon and
// label styles, in draw order. No display is needed.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_RENDER_COMMAND_H
#define ANNOTATIONLAYER_CLI_RENDER_COMMAND_H

#include "Command.h"

class CRenderCommand : public ICommand {
 public:
  CRenderCommand() = default;
  CRenderCommand(const CRenderCommand&) = delete;
  CRenderCommand& operator=(const CRenderCommand&) = delete;

  std::string Name() const override { return "render"; }
  std::string Summary() const override {
    return "draw the features inside an extent, in their styles and draw order, into a PNG";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;
};

#endif  // ANNOTATIONLAYER_CLI_RENDER_COMMAND_H
