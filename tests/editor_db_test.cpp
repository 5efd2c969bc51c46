// The scratch databases of the cache directory. The key-point editor database: the file's life
// cycle, refused names, building from a feature, editing and querying points, writing them back,
// and the logged failures. The name database and its records: the file's life cycle and the one
// long transaction, refused uuids, the rows, the extent traversal, and conversion to styles.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "CacheDirScope.h"
#include "FeatureLabelStyle.h"
#include "FeatureStyleSet.h"
#include "GeometryParts.h"
#include "NameRecorder.h"
#include "PointBlob.h"
#include "SpatialiteEditorDB.h"
#include "SpatialiteNameDB.h"
#include "SqlStatement.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

struct KeyPointRow {
  int part = 0;
  CVector3D point;
};

// Three parts: ids 1..4 in part 0, 5..7 in part 1, 8..9 in part 2.
void FillThreeParts(CAnnotationFeature& feature) {
  feature.SetGeometryType(GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  feature.AddPart(Part({{0, 0, 1}, {10, 0, 1}, {10, 10, 1}, {0, 10, 1}}));
  feature.AddPart(Part({{20, 20, 2}, {30, 20, 2}, {30, 30, 2}}));
  feature.AddPart(Part({{40, 40, 3}, {50, 40, 3}}));
}

// Every row of the file's keypoint table, in id order, read through a second connection (which
// runs `sql` first when given one).
std::vector<KeyPointRow> ReadRows(const std::string& path, const char* sql = nullptr) {
  std::vector<KeyPointRow> rows;
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
    if (sql != nullptr) sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    CSqlStatement stmt(db, "SELECT polygon_index, geom FROM keypoint ORDER BY id", "");
    while (stmt.StepRow()) {
      KeyPointRow row;
      row.part = stmt.ColumnInt(0);
      EXPECT_TRUE(AnnotationLayerInner::ReadFirstPoint(stmt.ColumnBlob(1), stmt.ColumnBytes(1),
                                                       row.point));
      rows.push_back(row);
    }
  }
  sqlite3_close(db);
  return rows;
}

// Collects what a traversal of either database visits and stops after `stopAfter` visits (never
// when 0).
class CCollectingVisitor : public CSpatialiteEditorDB::IKeyPointVisitor,
                           public CSpatialiteNameDB::INameVisitor {
 public:
  explicit CCollectingVisitor(int stopAfter = 0) : stopAfter_(stopAfter) {}
  bool VisitKeyPoint(int id, const CVector3D& point) override {
    ids.push_back(id);
    points.push_back(point);
    return Stop(ids.size());
  }
  bool VisitName(const CNameRecorder& record) override {
    records.push_back(record);
    return Stop(records.size());
  }
  std::vector<int> ids;
  std::vector<CVector3D> points;
  std::vector<CNameRecorder> records;

 private:
  bool Stop(size_t n) const { return stopAfter_ > 0 && static_cast<int>(n) >= stopAfter_; }
  int stopAfter_;
};

class EditorDBTest : public ::testing::Test {
 protected:
  void SetUp() override {
    FillThreeParts(feature_);
    ASSERT_TRUE(db_.Open("edit", &feature_));
  }
  void TearDown() override { db_.Close(); }

  std::string Path() const { return cache_.CacheFile("edit_kpt.db"); }

  CCacheDirScope cache_;
  CAnnotationFeature feature_;
  CSpatialiteEditorDB db_;
};

}  // namespace

