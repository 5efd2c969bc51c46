// The `annotationlayer` tool in the situations real data brings: a database whose writer was
// killed, Ctrl-C in the middle of a command, another process holding the lock, a CSV whose
// coordinates are in columns. Each runs the built tool as a child process on real files.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>

#include "CliFixtures.h"
#include "ProcessRunner.h"
#include "TempDir.h"
#include "TestDatabase.h"

namespace {

// Runs the tool with standard error on a terminal, where progress and notices show; `watch` sees
// that output as it grows and may signal the tool.
CProcessResult RunWatched(const std::vector<std::string>& args,
                          CProcessRunner::ErrorWatcher watch) {
  std::vector<std::string> argv{ANNOTATIONLAYER_CLI_PATH};
  argv.insert(argv.end(), args.begin(), args.end());
  CProcessRunner runner;
  runner.SetTimeoutSeconds(240);
  runner.SetStderrTerminal(true);
  runner.SetErrorWatcher(std::move(watch));
  return runner.Run(argv);
}

// A watcher that sends `signal` once, the first time `condition` holds for the output so far.
CProcessRunner::ErrorWatcher SignalWhen(int signal, bool* sent,
                                        std::function<bool(const std::string&)> condition) {
  return [=](pid_t pid, const std::string& err) {
    if (!*sent && condition(err)) {
      *sent = true;
      kill(pid, signal);
    }
  };
}

using CliRecoveryTest = CCliDatabaseTest;

// A writer killed mid-transaction leaves a hot journal, which read-only connections cannot roll
// back. Every command opens such a file, and the import that was killed is gone.
TEST_F(CliRecoveryTest, EveryCommandOpensADatabaseWhoseWriterWasKilled) {
  const std::string base = ImportPoints("base", 10);
  const std::string source = dir_.File("big.geojson");
  ASSERT_TRUE(WriteSource(source, "GeoJSON", {PointLayer("big", 60000)}));
  const std::string journal = db_ + "-journal";
  bool killed = false;
  RunWatched({"import", db_, source},
             SignalWhen(SIGKILL, &killed, [&](const std::string&) { return FileExists(journal); }));
  ASSERT_TRUE(killed) << "the import ended before its journal appeared";
  const std::string dbBytes = ReadFileBytes(db_), journalBytes = ReadFileBytes(journal);
  ASSERT_FALSE(journalBytes.empty());

  const struct {
    std::vector<std::string> args;
    const char* layersAfter;
  } kCases[] = {
      {{"tree", db_}, "1"},
      {{"info", db_, root_}, "1"},
      {{"export", db_, base, dir_.File("out.gpkg")}, "1"},
      {{"import", db_, dir_.File("base.geojson")}, "2"},
      {{"delete", db_, base}, "0"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.args[0]);
    ASSERT_TRUE(WriteFileBytes(db_, dbBytes) && WriteFileBytes(journal, journalBytes));
    ASSERT_EQ(Count("layer"), "") << "a read-only connection should not read a hot journal's file";
    const CProcessResult result = RunTool(c.args);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(FileExists(journal));
    EXPECT_EQ(Count("layer"), c.layersAfter);
    EXPECT_EQ(QueryScalar(db_, "PRAGMA integrity_check"), "ok");
  }
}

// Ctrl-C while a command writes: exit 130 and the database exactly as before. The progress each
// waits for shows on a terminal only.
TEST_F(CliRecoveryTest, InterruptedCommandsLeaveTheDatabaseAsItWas) {
  const std::string layer = ImportPoints("many", 30000);
  ASSERT_FALSE(layer.empty());
  // Unassigned numbers give the renumbering work to do (and something to take back).
  ASSERT_TRUE(ExecSql(db_, "UPDATE shape_order SET order_num = -1 WHERE rowid % 2 = 0"));
  const std::string kOrders =
      "SELECT group_concat(uuid || ':' || order_num) FROM (SELECT * FROM shape_order ORDER BY "
      "uuid)";
  const std::string before = QueryScalar(db_, kOrders);
  const struct {
    std::vector<std::string> args;
    const char* progress;
    const char* message;
  } kCases[] = {
      {{"import", db_, dir_.File("many.geojson")},
       "\rimport [",
       "interrupted; nothing was imported"},
      {{"delete", db_, layer}, "\rdelete many", "interrupted; nothing was deleted"},
      {{"rebuild-order", db_, root_, "--recursive"},
       "\rrebuild-order",
       "interrupted; nothing was renumbered"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.args[0]);
    bool sent = false;
    const std::string progress = c.progress;
    const CProcessResult result =
        RunWatched(c.args, SignalWhen(SIGINT, &sent, [&](const std::string& err) {
                     return err.find(progress) != std::string::npos;
                   }));
    ASSERT_TRUE(sent) << result.err;
    EXPECT_EQ(result.exitCode, 130) << result.err;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    EXPECT_FALSE(FileExists(db_ + "-journal"));
    EXPECT_EQ(Count("layer"), "1");
    EXPECT_EQ(QueryScalar(db_, kOrders), before);
  }
  EXPECT_EQ(ReadLayer(db_, layer).size(), 30000u);
}

// A database another process is writing is waited for, up to a few seconds.
TEST_F(CliRecoveryTest, ALockedDatabaseIsWaitedFor) {
  ImportPoints("base", 3);
  const std::string source = dir_.File("base.geojson");
  const struct {
    const char* begin;
    std::vector<std::string> args;
    bool release;
    int exitCode;
  } kCases[] = {
      {"BEGIN IMMEDIATE", {"import", db_, source}, true, 0},  // a writer waits for a writer
      {"BEGIN EXCLUSIVE", {"tree", db_}, true, 0},            // a reader for one that commits
      {"BEGIN IMMEDIATE", {"delete", db_, root_}, false, 1},  // and gives up after a while
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.args[0]);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(db_.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, c.begin, nullptr, nullptr, nullptr), SQLITE_OK);
    bool waited = false;
    const CProcessResult result = RunWatched(c.args, [&](pid_t, const std::string& err) {
      if (waited || err.find("is locked by another process; waiting") == std::string::npos) return;
      waited = true;
      if (c.release) sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
    });
    sqlite3_close(other);
    EXPECT_TRUE(waited) << result.err;
    EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
    if (!c.release)
      EXPECT_NE(result.err.find("is locked by another process that is writing it"),
                std::string::npos);
  }
  EXPECT_EQ(Count("layer"), "2");
}

// A CSV whose coordinates are two columns comes in with GDAL's open options (without them it gives
// no feature, which fails: cli_test).
TEST_F(CliRecoveryTest, CsvImportTakesOpenOptions) {
  const std::string csv = dir_.File("sites.csv");
  ASSERT_TRUE(WriteFileBytes(csv, "name,lng,lat\nwell,100.5,30.25\nhut,101,31\n"));
  const CProcessResult result = RunTool(
      {"import", db_, csv, "--oo", "X_POSSIBLE_NAMES=lng", "--oo=Y_POSSIBLE_NAMES=lat"});
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::vector<StoredFeature> features = ReadLayer(db_, LayerUuid(db_, "sites"));
  ASSERT_EQ(features.size(), 2u);
  ASSERT_EQ(features[0].parts.size(), 1u);
  EXPECT_DOUBLE_EQ(features[0].parts[0][0].X(), 100.5);
  EXPECT_DOUBLE_EQ(features[0].parts[0][0].Y(), 30.25);
  EXPECT_EQ(features[1].fields.count("lng"), 0u) << "the coordinate columns are no attributes";
  EXPECT_EQ(features[1].fields.at("name").toString().toStdString(), "hut");
}

}  // namespace
