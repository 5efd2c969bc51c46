// What CSpatialiteDBDataModel keeps of a node: styles (the feature-to-layer fallback, GIS layers
// sharing their style), enclosures (the kept quirks of their statements, content of zero bytes and
// of several megabytes), attribute fields, user data and layer property headers, and geometry
// (what SpatiaLite's SQL sees of it, the replacement of the row, bounding boxes, layer extents).
#include <gtest/gtest.h>

#include <QByteArrayList>

#include <sqlite3.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "AnnotationFeature.h"
#include "EnclosureOption.h"
#include "FeatureLabelStyle.h"
#include "FeatureOption.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "FieldValueText.h"
#include "GeometryParts.h"
#include "LayerOption.h"
#include "ModelTest.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::FieldValueFromColumn;
using AnnotationLayerInner::FieldValueToColumn;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

CFeatureStyleSet PenStyle(const QColor& color, double width) {
  CFeatureStyleSet set;
  auto* pen = new CFeaturePenStyle();
  pen->SetColor(color);
  pen->SetWidth(width);
  set.PushBack(pen);
  return set;
}

template <typename Style>
const Style* First(const CFeatureStyleSet& set) {
  for (int i = 0; i < set.GetCount(); ++i) {
    if (const auto* style = dynamic_cast<const Style*>(set.At(i))) return style;
  }
  return nullptr;
}

// The pen colour that QueryStyle finds, or "" when it finds no style.
std::string QueriedPen(IAnnotationDBDataModel& model, const std::string& uuid, bool isLayer) {
  CFeatureStyleSet set;
  if (!model.QueryStyle(&set, uuid, isLayer)) return std::string();
  const auto* pen = First<CFeaturePenStyle>(set);
  return pen != nullptr ? pen->GetColor().name().toStdString() : std::string("<no pen>");
}

class StyleModelTest : public CModelTest {
 protected:
  std::string AddLayer(E_LAYER_TYPE type = LAYER_TYPE_ANNOTATION) {
    return tree_.AddLayer(root_, "layer", type);
  }

  // A feature row under `parent`; with parts, its geometry is stored too.
  std::string AddFeature(const std::string& parent, int kind = 0,
                         const std::vector<CGeometryData>& parts = {},
                         const std::string& name = "feature") {
    const std::string uuid = tree_.AddFeature(parent, name, ANNOTATION_TYPE_POLYGON);
    EXPECT_FALSE(uuid.empty());
    if (!parts.empty()) {
      CAnnotationFeature geometry(static_cast<E_GEOMETRY_DATA_TYPE>(kind));
      geometry.SetGeometryData(parts);
      EXPECT_TRUE(model_.ModifyGeometryData(uuid, &geometry));
    }
    return uuid;
  }

  // "<layer_style rows> <shape_style rows>" of an owner.
  std::string StyleRows(const std::string& puuid) {
    return Scalar("SELECT (SELECT COUNT(*) FROM layer_style WHERE puuid = '" + puuid +
                  "') || ' ' || (SELECT COUNT(*) FROM shape_style WHERE puuid = '" + puuid + "')");
  }
};

}  // namespace

