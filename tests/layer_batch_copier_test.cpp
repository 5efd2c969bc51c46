// Copying subtrees within a database and transferring them between databases.
#include <gtest/gtest.h>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerBatchCopier.h"
#include "LayerBatchTransfer.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "ModelTest.h"
#include "TreeBuilder.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;

namespace {

class CopyTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    // root / source / {inner folder, layer L / {feature a, sub-layer / feature b}}
    source_ = tree_.AddFolder(root_, "source");
    tree_.AddFolder(source_, "inner");
    layer_ = tree_.AddLayer(source_, "L");
    featureA_ = tree_.AddFeature(layer_, "a");
    const std::string sub = tree_.AddChildLayer(layer_, "sub");
    tree_.AddFeature(sub, "b");
    sqlite3* db = model_.GetConnection();
    ASSERT_TRUE(ExecSql(db, "UPDATE shape SET geom = GeomFromText('POINT Z(1 2 3)', 4326) WHERE "
                            "uuid = '" + featureA_ + "'", ""));
    ASSERT_TRUE(ExecSql(db, "INSERT INTO shape_style(puuid, format, content) VALUES('" +
                                featureA_ + "', 3, '{\"pen\":{\"w\":2}}')", ""));
    CZuFieldSetObject fields;
    fields.SetField("height", FIELD_OFST_TYPE_DOUBLE, "m", 4.5);
    ASSERT_TRUE(model_.ModifyOrInsertField(featureA_, fields));
    CZuFieldSetObject data;
    data.SetField("owner", FIELD_OFST_TYPE_TEXT, "", QString("me"));
    ASSERT_TRUE(model_.ModifyOrInsertUserData(layer_, data));
    // An enclosure with content, listed in the feature's index array.
    ASSERT_TRUE(ExecSql(db, "INSERT INTO shape_enclosure(puuid, type, url, content) VALUES('" +
                                featureA_ + "', 2, 'http://x', X'00FF10')", ""));
    const std::string id = Scalar("SELECT max(id) FROM shape_enclosure");
    const std::string index = Scalar("SELECT index_id FROM shape WHERE uuid = '" + featureA_ + "'");
    ASSERT_TRUE(ExecSql(db, "UPDATE shape SET index_id = '" + index + ";e:" + id +
                                "' WHERE uuid = '" + featureA_ + "'", ""));
  }
  int Rows(const std::string& table) { return Count("SELECT COUNT(*) FROM " + table); }
  std::string source_, layer_, featureA_;
};

class CountingCopyProgress : public CLayerBatchCopier::ICopyProgress {
 public:
  bool OnNodeCopied(const std::string&, int copied) override {
    last = copied;
    return copied == cancelAt;
  }
  int last = 0;
  int cancelAt = -1;
};

}  // namespace

TEST_F(CopyTest, CopiesAFolderSubtreeWithEveryRow) {
  const int folders = Rows("folder"), layers = Rows("layer"), shapes = Rows("shape");
  CLayerBatchCopier copier(&model_);
  CountingCopyProgress progress;
  ASSERT_TRUE(copier.BeginCopy(&progress));
  std::string copy;
  ASSERT_TRUE(copier.CopyNode(source_, root_, &copy));
  ASSERT_TRUE(copier.EndCopy());
  EXPECT_FALSE(model_.IsInTransaction());

  EXPECT_EQ(std::to_string(folders + 2) + " " + std::to_string(layers + 2) + " " +
                std::to_string(shapes + 2),
            Scalar("SELECT (SELECT COUNT(*) FROM folder) || ' ' || (SELECT COUNT(*) FROM layer) "
                   "|| ' ' || (SELECT COUNT(*) FROM shape)"));
  EXPECT_EQ(6, progress.last);
  // The copy is the root's last child, after the original.
  EXPECT_EQ(copy, model_.QueryFolderOption(source_).GetRightUUID());

  // Inside the copy: the same names in the same order, with every kind of row.
  bool isLayer = false;
  const std::string layerCopy = model_.QueryChildByOrder(copy, 1, isLayer);
  ASSERT_TRUE(isLayer);
  EXPECT_EQ("L", model_.QueryLayerOption(layerCopy).GetName());
  const std::string featureCopy = model_.QueryChildByOrder(layerCopy, 0, isLayer);
  EXPECT_EQ("a", model_.QueryFeatureOption(featureCopy).GetName());
  EXPECT_EQ("POINT Z(1 2 3)",
            Scalar("SELECT AsText(geom) FROM shape WHERE uuid = '" + featureCopy + "'"));
  EXPECT_EQ("{\"pen\":{\"w\":2}}",
            Scalar("SELECT content FROM shape_style WHERE puuid = '" + featureCopy + "'"));
  CZuFieldSetObject fields;
  ASSERT_TRUE(model_.QueryField(featureCopy, fields));
  EXPECT_EQ(QVariant(4.5), fields.GetFieldValue("height"));
  CZuFieldSetObject data;
  ASSERT_TRUE(model_.QueryUserData(layerCopy, data));
  EXPECT_EQ(QVariant(QString("me")), data.GetFieldValue("owner"));
  const CFeatureOption copied = model_.QueryFeatureOption(featureCopy);
  ASSERT_EQ(1u, copied.GetIndexEnclosure().size());
  EXPECT_EQ("00FF10", Scalar("SELECT hex(content) FROM shape_enclosure WHERE id = " +
                                 std::to_string(copied.GetIndexEnclosure()[0])));
  // The original is untouched.
  EXPECT_EQ(layer_, model_.QueryChildByOrder(source_, 1, isLayer));
}

