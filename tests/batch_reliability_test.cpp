// Batch operations under faults: a process killed at many points of an import, a deletion, a copy
// and an order rebuild, a locked database, a read-only connection and a full disk. Each must leave
// the file intact and holding its last committed state.
#include <gtest/gtest.h>

#include <signal.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "ProcessRunner.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TempDir.h"
#include "ModelTest.h"
#include "PointGrid.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {

#if ANNOTATIONLAYER_SANITIZED_BUILD
// Sanitizer builds run several times slower: fewer rows and fewer kills per operation.
constexpr int kRowScale = 4;
constexpr int kKillPoints = 4;
#else
constexpr int kRowScale = 1;
constexpr int kKillPoints = 9;
#endif

// The kill points come from this seed; ANNOTATIONLAYER_KILL_SEED replays another run's choice.
uint32_t KillSeed() {
  const char* text = std::getenv("ANNOTATIONLAYER_KILL_SEED");
  return text != nullptr ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : 20240611u;
}

uint32_t Fnv1a(const std::string& text) {
  uint32_t hash = 2166136261u;
  for (unsigned char c : text) hash = (hash ^ c) * 16777619u;
  return hash;
}

// `count` of the marks 1..marks, one drawn from each of `count` equal stretches, so that the
// early, middle and late parts of the run are all hit.
std::vector<int> SpreadKillPoints(uint32_t seed, int marks, int count) {
  std::mt19937 rng(seed);
  std::vector<int> points;
  for (int i = 0; i < count; ++i) {
    const int first = 1 + marks * i / count;
    const int last = marks * (i + 1) / count;
    points.push_back(first + static_cast<int>(rng() % static_cast<uint32_t>(last - first + 1)));
  }
  return points;
}

bool HasLine(const std::string& text, const std::string& line) {
  return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

int CountLinesStarting(const std::string& text, const std::string& prefix) {
  const std::string lines = "\n" + text;
  int count = 0;
  for (size_t at = lines.find("\n" + prefix); at != std::string::npos;
       at = lines.find("\n" + prefix, at + 1)) {
    ++count;
  }
  return count;
}

// The crash worker's command line for `args`, "DB" replaced by `path`.
std::vector<std::string> WorkerArgs(std::vector<std::string> args, const std::string& path) {
  for (std::string& arg : args) arg = arg == "DB" ? path : arg;
  args.insert(args.begin(), CRASH_WORKER_PATH);
  return args;
}

// Runs the crash worker and kills it with SIGKILL as soon as it has written the line `stop`.
CProcessResult RunAndKillAfter(const std::vector<std::string>& args, const std::string& stop) {
  CProcessRunner runner;
  runner.SetTimeoutSeconds(120);
  bool killed = false;
  runner.SetErrorWatcher([&](pid_t pid, const std::string& err) {
    if (!killed && HasLine(err, stop)) killed = kill(pid, SIGKILL) == 0;
  });
  return runner.Run(args);
}

// What the database holds, table by table: the row count and a digest of every row (clock stamps
// aside). Virtual tables are left out (their shadow tables are in); SpatiaLite is not needed to
// read the rest.
struct DbState {
  std::map<std::string, int64_t> counts;
  std::map<std::string, size_t> digests;
};

DbState ReadState(const std::string& path) {
  DbState state;
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(raw, sqlite3_close);
  if (opened != SQLITE_OK) return state;
  auto rows = [&db](const std::string& sql, const std::function<void(sqlite3_stmt*)>& onRow) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) return;
    while (sqlite3_step(stmt) == SQLITE_ROW) onRow(stmt);
    sqlite3_finalize(stmt);
  };
  std::vector<std::string> tables;
  rows("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' AND "
       "sql NOT LIKE 'CREATE VIRTUAL%' ORDER BY name",
       [&tables](sqlite3_stmt* stmt) {
         tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
       });
  for (const std::string& table : tables) {
    std::string content;
    int64_t count = 0;
    rows("SELECT * FROM \"" + table + "\" ORDER BY rowid", [&](sqlite3_stmt* stmt) {
      for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
        const void* bytes = sqlite3_column_blob(stmt, c);
        content.append(std::to_string(sqlite3_column_type(stmt, c))).append(":");
        if (bytes != nullptr) {
          content.append(static_cast<const char*>(bytes),
                         static_cast<size_t>(sqlite3_column_bytes(stmt, c)));
        }
        content.push_back('|');
      }
      ++count;
    });
    state.counts[table] = count;
    // SpatiaLite's triggers stamp the time of the last write to the geometry column there.
    if (table == "geometry_columns_time") content.clear();
    state.digests[table] = std::hash<std::string>()(content);
  }
  return state;
}

