// The entity pool of a spatial engine: records stamped by pass, entities made once per feature,
// released at once from the screen and destroyed on the pool's thread, the limit kept by
// releasing the least recently stamped records, and the event at the end of a pass.
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

#include "AnnotationEntity.h"
#include "AnnotationRenderer.h"
#include "AnnotationSpatialEngine.h"
#include "CacheDirScope.h"
#include "EntityAssignPool.h"
#include "EntityRecord.h"
#include "IAnnotationLayerModule.h"
#include "ModelTest.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "TreeBuilder.h"

namespace {

constexpr int kView = 9301;
constexpr int kOtherView = 9302;
constexpr int kWaitMs = 20000;

class PoolTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    const std::string folder = tree_.AddFolder(root_, "f");
    std::vector<std::string> layers;
    ASSERT_TRUE(ImportPointGrid(&model_, folder, "points", SPointGrid{4, 3}, 100, &layers));
    for (int i = 0; i < 12; ++i) {
      bool isLayer = false;
      features_.push_back(model_.QueryChildByOrder(layers.at(0), i, isLayer));
      ASSERT_FALSE(features_.back().empty());
    }
    module_ = GetOrCreateAnnotationLayerModule();
    ASSERT_TRUE(module_->Start());
    ASSERT_TRUE(engine_.Initialize("pool", &model_));
    engine_.SetAttachParam(kView);
    scene_ = CAnnotationRenderer::GetInstance()->GetScene(kView);
    other_ = CAnnotationRenderer::GetInstance()->GetScene(kOtherView);
    scene_->Clear();
    other_->Clear();
    liveBefore_ = CAnnotationEntity::GetLiveCount();
  }
  void TearDown() override {
    engine_.Uninitialize();
    DestroyAnnotationLayerModule();
  }
  std::unique_ptr<CEntityAssignPool> MakePool(int limit = 21000) {
    std::unique_ptr<CEntityAssignPool> pool(new CEntityAssignPool(&engine_, module_, limit));
    EXPECT_TRUE(pool->Start());
    return pool;
  }
  const std::string& F(int i) const { return features_.at(static_cast<size_t>(i)); }

  CCacheDirScope cacheDir_;
  std::vector<std::string> features_;
  IAnnotationLayerModule* module_ = nullptr;
  CAnnotationSpatialEngine engine_;
  CAnnotationScene* scene_ = nullptr;
  CAnnotationScene* other_ = nullptr;
  int liveBefore_ = 0;
};

}  // namespace

TEST_F(PoolTest, RecordsAreStampedWithThePassThatTouchedThem) {
  std::unique_ptr<CEntityAssignPool> pool = MakePool();
  EXPECT_EQ(21000, pool->GetEntityLimit());
  pool->BeginTravel();
  EXPECT_EQ(1, pool->GetPassNumber());
  std::shared_ptr<CEntityRecord> record = pool->AcquireRecord(F(0));
  ASSERT_TRUE(record);
  EXPECT_EQ(F(0), record->GetUUID());
  EXPECT_EQ(1, record->GetStamp());
  EXPECT_EQ(record, pool->AcquireRecord(F(0)));
  EXPECT_FALSE(pool->HasRecord(F(1)));
  EXPECT_EQ(nullptr, pool->FindRecord(F(1)));
  EXPECT_EQ(nullptr, pool->AcquireRecord(""));
  pool->EndTravel();
  pool->BeginTravel();
  EXPECT_TRUE(pool->HasRecord(F(0)));
  EXPECT_EQ(1, record->GetStamp());  // asking does not stamp, finding does
  EXPECT_EQ(record, pool->FindRecord(F(0)));
  EXPECT_EQ(2, record->GetStamp());
  EXPECT_EQ(1, pool->GetRecordCount());
  EXPECT_EQ(0, pool->GetEntityCount());
  pool->EndTravel();
  EXPECT_NE(pool->GetID(), MakePool()->GetID());
}

TEST_F(PoolTest, ConcurrentAssignmentsOfOneFeatureMakeOneEntity) {
  std::unique_ptr<CEntityAssignPool> pool = MakePool();
  pool->AcquireRecord(F(3));
  std::vector<std::future<bool>> results;
  for (int i = 0; i < 8; ++i) {
    results.push_back(std::async(std::launch::async, [&] { return pool->AssignEntity(F(3), 8); }));
  }
  int made = 0;
  for (auto& result : results) made += result.get() ? 1 : 0;
  EXPECT_EQ(1, made);
  EXPECT_EQ(1, scene_->GetCount());
  EXPECT_EQ(pool->FindRecord(F(3))->GetEntity()->GetID(), scene_->GetOwner(F(3)));
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));  // the losers were retired and destroyed
  EXPECT_EQ(liveBefore_ + 1, CAnnotationEntity::GetLiveCount());
}

