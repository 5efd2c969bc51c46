// Attribute fields, user data and layer property headers through CSpatialiteDBDataModel.
#include <gtest/gtest.h>

#include <QByteArrayList>

#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "AnnotationFeature.h"
#include "FeatureOption.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "FieldValueText.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::FieldValueFromColumn;
using AnnotationLayerInner::FieldValueToColumn;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

class FieldsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(db_.IsValid());
    ASSERT_TRUE(model_.Install(db_.Path()));
    // Let the calculator's first pass finish, so that its log lines stay out of the checks.
    ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
    folder_ = tree_.AddFolder(db_.RootUUID(), "f");
    layer_ = tree_.AddLayer(folder_, "l");
    feature_ = tree_.AddFeature(layer_, "s");
  }
  std::string Scalar(const std::string& sql) {
    CSqlStatement stmt(model_.GetConnection(), sql, "");
    return stmt.StepRow() ? stmt.ColumnText(0, false) : std::string("<none>");
  }

  CTestDatabase db_;
  CSpatialiteDBDataModel model_;
  CTreeBuilder tree_{&model_};
  std::string folder_, layer_, feature_;
};

}  // namespace

TEST(FieldValueTextTest, TypedColumnsRoundTripAndUnreadableTextWarns) {
  EXPECT_EQ("true", FieldValueToColumn(FIELD_OFST_TYPE_BOOL, QVariant(true)));
  EXPECT_EQ(QVariant(false), FieldValueFromColumn(FIELD_OFST_TYPE_BOOL, "false"));
  // Characters and floats travel as int and double.
  EXPECT_EQ(QVariant(65), FieldValueFromColumn(FIELD_OFST_TYPE_CHAR,
                                               FieldValueToColumn(FIELD_OFST_TYPE_CHAR, 65)));
  const double tricky = 0.1 + 0.2;
  const QVariant back = FieldValueFromColumn(FIELD_OFST_TYPE_DOUBLE,
                                             FieldValueToColumn(FIELD_OFST_TYPE_DOUBLE, tricky));
  EXPECT_EQ(QVariant::Double, back.type());
  EXPECT_EQ(tricky, back.toDouble());
  EXPECT_EQ(QVariant(qlonglong(9007199254740993LL)),
            FieldValueFromColumn(FIELD_OFST_TYPE_INT64, "9007199254740993"));
  // Text is stored as UTF-8 whether it comes as QString or as local bytes.
  const QString chinese = QString::fromUtf8("\xe6\xb3\xa8\xe8\xae\xb0");
  EXPECT_EQ("\xe6\xb3\xa8\xe8\xae\xb0",
            FieldValueToColumn(FIELD_OFST_TYPE_TEXT, QByteArray(Utf8ToLocal("注记").c_str())));
  EXPECT_EQ(QVariant(chinese), FieldValueFromColumn(FIELD_OFST_TYPE_TEXT, "\xe6\xb3\xa8\xe8\xae\xb0"));
  // Untyped text that GBK holds stays readable.
  EXPECT_EQ("wstring:\xe6\xb3\xa8", FieldValueToColumn(FIELD_OFST_TYPE_NONE, chinese.left(1)));

  CZuLogCapture capture;
  EXPECT_FALSE(FieldValueFromColumn(FIELD_OFST_TYPE_INT, "12abc").isValid());
  EXPECT_FALSE(FieldValueFromColumn(FIELD_OFST_TYPE_NONE, "garbage").isValid());
  EXPECT_FALSE(FieldValueFromColumn(FIELD_OFST_TYPE_NONE, "string=%F").isValid());
  // A list written by earlier builds through a lossy GBK conversion lost its counts.
  EXPECT_FALSE(FieldValueFromColumn(FIELD_OFST_TYPE_NONE, "string_list:2:\xef\xbf\xbd,").isValid());
  EXPECT_EQ(4u, capture.Lines().size());
  EXPECT_EQ(1, capture.Count("[FieldValueFromColumn] broken escape in string value '%F'"));
}

TEST_F(FieldsTest, FieldsInsertUpdateRemoveAndKeepTheIndexArray) {
  CZuFieldSetObject fields;
  fields.SetField("name", FIELD_OFST_TYPE_TEXT, "", QString("Main Street"));
  fields.SetField("height", FIELD_OFST_TYPE_DOUBLE, "m", 12.5);
  fields.SetField(Utf8ToLocal("宽度"), FIELD_OFST_TYPE_INT, Utf8ToLocal("米"), 4);
  ASSERT_TRUE(model_.ModifyOrInsertField(feature_, fields));
  const CFeatureOption option = model_.QueryFeatureOption(feature_);
  EXPECT_EQ(3u, option.GetIndexProperty().size());
  EXPECT_EQ(1u, option.GetIndexStatus().size());
  EXPECT_EQ("Main Street", Scalar("SELECT value FROM shape_property WHERE field_name = 'name'"));
  CZuFieldSetObject read;
  ASSERT_TRUE(model_.QueryField(feature_, read));
  EXPECT_EQ(3, read.Count());
  EXPECT_EQ(QVariant(12.5), read.GetFieldValue("height"));
  EXPECT_EQ(QVariant(4), read.GetFieldValue(Utf8ToLocal("宽度")));
  EXPECT_EQ(Utf8ToLocal("米"), read.GetFieldClass(Utf8ToLocal("宽度")));

  // Change one, remove one: the row is updated in place, the removed id leaves the index.
  read.SetFieldValue("height", FIELD_OFST_TYPE_DOUBLE, 13.25);
  read.RemoveField("name");
  ASSERT_TRUE(model_.ModifyOrInsertField(feature_, read));
  EXPECT_EQ(2, read.Count());
  CZuFieldSetObject again;
  ASSERT_TRUE(model_.QueryField(feature_, again));
  EXPECT_EQ(QVariant(13.25), again.GetFieldValue("height"));
  EXPECT_FALSE(again.GetFieldValue("name").isValid());
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM shape_property"));
  EXPECT_TRUE(model_.RemoveField(feature_, "height"));
  EXPECT_FALSE(model_.RemoveField(feature_, "height"));
  EXPECT_EQ(1u, model_.QueryFeatureOption(feature_).GetIndexProperty().size());
}

