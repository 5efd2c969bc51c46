// Databases that are not what the module expects: missing tables, other column types, NULLs,
// cyclic and dangling links, index arrays naming rows that do not exist, foreign geometry, a
// truncated file. Every operation must come back with its failure value (or whatever the rows
// allow) without crashing or hanging; the test drives the whole interface over each file.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "EnclosureOption.h"
#include "FeatureBatchImporter.h"
#include "FeatureOption.h"
#include "FeatureStyleSet.h"
#include "FolderOption.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "LayerBatchTransfer.h"
#include "LayerOption.h"
#include "ModelTest.h"
#include "NodeCacheCalculator.h"
#include "NodeOrderRebuilder.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TreeBuilder.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {

// Counts what a walk hands over, so that nothing is optimised away.
class Counter : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>&,
                            const std::string&, const CFolderOption&) override {
    return Count();
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>&,
                           const std::string&, const CLayerOption&) override {
    return Count();
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string&, const CFeatureOption&) override {
    return Count();
  }
  E_HANDLE_TYPE Count() {
    ++nodes;
    return HANDLE_TYPE_CONTINUE;
  }
  int nodes = 0;
};

std::vector<std::string> Uuids(sqlite3* db, const char* table) {
  std::vector<std::string> uuids;
  CSqlStatement stmt(db, std::string("SELECT uuid FROM ") + table + " LIMIT 50", "");
  while (stmt.StepRow()) uuids.push_back(stmt.ColumnText(0, false));
  uuids.push_back("no-such-node");
  return uuids;
}

// Every operation of the interface and the batch tools, on every node the file names. False when
// the file cannot even be installed.
bool DriveEverything(const std::string& path) {
  CSpatialiteDBDataModel model;
  if (!model.Install(path)) return false;
  CNodeCacheCalculator* calculator = model.GetNodeCacheCalculator();
  EXPECT_TRUE(calculator->WaitForFinished(60000));
  sqlite3* db = model.GetConnection();
  const std::string root = model.GetTopRootUUID();
  Counter counter;
  model.IsEmpty();
  model.Travel(&counter);
  model.TravelFolder(&counter, root);
  const EXTENT all{-180, -90, 180, 90};
  model.TravelViaExtent(&counter, all, 100);
  const CGeometryData ring(std::vector<CVector3D>{{-180, -90, 0}, {180, -90, 0}, {180, 90, 0}});
  model.TravelViaExtent(&counter, ring, 100);
  model.TravelViaSQL(&counter, NODE_KIND_LAYER, "1");
  model.CountExtentFeature(all);

  bool isLayer = false;
  std::list<std::string> ancestors;
  for (const std::string& uuid : Uuids(db, "folder")) {
    CFolderOption option = model.QueryFolderOption(uuid);
    option.SetName("renamed");
    option.ChangeMask(5);
    option.SetOrderNum(3);
    model.ModifyFolderOption(option);
    model.GetLastFolderChildUUID(uuid);
    model.GetLastLayerChildUUID(uuid);
    model.CountChildren(uuid, NODE_KIND_FOLDER);
    model.QueryChildByOrder(uuid, 1, isLayer);
    model.QueryAncestorUUIDs(uuid, ancestors);
    calculator->GetEntityAttribute(uuid);
    calculator->GetEntityOrder(uuid);
  }
  for (const std::string& uuid : Uuids(db, "layer")) {
    CLayerOption option = model.QueryLayerOption(uuid);
    option.SetLevel(1, 2);
    option.ChangeMask(1);
    option.SetWkt("x");
    model.ModifyLayerOption(option);
    model.TravelLayer(&counter, uuid, 0, 10);
    model.TravelLayerChildren(&counter, uuid);
    model.GetLastChildUUID(uuid, isLayer);
    model.IsLayerExistFeature(uuid);
    model.IsLayerExistLayer(uuid);
    CZuFieldSetObject fields;
    model.QueryLayerHeaderList(uuid, fields);
    model.ModifyLayerHeaderList(uuid, fields);
    model.QueryUserData(uuid, fields);
    fields.SetField("k", FIELD_OFST_TYPE_INT, "", 1);
    model.ModifyOrInsertUserData(uuid, fields);
    model.DirtyLayerBoundingBox(uuid);
    CFeatureStyleSet styles;
    model.QueryStyle(&styles, uuid, true);
  }
  for (const std::string& uuid : Uuids(db, "shape")) {
    CFeatureOption option = model.QueryFeatureOption(uuid);
    option.SetNodeChecked(!option.IsNodeChecked());
    model.ModifyFeatureOption(option);
    model.QueryFeatureBase(uuid);
    CAnnotationFeature feature;
    model.QueryGeometryData(uuid, &feature);
    model.QueryBoundingBox(uuid);
    model.ModifyGeometryData(uuid, &feature);
    CZuFieldSetObject fields;
    model.QueryField(uuid, fields);
    fields.SetField("f", FIELD_OFST_TYPE_TEXT, "", QString("v"));
    model.ModifyOrInsertField(uuid, fields);
    model.RemoveField(uuid, "f");
    std::list<CEnclosureOption> enclosures;
    model.QueryEnclosure(uuid, enclosures);
    for (const CEnclosureOption& enclosure : enclosures)
      model.QueryEnclosureData(enclosure.GetID());
    CFeatureStyleSet styles;
    model.QueryStyle(&styles, uuid, false);
    model.IsNodeVisible(uuid);
    model.GetNodeDepth(uuid);
    calculator->GetEntityAttribute(uuid);
  }

  // Writing new nodes and the batch tools.
  CTreeBuilder tree(&model);
  const std::string folder = tree.AddFolder(root, "new");
  const std::string layer = tree.AddLayer(folder, "new");
  tree.AddFeature(layer, "new");
  CAnnotationGroup group("imported");
  CFeatureBatchImporter importer(&model, root.empty() ? "no-root" : root);
  if (importer.BeginImport()) {
    importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
    CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POINT);
    feature.AddPart(CGeometryData(std::vector<CVector3D>{{1, 2, 3}}));
    feature.SetGroup(&group);
    importer.InsertFeature(&feature);
    importer.EndImport();
  }
  CNodeOrderRebuilder rebuilder(&model);
  rebuilder.RebuildNodeOrderNum(root, true, nullptr);
  CLayerBatchCopier copier(&model);
  if (copier.BeginCopy(nullptr)) {
    for (const std::string& uuid : Uuids(db, "layer")) copier.CopyNode(uuid, folder);
    copier.EndCopy();
  }
  for (const std::string& uuid : Uuids(db, "shape")) model.DeleteFeature(uuid);
  for (const std::string& uuid : Uuids(db, "layer")) model.DeleteLayer(uuid);
  for (const std::string& uuid : Uuids(db, "folder")) {
    if (uuid != root) model.DeleteFolder(uuid);
  }
  calculator->Refresh();
  EXPECT_TRUE(calculator->WaitForFinished(60000));
  model.Uninstall();
  return true;
}

class HostileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    // A real tree to spoil.
    CSpatialiteDBDataModel model;
    ASSERT_TRUE(model.Install(db_.Path()));
    CTreeBuilder tree(&model);
    const std::string a = tree.AddFolder(db_.RootUUID(), "a");
    const std::string b = tree.AddFolder(a, "b");
    const std::string l = tree.AddLayer(b, "l");
    const std::string sub = tree.AddChildLayer(l, "sub");
    for (int i = 0; i < 5; ++i) tree.AddFeature(i % 2 ? l : sub, "s" + std::to_string(i));
    ASSERT_TRUE(ExecSql(model.GetConnection(),
                        "UPDATE shape SET geom = GeomFromText('POINT Z(1 2 3)', 4326)", ""));
    model.Uninstall();
  }
  // Runs statements on a plain connection (no SpatiaLite, so its triggers cannot object).
  void Spoil(const std::vector<std::string>& statements) {
    CSpatialiteHandler handler;
    ASSERT_TRUE(handler.Open(db_.Path(), false));
    for (const std::string& sql : statements) {
      ASSERT_TRUE(ExecSql(handler.GetDB(), sql, "[spoil]:")) << sql;
    }
    handler.Close();
  }
  CTestDatabase db_;
  CZuLogCapture quiet_;
};

}  // namespace

TEST_F(HostileTest, NoModuleTablesAtAll) {
  CTempDir dir;
  CSpatialiteHandler handler;
  ASSERT_TRUE(handler.OpenByCreate(dir.File("bare.db")));
  handler.Close();
  EXPECT_TRUE(DriveEverything(dir.File("bare.db")));
  EXPECT_EQ("ok", QueryScalar(dir.File("bare.db"), "PRAGMA integrity_check"));
  // The missing folder table counts as empty, and the calculator's first pass says so too.
  EXPECT_EQ(1, quiet_.Count("IsEmpty Error! no such table: folder"));
  EXPECT_GE(quiet_.Count("[Travel]:no such table: folder"), 1);
}

