// A child process for crash tests: runs one long batch operation on a database and reports its
// progress on standard error, so that the test can kill it with SIGKILL at a point of its choice.
//
//   crash_worker import DB PARENT COUNT EVERY    COUNT point features into a new layer "crash"
//   crash_worker delete DB NODE EVERY            the folder or layer NODE and all below it
//   crash_worker copy DB NODE TARGET EVERY       NODE and all below it into TARGET
//   crash_worker rebuild DB NODE EVERY           renumber the order of everything below NODE
//
// Lines written: "mark N" after every EVERY units of work (rows imported, features deleted, nodes
// copied or renumbered), "committing" just before the commit starts and "done" once it returned.
// A state written by the commit is only possible after "committing" reached the pipe. The
// module's own log is kept in memory, away from the pipe.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "NodeOrderRebuilder.h"
#include "SpatialiteDBDataModel.h"
#include "ZuLog.h"

namespace {

void Say(const std::string& line) {
  const std::string text = line + "\n";
  // One write per line, unbuffered: nothing said is lost when the kill comes.
  if (write(STDERR_FILENO, text.data(), text.size()) < 0) std::_Exit(70);
}

// Counts units of work and says "mark N" at every multiple of `every`.
class CMarker {
 public:
  explicit CMarker(int every) : every_(every < 1 ? 1 : every) {}
  // The running count has reached `count`.
  void ReachedCount(int count) {
    while (next_ * every_ <= count) Say("mark " + std::to_string(next_++));
  }
  void Step() { ReachedCount(++count_); }

 private:
  int every_;
  int next_ = 1;
  int count_ = 0;
};

int Import(CSpatialiteDBDataModel& model, const std::string& parent, int count, CMarker& marker) {
  CAnnotationGroup group("crash");
  CFeatureBatchImporter importer(&model, parent);
  if (!importer.BeginImport() || !importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION)) return 2;
  for (int i = 0; i < count; ++i) {
    CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
    CGeometryData part;
    part.PushBack(CVector3D(i % 360 - 180, i % 170 - 85, 0));
    feature.AddPart(part);
    feature.SetGroup(&group);
    feature.SetFieldValue("n", i);
    if (!importer.InsertFeature(&feature)) return 3;
    marker.Step();
  }
  Say("committing");
  return importer.EndImport() ? 0 : 4;
}

class CMarkingDeleteProgress : public CLayerBatchDeleter::IDeleteProgress {
 public:
  explicit CMarkingDeleteProgress(CMarker* marker) : marker_(marker) {}
  bool OnDeleteLayer(const std::string&) override { return false; }
  bool OnDeleteFolder(const std::string&) override { return false; }
  // `handled` counts within one layer; the marker wants the running total over all layers.
  bool OnDeleteFeatures(const std::string& layer, int handled, int) override {
    if (layer != layer_ || handled < lastHandled_) {
      layer_ = layer;
      base_ += lastHandled_;
      lastHandled_ = 0;
    }
    lastHandled_ = handled;
    marker_->ReachedCount(base_ + handled);
    return false;
  }

 private:
  CMarker* marker_;
  std::string layer_;
  int base_ = 0;
  int lastHandled_ = 0;
};

class CMarkingCopyProgress : public CLayerBatchCopier::ICopyProgress {
 public:
  explicit CMarkingCopyProgress(CMarker* marker) : marker_(marker) {}
  bool OnNodeCopied(const std::string&, int copied) override {
    marker_->ReachedCount(copied);
    return false;
  }

 private:
  CMarker* marker_;
};

class CMarkingRebuildProgress : public CNodeOrderRebuilder::IRebuildProgress {
 public:
  explicit CMarkingRebuildProgress(CMarker* marker) : marker_(marker) {}
  void OnBegin(IAnnotationDBDataModel*, bool) override {}
  void OnNode(const std::string&, int count) override { marker_->ReachedCount(count); }
  // Called just before the rebuilder's commit.
  void OnEnd(IAnnotationDBDataModel*) override { Say("committing"); }

 private:
  CMarker* marker_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 64;
  CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());
  const std::string operation = argv[1];
  CSpatialiteDBDataModel model;
  if (!model.Install(argv[2])) return 65;
  model.GetNodeCacheCalculator()->WaitForFinished(-1);
  CMarker marker(std::atoi(argv[argc - 1]));
  int result = 64;
  if (operation == "import" && argc == 6) {
    result = Import(model, argv[3], std::atoi(argv[4]), marker);
  } else if (operation == "delete" && argc == 5) {
    CMarkingDeleteProgress progress(&marker);
    CLayerBatchDeleter deleter(&model);
    deleter.BeginDelete(false, &progress);
    const std::string node = argv[3];
    const bool deleted = model.IsFolderUUID(node) ? deleter.BatchDeleteFolder(node)
                                                  : deleter.BatchDeleteLayer(node);
    Say("committing");
    deleter.EndDelete();
    result = deleted ? 0 : 5;
  } else if (operation == "copy" && argc == 6) {
    CMarkingCopyProgress progress(&marker);
    CLayerBatchCopier copier(&model);
    if (!copier.BeginCopy(&progress) || !copier.CopyNode(argv[3], argv[4])) return 6;
    Say("committing");
    result = copier.EndCopy() ? 0 : 7;
  } else if (operation == "rebuild" && argc == 5) {
    CMarkingRebuildProgress progress(&marker);
    CNodeOrderRebuilder rebuilder(&model);
    result = rebuilder.RebuildNodeOrderNum(argv[3], true, &progress) ? 0 : 8;
  }
  if (result == 0) Say("done");
  return result;
}
