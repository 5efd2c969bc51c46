// CSpatialiteDBDataModel and its tree: identity, install and uninstall, bad files, nested
// transactions; sibling order, insertion and deletion, walks, extent queries, counts, and reading
// and writing option records.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <map>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "GeometryData.h"
#include "LayerOption.h"
#include "ModelTest.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::Utf8ToLocal;
using E_HANDLE_TYPE = IAnnotationDBObjectVisitor::E_HANDLE_TYPE;

namespace {

// Counts the statements that reach SQLite on one connection, by their text.
class StatementTrace {
 public:
  explicit StatementTrace(sqlite3* db) : db_(db) {
    sqlite3_trace_v2(db_, SQLITE_TRACE_STMT, [](unsigned, void* self, void* stmt, void*) {
      const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(stmt));
      ++static_cast<StatementTrace*>(self)->counts_[sql != nullptr ? sql : ""];
      return 0;
    }, this);
  }
  ~StatementTrace() { sqlite3_trace_v2(db_, 0, nullptr, nullptr); }
  int Count(const std::string& sql) { return counts_[sql]; }

 private:
  sqlite3* db_;
  std::map<std::string, int> counts_;
};

class TreeTest : public CModelTest {
 protected:
  bool Exec(const std::string& sql) { return ExecSql(model_.GetConnection(), sql, "[test]:"); }
};

// Records every node a walk hands over as "kind:name", with the depth of its path.
class RecordingVisitor : public IAnnotationDBObjectVisitor {
 public:
  std::vector<std::string> seen;
  std::vector<size_t> depths;

  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>& path,
                            const std::string&, const CFolderOption& option) override {
    return Record("F:" + option.GetName(), path);
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>& path,
                           const std::string&, const CLayerOption& option) override {
    return Record("L:" + option.GetName(), path);
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>& path,
                             const std::string&, const CFeatureOption& option) override {
    return Record("S:" + option.GetName(), path);
  }

 private:
  E_HANDLE_TYPE Record(const std::string& what, const std::list<std::string>& path) {
    seen.push_back(what);
    depths.push_back(path.size());
    return HANDLE_TYPE_CONTINUE;
  }
};

}  // namespace

TEST_F(TreeTest, InsertFolderFillsUuidOrderAndStatusRows) {
  CFolderOption option;
  option.SetParentUUID(root_);
  option.SetName(Utf8ToLocal("注记"));
  option.ChangeMask(5);
  option.SetOrderNum(3);
  ASSERT_TRUE(model_.InsertFolder(option));
  const std::string uuid = option.GetUUID();
  // The name is stored as UTF-8 and read back in the local code page.
  EXPECT_EQ(option.GetIndexArrayString() + " 5 3 \xe6\xb3\xa8\xe8\xae\xb0",
            Scalar("SELECT index_id || ' ' || (SELECT value FROM folder_status WHERE puuid = '" +
                   uuid + "') || ' ' || (SELECT order_num FROM folder_order WHERE uuid = '" +
                   uuid + "') || ' ' || name FROM folder WHERE uuid = '" + uuid + "'"));
  EXPECT_EQ(Utf8ToLocal("注记"), model_.QueryFolderOption(uuid).GetName());

  // A second folder with the same uuid: its order row and node row collide, its status row not.
  CFolderOption twin(uuid);
  CZuLogCapture capture;
  EXPECT_FALSE(model_.InsertFolder(twin));
  EXPECT_EQ(-1, twin.GetResult());
  EXPECT_EQ(1, capture.Count("[InsertFolderOrder] Failed " + uuid));
  EXPECT_EQ(1, capture.Count("[InsertFolder]:" + uuid + " "));
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM folder_status WHERE puuid = '" + uuid + "'"));
  // An order row alone in the way is marked, but the insert goes on.
  ASSERT_TRUE(Exec("INSERT INTO folder_order(uuid) VALUES('taken')"));
  CFolderOption taken("taken");
  taken.SetParentUUID(root_);
  EXPECT_TRUE(model_.InsertFolder(taken));
  EXPECT_EQ(2, taken.GetResult());
}

