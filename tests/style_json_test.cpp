// The style JSON codec: keys, the pen width truncation, colours, booleans as integers, updating
// styles in place, and malformed input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "JsonValue.h"
#include "StyleJson.h"
#include "ZuLog.h"

using AnnotationLayerNS::FromJsonStyle;
using AnnotationLayerNS::ToJsonStyle;

namespace {

template <typename Style>
Style* Only(CFeatureStyleSet& set) {
  Style* found = nullptr;
  for (int i = 0; i < set.GetCount(); ++i) {
    if (auto* style = dynamic_cast<Style*>(set.At(i))) {
      EXPECT_EQ(nullptr, found) << "more than one style of a kind";
      found = style;
    }
  }
  return found;
}

CJsonValue ParseObject(const std::string& text) {
  CJsonValue root;
  EXPECT_TRUE(CJsonValue::Parse(text, root)) << text;
  EXPECT_TRUE(root.IsObject()) << text;
  return root;
}

std::vector<std::string> MemberNames(const CJsonValue& object) {
  return object.Raw().getMemberNames();
}

}  // namespace

TEST(StyleJsonTest, EmptyAndNullSetsGiveEmptyText) {
  CFeatureStyleSet empty;
  EXPECT_EQ("", ToJsonStyle(&empty));
  EXPECT_EQ("", ToJsonStyle(nullptr));
}

TEST(StyleJsonTest, OnlyPresentKindsAreWritten) {
  CFeatureStyleSet set;
  set.PushBack(new CFeatureLabelStyle());
  const CJsonValue root = ParseObject(ToJsonStyle(&set));
  EXPECT_EQ(std::vector<std::string>{"label"}, MemberNames(root));
  EXPECT_EQ((std::vector<std::string>{"a", "b", "bo", "c", "f", "h", "it", "s", "st", "u", "un"}),
            MemberNames(root.Get("label")));
}

TEST(StyleJsonTest, WritesEveryKey) {
  CFeatureStyleSet set;
  auto* pen = new CFeaturePenStyle();
  pen->SetColor(QColor(0x12, 0x34, 0x56));
  pen->SetWidth(2.5);
  pen->SetUnit(GCS_UNIT_MILLIMETER);
  pen->SetIdentify(OGR_PEN_DASH_DOT);
  set.PushBack(pen);
  auto* label = new CFeatureLabelStyle();
  label->SetBold(true);
  label->SetStrikethrough(true);
  label->SetOutLineColor(QColor(255, 0, 0));
  set.PushBack(label);
  set.PushBack(new CFeatureIconStyle());
  set.PushBack(new CFeatureBrushStyle());

  const CJsonValue root = ParseObject(ToJsonStyle(&set));
  EXPECT_EQ((std::vector<std::string>{"brush", "icon", "label", "pen"}), MemberNames(root));
  const CJsonValue penJson = root.Get("pen");
  EXPECT_EQ((std::vector<std::string>{"c", "id", "u", "w"}), MemberNames(penJson));
  EXPECT_EQ("#123456", penJson.Get("c").AsString());
  EXPECT_EQ(2.5, penJson.Get("w").AsDouble()) << "the width is written as a real";
  EXPECT_EQ(3, penJson.Get("u").AsInt());
  EXPECT_EQ(6, penJson.Get("id").AsInt());
  EXPECT_EQ((std::vector<std::string>{"a", "bc", "fc", "id", "s"}),
            MemberNames(root.Get("brush")));
  EXPECT_EQ((std::vector<std::string>{"a", "s", "url"}), MemberNames(root.Get("icon")));

  const CJsonValue labelJson = root.Get("label");
  EXPECT_TRUE(labelJson.Get("bo").Raw().isInt()) << "booleans are written as integers";
  EXPECT_EQ(1, labelJson.Get("bo").AsInt());
  EXPECT_EQ(0, labelJson.Get("it").AsInt());
  EXPECT_EQ(0, labelJson.Get("un").AsInt());
  EXPECT_EQ(1, labelJson.Get("st").AsInt());
  EXPECT_EQ("#ff0000", labelJson.Get("h").AsString());
}