// A feature without a style of its own shows its layer's (through entities in
// annotation_entity_test); writing keeps one row per owner.
TEST_F(StyleModelTest, LayerFallbackAndOneRowPerOwner) {
  const std::string layer = AddLayer();
  const std::string feature = AddFeature(layer);
  EXPECT_EQ("", QueriedPen(model_, feature, false));
  const CFeatureStyleSet layerStyle = PenStyle(QColor(0x11, 0x22, 0x33), 3);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(layer, &layerStyle, 3));
  EXPECT_EQ("#112233", QueriedPen(model_, feature, true));  // asked as a layer it still falls back
  EXPECT_EQ("", QueriedPen(model_, AddFeature(""), false));
  EXPECT_EQ("", QueriedPen(model_, "no such node", false));
  CFeatureStyleSet style;
  auto* label = new CFeatureLabelStyle();
  label->SetFontName(Utf8ToLocal("宋体"));
  style.PushBack(label);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &style, 3));
  const std::string row = "SELECT format || ' ' || (instr(content, '宋体') > 0) FROM shape_style "
                          "WHERE puuid = '" + feature + "'";
  EXPECT_EQ("3 1", Scalar(row)) << "stored as UTF-8";
  CFeatureStyleSet read;
  ASSERT_TRUE(model_.QueryStyle(&read, feature, false));
  ASSERT_NE(nullptr, First<CFeatureLabelStyle>(read));
  EXPECT_EQ(Utf8ToLocal("宋体"), First<CFeatureLabelStyle>(read)->GetFontName());

  const CFeatureStyleSet changed = PenStyle(QColor(4, 5, 6), 7);
  ASSERT_TRUE(model_.ModifyOrInsertStyle(feature, &changed, 9));
  EXPECT_EQ("0 1", StyleRows(feature));
  EXPECT_EQ("9 0", Scalar(row));
  EXPECT_EQ("#040506", QueriedPen(model_, feature, false));
  CFeatureStyleSet empty;
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyOrInsertStyle(layer, &empty, 3));
  EXPECT_FALSE(model_.ModifyOrInsertStyle(layer, nullptr, 3));
  EXPECT_FALSE(model_.QueryStyle(nullptr, feature, false));
  EXPECT_EQ(3u, capture.Lines().size());
  EXPECT_EQ("1 0", StyleRows(layer));
}

TEST_F(StyleModelTest, FeaturesOfGisLayersShareTheirLayersStyle) {
  for (E_LAYER_TYPE type : {LAYER_TYPE_GIS_POINT, LAYER_TYPE_GIS_POLYGON}) {
    const std::string layer = AddLayer(type);
    const std::string first = AddFeature(layer);
    const CFeatureStyleSet red = PenStyle(QColor(255, 0, 0), 1);
    const CFeatureStyleSet blue = PenStyle(QColor(0, 0, 255), 1);
    ASSERT_TRUE(model_.ModifyOrInsertStyle(first, &red, 3)) << type;
    ASSERT_TRUE(model_.ModifyOrInsertStyle(AddFeature(layer), &blue, 3)) << type;
    EXPECT_EQ("1 0", StyleRows(layer)) << type;
    EXPECT_EQ("0 0", StyleRows(first)) << type;
    EXPECT_EQ("#0000ff", QueriedPen(model_, first, false)) << type;
  }
  // A feature whose layer row is missing keeps a style of its own; the missing row is logged.
  const std::string orphan = AddFeature("ghost layer");
  const CFeatureStyleSet style = PenStyle(QColor(9, 9, 9), 1);
  CZuLogCapture capture;
  ASSERT_TRUE(model_.ModifyOrInsertStyle(orphan, &style, 3));
  EXPECT_TRUE(capture.Contains("[GetLayerUUIDForGisFeature]:"));
  EXPECT_EQ("0 1", StyleRows(orphan));
}

namespace {

// A layer and a feature in it, for the enclosure and field cases.
class EnclosureModelTest : public StyleModelTest {
 protected:
  void SetUp() override {
    StyleModelTest::SetUp();
    layer_ = AddLayer();
    feature_ = AddFeature(layer_);
  }

  // Inserts a record and returns its row id, which the record itself does not learn.
  int Insert(const std::string& description, const std::string& path, const std::string& url,
             E_ENCLOSURE_TYPE type = ENCLOSURE_TYPE_IMAGE) {
    CEnclosureOption option;
    option.SetParentUUID(feature_);
    option.SetEnclosureType(type);
    option.SetDescription(description);
    option.SetLocalPath(path);
    option.SetUrl(url);
    EXPECT_TRUE(model_.ModifyOrInsertEnclosure(option));
    EXPECT_EQ(-1, option.GetID());
    EXPECT_EQ(0, option.GetChangeMask());
    return std::stoi(Scalar("SELECT max(id) FROM shape_enclosure"));
  }

  bool Exec(const std::string& sql) { return ExecSql(model_.GetConnection(), sql, "[test]:"); }

  std::string layer_, feature_;
};

using FieldsTest = EnclosureModelTest;

}  // namespace