TEST_F(TreeTest, SiblingListsAndDeletingTheMiddleFolderLinksItsNeighboursAtTheCommit) {
  const std::string p = tree_.AddFolder(root_, "P");
  const std::string q = tree_.AddFolder(root_, "Q");
  const std::string r = tree_.AddFolder(root_, "R");
  EXPECT_EQ(r, model_.GetLastFolderChildUUID(root_));
  bool isLayer = true;
  EXPECT_EQ(q, model_.QueryChildByOrder(root_, 1, isLayer));
  EXPECT_FALSE(isLayer);

  const std::string child = tree_.AddFolder(q, "Q1");
  ASSERT_FALSE(tree_.AddFeature(tree_.AddLayer(child, "Q1L"), "Q1LS").empty());
  ASSERT_TRUE(model_.DeleteFolder(q));
  const CFolderOption right = model_.QueryFolderOption(r);
  EXPECT_EQ(r, model_.QueryFolderOption(p).GetRightUUID());
  EXPECT_EQ(p, right.GetLeftUUID());
  EXPECT_EQ(2, right.GetOrderNum());
  // The whole subtree is gone (its satellite rows are the deleter's, layer_batch_deleter_test).
  EXPECT_EQ("3 0 0", Scalar("SELECT (SELECT COUNT(*) FROM folder_order) || ' ' || (SELECT "
                            "COUNT(*) FROM layer) || ' ' || (SELECT COUNT(*) FROM shape)"));
  EXPECT_FALSE(model_.DeleteFolder(q));  // already gone

  ASSERT_TRUE(Exec("CREATE TRIGGER keep BEFORE DELETE ON folder BEGIN SELECT RAISE(ABORT, 'no');"
                   " END"));
  ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
  CZuLogCapture capture;
  EXPECT_TRUE(model_.DeleteFolder(p));  // the deleter's failure is its own log line
  EXPECT_EQ(1, capture.Count("[BatchDeleteFolderInner]:"));
  EXPECT_FALSE(model_.IsInTransaction());
  ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
  // The deleter's pass inside the transaction, then the model's own after the commit.
  EXPECT_EQ(2, capture.Count(Utf8ToLocal("开启一次Node缓存更新")));
}

TEST_F(TreeTest, MixedChildrenOfALayerAndTheStaleLayerNeighbour) {
  // Children [A feature, X layer, B feature, C feature].
  const std::string parent = tree_.AddLayer(tree_.AddFolder(root_, "f"), "parent");
  const std::string a = tree_.AddFeature(parent, "A");
  const std::string x = tree_.AddChildLayer(parent, "X");
  const std::string b = tree_.AddFeature(parent, "B");
  const std::string c = tree_.AddFeature(parent, "C");
  EXPECT_TRUE(model_.QueryFeatureOption(b).IsLeftLayer());
  ASSERT_TRUE(model_.DeleteFeature(b));
  EXPECT_EQ(c, model_.QueryLayerOption(x).GetRightUUID());
  EXPECT_EQ("2 2 2", Scalar("SELECT (SELECT COUNT(*) FROM shape) || ' ' || (SELECT COUNT(*) FROM "
                            "shape_status) || ' ' || (SELECT COUNT(*) FROM shape_order)"));
  // Unlinking X writes A's right_shape_uuid = C but leaves A's right_layer_uuid = X, which
  // readers prefer; the same on the other side.
  ASSERT_TRUE(model_.DeleteLayer(x));
  EXPECT_EQ(c, Scalar("SELECT right_shape_uuid FROM shape_order WHERE uuid = '" + a + "'"));
  EXPECT_EQ(x, model_.QueryFeatureOption(a).GetRightUUID());
  EXPECT_EQ(x, model_.QueryFeatureOption(c).GetLeftUUID());
}

