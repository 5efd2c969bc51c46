#include "LayerHeaderList.h"

#include <charconv>

#include "ZuLog.h"

namespace AnnotationLayerInner {
namespace {

class CHeaderWriter : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  void VisitField(const CZuFieldSetObject::__tagField& field) override {
    if (field.state == CZuFieldSetObject::FIELD_STATE_REMOVED || field.key.empty()) return;
    text += field.key;
    text += ',';
    text += field.fieldClass;
    text += ',';
    text += std::to_string(static_cast<int>(field.type));
    text += ';';
  }

  std::string text;
};

bool ParseFieldType(const std::string& text, E_FIELD_OFST_TYPE& type) {
  int value = -1;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) return false;
  if (value < FIELD_OFST_TYPE_NONE || value > FIELD_OFST_TYPE_TEXT) return false;
  type = static_cast<E_FIELD_OFST_TYPE>(value);
  return true;
}

// One "key,class,type" entry, without its ';'.
bool ReadEntry(const std::string& entry, CZuFieldSetObject& fields) {
  const size_t first = entry.find(',');
  if (first == std::string::npos) return false;
  const size_t second = entry.find(',', first + 1);
  if (second == std::string::npos || entry.find(',', second + 1) != std::string::npos) return false;
  const std::string key = entry.substr(0, first);
  E_FIELD_OFST_TYPE type = FIELD_OFST_TYPE_NONE;
  if (key.empty() || !ParseFieldType(entry.substr(second + 1), type)) return false;
  fields.SetField(key, type, entry.substr(first + 1, second - first - 1), QVariant());
  return true;
}

}  // namespace

std::string LayerHeaderListToString(const CZuFieldSetObject& fields) {
  CHeaderWriter writer;
  fields.TravelField(writer);
  return writer.text;
}

bool LayerHeaderListFromString(const std::string& text, CZuFieldSetObject& fields) {
  int skipped = 0;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find(';', start);
    if (end == std::string::npos) end = text.size();
    const std::string entry = text.substr(start, end - start);
    if (!entry.empty() && !ReadEntry(entry, fields)) ++skipped;
    start = end + 1;
  }
  if (skipped > 0) {
    ZuLogWarn << "[LayerHeaderListFromString] skipped " << skipped << " malformed entries";
    return false;
  }
  return true;
}

}  // namespace AnnotationLayerInner