// An insert writes the row but leaves the record without its id; the update statement carries a
// comma before WHERE, so it fails at prepare; a query reads the rows the index array lists.
TEST_F(EnclosureModelTest, InsertUpdateAndQueryOfTheRowsOfTheIndexArray) {
  const int path = Insert(Utf8ToLocal("说明"), Utf8ToLocal("D:/文件.doc"), "",
                          ENCLOSURE_TYPE_DOCUMENT);
  EXPECT_EQ(feature_ + "|5|说明|D:/文件.doc|",
            Scalar("SELECT puuid || '|' || type || '|' || description || '|' || local_path || "
                   "'|' || url FROM shape_enclosure WHERE id = " + std::to_string(path)));
  CEnclosureOption zero(0, ENCLOSURE_TYPE_FILE);
  ASSERT_TRUE(model_.ModifyOrInsertEnclosure(zero));  // id 0 is no row yet: inserted
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM shape_enclosure"));
  CEnclosureOption stored(path, ENCLOSURE_TYPE_VIDEO);
  stored.SetDescription("after");
  const int mask = stored.GetChangeMask();
  CZuLogCapture update;
  EXPECT_FALSE(model_.ModifyOrInsertEnclosure(stored));
  ASSERT_EQ(1u, update.Lines().size());
  EXPECT_EQ(0u, update.Lines()[0].find("[ModifyOrInsertEnclosure]:"));
  EXPECT_NE(std::string::npos, update.Lines()[0].find("syntax error"));
  EXPECT_EQ(mask, stored.GetChangeMask());

  const int url = Insert("web", "", "http://example.com/a.png");
  const int both = Insert("both", "", "http://example.com/b.mp4", ENCLOSURE_TYPE_VIDEO);
  ASSERT_TRUE(Exec("UPDATE shape_enclosure SET local_path = 'E:/b.mp4' WHERE id = " +
                   std::to_string(both)));
  Insert("unlisted", "F:/x", "");
  std::list<CEnclosureOption> list;
  EXPECT_TRUE(model_.QueryEnclosure(feature_, list));
  EXPECT_TRUE(list.empty()) << "no e part in the index array yet";

  ASSERT_TRUE(Exec("UPDATE shape SET index_id = 's:1;e:" + std::to_string(path) + "," +
                   std::to_string(url) + "," + std::to_string(both) + ",999' WHERE uuid = '" +
                   feature_ + "'"));
  ASSERT_TRUE(model_.QueryEnclosure(feature_, list));
  ASSERT_EQ(3u, list.size());
  const std::vector<CEnclosureOption> rows(list.begin(), list.end());
  EXPECT_EQ(path, rows[0].GetID());
  EXPECT_EQ(ENCLOSURE_TYPE_DOCUMENT, rows[0].GetEnclosureType());
  EXPECT_EQ(Utf8ToLocal("D:/文件.doc"), rows[0].GetLocalPath());
  EXPECT_EQ(0, rows[0].GetChangeMask());
  // A row holding both comes back with the url only.
  EXPECT_EQ("http://example.com/b.mp4|", rows[2].GetUrl() + "|" + rows[2].GetLocalPath());
  ASSERT_TRUE(model_.QueryEnclosure(feature_, list));
  EXPECT_EQ(6u, list.size()) << "results are appended";

  // Deleting leaves the index array as it was; the listed id simply finds no row.
  ASSERT_TRUE(model_.DeleteEnclosure(url));
  EXPECT_TRUE(model_.DeleteEnclosure(url));
  std::list<CEnclosureOption> after;
  ASSERT_TRUE(model_.QueryEnclosure(feature_, after));
  EXPECT_EQ(2u, after.size());
  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryEnclosure("no such feature", after));
  EXPECT_TRUE(capture.Contains("[QueryTableIndexes]:"));
}