TEST_F(TreeTest, WalkExtentQueriesAndLayerPagesOverlappingByOne) {
  const std::string layer = tree_.AddLayer(tree_.AddFolder(root_, "f"), "l");
  const char* geometries[][2] = {{"inside", "POINT Z(5 5 1)"},
                                 {"crossing", "LINESTRING Z(8 8 0, 12 12 0)"},
                                 {"outside", "POINT Z(50 50 0)"}};
  for (const auto& [name, wkt] : geometries) {
    ASSERT_TRUE(Exec(std::string("UPDATE shape SET geom = GeomFromText('") + wkt +
                     "', 4326) WHERE uuid = '" + tree_.AddFeature(layer, name) + "'"));
  }
  RecordingVisitor walk;
  EXPECT_EQ(IAnnotationDBObjectVisitor::HANDLE_TYPE_CONTINUE, model_.Travel(&walk));
  EXPECT_EQ((std::vector<std::string>{"F:Root", "F:f", "L:l", "S:inside", "S:crossing",
                                      "S:outside"}), walk.seen);
  const EXTENT view{0, 0, 10, 10};
  RecordingVisitor rect;
  ASSERT_TRUE(model_.TravelViaExtent(&rect, view, -1));
  EXPECT_EQ(std::vector<std::string>{"S:inside"}, rect.seen);
  EXPECT_EQ(1, model_.CountExtentFeature(view));

  CGeometryData ring(std::vector<CVector3D>{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}});
  RecordingVisitor polygon;
  ASSERT_TRUE(model_.TravelViaExtent(&polygon, ring, -1));
  EXPECT_EQ((std::vector<std::string>{"S:inside", "S:crossing"}), polygon.seen);
  RecordingVisitor limited;
  ASSERT_TRUE(model_.TravelViaExtent(&limited, ring, 1));
  EXPECT_EQ(1u, limited.seen.size());

  RecordingVisitor first;
  ASSERT_TRUE(model_.TravelLayer(&first, layer, 0, 2));
  EXPECT_EQ(3u, first.depths[0]);  // root, folder, layer
  RecordingVisitor second;
  ASSERT_TRUE(model_.TravelLayer(&second, layer, 2, 2));
  EXPECT_EQ((std::vector<std::string>{"S:crossing", "S:outside"}), second.seen);
}

TEST_F(TreeTest, KindsTypesAncestorsSqlWalkAndOptionsOfOddRows) {
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string layer = tree_.AddLayer(folder, "l", LAYER_TYPE_GIS_POINT);
  const std::string feature = tree_.AddFeature(layer, "s");
  EXPECT_EQ(NODE_KIND_FEATURE, model_.QueryNodeKind(feature));
  EXPECT_EQ(NODE_KIND_NONE, model_.QueryNodeKind("nothing"));
  EXPECT_FALSE(model_.IsExistNode(layer, NODE_KIND_FEATURE));
  EXPECT_EQ(FOLDER_TYPE_NORMAL, model_.GetFolderType(folder));
  EXPECT_EQ(LAYER_TYPE_GIS_POINT, model_.GetLayerType(layer));
  EXPECT_EQ(ANNOTATION_TYPE_UNKNOWN, model_.GetFeatureType(layer));

  std::list<std::string> ancestors;
  ASSERT_TRUE(model_.QueryAncestorUUIDs(feature, ancestors));
  EXPECT_EQ((std::list<std::string>{root_, folder, layer}), ancestors);
  EXPECT_EQ(3, model_.GetNodeDepth(feature));
  EXPECT_EQ(-1, model_.GetNodeDepth("nothing"));

  RecordingVisitor visitor;
  ASSERT_TRUE(model_.TravelViaSQL(&visitor, NODE_KIND_LAYER, "type = 100"));
  EXPECT_EQ(std::vector<std::string>{"L:l"}, visitor.seen);
  CZuLogCapture capture;
  EXPECT_FALSE(model_.TravelViaSQL(&visitor, NODE_KIND_LAYER, "no_such_column = 1"));
  EXPECT_EQ(1, capture.Count("[TravelViaSQL]:"));

  const CFolderOption unknown = model_.QueryFolderOption("unknown");
  EXPECT_EQ("unknown", unknown.GetUUID());
  EXPECT_EQ(-1, unknown.GetOrderNum());
  EXPECT_EQ(FOLDER_TYPE_UNKNOWN, unknown.GetType());
  // A layer row with both parent columns filled is a child of the layer column.
  ASSERT_TRUE(Exec("INSERT INTO layer(uuid, folder_puuid, layer_puuid) VALUES('both', 'F', 'L')"));
  const CLayerOption both = model_.QueryLayerOption("both");
  EXPECT_EQ("L", both.GetParentUUID());
  EXPECT_TRUE(both.IsLayerParent());
  // GetTopRootUUID ignores a top-level row with an empty uuid.
  ASSERT_TRUE(Exec("INSERT INTO folder(uuid, puuid) VALUES('', '')"));
  EXPECT_EQ(root_, model_.GetTopRootUUID());
}

