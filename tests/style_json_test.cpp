// The style JSON codec (keys, the pen width truncation, colours, booleans as integers, updating
// the styles already in the set, malformed input) and the JSON value under it: readers that never
// throw, member access, compact writing and guarded parsing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
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
  return root;
}

std::vector<std::string> MemberNames(const CJsonValue& object) {
  return object.Raw().getMemberNames();
}

}  // namespace

TEST(StyleJsonTest, WritesThePresentKindsWithEveryKey) {
  CFeatureStyleSet set;
  EXPECT_EQ("", ToJsonStyle(&set));
  EXPECT_EQ("", ToJsonStyle(nullptr));
  auto* label = new CFeatureLabelStyle();
  label->SetBold(true);
  set.PushBack(label);
  EXPECT_EQ(std::vector<std::string>{"label"}, MemberNames(ParseObject(ToJsonStyle(&set))));
  auto* pen = new CFeaturePenStyle();
  pen->SetColor(QColor(0x12, 0x34, 0x56));
  pen->SetWidth(2.5);
  pen->SetUnit(GCS_UNIT_MILLIMETER);
  pen->SetIdentify(OGR_PEN_DASH_DOT);
  set.PushBack(pen);
  set.PushBack(new CFeatureIconStyle());
  set.PushBack(new CFeatureBrushStyle());
  const CJsonValue root = ParseObject(ToJsonStyle(&set));
  EXPECT_EQ((std::vector<std::string>{"brush", "icon", "label", "pen"}), MemberNames(root));
  EXPECT_EQ((std::vector<std::string>{"a", "b", "bo", "c", "f", "h", "it", "s", "st", "u", "un"}),
            MemberNames(root.Get("label")));
  EXPECT_TRUE(root.Get("label").Get("bo").Raw().isInt()) << "booleans are written as integers";
  EXPECT_EQ(R"({"c":"#123456","id":6,"u":3,"w":2.5})", root.Get("pen").Write())
      << "the width is written as a real";
  EXPECT_EQ((std::vector<std::string>{"a", "bc", "fc", "id", "s"}), MemberNames(root.Get("brush")));
  EXPECT_EQ((std::vector<std::string>{"a", "s", "url"}), MemberNames(root.Get("icon")));
  // Read back, the set writes the same text again: every field survived (a whole pen width, since
  // widths are read as integers; a font name in code page bytes).
  pen->SetWidth(3);
  label->SetFontName("\xCB\xCE\xCC\xE5");
  CFeatureStyleSet back;
  ASSERT_TRUE(FromJsonStyle(&back, ToJsonStyle(&set)));
  EXPECT_EQ(ToJsonStyle(&set), ToJsonStyle(&back));
}

// The pen width is read as an integer; missing keys, and members of the wrong type, read as zero.
TEST(StyleJsonTest, WidthTruncatesAndWrongOrMissingMembersGiveDefinedValues) {
  CFeatureStyleSet set;
  ASSERT_TRUE(FromJsonStyle(&set, "{\"pen\":{\"w\":-2.7},\"icon\":[1,2]}"));
  const auto* pen = Only<CFeaturePenStyle>(set);
  ASSERT_NE(nullptr, pen);
  EXPECT_EQ(-2.0, pen->GetWidth());
  EXPECT_FALSE(pen->GetColor().isValid()) << "a colour from the empty name";
  ASSERT_NE(nullptr, Only<CFeatureIconStyle>(set)) << "a non-object reads as one without keys";

  ASSERT_TRUE(FromJsonStyle(&set,
                            "{\"brush\":{\"fc\":12,\"bc\":\"notacolour\",\"a\":\"1\",\"id\":\"3\","
                            "\"s\":true},\"label\":{\"f\":7,\"bo\":\"1\",\"it\":2,\"c\":\"red\","
                            "\"s\":1e308,\"u\":1e20}}"));
  const auto* brush = Only<CFeatureBrushStyle>(set);
  ASSERT_NE(nullptr, brush);
  EXPECT_FALSE(brush->GetForegroundColor().isValid());
  EXPECT_FALSE(brush->GetBackgroundColor().isValid()) << "a name Qt rejects";
  EXPECT_EQ(0.0, brush->GetAngle());
  const auto* label = Only<CFeatureLabelStyle>(set);
  ASSERT_NE(nullptr, label);
  EXPECT_TRUE(label->IsItalic());
  EXPECT_EQ(QColor(255, 0, 0), label->GetForegroundColor()) << "Qt's colour names are accepted";
  EXPECT_EQ(0, label->GetUnit()) << "out of int range";

  // Read into the same set: the styles already there are updated, none is added.
  ASSERT_TRUE(FromJsonStyle(&set, "{\"icon\":{\"s\":1e300},\"pen\":{\"w\":1e300}}"));
  EXPECT_EQ(4, set.GetCount());
  EXPECT_EQ(std::numeric_limits<float>::infinity(), Only<CFeatureIconStyle>(set)->GetIconScale());
  EXPECT_EQ(0.0, Only<CFeaturePenStyle>(set)->GetWidth());
}

TEST(StyleJsonTest, MalformedTextsFailAndLeaveTheSetAlone) {
  CFeatureStyleSet set;
  set.PushBack(new CFeaturePenStyle());
  for (const char* text : {"", "[1,2]", "null", "{\"pen\":{\"c\":\"#ff0000\"", "{pen:1}"}) {
    CZuLogCapture capture;
    EXPECT_FALSE(FromJsonStyle(&set, text)) << text;
    EXPECT_EQ(1, capture.Count("[FromJsonStyle]:")) << text;
    EXPECT_EQ(1.0, Only<CFeaturePenStyle>(set)->GetWidth()) << text;
  }
  CZuLogCapture capture;
  EXPECT_FALSE(FromJsonStyle(nullptr, "{}"));
  EXPECT_EQ(1, capture.Count("[FromJsonStyle]:"));
  CFeatureStyleSet empty;
  EXPECT_TRUE(FromJsonStyle(&empty, "{\"pen\":null,\"other\":{}}"));
  EXPECT_TRUE(empty.IsEmpty()) << "null and unknown members add nothing";
}

TEST(StyleJsonRegressionTest, AnOverflowingNumberStillRoundTrips) {
  // Found by fuzzing: an icon scale too large for a float became infinity, which was written in a
  // form the reader rejected.
  const std::string text =
      "{\"icon\":{\"url\":\"icon.png\",\"a\":10,\"s\":" + std::string(60, '7') + "}}";
  CFeatureStyleSet styles;
  ASSERT_TRUE(FromJsonStyle(&styles, text));
  const std::string written = ToJsonStyle(&styles);
  CFeatureStyleSet reread;
  EXPECT_TRUE(FromJsonStyle(&reread, written)) << written;
}

// Readers never throw: a value out of the reader's range, or of another kind, reads as zero.
TEST(JsonValueTest, ReadersTruncateOrGiveZero) {
  const int64_t big = std::numeric_limits<int64_t>::min();
  const struct {
    CJsonValue value;
    int asInt;
    int64_t asInt64;
  } cases[] = {{CJsonValue(4000000000u), 0, 4000000000LL},
               {CJsonValue(big), 0, big},
               {CJsonValue(-2.7), -2, -2},
               {CJsonValue(2147483648.0), 0, 2147483648LL},
               {CJsonValue(-2147483648.0), -2147483647 - 1, -2147483648LL},
               {CJsonValue(1e19), 0, 0},
               {CJsonValue(std::nan("")), 0, 0},
               {CJsonValue(std::string("12")), 0, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.asInt, c.value.AsInt()) << c.value.Write();
    EXPECT_EQ(c.asInt64, c.value.AsInt64()) << c.value.Write();
  }
  EXPECT_EQ("", CJsonValue(12).AsString());
  EXPECT_FALSE(CJsonValue(std::string("12")).AsBool());
  CJsonValue parsed;
  ASSERT_TRUE(CJsonValue::Parse("{\"t\":true,\"f\":0.0,\"a\":[1]}", parsed));
  EXPECT_EQ(1.0, parsed.Get("t").AsDouble());
  EXPECT_FALSE(parsed.Get("f").AsBool());
  EXPECT_EQ(0, parsed.Get("a").AsInt());
}

TEST(JsonValueTest, MembersWritingAndBytes) {
  CJsonValue object;
  ASSERT_TRUE(object.Set("b", CJsonValue(std::string("x"))));
  ASSERT_TRUE(object.Set("a", CJsonValue(1)));
  EXPECT_FALSE(object.HasMember("c"));
  EXPECT_EQ("{\"a\":1,\"b\":\"x\"}", object.Write());
  CJsonValue number(5);
  EXPECT_FALSE(number.Set("k", CJsonValue(1))) << "a number cannot take members";
  EXPECT_TRUE(number.Get("k").IsNull());

  // GB18030 bytes, a byte pair whose second byte is '\\' (0x955C), quotes, a control byte, a NUL.
  const std::string bytes = std::string("\xD6\xD0\xCE\xC4 \x95\x5C \"q\" \x01 ") + '\0' + "end";
  object.Set("f", CJsonValue(bytes));
  CJsonValue back;
  ASSERT_TRUE(CJsonValue::Parse(object.Write(), back));
  EXPECT_EQ(bytes, back.Get("f").AsString());
}

TEST(JsonValueTest, ParseFailuresAreReportedNotThrown) {
  CJsonValue out(3);
  std::string error;
  EXPECT_FALSE(CJsonValue::Parse("", out, &error));
  EXPECT_FALSE(error.empty());
  for (const char* text : {"{} trailing", "{'a':1}"}) EXPECT_FALSE(CJsonValue::Parse(text, out));
  EXPECT_EQ(3, out.AsInt()) << "a failed parse leaves the target alone";
  // Deeper than jsoncpp's nesting limit, where the library throws.
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  EXPECT_FALSE(CJsonValue::Parse(deep, out, &error));
  EXPECT_TRUE(CJsonValue::Parse(" {\"a\":[1,2]}\n", out));
  EXPECT_TRUE(out.IsObject());
}
