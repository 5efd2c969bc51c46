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
  ASSERT_TRUE(CJsonValue::Parse("{\"t\":true,\"a\":[1]}", parsed));
  EXPECT_EQ(1.0, parsed.Get("t").AsDouble());
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