TEST_F(TreeTest, VisibilityFollowsTheCheckState) {
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string layer = tree_.AddLayer(folder, "l");
  const std::string feature = tree_.AddFeature(layer, "s");
  EXPECT_TRUE(model_.IsNodeVisible(feature));
  CFolderOption f = model_.QueryFolderOption(folder);
  f.SetNodeCheckState(1);  // partially checked
  ASSERT_TRUE(model_.ModifyFolderOption(f));
  EXPECT_EQ(0, f.GetChangeMask());
  EXPECT_FALSE(model_.IsNodeVisible(folder));
  CFeatureOption s = model_.QueryFeatureOption(feature);
  s.SetNodeChecked(false);
  ASSERT_TRUE(model_.ModifyFeatureOption(s));
  EXPECT_FALSE(model_.IsNodeVisible(feature));
  // A layer's own attribute reads its levels through quoted column names: they come back as 0.
  const CNodeAttribute attribute = model_.QueryNodeAttribute(layer);
  EXPECT_TRUE(attribute.IsVisible());
  EXPECT_EQ(0, attribute.GetMaxLevel());
}

TEST_F(TreeTest, LayerInsertReadsBackAndModifyWritesMarkedGroupsOnlyKeepingFailedBits) {
  const std::string folder = tree_.AddFolder(root_, "f");
  CLayerOption option;
  option.SetParentUUID(folder, false);
  option.SetType(LAYER_TYPE_GIS_LINE);
  option.SetNameLevel(5, 17);
  option.SetWkt("POLYGON((0 0,1 0,1 1,0 0))");
  ASSERT_TRUE(model_.InsertLayer(option));
  EXPECT_EQ(2u, option.GetIndexStatus().size());
  const std::string uuid = option.GetUUID();
  CLayerOption read = model_.QueryLayerOption(uuid);
  EXPECT_EQ(folder, read.GetParentUUID());
  EXPECT_EQ(17, read.GetMaxNameLevel());
  EXPECT_EQ("", Scalar("SELECT layer_puuid FROM layer WHERE uuid = '" + uuid + "'"));

  read.SetName("after");
  read.SetLevel(2, 9);
  read.SetWkt("POINT(1 1)");
  CZuLogCapture capture;
  ASSERT_TRUE(model_.ModifyLayerOption(read));
  // The outline statement carries a comma before WHERE: it fails and keeps its bit.
  EXPECT_EQ(1, capture.Count("[ModifyLayerWkt]:"));
  EXPECT_EQ(CHANGE_MASK_WKT, read.GetChangeMask());
  const CLayerOption after = model_.QueryLayerOption(uuid);
  EXPECT_EQ("after 9", after.GetName() + " " + std::to_string(after.GetMaxLevel()));
  EXPECT_EQ("POLYGON((0 0,1 0,1 1,0 0))", after.GetWkt());
  // Retrying the same record retries only the failed group.
  capture.Clear();
  ASSERT_TRUE(model_.ModifyLayerOption(read));
  EXPECT_EQ(1u, capture.Lines().size());

  // A status change of a record without index array keeps its bit.
  capture.Clear();
  CFolderOption status(folder);
  status.ChangeMask(4);
  EXPECT_TRUE(model_.ModifyFolderOption(status));
  EXPECT_EQ(CHANGE_MASK_STATUS, status.GetChangeMask());
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel::ModifyFolderStatus] " +
                             Utf8ToLocal("index_id为空")));
  CFeatureOption feature("x");
  feature.ChangeMask(1);
  EXPECT_TRUE(model_.ModifyFeatureOption(feature));
  // Features log the folder's text.
  EXPECT_EQ(2, capture.Count("[CSpatialiteDBDataModel::ModifyFolderStatus] "));
  CLayerOption empty;
  EXPECT_FALSE(model_.ModifyLayerOption(empty));
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel::ModifyLayerOption]: " +
                             Utf8ToLocal("UUID为空")));
}

