// Pieces of SQL text: which texts may stand between quotes, and how numbers are written.
#include <gtest/gtest.h>

#include <cfloat>
#include <string>

#include "SqlText.h"

using AnnotationLayerInner::FormatDouble;
using AnnotationLayerInner::IsSafeSqlText;

TEST(SqlTextTest, QuotesAndNulBytesCannotStandBetweenQuotes) {
  EXPECT_TRUE(IsSafeSqlText(""));
  EXPECT_TRUE(IsSafeSqlText("0123456789abcdef0123456789abcdef"));
  EXPECT_TRUE(IsSafeSqlText("double \" quote; -- and comment"));
  EXPECT_TRUE(IsSafeSqlText("\xe4\xb8\xad\xe6\x96\x87"));
  EXPECT_FALSE(IsSafeSqlText("'"));
  EXPECT_FALSE(IsSafeSqlText("x' OR '1'='1"));
  EXPECT_FALSE(IsSafeSqlText("abc''"));
  EXPECT_FALSE(IsSafeSqlText(std::string("abc\0def", 7)));
}

TEST(SqlTextTest, DoublesUseFourteenSignificantDigits) {
  EXPECT_EQ("1.7976931348623e+308", FormatDouble(DBL_MAX));
  EXPECT_EQ("-1.7976931348623e+308", FormatDouble(-DBL_MAX));
  EXPECT_EQ("116.39128456789", FormatDouble(116.391284567891234));
  EXPECT_EQ("0", FormatDouble(0.0));
}
