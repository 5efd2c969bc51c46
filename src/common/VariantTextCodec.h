// Typed values as text: a QVariant becomes a type name and a text, and the pair becomes the same
// QVariant again. Used where typed values are stored in text columns.
//
//   type name      QVariant holds            text
//   unknown        nothing (invalid)         empty
//   bool           bool                      "true" / "false" ("1" / "0" also read)
//   char           char (or signed char)     decimal, e.g. "-5"
//   unsigned_char  unsigned char             decimal
//   short          short                     decimal
//   unsigned_short unsigned short            decimal
//   int            int                       decimal
//   unsigned_int   unsigned int              decimal
//   int64          qlonglong (or long)       decimal
//   uint64         qulonglong (or ulong)     decimal
//   float          float                     shortest text that reads back to the same bits
//   double         double                    shortest text that reads back to the same bits
//   wchar          QChar                     decimal UTF-16 code unit
//   string         QByteArray                the bytes themselves (local code page text)
//   wstring        QString                   GB18030 bytes of the string
//   string_list    QByteArrayList            netstrings, see below
//   wstring_list   QStringList               netstrings of the GB18030 bytes of each string
//
// The types in brackets are written under the name of the row and read back as its first type:
// a long (what int64_t is on LP64 systems) comes back as qlonglong.
//
// Numbers are written and read without locale ("." as decimal point, no grouping) and must fill
// the whole text: no blanks, no '+', nothing after the number. Reals round-trip exactly, -0.0,
// denormals and infinities ("inf", "-inf") included; a NaN comes back as a NaN of the same sign.
// A QString round-trips exactly when it is valid UTF-16 (an unpaired surrogate does not survive
// GB18030).
//
// Lists are netstrings, one per item, joined without separators: the item's byte count in
// decimal, ':', the bytes, ','. ["a,b", "", "x"] is "3:a,b,0:,1:x,"; the empty list is the empty
// text and a list of one empty item is "0:,". Any byte may occur in an item.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_VARIANT_TEXT_CODEC_H
#define ANNOTATIONLAYER_VARIANT_TEXT_CODEC_H

#include <QVariant>

#include <string>

#include "AnnotationLayerExport.h"

namespace AnnotationLayerNS {

// The type name of the value's type; "unknown" for an invalid value and for unsupported types.
ANNOTATIONLAYER_EXPORT std::string VariantTypeName(const QVariant& value);

// Writes the type name and text of `value`. An invalid value gives "unknown" and the empty text.
// An unsupported type gives false, "unknown", the empty text and one warning.
ANNOTATIONLAYER_EXPORT bool VariantToText(const QVariant& value, std::string& typeName,
                                          std::string& text);

// The value that VariantToText wrote as `typeName` and `text`. An unknown type name, or a text
// that is not a value of the type (for "unknown": any non-empty text), gives an invalid QVariant
// and one warning.
ANNOTATIONLAYER_EXPORT QVariant VariantFromText(const std::string& typeName,
                                                const std::string& text);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_VARIANT_TEXT_CODEC_H