TEST(EditorDBFileTest, OpenReplacesAnOldFileBuildsFromTheFeatureAndCloseDeletesIt) {
  CCacheDirScope cache;
  const std::string path = cache.CacheFile("shape_kpt.db");
  ASSERT_TRUE(WriteFileBytes(path, std::string(2048, 'x')));  // not a database at all
  CAnnotationFeature feature;
  FillThreeParts(feature);
  CSpatialiteEditorDB db;
  ASSERT_TRUE(db.Open("shape", &feature));
  EXPECT_TRUE(db.Open("second", &feature));  // already open: the first file stays
  EXPECT_FALSE(FileExists(cache.CacheFile("second_kpt.db")));
  EXPECT_EQ("1001 4326 9", QueryScalar(path, "SELECT geometry_type || ' ' || srid || ' ' || "
                                             "(SELECT COUNT(*) FROM idx_keypoint_geom) FROM "
                                             "geometry_columns WHERE f_table_name = 'keypoint'"));
  EXPECT_TRUE(db.Close());
  EXPECT_FALSE(db.IsOpened());
  EXPECT_FALSE(FileExists(path));
  EXPECT_TRUE(db.Close());  // nothing open any more

  // A name in the local code page lands on disk as UTF-8; an empty part keeps its part number
  // until the points are written back.
  const std::string utf8Name = "\xe7\xbc\x96\xe8\xbe\x91";  // "编辑"
  CAnnotationFeature gap(GEOMETRY_DATA_TYPE_MULTILINESTRING);
  gap.AddPart(Part({{1, 1, 0}, {2, 2, 0}}));
  gap.AddPart(CGeometryData());
  gap.AddPart(Part({{3, 3, 0}}));
  ASSERT_TRUE(db.Open(Utf8ToLocal(utf8Name), &gap));
  const std::vector<KeyPointRow> rows = ReadRows(cache.CacheFile(utf8Name + "_kpt.db"));
  ASSERT_EQ(3u, rows.size());
  EXPECT_EQ(2, rows[2].part);
  EXPECT_EQ(CVector3D(3, 3, 0), rows[2].point);
  ASSERT_TRUE(db.CombineToData(&gap));
  ASSERT_EQ(2, gap.GetPartCount());
  EXPECT_EQ(Part({{3, 3, 0}}), gap.GetPart(1));
  db.Close();

  // No feature at all opens an empty database, which writes back no parts.
  ASSERT_TRUE(db.Open("empty", nullptr));
  EXPECT_TRUE(ReadRows(cache.CacheFile("empty_kpt.db")).empty());
  EXPECT_TRUE(db.CombineToData(&gap));
  EXPECT_EQ(0, gap.GetPartCount());
  EXPECT_EQ(GEOMETRY_DATA_TYPE_MULTILINESTRING, gap.GetGeometryType());
  db.Close();
}

// The name check is shared with the name database; a path escape and a NUL stand for its list.
TEST(EditorDBFileTest, RefusedNamesAndUnusablePathsTouchNoFile) {
  CCacheDirScope cache;
  // A file where a careless path would land, beside the cache directory.
  const std::string outside = cache.DataDir() + "x_kpt.db";
  ASSERT_TRUE(WriteFileBytes(outside, "keep"));
  CAnnotationFeature feature;
  FillThreeParts(feature);
  for (const std::string& name : {std::string("../x"), std::string("x\0y", 3)}) {
    CZuLogCapture capture;
    CSpatialiteEditorDB db;
    EXPECT_FALSE(db.Open(name, &feature)) << name;
    EXPECT_EQ(1, capture.Count("[CSpatialiteEditorDB::Open]:")) << name;
  }
  EXPECT_EQ("keep", ReadFileBytes(outside));
  EXPECT_TRUE(std::filesystem::is_empty(cache.CacheDir()));

  // A directory in the way stays; a missing cache directory is not made.
  const std::string dir = cache.CacheFile("dir_kpt.db");
  ASSERT_TRUE(std::filesystem::create_directory(dir));
  CZuLogCapture capture;
  CSpatialiteEditorDB db;
  EXPECT_FALSE(db.Open("dir", &feature));
  EXPECT_EQ(1, capture.Count("[CSpatialiteEditorDB::Open]:"));
  EXPECT_TRUE(std::filesystem::is_directory(dir));
  std::filesystem::remove_all(cache.CacheDir());
  EXPECT_FALSE(db.Open("nowhere", &feature));
  EXPECT_FALSE(db.IsOpened());
  EXPECT_EQ(1, capture.Count("[CSpatialiteHandler] OpenByCreate Error! "));
  EXPECT_FALSE(FileExists(cache.CacheDir()));
}

