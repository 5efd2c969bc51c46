// The `annotationlayer` command-line tool: registers the subcommands and hands the command line to
// the registry. The module's log and GDAL's messages go to one collector, shown with --verbose;
// every SQLite connection waits a while for a lock another process holds (CBusyWait).
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "BusyWait.h"
#include "CommandRegistry.h"
#include "CopyCommand.h"
#include "CreateCommand.h"
#include "DeleteCommand.h"
#include "ExportCommand.h"
#include "GdalEnvironment.h"
#include "ImportCommand.h"
#include "InfoCommand.h"
#include "LocalText.h"
#include "LogRoute.h"
#include "LogCollector.h"
#include "QueryCommand.h"
#include "RebuildOrderCommand.h"
#include "RenderCommand.h"
#include "TreeCommand.h"

namespace {

void RegisterCommands(CCommandRegistry* registry) {
  registry->Register(std::make_unique<CCreateCommand>());
  registry->Register(std::make_unique<CImportCommand>());
  registry->Register(std::make_unique<CExportCommand>());
  registry->Register(std::make_unique<CTreeCommand>());
  registry->Register(std::make_unique<CInfoCommand>());
  registry->Register(std::make_unique<CQueryCommand>());
  registry->Register(std::make_unique<CDeleteCommand>());
  registry->Register(std::make_unique<CCopyCommand>());
  registry->Register(std::make_unique<CRebuildOrderCommand>());
  registry->Register(std::make_unique<CRenderCommand>());
}

}  // namespace

int main(int argc, char** argv) {
  // Nothing may leave main by an exception: a last line of defence for allocation failures.
  try {
    CLocalText::Prepare();
    auto collector = std::make_shared<CLogCollector>(stderr);
    CLogRoute route(collector);
    CGdalEnvironment gdal(collector.get());
    CBusyWait busyWait;
    CCommandRegistry registry(collector.get());
    RegisterCommands(&registry);
    const std::vector<std::string> words(argv + 1, argv + argc);
    const int code = registry.Run(words, stdout, stderr);
    std::fflush(stdout);
    return code;
  } catch (const std::bad_alloc&) {
    std::fputs("annotationlayer: out of memory\n", stderr);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "annotationlayer: internal error: %s\n", e.what());
  } catch (...) {
    std::fputs("annotationlayer: internal error\n", stderr);
  }
  return 1;
}
