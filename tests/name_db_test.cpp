// The name database and its records: the file's life cycle and the one long transaction, refused
// uuids, the rows, the extent traversal, and conversion to styles.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "CacheDirScope.h"
#include "FeatureLabelStyle.h"
#include "FeatureStyleSet.h"
#include "NameRecorder.h"
#include "SpatialiteNameDB.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

CNameRecorder Record(const std::string& uuid, double x, double y, double z = 0) {
  CNameRecorder record;
  record.uuid = uuid;
  record.name = "name of " + uuid;
  record.data = "data of " + uuid;
  record.style = "{\"label\":{\"f\":\"Arial\",\"s\":12}}";
  record.position = CVector3D(x, y, z);
  return record;
}

// Rows of the file's name table, counted through a second connection: what has been committed.
int CommittedRows(const std::string& path) {
  const std::string count = QueryScalar(path, "SELECT COUNT(*) FROM name");
  return count.empty() ? -1 : std::stoi(count);
}

class CCollectingNameVisitor : public CSpatialiteNameDB::INameVisitor {
 public:
  explicit CCollectingNameVisitor(int stopAfter = 0) : stopAfter_(stopAfter) {}
  bool VisitName(const CNameRecorder& record) override {
    records.push_back(record);
    return stopAfter_ > 0 && static_cast<int>(records.size()) >= stopAfter_;
  }
  std::vector<CNameRecorder> records;

 private:
  int stopAfter_;
};

class NameDBTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(db_.Open("labels")); }
  void TearDown() override { db_.Close(); }

  std::string Path() const { return cache_.CacheFile("name_cluster_labels.db"); }

  CCacheDirScope cache_;
  CSpatialiteNameDB db_;
};

}  // namespace

TEST(NameRecorderTest, ConvertToStyleReadsTheStyleJson) {
  CNameRecorder record;
  record.style = "{\"label\":{\"f\":\"SimHei\"}}";
  CFeatureStyleSet styles;
  ASSERT_TRUE(record.ConvertToStyle(&styles));
  ASSERT_EQ(1, styles.GetCount());
  EXPECT_EQ("SimHei", dynamic_cast<const CFeatureLabelStyle&>(*styles.At(0)).GetFontName());
  EXPECT_FALSE(record.ConvertToStyle(nullptr));
  record.style = "not json";
  CFeatureStyleSet untouched;
  EXPECT_FALSE(record.ConvertToStyle(&untouched));
  EXPECT_TRUE(untouched.IsEmpty());
}

TEST(NameDBFileTest, OpenRecreatesTheFileAndOnlyCloseCommits) {
  CCacheDirScope cache;
  const std::string path = cache.CacheFile("name_cluster_a.db");
  ASSERT_TRUE(WriteFileBytes(path, std::string(4096, 'x')));  // not a database at all
  CSpatialiteNameDB db;
  EXPECT_FALSE(db.IsOpened());
  ASSERT_TRUE(db.Open("a"));
  EXPECT_TRUE(db.IsOpened());
  ASSERT_TRUE(db.InsertName(Record("u1", 1, 1)));
  ASSERT_TRUE(db.InsertName(Record("u2", 2, 2)));
  EXPECT_TRUE(db.Open("second"));  // already open: the first file stays
  EXPECT_FALSE(FileExists(cache.CacheFile("name_cluster_second.db")));
  EXPECT_EQ(0, CommittedRows(path));
  EXPECT_TRUE(db.Close());
  EXPECT_FALSE(db.IsOpened());
  EXPECT_EQ(2, CommittedRows(path));
  EXPECT_TRUE(db.Close());
  // SpatiaLite splices the geometry column in before the key.
  const std::string sql = QueryScalar(path, "SELECT sql FROM sqlite_master WHERE name = 'name'");
  EXPECT_EQ(0u, sql.find("CREATE TABLE 'name' ('uuid' varchar(32) NOT NULL,'name' varchar(32),"
                         "'data' varchar(128),'style' text(65535),"))
      << sql;
  EXPECT_EQ(sql.size() - 21, sql.find("PRIMARY KEY ('uuid'))")) << sql;
  EXPECT_EQ("1001 4326", QueryScalar(path, "SELECT geometry_type || ' ' || srid FROM "
                                           "geometry_columns WHERE f_table_name = 'name'"));

  ASSERT_TRUE(db.Open("a"));
  EXPECT_FALSE(db.IsExistName("u1"));
  ASSERT_TRUE(db.InsertName(Record("u1", 1, 1)));
  {
    CSpatialiteNameDB dropped = db;  // the last handle going without Close keeps nothing
    db = CSpatialiteNameDB();
  }
  EXPECT_EQ(0, CommittedRows(path));
}

