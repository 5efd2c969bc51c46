#include "FieldValueText.h"

#include <QString>

#include "AnnotationLayerNS.h"
#include "TextConversion.h"
#include "VariantTextCodec.h"
#include "ZuLog.h"

namespace AnnotationLayerInner {
namespace {

// The variant text codec's name for the Qt type a field type travels as.
const char* CodecTypeName(E_FIELD_OFST_TYPE type) {
  switch (type) {
    case FIELD_OFST_TYPE_BOOL: return "bool";
    case FIELD_OFST_TYPE_CHAR:
    case FIELD_OFST_TYPE_INT: return "int";
    case FIELD_OFST_TYPE_INT64: return "int64";
    case FIELD_OFST_TYPE_FLOAT:
    case FIELD_OFST_TYPE_DOUBLE: return "double";
    default: return nullptr;
  }
}

constexpr char kHex[] = "0123456789ABCDEF";

// '%', NUL (text columns are read up to the first NUL) and every byte from 0x80 up become %XX: the
// result is ASCII without NUL and maps back to the same bytes.
std::string EscapeBytes(const std::string& bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (unsigned char c : bytes) {
    if (c == '%' || c == 0 || c >= 0x80) {
      text += '%';
      text += kHex[c >> 4];
      text += kHex[c & 0x0F];
    } else {
      text += static_cast<char>(c);
    }
  }
  return text;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool UnescapeBytes(const std::string& text, std::string& bytes) {
  bytes.clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
    if (low < 0) return false;
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return true;
}

}  // namespace

std::string FieldValueToColumn(E_FIELD_OFST_TYPE type, const QVariant& value) {
  if (type == FIELD_OFST_TYPE_TEXT) {
    // QByteArray values are local code page bytes; QString values are Unicode already.
    if (value.type() == QVariant::ByteArray) return LocalToUtf8(value.toByteArray().toStdString());
    return value.toString().toUtf8().toStdString();
  }
  std::string typeName, text;
  if (CodecTypeName(type) != nullptr) {
    QVariant converted = value;
    if (!converted.convert(AnnotationLayerNS::MappingQtVariantType(type))) return std::string();
    AnnotationLayerNS::VariantToText(converted, typeName, text);
    return text;
  }
  AnnotationLayerNS::VariantToText(value, typeName, text);
  // The readable form only when the code page conversion gives the codec's bytes back exactly.
  const std::string utf8 = LocalToUtf8(text);
  if (Utf8ToLocal(utf8) == text && text.find('\0') == std::string::npos) {
    return typeName + ":" + utf8;
  }
  return typeName + "=" + EscapeBytes(text);
}

QVariant FieldValueFromColumn(E_FIELD_OFST_TYPE type, const std::string& text) {
  if (type == FIELD_OFST_TYPE_TEXT) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
  }
  if (const char* name = CodecTypeName(type)) return AnnotationLayerNS::VariantFromText(name, text);
  // Type names hold neither ':' nor '=', so the first of them ends the name.
  const size_t mark = text.find_first_of(":=");
  if (mark == std::string::npos) return AnnotationLayerNS::VariantFromText(text, std::string());
  const std::string typeName = text.substr(0, mark);
  if (text[mark] == ':') {
    return AnnotationLayerNS::VariantFromText(typeName, Utf8ToLocal(text.substr(mark + 1)));
  }
  std::string bytes;
  if (!UnescapeBytes(text.substr(mark + 1), bytes)) {
    ZuLogWarn << "[FieldValueFromColumn] broken escape in " << typeName << " value '"
              << text.substr(mark + 1, 64) << "'";
    return QVariant();
  }
  return AnnotationLayerNS::VariantFromText(typeName, bytes);
}

}  // namespace AnnotationLayerInner
