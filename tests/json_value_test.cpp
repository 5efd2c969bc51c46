// CJsonValue: readers that never throw, member access, compact writing and guarded parsing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "JsonValue.h"

// Readers never throw: a value out of the reader's range, or of another kind, reads as zero.
TEST(JsonValueTest, ReadersTruncateOrGiveZero) {
  const int64_t big = std::numeric_limits<int64_t>::min();
  const struct {
    CJsonValue value;
    int asInt;
    int64_t asInt64;
  } cases[] = {{CJsonValue(-7), -7, -7},
               {CJsonValue(4000000000u), 0, 4000000000LL},
               {CJsonValue(big), 0, big},
               {CJsonValue(-2.7), -2, -2},
               {CJsonValue(2147483647.9), 2147483647, 2147483647},
               {CJsonValue(2147483648.0), 0, 2147483648LL},
               {CJsonValue(-2147483648.0), -2147483647 - 1, -2147483648LL},
               {CJsonValue(1e19), 0, 0},
               {CJsonValue(std::nan("")), 0, 0},
               {CJsonValue(std::string("12")), 0, 0},
               {CJsonValue(), 0, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.asInt, c.value.AsInt()) << c.value.Write();
    EXPECT_EQ(c.asInt64, c.value.AsInt64()) << c.value.Write();
  }
  EXPECT_EQ("", CJsonValue(12).AsString());
  EXPECT_FALSE(CJsonValue(std::string("12")).AsBool());

  CJsonValue parsed;
  ASSERT_TRUE(CJsonValue::Parse("{\"t\":true,\"f\":0.0,\"a\":[1],\"o\":{}}", parsed));
  EXPECT_EQ(1.0, parsed.Get("t").AsDouble());
  EXPECT_FALSE(parsed.Get("f").AsBool());
  EXPECT_EQ(0, parsed.Get("a").AsInt());
  EXPECT_EQ("", parsed.Get("o").AsString());
}

TEST(JsonValueTest, MembersAndWriting) {
  CJsonValue object;
  ASSERT_TRUE(object.Set("b", CJsonValue(std::string("x"))));
  ASSERT_TRUE(object.Set("a", CJsonValue(1)));
  EXPECT_FALSE(object.HasMember("c"));
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
  for (const char* text : {"{\"a\":", "{} trailing", "{'a':1}"}) {
    EXPECT_FALSE(CJsonValue::Parse(text, out)) << text;
  }
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