TEST_F(FieldsTest, UserDataOfLayersAndFeatures) {
  CZuFieldSetObject layerData;
  layerData.SetField("owner", FIELD_OFST_TYPE_TEXT, "", QString("survey"));
  ASSERT_TRUE(model_.ModifyOrInsertUserData(layer_, layerData));
  // Untyped values keep their Qt type and every byte: text outside GBK (an emoji, a CJK
  // extension B character), bytes that are not GBK, lists of both, and int64_t (a long here).
  const QString wide = QString::fromUtf8("\xF0\x9F\x98\x80\xF0\xA0\x80\x80\xE4\xB8\xAD%");
  const QByteArray bytes("\xff\x80%41\0:", 7);
  const std::vector<std::pair<QVariant, QVariant>> untyped = {
      {wide, wide},
      {bytes, bytes},
      {QStringList{wide, "x,y"}, QStringList{wide, "x,y"}},
      {QVariant::fromValue(QByteArrayList{bytes, "z"}), QVariant::fromValue(QByteArrayList{bytes, "z"})},
      {QVariant::fromValue<int64_t>(-5000000000), QVariant(qlonglong(-5000000000))}};
  CZuFieldSetObject featureData;
  for (size_t i = 0; i < untyped.size(); ++i) {
    featureData.SetField("v" + std::to_string(i), FIELD_OFST_TYPE_NONE, "", untyped[i].first);
  }
  ASSERT_TRUE(model_.ModifyOrInsertUserData(feature_, featureData));
  EXPECT_EQ(1u, model_.QueryLayerOption(layer_).GetIndexUserdata().size());
  CZuFieldSetObject read;
  ASSERT_TRUE(model_.QueryUserData(feature_, read));
  ASSERT_EQ(static_cast<int>(untyped.size()), read.Count());
  for (size_t i = 0; i < untyped.size(); ++i) {
    EXPECT_EQ(untyped[i].second, read.GetFieldValue("v" + std::to_string(i))) << i;
  }

  EXPECT_TRUE(model_.RemoveUserData(layer_, "owner"));
  ASSERT_TRUE(model_.QueryUserData(layer_, read));
  EXPECT_TRUE(read.IsEmpty());
  EXPECT_EQ(std::string::npos,
            Scalar("SELECT index_id FROM layer WHERE uuid = '" + layer_ + "'").find("u:"));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryUserData(folder_, read));  // folders keep no user data
  EXPECT_EQ(1, capture.Count("[UserDataRows]:"));
  EXPECT_FALSE(model_.QueryField("nowhere", read));
}

TEST_F(FieldsTest, LayerHeaderListRoundTrip) {
  CZuFieldSetObject headers;
  headers.SetField("name", FIELD_OFST_TYPE_TEXT, "", QVariant());
  headers.SetField("height", FIELD_OFST_TYPE_DOUBLE, "m", QVariant());
  ASSERT_TRUE(model_.ModifyLayerHeaderList(layer_, headers));
  EXPECT_EQ("name,,7;height,m,6;", model_.QueryLayerOption(layer_).GetPropertyHeader());
  CZuFieldSetObject read;
  ASSERT_TRUE(model_.QueryLayerHeaderList(layer_, read));
  EXPECT_EQ(2, read.Count());
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, read.GetFieldType("height"));
  EXPECT_EQ("m", read.GetFieldClass("height"));
  EXPECT_FALSE(model_.ModifyLayerHeaderList(feature_, headers));
  EXPECT_FALSE(model_.QueryLayerHeaderList("nowhere", read));
}

TEST_F(FieldsTest, InsertFeatureWithItsObjectWritesStyleFieldsAndGeometry) {
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
  feature.AddPart(CGeometryData(std::vector<CVector3D>{{0, 0, 1}, {4, 0, 1}, {4, 3, 1}, {0, 0, 1}}));
  feature.SetFieldValue("area", 6.0);
  feature.SetFieldValue("kind", QString("lot"));
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetWidth(4);
  feature.GetStyleSet()->PushBack(std::move(pen));
  CFeatureOption option;
  option.SetParentUUID(layer_);
  option.SetType(ANNOTATION_TYPE_POLYGON);
  ASSERT_TRUE(model_.InsertFeature(option, &feature));
  EXPECT_EQ(0, option.GetResult());
  const std::string uuid = option.GetUUID();
  EXPECT_EQ(2u, option.GetIndexProperty().size());
  EXPECT_EQ(option.GetIndexArrayString() + " POLYGON Z((0 0 1, 4 0 1, 4 3 1, 0 0 1))",
            Scalar("SELECT index_id || ' ' || AsText(geom) FROM shape WHERE uuid = '" + uuid +
                   "'"));
  CZuFieldSetObject fields;
  ASSERT_TRUE(model_.QueryField(uuid, fields));
  EXPECT_EQ(QVariant(QString("lot")), fields.GetFieldValue("kind"));
  CFeatureStyleSet styles;
  ASSERT_TRUE(model_.QueryStyle(&styles, uuid, false));
  ASSERT_EQ(1, styles.GetCount());
  EXPECT_EQ(4, dynamic_cast<const CFeaturePenStyle*>(styles.At(0))->GetWidth());
}
