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
// each marks the field changed (1), a new one included.
TEST(FieldSetTest, SettersReplaceWhatTheyNameAndMarkTheChange) {
  CZuFieldSetObject set;
  set.SetField("h", FIELD_OFST_TYPE_DOUBLE, "m", QVariant(1.5));
  set.SetField("n", FIELD_OFST_TYPE_INT, "cls", QVariant(1));
  set.ResetChange();
  set.SetField("h", FIELD_OFST_TYPE_TEXT, "", QVariant(QString("x")));
  set.SetFieldValue("n", FIELD_OFST_TYPE_TEXT, QVariant(QString("two")));
  set.SetFieldValue("new", FIELD_OFST_TYPE_BOOL, QVariant(true));
  set.SetFieldClass("k", "c1");
  const struct {
    const char* key;
    E_FIELD_OFST_TYPE type;
    const char* fieldClass;
    QVariant value;
  } expected[] = {{"h", FIELD_OFST_TYPE_TEXT, "", QVariant(QString("x"))},
                  {"n", FIELD_OFST_TYPE_INT, "cls", QVariant(QString("two"))},
                  {"new", FIELD_OFST_TYPE_BOOL, "", QVariant(true)},
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
  set.ResetChange();
  set.SetFieldClass("k", "c2");
  EXPECT_EQ("c2", set.GetFieldClass("k"));
  EXPECT_EQ(QVariant(4), set.GetFieldValue("k"));
  EXPECT_EQ(4, set.Count());
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
  EXPECT_EQ("b", set.GetFieldKeyByClass("cb"));
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
  EXPECT_EQ("a", collector.fields[0].key);
  EXPECT_EQ("c", collector.fields[1].key);
  EXPECT_EQ(0, collector.fields[0].state);
  EXPECT_EQ(0, collector.fields[1].state);
  set.RemoveField("a");
  EXPECT_TRUE(set.IsExistChange());

  set.RemoveAllField();
  EXPECT_FALSE(set.IsEmpty());
  EXPECT_EQ(2, set.Count());
  set.Cleanup();
  EXPECT_TRUE(set.IsEmpty());
}

// Copies have their own fields but share the lock, which outlives whichever copy dies first.
TEST(FieldSetTest, CopiesHaveTheirOwnFieldsAndEitherMayDieFirst) {
  auto source = std::make_unique<CZuFieldSetObject>();
  source->SetField("a", FIELD_OFST_TYPE_INT, "", QVariant(1));
  auto copy = std::make_unique<CZuFieldSetObject>(*source);
  copy->SetFieldValue("a", FIELD_OFST_TYPE_INT, QVariant(9));
  copy->SetFieldValue("b", FIELD_OFST_TYPE_INT, QVariant(2));
  EXPECT_EQ(QVariant(1), source->GetFieldValue("a"));
  EXPECT_EQ(1, source->Count());
  source.reset();
  EXPECT_EQ(2, copy->Count());

  auto second = std::make_unique<CZuFieldSetObject>(*copy);
  CZuFieldSetObject assigned;
  assigned.SetField("z", FIELD_OFST_TYPE_INT, "", QVariant(0));
  assigned = *second;
  assigned = assigned;
  second.reset();
  copy.reset();
  EXPECT_EQ(2, assigned.Count());
  EXPECT_FALSE(assigned.GetFieldValue("z").isValid());
}

TEST(FieldSetTest, CopiesShareOneLock) {
  CZuFieldSetObject source;
  source.SetField("a", FIELD_OFST_TYPE_INT, "", QVariant(1));
  const CZuFieldSetObject copy(source);
  CZuFieldSetObject assigned;
  assigned = source;
  CZuFieldSetObject unrelated;

  std::future<int> onCopy;
  std::future<int> onAssigned;
  std::future<int> onUnrelated;
  bool unrelatedFinished = false;
  bool copyBlocked = false;
  bool assignedBlocked = false;
  CCallbackVisitor visitor([&] {
    onCopy = std::async(std::launch::async, [&] { return copy.Count(); });
    onAssigned = std::async(std::launch::async, [&] { return assigned.Count(); });
    onUnrelated = std::async(std::launch::async, [&] { return unrelated.Count(); });
    unrelatedFinished = onUnrelated.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    // The copies wait for the traversal to let go of the shared lock.
    copyBlocked = onCopy.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
    assignedBlocked = onAssigned.wait_for(std::chrono::milliseconds(0)) == std::future_status::timeout;
  });
  source.TravelField(visitor);
  EXPECT_TRUE(unrelatedFinished);
  EXPECT_TRUE(copyBlocked);
  EXPECT_TRUE(assignedBlocked);
  EXPECT_EQ(1, onCopy.get());
  EXPECT_EQ(1, onAssigned.get());
  EXPECT_EQ(0, onUnrelated.get());
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

TEST(LayerHeaderListTest, ReadsBackInOrder) {
  CZuFieldSetObject written;
  written.SetField("name", FIELD_OFST_TYPE_TEXT, "", QVariant());
  written.SetField("height", FIELD_OFST_TYPE_DOUBLE, "m", QVariant());
  written.SetField("flag", FIELD_OFST_TYPE_BOOL, "x y", QVariant());
  const std::string text = AnnotationLayerInner::LayerHeaderListToString(written);

  CZuFieldSetObject read;
  CZuLogCapture capture;
  EXPECT_TRUE(AnnotationLayerInner::LayerHeaderListFromString(text, read));
  EXPECT_EQ(0, capture.Count("[LayerHeaderListFromString]"));
  EXPECT_EQ(text, AnnotationLayerInner::LayerHeaderListToString(read));
  CFieldCollector collector;
  read.TravelField(collector);
  ASSERT_EQ(3u, collector.fields.size());
  EXPECT_EQ("height", collector.fields[1].key);
  EXPECT_EQ("m", collector.fields[1].fieldClass);
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, collector.fields[1].type);
  EXPECT_FALSE(collector.fields[1].value.isValid());
  EXPECT_EQ(1, collector.fields[1].state);

  CZuFieldSetObject unterminated;
  EXPECT_TRUE(AnnotationLayerInner::LayerHeaderListFromString("a,,3;;b,c,4", unterminated));
  EXPECT_EQ(2, unterminated.Count());
  EXPECT_EQ(FIELD_OFST_TYPE_INT64, unterminated.GetFieldType("b"));
  EXPECT_EQ("c", unterminated.GetFieldClass("b"));

  CZuFieldSetObject empty;
  EXPECT_TRUE(AnnotationLayerInner::LayerHeaderListFromString("", empty));
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(LayerHeaderListTest, SkipsMalformedEntries) {
  CZuFieldSetObject set;
  CZuLogCapture capture;
  const std::string text =
      "ok,,1;onecomma,7;a,b,c,3;,cls,2;big,,8;neg,,-1;plus,,+1;blank,, 7;word,,seven;empty,,;"
      "dup,first,3;dup,second,5;last,,0";
  EXPECT_FALSE(AnnotationLayerInner::LayerHeaderListFromString(text, set));
  EXPECT_EQ(1, capture.Count("[LayerHeaderListFromString] skipped 9 malformed entries"));
  CFieldCollector collector;
  set.TravelField(collector);
  ASSERT_EQ(3u, collector.fields.size());
  EXPECT_EQ("ok", collector.fields[0].key);
  EXPECT_EQ("dup", collector.fields[1].key);
  EXPECT_EQ("second", collector.fields[1].fieldClass) << "a repeated key takes the later entry";
  EXPECT_EQ(FIELD_OFST_TYPE_FLOAT, collector.fields[1].type);
  EXPECT_EQ("last", collector.fields[2].key);
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, collector.fields[2].type);
}

TEST(FeatureFieldSetTest, FieldSetFromFeatureMapsTypes) {
  CAnnotationFeature feature;
  feature.SetFieldValue("b", QVariant(true));
  feature.SetFieldValue("i", QVariant(7));
  feature.SetFieldValue("l", QVariant(qlonglong(1) << 40));
  feature.SetFieldValue("d", QVariant(0.25));
  feature.SetFieldValue("s", QVariant(QString("text")));
  feature.SetFieldValue("c", QVariant(QChar('x')));
  feature.SetFieldValue("u", QVariant(7u));
  feature.SetFieldValue("f", QVariant::fromValue(1.5f));
  feature.SetFieldValue("", QVariant(1));

  CZuFieldSetObject set;
  set.SetField("i", FIELD_OFST_TYPE_DOUBLE, "kept", QVariant(0.0));
  ASSERT_TRUE(AnnotationLayerNS::FillFieldSetFromFeature(set, &feature));
  EXPECT_EQ(8, set.Count()) << "the empty key is not copied";
  EXPECT_EQ(FIELD_OFST_TYPE_BOOL, set.GetFieldType("b"));
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, set.GetFieldType("i")) << "an existing field keeps its type";
  EXPECT_EQ("kept", set.GetFieldClass("i"));
  EXPECT_EQ(QVariant(7), set.GetFieldValue("i"));
  EXPECT_EQ(FIELD_OFST_TYPE_INT64, set.GetFieldType("l"));
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, set.GetFieldType("d"));
  EXPECT_EQ(FIELD_OFST_TYPE_TEXT, set.GetFieldType("s"));
  EXPECT_EQ(FIELD_OFST_TYPE_CHAR, set.GetFieldType("c"));
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, set.GetFieldType("u"));
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, set.GetFieldType("f"));
  EXPECT_EQ(QVariant(qlonglong(1) << 40), set.GetFieldValue("l"));
}

