#include "InfoCommand.h"

#include <json/writer.h>

#include <algorithm>
#include <memory>

#include "AnnotationFeature.h"
#include "ArgumentParser.h"
#include "ChildLister.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "FeatureStyleSet.h"
#include "IAnnotationDBDataModel.h"
#include "NodeFormatter.h"
#include "SubtreeExtent.h"
#include "ZuFieldSetObject.h"

namespace {

std::string Compact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

std::string Scalar(const Json::Value& value) {
  if (value.isString()) return value.asString();
  return Compact(value);
}

}  // namespace

void CInfoCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddPositional("UUID", "the folder, layer or feature to describe");
  parser->AddFlag("json", "print the description as one JSON object");
  parser->AddExample("annotationlayer info notes.db 0f8c...   # a uuid from 'tree' or 'query'");
}

Json::Value CInfoCommand::DescribeFolder(IAnnotationDBDataModel* model, const std::string& uuid) {
  Json::Value info = CNodeFormatter::FolderJson(model->QueryFolderOption(uuid));
  info["children"] = model->CountChildren(uuid, NODE_KIND_FOLDER);
  EXTENT extent;
  const bool found = CSubtreeExtent::Compute(model, uuid, NODE_KIND_FOLDER, &extent);
  info["extent"] = found ? CNodeFormatter::ExtentJson(extent) : Json::Value();
  return info;
}

Json::Value CInfoCommand::DescribeLayer(IAnnotationDBDataModel* model, const std::string& uuid) {
  const CLayerOption option = model->QueryLayerOption(uuid);
  Json::Value info = CNodeFormatter::LayerJson(option);
  info["children"] = model->CountChildren(uuid, NODE_KIND_LAYER);
  CZuFieldSetObject headers;
  model->QueryLayerHeaderList(uuid, headers);
  info["fields"] = CNodeFormatter::FieldsJson(headers, false);
  CFeatureStyleSet styles;
  if (model->QueryStyle(&styles, uuid, true)) info["style"] = CNodeFormatter::StyleJson(styles);
  else info["style"] = Json::Value();
  EXTENT extent;
  const bool found = CSubtreeExtent::Compute(model, uuid, NODE_KIND_LAYER, &extent);
  info["extent"] = found ? CNodeFormatter::ExtentJson(extent) : Json::Value();
  return info;
}

Json::Value CInfoCommand::DescribeFeature(IAnnotationDBDataModel* model,
                                          const std::string& uuid) {
  Json::Value info = CNodeFormatter::FeatureJson(model->QueryFeatureOption(uuid));
  CZuFieldSetObject fields;
  model->QueryField(uuid, fields);
  info["fields"] = CNodeFormatter::FieldsJson(fields, true);
  // A feature without a style of its own is drawn with its layer's, which is what this shows.
  CFeatureStyleSet styles;
  if (model->QueryStyle(&styles, uuid, false)) info["style"] = CNodeFormatter::StyleJson(styles);
  else info["style"] = Json::Value();
  CAnnotationFeature geometry;
  Json::Value shape(Json::objectValue);
  if (model->QueryGeometryData(uuid, &geometry)) {
    int vertices = 0;
    for (int i = 0; i < geometry.GetPartCount(); ++i) vertices += geometry.GetPart(i).GetSize();
    shape["kind"] = CNodeFormatter::GeometryKindName(geometry.GetGeometryType());
    shape["parts"] = geometry.GetPartCount();
    shape["vertices"] = vertices;
    info["geometry"] = shape;
    info["extent"] = CNodeFormatter::ExtentJson(model->QueryBoundingBox(uuid));
  } else {
    info["geometry"] = Json::Value();
    info["extent"] = Json::Value();
  }
  return info;
}

void CInfoCommand::PrintText(CCommandContext& context, const Json::Value& info) {
  // Members in a fixed, readable order: identity first, then the record, then the rest.
  static const char* const kOrder[] = {
      "kind", "uuid", "name", "type", "parent", "parent_is_layer", "left", "right", "order",
      "check", "status", "expanded", "recycled", "children", "min_level", "max_level",
      "min_name_level", "max_name_level", "child_max_count", "created", "modified", "index",
      "wkt", "property_header", "geometry", "extent", "style"};
  for (const char* key : kOrder) {
    if (!info.isMember(key)) continue;
    const Json::Value& value = info[key];
    if (value.isNull()) {
      context.Print(std::string(key) + ": (none)");
    } else if (std::string(key) == "extent") {
      context.Print("extent: " + CNodeFormatter::Number(value[0].asDouble()) + " " +
                    CNodeFormatter::Number(value[1].asDouble()) + " " +
                    CNodeFormatter::Number(value[2].asDouble()) + " " +
                    CNodeFormatter::Number(value[3].asDouble()));
    } else {
      context.Print(std::string(key) + ": " + Scalar(value));
    }
  }
  if (info.isMember("fields")) {
    const Json::Value& fields = info["fields"];
    context.Print("fields: " + std::to_string(fields.size()));
    for (const Json::Value& field : fields) {
      std::string line = "  " + field["key"].asString() + " (" + field["type"].asString() + ")";
      if (field.isMember("value")) line += " = " + Scalar(field["value"]);
      context.Print(line);
    }
  }
}

int CInfoCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error)) return context.Fail(error);
  E_NODE_KIND kind = NODE_KIND_NONE;
  if (!session.Resolve(args.Positional("UUID"), &kind, &error)) return context.Fail(error);

  IAnnotationDBDataModel* model = session.Model();
  const std::string uuid = args.Positional("UUID");
  Json::Value info;
  switch (kind) {
    case NODE_KIND_FOLDER: info = DescribeFolder(model, uuid); break;
    case NODE_KIND_LAYER: info = DescribeLayer(model, uuid); break;
    default: info = DescribeFeature(model, uuid); break;
  }
  if (context.Json()) {
    context.PrintJson(info);
  } else {
    PrintText(context, info);
  }
  return CCommandContext::kExitOk;
}
