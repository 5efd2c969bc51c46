// A child process for crash tests: runs one long batch operation on a database and prints
// "midway" to standard output when it is half done, so that the test can kill it right there.
//
//   crash_worker import DB PARENT COUNT
//   crash_worker delete DB LAYER
//   crash_worker copy DB LAYER TARGET
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
#include "SpatialiteDBDataModel.h"
#include "ZuLog.h"

namespace {

void Midway() {
  std::fputs("midway\n", stdout);
  std::fflush(stdout);
}

int Import(CSpatialiteDBDataModel& model, const std::string& parent, int count) {
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
    if (i == count / 2) Midway();
  }
  return importer.EndImport() ? 0 : 4;
}

class MidwayDeleteProgress : public CLayerBatchDeleter::IDeleteProgress {
 public:
  bool OnDeleteLayer(const std::string&) override { return false; }
  bool OnDeleteFolder(const std::string&) override { return false; }
  bool OnDeleteFeatures(const std::string&, int handled, int total) override {
    if (handled * 2 >= total && !said_) {
      said_ = true;
      Midway();
    }
    return false;
  }

 private:
  bool said_ = false;
};

class MidwayCopyProgress : public CLayerBatchCopier::ICopyProgress {
 public:
  explicit MidwayCopyProgress(int total) : total_(total) {}
  bool OnNodeCopied(const std::string&, int copied) override {
    if (copied * 2 >= total_ && !said_) {
      said_ = true;
      Midway();
    }
    return false;
  }

 private:
  int total_;
  bool said_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 64;
  CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());  // keep the pipe for the marker
  const std::string operation = argv[1];
  CSpatialiteDBDataModel model;
  if (!model.Install(argv[2])) return 65;
  model.GetNodeCacheCalculator()->WaitForFinished(-1);
  if (operation == "import" && argc == 5) return Import(model, argv[3], std::atoi(argv[4]));
  if (operation == "delete") {
    MidwayDeleteProgress progress;
    CLayerBatchDeleter deleter(&model);
    deleter.BeginDelete(false, &progress);
    const bool deleted = deleter.BatchDeleteLayer(argv[3]);
    deleter.EndDelete();
    return deleted ? 0 : 5;
  }
  if (operation == "copy" && argc == 5) {
    MidwayCopyProgress progress(model.CountChildren(argv[3], NODE_KIND_LAYER));
    CLayerBatchCopier copier(&model);
    if (!copier.BeginCopy(&progress) || !copier.CopyNode(argv[3], argv[4])) return 6;
    return copier.EndCopy() ? 0 : 7;
  }
  return 64;
}