TEST_F(CopyTest, RefusesBadPlacementsAndADiscardedOrCancelledCopyIsRolledBackWhole) {
  const int folders = Rows("folder"), shapes = Rows("shape");
  CLayerBatchCopier copier(&model_);
  ASSERT_TRUE(copier.BeginCopy(nullptr));
  CZuLogCapture capture;
  EXPECT_FALSE(copier.CopyNode(source_, layer_));             // a folder under a layer
  EXPECT_FALSE(copier.CopyNode(featureA_, source_));          // a feature under a folder
  EXPECT_FALSE(copier.CopyNode(source_, source_));            // into itself
  bool isLayer = false;
  EXPECT_FALSE(copier.CopyNode(layer_, model_.QueryChildByOrder(layer_, 1, isLayer)));
  EXPECT_EQ(4, capture.Count("[CopyNode]:"));
  ASSERT_TRUE(copier.CopyNode(featureA_, layer_));
  EXPECT_EQ(shapes + 1, Rows("shape"));
  ASSERT_TRUE(copier.DiscardCopy());
  EXPECT_EQ(shapes, Rows("shape"));
  EXPECT_FALSE(copier.CopyNode(featureA_, layer_));  // not copying any more

  CountingCopyProgress progress;
  progress.cancelAt = 4;
  ASSERT_TRUE(copier.BeginCopy(&progress));
  ASSERT_TRUE(copier.CopyNode(featureA_, layer_));  // copied nodes 1
  EXPECT_FALSE(copier.CopyNode(source_, root_));    // cancelled at the fourth
  EXPECT_EQ(4, progress.last);
  EXPECT_FALSE(copier.IsCopying());
  EXPECT_FALSE(model_.IsInTransaction());
  EXPECT_EQ(folders, Rows("folder"));
  EXPECT_EQ(shapes, Rows("shape"));
}

TEST_F(CopyTest, TransferMovesALayerIntoAnotherDatabase) {
  CTestDatabase otherDb("other.db");
  ASSERT_TRUE(otherDb.IsValid());
  CSpatialiteDBDataModel other;
  ASSERT_TRUE(other.Install(otherDb.Path()));
  CTreeBuilder otherTree(&other);
  const std::string target = otherTree.AddFolder(otherDb.RootUUID(), "target");
  const int sourceShapes = Rows("shape");

  CLayerBatchTransfer transfer(&model_, &other);
  std::string copy;
  ASSERT_TRUE(transfer.Transfer(layer_, target, true, &copy));
  EXPECT_EQ("L", other.QueryLayerOption(copy).GetName());
  EXPECT_EQ("2", QueryScalar(otherDb.Path(), "SELECT COUNT(*) FROM shape"));
  EXPECT_EQ("1",
            QueryScalar(otherDb.Path(), "SELECT COUNT(*) FROM shape WHERE geom IS NOT NULL"));
  EXPECT_EQ(sourceShapes - 2, Rows("shape"));
  EXPECT_FALSE(model_.IsLayerUUID(layer_));
  bool isLayer = true;
  const std::string inner = model_.QueryChildByOrder(source_, 0, isLayer);
  EXPECT_FALSE(isLayer);
  EXPECT_EQ("", model_.QueryFolderOption(inner).GetRightUUID());

  // A copy that cannot be placed leaves both databases alone.
  CZuLogCapture capture;
  const std::string folderInOther = "no-such-parent";
  EXPECT_FALSE(transfer.Transfer(source_, folderInOther, true));
  EXPECT_TRUE(model_.IsFolderUUID(source_));
  EXPECT_FALSE(other.IsInTransaction());
}
