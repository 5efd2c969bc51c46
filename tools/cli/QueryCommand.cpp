#include "QueryCommand.h"

#include <climits>
#include <vector>

#include "ArgumentParser.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "ExtentCondition.h"
#include "FeatureOption.h"
#include "IAnnotationDBDataModel.h"
#include "NodeFormatter.h"

namespace {

// Collects the features a spatial query hands over, with their records.
class CFeatureCollector : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption& option) override {
    Json::Value feature(Json::objectValue);
    feature["uuid"] = uuid;
    feature["type"] = CNodeFormatter::AnnotationTypeName(option.GetType());
    feature["layer"] = option.GetParentUUID();
    feature["name"] = CNodeFormatter::Utf8(option.GetName());
    features.append(feature);
    return HANDLE_TYPE_CONTINUE;
  }
  Json::Value features{Json::arrayValue};
};

}  // namespace

void CQueryCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddOption("extent", "MINX,MINY,MAXX,MAXY",
                    "the rectangle in degrees (longitude, latitude); required");
  parser->AddOption("limit", "N", "list at most N features (default: all)");
  parser->AddFlag("json", "print the features as a JSON array");
  parser->AddExample("annotationlayer query notes.db --extent 116.2,39.8,116.5,40.0 --limit 10");
}

int CQueryCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  if (!args.Has("extent")) return context.UsageError("--extent is required");
  std::vector<double> box;
  if (!CArgumentParser::ParseNumberList(args.Value("extent"), 4, &box)) {
    return context.UsageError("--extent wants four numbers: MINX,MINY,MAXX,MAXY");
  }
  if (box[0] > box[2] || box[1] > box[3]) {
    return context.UsageError("--extent wants MINX <= MAXX and MINY <= MAXY");
  }
  int64_t limit = -1;
  if (args.Has("limit") &&
      !CArgumentParser::ParseInteger(args.Value("limit"), 0, INT_MAX, &limit)) {
    return context.UsageError("--limit wants a whole number, 0 or more");
  }

  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error)) return context.Fail(error);

  // The features whose geometry meets the rectangle, edges included, as `ogrinfo -spat` gives
  // them.
  EXTENT extent;
  extent.min_x = box[0];
  extent.min_y = box[1];
  extent.max_x = box[2];
  extent.max_y = box[3];
  std::string condition = CExtentCondition::GeometryMeets(extent);
  if (limit >= 0) condition += " LIMIT " + std::to_string(limit);
  CFeatureCollector collector;
  if (!session.Model()->TravelViaSQL(&collector, NODE_KIND_FEATURE, condition)) {
    return context.FailWithCause("the spatial query failed");
  }
  if (context.Json()) {
    context.PrintJson(collector.features);
  } else {
    for (const Json::Value& feature : collector.features) {
      context.Print(feature["uuid"].asString() + "  " + feature["type"].asString() + "  " +
                    feature["layer"].asString() + "  " + feature["name"].asString());
    }
  }
  return CCommandContext::kExitOk;
}