TEST_F(PoolTest, ReleaseAndClearAllDetachAtOnceAndDestroyOnThePoolsThread) {
  std::unique_ptr<CEntityAssignPool> pool = MakePool();
  for (int i = 0; i < 4; ++i) {
    pool->AcquireRecord(F(i));
    ASSERT_TRUE(pool->AssignEntity(F(i), 8));
  }
  std::shared_ptr<CEntityRecord> record = pool->FindRecord(F(0));
  std::weak_ptr<CAnnotationEntity> entity = record->GetEntity();
  ASSERT_TRUE(pool->ReleaseEntity(F(0)));
  EXPECT_FALSE(scene_->Contains(F(0)));
  EXPECT_FALSE(pool->HasRecord(F(0)));
  EXPECT_TRUE(record->IsRemoved());
  EXPECT_FALSE(record->HasEntity());
  EXPECT_FALSE(pool->ReleaseEntity(F(0)));
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));
  EXPECT_TRUE(entity.expired());
  EXPECT_EQ(liveBefore_ + 3, CAnnotationEntity::GetLiveCount());
  // A record the pool has dropped takes no entity.
  EXPECT_FALSE(record->InstallEntity(std::make_shared<CAnnotationEntity>()));

  EXPECT_EQ(3, pool->ReattachAll(kOtherView));
  EXPECT_EQ(0, scene_->GetCount());
  EXPECT_EQ(3, other_->GetCount());
  pool->ClearAll();
  EXPECT_EQ(0, other_->GetCount());
  EXPECT_EQ(0, pool->GetRecordCount());
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));
  EXPECT_EQ(0, pool->GetPendingReleaseCount());
  EXPECT_EQ(liveBefore_, CAnnotationEntity::GetLiveCount());
  EXPECT_EQ(0, pool->ReattachAll(kView));
}

TEST_F(PoolTest, OverTheLimitTheLeastRecentlyStampedGoFirst) {
  std::unique_ptr<CEntityAssignPool> pool = MakePool(4);
  pool->BeginTravel();
  for (int i = 0; i < 3; ++i) pool->AcquireRecord(F(i));
  ASSERT_TRUE(pool->AssignEntity(F(0), 8));
  pool->EndTravel();

  pool->BeginTravel();
  pool->FindRecord(F(1));  // touched again: now among the youngest
  for (int i = 3; i < 6; ++i) pool->AcquireRecord(F(i));
  pool->EndTravel();
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));
  EXPECT_EQ(4, pool->GetRecordCount());
  EXPECT_FALSE(pool->HasRecord(F(0)));  // the oldest, with its entity
  EXPECT_FALSE(pool->HasRecord(F(2)));
  EXPECT_TRUE(pool->HasRecord(F(1)));
  EXPECT_FALSE(scene_->Contains(F(0)));
  EXPECT_EQ(liveBefore_, CAnnotationEntity::GetLiveCount());

  // Records of the last pass stay, whatever their number.
  pool->BeginTravel();
  for (int i = 0; i < 12; ++i) pool->AcquireRecord(F(i));
  pool->EndTravel();
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));
  EXPECT_EQ(12, pool->GetRecordCount());
  pool->BeginTravel();
  pool->AcquireRecord(F(11));
  pool->EndTravel();
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));
  EXPECT_EQ(4, pool->GetRecordCount());
  EXPECT_TRUE(pool->HasRecord(F(11)));
}

TEST_F(PoolTest, StopWakesTheIdleThreadAndReleasesEverything) {
  std::unique_ptr<CEntityAssignPool> pool = MakePool();
  pool->AcquireRecord(F(0));
  ASSERT_TRUE(pool->AssignEntity(F(0), 8));
  ASSERT_TRUE(pool->WaitForIdle(kWaitMs));  // the thread is in its long idle wait now
  EXPECT_TRUE(pool->IsRunning());
  auto stopped = std::async(std::launch::async, [&] { pool->Stop(); });
  // The idle wait is 30 s; a stop must not sit it out.
  ASSERT_EQ(std::future_status::ready, stopped.wait_for(std::chrono::seconds(10)));
  EXPECT_TRUE(pool->IsStopped());
  EXPECT_EQ(nullptr, pool->AcquireRecord(F(1)));
  pool.reset();
  EXPECT_FALSE(scene_->Contains(F(0)));
  EXPECT_EQ(liveBefore_, CAnnotationEntity::GetLiveCount());
}
