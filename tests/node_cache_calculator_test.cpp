// Inherited visibility, levels and draw order: CNodeAttribute, CNodeOrder, CNodeCacheCalculator.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "ModelTest.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

CNodeAttribute Levels(int minLevel, int maxLevel, int z = 0) {
  CNodeAttribute attribute;
  attribute.SetLevel(static_cast<char>(minLevel), static_cast<char>(maxLevel));
  attribute.SetZValue(z);
  return attribute;
}

}  // namespace

TEST(NodeAttributeTest, CombinationIntersectsLevelsAndOverwritesTheDrawValue) {
  CNodeAttribute a = Levels(3, 15, 7);
  a += Levels(5, 21, 0);
  EXPECT_EQ(5, a.GetMinLevel());
  EXPECT_EQ(15, a.GetMaxLevel());
  EXPECT_EQ(0, a.GetZValue());
  CNodeAttribute empty = Levels(10, 12);
  empty += Levels(0, 5);
  EXPECT_EQ(10, empty.GetMinLevel());  // the empty intersection is kept as it is
  EXPECT_EQ(5, empty.GetMaxLevel());
  CNodeAttribute names, other;
  other.SetNameLevel(4, 9);
  other.SetVisible(false);
  names += other;
  EXPECT_EQ(4, names.GetMinNameLevel());
  EXPECT_EQ(9, names.GetMaxNameLevel());
  EXPECT_FALSE(names.IsVisible());
}

TEST(NodeOrderTest, ComparisonsAreNotLexicographic) {
  const CNodeOrder a({1, 5}), b({2, 3}), prefix({1}), longer({1, 2});
  EXPECT_TRUE(a < b);
  EXPECT_TRUE(a > b);
  EXPECT_FALSE(a == b);
  EXPECT_FALSE(prefix < longer);
  EXPECT_FALSE(prefix > longer);
  EXPECT_FALSE(prefix == longer);
  EXPECT_TRUE(CNodeOrder() == CNodeOrder());
  // Unsigned: -1 (uncached) sorts above every real number.
  EXPECT_TRUE(CNodeOrder({-1}) < CNodeOrder({3}));
  EXPECT_FALSE(CNodeOrder({-1}) > CNodeOrder({3}));
}

namespace {

class CalculatorTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    calculator_ = model_.GetNodeCacheCalculator();
  }
  // Runs a fresh pass and waits for it.
  void Recalculate() {
    calculator_->Refresh();
    ASSERT_TRUE(calculator_->WaitForFinished(10000));
  }
  CNodeCacheCalculator* calculator_ = nullptr;
};

}  // namespace

TEST_F(CalculatorTest, PassCachesFoldersAndLayersAndLayerLevelsComeFromTheNameLevels) {
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string layer = tree_.AddLayer(folder, "l");
  const std::string feature = tree_.AddFeature(layer, "s");
  tree_.AddChildLayer(layer, "sub");
  CZuLogCapture capture;
  Recalculate();
  EXPECT_EQ(4, calculator_->GetCacheCount());  // root, folder, two layers; no feature
  EXPECT_EQ(1, capture.Count("[CNodeCacheCalculator] " + Utf8ToLocal("开启一次Node缓存更新") +
                             " >>>>>"));
  EXPECT_EQ(1, capture.Count("[CNodeCacheCalculator] " + Utf8ToLocal("一次Node缓存更新完成") +
                             " <<<<< time-ms="));
  EXPECT_EQ(1, capture.Count(Utf8ToLocal(" 缓存个数=") + "4"));

  CLayerOption option = model_.QueryLayerOption(layer);
  option.SetLevel(2, 18);
  option.SetNameLevel(5, 12);
  ASSERT_TRUE(model_.ModifyLayerOption(option));  // tells the calculator
  const CNodeAttribute attribute = calculator_->GetEntityAttribute(feature);
  EXPECT_TRUE(attribute.IsVisible());
  EXPECT_EQ(5, attribute.GetMinLevel());
  EXPECT_EQ(12, attribute.GetMaxLevel());
  EXPECT_EQ(0, attribute.GetMinNameLevel());
  EXPECT_EQ(21, attribute.GetMaxNameLevel());
  Recalculate();  // the same after a full pass, and through SetLLevelChange
  EXPECT_EQ(5, calculator_->GetEntityAttribute(feature).GetMinLevel());
  option.SetNameLevel(7, 8);
  calculator_->SetLLevelChange(option);
  EXPECT_EQ(8, calculator_->GetEntityAttribute(feature).GetMaxLevel());
}

