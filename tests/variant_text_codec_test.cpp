// The variant text codec (every type round-trips exactly, reals to the last bit; list encoding
// keeps any content; unknown names and unreadable texts give an invalid value and one warning),
// identifiers, type mappings and the extent test.
#include <gtest/gtest.h>

#include <QByteArrayList>
#include <QDate>
#include <QStringList>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "AnnotationLayerNS.h"
#include "VariantTextCodec.h"
#include "ZuLog.h"

using namespace AnnotationLayerNS;

namespace {

struct Encoded {
  std::string type;
  std::string text;
};

Encoded Encode(const QVariant& value) {
  Encoded encoded;
  EXPECT_TRUE(VariantToText(value, encoded.type, encoded.text));
  return encoded;
}

QVariant RoundTrip(const QVariant& value) {
  const Encoded encoded = Encode(value);
  return VariantFromText(encoded.type, encoded.text);
}

template <typename T>
void ExpectIntegerRoundTrip(const char* typeName) {
  for (T value : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0), T(1)}) {
    const QVariant original = QVariant::fromValue<T>(value);
    EXPECT_EQ(typeName, VariantTypeName(original));
    const QVariant back = RoundTrip(original);
    EXPECT_EQ(original.userType(), back.userType()) << typeName;
    EXPECT_EQ(value, back.value<T>()) << typeName;
  }
}

uint64_t Bits(double d) {
  uint64_t bits = 0;
  std::memcpy(&bits, &d, sizeof bits);
  return bits;
}

uint32_t Bits(float f) {
  uint32_t bits = 0;
  std::memcpy(&bits, &f, sizeof bits);
  return bits;
}

}  // namespace

TEST(VariantTextCodecTest, IntegersRoundTripAtTheirLimits) {
  ExpectIntegerRoundTrip<char>("char");
  ExpectIntegerRoundTrip<unsigned char>("unsigned_char");
  ExpectIntegerRoundTrip<short>("short");
  ExpectIntegerRoundTrip<unsigned short>("unsigned_short");
  ExpectIntegerRoundTrip<int>("int");
  ExpectIntegerRoundTrip<unsigned int>("unsigned_int");
  ExpectIntegerRoundTrip<qlonglong>("int64");
  ExpectIntegerRoundTrip<qulonglong>("uint64");
  // int64_t, uint64_t (long, unsigned long here) and signed char are Qt types of their own,
  // written under the names of the types they come back as.
  const std::pair<QVariant, QVariant> aliases[] = {
      {QVariant::fromValue<int64_t>(INT64_MIN), QVariant::fromValue<qlonglong>(INT64_MIN)},
      {QVariant::fromValue<uint64_t>(UINT64_MAX), QVariant::fromValue<qulonglong>(UINT64_MAX)},
      {QVariant::fromValue<signed char>(-128), QVariant::fromValue<char>(-128)}};
  for (const auto& [value, expected] : aliases) {
    const QVariant back = RoundTrip(value);
    EXPECT_EQ(expected.userType(), back.userType()) << value.typeName();
    EXPECT_EQ(expected, back) << value.typeName();
  }
}

TEST(VariantTextCodecTest, TextsOfSimpleValuesAndRealsBitForBit) {
  const std::pair<QVariant, Encoded> texts[] = {
      {QVariant(true), {"bool", "true"}},
      {QVariant(0.1), {"double", "0.1"}},  // the shortest exact form
      {QVariant::fromValue(0.1f), {"float", "0.1"}},
      {QVariant(std::numeric_limits<double>::infinity()), {"double", "inf"}},
      {QVariant::fromValue(QChar(0x4E2D)), {"wchar", "20013"}}};
  for (const auto& [value, expected] : texts) {
    const Encoded e = Encode(value);
    EXPECT_EQ(expected.type + " " + expected.text, e.type + " " + e.text);
    EXPECT_EQ(value, VariantFromText(e.type, e.text)) << e.type << " " << e.text;
  }
  EXPECT_EQ(QVariant(false), VariantFromText("bool", "0"));
  for (double value : {-0.0, -std::numeric_limits<double>::denorm_min(),
                       std::numeric_limits<double>::lowest(), 1.0 / 3.0, 9007199254740993.0}) {
    const QVariant back = RoundTrip(QVariant(value));
    ASSERT_EQ(QMetaType::Double, back.userType()) << value;
    EXPECT_EQ(Bits(value), Bits(back.toDouble())) << Encode(QVariant(value)).text;
  }
  for (float value : {-0.0f, std::numeric_limits<float>::denorm_min(), 16777217.0f}) {
    const QVariant back = RoundTrip(QVariant::fromValue(value));
    ASSERT_EQ(QMetaType::Float, back.userType());
    EXPECT_EQ(Bits(value), Bits(back.value<float>())) << Encode(QVariant::fromValue(value)).text;
  }
  const QVariant negativeNan = RoundTrip(QVariant(-std::nan("")));
  EXPECT_TRUE(std::isnan(negativeNan.toDouble()));
  EXPECT_TRUE(std::signbit(negativeNan.toDouble()));
}

