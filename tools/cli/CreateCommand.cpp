#include "CreateCommand.h"

#include <sys/stat.h>

#include "AnnotationSchema.h"
#include "ArgumentParser.h"
#include "CommandContext.h"
#include "LocalText.h"

void CCreateCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the database file to create; it must not exist yet");
  parser->AddFlag("json", "print the result as JSON");
  parser->AddExample("annotationlayer create notes.db");
}

int CCreateCommand::Run(CCommandContext& context) {
  const std::string path = context.Args().Positional("DB");
  if (path.empty()) return context.UsageError("DB must not be empty");
  struct stat info;
  if (stat(path.c_str(), &info) == 0) {
    return context.Fail(path + " exists already; refusing to overwrite it");
  }
  const std::string local = CLocalText::FromUtf8(path);
  if (CLocalText::ToUtf8(local) != path) {
    return context.Fail(path + ": the path has characters the module's code page (GBK) cannot hold");
  }
  std::string root;
  if (!AnnotationLayerNS::CreateAnnotationDatabase(local, &root)) {
    return context.FailWithCause("cannot create " + path);
  }
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["path"] = path;
    result["root"] = root;
    context.PrintJson(result);
  } else {
    context.Print("created " + path + " (top root folder " + root + ")");
  }
  return CCommandContext::kExitOk;
}