TEST_F(CalculatorTest, AnUncheckedAncestorHidesWithTheLevelsSeenSoFar) {
  const std::string outer = tree_.AddFolder(root_, "outer");
  const std::string inner = tree_.AddFolder(outer, "inner");
  const std::string layer = tree_.AddLayer(inner, "l");
  const std::string feature = tree_.AddFeature(layer, "s");
  CLayerOption layerOption = model_.QueryLayerOption(layer);
  layerOption.SetNameLevel(1, 2);
  ASSERT_TRUE(model_.ModifyLayerOption(layerOption));
  // Levels of the first two ancestors (root, outer) narrowed through the cache.
  CLayerOption rootLike;
  rootLike.SetUUID(outer);
  rootLike.SetNodeCheckState(2);
  rootLike.SetNameLevel(3, 15);
  calculator_->SetLChange(rootLike);
  calculator_->SetLVisibleChange(inner, false);  // the third ancestor is hidden

  const CNodeAttribute attribute = calculator_->GetEntityAttribute(feature);
  EXPECT_FALSE(attribute.IsVisible());
  EXPECT_EQ(3, attribute.GetMinLevel());   // root 0..21 + outer 3..15 + inner 0..21
  EXPECT_EQ(15, attribute.GetMaxLevel());  // the layer's 1..2 is never reached

  // A node whose own check is off is invisible whatever its ancestors say.
  calculator_->SetLVisibleChange(inner, true);
  CFeatureOption own = model_.QueryFeatureOption(feature);
  own.SetNodeChecked(false);
  ASSERT_TRUE(model_.ModifyFeatureOption(own));
  const CNodeAttribute hidden = calculator_->GetEntityAttribute(feature);
  EXPECT_FALSE(hidden.IsVisible());
  EXPECT_EQ(0, hidden.GetMinLevel());
  EXPECT_EQ(21, hidden.GetMaxLevel());
}

TEST_F(CalculatorTest, OrderKeysAndUncachedAncestors) {
  const std::string a = tree_.AddFolder(root_, "a");
  const std::string b = tree_.AddFolder(root_, "b");
  const std::string layer = tree_.AddLayer(b, "l");
  tree_.AddFeature(layer, "s0");
  const std::string feature = tree_.AddFeature(layer, "s1");
  ASSERT_FALSE(a.empty());
  EXPECT_EQ(CNodeOrder({0, 1, 0, 1}), calculator_->GetEntityOrder(feature));

  Recalculate();
  EXPECT_EQ(CNodeOrder({0, 1, 0, 1}), calculator_->GetEntityOrder(feature));
  // A layer that is not cached shows as -1.
  CNodeCacheCalculator fresh(&model_);
  fresh.SetLOrderChange(root_, 0);
  fresh.SetLOrderChange(b, 1);
  EXPECT_EQ(2, fresh.GetCacheCount());
  EXPECT_EQ(CNodeOrder({0, 1, -1, 1}), fresh.GetEntityOrder(feature));
  fresh.SetLVisibleChange("never-cached", false);
  EXPECT_EQ(2, fresh.GetCacheCount());
  // The engine's combined read gives the same answers, and no order for a hidden node.
  CNodeOrder combined;
  EXPECT_TRUE(calculator_->GetVisibleEntityOrder(feature, &combined).IsVisible());
  EXPECT_EQ(calculator_->GetEntityOrder(feature), combined);
  calculator_->SetLVisibleChange(b, false);
  CNodeOrder untouched({7});
  EXPECT_FALSE(calculator_->GetVisibleEntityOrder(feature, &untouched).IsVisible());
  EXPECT_EQ(CNodeOrder({7}), untouched);
  // Without a model there is nothing to walk.
  CNodeCacheCalculator orphan(nullptr);
  EXPECT_EQ(CNodeOrder(), orphan.GetEntityOrder(feature));
  EXPECT_FALSE(orphan.GetEntityAttribute(feature).IsVisible());
}

