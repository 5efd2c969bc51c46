// The host annotation library: group ownership, style set ownership and deep copies, and the
// module factory.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "IAnnotationModule.h"

namespace {

// Counts its own destructions, to prove who deletes what.
class CCountedStyle : public CFeatureStyle {
 public:
  explicit CCountedStyle(int* deaths) : deaths_(deaths) {}
  ~CCountedStyle() override { ++*deaths_; }
  std::unique_ptr<CFeatureStyle> Clone() const override {
    return std::make_unique<CCountedStyle>(deaths_);
  }

 private:
  int* deaths_;
};

}  // namespace

TEST(AnnotationGroupTest, OwnsChildrenAndLinksParents) {
  int deaths = 0;
  {
    CAnnotationGroup root("root");
    IAnnotationGroup* child = root.AddGroup(std::make_unique<CAnnotationGroup>("child"));
    ASSERT_NE(nullptr, child);
    EXPECT_EQ(&root, child->GetParentGroup());
    EXPECT_EQ(nullptr, root.GetParentGroup());
    IAnnotationFeature* feature = child->AddFeature(std::make_unique<CAnnotationFeature>());
    ASSERT_NE(nullptr, feature);
    EXPECT_EQ(child, feature->GetGroup());
    feature->GetStyleSet()->PushBack(new CCountedStyle(&deaths));
    EXPECT_EQ(feature, child->GetFeature(0));
    EXPECT_EQ(nullptr, child->GetFeature(1));
    EXPECT_EQ(nullptr, root.AddFeature(nullptr));
    EXPECT_EQ(nullptr, root.AddGroup(nullptr));
    EXPECT_EQ(0, deaths);
  }
  EXPECT_EQ(1, deaths) << "the group tree deletes its features and their styles";
}

TEST(FeatureStyleSetTest, OwnershipAndDeepCopy) {
  int deaths = 0;
  CFeatureStyleSet set;
  set.PushBack(static_cast<CFeatureStyle*>(nullptr));
  EXPECT_TRUE(set.IsEmpty());
  set.PushBack(new CCountedStyle(&deaths));
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetWidth(3.5);
  set.PushBack(std::move(pen));
  ASSERT_EQ(2, set.GetCount());
  EXPECT_EQ(nullptr, set.At(2));
  EXPECT_EQ(nullptr, set.At(-1));
  {
    const CFeatureStyleSet copy(set);
    ASSERT_EQ(2, copy.GetCount());
    EXPECT_NE(set.At(1), copy.At(1)) << "a copy owns its own styles, of their concrete kinds";
    const auto* copiedPen = dynamic_cast<const CFeaturePenStyle*>(copy.At(1));
    ASSERT_NE(nullptr, copiedPen);
    EXPECT_EQ(3.5, copiedPen->GetWidth());
  }
  EXPECT_EQ(1, deaths) << "the copy deleted only its clone";
  CFeatureStyleSet assigned;
  assigned = set;
  assigned = assigned;
  set.Clear();
  EXPECT_TRUE(set.IsEmpty());
  EXPECT_EQ(2, deaths);
  CFeatureStyleSet moved(std::move(assigned));
  EXPECT_EQ(2, moved.GetCount());
  EXPECT_EQ(2, deaths);
}

TEST(AnnotationModuleTest, OneModuleMakesPlainObjects) {
  IAnnotationModule* module = GetOrCreateAnnotationModule();
  ASSERT_NE(nullptr, module);
  EXPECT_EQ(module, GetOrCreateAnnotationModule());
  std::unique_ptr<IAnnotationGroup> group = module->CreateGroup();
  ASSERT_NE(nullptr, group);
  group->AddFeature(module->CreateFeature());
  EXPECT_EQ(1, group->GetFeatureCount());
  EXPECT_EQ(GEOMETRY_DATA_TYPE_UNKNOWN, group->GetFeature(0)->GetGeometryType());
}