// Whatever the operations make of the spoilt rows, the file itself stays sound.
TEST_F(HostileTest, SpoiltRows) {
  const struct {
    const char* what;
    std::vector<std::string> statements;
  } cases[] = {
      {"missing tables",
       {"DROP TABLE shape_order", "DROP TABLE layer_status", "DROP TABLE shape_property",
        "DROP TABLE folder_order"}},
      {"nulls and other types",
       {"UPDATE folder SET name = NULL, index_id = NULL, type = 'x'",
        "UPDATE layer SET name = NULL, index_id = X'00FF', min_level = 'high', wkt = NULL",
        "UPDATE shape SET name = NULL, index_id = NULL, type = NULL",
        "UPDATE layer_order SET left_layer_uuid = NULL, right_shape_uuid = 42",
        "UPDATE shape_status SET value = NULL", "UPDATE folder_status SET value = 'on'"}},
      {"cyclic and dangling links",
       {"UPDATE folder_order SET left_uuid = uuid, right_uuid = uuid",
        "UPDATE layer_order SET right_layer_uuid = uuid",
        "UPDATE shape_order SET left_shape_uuid = 'gone', right_shape_uuid = 'gone too'",
        "UPDATE layer SET layer_puuid = uuid WHERE name = 'sub'",
        "UPDATE folder SET puuid = (SELECT uuid FROM folder WHERE name = 'b') WHERE name = 'a'"}},
      {"index arrays naming missing rows",
       {"UPDATE shape SET index_id = 's:999999;p:-1,abc;u:;e:123456789012345678901234'",
        "UPDATE layer SET index_id = 'u:5;s:x'", "UPDATE folder SET index_id = ';;;s'"}},
      {"foreign geometry",
       {"DROP TRIGGER IF EXISTS ggi_shape_geom", "DROP TRIGGER IF EXISTS ggu_shape_geom",
        "UPDATE shape SET geom = X'0001E61000000000' WHERE rowid % 3 = 0",
        "UPDATE shape SET geom = X'00010000000000000000' || randomblob(200) WHERE rowid % 3 = 1",
        "UPDATE shape SET geom = 'not a blob' WHERE rowid % 3 = 2"}},
  };
  const std::string pristine = ReadFileBytes(db_.Path());
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_TRUE(WriteFileBytes(db_.Path(), pristine));
    Spoil(c.statements);
    EXPECT_TRUE(DriveEverything(db_.Path()));
    EXPECT_EQ("ok", QueryScalar(db_.Path(), "PRAGMA integrity_check"));
  }
}

TEST_F(HostileTest, TruncatedCopy) {
  const std::string bytes = ReadFileBytes(db_.Path());
  const std::string truncated = db_.Dir().File("truncated.db");
  ASSERT_TRUE(WriteFileBytes(truncated, bytes.substr(0, bytes.size() / 2)));
  // The header survives, so SQLite opens the file; every read past the cut fails cleanly.
  DriveEverything(truncated);
  EXPECT_NE("ok", QueryScalar(truncated, "PRAGMA integrity_check"));
}

// GIS layers, whose features have no order rows, are copied, moved and walked whole in
// cli_journeys_test.
using LosslessCopyTest = CModelTest;

TEST_F(LosslessCopyTest, ACopyFailingOnAnyRowIsUndoneWholeAndAMoveKeepsItsOriginal) {
  const std::string target = tree_.AddFolder(root_, "target");
  std::vector<std::string> layers;
  ASSERT_TRUE(ImportPointGrid(&model_, tree_.AddFolder(root_, "source"), "styled",
                              SPointGrid{3, 1}, 50, &layers));
  CLayerBatchCopier copier(&model_);
  ASSERT_TRUE(copier.BeginCopy(nullptr));
  ASSERT_TRUE(copier.CopyNode(layers[0], target));
  // From now on no geometry can be written (the trigger goes with a rollback, so it is made again).
  const auto noRoom = [this] {
    return sqlite3_exec(model_.GetConnection(),
                        "CREATE TEMP TRIGGER IF NOT EXISTS no_room BEFORE UPDATE OF geom ON shape "
                        "BEGIN SELECT RAISE(ABORT, 'no room'); END",
                        nullptr, nullptr, nullptr);
  };
  ASSERT_EQ(SQLITE_OK, noRoom());
  CZuLogCapture log;
  EXPECT_FALSE(copier.CopyNode(layers[0], target));
  EXPECT_GE(log.Count("[CopyNode]:"), 1);
  EXPECT_FALSE(copier.IsCopying());  // the first copy went with the failed one
  EXPECT_TRUE(model_.GetLastLayerChildUUID(target).empty());

  ASSERT_EQ(SQLITE_OK, noRoom());
  CLayerBatchTransfer transfer(&model_, &model_);
  EXPECT_FALSE(transfer.Transfer(layers[0], target, true));
  EXPECT_TRUE(model_.GetLastLayerChildUUID(target).empty());
  EXPECT_EQ(3, model_.CountChildren(layers[0], NODE_KIND_LAYER));
  EXPECT_EQ(3, Count("SELECT COUNT(*) FROM shape WHERE puuid = '" + layers[0] +
                     "' AND geom IS NOT NULL"));
}