TEST(StyleJsonTest, RoundTripsEveryField) {
  CFeatureStyleSet set;
  auto* pen = new CFeaturePenStyle();
  pen->SetColor(QColor(1, 2, 3));
  pen->SetWidth(4.0);
  pen->SetUnit(GCS_UNIT_INCH);
  pen->SetIdentify(OGR_PEN_ALTERNATE);
  set.PushBack(pen);
  auto* brush = new CFeatureBrushStyle();
  brush->SetForegroundColor(QColor(200, 100, 50));
  brush->SetBackgroundColor(QColor(0, 255, 0));
  brush->SetIdentify(OGR_BRUSH_CROSS);
  brush->SetAngle(0.1);
  brush->SetScale(-1e-310);
  set.PushBack(brush);
  auto* icon = new CFeatureIconStyle();
  icon->SetIconUrl("C:\\icons\\\xD6\xD0.png");
  icon->SetAngle(-33.25);
  icon->SetIconScale(0.1f);
  set.PushBack(icon);
  auto* label = new CFeatureLabelStyle();
  label->SetFontName("\xCB\xCE\xCC\xE5");  // GB18030 for a Song typeface name
  label->SetUnit(GCS_UNIT_GROUND);
  label->SetSize(13.5);
  label->SetAngle(90.0);
  label->SetForegroundColor(QColor(9, 8, 7));
  label->SetBackgroundColor(QColor(255, 255, 255));
  label->SetOutLineColor(QColor(0, 0, 1));
  label->SetItalic(true);
  label->SetUnderline(true);
  set.PushBack(label);

  CFeatureStyleSet back;
  ASSERT_TRUE(FromJsonStyle(&back, ToJsonStyle(&set)));
  ASSERT_EQ(4, back.GetCount());
  const auto* pen2 = Only<CFeaturePenStyle>(back);
  const auto* brush2 = Only<CFeatureBrushStyle>(back);
  const auto* icon2 = Only<CFeatureIconStyle>(back);
  const auto* label2 = Only<CFeatureLabelStyle>(back);
  ASSERT_TRUE(pen2 && brush2 && icon2 && label2);
  EXPECT_EQ(QColor(1, 2, 3), pen2->GetColor());
  EXPECT_EQ(4.0, pen2->GetWidth());
  EXPECT_EQ(GCS_UNIT_INCH, pen2->GetUnit());
  EXPECT_EQ(OGR_PEN_ALTERNATE, pen2->GetIdentify());
  EXPECT_EQ(QColor(200, 100, 50), brush2->GetForegroundColor());
  EXPECT_EQ(QColor(0, 255, 0), brush2->GetBackgroundColor());
  EXPECT_EQ(OGR_BRUSH_CROSS, brush2->GetIdentify());
  EXPECT_EQ(0.1, brush2->GetAngle());
  EXPECT_EQ(-1e-310, brush2->GetScale());
  EXPECT_EQ("C:\\icons\\\xD6\xD0.png", icon2->GetIconUrl());
  EXPECT_EQ(-33.25, icon2->GetAngle());
  EXPECT_EQ(0.1f, icon2->GetIconScale());
  EXPECT_EQ("\xCB\xCE\xCC\xE5", label2->GetFontName());
  EXPECT_EQ(GCS_UNIT_GROUND, label2->GetUnit());
  EXPECT_EQ(13.5, label2->GetSize());
  EXPECT_EQ(90.0, label2->GetAngle());
  EXPECT_EQ(QColor(9, 8, 7), label2->GetForegroundColor());
  EXPECT_EQ(QColor(255, 255, 255), label2->GetBackgroundColor());
  EXPECT_EQ(QColor(0, 0, 1), label2->GetOutLineColor());
  EXPECT_FALSE(label2->IsBold());
  EXPECT_TRUE(label2->IsItalic());
  EXPECT_TRUE(label2->IsUnderline());
  EXPECT_FALSE(label2->IsStrikethrought());
}

TEST(StyleJsonTest, PenWidthIsReadAsInteger) {
  CFeatureStyleSet set;
  auto* pen = new CFeaturePenStyle();
  pen->SetWidth(1.5);
  set.PushBack(pen);
  CFeatureStyleSet back;
  ASSERT_TRUE(FromJsonStyle(&back, ToJsonStyle(&set)));
  ASSERT_NE(nullptr, Only<CFeaturePenStyle>(back));
  EXPECT_EQ(1.0, Only<CFeaturePenStyle>(back)->GetWidth());

  CFeatureStyleSet negative;
  ASSERT_TRUE(FromJsonStyle(&negative, "{\"pen\":{\"w\":-2.7}}"));
  EXPECT_EQ(-2.0, Only<CFeaturePenStyle>(negative)->GetWidth());
}