TEST_F(EditorDBTest, QueriesUseStrictBoxesLimitsAndTheLastRow) {
  CCollectingVisitor all;
  db_.TravelViaExtent(EXTENT{-1, -1, 11, 11}, 0, all);
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), all.ids);
  EXPECT_EQ(CVector3D(10, 10, 1), all.points[2]);
  // A limit and a stop; corners exactly on the extent's edges are outside.
  CCollectingVisitor limited(2);
  db_.TravelViaExtent(EXTENT{-100, -100, 100, 100}, 3, limited);
  EXPECT_EQ(2u, limited.ids.size());
  CCollectingVisitor edges;
  db_.TravelViaExtent(EXTENT{0, 0, 10, 10}, 0, edges);
  EXPECT_TRUE(edges.ids.empty());

  CVector3D out(-1, -1, -1);
  EXPECT_EQ(3, db_.QueryPickedKeyPoint(out, CVector3D(9.5, 9.5, 500), 1));  // z ignored
  EXPECT_EQ(CVector3D(10, 10, 1), out);
  // (10, 10) sits exactly on the edge of the square around (9, 9) with half side 1.
  EXPECT_EQ(-1, db_.QueryPickedKeyPoint(out, CVector3D(9, 9, 0), 1));
  // The closest point by its index corner, inside the extent only, however close others are.
  EXPECT_EQ(2, db_.QueryClosestKeyPoint(out, EXTENT{-1, -1, 11, 11}, CVector3D(9, 1, 0)));
  EXPECT_EQ(CVector3D(10, 0, 1), out);
  EXPECT_EQ(7, db_.QueryClosestKeyPoint(out, EXTENT{25, 25, 100, 100}, CVector3D(0, 0, 0)));
  EXPECT_EQ(-1, db_.QueryClosestKeyPoint(out, EXTENT{0, 0, 10, 10}, CVector3D(5, 5, 0)));
  // Two points in the square: the later row is the answer.
  ASSERT_EQ(10, db_.InsertKeyPoint(1, CVector3D(0.5, 0.5, 9)));
  EXPECT_EQ(10, db_.QueryPickedKeyPoint(out, CVector3D(0.25, 0.25, 0), 1));
  EXPECT_EQ(CVector3D(0.5, 0.5, 9), out);

  const double nan = std::numeric_limits<double>::quiet_NaN();
  CZuLogCapture capture;
  CCollectingVisitor visitor;
  db_.TravelViaExtent(EXTENT{nan, 0, 10, 10}, 0, visitor);
  EXPECT_TRUE(visitor.ids.empty());
  EXPECT_EQ(1, capture.Count("[EditorDB::TravelViaExtent]:"));
  EXPECT_EQ(-1, db_.QueryPickedKeyPoint(out, CVector3D(0, 0, 0), nan));
  EXPECT_EQ(1, capture.Count("[QueryPickedKeyPoint_intersected]:"));
}

TEST_F(EditorDBTest, LostTableFailsEveryOperationWithItsTag) {
  {
    CZuLogCapture quiet;  // the read after the drop fails
    ASSERT_TRUE(ReadRows(Path(), "DROP TABLE keypoint").empty());
  }
  CVector3D out;
  const std::pair<const char*, std::function<bool()>> calls[] = {
      {"[InsertKeyPoint_Query]:", [&] { return db_.InsertKeyPoint(1, CVector3D()) != -1; }},
      {"[RemoveKeyPoint]:", [&] { return db_.RemoveKeyPoint(1); }},
      {"[ReviseKeyPoint_Query]:", [&] { return db_.ReviseKeyPoint(1, CVector3D()); }},
      {"[QuerySiblingKeyPoint_Query]:", [&] { return db_.QuerySiblingKeyPoint(out, 1, true); }},
      {"[CombineToData_Query]:", [&] { return db_.CombineToData(&feature_); }}};
  for (const auto& [tag, call] : calls) {
    CZuLogCapture capture;
    EXPECT_FALSE(call()) << tag;
    EXPECT_EQ(1, capture.Count(tag));
  }
  EXPECT_EQ(3, feature_.GetPartCount());
}

