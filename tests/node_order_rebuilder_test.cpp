// Renumbering sibling order numbers along the links.
#include <gtest/gtest.h>

#include "FeatureOption.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "NodeOrderRebuilder.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "ModelTest.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

class RebuilderTest : public CModelTest {
 protected:
  void SetOrder(const char* table, const std::string& uuid, int order) {
    ASSERT_TRUE(ExecSql(model_.GetConnection(),
                        std::string("UPDATE ") + table + " SET order_num = " +
                            std::to_string(order) + " WHERE uuid = '" + uuid + "'",
                        ""));
  }
};

class CountingProgress : public CNodeOrderRebuilder::IRebuildProgress {
 public:
  explicit CountingProgress(CNodeOrderRebuilder* rebuilder = nullptr) : rebuilder_(rebuilder) {}
  void OnBegin(IAnnotationDBDataModel*, bool recursive) override {
    begun = true;
    beganRecursive = recursive;
    // A rebuild started from inside a running one is refused.
    if (rebuilder_ != nullptr) nested = rebuilder_->RebuildNodeOrderNum("x", false, nullptr);
  }
  void OnNode(const std::string& uuid, int count) override {
    nodes.push_back(uuid);
    lastCount = count;
  }
  void OnEnd(IAnnotationDBDataModel*) override { ended = true; }

  bool begun = false, beganRecursive = false, ended = false, nested = true;
  int lastCount = 0;
  std::vector<std::string> nodes;

 private:
  CNodeOrderRebuilder* rebuilder_;
};

}  // namespace

TEST_F(RebuilderTest, AssignedListsKeepTheirNumbersAnUnassignedOneRenumbersInLinkOrder) {
  const std::string a = tree_.AddFolder(root_, "a");
  const std::string b = tree_.AddFolder(root_, "b");
  const std::string c = tree_.AddFolder(root_, "c");
  std::vector<std::string> inner;
  for (const std::string& folder : {a, b, c}) inner.push_back(tree_.AddFolder(folder, "inner"));
  SetOrder("folder_order", a, 7);
  SetOrder("folder_order", b, 9);
  SetOrder("folder_order", c, 3);
  for (bool recursive : {false, true}) {
    CNodeOrderRebuilder rebuilder(&model_);
    CountingProgress progress;
    ASSERT_TRUE(rebuilder.RebuildNodeOrderNum(root_, recursive, &progress));
    EXPECT_EQ(recursive, progress.begun && progress.beganRecursive);
    EXPECT_TRUE(progress.ended);
    EXPECT_EQ(9, model_.QueryOrderNum(NODE_KIND_FOLDER, b));
    EXPECT_EQ(3, model_.QueryOrderNum(NODE_KIND_FOLDER, c));
    // Only the recursive run walks the lists: the root's and each folder's.
    EXPECT_EQ(recursive ? 6u : 0u, progress.nodes.size());
  }

  SetOrder("folder_order", b, -1);
  CNodeOrderRebuilder rebuilder(&model_);
  CountingProgress progress(&rebuilder);
  CZuLogCapture capture;
  ASSERT_TRUE(rebuilder.RebuildNodeOrderNum(root_, false, &progress));
  EXPECT_FALSE(progress.nested);
  EXPECT_FALSE(rebuilder.IsRebuilding());
  EXPECT_EQ(0, model_.QueryOrderNum(NODE_KIND_FOLDER, a));
  EXPECT_EQ(1, model_.QueryOrderNum(NODE_KIND_FOLDER, b));
  EXPECT_EQ(2, model_.QueryOrderNum(NODE_KIND_FOLDER, c));
  EXPECT_EQ((std::vector<std::string>{a, b, c}), progress.nodes);
  EXPECT_EQ(3, progress.lastCount);
  // The calculator holds one more than the rows.
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(i + 1, model_.GetNodeCacheCalculator()->GetEntityOrder(inner[i]).At(1));
  }
  EXPECT_EQ(1, capture.Count("[RebuildNodeOrderNum] " + Utf8ToLocal("提交批量节点Num顺序更新完成 ")));
  EXPECT_EQ(1, capture.Count(" ms <<<<<"));
}

TEST_F(RebuilderTest, UnknownNodesCommitAnEmptyTransaction) {
  CNodeOrderRebuilder rebuilder(&model_);
  EXPECT_TRUE(rebuilder.RebuildNodeOrderNum("nothing", true, nullptr));
  EXPECT_FALSE(model_.IsInTransaction());
  CZuLogCapture capture;
  EXPECT_FALSE(rebuilder.RebuildNodeOrderNum("it's", true, nullptr));
  EXPECT_EQ(1, capture.Count("refused uuid"));

  CSpatialiteDBDataModel closed;
  capture.Clear();
  CNodeOrderRebuilder unusable(&closed);
  EXPECT_EQ(1, capture.Count("[CFeatureBatchImporter] " + Utf8ToLocal("DBDataModel未建立")));
  EXPECT_FALSE(unusable.RebuildNodeOrderNum(root_, true, nullptr));
}

TEST_F(RebuilderTest, FilesWithoutTheParentAliasColumnsAreRenumberedToo) {
  // Files made by other programs have folder_puuid and layer_puuid but not their generated copies.
  for (const char* column : {"folder_uuid", "layer_uuid"}) {
    ASSERT_TRUE(ExecSql(model_.GetConnection(),
                        std::string("ALTER TABLE layer DROP COLUMN ") + column, ""));
  }
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string a = tree_.AddLayer(folder, "a");
  const std::string b = tree_.AddLayer(folder, "b");
  const std::string x = tree_.AddChildLayer(a, "x");
  const std::string y = tree_.AddChildLayer(a, "y");
  SetOrder("layer_order", a, 7);
  SetOrder("layer_order", b, -1);
  SetOrder("layer_order", x, 4);
  SetOrder("layer_order", y, -1);
  CNodeOrderRebuilder rebuilder(&model_);
  CZuLogCapture capture;
  ASSERT_TRUE(rebuilder.RebuildNodeOrderNum(folder, false, nullptr));
  ASSERT_TRUE(rebuilder.RebuildNodeOrderNum(a, false, nullptr));
  EXPECT_EQ(0, capture.Count("no such column"));
  EXPECT_EQ(0, model_.QueryOrderNum(NODE_KIND_LAYER, a));
  EXPECT_EQ(1, model_.QueryOrderNum(NODE_KIND_LAYER, b));
  EXPECT_EQ(0, model_.QueryOrderNum(NODE_KIND_LAYER, x));
  EXPECT_EQ(1, model_.QueryOrderNum(NODE_KIND_LAYER, y));
}