// What a layer hands down to its features is kept between questions; each change of an ancestor
// that reaches the calculator (through the model or directly) must drop it.
TEST_F(CalculatorTest, KeptInheritanceFollowsEveryChangeOfAnAncestor) {
  struct Case {
    const char* what;
    std::function<void(const std::string& folder, const std::string& layer)> change;
    bool visible;
    int minLevel;
    int folderOrder;
  };
  const std::string hidden = tree_.AddFolder(root_, "hidden");
  CFolderOption off = model_.QueryFolderOption(hidden);
  off.SetNodeCheckState(0);
  ASSERT_TRUE(model_.ModifyFolderOption(off));
  const Case cases[] = {
      {"folder unchecked", [&](const std::string& f, const std::string&) {
         CFolderOption o = model_.QueryFolderOption(f);
         o.SetNodeCheckState(0);
         model_.ModifyFolderOption(o);
       }, false, 0, 0},
      {"layer moved under a hidden folder", [&](const std::string&, const std::string& l) {
         CLayerOption o = model_.QueryLayerOption(l);
         o.SetParentUUID(hidden, false);  // the parent alone: no order or status change
         model_.ModifyLayerOption(o);
       }, false, 0, 0},
      {"layer levels", [&](const std::string&, const std::string& l) {
         CLayerOption o = model_.QueryLayerOption(l);
         o.SetNameLevel(4, 9);
         model_.ModifyLayerOption(o);
       }, true, 4, 0},
      {"folder renumbered", [&](const std::string& f, const std::string&) {
         calculator_->SetLOrderChange(f, 7);
       }, true, 0, 7},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string folder = tree_.AddFolder(root_, c.what);
    const std::string layer = tree_.AddLayer(folder, "l");
    const std::string feature = tree_.AddFeature(layer, "s");
    CNodeOrder order;
    ASSERT_TRUE(calculator_->GetVisibleEntityOrder(feature, &order).IsVisible());  // now kept
    c.change(folder, layer);
    const CNodeAttribute attribute = calculator_->GetVisibleEntityOrder(feature, &order);
    EXPECT_EQ(c.visible, attribute.IsVisible());
    EXPECT_EQ(c.minLevel, attribute.GetMinLevel());
    if (c.folderOrder != 0) {
      EXPECT_EQ(c.folderOrder, calculator_->GetEntityOrder(feature).At(1));
    }
  }
}

namespace {

// A model whose next walk, once armed, waits at its tenth folder until released or until its
// calculator stops calculating, so a pass can be held in the middle.
class HeldModel : public CSpatialiteDBDataModel {
 public:
  std::promise<void> entered, release;

  // The calculator is remembered here: while it is being destroyed the model no longer hands it
  // out, but it lives until its pass has ended.
  void Arm() {
    calculator_ = GetNodeCacheCalculator();
    folderReads_ = 0;
    armed_ = true;
  }

  CFolderOption QueryFolderOption(const std::string& uuid) override {
    if (armed_ && folderReads_++ == 10) {
      entered.set_value();
      // Bounded: the calculator's destructor clears the flag; tests release it otherwise.
      for (int i = 0; i < 10000 && calculator_->IsCalculating(); ++i) {
        if (released_.wait_for(std::chrono::milliseconds(1)) == std::future_status::ready) break;
      }
    }
    return CSpatialiteDBDataModel::QueryFolderOption(uuid);
  }