// The tables that differ from `before` or `after`, for a failure message.
std::string DescribeDifferences(const DbState& now, const DbState& before, const DbState& after) {
  auto same = [](const DbState& state, const std::string& table, size_t digest) {
    return state.digests.count(table) != 0 && state.digests.at(table) == digest;
  };
  std::string text;
  for (const auto& entry : now.digests) {
    const bool asBefore = same(before, entry.first, entry.second);
    const bool asAfter = same(after, entry.first, entry.second);
    if (asBefore && asAfter) continue;
    text += entry.first + ": " + std::to_string(now.counts.at(entry.first)) + " rows" +
            (asBefore ? ", as before" : asAfter ? ", as after" : "") + "\n";
  }
  return text;
}

// One long operation of the crash worker, to be killed at many points.
struct KillSweep {
  std::string name;
  // The worker's arguments, "DB" standing for the database's path.
  std::vector<std::string> args;
  // The finished operation leaves the same rows on every run (it makes no uuids, reads no clock),
  // so the state after compares row by row; otherwise by row counts.
  bool exactAfter = false;
  // The worker says "committing" before the commit starts.
  bool commitAnnounced = true;
};

class ReliabilityTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    folder_ = tree_.AddFolder(root_, "f");
  }
  // A layer of `count` points in `parent` (default: folder_), in one import; its uuid.
  std::string ImportLayer(const std::string& name, int count, std::string parent = "") {
    std::vector<std::string> layers;
    EXPECT_TRUE(ImportPointGrid(&model_, parent.empty() ? folder_ : parent, name,
                                SPointGrid{count}, count, &layers));
    return layers.empty() ? std::string() : layers[0];
  }
  // Read on a connection of its own: the model is not installed during a sweep.
  std::string Scalar(const std::string& sql) { return QueryScalar(db_.Path(), sql); }

  // Runs the operation once to the end on a copy of the database, for the state after and the
  // number of marks; then, from the database as it is now each time, kills it after kKillPoints
  // marks spread over the run and once after "committing". Every time the file must open, pass
  // the integrity check and hold either the state before or, after a started commit, the state
  // after. Prints one line that sums the sweep up.
  void RunKillSweep(const KillSweep& sweep) {
    model_.Uninstall();  // the worker is the only writer
    const std::string pristine = ReadFileBytes(db_.Path());
    ASSERT_FALSE(pristine.empty());
    const DbState before = ReadState(db_.Path());
    ASSERT_FALSE(before.counts.empty());

    CTempDir scratch;
    const std::string full = scratch.File("full.db");
    ASSERT_TRUE(WriteFileBytes(full, pristine));
    CProcessRunner runner;
    runner.SetTimeoutSeconds(120);
    const CProcessResult complete = runner.Run(WorkerArgs(sweep.args, full));
    ASSERT_EQ(0, complete.exitCode) << complete.err;
    const int marks = CountLinesStarting(complete.err, "mark ");
    ASSERT_GE(marks, kKillPoints) << complete.err;
    const DbState after = ReadState(full);
    ASSERT_NE(before.digests, after.digests) << "the operation changed nothing";

    const uint32_t seed = KillSeed() ^ Fnv1a(sweep.name);
    std::vector<std::string> stops;
    std::string pointList;
    for (int mark : SpreadKillPoints(seed, marks, kKillPoints)) {
      stops.push_back("mark " + std::to_string(mark));
      pointList += " " + std::to_string(mark);
    }
    if (sweep.commitAnnounced) stops.push_back("committing");

    int killed = 0, leftBefore = 0, leftAfter = 0;
    for (const std::string& stop : stops) {
      SCOPED_TRACE(sweep.name + " killed after '" + stop + "' of " + std::to_string(marks) +
                   " marks (ANNOTATIONLAYER_KILL_SEED=" + std::to_string(KillSeed()) + ")");
      for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        std::remove((db_.Path() + suffix).c_str());
      }
      ASSERT_TRUE(WriteFileBytes(db_.Path(), pristine));
      const CProcessResult run = RunAndKillAfter(WorkerArgs(sweep.args, db_.Path()), stop);
      ASSERT_FALSE(run.timedOut);
      ASSERT_TRUE(HasLine(run.err, stop)) << "the worker did not get there:\n" << run.err;
      // A worker close to its end may finish before the signal lands.
      const bool wasKilled = run.exitCode == 128 + SIGKILL;
      if (!wasKilled) {
        ASSERT_EQ(0, run.exitCode) << run.err;
      }
      killed += wasKilled ? 1 : 0;

      // The next read-write open rolls back the hot journal a killed writer leaves.
      ASSERT_TRUE(model_.Install(db_.Path()));
      model_.Uninstall();
      EXPECT_EQ("ok", Scalar("PRAGMA integrity_check"));
      const DbState state = ReadState(db_.Path());
      const bool isBefore = state.digests == before.digests;
      const bool isAfter =
          sweep.exactAfter ? state.digests == after.digests : state.counts == after.counts;
      EXPECT_TRUE(isBefore || isAfter) << DescribeDifferences(state, before, after);
      if (isAfter && !isBefore && sweep.commitAnnounced) {
        EXPECT_TRUE(HasLine(run.err, "committing")) << "a state after no commit began";
      }
      if (!wasKilled) {
        EXPECT_TRUE(isAfter);
      }
      leftBefore += isBefore ? 1 : 0;
      leftAfter += isAfter && !isBefore ? 1 : 0;
    }
    ASSERT_TRUE(model_.Install(db_.Path()));
    std::printf("[ kill sweep ] %s: %zu SIGKILLs (%d landed before the worker ended) at marks%s%s"
                " of %d, seed %u: %d left the state before, %d the state after; every file "
                "opened and passed the integrity check\n",
                sweep.name.c_str(), stops.size(), killed, pointList.c_str(),
                sweep.commitAnnounced ? " and at the commit" : "", marks, KillSeed(), leftBefore,
                leftAfter);
  }
  std::string folder_;
};

}  // namespace

