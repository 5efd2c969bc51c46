// The host renderer's scenes: ownership of keys, what a view draws at a level, the painter.
#include <gtest/gtest.h>

#include <QImage>

#include <algorithm>
#include <memory>

#include "AnnotationRenderer.h"
#include "AnnotationScene.h"
#include "FeatureBrushStyle.h"
#include "FeaturePenStyle.h"
#include "ScenePainter.h"

namespace {

CSceneDrawable Point(const std::string& key, int64_t owner, double x, double y, int z = 0) {
  CSceneDrawable drawable;
  drawable.key = key;
  drawable.owner = owner;
  drawable.geometryType = GEOMETRY_DATA_TYPE_POINT;
  CGeometryData part;
  part.PushBack(CVector3D(x, y, 0));
  drawable.parts.push_back(part);
  drawable.display.zValue = z;
  return drawable;
}

std::vector<std::string> Keys(const std::vector<CSceneDrawable>& drawables) {
  std::vector<std::string> keys;
  for (const CSceneDrawable& drawable : drawables) keys.push_back(drawable.key);
  return keys;
}

}  // namespace

TEST(AnnotationSceneTest, TheNewestOwnerHoldsAKey) {
  CAnnotationScene scene(7);
  ASSERT_TRUE(scene.Attach(Point("a", 10, 0, 0)));
  EXPECT_TRUE(scene.Attach(Point("a", 10, 1, 1)));   // the same owner refreshes it
  EXPECT_FALSE(scene.Attach(Point("a", 9, 2, 2)));   // an older owner is refused
  EXPECT_TRUE(scene.Attach(Point("a", 11, 3, 3)));   // a newer one takes it over
  EXPECT_EQ(11, scene.GetOwner("a"));
  CSceneDrawable held;
  ASSERT_TRUE(scene.GetDrawable("a", &held));
  EXPECT_EQ(3, held.parts[0].At(0).X());

  CSceneDisplay display;
  display.zValue = 5;
  EXPECT_FALSE(scene.UpdateDisplay("a", 10, display));  // the old owner no longer holds it
  EXPECT_TRUE(scene.UpdateDisplay("a", 11, display));
  ASSERT_TRUE(scene.GetDrawable("a", &held));
  EXPECT_EQ(5, held.display.zValue);
  EXPECT_FALSE(scene.Detach("a", 10));  // a late detach leaves the successor alone
  EXPECT_TRUE(scene.Contains("a"));
  EXPECT_TRUE(scene.Detach("a", 11));
  EXPECT_FALSE(scene.Contains("a"));
  EXPECT_EQ(0, scene.GetOwner("a"));

  const CAnnotationScene::Statistics statistics = scene.GetStatistics();
  EXPECT_EQ(1, statistics.takenOver);
  EXPECT_EQ(1, statistics.refused);
}

TEST(AnnotationSceneTest, CollectGivesWhatIsShownBackToFront) {
  CAnnotationScene scene(1);
  scene.Attach(Point("top", 1, 0, 0, 9));
  scene.Attach(Point("b", 2, 0, 0, 1));
  scene.Attach(Point("a", 3, 0, 0, 1));
  CSceneDrawable hidden = Point("hidden", 4, 0, 0, 5);
  hidden.display.visible = false;
  scene.Attach(hidden);
  CSceneDrawable deep = Point("deep", 5, 0, 0, 2);
  deep.display.minLevel = 12;
  scene.Attach(deep);

  EXPECT_EQ(5, scene.GetCount());
  EXPECT_EQ((std::vector<std::string>{"a", "b", "top"}), Keys(scene.Collect(10)));
  EXPECT_EQ((std::vector<std::string>{"a", "b", "deep", "top"}), Keys(scene.Collect(12)));
  EXPECT_EQ((std::vector<std::string>{"a", "b", "deep", "hidden", "top"}), scene.GetKeys());
}

TEST(AnnotationRendererTest, OneScenePerViewMadeOnFirstUse) {
  CAnnotationRenderer* renderer = CAnnotationRenderer::GetInstance();
  EXPECT_EQ(nullptr, renderer->FindScene(-4242));
  CAnnotationScene* scene = renderer->GetScene(-4242);
  ASSERT_NE(nullptr, scene);
  EXPECT_EQ(scene, renderer->FindScene(-4242));
  const std::vector<int> ids = renderer->GetSceneIDs();
  EXPECT_NE(ids.end(), std::find(ids.begin(), ids.end(), -4242));
}

TEST(ScenePainterTest, DrawsShapesWithTheirStylesInZOrderAndNamesOnlyWithAGuiApplication) {
  // A red square, and a blue one over its right half drawn later because of its higher z value.
  auto square = [](const std::string& key, int64_t owner, double x0, QColor fill, int z) {
    CSceneDrawable drawable = Point(key, owner, 0, 0, z);
    drawable.geometryType = GEOMETRY_DATA_TYPE_POLYGON;
    drawable.parts[0] = CGeometryData(
        std::vector<CVector3D>{{x0, 2, 0}, {8, 2, 0}, {8, 8, 0}, {x0, 8, 0}});
    auto brush = std::make_unique<CFeatureBrushStyle>();
    brush->SetForegroundColor(fill);
    drawable.styles.PushBack(std::move(brush));
    return drawable;
  };
  CAnnotationScene scene(1);
  scene.Attach(square("over", 2, 5, QColor(Qt::blue), 2));
  CSceneDrawable red = square("square", 1, 2, QColor(Qt::red), 1);
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetColor(QColor(Qt::red));
  red.styles.PushBack(std::move(pen));
  scene.Attach(red);
  // This test program makes no QGuiApplication: the painter has no fonts and leaves names out.
  ASSERT_FALSE(CScenePainter::CanDrawText());
  CSceneDrawable named = Point("dot", 3, 1, 9, 0);
  named.name = "harbour";
  scene.Attach(named);

  QImage image(100, 100, QImage::Format_ARGB32);
  image.fill(Qt::white);
  CScenePainter::Result result;
  ASSERT_TRUE(CScenePainter::Paint(scene, 0, QRectF(0, 0, 10, 10), &image, &result));
  EXPECT_EQ(3, result.shapes);
  EXPECT_EQ(0, result.labels);
  EXPECT_EQ(QColor(Qt::red).rgb(), image.pixel(30, 50));   // x 3, y 5
  EXPECT_EQ(QColor(Qt::blue).rgb(), image.pixel(70, 50));  // x 7, y 5: on top
  EXPECT_EQ(QColor(Qt::white).rgb(), image.pixel(95, 95));
  EXPECT_NE(QColor(Qt::white).rgb(), image.pixel(10, 10));  // the dot at x 1, y 9

  QImage empty;
  EXPECT_EQ(-1, CScenePainter::Paint(scene, 0, QRectF(0, 0, 10, 10), &empty));
  EXPECT_EQ(-1, CScenePainter::Paint(scene, 0, QRectF(0, 0, 0, 10), &image));
}
