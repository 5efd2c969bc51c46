// I/O errors and a full disk injected at every write step of the batch tools and the key-point
// editor database. Whatever an operation then reports, the file must pass SQLite's integrity
// check afterwards and keep the data committed before it.
#include <gtest/gtest.h>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "CacheDirScope.h"
#include "FaultVfs.h"
#include "FeatureBatchImporter.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "NodeOrderRebuilder.h"
#include "SpatialiteDBDataModel.h"
#include "SpatialiteEditorDB.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {

// One database, built once: a layer "keep" that no operation touches and a layer "work" that the
// operations import into, delete, copy and renumber.
struct Template {
  Template() {
    CSpatialiteDBDataModel model;
    model.Install(db.Path());
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
    CTreeBuilder tree(&model);
    folder = tree.AddFolder(db.RootUUID(), "f");
    Import(model, folder, "keep", 30);
    Import(model, folder, "work", 120);
    ExecSql(model.GetConnection(), "UPDATE shape_order SET order_num = -1", "");
    work = QueryScalar(db.Path(), "SELECT uuid FROM layer WHERE name = 'work'");
    model.Uninstall();
    bytes = ReadFileBytes(db.Path());
  }
  // `count` points in a new layer `name` below `parent`, in one import.
  static void Import(CSpatialiteDBDataModel& model, const std::string& parent,
                     const std::string& name, int count) {
    CAnnotationGroup group(name);
    CFeatureBatchImporter importer(&model, parent);
    if (!importer.BeginImport()) return;
    importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
    for (int i = 0; i < count; ++i) {
      CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
      CGeometryData part;
      part.PushBack(CVector3D(i, i, 0));
      feature.AddPart(part);
      feature.SetGroup(&group);
      feature.SetFieldValue("n", i);
      importer.InsertFeature(&feature);
    }
    importer.EndImport();
  }
  CTestDatabase db;
  std::string folder, work, bytes;
};

using Operation = void (*)(CSpatialiteDBDataModel&, const Template&);

void ImportMore(CSpatialiteDBDataModel& model, const Template& t) {
  Template::Import(model, t.folder, "more", 80);
}

void DeleteWork(CSpatialiteDBDataModel& model, const Template& t) {
  CLayerBatchDeleter deleter(&model);
  deleter.BeginDelete(false, nullptr);
  deleter.BatchDeleteLayer(t.work);
  deleter.EndDelete();
}

void CopyWork(CSpatialiteDBDataModel& model, const Template& t) {
  CLayerBatchCopier copier(&model);
  if (!copier.BeginCopy(nullptr)) return;
  copier.CopyNode(t.work, t.folder);
  copier.EndCopy();
}

void RebuildWork(CSpatialiteDBDataModel& model, const Template& t) {
  CNodeOrderRebuilder rebuilder(&model);
  rebuilder.RebuildNodeOrderNum(t.folder, true, nullptr);
}

class WriteFaultTest : public ::testing::TestWithParam<std::pair<const char*, Operation>> {
 protected:
  static Template* shared_;
  static void SetUpTestSuite() { shared_ = new Template; }
  static void TearDownTestSuite() {
    delete shared_;
    shared_ = nullptr;
  }
  CZuLogCapture quiet_;
};

Template* WriteFaultTest::shared_ = nullptr;

}  // namespace

TEST_P(WriteFaultTest, EveryWriteStepFailingLeavesASoundFile) {
  const Operation operation = GetParam().second;
  CTempDir dir;
  const std::string path = dir.File("faulty.db");
  const std::string keep =
      "SELECT COUNT(*) FROM shape WHERE puuid = (SELECT uuid FROM layer WHERE name = 'keep')";

  // Runs the operation on a fresh copy with writes failing after `allowed` of them (none when
  // negative) and returns how many writes it made.
  auto run = [&](int allowed) {
    EXPECT_TRUE(WriteFileBytes(path, shared_->bytes));
    CFaultVfs vfs;
    CSpatialiteDBDataModel model;
    EXPECT_TRUE(model.Install(path));
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
    vfs.FailAfter(allowed, allowed % 2 == 1);
    operation(model, *shared_);
    model.GetNodeCacheCalculator()->WaitForFinished(-1);
    const int writes = vfs.WritesSeen();
    vfs.FailAfter(-1, false);
    model.Uninstall();
    return writes;
  };
  const int total = run(-1);
  ASSERT_GT(total, 0);
  // Then the writes failing from each step on (at most 25 steps, spread evenly).
  const int stride = std::max(1, total / 25);
  for (int allowed = 0; allowed < total; allowed += stride) {
    run(allowed);
    // Opening read-write rolls back a journal left by the failure.
    CSpatialiteDBDataModel reopened;
    ASSERT_TRUE(reopened.Install(path)) << "writes allowed: " << allowed;
    reopened.GetNodeCacheCalculator()->WaitForFinished(-1);
    reopened.Uninstall();
    EXPECT_EQ("ok", QueryScalar(path, "PRAGMA integrity_check")) << "writes allowed: " << allowed;
    EXPECT_EQ("30", QueryScalar(path, keep)) << "writes allowed: " << allowed;
  }
}

INSTANTIATE_TEST_SUITE_P(
    BatchTools, WriteFaultTest,
    ::testing::Values(std::make_pair("import", &ImportMore), std::make_pair("delete", &DeleteWork),
                      std::make_pair("copy", &CopyWork), std::make_pair("rebuild", &RebuildWork)),
    [](const ::testing::TestParamInfo<std::pair<const char*, Operation>>& info) {
      return std::string(info.param.first);
    });

TEST(EditorWriteFaultTest, FailingWritesNeverCrashTheEditor) {
  CCacheDirScope cache;
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_LINESTRING);
  CGeometryData part;
  for (int i = 0; i < 50; ++i) part.PushBack(CVector3D(i, i, 0));
  feature.AddPart(part);
  CZuLogCapture quiet;
  for (int allowed = 0; allowed < 60; allowed += 3) {
    CFaultVfs vfs;
    vfs.FailAfter(allowed, allowed % 2 == 1);
    CSpatialiteEditorDB editor;
    if (editor.Open("faulty", &feature)) {
      editor.InsertKeyPoint(1, CVector3D(0.5, 0.5, 0));
      editor.RemoveKeyPoint(2);
      editor.ReviseKeyPoint(3, CVector3D(9, 9, 9));
      CAnnotationFeature combined;
      editor.CombineToData(&combined);
      editor.Close();
    }
    vfs.FailAfter(-1, false);
  }
  // With writes allowed again the editor works as before.
  CFaultVfs vfs;
  CSpatialiteEditorDB editor;
  ASSERT_TRUE(editor.Open("clean", &feature));
  CAnnotationFeature combined;
  EXPECT_TRUE(editor.CombineToData(&combined));
  EXPECT_EQ(50, combined.GetPart(0).GetSize());
  editor.Close();
}
