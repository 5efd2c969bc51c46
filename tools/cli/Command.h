// ICommand is one subcommand of the tool (create, import, export, tree, ...): its name, a
// one-sentence summary for the tool's help, the arguments it accepts and the work itself. The
// registry builds the argument parser from Declare, handles --help, and calls Run only with
// arguments that parsed.
//
// Run returns the process exit code: 0 on success, and on failure the code from the context's
// Fail (which has printed the one-line reason). Nothing may throw out of Run.
//
// Threading contract: commands run on the main thread, one at a time.
#ifndef ANNOTATIONLAYER_CLI_COMMAND_H
#define ANNOTATIONLAYER_CLI_COMMAND_H

#include <string>

class CArgumentParser;
class CCommandContext;

class ICommand {
 public:
  virtual ~ICommand() = default;

  virtual std::string Name() const = 0;
  virtual std::string Summary() const = 0;
  // Declares positionals, options and examples on a parser made for this command.
  virtual void Declare(CArgumentParser* parser) const = 0;
  virtual int Run(CCommandContext& context) = 0;
};

#endif  // ANNOTATIONLAYER_CLI_COMMAND_H
