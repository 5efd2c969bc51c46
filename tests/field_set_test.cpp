// The field set: setters and getters, change states, copies sharing one lock, the layer header
// text in both directions, and filling between field sets and features.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "AnnotationFeature.h"
#include "FeatureFieldSet.h"
#include "LayerHeaderList.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using Field = CZuFieldSetObject::__tagField;

namespace {

class CFieldCollector : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  void VisitField(const Field& field) override { fields.push_back(field); }
  std::vector<Field> fields;
};

class CCallbackVisitor : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  explicit CCallbackVisitor(std::function<void()> onVisit) : onVisit_(std::move(onVisit)) {}
  void VisitField(const Field&) override { onVisit_(); }

 private:
  std::function<void()> onVisit_;
};

}  // namespace

// SetField replaces everything, SetFieldValue keeps type and class, SetFieldClass keeps the value;
// each marks the field changed (1), a new one included. Absent keys leave the caller's values
// alone; keys compare byte for byte; a class names the first field that has it.
TEST(FieldSetTest, SettersGettersAndLookupByClass) {
  CZuFieldSetObject set;
  set.SetField("h", FIELD_OFST_TYPE_DOUBLE, "m", QVariant(1.5));
  set.SetField("n", FIELD_OFST_TYPE_INT, "cls", QVariant(1));
  set.ResetChange();
  set.SetField("h", FIELD_OFST_TYPE_TEXT, "", QVariant(QString("x")));
  set.SetFieldValue("n", FIELD_OFST_TYPE_TEXT, QVariant(QString("two")));
  set.SetFieldClass("k", "c1");
  const struct {
    const char* key;
    E_FIELD_OFST_TYPE type;
    const char* fieldClass;
    QVariant value;
  } expected[] = {{"h", FIELD_OFST_TYPE_TEXT, "", QVariant(QString("x"))},
                  {"n", FIELD_OFST_TYPE_INT, "cls", QVariant(QString("two"))},
                  {"k", FIELD_OFST_TYPE_NONE, "c1", QVariant()}};
  for (const auto& e : expected) {
    Field field;
    ASSERT_TRUE(set.GetField(field, e.key)) << e.key;
    EXPECT_EQ(e.type, field.type) << e.key;
    EXPECT_EQ(e.fieldClass, field.fieldClass) << e.key;
    EXPECT_EQ(e.value, field.value) << e.key;
    EXPECT_EQ(CZuFieldSetObject::FIELD_STATE_CHANGED, field.state) << e.key;
  }
  set.SetFieldValue("k", FIELD_OFST_TYPE_INT, QVariant(4));
  set.SetFieldClass("k", "c2");
  EXPECT_EQ(QVariant(4), set.GetFieldValue("k"));

  set.SetField(std::string("n\0b", 3), FIELD_OFST_TYPE_INT, "cls", QVariant(2));
  QVariant value(42);
  std::string cls = "untouched";
  EXPECT_FALSE(set.GetField(value, cls, "N"));
  EXPECT_EQ(QVariant(42), value);
  EXPECT_EQ("untouched", cls);
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, set.GetFieldType("b"));
  EXPECT_EQ("", set.GetFieldClass("b"));
  EXPECT_EQ(QVariant(2), set.GetFieldValue(std::string("n\0b", 3)));
  EXPECT_EQ("n", set.GetFieldKeyByClass("cls"));
  EXPECT_EQ(QVariant(QString("two")), set.GetFieldValueByClass("cls"));
  EXPECT_EQ("", set.GetFieldKeyByClass("none"));
  EXPECT_FALSE(set.GetFieldValueByClass("none").isValid());
}

