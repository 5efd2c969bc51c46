// CCommandRegistry holds the tool's subcommands by name and dispatches a command line to one of
// them: it builds the subcommand's argument parser, answers --help (for the tool and for each
// subcommand), reports argument mistakes with the usage exit code, and runs the command.
//
// Subcommands are registered at start-up (see main.cpp); new ones, such as a renderer, only need
// an ICommand and one Register call.
//
// Threading contract: register and run on the main thread.
#ifndef ANNOTATIONLAYER_CLI_COMMAND_REGISTRY_H
#define ANNOTATIONLAYER_CLI_COMMAND_REGISTRY_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Command.h"

class CLogCollector;

class CCommandRegistry {
 public:
  // `log` (not owned) is handed to every command and switched to verbose by --verbose.
  explicit CCommandRegistry(CLogCollector* log);
  ~CCommandRegistry();
  CCommandRegistry(const CCommandRegistry&) = delete;
  CCommandRegistry& operator=(const CCommandRegistry&) = delete;

  // False when a command of the same name is registered already.
  bool Register(std::unique_ptr<ICommand> command);
  ICommand* Find(const std::string& name) const;

  // Runs the command line `words` (the arguments after the program name); the exit code.
  int Run(const std::vector<std::string>& words, std::FILE* out, std::FILE* err);
  // The tool's help: what it is and its commands in the order they were registered.
  std::string HelpText() const;

 private:
  int RunCommand(ICommand* command, const std::vector<std::string>& words, std::FILE* out,
                 std::FILE* err);

  CLogCollector* log_;
  std::vector<std::unique_ptr<ICommand>> commands_;
};

#endif  // ANNOTATIONLAYER_CLI_COMMAND_REGISTRY_H