 private:
  CNodeCacheCalculator* calculator_ = nullptr;
  std::shared_future<void> released_ = release.get_future().share();
  std::atomic<bool> armed_{false};
  std::atomic<int> folderReads_{0};
};

// A model holding `folders` folders below its root, its next pass held at the tenth.
void HoldAPass(CTestDatabase& db, HeldModel& model, int folders) {
  ASSERT_TRUE(model.Install(db.Path()));
  model.GetNodeCacheCalculator()->WaitForFinished(10000);
  CTreeBuilder tree(&model);
  ASSERT_TRUE(model.BeginTransaction());
  for (int i = 0; i < folders; ++i) tree.AddFolder(db.RootUUID(), "f" + std::to_string(i));
  ASSERT_TRUE(model.CommitTransaction());
  model.Arm();
  model.GetNodeCacheCalculator()->Refresh();
  ASSERT_EQ(std::future_status::ready,
            model.entered.get_future().wait_for(std::chrono::seconds(10)));
}

}  // namespace

TEST(CalculatorPassTest, SecondRefreshIsRefusedWhileAPassRuns) {
  CTestDatabase db;
  HeldModel model;
  HoldAPass(db, model, 20);
  CNodeCacheCalculator* calculator = model.GetNodeCacheCalculator();
  EXPECT_TRUE(calculator->IsCalculating());
  CZuLogCapture capture;
  calculator->Refresh();
  EXPECT_EQ(std::vector<std::string>{"[CNodeCacheCalculator::Refresh] " +
                                     Utf8ToLocal("Node缓存进行中")},
            capture.Lines());
  model.release.set_value();
  ASSERT_TRUE(calculator->WaitForFinished(10000));
  EXPECT_EQ(21, calculator->GetCacheCount());
}

TEST(CalculatorPassTest, DestructionStopsARunningPass) {
  CTestDatabase db;
  HeldModel model;
  HoldAPass(db, model, 300);
  CZuLogCapture capture;
  // Destroyed while the pass is held in the middle: the pass resumes only once the destructor has
  // cleared the calculating flag, and then stops at its next folder: it logs its end with the root
  // and the nine folders read before the held one, not the 301 there are.
  model.Uninstall();
  EXPECT_EQ(nullptr, model.GetNodeCacheCalculator());
  const std::string end = Utf8ToLocal(" 缓存个数=") + "10";
  const std::vector<std::string> lines = capture.Lines();
  EXPECT_EQ(1, std::count_if(lines.begin(), lines.end(), [&end](const std::string& line) {
              return line.size() > end.size() && line.compare(line.size() - end.size(),
                                                               end.size(), end) == 0;
            }));
}

TEST(CalculatorStressTest, RefreshWhileAnotherThreadEditsAndReads) {
  CTestDatabase db;
  CSpatialiteDBDataModel model;
  ASSERT_TRUE(model.Install(db.Path()));
  CNodeCacheCalculator* calculator = model.GetNodeCacheCalculator();
  CTreeBuilder tree(&model);
  const std::string folder = tree.AddFolder(db.RootUUID(), "f");
  const std::string layer = tree.AddLayer(folder, "l");
  const std::string feature = tree.AddFeature(layer, "s");

  std::atomic<bool> done{false};
  std::atomic<int> reads{0};
  std::thread reader([&] {
    while (!done) {
      calculator->GetEntityAttribute(feature);
      calculator->GetEntityOrder(feature);
      ++reads;
    }
  });
  for (int round = 0; round < 20; ++round) {
    calculator->Refresh();
    const std::string added = tree.AddLayer(folder, "l" + std::to_string(round));
    CLayerOption option = model.QueryLayerOption(added);
    option.SetNameLevel(round % 10, 20);
    model.ModifyLayerOption(option);
    calculator->WaitForFinished(10000);
  }
  done = true;
  reader.join();
  calculator->Refresh();
  ASSERT_TRUE(calculator->WaitForFinished(10000));
  EXPECT_EQ(23, calculator->GetCacheCount());  // root, folder, 21 layers
  EXPECT_GT(reads.load(), 0);
}
