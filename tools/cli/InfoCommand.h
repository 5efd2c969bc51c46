// `annotationlayer info DB UUID`: everything the module keeps about one node: its option record,
// its fields (a layer's field header, a feature's values), its style, its extent, its child count
// and, for a feature, the kind and size of its geometry.
//
// Threading contract: as ICommand.
#ifndef ANNOTATIONLAYER_CLI_INFO_COMMAND_H
#define ANNOTATIONLAYER_CLI_INFO_COMMAND_H

#include <json/value.h>

#include "Command.h"

class IAnnotationDBDataModel;

class CInfoCommand : public ICommand {
 public:
  CInfoCommand() = default;
  CInfoCommand(const CInfoCommand&) = delete;
  CInfoCommand& operator=(const CInfoCommand&) = delete;

  std::string Name() const override { return "info"; }
  std::string Summary() const override {
    return "show one node's record, fields, style and extent";
  }
  void Declare(CArgumentParser* parser) const override;
  int Run(CCommandContext& context) override;

 private:
  static Json::Value DescribeFolder(IAnnotationDBDataModel* model, const std::string& uuid);
  static Json::Value DescribeLayer(IAnnotationDBDataModel* model, const std::string& uuid);
  static Json::Value DescribeFeature(IAnnotationDBDataModel* model, const std::string& uuid);
  static void PrintText(CCommandContext& context, const Json::Value& info);
};

#endif  // ANNOTATIONLAYER_CLI_INFO_COMMAND_H
