// CSpatialiteDBDataModel: identity, install and uninstall, bad files, nested transactions, IsEmpty.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

// Records the statements that reach SQLite on one connection.
class StatementTrace {
 public:
  explicit StatementTrace(sqlite3* db) : db_(db) {
    sqlite3_trace_v2(db_, SQLITE_TRACE_STMT, &StatementTrace::OnStatement, this);
  }
  ~StatementTrace() { sqlite3_trace_v2(db_, 0, nullptr, nullptr); }
  int Count(const std::string& sql) const {
    int n = 0;
    for (const std::string& s : statements_) n += (s == sql) ? 1 : 0;
    return n;
  }

 private:
  static int OnStatement(unsigned, void* self, void* stmt, void*) {
    const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(stmt));
    static_cast<StatementTrace*>(self)->statements_.push_back(sql != nullptr ? sql : "");
    return 0;
  }
  sqlite3* db_;
  std::vector<std::string> statements_;
};

class DataModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    model_.Initialize("model");
    ASSERT_TRUE(model_.Install(db_.Path()));
    // Let the calculator's first pass finish, so that its log lines stay out of the checks.
    ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
  }
  int CountFolders() { return std::stoi(QueryScalar(db_.Path(), "SELECT COUNT(*) FROM folder")); }
  bool InsertFolderRow(const std::string& uuid) {
    return AnnotationLayerInner::ExecSql(
        model_.GetConnection(), "INSERT INTO folder(uuid, puuid) VALUES('" + uuid + "', 'x')", "");
  }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
};

}  // namespace

TEST(DataModelIdentityTest, InitializeAndUninitialize) {
  CSpatialiteDBDataModel model;
  EXPECT_EQ(-1, model.GetObjectID());
  EXPECT_FALSE(model.IsInstalled());
  // Connections are shared between the host's threads and the calculator's pass: the library must
  // serialise calls on one connection.
  EXPECT_EQ(1, sqlite3_threadsafe());
  EXPECT_EQ(nullptr, model.GetNodeCacheCalculator());
  EXPECT_NE(nullptr, model.GetNotifier());
  EXPECT_TRUE(model.Initialize("first"));
  EXPECT_GT(model.GetObjectID(), 0);
  EXPECT_EQ("first", model.GetObjectName());
  EXPECT_TRUE(model.Uninitialize());
  EXPECT_EQ(-1, model.GetObjectID());
  EXPECT_EQ("", model.GetObjectName());
}

TEST_F(DataModelTest, InstallOpensReadWriteWithPragmasOnce) {
  EXPECT_TRUE(model_.IsInstalled());
  EXPECT_EQ(db_.Path(), model_.GetFilePath());
  CSqlStatement pragmas(model_.GetConnection(),
                        "SELECT (SELECT foreign_keys FROM pragma_foreign_keys) || "
                        "(SELECT synchronous FROM pragma_synchronous)", "");
  ASSERT_TRUE(pragmas.StepRow());
  EXPECT_EQ("00", pragmas.ColumnText(0, false));
  pragmas.Finalize();
  sqlite3* first = model_.GetConnection();
  CTestDatabase other("other.db");
  EXPECT_FALSE(model_.Install(other.Path())) << "a second install keeps the first connection";
  EXPECT_EQ(first, model_.GetConnection());
  EXPECT_TRUE(model_.Uninstall());
  EXPECT_FALSE(model_.IsInstalled());
  EXPECT_EQ(nullptr, model_.GetConnection());
  EXPECT_TRUE(model_.Uninstall());
  EXPECT_FALSE(model_.BeginTransaction());
  EXPECT_TRUE(model_.IsEmpty());  // no connection
  EXPECT_TRUE(model_.Install(db_.Path()));
  // Only the root: empty.
  EXPECT_TRUE(model_.IsEmpty());
  ASSERT_TRUE(InsertFolderRow("second"));
  EXPECT_FALSE(model_.IsEmpty());
}