TEST(StyleJsonTest, MissingKeysReadAsZero) {
  CFeatureStyleSet set;
  ASSERT_TRUE(FromJsonStyle(&set, "{\"pen\":{\"w\":2.7}}"));
  ASSERT_EQ(1, set.GetCount());
  const auto* pen = Only<CFeaturePenStyle>(set);
  ASSERT_NE(nullptr, pen);
  EXPECT_EQ(2.0, pen->GetWidth());
  EXPECT_FALSE(pen->GetColor().isValid()) << "a colour from the empty name";
  EXPECT_EQ(0, pen->GetUnit());
  EXPECT_EQ(0, pen->GetIdentify());

  ASSERT_TRUE(FromJsonStyle(&set, "{\"label\":{}}"));
  const auto* label = Only<CFeatureLabelStyle>(set);
  ASSERT_NE(nullptr, label);
  EXPECT_EQ("", label->GetFontName());
  EXPECT_EQ(0.0, label->GetSize()) << "defaults of a new style are overwritten";
  EXPECT_FALSE(label->GetForegroundColor().isValid());
}

TEST(StyleJsonTest, UpdatesExistingStylesInPlace) {
  CFeatureStyleSet set;
  auto* brush = new CFeatureBrushStyle();
  set.PushBack(brush);
  ASSERT_TRUE(FromJsonStyle(&set, "{\"brush\":{\"fc\":\"#0000ff\",\"a\":12.5,\"id\":3}}"));
  ASSERT_EQ(1, set.GetCount());
  EXPECT_EQ(brush, set.At(0));
  EXPECT_EQ(QColor(0, 0, 255), brush->GetForegroundColor());
  EXPECT_EQ(12.5, brush->GetAngle());
  EXPECT_EQ(OGR_BRUSH_VERTICAL, brush->GetIdentify());
  EXPECT_EQ(0.0, brush->GetScale());

  // Only the first of two pens is written and updated.
  auto* first = new CFeaturePenStyle();
  first->SetWidth(7.0);
  auto* second = new CFeaturePenStyle();
  second->SetWidth(9.0);
  set.PushBack(first);
  set.PushBack(second);
  const CJsonValue root = ParseObject(ToJsonStyle(&set));
  EXPECT_EQ(7.0, root.Get("pen").Get("w").AsDouble());
  ASSERT_TRUE(FromJsonStyle(&set, "{\"pen\":{\"w\":3}}"));
  EXPECT_EQ(3.0, first->GetWidth());
  EXPECT_EQ(9.0, second->GetWidth());
  EXPECT_EQ(3, set.GetCount());
}

TEST(StyleJsonTest, ColoursKeepRgbOnly) {
  CFeatureStyleSet set;
  auto* brush = new CFeatureBrushStyle();
  brush->SetBackgroundColor(QColor(10, 20, 30, 40));
  brush->SetForegroundColor(QColor());  // invalid colours are written as black
  set.PushBack(brush);
  CFeatureStyleSet back;
  ASSERT_TRUE(FromJsonStyle(&back, ToJsonStyle(&set)));
  const auto* brush2 = Only<CFeatureBrushStyle>(back);
  ASSERT_NE(nullptr, brush2);
  EXPECT_EQ(QColor(10, 20, 30), brush2->GetBackgroundColor());
  EXPECT_EQ(255, brush2->GetBackgroundColor().alpha());
  EXPECT_EQ(QColor(0, 0, 0), brush2->GetForegroundColor());
}