TEST(FeatureFieldSetTest, FeatureFromFieldSetSkipsRemoved) {
  CZuFieldSetObject set;
  set.SetField("keep", FIELD_OFST_TYPE_TEXT, "", QVariant(QString("v")));
  set.SetField("drop", FIELD_OFST_TYPE_INT, "", QVariant(1));
  set.SetField("", FIELD_OFST_TYPE_INT, "", QVariant(2));
  set.SetField("n", FIELD_OFST_TYPE_INT, "", QVariant(3));
  set.RemoveField("drop");

  CAnnotationFeature feature;
  feature.SetFieldValue("n", QVariant(0));
  ASSERT_TRUE(AnnotationLayerNS::FillFeatureFromFieldSet(&feature, set));
  ASSERT_EQ(2, feature.GetFieldCount());
  EXPECT_EQ("n", feature.GetFieldKey(0));
  EXPECT_EQ(QVariant(3), feature.GetFieldValue(0));
  EXPECT_EQ("keep", feature.GetFieldKey(1));
  EXPECT_EQ(QVariant(QString("v")), feature.GetFieldValue(1));
}

TEST(FeatureFieldSetTest, NullFeatureFailsWithOneLogLine) {
  CZuFieldSetObject set;
  CZuLogCapture capture;
  EXPECT_FALSE(AnnotationLayerNS::FillFieldSetFromFeature(set, nullptr));
  EXPECT_FALSE(AnnotationLayerNS::FillFeatureFromFieldSet(nullptr, set));
  EXPECT_EQ(1, capture.Count("[FillFieldSetFromFeature]:"));
  EXPECT_EQ(1, capture.Count("[FillFeatureFromFieldSet]:"));
  EXPECT_TRUE(set.IsEmpty());
}

// Absent keys leave the caller's values alone; keys compare byte for byte; a class names the
// first field that has it.
TEST(FieldSetTest, AbsentKeysAndLookupByClass) {
  CZuFieldSetObject set;
  set.SetField("a", FIELD_OFST_TYPE_INT, "geo", QVariant(1));
  set.SetField(std::string("a\0b", 3), FIELD_OFST_TYPE_INT, "geo", QVariant(2));
  QVariant value(42);
  std::string cls = "untouched";
  EXPECT_FALSE(set.GetField(value, cls, "A"));
  EXPECT_EQ(QVariant(42), value);
  EXPECT_EQ("untouched", cls);
  Field field;
  EXPECT_FALSE(set.GetField(field, "b"));
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, set.GetFieldType("b"));
  EXPECT_EQ("", set.GetFieldClass("b"));
  EXPECT_EQ(QVariant(2), set.GetFieldValue(std::string("a\0b", 3)));
  EXPECT_EQ("a", set.GetFieldKeyByClass("geo"));
  EXPECT_EQ(QVariant(1), set.GetFieldValueByClass("geo"));
  EXPECT_EQ("", set.GetFieldKeyByClass("none"));
  EXPECT_FALSE(set.GetFieldValueByClass("none").isValid());
}