TEST(DataModelBadInputTest, EveryBadFileFailsWithOneLineAndStaysUntouched) {
  CTempDir dir;
  const std::string text = dir.File("notes.txt");
  ASSERT_TRUE(WriteFileBytes(text, "not a database at all, just text\n"));
  struct Case {
    std::string path;
    std::string tag;
  };
  const std::vector<Case> cases = {
      {"", "[CSpatialiteHandler] Open Error! "},
      {dir.File("missing.db"), "[CSpatialiteHandler] Open Error! "},
      {dir.Path(), "[CSpatialiteHandler] "},
      {text, "[CSpatialiteHandler] InitSpatialMetadata Error! "},
  };
  for (const Case& c : cases) {
    const std::string before = c.path.empty() ? "" : ReadFileBytes(c.path);
    CSpatialiteDBDataModel model;
    CZuLogCapture capture;
    EXPECT_FALSE(model.Install(c.path)) << c.path;
    EXPECT_FALSE(model.IsInstalled());
    EXPECT_EQ(nullptr, model.GetHandler());
    ASSERT_EQ(1u, capture.Lines().size()) << c.path;
    EXPECT_EQ(0u, capture.Lines()[0].find(c.tag)) << capture.Lines()[0];
    if (!c.path.empty()) EXPECT_EQ(before, ReadFileBytes(c.path));
  }
  EXPECT_FALSE(FileExists(dir.File("missing.db")));
}

// Only the outermost begin, commit and rollback reach SQLite; an inner rollback only counts down;
// an unmatched commit is kept as it is.
TEST_F(DataModelTest, NestedTransactionsIssueOnlyTheOuterStatements) {
  StatementTrace trace(model_.GetConnection());
  CZuLogCapture capture;
  ASSERT_TRUE(model_.BeginTransaction());
  ASSERT_TRUE(model_.BeginTransaction());
  EXPECT_EQ(2, model_.GetTransactionDepth());
  ASSERT_TRUE(InsertFolderRow("kept"));
  EXPECT_TRUE(model_.RollBackTransaction());
  EXPECT_TRUE(model_.IsInTransaction());
  ASSERT_TRUE(model_.CommitTransaction());
  EXPECT_FALSE(model_.IsInTransaction());
  EXPECT_EQ(1, trace.Count("BEGIN"));
  EXPECT_EQ(1, trace.Count("COMMIT"));
  EXPECT_EQ(0, trace.Count("ROLLBACK"));
  EXPECT_EQ(2, CountFolders());
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("启动事务") + " >>>>>"));
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("提交事务") + " <<<<<"));

  ASSERT_TRUE(model_.BeginTransaction());
  ASSERT_TRUE(InsertFolderRow("gone"));
  EXPECT_TRUE(model_.RollBackTransaction());
  EXPECT_EQ(0, model_.GetTransactionDepth());
  EXPECT_EQ(2, CountFolders());
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("回滚事务") + " <<<<<"));

  EXPECT_TRUE(model_.CommitTransaction());
  EXPECT_EQ(-1, model_.GetTransactionDepth()) << "kept as it is";
  EXPECT_FALSE(model_.IsInTransaction());
  EXPECT_EQ(1, trace.Count("COMMIT"));
  ASSERT_TRUE(model_.BeginTransaction());
  EXPECT_EQ(1, model_.GetTransactionDepth());
  EXPECT_TRUE(model_.CommitTransaction());
  EXPECT_EQ(2, trace.Count("COMMIT"));

  // A transaction opened behind the model's back makes its BEGIN fail.
  ASSERT_TRUE(AnnotationLayerInner::ExecSql(model_.GetConnection(), "BEGIN", ""));
  capture.Clear();
  EXPECT_FALSE(model_.BeginTransaction());
  EXPECT_EQ(0, model_.GetTransactionDepth());
  EXPECT_EQ(1, capture.Count("[Transaction]:"));
  AnnotationLayerInner::ExecSql(model_.GetConnection(), "ROLLBACK", "");
}

TEST(DataModelIsEmptyTest, MissingFolderTableLogsAndCountsAsEmpty) {
  CTempDir dir;
  const std::string path = dir.File("bare.db");
  CSpatialiteHandler handler;
  ASSERT_TRUE(handler.OpenByCreate(path));
  handler.Close();
  CSpatialiteDBDataModel model;
  {
    CZuLogCapture pass;
    ASSERT_TRUE(model.Install(path));
    ASSERT_TRUE(model.GetNodeCacheCalculator()->WaitForFinished(10000));
    EXPECT_EQ(1, pass.Count("[Travel]:no such table: folder"));
  }
  CZuLogCapture capture;
  EXPECT_TRUE(model.IsEmpty());
  EXPECT_EQ(std::vector<std::string>{"IsEmpty Error! no such table: folder"}, capture.Lines());
}