TEST(StyleJsonTest, MalformedTextsFailAndLeaveTheSetAlone) {
  CFeatureStyleSet set;
  set.PushBack(new CFeaturePenStyle());
  const std::vector<std::string> texts = {
      "", "[1,2]", "5", "null", "\"pen\"", "{\"pen\":{\"c\":\"#ff0000\"", "{\"pen\":", "{pen:1}"};
  for (const std::string& text : texts) {
    CZuLogCapture capture;
    EXPECT_FALSE(FromJsonStyle(&set, text)) << text;
    EXPECT_EQ(1, capture.Count("[FromJsonStyle]:")) << text;
    EXPECT_EQ(1, set.GetCount());
    EXPECT_EQ(1.0, Only<CFeaturePenStyle>(set)->GetWidth()) << text;
  }
  CZuLogCapture capture;
  EXPECT_FALSE(FromJsonStyle(nullptr, "{}"));
  EXPECT_EQ(1, capture.Count("[FromJsonStyle]:"));
  CFeatureStyleSet empty;
  EXPECT_TRUE(FromJsonStyle(&empty, "{}"));
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_TRUE(FromJsonStyle(&empty, "{\"pen\":null,\"other\":{}}"));
  EXPECT_TRUE(empty.IsEmpty()) << "null and unknown members add nothing";
}

TEST(StyleJsonTest, WrongMemberTypesGiveDefinedValues) {
  CFeatureStyleSet set;
  ASSERT_TRUE(FromJsonStyle(&set, "{\"pen\":5,\"icon\":[1,2]}"));
  const auto* pen = Only<CFeaturePenStyle>(set);
  ASSERT_NE(nullptr, pen) << "a member that is not an object reads as an object without keys";
  EXPECT_EQ(0.0, pen->GetWidth());
  EXPECT_FALSE(pen->GetColor().isValid());
  ASSERT_NE(nullptr, Only<CFeatureIconStyle>(set));
  EXPECT_EQ(0.0f, Only<CFeatureIconStyle>(set)->GetIconScale());

  ASSERT_TRUE(FromJsonStyle(&set,
                            "{\"brush\":{\"fc\":12,\"bc\":\"notacolour\",\"a\":\"1\",\"id\":\"3\","
                            "\"s\":true},\"label\":{\"f\":7,\"bo\":\"1\",\"it\":2,\"c\":\"red\","
                            "\"s\":1e308,\"u\":1e20}}"));
  const auto* brush = Only<CFeatureBrushStyle>(set);
  ASSERT_NE(nullptr, brush);
  EXPECT_FALSE(brush->GetForegroundColor().isValid());
  EXPECT_FALSE(brush->GetBackgroundColor().isValid()) << "a name Qt rejects";
  EXPECT_EQ(0.0, brush->GetAngle());
  EXPECT_EQ(0, brush->GetIdentify());
  EXPECT_EQ(1.0, brush->GetScale());
  const auto* label = Only<CFeatureLabelStyle>(set);
  ASSERT_NE(nullptr, label);
  EXPECT_EQ("", label->GetFontName());
  EXPECT_FALSE(label->IsBold());
  EXPECT_TRUE(label->IsItalic());
  EXPECT_EQ(QColor(255, 0, 0), label->GetForegroundColor()) << "Qt's colour names are accepted";
  EXPECT_EQ(1e308, label->GetSize());
  EXPECT_EQ(0, label->GetUnit()) << "out of int range";

  ASSERT_TRUE(FromJsonStyle(&set, "{\"icon\":{\"s\":1e300},\"pen\":{\"w\":1e300}}"));
  EXPECT_EQ(std::numeric_limits<float>::infinity(), Only<CFeatureIconStyle>(set)->GetIconScale());
  EXPECT_EQ(0.0, Only<CFeaturePenStyle>(set)->GetWidth());
}

TEST(StyleJsonRegressionTest, AnOverflowingNumberStillRoundTrips) {
  // Found by fuzzing: an icon scale too large for a float became infinity, which was written in a
  // form the reader rejected.
  const std::string text =
      "{\"icon\":{\"url\":\"icon.png\",\"a\":10,\"s\":" + std::string(60, '7') + "}}";
  CFeatureStyleSet styles;
  ASSERT_TRUE(AnnotationLayerNS::FromJsonStyle(&styles, text));
  const std::string written = AnnotationLayerNS::ToJsonStyle(&styles);
  ASSERT_FALSE(written.empty());
  CFeatureStyleSet reread;
  EXPECT_TRUE(AnnotationLayerNS::FromJsonStyle(&reread, written)) << written;
}