TEST_F(TreeTest, CyclicListsEndWithALoggedError) {
  const std::string p = tree_.AddFolder(root_, "P");
  const std::string q = tree_.AddFolder(root_, "Q");
  // Corrupt the list: Q points back to P on the right, P to Q on the left.
  ASSERT_TRUE(Exec("UPDATE folder_order SET right_uuid = '" + p + "' WHERE uuid = '" + q + "'"));
  ASSERT_TRUE(Exec("UPDATE folder_order SET left_uuid = '" + q + "' WHERE uuid = '" + p + "'"));
  ASSERT_TRUE(Exec("UPDATE folder SET puuid = '" + p + "' WHERE uuid = '" + root_ + "'"));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.GetLastFolderChildUUID(root_).empty());
  EXPECT_GE(capture.Count("runs in a cycle"), 1);
  RecordingVisitor visitor;
  model_.TravelFolder(&visitor, root_);
  EXPECT_LE(visitor.seen.size(), 10u);
  std::list<std::string> ancestors;
  EXPECT_FALSE(model_.QueryAncestorUUIDs(q, ancestors));
  EXPECT_GE(capture.Count("[QueryParentUUIDList]:"), 1);
}

TEST_F(TreeTest, UuidsWithQuotesAreRefusedBeforeTheyReachSql) {
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string hostile = "x' OR '1'='1";
  CZuLogCapture capture;
  EXPECT_EQ("", model_.GetLastFolderChildUUID(hostile));
  EXPECT_FALSE(model_.DeleteFolder(hostile));
  CFolderOption option = model_.QueryFolderOption(folder);
  option.SetRightUUID("'; DROP TABLE folder; --");
  EXPECT_FALSE(model_.ModifyFolderOption(option));
  EXPECT_EQ(3, capture.Count("uuid refused, it cannot stand between quotes"));
  EXPECT_EQ(folder, model_.GetLastFolderChildUUID(root_));  // nothing was touched
  EXPECT_FALSE(model_.IsExistNode(hostile));               // bound, never spliced
}

// Without a database every operation fails at once, without a log line.
TEST(DataModelIdentityTest, InitializeUninitializeAndNoDatabase) {
  CSpatialiteDBDataModel model;
  EXPECT_EQ(-1, model.GetObjectID());
  // Connections are shared between the host's threads and the calculator's pass: the library must
  // serialise calls on one connection.
  EXPECT_EQ(1, sqlite3_threadsafe());
  EXPECT_EQ(nullptr, model.GetNodeCacheCalculator());
  RecordingVisitor visitor;
  CZuLogCapture capture;
  EXPECT_EQ(IAnnotationDBObjectVisitor::HANDLE_TYPE_STOP, model.Travel(&visitor));
  EXPECT_FALSE(model.DeleteFolder("x"));
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_TRUE(model.Initialize("first"));
  EXPECT_GT(model.GetObjectID(), 0);
  EXPECT_TRUE(model.Uninitialize());
  EXPECT_EQ(-1, model.GetObjectID());
  EXPECT_EQ("", model.GetObjectName());
}

