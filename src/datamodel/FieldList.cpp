#include "FieldList.h"

namespace AnnotationLayerInner {

std::vector<CZuFieldSetObject::__tagField> CollectFields(const CZuFieldSetObject& fields) {
  class Collector : public CZuFieldSetObject::IFieldDataVisitor {
   public:
    void VisitField(const CZuFieldSetObject::__tagField& field) override { list.push_back(field); }
    std::vector<CZuFieldSetObject::__tagField> list;
  } collector;
  fields.TravelField(collector);
  return collector.list;
}

}  // namespace AnnotationLayerInner