TEST_F(EditorDBTest, FullEditingSession) {
  // Insert a vertex on the first edge and one after the last, drop the middle vertex of part 1,
  // move the first vertex of part 2, then find and step through the result.
  const int inserted = db_.InsertKeyPoint(1, CVector3D(5, 0, 1));
  ASSERT_EQ(10, inserted);
  EXPECT_EQ(11, db_.InsertKeyPoint(9, CVector3D(60, 40, 3)));
  ASSERT_TRUE(db_.RemoveKeyPoint(6));
  EXPECT_TRUE(db_.RemoveKeyPoint(6));  // nothing left to delete, the statement still succeeds
  EXPECT_FALSE(db_.RemoveKeyPoint(-3));
  ASSERT_TRUE(db_.ReviseKeyPoint(8, CVector3D(45, 45, 3)));
  CZuLogCapture capture;
  EXPECT_FALSE(db_.ReviseKeyPoint(8, CVector3D()));  // moved under a new id
  EXPECT_EQ(-1, db_.InsertKeyPoint(-1, CVector3D()));
  EXPECT_EQ(1u, capture.Lines().size());

  CVector3D out;
  const int moved = db_.QueryPickedKeyPoint(out, CVector3D(45, 45, 0), 0.5);
  EXPECT_EQ(12, moved);
  ASSERT_TRUE(db_.QuerySiblingKeyPoint(out, moved, true));
  EXPECT_EQ(CVector3D(50, 40, 3), out);
  EXPECT_FALSE(db_.QuerySiblingKeyPoint(out, moved, false));  // no wrap-around, within a part
  EXPECT_FALSE(db_.QuerySiblingKeyPoint(out, 4, true));       // last of part 0, part 1 follows
  ASSERT_TRUE(db_.QuerySiblingKeyPoint(out, inserted, false));
  EXPECT_EQ(CVector3D(0, 0, 1), out);
  ASSERT_TRUE(db_.QuerySiblingKeyPoint(out, 5, true));  // over the gap
  EXPECT_EQ(CVector3D(30, 30, 2), out);

  // The order of the parts written back is the order of the point indexes.
  ASSERT_TRUE(db_.CombineToData(&feature_));
  ASSERT_EQ(3, feature_.GetPartCount());
  EXPECT_EQ(Part({{0, 0, 1}, {5, 0, 1}, {10, 0, 1}, {10, 10, 1}, {0, 10, 1}}), feature_.GetPart(0));
  EXPECT_EQ(Part({{20, 20, 2}, {30, 30, 2}}), feature_.GetPart(1));
  EXPECT_EQ(Part({{45, 45, 3}, {50, 40, 3}, {60, 40, 3}}), feature_.GetPart(2));

  // A part left without points disappears and the later parts close up; the target's own parts
  // are replaced.
  ASSERT_TRUE(db_.RemoveKeyPoint(5));
  ASSERT_TRUE(db_.RemoveKeyPoint(7));
  CAnnotationFeature target(GEOMETRY_DATA_TYPE_MULTIPOLYGON);
  target.AddPart(Part({{99, 99, 99}}));
  ASSERT_TRUE(db_.CombineToData(&target));
  ASSERT_EQ(2, target.GetPartCount());
  EXPECT_EQ(feature_.GetPart(2), target.GetPart(1));
  EXPECT_FALSE(db_.CombineToData(nullptr));
}

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

class NameDBTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(db_.Open("labels")); }
  void TearDown() override { db_.Close(); }

  std::string Path() const { return cache_.CacheFile("name_cluster_labels.db"); }

  CCacheDirScope cache_;
  CSpatialiteNameDB db_;
};

}  // namespace

