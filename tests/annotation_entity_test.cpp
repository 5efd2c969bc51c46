// Annotation entities: built from the data model, attached to the renderer's scenes, updated by
// mask, retired for good.
#include <gtest/gtest.h>

#include <memory>

#include "AnnotationEntity.h"
#include "AnnotationFeature.h"
#include "AnnotationRenderer.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "SpatialiteDBDataModel.h"
#include "ModelTest.h"
#include "ZuLog.h"

namespace {

// Views of their own, so that no other test's drawables meet these.
constexpr int kView = 9101;
constexpr int kOtherView = 9102;

CFeatureStyleSet PenOfWidth(double width) {
  CFeatureStyleSet styles;
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetWidth(width);
  styles.PushBack(std::move(pen));
  return styles;
}

double PenWidth(const CSceneDrawable& drawable) {
  const auto* pen = dynamic_cast<const CFeaturePenStyle*>(drawable.styles.At(0));
  return pen != nullptr ? pen->GetWidth() : -1;
}

class EntityTest : public CModelTest {
 protected:
  void SetUp() override {
    CModelTest::SetUp();
    std::vector<std::string> layers;
    ASSERT_TRUE(ImportPointGrid(&model_, tree_.AddFolder(root_, "f"), "points",
                                SPointGrid{2, 1, 10, 20}, 100, &layers));
    layer_ = layers.at(0);
    bool isLayer = true;
    first_ = model_.QueryChildByOrder(layer_, 0, isLayer);
    second_ = model_.QueryChildByOrder(layer_, 1, isLayer);
    ASSERT_FALSE(first_.empty());
    const CFeatureStyleSet layerStyle = PenOfWidth(4);
    ASSERT_TRUE(model_.ModifyOrInsertStyle(layer_, &layerStyle, 3));
    scene_ = CAnnotationRenderer::GetInstance()->GetScene(kView);
    other_ = CAnnotationRenderer::GetInstance()->GetScene(kOtherView);
    scene_->Clear();
    other_->Clear();
  }
  std::string layer_, first_, second_;
  CAnnotationScene* scene_ = nullptr;
  CAnnotationScene* other_ = nullptr;
};

}  // namespace

TEST_F(EntityTest, BuildReadsTheFeatureWithItsLayersStyleOrFailsWithOneWarning) {
  CAnnotationEntity entity;
  CZuLogCapture capture;
  EXPECT_FALSE(entity.Build(&model_, "no-such-feature"));
  EXPECT_EQ(1, capture.Count("[CAnnotationEntity]:no geometry for no-such-feature"));
  EXPECT_FALSE(entity.Build(nullptr, first_));
  EXPECT_FALSE(entity.Build(&model_, ""));
  EXPECT_FALSE(entity.Attach(kView));  // nothing built, nothing to attach
  EXPECT_FALSE(entity.Update(CAnnotationEntity::kUpdateAll));

  ASSERT_TRUE(entity.Build(&model_, first_));
  EXPECT_EQ("p0_0", entity.GetName());
  EXPECT_EQ(ANNOTATION_TYPE_POINT, entity.GetFeatureType());
  const CSceneDrawable drawable = entity.GetDrawable();
  EXPECT_EQ(entity.GetID(), drawable.owner);
  EXPECT_EQ(CVector3D(10, 20, 0), drawable.parts.at(0).At(0));
  EXPECT_EQ(4, PenWidth(drawable));  // no style of its own: the layer's
  EXPECT_FALSE(entity.IsAttached());
  // Its own style wins over the layer's.
  const CFeatureStyleSet own = PenOfWidth(9);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(second_, &own, 3));
  CAnnotationEntity styled;
  ASSERT_TRUE(styled.Build(&model_, second_));
  EXPECT_EQ(9, PenWidth(styled.GetDrawable()));
  EXPECT_LT(entity.GetID(), styled.GetID());  // later entities have larger ids
}