TEST(VariantTextCodecTest, InvalidUnsupportedAndUnreadable) {
  Encoded e{"x", "y"};
  EXPECT_TRUE(VariantToText(QVariant(), e.type, e.text));
  EXPECT_EQ("unknown", e.type + e.text);
  CZuLogCapture capture;
  EXPECT_FALSE(VariantFromText("unknown", "").isValid());
  EXPECT_EQ(0u, capture.Lines().size());
  EXPECT_FALSE(VariantToText(QVariant(QDate(2024, 1, 2)), e.type, e.text));
  EXPECT_EQ(1, capture.Count("[VariantToText] unsupported value type QDate"));
  EXPECT_EQ("unknown", VariantTypeName(QVariant(QDate(2024, 1, 2))));

  const std::vector<std::pair<std::string, std::string>> bad = {
      {"unknown", "x"},       {"int", " 1"},         {"int", "2147483648"},
      {"bool", "TRUE"},       {"double", "1e999"},   {"float", "1e39"},
      {"wchar", "65536"},     {"string_list", "3:ab,"}, {"string_list", "-1:,"},
      {"wstring_list", "1:a,2"}, {"string_list", "18446744073709551615:a,"},
  };
  for (const auto& [type, text] : bad) {
    capture.Clear();
    EXPECT_FALSE(VariantFromText(type, text).isValid()) << type << " '" << text << "'";
    EXPECT_EQ(1, capture.Count("[VariantFromText]")) << type << " '" << text << "'";
  }
  capture.Clear();
  VariantFromText("integer", "1");
  EXPECT_TRUE(capture.Contains("[VariantFromText] unknown type name 'integer'"));
  VariantFromText("int", std::string(1000, '7'));
  EXPECT_TRUE(capture.Contains("[VariantFromText] unreadable int value '" + std::string(64, '7') +
                               "...'"));
}

TEST(ZuGenerateUUIDTest, IsLowercaseHexMd5AndUniqueAcrossThreads) {
  std::vector<std::vector<std::string>> perThread(4);
  std::vector<std::thread> threads;
  for (auto& ids : perThread) {
    threads.emplace_back([&ids] {
      for (int i = 0; i < 500; ++i) ids.push_back(ZuGenerateUUID());
    });
  }
  for (auto& t : threads) t.join();
  std::set<std::string> all;
  for (const auto& ids : perThread) all.insert(ids.begin(), ids.end());
  EXPECT_EQ(2000u, all.size());
  EXPECT_EQ(32u, all.begin()->size());
  EXPECT_EQ(std::string::npos, all.begin()->find_first_not_of("0123456789abcdef"));
}

// The tables are not inverse: CHAR comes back as INT, FLOAT as DOUBLE, kinds fold together.
TEST(TypeMappingTest, KindsAndFieldTypesAreNotInverse) {
  const std::pair<int, int> annotationToGeometry[] = {{0, 1},   {1, 2},   {2, 3},   {3, 3},
                                                      {-1, 3},  {100, 4}, {101, 5}, {102, 6},
                                                      {200, 2}, {300, 1}};
  for (const auto& [annotation, geometry] : annotationToGeometry) {
    EXPECT_EQ(geometry, MappingGeomType(static_cast<E_ANNOTATION_TYPE>(annotation))) << annotation;
  }
  const std::pair<int, int> geometryToAnnotation[] = {{1, 0},   {2, 1},   {3, 2},   {0, 2},
                                                      {4, 100}, {5, 101}, {6, 102}, {9, 2}};
  for (const auto& [geometry, annotation] : geometryToAnnotation) {
    EXPECT_EQ(annotation, MappingAnnotationType(static_cast<E_GEOMETRY_DATA_TYPE>(geometry)))
        << geometry;
  }
  EXPECT_EQ(FIELD_OFST_TYPE_INT, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_CHAR)));
  EXPECT_EQ(FIELD_OFST_TYPE_DOUBLE, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_FLOAT)));
  EXPECT_EQ(FIELD_OFST_TYPE_TEXT, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_TEXT)));
  EXPECT_EQ(FIELD_OFST_TYPE_NONE, MappingFieldType(MappingQtVariantType(FIELD_OFST_TYPE_NONE)));
  EXPECT_FALSE(IsGISLayer(static_cast<E_LAYER_TYPE>(103))) << "the GIS range ends at 102";
}

TEST(IsNeedUpdateRangeTest, Steps) {
  const EXTENT cur{0, 0, 10, 10};
  EXPECT_TRUE(IsNeedUpdateRange(cur, EXTENT{1, 1, 9, 9}));       // strictly inside
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{0, 0, 10, 10}));    // equal
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{-5, 0, 5, 10}));    // cur.min_x inside nxt's x range
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{5, 0, 15, 10}));    // cur.max_x inside nxt's x range
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{20, -5, 30, 5}));   // cur.min_y inside nxt's y range
  // Entirely to the right: only the max_y equality decides; cur.max_y inside nxt is not looked at.
  EXPECT_FALSE(IsNeedUpdateRange(cur, EXTENT{20, 20, 30, 10}));
  EXPECT_TRUE(IsNeedUpdateRange(cur, EXTENT{20, 5, 30, 15}));
}
