#include "NameRecorder.h"

#include <cstring>

#include "StyleJson.h"

namespace {

bool SameBytes(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

CNameRecorder::CNameRecorder() = default;

CNameRecorder::CNameRecorder(const CNameRecorder& other) = default;

CNameRecorder& CNameRecorder::operator=(const CNameRecorder& other) = default;

CNameRecorder::~CNameRecorder() = default;

bool CNameRecorder::operator==(const CNameRecorder& other) const {
  return SameBytes(uuid, other.uuid) && SameBytes(name, other.name) &&
         SameBytes(data, other.data) && SameBytes(style, other.style) &&
         position == other.position;
}

bool CNameRecorder::ConvertToStyle(CFeatureStyleSet* styles) const {
  return AnnotationLayerNS::FromJsonStyle(styles, style);
}
