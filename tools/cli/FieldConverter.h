// CFieldConverter moves attribute values between OGR features and the QVariant values the module
// keeps in a feature's fields.
//
// Into the module: integers become int (bool for OGR's boolean subtype), 64-bit integers qlonglong,
// reals double, strings QString; dates and times become ISO 8601 text, binary values hexadecimal
// text and lists OGR's text form of them. Unset and null fields give no value at all, so the
// feature simply lacks that field.
//
// Out of the module: each module field type has one OGR field type, and values are set with the
// matching OGR setter.
//
// Threading contract: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_CLI_FIELD_CONVERTER_H
#define ANNOTATIONLAYER_CLI_FIELD_CONVERTER_H

#include <QVariant>

#include <ogr_core.h>

#include "AnnotationLayerTypes.h"

class OGRFeature;

class CFieldConverter {
 public:
  CFieldConverter() = delete;

  // The value of field `index`; an invalid QVariant when it is unset or null.
  static QVariant ToVariant(const OGRFeature& feature, int index);
  // The OGR field type (and subtype) that holds values of a module field type.
  static OGRFieldType OgrType(E_FIELD_OFST_TYPE type, OGRFieldSubType* subType);
  // Sets field `index` of `feature` from `value`; an invalid value leaves the field null.
  static void SetOgrField(OGRFeature* feature, int index, const QVariant& value);
};

#endif  // ANNOTATIONLAYER_CLI_FIELD_CONVERTER_H
