// CJsonValue: readers that never throw, member access, compact writing and guarded parsing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "JsonValue.h"

TEST(JsonValueTest, ReadersOfEachKind) {
  EXPECT_EQ(-7, CJsonValue(-7).AsInt());
  EXPECT_EQ(-7, CJsonValue(-7).AsInt64());
  EXPECT_EQ(-7.0, CJsonValue(-7).AsDouble());
  EXPECT_TRUE(CJsonValue(-7).AsBool());
  EXPECT_EQ(4000000000u, static_cast<uint64_t>(CJsonValue(4000000000u).AsInt64()));
  EXPECT_EQ(0, CJsonValue(4000000000u).AsInt()) << "beyond int";
  const int64_t big = std::numeric_limits<int64_t>::min();
  EXPECT_EQ(big, CJsonValue(big).AsInt64());
  EXPECT_EQ(0, CJsonValue(big).AsInt());
  EXPECT_EQ(2.5, CJsonValue(2.5).AsDouble());
  EXPECT_EQ("text", CJsonValue(std::string("text")).AsString());
}

TEST(JsonValueTest, RealsTruncateTowardZeroWithinRange) {
  EXPECT_EQ(2, CJsonValue(2.7).AsInt());
  EXPECT_EQ(-2, CJsonValue(-2.7).AsInt());
  EXPECT_EQ(2147483647, CJsonValue(2147483647.9).AsInt());
  EXPECT_EQ(0, CJsonValue(2147483648.0).AsInt());
  EXPECT_EQ(-2147483647 - 1, CJsonValue(-2147483648.0).AsInt());
  EXPECT_EQ(0, CJsonValue(3e9).AsInt());
  EXPECT_EQ(3000000000LL, CJsonValue(3e9).AsInt64());
  EXPECT_EQ(0, CJsonValue(1e19).AsInt64());
  EXPECT_EQ(0, CJsonValue(std::nan("")).AsInt());
  EXPECT_EQ(0, CJsonValue(std::numeric_limits<double>::infinity()).AsInt64());
}

TEST(JsonValueTest, WrongKindsReadAsZero) {
  const CJsonValue text(std::string("12"));
  EXPECT_EQ(0, text.AsInt());
  EXPECT_EQ(0, text.AsInt64());
  EXPECT_EQ(0.0, text.AsDouble());
  EXPECT_FALSE(text.AsBool());
  EXPECT_EQ("", CJsonValue(12).AsString());
  const CJsonValue null;
  EXPECT_TRUE(null.IsNull());
  EXPECT_EQ(0, null.AsInt());
  EXPECT_EQ("", null.AsString());
  EXPECT_FALSE(null.AsBool());

  CJsonValue parsed;
  ASSERT_TRUE(CJsonValue::Parse("{\"t\":true,\"f\":0.0,\"a\":[1],\"o\":{}}", parsed));
  EXPECT_EQ(1, parsed.Get("t").AsInt());
  EXPECT_EQ(1.0, parsed.Get("t").AsDouble());
  EXPECT_TRUE(parsed.Get("t").AsBool());
  EXPECT_FALSE(parsed.Get("f").AsBool());
  EXPECT_EQ(0, parsed.Get("a").AsInt());
  EXPECT_EQ(0.0, parsed.Get("o").AsDouble());
  EXPECT_EQ("", parsed.Get("o").AsString());
}

TEST(JsonValueTest, MembersAndWriting) {
  CJsonValue object;
  ASSERT_TRUE(object.Set("b", CJsonValue(std::string("x"))));
  ASSERT_TRUE(object.Set("a", CJsonValue(1)));
  EXPECT_TRUE(object.IsObject());
  EXPECT_TRUE(object.HasMember("a"));
  EXPECT_FALSE(object.HasMember("c"));
  EXPECT_TRUE(object.Get("c").IsNull());
  EXPECT_EQ(0, object.Get("c").AsInt());
  EXPECT_EQ("{\"a\":1,\"b\":\"x\"}", object.Write());

  CJsonValue number(5);
  EXPECT_FALSE(number.Set("k", CJsonValue(1))) << "a number cannot take members";
  EXPECT_EQ(5, number.AsInt());
  EXPECT_TRUE(number.Get("k").IsNull());
  EXPECT_FALSE(number.HasMember("k"));
}

TEST(JsonValueTest, TextBytesSurviveWriteAndParse) {
  // GB18030 for U+4E2D U+6587 (0xD6D0 0xCEC4), a byte pair whose second byte is '\\' (U+5F00
  // in GBK is 0x955C), quotes, a control byte and a NUL.
  const std::string bytes = std::string("\xD6\xD0\xCE\xC4 \x95\x5C \"q\" \x01 ") + '\0' + "end";
  CJsonValue object;
  object.Set("f", CJsonValue(bytes));
  const std::string text = object.Write();
  CJsonValue back;
  ASSERT_TRUE(CJsonValue::Parse(text, back)) << text;
  EXPECT_EQ(bytes, back.Get("f").AsString());
}

TEST(JsonValueTest, ParseFailuresAreReportedNotThrown) {
  CJsonValue out(3);
  std::string error;
  EXPECT_FALSE(CJsonValue::Parse("", out, &error));
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(CJsonValue::Parse("{\"a\":", out));
  EXPECT_FALSE(CJsonValue::Parse("{\"a\":1", out));
  EXPECT_FALSE(CJsonValue::Parse("{} trailing", out));
  EXPECT_FALSE(CJsonValue::Parse("{'a':1}", out));
  EXPECT_EQ(3, out.AsInt()) << "a failed parse leaves the target alone";

  // Deeper than jsoncpp's nesting limit, where the library throws.
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  error.clear();
  EXPECT_FALSE(CJsonValue::Parse(deep, out, &error));
  EXPECT_FALSE(error.empty());

  EXPECT_TRUE(CJsonValue::Parse(" {\"a\":[1,2]}\n", out));
  EXPECT_TRUE(out.IsObject());
  EXPECT_TRUE(CJsonValue::Parse("null", out));
  EXPECT_TRUE(out.IsNull());
}