TEST_F(EntityTest, AttachMovesBetweenScenesAndRetireIsFinal) {
  const int liveBefore = CAnnotationEntity::GetLiveCount();
  {
    CAnnotationEntity entity;
    EXPECT_EQ(liveBefore + 1, CAnnotationEntity::GetLiveCount());
    ASSERT_TRUE(entity.Build(&model_, first_));
    EXPECT_FALSE(entity.Attach(-1));
    ASSERT_TRUE(entity.Attach(kView));
    EXPECT_EQ(kView, entity.GetAttachParam());
    EXPECT_TRUE(scene_->Contains(first_));
    ASSERT_TRUE(entity.Attach(kOtherView));  // moved, not copied
    EXPECT_FALSE(scene_->Contains(first_));
    EXPECT_TRUE(other_->Contains(first_));
    EXPECT_TRUE(entity.Detach());
    EXPECT_FALSE(entity.Detach());
    EXPECT_EQ(-1, entity.GetAttachParam());
    EXPECT_EQ(0, other_->GetCount());
    ASSERT_TRUE(entity.Attach(kView));
    entity.Retire();
    EXPECT_TRUE(entity.IsRetired());
    EXPECT_FALSE(entity.IsAttached());
    EXPECT_FALSE(entity.Attach(kView));
    EXPECT_FALSE(scene_->Contains(first_));
  }
  {
    CAnnotationEntity attached;
    ASSERT_TRUE(attached.Build(&model_, second_));
    ASSERT_TRUE(attached.Attach(kView));
  }
  EXPECT_FALSE(scene_->Contains(second_));  // the destructor detached it
  EXPECT_EQ(liveBefore, CAnnotationEntity::GetLiveCount());
}

TEST_F(EntityTest, AttributeUpdatesTravelAloneAndFullUpdatesRereadTheFeature) {
  CAnnotationEntity entity;
  ASSERT_TRUE(entity.Build(&model_, first_));
  ASSERT_TRUE(entity.Attach(kView));
  CNodeAttribute attribute;
  attribute.SetZValue(17);
  attribute.SetLevel(3, 12);
  attribute.SetNameLevel(5, 9);
  entity.SetAttribute(attribute);
  CSceneDrawable held;
  ASSERT_TRUE(scene_->GetDrawable(first_, &held));
  EXPECT_EQ(0, held.display.zValue);  // set, not yet published

  // The feature moves and gets a style of its own; an attribute update does not read that.
  CAnnotationFeature moved(GEOMETRY_DATA_TYPE_POINT);
  moved.AddPart(CGeometryData(std::vector<CVector3D>{{30, 40, 5}}));
  ASSERT_TRUE(model_.ModifyGeometryData(first_, &moved));
  const CFeatureStyleSet own = PenOfWidth(2);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(first_, &own, 3));

  ASSERT_TRUE(entity.Update(CAnnotationEntity::kUpdateAttribute));
  ASSERT_TRUE(scene_->GetDrawable(first_, &held));
  EXPECT_EQ(17, held.display.zValue);
  EXPECT_EQ(12, held.display.maxLevel);
  EXPECT_EQ(5, held.display.minNameLevel);
  EXPECT_EQ(10, held.parts[0].At(0).X());
  EXPECT_EQ(4, PenWidth(held));

  ASSERT_TRUE(entity.Update(CAnnotationEntity::kUpdateAll));
  ASSERT_TRUE(scene_->GetDrawable(first_, &held));
  EXPECT_EQ(CVector3D(30, 40, 5), held.parts[0].At(0));
  EXPECT_EQ(2, PenWidth(held));
  EXPECT_EQ(17, held.display.zValue);
}

TEST_F(EntityTest, ANewerEntityOfTheFeatureHoldsTheSlot) {
  auto older = std::make_unique<CAnnotationEntity>();
  CAnnotationEntity newer;
  ASSERT_TRUE(older->Build(&model_, first_));
  ASSERT_TRUE(newer.Build(&model_, first_));
  ASSERT_TRUE(older->Attach(kView));
  ASSERT_TRUE(newer.Attach(kView));  // takes the slot over
  EXPECT_FALSE(older->Attach(kView));  // cannot take it back
  older.reset();
  EXPECT_EQ(newer.GetID(), scene_->GetOwner(first_));
}
