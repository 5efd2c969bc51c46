// Identifiers, type mappings and the extent test.
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "AnnotationLayerNS.h"

using namespace AnnotationLayerNS;

TEST(ZuGenerateUUIDTest, IsLowercaseHexMd5AndUniqueAcrossThreads) {
  std::vector<std::vector<std::string>> perThread(4);
  std::vector<std::thread> threads;
  for (auto& ids : perThread) {
    threads.emplace_back([&ids] {
      for (int i = 0; i < 500; ++i) ids.push_back(ZuGenerateUUID());
    });
  }
  for (auto& t : threads) t.join();
  std::set<std::string> all;
  for (const auto& ids : perThread) all.insert(ids.begin(), ids.end());
  EXPECT_EQ(2000u, all.size());
  for (const std::string& id : all) {
    ASSERT_EQ(32u, id.size());
    ASSERT_EQ(std::string::npos, id.find_first_not_of("0123456789abcdef")) << id;
  }
}

// The tables are not inverse: CHAR comes back as INT, FLOAT as DOUBLE, kinds fold together.
TEST(TypeMappingTest, KindsAndFieldTypesAreNotInverse) {
  const std::pair<int, int> annotationToGeometry[] = {{0, 1},   {1, 2},   {2, 3},   {3, 3},
                                                      {-1, 3},  {100, 4}, {101, 5}, {102, 6},
                                                      {200, 2}, {300, 1}};
  for (const auto& [annotation, geometry] : annotationToGeometry) {
    EXPECT_EQ(geometry, MappingGeomType(static_cast<E_ANNOTATION_TYPE>(annotation))) << annotation;
  }
  const std::pair<int, int> geometryToAnnotation[] = {{1, 0},   {2, 1},   {3, 2},   {0, 2},
                                                      {4, 100}, {5, 101}, {6, 102}, {9, 2}};
  for (const auto& [geometry, annotation] : geometryToAnnotation) {
    EXPECT_EQ(annotation, MappingAnnotationType(static_cast<E_GEOMETRY_DATA_TYPE>(geometry)))
        << geometry;
  }
  EXPECT_EQ(FIELD_OFST_TYPE_INT, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_CHAR)));
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_FLOAT)));
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_NONE)));
  EXPECT_FALSE(IsGISLayer(static_cast<E_LAYER_TYPE>(103))) << "the GIS range ends at 102";
}

TEST(IsNeedUpdateRangeTest, Steps) {
  const EXTENT cur{0, 0, 10, 10};
  EXPECT_TRUE(IsNeedUpdateRange(cur, EXTENT{1, 1, 9, 9}));       // strictly inside
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{0, 0, 10, 10}));    // equal
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{-5, 0, 5, 10}));    // cur.min_x inside nxt's x range
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{5, 0, 15, 10}));    // cur.max_x inside nxt's x range
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{20, -5, 30, 5}));   // cur.min_y inside nxt's y range
  // Entirely to the right: only the max_y equality decides; cur.max_y inside nxt is not looked at.
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{20, 20, 30, 10}));
  EXPECT_TRUE(IsNeedUpdateRange(cur, EXTENT{20, 5, 30, 15}));
}