TEST_F(EnclosureModelTest, ContentOfZeroBytesAndOfSeveralMegabytes) {
  const int id = Insert("data", "C:/data.bin", "");
  const std::string content = " FROM shape_enclosure WHERE id = " + std::to_string(id);
  EXPECT_TRUE(model_.QueryEnclosureData(id).empty());
  std::vector<unsigned char> big(6 * 1024 * 1024 + 7);
  for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<unsigned char>((i * 131) ^ (i >> 9));
  ASSERT_TRUE(model_.ModifyEnclosureData(id, big.data(), static_cast<int>(big.size())));
  EXPECT_EQ(big, model_.QueryEnclosureData(id));
  const unsigned char none[1] = {0};
  ASSERT_TRUE(model_.ModifyEnclosureData(id, none, 0));
  EXPECT_EQ("blob 0", Scalar("SELECT typeof(content) || ' ' || length(content)" + content));
  EXPECT_TRUE(model_.QueryEnclosureData(id).empty());
  ASSERT_TRUE(model_.ModifyEnclosureData(id, nullptr, 0));
  EXPECT_EQ("null", Scalar("SELECT typeof(content)" + content));
  // Counts that cannot describe the bytes are refused and change nothing.
  ASSERT_TRUE(model_.ModifyEnclosureData(id, big.data(), 10));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyEnclosureData(id, big.data(), -1));
  EXPECT_FALSE(model_.ModifyEnclosureData(id, nullptr, 10));
  EXPECT_EQ(2, capture.Count("[ModifyEnclosureData]:"));
  EXPECT_EQ(std::vector<unsigned char>(big.begin(), big.begin() + 10),
            model_.QueryEnclosureData(id));
}

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
  EXPECT_EQ(QVariant(chinese),
            FieldValueFromColumn(FIELD_OFST_TYPE_TEXT, "\xe6\xb3\xa8\xe8\xae\xb0"));
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
  CZuFieldSetObject again;
  ASSERT_TRUE(model_.QueryField(feature_, again));
  EXPECT_EQ(QVariant(13.25), again.GetFieldValue("height"));
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
      {QVariant::fromValue(QByteArrayList{bytes, "z"}),
       QVariant::fromValue(QByteArrayList{bytes, "z"})},
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
  EXPECT_FALSE(model_.QueryUserData(db_.RootUUID(), read));  // folders keep no user data
  EXPECT_EQ(1, capture.Count("[UserDataRows]:"));
  EXPECT_FALSE(model_.QueryField("nowhere", read));
}

