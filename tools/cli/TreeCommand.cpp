#include "TreeCommand.h"

#include <climits>

#include "AnnotationLayerNS.h"
#include "ArgumentParser.h"
#include "ChildLister.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "IAnnotationDBDataModel.h"
#include "NodeFormatter.h"

namespace {

// `gisParent`: the child is a feature of a GIS layer, which has no status row of its own and is
// shown as its layer is.
Json::Value NodeJson(IAnnotationDBDataModel* model, const CChildLister::Child& child,
                     bool gisParent = false) {
  Json::Value node(Json::objectValue);
  node["kind"] = CNodeFormatter::KindName(child.kind);
  node["uuid"] = child.uuid;
  switch (child.kind) {
    case NODE_KIND_FOLDER:
      node["name"] = CNodeFormatter::Utf8(child.folder.GetName());
      node["check"] = CNodeFormatter::CheckStateName(child.folder.GetNodeCheckState());
      node["children"] = model->CountChildren(child.uuid, NODE_KIND_FOLDER);
      break;
    case NODE_KIND_LAYER:
      node["name"] = CNodeFormatter::Utf8(child.layer.GetName());
      node["check"] = CNodeFormatter::CheckStateName(child.layer.GetNodeCheckState());
      node["type"] = CNodeFormatter::LayerTypeName(child.layer.GetType());
      node["children"] = model->CountChildren(child.uuid, NODE_KIND_LAYER);
      break;
    default:
      node["name"] = CNodeFormatter::Utf8(child.feature.GetName());
      node["check"] = gisParent || child.feature.IsNodeChecked() ? "checked" : "unchecked";
      node["type"] = CNodeFormatter::AnnotationTypeName(child.feature.GetType());
      node["children"] = 0;
      break;
  }
  return node;
}

E_NODE_KIND KindOf(const Json::Value& node) {
  const std::string kind = node["kind"].asString();
  if (kind == "folder") return NODE_KIND_FOLDER;
  if (kind == "layer") return NODE_KIND_LAYER;
  return NODE_KIND_FEATURE;
}

}  // namespace

void CTreeCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddOption("depth", "N", "show N levels below the top root folder (default: all)");
  parser->AddFlag("features", "list features under their layers too");
  parser->AddFlag("json", "print the tree as nested JSON objects");
  parser->AddExample("annotationlayer tree notes.db --depth 2");
}

void CTreeCommand::Expand(IAnnotationDBDataModel* model, Json::Value* node, E_NODE_KIND kind,
                          int depth) {
  if (kind == NODE_KIND_FEATURE || (maxDepth_ >= 0 && depth >= maxDepth_)) return;
  if ((*node)["children"].asInt() <= 0) return;
  CChildLister lister(features_, true);
  std::vector<CChildLister::Child> children;
  lister.List(model, (*node)["uuid"].asString(), kind, &children);
  const bool gisLayer = kind == NODE_KIND_LAYER &&
                        AnnotationLayerNS::IsGISLayer(model->QueryLayerOption(
                            (*node)["uuid"].asString()).GetType());
  Json::Value nodes(Json::arrayValue);
  for (const CChildLister::Child& child : children) {
    Json::Value childNode = NodeJson(model, child, gisLayer);
    Expand(model, &childNode, child.kind, depth + 1);
    nodes.append(childNode);
  }
  if (!nodes.empty()) (*node)["nodes"] = nodes;
}

void CTreeCommand::PrintText(CCommandContext& context, const Json::Value& node, int depth) const {
  const int children = node["children"].asInt();
  std::string line = std::string(static_cast<size_t>(depth) * 2, ' ') + node["kind"].asString() +
                     " \"" + node["name"].asString() + "\" [" + node["check"].asString() + "] ";
  if (KindOf(node) != NODE_KIND_FEATURE) {
    line += std::to_string(children) + (children == 1 ? " child  " : " children  ");
  } else {
    line += node["type"].asString() + "  ";
  }
  context.Print(line + node["uuid"].asString());
  for (const Json::Value& child : node["nodes"]) PrintText(context, child, depth + 1);
}

int CTreeCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  maxDepth_ = -1;
  if (args.Has("depth") &&
      !CArgumentParser::ParseInteger(args.Value("depth"), 0, INT_MAX, &maxDepth_)) {
    return context.UsageError("--depth wants a whole number of levels, 0 or more");
  }
  features_ = args.Has("features");

  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error)) return context.Fail(error);
  IAnnotationDBDataModel* model = session.Model();

  const CFolderOption rootOption = model->QueryFolderOption(session.RootUuid());
  CChildLister::Child root;
  root.kind = NODE_KIND_FOLDER;
  root.uuid = session.RootUuid();
  root.folder = rootOption;
  Json::Value tree = NodeJson(model, root);
  Expand(model, &tree, NODE_KIND_FOLDER, 0);

  if (context.Json()) {
    context.PrintJson(tree);
  } else {
    PrintText(context, tree, 0);
  }
  return CCommandContext::kExitOk;
}