TEST(NameDBFileDeathTest, ProcessEndingWithoutCloseLeavesAnEmptyTable) {
  CCacheDirScope cache;
  const std::string path = cache.CacheFile("name_cluster_ended.db");
  // The child process exits at once, with the transaction open and no destructor run.
  EXPECT_EXIT(
      {
        CSpatialiteNameDB db;
        if (!db.Open("ended") || !db.InsertName(Record("u1", 1, 1))) std::_Exit(3);
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  ASSERT_TRUE(FileExists(path));
  EXPECT_EQ(0, CommittedRows(path));
}

TEST(NameDBFileTest, CopiesShareOneConnectionThatLivesWhileAnyCopyDoes) {
  CCacheDirScope cache;
  const std::string path = cache.CacheFile("name_cluster_shared.db");
  CSpatialiteNameDB db;
  ASSERT_TRUE(db.Open("shared"));
  auto copy = std::make_unique<CSpatialiteNameDB>(db);
  CSpatialiteNameDB assigned;
  assigned = *copy;
  assigned = assigned;
  ASSERT_TRUE(copy->InsertName(Record("u1", 1, 1)));
  EXPECT_TRUE(db.IsExistName("u1"));  // one connection, one transaction
  copy.reset();
  ASSERT_TRUE(assigned.InsertName(Record("u2", 2, 2)));
  ASSERT_TRUE(db.Close());  // commits and closes for every handle
  EXPECT_EQ(2, CommittedRows(path));
  // Everything on a closed database fails without a log line.
  CZuLogCapture capture;
  CCollectingNameVisitor visitor;
  EXPECT_FALSE(assigned.IsOpened());
  assigned.TravelViaExtent(EXTENT{-180, -90, 180, 90}, 0, visitor);
  EXPECT_TRUE(visitor.records.empty());
  EXPECT_FALSE(assigned.InsertName(Record("u3", 1, 1)));
  EXPECT_FALSE(assigned.ModifyName(Record("u1", 1, 1)));
  EXPECT_FALSE(assigned.DeleteAll());
  EXPECT_FALSE(assigned.IsExistName("u1"));
  EXPECT_EQ(CNameRecorder(), assigned.QueryNameRecorder("u1"));
  EXPECT_TRUE(capture.Lines().empty());
}

// The name check is the editor database's (editor_db_test has the full list).
TEST(NameDBFileTest, RefusedNamesAndAMissingCacheDirectoryTouchNoFile) {
  CCacheDirScope cache;
  // "name_cluster_" + "/../x" would reach the data directory.
  for (const std::string& name : {std::string("/../x"), std::string("")}) {
    CZuLogCapture capture;
    CSpatialiteNameDB db;
    EXPECT_FALSE(db.Open(name)) << name;
    EXPECT_EQ(1, capture.Count("[CSpatialiteNameDB::Open]:")) << name;
  }
  EXPECT_TRUE(std::filesystem::is_empty(cache.CacheDir()));
  std::filesystem::remove(cache.CacheDir());
  CZuLogCapture capture;
  CSpatialiteNameDB db;
  EXPECT_FALSE(db.Open("nowhere"));
  EXPECT_FALSE(db.IsOpened());
  EXPECT_EQ(1, capture.Count("[CSpatialiteHandler] OpenByCreate Error! "));
  EXPECT_FALSE(FileExists(cache.CacheDir()));
}

TEST_F(NameDBTest, RowsRoundTripThroughUtf8AndAreReplacedAndDeleted) {
  CNameRecorder record = Record("u1", 116.25, 39.5, 48.75);
  record.name = Utf8ToLocal("\xe5\x8c\x97\xe4\xba\xac");  // "北京"
  ASSERT_TRUE(db_.InsertName(record));
  ASSERT_TRUE(db_.InsertName(Record("u2", 2, 2)));
  EXPECT_EQ(record, db_.QueryNameRecorder("u1"));
  // An unknown uuid gives a record holding only that uuid.
  CNameRecorder expected;
  expected.uuid = "nobody";
  EXPECT_EQ(expected, db_.QueryNameRecorder("nobody"));
  EXPECT_FALSE(db_.IsExistName("nobody"));
  CZuLogCapture capture;
  EXPECT_FALSE(db_.InsertName(Record("u1", 5, 5)));  // a duplicate
  EXPECT_EQ(1, capture.Count("[InsertName]:"));

  CNameRecorder changed = Record("u1", 7, 8, 9);
  ASSERT_TRUE(db_.ModifyName(changed));
  EXPECT_EQ(changed, db_.QueryNameRecorder("u1"));
  CCollectingNameVisitor visitor;
  db_.TravelViaExtent(EXTENT{0, 0, 1.5, 1.5}, 0, visitor);  // the index follows the move
  EXPECT_TRUE(visitor.records.empty());
  ASSERT_TRUE(db_.ModifyName(Record("fresh", 3, 3)));
  EXPECT_TRUE(db_.IsExistName("fresh"));
  EXPECT_TRUE(db_.DeleteName("u2"));
  EXPECT_FALSE(db_.IsExistName("u2"));
  EXPECT_TRUE(db_.DeleteName("u2"));  // no row matched; the statement still ran
  EXPECT_TRUE(db_.DeleteAll());
  EXPECT_FALSE(db_.IsExistName("u1"));
  ASSERT_TRUE(db_.InsertName(record));
  db_.Close();
  EXPECT_EQ("\xe5\x8c\x97\xe4\xba\xac", QueryScalar(Path(), "SELECT name FROM name"));
}

TEST_F(NameDBTest, UuidsWithAQuoteAreRefused) {
  ASSERT_TRUE(db_.InsertName(Record("u1", 1, 1)));
  const std::string injected = "x' OR '1'='1";
  CZuLogCapture capture;
  EXPECT_FALSE(db_.ModifyName(Record(injected, 3, 3)));
  EXPECT_EQ(1, capture.Count("[DeleteName]:"));
  EXPECT_FALSE(db_.IsExistName(injected));
  EXPECT_EQ(1, capture.Count("[IsExistNode-Feature]:"));
  EXPECT_EQ(CNameRecorder(), db_.QueryNameRecorder(injected));
  EXPECT_EQ(1, capture.Count("[QueryNameRecorder]:"));
  EXPECT_FALSE(db_.InsertName(Record("it's", 3, 3)));
  EXPECT_EQ(1, capture.Count("[InsertName]:"));
  EXPECT_TRUE(db_.IsExistName("u1"));
}

// SpatiaLite 5.0's WKT reader takes the ring without its closing corner, so the traversal runs as
// written rather than logging the rejected ring.
TEST_F(NameDBTest, TravelVisitsOverlappingLabelsHonoursLimitAndStopAndLogsABadExtent) {
  ASSERT_TRUE(db_.InsertName(Record("in1", 1, 1, 5)));
  ASSERT_TRUE(db_.InsertName(Record("in2", 2, 3)));
  ASSERT_TRUE(db_.InsertName(Record("out", 20, 20)));
  ASSERT_TRUE(db_.InsertName(Record("edge", 4, 2)));  // on the extent's right edge
  CCollectingNameVisitor visitor;
  db_.TravelViaExtent(EXTENT{0, 0, 4, 4}, 0, visitor);
  ASSERT_EQ(2u, visitor.records.size());
  EXPECT_EQ("in2", visitor.records[1].uuid);
  // Only uuid and position travel.
  CNameRecorder expected;
  expected.uuid = "in1";
  expected.position = CVector3D(1, 1, 5);
  EXPECT_EQ(expected, visitor.records[0]);
  // Limit (none when 0 or negative), stop after the first.
  const int cases[][3] = {{-2, 0, 4}, {3, 0, 3}, {0, 1, 1}};
  for (const auto& c : cases) {
    CCollectingNameVisitor limited(c[1]);
    db_.TravelViaExtent(EXTENT{-1, -1, 30, 30}, c[0], limited);
    EXPECT_EQ(static_cast<size_t>(c[2]), limited.records.size()) << c[0] << " " << c[1];
  }
  CZuLogCapture capture;
  CCollectingNameVisitor none;
  db_.TravelViaExtent(EXTENT{std::numeric_limits<double>::quiet_NaN(), 0, 4, 4}, 0, none);
  EXPECT_TRUE(none.records.empty());
  EXPECT_EQ(1, capture.Count("[CSpatialiteNameDB::TravelViaExtent]:"));
}
