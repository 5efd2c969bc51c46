// Batch operations under faults: a process killed mid-way, a locked database, a read-only
// connection and a full disk. Each must leave the file intact and holding its last committed
// state.
#include <gtest/gtest.h>

#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {

// Runs the crash worker with `args`, kills it with SIGKILL as soon as it reports being half-way,
// and says whether it got there.
bool RunAndKillMidway(std::vector<std::string> args) {
  args.insert(args.begin(), CRASH_WORKER_PATH);
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(&arg[0]);
  argv.push_back(nullptr);
  int fds[2];
  if (pipe(fds) != 0) return false;
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(fds[1], STDOUT_FILENO);
    close(fds[0]);
    close(fds[1]);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(fds[1]);
  std::string seen;
  char buffer[64];
  ssize_t n = 0;
  // Ends at the marker, or at end of file when the worker exits without reaching it.
  while (seen.find("midway") == std::string::npos && (n = read(fds[0], buffer, sizeof buffer)) > 0) {
    seen.append(buffer, static_cast<size_t>(n));
  }
  kill(pid, SIGKILL);
  int status = 0;
  waitpid(pid, &status, 0);
  close(fds[0]);
  return seen.find("midway") != std::string::npos;
}

class ReliabilityTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    ASSERT_TRUE(model_.Install(db_.Path()));
    ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
    folder_ = tree_.AddFolder(db_.RootUUID(), "f");
  }
  // A layer of `count` point features made with the importer.
  std::string ImportLayer(const std::string& name, int count) {
    CAnnotationGroup group(name);
    CFeatureBatchImporter importer(&model_, folder_);
    EXPECT_TRUE(importer.BeginImport());
    EXPECT_TRUE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
    for (int i = 0; i < count; ++i) {
      CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
      CGeometryData part;
      part.PushBack(CVector3D(i % 100, i % 50, 0));
      feature.AddPart(part);
      feature.SetGroup(&group);
      EXPECT_TRUE(importer.InsertFeature(&feature));
    }
    EXPECT_TRUE(importer.EndImport());
    return Scalar("SELECT uuid FROM layer WHERE name = '" + name + "'");
  }
  std::string Scalar(const std::string& sql) { return QueryScalar(db_.Path(), sql); }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  CTreeBuilder tree_{&model_};
  std::string folder_;
};

}  // namespace

TEST_F(ReliabilityTest, KilledImportLeavesNoneOfItsWork) {
  model_.Uninstall();  // the worker is the only writer
  ASSERT_TRUE(RunAndKillMidway({"import", db_.Path(), folder_, "20000"}));
  // The hot journal left behind is rolled back by the next read-write open.
  ASSERT_TRUE(model_.Install(db_.Path()));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM layer WHERE name = 'crash'"));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM shape"));
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
}

TEST_F(ReliabilityTest, KilledDeletionLeavesEverything) {
  const std::string layer = ImportLayer("big", 20000);
  model_.Uninstall();
  ASSERT_TRUE(RunAndKillMidway({"delete", db_.Path(), layer}));
  ASSERT_TRUE(model_.Install(db_.Path()));
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
  EXPECT_EQ("20000", Scalar("SELECT COUNT(*) FROM shape"));
  EXPECT_EQ("20000", Scalar("SELECT COUNT(*) FROM shape_status"));
  EXPECT_EQ("1", Scalar("SELECT COUNT(*) FROM layer"));
}

TEST_F(ReliabilityTest, KilledCopyLeavesNoneOfItsWork) {
  const std::string layer = ImportLayer("small", 400);
  const std::string target = tree_.AddFolder(db_.RootUUID(), "target");
  model_.Uninstall();
  ASSERT_TRUE(RunAndKillMidway({"copy", db_.Path(), layer, target}));
  ASSERT_TRUE(model_.Install(db_.Path()));
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
  EXPECT_EQ("400", Scalar("SELECT COUNT(*) FROM shape"));
  EXPECT_EQ("1", Scalar("SELECT COUNT(*) FROM layer"));
}

TEST_F(ReliabilityTest, LockedDatabaseFailsTheWritesAndKeepsTheFile) {
  sqlite3* other = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(db_.Path().c_str(), &other));
  ASSERT_TRUE(ExecSql(other, "BEGIN EXCLUSIVE", ""));
  // SpatiaLite gives its connections a busy timeout of a few seconds per statement; fail at once.
  sqlite3_busy_timeout(model_.GetConnection(), 0);
  CAnnotationGroup group("blocked");
  CZuLogCapture capture;
  CFeatureBatchImporter importer(&model_, folder_);
  if (importer.BeginImport()) {
    EXPECT_FALSE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
    EXPECT_GE(capture.Count("database is locked"), 1);
    importer.DiscardImport();
  } else {
    EXPECT_GE(capture.Count("[BeginImport]"), 1);
  }
  CLayerBatchDeleter deleter(&model_);
  deleter.BeginDelete(false, nullptr);
  EXPECT_FALSE(deleter.BatchDeleteFolder(folder_));
  deleter.EndDelete();
  ASSERT_TRUE(ExecSql(other, "ROLLBACK", ""));
  sqlite3_close(other);
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM folder"));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM layer"));
}

TEST_F(ReliabilityTest, ReadOnlyConnectionRefusesTheImport) {
  ImportLayer("kept", 50);
  ASSERT_TRUE(ExecSql(model_.GetConnection(), "PRAGMA query_only = ON", ""));
  CAnnotationGroup group("lost");
  CZuLogCapture capture;
  CFeatureBatchImporter importer(&model_, folder_);
  ASSERT_TRUE(importer.BeginImport());
  EXPECT_FALSE(importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION));
  EXPECT_EQ(1, capture.Count("[InsertLayerInner]:attempt to write a readonly database"));
  importer.EndImport();
  ASSERT_TRUE(ExecSql(model_.GetConnection(), "PRAGMA query_only = OFF", ""));
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
  EXPECT_EQ("50", Scalar("SELECT COUNT(*) FROM shape"));
  EXPECT_EQ("0", Scalar("SELECT COUNT(*) FROM layer WHERE name = 'lost'"));
}

TEST_F(ReliabilityTest, FullDiskFailsRowsAndKeepsTheFileConsistent) {
  ImportLayer("kept", 50);
  // No page may be added: the next rows that need one fail with SQLITE_FULL.
  const std::string pages = Scalar("PRAGMA page_count");
  ASSERT_TRUE(ExecSql(model_.GetConnection(), "PRAGMA max_page_count = " + pages, ""));
  CAnnotationGroup group("partial");
  CZuLogCapture capture;
  CFeatureBatchImporter importer(&model_, folder_);
  ASSERT_TRUE(importer.BeginImport());
  importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
  int failed = 0;
  for (int i = 0; i < 5000 && failed == 0; ++i) {
    CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
    CGeometryData part;
    part.PushBack(CVector3D(i, i, i));
    feature.AddPart(part);
    feature.SetGroup(&group);
    feature.SetName(std::string(200, 'x'));
    if (!importer.InsertFeature(&feature)) ++failed;
  }
  EXPECT_EQ(1, failed);
  EXPECT_GE(capture.Count("database or disk is full"), 1);
  importer.DiscardImport();
  ASSERT_TRUE(ExecSql(model_.GetConnection(), "PRAGMA max_page_count = 1073741823", ""));
  EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
  EXPECT_EQ("50", Scalar("SELECT COUNT(*) FROM shape"));
}
