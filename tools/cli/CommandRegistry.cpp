#include "CommandRegistry.h"

#include "ArgumentParser.h"
#include "CommandContext.h"
#include "LogCollector.h"

namespace {

constexpr const char kVersion[] = "0.1.0";

}  // namespace

CCommandRegistry::CCommandRegistry(CLogCollector* log) : log_(log) {}

CCommandRegistry::~CCommandRegistry() = default;

bool CCommandRegistry::Register(std::unique_ptr<ICommand> command) {
  if (!command || Find(command->Name()) != nullptr) return false;
  commands_.push_back(std::move(command));
  return true;
}

ICommand* CCommandRegistry::Find(const std::string& name) const {
  for (const auto& command : commands_) {
    if (command->Name() == name) return command.get();
  }
  return nullptr;
}

std::string CCommandRegistry::HelpText() const {
  std::string text =
      "usage: annotationlayer COMMAND [arguments] [options]\n\n"
      "Creates, fills, inspects and exports annotation databases (SpatiaLite files of folders,\n"
      "layers and features). Vector data comes in and goes out through GDAL/OGR.\n\n"
      "commands:\n";
  for (const auto& command : commands_) {
    std::string name = "  " + command->Name();
    name += name.size() < 18 ? std::string(18 - name.size(), ' ') : std::string("  ");
    text += name + command->Summary() + "\n";
  }
  text +=
      "\nRun 'annotationlayer COMMAND --help' for a command's arguments. Every command exits with\n"
      "0 on success and prints a one-line reason on standard error otherwise (1: the operation\n"
      "failed, 2: wrong arguments, 130: interrupted). --verbose shows the module's and GDAL's log.\n";
  return text;
}

int CCommandRegistry::Run(const std::vector<std::string>& words, std::FILE* out, std::FILE* err) {
  if (words.empty()) {
    std::fputs(HelpText().c_str(), err);
    return CCommandContext::kExitUsage;
  }
  const std::string& first = words[0];
  if (first == "--help" || first == "-h" || first == "help") {
    if (first == "help" && words.size() > 1) {
      if (ICommand* command = Find(words[1])) return RunCommand(command, {"--help"}, out, err);
      std::fprintf(err, "annotationlayer: unknown command '%s'\n", words[1].c_str());
      return CCommandContext::kExitUsage;
    }
    std::fputs(HelpText().c_str(), out);
    return CCommandContext::kExitOk;
  }
  if (first == "--version") {
    std::fprintf(out, "annotationlayer %s\n", kVersion);
    return CCommandContext::kExitOk;
  }
  ICommand* command = Find(first);
  if (command == nullptr) {
    std::fprintf(err, "annotationlayer: unknown command '%s' (see 'annotationlayer --help')\n",
                 first.c_str());
    return CCommandContext::kExitUsage;
  }
  return RunCommand(command, std::vector<std::string>(words.begin() + 1, words.end()), out, err);
}

int CCommandRegistry::RunCommand(ICommand* command, const std::vector<std::string>& words,
                                 std::FILE* out, std::FILE* err) {
  CArgumentParser parser(command->Name(), command->Summary());
  command->Declare(&parser);
  parser.AddFlag("verbose", "show the module's and GDAL's log lines on standard error");
  std::string error;
  CCommandContext context(&parser, log_, out, err);
  if (!parser.Parse(words, &error)) return context.UsageError(error);
  if (parser.HelpRequested()) {
    std::fputs(parser.HelpText().c_str(), out);
    return CCommandContext::kExitOk;
  }
  if (log_ != nullptr) log_->SetVerbose(parser.Has("verbose"));
  return command->Run(context);
}