// A removed field is still found and visited, in its place and with state 2, until the reset.
// A first field in the unchanged state makes IsExistChange block for ever by design; not exercised.
TEST(FieldSetTest, RemovedFieldsStayUntilReset) {
  CZuFieldSetObject set;
  EXPECT_FALSE(set.IsExistChange());
  set.SetField("a", FIELD_OFST_TYPE_INT, "", QVariant(1));
  set.SetField("b", FIELD_OFST_TYPE_INT, "cb", QVariant(2));
  set.SetField("c", FIELD_OFST_TYPE_INT, "", QVariant(3));
  EXPECT_TRUE(set.IsExistChange());
  set.RemoveField("b");
  set.RemoveField("missing");
  EXPECT_EQ(QVariant(2), set.GetFieldValue("b"));
  EXPECT_EQ(3, set.Count());
  CFieldCollector visited;
  set.TravelField(visited);
  ASSERT_EQ(3u, visited.fields.size());
  EXPECT_EQ("b", visited.fields[1].key);
  EXPECT_EQ(2, visited.fields[1].state);

  set.ResetChange();
  EXPECT_FALSE(set.GetFieldValue("b").isValid());
  CFieldCollector collector;
  set.TravelField(collector);
  ASSERT_EQ(2u, collector.fields.size());
  EXPECT_EQ("c", collector.fields[1].key);
  EXPECT_EQ(0, collector.fields[1].state);
  set.RemoveField("a");
  EXPECT_TRUE(set.IsExistChange());
  set.RemoveAllField();
  EXPECT_EQ(2, set.Count());
  set.Cleanup();
  EXPECT_TRUE(set.IsEmpty());
}

// Copies have their own fields but share the lock, which outlives whichever copy dies first.
TEST(FieldSetTest, CopiesHaveTheirOwnFieldsAndShareOneLock) {
  auto source = std::make_unique<CZuFieldSetObject>();
  source->SetField("a", FIELD_OFST_TYPE_INT, "", QVariant(1));
  auto copy = std::make_unique<CZuFieldSetObject>(*source);
  copy->SetFieldValue("b", FIELD_OFST_TYPE_INT, QVariant(2));
  EXPECT_EQ(1, source->Count());
  CZuFieldSetObject assigned;
  assigned.SetField("z", FIELD_OFST_TYPE_INT, "", QVariant(0));
  assigned = *source;
  assigned = assigned;
  EXPECT_FALSE(assigned.GetFieldValue("z").isValid());
  CZuFieldSetObject unrelated;

  std::future<int> onCopy;
  std::future<int> onAssigned;
  std::future<int> onUnrelated;
  bool unrelatedFinished = false;
  bool copyBlocked = false;
  bool assignedBlocked = false;
  CCallbackVisitor visitor([&] {
    onCopy = std::async(std::launch::async, [&] { return copy->Count(); });
    onAssigned = std::async(std::launch::async, [&] { return assigned.Count(); });
    onUnrelated = std::async(std::launch::async, [&] { return unrelated.Count(); });
    unrelatedFinished = onUnrelated.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    // The copies wait for the traversal to let go of the shared lock.
    copyBlocked = onCopy.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
    assignedBlocked =
        onAssigned.wait_for(std::chrono::milliseconds(0)) == std::future_status::timeout;
  });
  source->TravelField(visitor);
  EXPECT_TRUE(unrelatedFinished);
  EXPECT_TRUE(copyBlocked);
  EXPECT_TRUE(assignedBlocked);
  EXPECT_EQ(2, onCopy.get());
  EXPECT_EQ(1, onAssigned.get());
  EXPECT_EQ(0, onUnrelated.get());
  source.reset();
  copy.reset();
  EXPECT_EQ(1, assigned.Count());
}

