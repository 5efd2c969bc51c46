#include "VariantTextCodec.h"

#include <QByteArrayList>
#include <QChar>
#include <QStringList>

#include <charconv>
#include <cstdint>
#include <vector>

#include "ZuCoreApplication.h"
#include "ZuLog.h"

namespace AnnotationLayerNS {
namespace {

constexpr const char* kStringCodec = "GB18030";

struct TypeName {
  int metaType;
  const char* name;
};

const TypeName kTypeNames[] = {
    {QMetaType::UnknownType, "unknown"},
    {QMetaType::Bool, "bool"},
    {QMetaType::Char, "char"},
    {QMetaType::UChar, "unsigned_char"},
    {QMetaType::Short, "short"},
    {QMetaType::UShort, "unsigned_short"},
    {QMetaType::Int, "int"},
    {QMetaType::UInt, "unsigned_int"},
    {QMetaType::LongLong, "int64"},
    {QMetaType::ULongLong, "uint64"},
    {QMetaType::Float, "float"},
    {QMetaType::Double, "double"},
    {QMetaType::QChar, "wchar"},
    {QMetaType::QByteArray, "string"},
    {QMetaType::QString, "wstring"},
    {QMetaType::QByteArrayList, "string_list"},
    {QMetaType::QStringList, "wstring_list"},
    // Aliases, written under the name of the type they are read back as: int64_t and uint64_t are
    // long and unsigned long on LP64 systems, and signed char is a type of its own to Qt. They
    // stand after the types of the same name, which MetaTypeOfName finds first.
    {QMetaType::Long, "int64"},
    {QMetaType::ULong, "uint64"},
    {QMetaType::SChar, "char"},
};

// -1 when the name is not known.
int MetaTypeOfName(const std::string& name) {
  for (const TypeName& entry : kTypeNames) {
    if (name == entry.name) return entry.metaType;
  }
  return -1;
}

const char* NameOfMetaType(int metaType) {
  for (const TypeName& entry : kTypeNames) {
    if (entry.metaType == metaType) return entry.name;
  }
  return nullptr;
}

// Integers and reals through to_chars: locale-free, and the shortest exact form for reals.
template <typename T>
std::string NumberToText(T value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

template <typename T>
bool NumberFromText(const std::string& text, T& value) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  const auto result = std::from_chars(begin, end, value);
  return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

std::string BytesOf(const QByteArray& bytes) {
  return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

QByteArray ByteArrayOf(const std::string& text) {
  return QByteArray(text.data(), static_cast<int>(text.size()));
}

std::string JoinNetstrings(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) {
    text += std::to_string(item.size());
    text += ':';
    text += item;
    text += ',';
  }
  return text;
}

bool SplitNetstrings(const std::string& text, std::vector<std::string>& items) {
  size_t pos = 0;
  while (pos < text.size()) {
    const size_t colon = text.find(':', pos);
    if (colon == std::string::npos || colon == pos) return false;
    size_t length = 0;
    const char* begin = text.data() + pos;
    const char* end = text.data() + colon;
    const auto result = std::from_chars(begin, end, length);
    if (result.ec != std::errc() || result.ptr != end) return false;
    const size_t itemStart = colon + 1;
    if (length > text.size() - itemStart || text.size() - itemStart - length < 1) return false;
    if (text[itemStart + length] != ',') return false;
    items.push_back(text.substr(itemStart, length));
    pos = itemStart + length + 1;
  }
  return true;
}

// Reads `text` as a value of `metaType`; false when it is not one.
bool ReadValue(int metaType, const std::string& text, QVariant& out) {
  switch (metaType) {
    case QMetaType::UnknownType:
      out = QVariant();
      return text.empty();
    case QMetaType::Bool:
      if (text == "true" || text == "1") {
        out = QVariant(true);
      } else if (text == "false" || text == "0") {
        out = QVariant(false);
      } else {
        return false;
      }
      return true;
#define ALREAD_NUMBER(META, TYPE)                      \
  case QMetaType::META: {                              \
    TYPE value{};                                      \
    if (!NumberFromText(text, value)) return false;    \
    out = QVariant::fromValue<TYPE>(value);            \
    return true;                                       \
  }
      ALREAD_NUMBER(Char, char)
      ALREAD_NUMBER(UChar, unsigned char)
      ALREAD_NUMBER(Short, short)
      ALREAD_NUMBER(UShort, unsigned short)
      ALREAD_NUMBER(Int, int)
      ALREAD_NUMBER(UInt, unsigned int)
      ALREAD_NUMBER(LongLong, qlonglong)
      ALREAD_NUMBER(ULongLong, qulonglong)
      ALREAD_NUMBER(Float, float)
      ALREAD_NUMBER(Double, double)
#undef ALREAD_NUMBER
    case QMetaType::QChar: {
      uint16_t unit = 0;
      if (!NumberFromText(text, unit)) return false;
      out = QVariant::fromValue(QChar(unit));
      return true;
    }
    case QMetaType::QByteArray:
      out = QVariant(ByteArrayOf(text));
      return true;
    case QMetaType::QString:
      out = QVariant(ConvertStdStringToQString(text, kStringCodec));
      return true;
    case QMetaType::QByteArrayList: {
      std::vector<std::string> items;
      if (!SplitNetstrings(text, items)) return false;
      QByteArrayList list;
      for (const std::string& item : items) list.append(ByteArrayOf(item));
      out = QVariant::fromValue(list);
      return true;
    }
    case QMetaType::QStringList: {
      std::vector<std::string> items;
      if (!SplitNetstrings(text, items)) return false;
      QStringList list;
      for (const std::string& item : items) {
        list.append(ConvertStdStringToQString(item, kStringCodec));
      }
      out = QVariant(list);
      return true;
    }
    default:
      return false;
  }
}

std::string WriteValue(int metaType, const QVariant& value) {
  switch (metaType) {
    case QMetaType::Bool:
      return value.toBool() ? "true" : "false";
    case QMetaType::Char:
      return NumberToText(static_cast<int>(value.value<char>()));
    case QMetaType::UChar:
      return NumberToText(static_cast<unsigned>(value.value<unsigned char>()));
    case QMetaType::Short:
      return NumberToText(value.value<short>());
    case QMetaType::UShort:
      return NumberToText(value.value<unsigned short>());
    case QMetaType::Int:
      return NumberToText(value.value<int>());
    case QMetaType::UInt:
      return NumberToText(value.value<unsigned int>());
    case QMetaType::LongLong:
      return NumberToText(value.value<qlonglong>());
    case QMetaType::ULongLong:
      return NumberToText(value.value<qulonglong>());
    case QMetaType::Long:
      return NumberToText(static_cast<qlonglong>(value.value<long>()));
    case QMetaType::ULong:
      return NumberToText(static_cast<qulonglong>(value.value<unsigned long>()));
    case QMetaType::SChar:
      return NumberToText(static_cast<int>(value.value<signed char>()));
    case QMetaType::Float:
      return NumberToText(value.value<float>());
    case QMetaType::Double:
      return NumberToText(value.value<double>());
    case QMetaType::QChar:
      return NumberToText(static_cast<unsigned>(value.value<QChar>().unicode()));
    case QMetaType::QByteArray:
      return BytesOf(value.toByteArray());
    case QMetaType::QString:
      return ConvertQStringToStdString(value.toString(), kStringCodec);
    case QMetaType::QByteArrayList: {
      std::vector<std::string> items;
      for (const QByteArray& item : value.value<QByteArrayList>()) items.push_back(BytesOf(item));
      return JoinNetstrings(items);
    }
    case QMetaType::QStringList: {
      std::vector<std::string> items;
      for (const QString& item : value.toStringList()) {
        items.push_back(ConvertQStringToStdString(item, kStringCodec));
      }
      return JoinNetstrings(items);
    }
    default:
      return std::string();
  }
}

}  // namespace

std::string VariantTypeName(const QVariant& value) {
  const char* name = NameOfMetaType(value.userType());
  return name != nullptr ? name : "unknown";
}

bool VariantToText(const QVariant& value, std::string& typeName, std::string& text) {
  const int metaType = value.userType();
  const char* name = NameOfMetaType(metaType);
  if (name == nullptr) {
    const char* qtName = value.typeName();
    ZuLogWarn << "[VariantToText] unsupported value type " << (qtName != nullptr ? qtName : "?");
    typeName = "unknown";
    text.clear();
    return false;
  }
  typeName = name;
  text = WriteValue(metaType, value);
  return true;
}

QVariant VariantFromText(const std::string& typeName, const std::string& text) {
  const int metaType = MetaTypeOfName(typeName);
  if (metaType < 0) {
    ZuLogWarn << "[VariantFromText] unknown type name '" << typeName << "'";
    return QVariant();
  }
  QVariant value;
  if (!ReadValue(metaType, text, value)) {
    // Long texts are cut so that the log line stays readable.
    ZuLogWarn << "[VariantFromText] unreadable " << typeName << " value '" << text.substr(0, 64)
              << (text.size() > 64 ? "...'" : "'");
    return QVariant();
  }
  return value;
}

}  // namespace AnnotationLayerNS
