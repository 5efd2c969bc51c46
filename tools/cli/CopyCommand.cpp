#include "CopyCommand.h"

#include <algorithm>
#include <chrono>
#include <list>

#include "ArgumentParser.h"
#include "ChildLister.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "LayerBatchCopier.h"
#include "NodeFormatter.h"
#include "ProgressBar.h"

namespace {

// Shows the copier's progress and cancels it on an interrupt.
class CCopyProgress : public CLayerBatchCopier::ICopyProgress {
 public:
  CCopyProgress(CProgressBar* bar, const CInterruptFlag* interrupt)
      : bar_(bar), interrupt_(interrupt) {}
  bool OnNodeCopied(const std::string&, int copied) override {
    copied_ = copied;
    bar_->Update(copied);
    cancelled_ = cancelled_ || interrupt_->IsSet();
    return cancelled_;
  }
  int Copied() const { return copied_; }
  bool Cancelled() const { return cancelled_; }

 private:
  CProgressBar* bar_;
  const CInterruptFlag* interrupt_;
  int copied_ = 0;
  bool cancelled_ = false;
};

// Why `source` may not go under `target`, or empty when it may.
std::string PlacementProblem(IAnnotationDBDataModel* model, const std::string& source,
                             E_NODE_KIND sourceKind, const std::string& target,
                             E_NODE_KIND targetKind) {
  if (targetKind == NODE_KIND_FEATURE) return "--to must name a folder or a layer, not a feature";
  if (sourceKind == NODE_KIND_FOLDER && targetKind != NODE_KIND_FOLDER) {
    return "a folder can only be copied under a folder";
  }
  if (sourceKind == NODE_KIND_FEATURE && targetKind != NODE_KIND_LAYER) {
    return "a feature can only be copied under a layer";
  }
  std::list<std::string> ancestors;
  model->QueryAncestorUUIDs(target, ancestors);
  if (target == source ||
      std::find(ancestors.begin(), ancestors.end(), source) != ancestors.end()) {
    return "a node cannot be copied into its own subtree";
  }
  return std::string();
}

}  // namespace

void CCopyCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddPositional("UUID", "the folder, layer or feature to copy");
  parser->AddOption("to", "UUID", "the folder or layer to copy under; required");
  parser->AddFlag("json", "print the result as JSON");
  parser->AddExample("annotationlayer copy notes.db 0f8c... --to 77ab...");
}

int CCopyCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  if (!args.Has("to")) return context.UsageError("--to is required");
  const auto start = std::chrono::steady_clock::now();
  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error, CDatabaseSession::OPEN_FOR_WRITING)) {
    return context.Fail(error);
  }
  const std::string source = args.Positional("UUID");
  const std::string target = args.Value("to");
  E_NODE_KIND sourceKind = NODE_KIND_NONE, targetKind = NODE_KIND_NONE;
  if (!session.Resolve(source, &sourceKind, &error)) return context.Fail(error);
  if (!session.Resolve(target, &targetKind, &error)) return context.Fail("--to: " + error);
  IAnnotationDBDataModel* model = session.Model();
  const std::string problem = PlacementProblem(model, source, sourceKind, target, targetKind);
  if (!problem.empty()) return context.Fail(problem);

  const int64_t total =
      sourceKind == NODE_KIND_FEATURE ? 1 : 1 + CChildLister::CountBelow(model, source, sourceKind).Total();
  CInterruptFlag interrupt;
  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  bar.Start("copy", total);
  CCopyProgress progress(&bar, &interrupt);
  CLayerBatchCopier copier(model);
  if (!copier.BeginCopy(&progress)) return context.FailWithCause("could not start the copy");
  std::string copy;
  bool copied = copier.CopyNode(source, target, &copy);
  if (copied && !progress.Cancelled() && !interrupt.IsSet()) {
    copied = copier.EndCopy();
  } else {
    // A cancelled copier has rolled back already; a failed one still holds its transaction.
    if (copier.IsCopying()) copier.DiscardCopy();
    copied = false;
  }
  bar.Finish();
  if (progress.Cancelled() || interrupt.IsSet()) {
    return context.Fail("interrupted; nothing was copied", CCommandContext::kExitInterrupted);
  }
  if (!copied || copy.empty()) return context.FailWithCause("could not copy " + source);

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["source"] = source;
    result["target"] = target;
    result["copy"] = copy;
    result["nodes"] = progress.Copied();
    result["seconds"] = seconds;
    context.PrintJson(result);
  } else {
    context.Print(copy);
  }
  return CCommandContext::kExitOk;
}