TEST(FieldSetTest, ConcurrentWritersLoseNothing) {
  CZuFieldSetObject set;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&set, t] {
      for (int i = 0; i < 300; ++i) {
        const std::string key = std::to_string(t) + ":" + std::to_string(i);
        set.SetFieldValue(key, FIELD_OFST_TYPE_INT, QVariant(i));
        set.GetFieldValue(key);
        set.Count();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(1200, set.Count());
  EXPECT_EQ(QVariant(299), set.GetFieldValue("3:299"));
}

TEST(LayerHeaderListTest, SkipsMalformedAndRemovedEntries) {
  CZuFieldSetObject set;
  CZuLogCapture capture;
  const std::string text =
      "ok,,1;onecomma,7;a,b,c,3;,cls,2;big,,8;neg,,-1;plus,,+1;blank,, 7;word,,seven;empty,,;"
      "dup,first,3;dup,second,5;;last,,0";
  EXPECT_FALSE(AnnotationLayerInner::LayerHeaderListFromString(text, set));
  EXPECT_EQ(1, capture.Count("[LayerHeaderListFromString] skipped 9 malformed entries"));
  CFieldCollector collector;
  set.TravelField(collector);
  ASSERT_EQ(3u, collector.fields.size());
  EXPECT_EQ("ok", collector.fields[0].key);
  EXPECT_EQ("second", collector.fields[1].fieldClass) << "a repeated key takes the later entry";
  EXPECT_EQ(FIELD_OFST_TYPE_FLOAT, collector.fields[1].type);
  EXPECT_FALSE(collector.fields[1].value.isValid());
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, collector.fields[2].type);
  set.RemoveField("dup");
  EXPECT_EQ("ok,,1;last,,0;", AnnotationLayerInner::LayerHeaderListToString(set));
}

TEST(FeatureFieldSetTest, FillingBothWaysMapsTypesAndSkipsRemovedAndEmptyKeys) {
  CAnnotationFeature feature;
  feature.SetFieldValue("b", QVariant(true));
  feature.SetFieldValue("i", QVariant(7));
  feature.SetFieldValue("l", QVariant(qlonglong(1) << 40));
  feature.SetFieldValue("d", QVariant(0.25));
  feature.SetFieldValue("s", QVariant(QString("text")));
  feature.SetFieldValue("c", QVariant(QChar('x')));
  feature.SetFieldValue("u", QVariant(7u));
  feature.SetFieldValue("", QVariant(1));
  CZuFieldSetObject set;
  set.SetField("i", FIELD_OFST_TYPE_DOUBLE, "kept", QVariant(0.0));
  ASSERT_TRUE(AnnotationLayerNS::FillFieldSetFromFeature(set, &feature));
  EXPECT_EQ(7, set.Count()) << "the empty key is not copied";
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, set.GetFieldType("i")) << "an existing field keeps its type";
  EXPECT_EQ("kept", set.GetFieldClass("i"));
  EXPECT_EQ(QVariant(7), set.GetFieldValue("i"));
  const std::pair<const char*, E_FIELD_OFST_TYPE> types[] = {
      {"b", FIELD_OFST_TYPE_BOOL}, {"l", FIELD_OFST_TYPE_INT64}, {"d", FIELD_OFST_TYPE_DOUBLE},
      {"s", FIELD_OFST_TYPE_TEXT}, {"c", FIELD_OFST_TYPE_CHAR},  {"u", FIELD_OFST_TYPE_NONE}};
  for (const auto& [key, type] : types) EXPECT_EQ(type, set.GetFieldType(key)) << key;

  set.SetField("", FIELD_OFST_TYPE_INT, "", QVariant(2));
  set.RemoveField("s");
  CAnnotationFeature back;
  back.SetFieldValue("d", QVariant(0));
  ASSERT_TRUE(AnnotationLayerNS::FillFeatureFromFieldSet(&back, set));
  ASSERT_EQ(6, back.GetFieldCount());
  EXPECT_EQ("d", back.GetFieldKey(0));
  EXPECT_EQ(QVariant(0.25), back.GetFieldValue(0));

  CZuLogCapture capture;
  EXPECT_FALSE(AnnotationLayerNS::FillFieldSetFromFeature(set, nullptr));
  EXPECT_FALSE(AnnotationLayerNS::FillFeatureFromFieldSet(nullptr, set));
  EXPECT_EQ(1, capture.Count("[FillFieldSetFromFeature]:"));
  EXPECT_EQ(1, capture.Count("[FillFeatureFromFieldSet]:"));
}
