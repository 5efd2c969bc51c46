// CFieldValueList collects the fields of a field set in order, leaving out removed fields and
// fields without a key: what an export writes for a feature or a layer header.
//
// Threading contract: one thread fills and reads a list.
#ifndef ANNOTATIONLAYER_CLI_FIELD_VALUE_LIST_H
#define ANNOTATIONLAYER_CLI_FIELD_VALUE_LIST_H

#include <vector>

#include "ZuFieldSetObject.h"

class CFieldValueList : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  explicit CFieldValueList(const CZuFieldSetObject& set) { set.TravelField(*this); }
  void VisitField(const CZuFieldSetObject::__tagField& field) override;

  std::vector<CZuFieldSetObject::__tagField> fields;
};

#endif  // ANNOTATIONLAYER_CLI_FIELD_VALUE_LIST_H