TEST(ScratchDBFileTest, CopiesShareOneConnectionThatLivesWhileAnyCopyDoes) {
  CCacheDirScope cache;
  CAnnotationFeature feature;
  FillThreeParts(feature);
  CSpatialiteEditorDB db;
  ASSERT_TRUE(db.Open("shared", &feature));
  auto copy = std::make_unique<CSpatialiteEditorDB>(db);
  CSpatialiteEditorDB assigned;
  assigned = *copy;
  assigned = assigned;
  ASSERT_EQ(10, copy->InsertKeyPoint(9, CVector3D(60, 40, 3)));
  copy.reset();  // the others keep the connection and its cached statements
  EXPECT_EQ(11, assigned.InsertKeyPoint(10, CVector3D(70, 40, 3)));
  ASSERT_TRUE(db.Close());  // closes it for every handle
  EXPECT_FALSE(FileExists(cache.CacheFile("shared_kpt.db")));
  // A closed database refuses without a log line.
  CZuLogCapture capture;
  EXPECT_EQ(-1, assigned.InsertKeyPoint(1, CVector3D()));
  EXPECT_TRUE(capture.Lines().empty());

  const std::string path = cache.CacheFile("name_cluster_shared.db");
  CSpatialiteNameDB names;
  ASSERT_TRUE(names.Open("shared"));
  auto nameCopy = std::make_unique<CSpatialiteNameDB>(names);
  CSpatialiteNameDB nameAssigned;
  nameAssigned = *nameCopy;
  nameAssigned = nameAssigned;
  ASSERT_TRUE(nameCopy->InsertName(Record("u1", 1, 1)));
  EXPECT_TRUE(names.IsExistName("u1"));  // one connection, one transaction
  nameCopy.reset();
  ASSERT_TRUE(nameAssigned.InsertName(Record("u2", 2, 2)));
  ASSERT_TRUE(names.Close());  // commits and closes for every handle
  EXPECT_EQ(2, CommittedRows(path));
  EXPECT_FALSE(nameAssigned.DeleteAll());  // closed
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

// The name check is the editor database's (above); a missing cache directory fails here too.
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
  CSpatialiteNameDB db;
  EXPECT_FALSE(db.Open("nowhere"));
  EXPECT_FALSE(db.IsOpened());
  EXPECT_FALSE(FileExists(cache.CacheDir()));
}

TEST_F(NameDBTest, RowsRoundTripThroughUtf8AreReplacedAndDeletedAndQuotedUuidsAreRefused) {
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
  EXPECT_FALSE(db_.InsertName(Record("it's", 3, 3)));
  EXPECT_EQ(2, capture.Count("[InsertName]:"));
  const std::string injected = "x' OR '1'='1";
  EXPECT_FALSE(db_.ModifyName(Record(injected, 3, 3)));
  EXPECT_EQ(1, capture.Count("[DeleteName]:"));
  EXPECT_FALSE(db_.IsExistName(injected));
  EXPECT_EQ(1, capture.Count("[IsExistNode-Feature]:"));
  EXPECT_EQ(CNameRecorder(), db_.QueryNameRecorder(injected));
  EXPECT_EQ(1, capture.Count("[QueryNameRecorder]:"));

  CNameRecorder changed = Record("u1", 7, 8, 9);
  ASSERT_TRUE(db_.ModifyName(changed));
  EXPECT_EQ(changed, db_.QueryNameRecorder("u1"));
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
  CFeatureStyleSet styles;  // the record's style is the style JSON
  ASSERT_TRUE(record.ConvertToStyle(&styles));
  EXPECT_EQ("Arial", dynamic_cast<const CFeatureLabelStyle&>(*styles.At(0)).GetFontName());
}

// SpatiaLite 5.0's WKT reader takes the ring without its closing corner, so the traversal runs as
// written rather than logging the rejected ring.
TEST_F(NameDBTest, TravelVisitsOverlappingLabelsHonoursLimitAndStopAndLogsABadExtent) {
  ASSERT_TRUE(db_.InsertName(Record("in1", 1, 1, 5)));
  ASSERT_TRUE(db_.InsertName(Record("in2", 2, 3)));
  ASSERT_TRUE(db_.InsertName(Record("out", 20, 20)));
  ASSERT_TRUE(db_.InsertName(Record("edge", 4, 2)));  // on the extent's right edge
  CCollectingVisitor visitor;
  db_.TravelViaExtent(EXTENT{0, 0, 4, 4}, 0, visitor);
  ASSERT_EQ(2u, visitor.records.size());
  EXPECT_EQ("in2", visitor.records[1].uuid);
  // Only uuid and position travel.
  CNameRecorder expected;
  expected.uuid = "in1";
  expected.position = CVector3D(1, 1, 5);
  EXPECT_EQ(expected, visitor.records[0]);
  CCollectingVisitor limited(2);
  db_.TravelViaExtent(EXTENT{-1, -1, 30, 30}, 3, limited);
  EXPECT_EQ(2u, limited.records.size());
  CZuLogCapture capture;
  CCollectingVisitor none;
  db_.TravelViaExtent(EXTENT{std::numeric_limits<double>::quiet_NaN(), 0, 4, 4}, 0, none);
  EXPECT_TRUE(none.records.empty());
  EXPECT_EQ(1, capture.Count("[CSpatialiteNameDB::TravelViaExtent]:"));
}
