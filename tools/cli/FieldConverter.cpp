#include "FieldConverter.h"

#include <ogr_feature.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

QString Utf8(const char* text) { return QString::fromUtf8(text != nullptr ? text : ""); }

// ISO 8601 text of an OGR date, time or date-time field.
QString IsoDateTime(const OGRFeature& feature, int index, OGRFieldType type) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, zone = 0;
  float second = 0.0f;
  if (!const_cast<OGRFeature&>(feature).GetFieldAsDateTime(index, &year, &month, &day, &hour,
                                                           &minute, &second, &zone)) {
    return Utf8(feature.GetFieldAsString(index));
  }
  char date[32], time[32], offset[16] = "";
  std::snprintf(date, sizeof date, "%04d-%02d-%02d", year, month, day);
  const double whole = std::floor(second);
  if (second == static_cast<float>(whole)) {
    std::snprintf(time, sizeof time, "%02d:%02d:%02d", hour, minute, static_cast<int>(whole));
  } else {
    std::snprintf(time, sizeof time, "%02d:%02d:%06.3f", hour, minute, second);
  }
  // OGR's zone flag: 100 is UTC, each step above or below it 15 minutes.
  if (zone == 100) {
    std::snprintf(offset, sizeof offset, "Z");
  } else if (zone > 1) {
    const int minutes = std::abs(zone - 100) * 15;
    std::snprintf(offset, sizeof offset, "%c%02d:%02d", zone > 100 ? '+' : '-', minutes / 60,
                  minutes % 60);
  }
  if (type == OFTDate) return QString::fromLatin1(date);
  if (type == OFTTime) return QString::fromLatin1(time);
  return QString::fromLatin1(date) + "T" + QString::fromLatin1(time) + QString::fromLatin1(offset);
}

}  // namespace

QVariant CFieldConverter::ToVariant(const OGRFeature& feature, int index) {
  if (!feature.IsFieldSetAndNotNull(index)) return QVariant();
  const OGRFieldDefn* definition = feature.GetFieldDefnRef(index);
  if (definition == nullptr) return QVariant();
  switch (definition->GetType()) {
    case OFTInteger:
      if (definition->GetSubType() == OFSTBoolean) {
        return QVariant(feature.GetFieldAsInteger(index) != 0);
      }
      return QVariant(feature.GetFieldAsInteger(index));
    case OFTInteger64:
      return QVariant(static_cast<qlonglong>(feature.GetFieldAsInteger64(index)));
    case OFTReal:
      return QVariant(feature.GetFieldAsDouble(index));
    case OFTString:
      return QVariant(Utf8(feature.GetFieldAsString(index)));
    case OFTDate:
    case OFTTime:
    case OFTDateTime:
      return QVariant(IsoDateTime(feature, index, definition->GetType()));
    default:
      // Lists and binary values: OGR's own text (hexadecimal for binary).
      return QVariant(Utf8(feature.GetFieldAsString(index)));
  }
}

OGRFieldType CFieldConverter::OgrType(E_FIELD_OFST_TYPE type, OGRFieldSubType* subType) {
  *subType = OFSTNone;
  switch (type) {
    case FIELD_OFST_TYPE_BOOL:
      *subType = OFSTBoolean;
      return OFTInteger;
    case FIELD_OFST_TYPE_CHAR:
    case FIELD_OFST_TYPE_INT: return OFTInteger;
    case FIELD_OFST_TYPE_INT64: return OFTInteger64;
    case FIELD_OFST_TYPE_FLOAT:
    case FIELD_OFST_TYPE_DOUBLE: return OFTReal;
    default: return OFTString;
  }
}

void CFieldConverter::SetOgrField(OGRFeature* feature, int index, const QVariant& value) {
  if (!value.isValid() || value.isNull()) {
    feature->SetFieldNull(index);
    return;
  }
  switch (static_cast<int>(value.type())) {
    case QVariant::Bool: feature->SetField(index, value.toBool() ? 1 : 0); break;
    case QVariant::Int:
    case QVariant::Char: feature->SetField(index, value.toInt()); break;
    case QVariant::LongLong:
    case QVariant::UInt:
    case QVariant::ULongLong:
      feature->SetField(index, static_cast<GIntBig>(value.toLongLong()));
      break;
    case QVariant::Double: feature->SetField(index, value.toDouble()); break;
    default: {
      const QByteArray text = value.toString().toUtf8();
      feature->SetField(index, text.constData());
      break;
    }
  }
}
