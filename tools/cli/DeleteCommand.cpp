#include "DeleteCommand.h"

#include <chrono>

#include "ArgumentParser.h"
#include "ChildLister.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "LayerBatchDeleter.h"
#include "ModelTransaction.h"
#include "NodeFormatter.h"
#include "ProgressBar.h"
#include "SiblingUnlinker.h"

namespace {

// Shows the deleter's progress and cancels it on an interrupt; the command's outer transaction
// then takes back what the deleter had removed.
class CDeleteProgress : public CLayerBatchDeleter::IDeleteProgress {
 public:
  CDeleteProgress(CProgressBar* bar, const CInterruptFlag* interrupt)
      : bar_(bar), interrupt_(interrupt) {}
  bool OnDeleteLayer(const std::string&) override { return interrupt_->IsSet(); }
  bool OnDeleteFolder(const std::string&) override { return interrupt_->IsSet(); }
  bool OnDeleteFeatures(const std::string& layerName, int handled, int total) override {
    if (layerName != current_) {
      current_ = layerName;
      bar_->Start("delete " + CNodeFormatter::Utf8(layerName), total);
    }
    bar_->Update(handled);
    return interrupt_->IsSet();
  }

 private:
  CProgressBar* bar_;
  const CInterruptFlag* interrupt_;
  std::string current_;
};

}  // namespace

void CDeleteCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddPositional("UUID", "the folder or layer to delete, with everything below it");
  parser->AddFlag("json", "print the result as JSON");
  parser->AddExample("annotationlayer delete notes.db 0f8c...");
}

int CDeleteCommand::Run(CCommandContext& context) {
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
  if (uuid == session.RootUuid()) {
    return context.Fail("the top root folder cannot be deleted; delete its children instead");
  }
  if (kind == NODE_KIND_FEATURE) {
    // The data model's single-feature delete leaves its neighbours' links to it in place when it
    // stood first or last in its list, which breaks later walks; only whole subtrees go here.
    return context.Fail("delete takes a folder or a layer; " + uuid + " is a feature");
  }
  IAnnotationDBDataModel* model = session.Model();

  const int64_t features = CChildLister::CountBelow(model, uuid, kind).features;
  // One outer transaction around the unlink and the deleter's own: on any failure the rollback
  // restores everything, where the deleter alone would commit what it had removed so far.
  CInterruptFlag interrupt;
  CModelTransaction transaction(model);
  if (!transaction.IsOpen()) return context.FailWithCause("could not start a transaction");
  if (!CSiblingUnlinker(model).Unlink(uuid, kind)) {
    return context.FailWithCause("could not take " + uuid + " out of its sibling list");
  }
  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  CDeleteProgress progress(&bar, &interrupt);
  CLayerBatchDeleter deleter(model);
  deleter.BeginDelete(false, &progress);
  const bool deleted = kind == NODE_KIND_FOLDER ? deleter.BatchDeleteFolder(uuid)
                                                : deleter.BatchDeleteLayer(uuid);
  deleter.EndDelete();
  bar.Finish();
  // Checked before the outcome: a cancelled deletion fails too, and a signal that came after the
  // deleter's last step still means the person did not want the deletion.
  if (interrupt.IsSet()) {
    return context.Fail("interrupted; nothing was deleted", CCommandContext::kExitInterrupted);
  }
  if (!deleted || model->IsExistNode(uuid)) {
    return context.FailWithCause(std::string("could not delete ") + CNodeFormatter::KindName(kind) +
                                 " " + uuid + "; nothing was deleted");
  }
  if (!transaction.Commit()) return context.FailWithCause("could not commit the deletion");
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["deleted"] = uuid;
    result["kind"] = CNodeFormatter::KindName(kind);
    result["features"] = static_cast<Json::Int64>(features);
    result["seconds"] = seconds;
    context.PrintJson(result);
  } else {
    context.Print(std::string("deleted ") + CNodeFormatter::KindName(kind) + " " + uuid + " (" +
                  std::to_string(features) + " features) in " + CNodeFormatter::Seconds(seconds) +
                  " s");
  }
  return CCommandContext::kExitOk;
}