TEST_F(TreeTest, InstallOpensOnceAndUninstallCloses) {
  EXPECT_EQ(db_.Path(), model_.GetFilePath());
  CSqlStatement pragmas(model_.GetConnection(),
                        "SELECT (SELECT foreign_keys FROM pragma_foreign_keys) || "
                        "(SELECT synchronous FROM pragma_synchronous)", "");
  ASSERT_TRUE(pragmas.StepRow());
  EXPECT_EQ("00", pragmas.ColumnText(0, false)) << "foreign keys and synchronous writing off";
  pragmas.Finalize();
  sqlite3* first = model_.GetConnection();
  CTestDatabase other("other.db");
  EXPECT_FALSE(model_.Install(other.Path())) << "a second install keeps the first connection";
  EXPECT_EQ(first, model_.GetConnection());
  EXPECT_TRUE(model_.Uninstall());
  EXPECT_EQ(nullptr, model_.GetConnection());
  EXPECT_TRUE(model_.Uninstall());
  EXPECT_FALSE(model_.BeginTransaction());
  EXPECT_TRUE(model_.IsEmpty());  // no connection
  EXPECT_TRUE(model_.Install(db_.Path()));
  EXPECT_TRUE(model_.IsEmpty());  // only the root
  ASSERT_TRUE(Exec("INSERT INTO folder(uuid, puuid) VALUES('second', 'x')"));
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
    ASSERT_EQ(1u, capture.Lines().size()) << c.path;
    EXPECT_EQ(0u, capture.Lines()[0].find(c.tag)) << capture.Lines()[0];
    if (!c.path.empty()) {
      EXPECT_EQ(before, ReadFileBytes(c.path));
    }
  }
  EXPECT_FALSE(FileExists(dir.File("missing.db")));
}

// Only the outermost begin, commit and rollback reach SQLite; an inner rollback only counts down;
// an unmatched commit is kept as it is.
TEST_F(TreeTest, NestedTransactionsIssueOnlyTheOuterStatements) {
  StatementTrace trace(model_.GetConnection());
  CZuLogCapture capture;
  ASSERT_TRUE(model_.BeginTransaction());
  ASSERT_TRUE(model_.BeginTransaction());
  ASSERT_TRUE(Exec("INSERT INTO folder(uuid, puuid) VALUES('kept', 'x')"));
  EXPECT_TRUE(model_.RollBackTransaction());
  EXPECT_TRUE(model_.IsInTransaction());
  ASSERT_TRUE(model_.CommitTransaction());
  EXPECT_EQ("1 1 0", std::to_string(trace.Count("BEGIN")) + " " +
                         std::to_string(trace.Count("COMMIT")) + " " +
                         std::to_string(trace.Count("ROLLBACK")));
  EXPECT_EQ("2", QueryScalar(db_.Path(), "SELECT COUNT(*) FROM folder"));
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("启动事务") + " >>>>>"));
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("提交事务") + " <<<<<"));

  ASSERT_TRUE(model_.BeginTransaction());
  ASSERT_TRUE(Exec("INSERT INTO folder(uuid, puuid) VALUES('gone', 'x')"));
  EXPECT_TRUE(model_.RollBackTransaction());
  EXPECT_EQ("2", QueryScalar(db_.Path(), "SELECT COUNT(*) FROM folder"));
  EXPECT_EQ(1, capture.Count("[CSpatialiteDBDataModel] " + Utf8ToLocal("回滚事务") + " <<<<<"));

  EXPECT_TRUE(model_.CommitTransaction());
  EXPECT_EQ(-1, model_.GetTransactionDepth()) << "kept as it is";
  EXPECT_FALSE(model_.IsInTransaction());
  ASSERT_TRUE(model_.BeginTransaction());
  EXPECT_EQ(1, model_.GetTransactionDepth());
  EXPECT_TRUE(model_.CommitTransaction());
  EXPECT_EQ(2, trace.Count("COMMIT"));
}
