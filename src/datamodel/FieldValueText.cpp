#include "FieldValueText.h"

#include <QString>

#include "AnnotationLayerNS.h"
#include "TextConversion.h"
#include "VariantTextCodec.h"

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
  return typeName + ":" + LocalToUtf8(text);
}

QVariant FieldValueFromColumn(E_FIELD_OFST_TYPE type, const std::string& text) {
  if (type == FIELD_OFST_TYPE_TEXT) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
  }
  if (const char* name = CodecTypeName(type)) return AnnotationLayerNS::VariantFromText(name, text);
  const size_t colon = text.find(':');
  if (colon == std::string::npos) return AnnotationLayerNS::VariantFromText(text, std::string());
  return AnnotationLayerNS::VariantFromText(text.substr(0, colon),
                                            Utf8ToLocal(text.substr(colon + 1)));
}

}  // namespace AnnotationLayerInner
