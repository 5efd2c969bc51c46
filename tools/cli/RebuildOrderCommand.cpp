#include "RebuildOrderCommand.h"

#include <chrono>

#include "AnnotationLayerNS.h"
#include "ArgumentParser.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "LayerOption.h"
#include "ModelTransaction.h"
#include "NodeFormatter.h"
#include "NodeOrderRebuilder.h"
#include "ProgressBar.h"

namespace {

class CRebuildProgress : public CNodeOrderRebuilder::IRebuildProgress {
 public:
  explicit CRebuildProgress(CProgressBar* bar) : bar_(bar) {}
  void OnBegin(IAnnotationDBDataModel*, bool) override { bar_->Start("rebuild-order", 0); }
  void OnNode(const std::string&, int count) override {
    visited_ = count;
    bar_->Update(count);
  }
  void OnEnd(IAnnotationDBDataModel*) override { bar_->Finish(); }
  int Visited() const { return visited_; }

 private:
  CProgressBar* bar_;
  int visited_ = 0;
};

}  // namespace

void CRebuildOrderCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddPositional("UUID", "the folder or layer whose children are renumbered");
  parser->AddFlag("recursive", "renumber every sibling list below it too");
  parser->AddFlag("json", "print the result as JSON");
  parser->AddExample("annotationlayer rebuild-order notes.db 0f8c... --recursive");
}

int CRebuildOrderCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  const auto start = std::chrono::steady_clock::now();
  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error, CDatabaseSession::OPEN_FOR_WRITING)) {
    return context.Fail(error);
  }
  const std::string uuid = args.Positional("UUID");
  E_NODE_KIND kind = NODE_KIND_NONE;
  if (!session.Resolve(uuid, &kind, &error)) return context.Fail(error);
  if (kind == NODE_KIND_FEATURE) {
    return context.Fail("a feature has no children; give a folder or a layer");
  }
  const bool recursive = args.Has("recursive");
  // A GIS layer's features have no order rows: they are walked in stored order, so there is no
  // number to rebuild. Said plainly rather than reported as a walk of 0 nodes.
  if (kind == NODE_KIND_LAYER && !session.Model()->IsLayerExistLayer(uuid)) {
    const CLayerOption layer = session.Model()->QueryLayerOption(uuid);
    if (AnnotationLayerNS::IsGISLayer(layer.GetType())) {
      const std::string reason = "nothing to renumber: the features of the GIS layer \"" +
                                 CNodeFormatter::Utf8(layer.GetName()) +
                                 "\" keep their stored order";
      if (!context.Json()) {
        context.Print(reason);
        return CCommandContext::kExitOk;
      }
      Json::Value result(Json::objectValue);
      result["uuid"] = uuid;
      result["recursive"] = recursive;
      result["visited"] = 0;
      result["note"] = reason;
      context.PrintJson(result);
      return CCommandContext::kExitOk;
    }
  }
  CInterruptFlag interrupt;
  CModelTransaction transaction(session.Model());
  if (!transaction.IsOpen()) return context.FailWithCause("could not start a transaction");
  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  CRebuildProgress progress(&bar);
  CNodeOrderRebuilder rebuilder(session.Model());
  const bool rebuilt = rebuilder.RebuildNodeOrderNum(uuid, recursive, &progress);
  bar.Finish();
  if (interrupt.IsSet()) {
    return context.Fail("interrupted; nothing was renumbered", CCommandContext::kExitInterrupted);
  }
  if (!rebuilt) return context.FailWithCause("could not renumber the children of " + uuid);
  if (!transaction.Commit()) return context.FailWithCause("could not commit the new numbers");

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["uuid"] = uuid;
    result["recursive"] = recursive;
    result["visited"] = progress.Visited();
    result["seconds"] = seconds;
    context.PrintJson(result);
  } else {
    context.Print("renumbered the sibling order below " + uuid + (recursive ? " (recursive)" : "") +
                  ": " + std::to_string(progress.Visited()) + " nodes visited in " +
                  CNodeFormatter::Seconds(seconds) + " s");
  }
  return CCommandContext::kExitOk;
}