TEST_F(ReliabilityTest, ImportKilledAnywhereIsAllOrNothing) {
  const int rows = 10000 / kRowScale;
  RunKillSweep({"import", {"import", "DB", folder_, std::to_string(rows), std::to_string(rows / 100)},
                false, true});
}

TEST_F(ReliabilityTest, DeletionKilledAnywhereIsAllOrNothing) {
  // A folder of many layers: the deleter reports its progress once per layer.
  const std::string doomed = tree_.AddFolder(folder_, "doomed");
  const int perLayer = 500 / kRowScale;
  for (int i = 0; i < 20; ++i) ImportLayer("big" + std::to_string(i), perLayer, doomed);
  RunKillSweep({"delete", {"delete", "DB", doomed, std::to_string(perLayer)}, true, true});
}

TEST_F(ReliabilityTest, CopyKilledAnywhereIsAllOrNothing) {
  const int rows = 2000 / kRowScale;
  const std::string layer = ImportLayer("small", rows);
  const std::string target = tree_.AddFolder(db_.RootUUID(), "target");
  RunKillSweep({"copy", {"copy", "DB", layer, target, std::to_string(rows / 100)}, false, true});
}

TEST_F(ReliabilityTest, OrderRebuildKilledAnywhereIsAllOrNothing) {
  const int rows = 3000 / kRowScale;
  ImportLayer("unordered", rows);
  ASSERT_TRUE(ExecSql(model_.GetConnection(), "UPDATE shape_order SET order_num = -1", ""));
  // The rebuilder says nothing before its commit: a finished state needs no announcement.
  RunKillSweep({"rebuild", {"rebuild", "DB", folder_, std::to_string(rows / 100)}, true, false});
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
