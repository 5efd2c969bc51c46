// How a field value is kept in the text column `value` of shape_property, layer_userdata and
// shape_userdata, given the field's type in the type column.
//
//   type            column text (UTF-8)                 read back as
//   1 bool          "true" / "false"                    bool
//   2 char, 3 int   the number in decimal               int
//   4 int64         the number in decimal               qlonglong
//   5 float,        the shortest text that reads        double
//   6 double        back to the same double
//   7 text          the string as UTF-8                 QString
//   0 none          "<type name>:<text>" or             the same QVariant (any type the variant
//                   "<type name>=<escaped text>", the   text codec knows)
//                   text as written by the variant
//                   text codec
//
// An untyped value keeps the codec's text in the readable ':' form, converted from the local code
// page, when that conversion gives back the same bytes and they hold no NUL. Otherwise (a QString
// outside GBK, such as an emoji, which the codec writes as GB18030; bytes that are not GBK) the
// '=' form holds the codec's bytes with '%', NUL and every byte from 0x80 up written as %XX, so
// that nothing is lost and netstring counts of lists stay true. A broken %XX escape gives an
// invalid QVariant and one warning.
//
// A ':' value written by earlier builds through a lossy conversion reads as what was stored then:
// each byte that was not GBK comes back as '?' (an emoji written as a QString reads as "?9?6"),
// and a list whose counts no longer match gives an invalid QVariant and a warning.
//
// Types 1 to 7 travel as the Qt types of MappingQtVariantType, so char comes back as int and
// float as double. A text that does not read as its type gives an invalid QVariant and one
// warning line (from the variant text codec).
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_FIELD_VALUE_TEXT_H
#define ANNOTATIONLAYER_FIELD_VALUE_TEXT_H

#include <QVariant>

#include <string>

#include "AnnotationLayerTypes.h"

namespace AnnotationLayerInner {

std::string FieldValueToColumn(E_FIELD_OFST_TYPE type, const QVariant& value);
QVariant FieldValueFromColumn(E_FIELD_OFST_TYPE type, const std::string& text);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_FIELD_VALUE_TEXT_H
