#include "TreeCommand.h"

#include <json/value.h>

#include <climits>
#include <functional>
#include <list>

#include "AnnotationLayerNS.h"
#include "ArgumentParser.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectVisitor.h"
#include "LayerOption.h"
#include "ModelTransaction.h"
#include "NodeFormatter.h"

namespace {

using Node = CTreeCommand::Node;

Node FolderNode(IAnnotationDBDataModel* model, const std::string& uuid,
                const CFolderOption& option) {
  Node node;
  node.kind = NODE_KIND_FOLDER;
  node.uuid = uuid;
  node.name = CNodeFormatter::Utf8(option.GetName());
  node.check = CNodeFormatter::CheckStateName(option.GetNodeCheckState());
  node.children = model->CountChildren(uuid, NODE_KIND_FOLDER);
  return node;
}

Node LayerNode(IAnnotationDBDataModel* model, const std::string& uuid, const CLayerOption& option) {
  Node node;
  node.kind = NODE_KIND_LAYER;
  node.uuid = uuid;
  node.name = CNodeFormatter::Utf8(option.GetName());
  node.check = CNodeFormatter::CheckStateName(option.GetNodeCheckState());
  node.type = CNodeFormatter::LayerTypeName(option.GetType());
  node.children = model->CountChildren(uuid, NODE_KIND_LAYER);
  node.gisLayer = AnnotationLayerNS::IsGISLayer(option.GetType());
  return node;
}

// A feature from its name, type and own check state only, read in one go: far cheaper than its
// whole record. A feature of a GIS layer has no status row of its own and is shown as its layer
// is.
Node FeatureNode(IAnnotationDBDataModel* model, const std::string& uuid, bool gisParent) {
  IAnnotationDBDataModel::FeatureLink link;
  if (!model->QueryFeatureLink(uuid, link, false)) {
    // A model that cannot read the link: the record's own operations.
    const CFeatureOption base = model->QueryFeatureBase(uuid);
    link.name = base.GetName();
    link.type = base.GetType();
    link.checked = model->QueryFeatureOption(uuid).IsNodeChecked();
  }
  Node node;
  node.kind = NODE_KIND_FEATURE;
  node.uuid = uuid;
  node.name = CNodeFormatter::Utf8(link.name);
  node.check = gisParent || link.checked ? "checked" : "unchecked";
  node.type = CNodeFormatter::AnnotationTypeName(static_cast<E_ANNOTATION_TYPE>(link.type));
  return node;
}

// Hands each direct child of one folder or layer to a callback as the walk reaches it, in sibling
// order. Every answer is "skip the children": the callback descends itself, to its own depth.
class CChildStream : public IAnnotationDBObjectVisitor {
 public:
  CChildStream(bool features, bool gisParent, std::function<void(const Node&)> onChild)
      : features_(features), gisParent_(gisParent), onChild_(std::move(onChild)) {}

  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel* model, const std::list<std::string>&,
                            const std::string& uuid, const CFolderOption& option) override {
    onChild_(FolderNode(model, uuid, option));
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel* model, const std::list<std::string>&,
                           const std::string& uuid, const CLayerOption& option) override {
    onChild_(LayerNode(model, uuid, option));
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel* model, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    if (features_) onChild_(FeatureNode(model, uuid, gisParent_));
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  bool IsOnlyUUID() override { return true; }

 private:
  bool features_;
  bool gisParent_;
  std::function<void(const Node&)> onChild_;
};

std::string Indent(int depth) { return std::string(static_cast<size_t>(depth) * 2, ' '); }

// One "key" : value member of a JSON object at `depth`, as the context's JSON writer puts it.
std::string Member(int depth, const char* key, const Json::Value& value) {
  return Indent(depth) + "\"" + key + "\" : " + CCommandContext::JsonText(value);
}

}  // namespace

void CTreeCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddOption("depth", "N", "show N levels below the top root folder (default: all)");
  parser->AddFlag("features", "list features under their layers too");
  parser->AddFlag("json", "print the tree as nested JSON objects");
  parser->AddExample("annotationlayer tree notes.db --depth 2");
}

void CTreeCommand::Show(IAnnotationDBDataModel* model, const Node& node, int level) {
  // A JSON object sits two steps in from its parent: the parent's "nodes" array is between them.
  const int depth = json_ ? 2 * level : level;
  // JSON members come in the order of their keys: check, children, kind, name, nodes, type, uuid.
  if (json_) {
    context_->Write(Indent(depth) + "{\n" + Member(depth + 1, "check", node.check) + ",\n" +
                    Member(depth + 1, "children", node.children) + ",\n" +
                    Member(depth + 1, "kind", CNodeFormatter::KindName(node.kind)) + ",\n" +
                    Member(depth + 1, "name", node.name));
  } else {
    std::string line = Indent(depth) + CNodeFormatter::KindName(node.kind) + " \"" + node.name +
                       "\" [" + node.check + "] ";
    if (node.kind != NODE_KIND_FEATURE) {
      line += std::to_string(node.children) + (node.children == 1 ? " child  " : " children  ");
    } else {
      line += node.type + "  ";
    }
    context_->Print(line + node.uuid);
  }

  const bool expand = node.kind != NODE_KIND_FEATURE && node.children > 0 &&
                      (maxDepth_ < 0 || level < maxDepth_);
  int listed = 0;
  CChildStream stream(features_, node.gisLayer, [&](const Node& child) {
    if (json_) {
      context_->Write(listed == 0 ? ",\n" + Indent(depth + 1) + "\"nodes\" : \n" +
                                        Indent(depth + 1) + "[\n"
                                  : std::string(",\n"));
    }
    ++listed;
    Show(model, child, level + 1);
  });
  if (expand && node.kind == NODE_KIND_FOLDER) {
    model->TravelFolder(&stream, node.uuid);
  } else if (expand && (features_ || model->IsLayerExistLayer(node.uuid))) {
    // Without features and without sub-layers there is nothing to list: the walk would step
    // through every feature.
    model->TravelLayerChildren(&stream, node.uuid);
  }

  if (!json_) return;
  std::string tail = listed > 0 ? "\n" + Indent(depth + 1) + "]" : std::string();
  if (!node.type.empty()) tail += ",\n" + Member(depth + 1, "type", node.type);
  tail += ",\n" + Member(depth + 1, "uuid", node.uuid) + "\n" + Indent(depth) + "}";
  context_->Write(tail);
}

int CTreeCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  maxDepth_ = -1;
  if (args.Has("depth") &&
      !CArgumentParser::ParseInteger(args.Value("depth"), 0, INT_MAX, &maxDepth_)) {
    return context.UsageError("--depth wants a whole number of levels, 0 or more");
  }
  features_ = args.Has("features");
  json_ = context.Json();

  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error)) return context.Fail(error);
  IAnnotationDBDataModel* model = session.Model();

  context_ = &context;
  {
    // One read transaction for the whole listing: otherwise each of the thousands of statements
    // takes and drops the file's lock on its own. Nothing is written; the end rolls back.
    CModelTransaction snapshot(model);
    Show(model,
         FolderNode(model, session.RootUuid(), model->QueryFolderOption(session.RootUuid())), 0);
  }
  if (json_) context.Write("\n");
  context_ = nullptr;
  return CCommandContext::kExitOk;
}