TEST_F(FieldsTest, InsertFeatureWithItsObjectWritesStyleFieldsAndGeometry) {
  CAnnotationFeature feature(GEOMETRY_DATA_TYPE_POLYGON);
  feature.AddPart(Part({{0, 0, 1}, {4, 0, 1}, {4, 3, 1}, {0, 0, 1}}));
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

using GeometryModelTest = StyleModelTest;

TEST_F(GeometryModelTest, CorruptStoredBlobIsUnreadableNotFatal) {
  const std::string layer = AddLayer();
  const std::string uuid = AddFeature(layer, 2, {Part({{0, 0, 0}, {5, 5, 5}})});
  // A damaged file has no SpatiaLite triggers in the way (they would hand the blob to gaia).
  sqlite3* db = model_.GetConnection();
  std::vector<std::string> triggers;
  CSqlStatement list(db, "SELECT name FROM sqlite_master WHERE type = 'trigger'", "[test]:");
  while (list.StepRow()) triggers.push_back(list.ColumnText(0, false));
  list.Finalize();
  for (const std::string& trigger : triggers) ExecSql(db, "DROP TRIGGER " + trigger, "[test]:");
  // The vertex count becomes -1.
  ASSERT_TRUE(ExecSql(db, "UPDATE shape SET geom = CAST(substr(geom, 1, 43) || X'FFFFFFFF' || "
                          "substr(geom, 48) AS BLOB)", "[test]:"));
  CZuLogCapture capture;
  CAnnotationFeature read;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(0, read.GetPartCount());
  EXPECT_TRUE(capture.Contains("[QueryGeometryData]:"));
  EXPECT_EQ(0.0, model_.QueryBoundingBox(uuid).max_x);
  EXPECT_TRUE(model_.DirtyLayerBoundingBox(layer));
}

TEST_F(GeometryModelTest, ModifyReplacesTheRowAndKeepsItsNodeData) {
  const std::string layer = AddLayer();
  const std::string uuid = AddFeature(layer, 0, {}, Utf8ToLocal("北京 标注"));
  AddFeature(layer);  // a later row, so that the replacement cannot reuse the highest row id
  const std::string of = " FROM shape WHERE uuid = '" + uuid + "'";
  ASSERT_TRUE(ExecSql(model_.GetConnection(),
                      "UPDATE shape SET createtime = '2000-01-01', modifytime = '2000-01-02', "
                      "index_id = 's:77;e:5'" + std::string(" WHERE uuid = '") + uuid + "'",
                      "[test]:"));
  const std::string before = Scalar("SELECT ROWID" + of);
  CAnnotationFeature geometry(GEOMETRY_DATA_TYPE_LINESTRING);
  geometry.AddPart(Part({{1, 1, 1}, {2, 2, 2}}));
  ASSERT_TRUE(model_.ModifyGeometryData(uuid, &geometry));
  EXPECT_NE(before, Scalar("SELECT ROWID" + of));
  EXPECT_EQ(layer + "|2|北京 标注|s:77;e:5",
            Scalar("SELECT puuid || '|' || type || '|' || name || '|' || index_id" + of));
  // The times are the column defaults of the new row; order and status rows stay.
  EXPECT_EQ(Scalar("SELECT strftime('%Y', 'now')"), Scalar("SELECT substr(modifytime, 1, 4)" + of));
  EXPECT_EQ("11", Scalar("SELECT (SELECT COUNT(*) FROM shape_order WHERE uuid = '" + uuid +
                      "') || (SELECT COUNT(*) FROM shape_status WHERE puuid = '" + uuid + "')"));

  // A missing feature warns and deletes nothing.
  CZuLogCapture capture;
  EXPECT_FALSE(model_.ModifyGeometryData("missing", &geometry));
  EXPECT_EQ(std::vector<std::string>{"[CSpatialiteDBDataModel::ModifyGeometryData]: " +
                                     Utf8ToLocal("UUID为空")},
            capture.Lines());
  EXPECT_EQ("2", Scalar("SELECT COUNT(*) FROM shape"));
}

TEST_F(GeometryModelTest, DirtyLayerBoundingBoxWritesTheUnionOfItsFeatures) {
  const std::string layer = AddLayer();
  const std::string box = "SELECT min_x || ' ' || min_y || ' ' || max_x || ' ' || max_y FROM "
                          "layer WHERE uuid = '" + layer + "'";
  // Without features: DBL_MAX written with 14 significant digits, inverted.
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer));
  EXPECT_EQ("1.7976931348623e+308 1.7976931348623e+308 -1.7976931348623e+308 "
            "-1.7976931348623e+308",
            Scalar(box));
  AddFeature(layer, 3, {Square(116.25, 39.5, 0.5, 10)});
  AddFeature(layer, 2, {Part({{117, 40, 0}, {118.125, 41, 0}})});
  AddFeature(AddLayer(), 1, {Part({{-50, -50, 0}})});
  ASSERT_TRUE(model_.DirtyLayerBoundingBox(layer));
  EXPECT_EQ("116.25 39.5 118.125 41.0", Scalar(box));
  // A layer that does not exist is updated nowhere, which is no failure.
  EXPECT_TRUE(model_.DirtyLayerBoundingBox("no such layer"));
}

TEST_F(GeometryModelTest, StoredGeometryReadsBackWithItsBoxAndQuotedUuidsAreRefused) {
  const std::string layer = AddLayer();
  const std::vector<CGeometryData> points = {Part({{1, 2, 3}}), Part({{4, 5, 6}}),
                                             Part({{7, 8, 9}})};
  const std::string uuid = AddFeature(layer, GEOMETRY_DATA_TYPE_MULTIPOINT, points);
  const EXTENT box = model_.QueryBoundingBox(uuid);
  EXPECT_EQ((std::vector<double>{1, 2, 7, 8}),
            (std::vector<double>{box.min_x, box.min_y, box.max_x, box.max_y}));
  CAnnotationFeature read;
  ASSERT_TRUE(model_.QueryGeometryData(uuid, &read));
  EXPECT_EQ(points[2], read.GetPart(2));
  CZuLogCapture capture;
  EXPECT_FALSE(model_.QueryGeometryData(uuid, nullptr));
  EXPECT_EQ(0.0, model_.QueryBoundingBox(uuid + "' OR '1'='1").max_x);
  EXPECT_FALSE(model_.DirtyLayerBoundingBox(std::string("x\0y", 3)));
  EXPECT_EQ(1, capture.Count("[QueryBoundingBox]:"));
  EXPECT_EQ(1, capture.Count("[DirtyLayerBoundingBox_Query]:"));
  EXPECT_EQ(3u, capture.Lines().size());
}
