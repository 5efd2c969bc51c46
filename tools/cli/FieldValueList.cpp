#include "FieldValueList.h"

void CFieldValueList::VisitField(const CZuFieldSetObject::__tagField& field) {
  if (field.state != CZuFieldSetObject::FIELD_STATE_REMOVED && !field.key.empty()) {
    fields.push_back(field);
  }
}
